#include "help.h"

#include <algorithm>

namespace cfgctl
{

namespace
{

constexpr size_t WIDTH = 80;
constexpr size_t MEANING = 20; // column of what is said of a word

// Where a word stands: "KEY", "on|off", "user=...", "--count N".
std::string label(const Word &word)
{
    const std::string name = word.name;
    if (name[0] == '-')
        return name + (word.kind == NONE ? "" : " N");
    if (name.back() == '=')
        return name + (word.choices ? word.choices : "...");
    return word.choices ? word.choices : name;
}

// Breaks at blanks. The first line begins with `head`, the others with blanks.
std::string wrap(std::string head, size_t indent, const std::string &text)
{
    std::string lines;
    const auto end_line = [&] { lines += head.substr(0, head.find_last_not_of(' ') + 1) + "\n"; };
    for (size_t at = 0, end; at < text.size(); at = end + 1) {
        end = std::min(text.find(' ', at), text.size());
        if (head.size() + end - at > WIDTH) {
            end_line();
            head.assign(indent, ' ');
        }
        head += text.substr(at, end - at) + " ";
    }
    end_line();
    return lines;
}

std::string item(const Word &word)
{
    std::string head = "      " + label(word) + "  ";
    head.resize(std::max(head.size(), MEANING), ' ');
    const std::string values = takes(word);
    return wrap(head, MEANING, word.meaning + (values.empty() ? "" : " (" + values + ")"));
}

std::string items(const Word *words)
{
    std::string text;
    for (; words->name; words++)
        text += item(*words);
    return text;
}

std::string name_of(const Action &action)
{
    return std::string("cfgctl ") + action.verb + (*action.name ? " " : "") + action.name;
}

// The action's own part of the help.
std::string part(const Action &action)
{
    const bool sets_list = is(action.name, "set");
    std::string text = wrap("", 8, usage(action)) + wrap("    ", 4, action.effect);
    text += items(action.words);
    if (sets_list || action.options & FORCE)
        text += sets_list ? "    The fields of an entry:\n" : "    The keys:\n";
    if (sets_list)
        text += items(is(action.verb, "schedule") ? SCHEDULE : ALARM_CLOCK);
    for (const Setting &setting : SETTINGS)
        if (action.options & FORCE)
            text += item(setting.value);
    if (*action.exits)
        text += wrap("    Exit status: 0, or ", 4, action.exits);
    return text + "    Example: " + name_of(action) + (*action.example ? " " : "") +
           action.example + "\n\n";
}

} // namespace

bool is(const char *text, const std::string &other)
{
    return other == text;
}

std::string usage(const Action &action)
{
    std::string line = name_of(action);
    for (unsigned i = 0; i < OPTION_COUNT; i++)
        if (action.options >> i & 1)
            line += " [" + label(OPTIONS[i]) + "]";
    for (unsigned i = 0; action.words[i].name; i++)
        line +=
            i < action.least ? " " + label(action.words[i]) : " [" + label(action.words[i]) + "]";
    return line;
}

std::string takes(const Word &word)
{
    const std::string most = std::to_string(word.most);
    const std::string least = std::to_string(word.least);
    std::string choices = word.kind == CHOICE ? word.choices : "";
    for (size_t bar; (bar = choices.rfind('|')) != std::string::npos;)
        choices.replace(bar, 1, choices.find(" or ") == std::string::npos ? " or " : ", ");
    if (word.kind == NUMBER || word.kind == TIME)
        return "a number from " + least + " to " + most + (word.kind == TIME ? ", or HH:MM" : "");
    if (word.kind == TEXT || word.kind == SECRET || word.kind == PATH)
        return (word.least ? least + " to " : "at most ") + most + " characters";
    return choices;
}

std::string help(const Verb &verb)
{
    std::string text;
    unsigned options = JSON;
    for (const Action &action : ACTIONS) {
        if (!is(action.verb, verb.name))
            continue;
        text += part(action);
        options |= action.options;
    }
    for (unsigned i = 0; i < OPTION_COUNT; i++)
        if (options >> i & 1)
            text += item(OPTIONS[i]);
    return text;
}

std::string help()
{
    std::vector<std::vector<std::string>> rows;
    for (const Verb &verb : VERBS)
        rows.push_back({std::string("  ") + verb.name, verb.summary});
    return "usage: cfgctl [OPTION...] VERB [WORD...]\n\n" + columns(rows) +
           "\ncfgctl help VERB explains a verb. --json prints JSON everywhere. Standard\n"
           "output is data only; what the library reports goes to standard error.\n"
           "Exit status: 0 done, 1 not found or false, 2 wrong usage, 3 not stored,\n"
           "4 not applied.\n";
}

std::string columns(const std::vector<std::vector<std::string>> &rows)
{
    std::vector<size_t> widths;
    for (const auto &row : rows) {
        widths.resize(std::max(widths.size(), row.size()));
        for (size_t i = 0; i < row.size(); i++)
            widths[i] = std::max(widths[i], row[i].size());
    }
    std::string text;
    for (const auto &row : rows) {
        for (size_t i = 0; i < row.size(); i++) {
            text += row[i];
            if (i + 1 < row.size())
                text.append(widths[i] - row[i].size() + 2, ' ');
        }
        text += '\n';
    }
    return text;
}

} // namespace cfgctl
