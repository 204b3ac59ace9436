#include "help.h"

#include <algorithm>

namespace cfgctl
{

namespace
{

constexpr size_t WIDTH = 80;
constexpr size_t MEANING = 20; // column of the explanations

// Breaks lines at blanks. `head` starts the first line; blanks indent the others.
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
    return wrap(head, MEANING, explanation(word));
}

// The help of one action.
std::string part(const Action &action)
{
    std::string text = wrap("", 8, usage(action)) + wrap("    ", 4, action.effect);
    for (const Word *word = action.words; word->name; word++)
        text += item(*word);
    const Details more = details(action);
    if (!more.words.empty())
        text += wrap("    ", 4, more.heading);
    for (const Word &word : more.words)
        text += item(word);
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

std::string label(const Word &word)
{
    const std::string name = word.name;
    if (name[0] == '-')
        return name + (word.kind == NONE ? "" : word.kind == NUMBER ? " N" : " VALUE");
    if (word.kind == ASSIGNMENT)
        return name + "...";
    if (name.back() == '=')
        return name + (word.choices ? word.choices : "...");
    return word.choices ? word.choices : name;
}

std::string explanation(const Word &word)
{
    const std::string values = takes(word);
    return word.meaning + (values.empty() ? "" : " (" + values + ")");
}

Details details(const Action &action)
{
    Details all = {"The fields of an entry:", {}};
    if (is(action.name, "set"))
        for (const Word *field = is(action.verb, "schedule") ? SCHEDULE : ALARM_CLOCK; field->name;
             field++)
            all.words.push_back(*field);
    if (!is(action.verb, "set"))
        return all;
    all.heading = "The keys:";
    for (const Setting &setting : SETTINGS)
        all.words.push_back(setting.value);
    return all;
}

std::string name_of(const Action &action)
{
    return std::string("cfgctl ") + action.verb + (*action.name ? " " : "") + action.name;
}

std::string usage(const Action &action)
{
    std::string line = name_of(action);
    for (unsigned i = 0; i < OPTION_COUNT; i++)
        if (action.options >> i & 1)
            line += " [" + label(OPTIONS[i]) + "]";
    const bool together = (action.options & TOGETHER) != 0;
    for (unsigned i = 0; action.words[i].name; i++) {
        const bool opens = i >= action.least && (i == 0 || !together);
        const bool closes = i >= action.least && (!together || !action.words[i + 1].name);
        line += (opens ? " [" : " ") + label(action.words[i]) + (closes ? "]" : "");
    }
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
    if (word.kind == WIFI_KEY)
        return "none, 5, 13 or 8 to 64 characters";
    if (word.kind == BSSID)
        return "a BSSID such as a2:00:5e:00:53:01, no 0 in front";
    if (word.kind == AREAS)
        return "six numbers, {A,B}{C,D,E,F}";
    if (word.kind >= TEXT)
        return (word.least ? least + " to " : "at most ") + most +
               (word.kind == SSID ? " bytes" : " characters");
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
    std::string exits;
    for (const Verb &status : EXITS)
        exits += std::string(exits.empty() ? "" : ", ") + status.name + " " + status.summary;
    return "usage: cfgctl [OPTION...] VERB [WORD...]\n\n" + columns(rows) + "\n" +
           wrap(
               "", 0,
               "cfgctl help VERB explains a verb. --json prints everything but help and version as "
               "JSON. Standard output is data only; reports go to standard error. "
               "Exit status: " +
                   exits + ".");
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
