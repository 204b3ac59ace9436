// What the tables say, as text.
#pragma once

#include "table.h"

#include <string>
#include <vector>

namespace cfgctl
{

bool is(const char *text, const std::string &other);

// "cfgctl VERB ...", as the command line has it.
std::string usage(const Action &action);

// What may stand in a word's place: "a number from 0 to 1".
std::string takes(const Word &word);

// All verbs, a line each; a verb's actions with their words. 80 columns.
std::string help();
std::string help(const Verb &verb);

// Rows as columns, each as wide as its widest cell.
std::string columns(const std::vector<std::vector<std::string>> &rows);

} // namespace cfgctl
