// The text of the tables.
#pragma once

#include "table.h"

#include <string>
#include <vector>

namespace cfgctl
{

bool is(const char *text, const std::string &other);

// A word in a usage line: "KEY", "on|off", "user=...", "--count N".
std::string label(const Word &word);

// What a word means, and its valid values.
std::string explanation(const Word &word);

// The list after an action's words: the fields of an entry, the keys, or nothing.
struct Details {
    const char *heading;
    std::vector<Word> words;
};
Details details(const Action &action);

// "cfgctl VERB NAME"; the whole usage line.
std::string name_of(const Action &action);
std::string usage(const Action &action);

// A word's valid values: "a number from 0 to 1".
std::string takes(const Word &word);

// All verbs, one per line; one verb's actions with their words. 80 columns.
std::string help();
std::string help(const Verb &verb);

// Rows as columns, each as wide as its widest cell.
std::string columns(const std::vector<std::vector<std::string>> &rows);

} // namespace cfgctl
