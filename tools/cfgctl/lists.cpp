// schedule, alarm: the lists that the app edits.

#include "cfgctl.h"

#include "cfg_set.h"

#include <algorithm>
#include <cerrno>
#include <cstring>

namespace cfgctl
{

namespace
{

// clang-format off
Json get_schedules(int count)
{
    std::vector<sched_entry> list(static_cast<size_t>(count));
    sched_get_config(&count, list.data());
    list.resize(static_cast<size_t>(count));
    Json json = Json::array();
    for (const sched_entry &e : list)
        json.push_back({{"enable", e.enable}, {"param1", e.param1}, {"param2", e.param2},
                        {"starttime", e.starttime}, {"stoptime", e.stoptime},
                        {"days", e.days}, {"repeat", e.repeat}});
    return json;
}

// clang-format on

void set_schedules(const Json &json)
{
    std::vector<sched_entry> list;
    for (const Json &e : json)
        list.push_back({e["enable"], e["param1"], e["param2"], e["starttime"], e["stoptime"],
                        e["days"], e["repeat"]});
    sched_set_config(static_cast<int>(list.size()), list.data());
}

Json get_alarm_clocks(int count)
{
    std::vector<alarm_clock_entry> list(static_cast<size_t>(count));
    alarm_get_config(&count, list.data());
    list.resize(static_cast<size_t>(count));
    Json json = Json::array();
    for (const alarm_clock_entry &e : list)
        json.push_back(
            {{"enable", e.enable}, {"wday", e.wday}, {"starttime", e.starttime}, {"text", e.text}});
    return json;
}

void set_alarm_clocks(const Json &json)
{
    std::vector<alarm_clock_entry> list;
    for (const Json &e : json) {
        list.push_back({e["enable"], e["wday"], e["starttime"], ""});
        e["text"].get<std::string>().copy(list.back().text, sizeof list.back().text - 1);
    }
    alarm_set_config(static_cast<int>(list.size()), list.data());
}

// Every entry is a JSON object here, whatever its input form.
constexpr struct List {
    const char *slot; // a key without its last digit
    size_t most;      // entries
    const Word *fields;
    Json (*get)(int count);
    void (*set)(const Json &entries);
} LISTS[] = {{"sched0", 9, SCHEDULE, get_schedules, set_schedules},
             {"clock0", 7, ALARM_CLOCK, get_alarm_clocks, set_alarm_clocks}};

const List &list_of(const Call &call)
{
    return LISTS[is(call.action->verb, "alarm") ? 1 : 0];
}

// The number of used slots. The first empty slot ends the list.
size_t filled(const List &list)
{
    size_t count = 0;
    while (count < list.most && !stored(list.slot + std::to_string(count)).value_or("").empty())
        count++;
    return count;
}

std::vector<std::string> names_of(const List &list)
{
    std::vector<std::string> names;
    for (const Word *field = list.fields; field->name; field++)
        names.emplace_back(field->name);
    return names;
}

// The fields of a line with commas. A text field takes the rest of the line.
std::vector<std::string> of_line(const List &list, const std::string &line)
{
    std::vector<std::string> texts;
    size_t at = 0;
    for (const Word *field = list.fields; field->name && at <= line.size(); field++) {
        const size_t comma =
            field->kind == TEXT ? line.size() : std::min(line.find(',', at), line.size());
        texts.push_back(line.substr(at, comma - at));
        at = comma + 1;
    }
    if (texts.size() != names_of(list).size() || at <= line.size())
        fail(USAGE, "does not have " + std::to_string(names_of(list).size()) + " fields");
    return texts;
}

// The fields of a row of the table that list prints; `headings` is its first line.
std::vector<std::string> of_row(const std::string &headings, std::string row)
{
    std::vector<std::string> texts;
    row.resize(std::max(row.size(), headings.size()), ' ');
    for (size_t at = 0; at < headings.size();) {
        const size_t next = headings.find_first_not_of(' ', headings.find(' ', at));
        const std::string cell = row.substr(at, next - at);
        texts.push_back(cell.substr(0, cell.find_last_not_of(' ') + 1));
        at = next;
    }
    texts.erase(texts.begin()); // the slot
    return texts;
}

std::vector<std::string> of_object(const List &list, const Json &entry)
{
    std::vector<std::string> texts;
    for (const std::string &name : names_of(list)) {
        if (!entry.is_object() || !entry.contains(name))
            fail(USAGE, "has no " + name);
        const Json &value = entry[name];
        texts.push_back(text_of(value));
        if ((!value.is_string() && !value.is_number_integer()) ||
            texts.back().find_first_of(std::string("\r\n\0", 3)) != std::string::npos)
            fail(USAGE, name + " is not one line of text or a number");
    }
    if (entry.size() != texts.size())
        fail(USAGE, "has an unknown field");
    return texts;
}

Json checked(const List &list, const std::vector<std::string> &texts)
{
    Json entry;
    for (size_t i = 0; i < texts.size(); i++) {
        const Word &field = list.fields[i];
        check(field, texts[i]);
        entry[field.name] = field.kind == TEXT ? Json(texts[i]) : Json(*minutes(texts[i]));
    }
    return entry;
}

// The entries of a JSON array, of a printed table, or of lines.
Json parse(const List &list, const std::string &input)
{
    std::vector<std::string> lines;
    for (const std::string &line : split(input, '\n'))
        if (line.find_first_not_of(" \t\r") != std::string::npos)
            lines.push_back(line.substr(0, line.find_last_not_of('\r') + 1));
    if (lines.empty())
        fail(USAGE, "no entries; [] empties the list");
    const bool is_json = lines[0][lines[0].find_first_not_of(" \t")] == '[';
    const bool is_table = lines[0].compare(0, 5, "SLOT ") == 0;
    const Json array = is_json ? Json::parse(input, nullptr, false) : Json(lines);
    if (!array.is_array())
        fail(USAGE, "the input is not a JSON array");
    Json entries = Json::array();
    for (const Json &given : array) {
        if (is_table && &given == &array[0])
            continue;
        try {
            entries.push_back(checked(list, is_json    ? of_object(list, given)
                                            : is_table ? of_row(lines[0], given.get<std::string>())
                                                       : of_line(list, given.get<std::string>())));
        } catch (const Failure &bad) {
            fail(USAGE, "entry " + std::to_string(entries.size() + 1) + ": " + bad.what());
        }
    }
    if (entries.size() > list.most)
        fail(USAGE, std::to_string(entries.size()) + " entries, but the list holds " +
                        std::to_string(list.most));
    return entries;
}

} // namespace

void list_print(Call &call)
{
    const List &list = list_of(call);
    call.data = list.get(static_cast<int>(filled(list)));
    call.fields = names_of(list);
    call.fields.insert(call.fields.begin(), "slot");
}

void list_set(Call &call)
{
    const List &list = list_of(call);
    FILE *file = call.words.empty() ? stdin : std::fopen(call.words[0].c_str(), "re");
    const std::string input = file ? rest_of(file) : "";
    if (!file || std::ferror(file))
        fail(NOT_FOUND, "cannot read the entries: " + std::string(std::strerror(errno)));
    Json entries;
    try {
        entries = parse(list, input);
    } catch (const Failure &bad) {
        fail(USAGE, std::string(bad.what()) + "; nothing is changed");
    }
    list.set(entries);
    if (filled(list) != entries.size())
        fail(STORE_FAILED, "only " + std::to_string(filled(list)) + " of " +
                               std::to_string(entries.size()) + " entries are stored");
    call.done["entries"] = entries.size();
}

} // namespace cfgctl
