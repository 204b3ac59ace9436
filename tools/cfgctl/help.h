// What the tables say, as text.
#pragma once

#include "table.h"

#include <string>
#include <vector>

namespace cfgctl
{

bool is(const char *text, const std::string &other);

// Where a word stands: "KEY", "on|off", "user=...", "--count N".
std::string label(const Word &word);

// What a word means, and what it takes.
std::string explanation(const Word &word);

// The list behind an action's words, of an entry or of the keys; empty: none.
struct Details {
    const char *heading;
    std::vector<Word> words;
};
Details details(const Action &action);

// "cfgctl VERB"; "cfgctl VERB ...", as the command line has it.
std::string name_of(const Action &action);
std::string usage(const Action &action);

// What may stand in a word's place: "a number from 0 to 1".
std::string takes(const Word &word);

// All verbs, a line each; a verb's actions with their words. 80 columns.
std::string help();
std::string help(const Verb &verb);

// Rows as columns, each as wide as its widest cell.
std::string columns(const std::vector<std::vector<std::string>> &rows);

} // namespace cfgctl
