// schedule, alarm: the lists that the app edits.

#include "cfgctl.h"

#include "cfg_set.h"

#include <algorithm>
#include <fstream>
#include <iostream>
#include <sstream>
#include <stdexcept>

namespace cfgctl
{

namespace
{

// An entry is a JSON object here, however it was given.
struct List {
    const char *key;                 // of a slot, without its number
    size_t most;                     // entries
    size_t text;                     // characters of a text; 0: there is none
    std::vector<std::string> fields; // as they are stored
    std::string (*bad_field)(const Json &entry);
    void (*set)(const Json &entries);
    Json (*get)(int count);
};

const std::string NO_NUMBER = " is not a number of 32 bits: ";

struct BadInput : std::runtime_error {
    using runtime_error::runtime_error;
};

sched_entry to_schedule(const Json &json)
{
    const auto unsigned_field = [&](const char *name) {
        return static_cast<uint32_t>(json[name].get<int32_t>());
    };
    return {unsigned_field("enable"),      json["param1"].get<int32_t>(),
            json["param2"].get<int32_t>(), unsigned_field("starttime"),
            unsigned_field("stoptime"),    unsigned_field("days"),
            unsigned_field("repeat")};
}

std::string bad_schedule_field(const Json &json)
{
    const std::map<int, std::string> fields = {{0, ""},          {-1, "enable"}, {-2, "starttime"},
                                               {-3, "stoptime"}, {-4, "days"},   {-5, "repeat"}};
    const sched_entry entry = to_schedule(json);
    return fields.at(sched_check_config(1, &entry));
}

void set_schedules(const Json &json)
{
    std::vector<sched_entry> list;
    for (const Json &entry : json)
        list.push_back(to_schedule(entry));
    sched_set_config(static_cast<int>(list.size()), list.data());
}

Json get_schedules(int count)
{
    std::vector<sched_entry> list(static_cast<size_t>(count));
    sched_get_config(&count, list.data());
    Json json = Json::array();
    for (const sched_entry &entry : list)
        json.push_back({{"enable", entry.enable},
                        {"param1", entry.param1},
                        {"param2", entry.param2},
                        {"starttime", entry.starttime},
                        {"stoptime", entry.stoptime},
                        {"days", entry.days},
                        {"repeat", entry.repeat}});
    return json;
}

alarm_clock_entry to_alarm_clock(const Json &json)
{
    const auto field = [&](const char *name) {
        return static_cast<uint32_t>(json[name].get<int32_t>());
    };
    alarm_clock_entry entry = {field("enable"), field("wday"), field("starttime"), ""};
    json["text"].get<std::string>().copy(entry.text, sizeof entry.text - 1);
    return entry;
}

std::string bad_alarm_clock_field(const Json &json)
{
    const std::map<int, std::string> fields = {
        {0, ""}, {-1, "enable"}, {-2, "wday"}, {-32, "starttime"}};
    const alarm_clock_entry entry = to_alarm_clock(json);
    return fields.at(alarm_check_config(1, &entry));
}

void set_alarm_clocks(const Json &json)
{
    std::vector<alarm_clock_entry> list;
    for (const Json &entry : json)
        list.push_back(to_alarm_clock(entry));
    alarm_set_config(static_cast<int>(list.size()), list.data());
}

Json get_alarm_clocks(int count)
{
    std::vector<alarm_clock_entry> list(static_cast<size_t>(count));
    alarm_get_config(&count, list.data());
    Json json = Json::array();
    for (const alarm_clock_entry &entry : list)
        json.push_back({{"enable", entry.enable},
                        {"wday", entry.wday},
                        {"starttime", entry.starttime},
                        {"text", entry.text}});
    return json;
}

const List SCHEDULES = {"sched",
                        9,
                        0,
                        {"enable", "param1", "param2", "starttime", "stoptime", "days", "repeat"},
                        bad_schedule_field,
                        set_schedules,
                        get_schedules};

const List ALARM_CLOCKS = {"clock",
                           7,
                           500,
                           {"enable", "wday", "starttime", "text"},
                           bad_alarm_clock_field,
                           set_alarm_clocks,
                           get_alarm_clocks};

// The slots of a list: dense, up to the first without an entry.
int filled(const List &list)
{
    int count = 0;
    const auto slot = [&] {
        return std::string(list.key) + (count < 10 ? "0" : "") + std::to_string(count);
    };
    while (count < static_cast<int>(list.most) && !stored(slot()).value_or("").empty())
        count++;
    return count;
}

// A line has the fields as they are stored; a text is all that is left of it.
Json from_line(const List &list, std::string line)
{
    Json entry;
    for (const std::string &name : list.fields) {
        const bool last = name == list.fields.back();
        const size_t comma = name == "text" ? std::string::npos : line.find(',');
        if (last != (comma == std::string::npos))
            throw BadInput("has not " + std::to_string(list.fields.size()) + " fields");
        const std::string field = line.substr(0, comma);
        const auto value = integer(field);
        if (name == "text")
            entry[name] = field;
        else if (value)
            entry[name] = *value;
        else
            throw BadInput(name + NO_NUMBER + field);
        line.erase(0, comma == std::string::npos ? comma : comma + 1);
    }
    return entry;
}

void require_fields(const List &list, const Json &entry)
{
    if (!entry.is_object())
        throw BadInput("is not an object");
    for (const std::string &name : list.fields) {
        if (!entry.contains(name))
            throw BadInput("has no " + name);
        const Json &field = entry[name];
        if (name != "text" && (!field.is_number_integer() || !integer(field.dump())))
            throw BadInput(name + NO_NUMBER + field.dump());
        if (name != "text")
            continue;
        const std::string text = field.is_string() ? field.get<std::string>() : "\n";
        if (text.size() > list.text ||
            text.find_first_of(std::string("\r\n\0", 3)) != std::string::npos)
            throw BadInput("text is not one line of at most " + std::to_string(list.text) +
                           " characters");
    }
    if (entry.size() != list.fields.size())
        throw BadInput("has a field too many");
    const std::string bad = list.bad_field(entry);
    if (!bad.empty())
        throw BadInput(bad + " " + entry[bad].dump() + " is out of range");
}

// The entries of a JSON array, or one a line.
Json parse(const List &list, const std::string &input)
{
    Json entries = Json::array();
    const size_t start = input.find_first_not_of(" \t\r\n");
    if (start == std::string::npos)
        throw BadInput("no entries are given; [] empties the list");
    const bool is_json = input[start] == '[';
    if (is_json)
        entries = Json::parse(input, nullptr, false);
    if (!entries.is_array())
        throw BadInput("the input is not a JSON array");
    std::istringstream lines(is_json ? "" : input);
    for (std::string line; std::getline(lines, line);)
        entries.push_back(line);
    if (entries.size() > list.most)
        throw BadInput(std::to_string(entries.size()) + " entries, and the list holds " +
                       std::to_string(list.most));
    for (size_t i = 0; i < entries.size(); i++) {
        try {
            if (!is_json)
                entries[i] = from_line(list, entries[i].get<std::string>());
            require_fields(list, entries[i]);
        } catch (const BadInput &bad) {
            throw BadInput("entry " + std::to_string(i + 1) + ": " + bad.what());
        }
    }
    return entries;
}

// Minutes of the day as people write them; everything else as it is stored.
std::string cell(const std::string &name, const Json &value)
{
    if (name != "starttime" && name != "stoptime")
        return text_of(value);
    char text[32];
    const auto minutes = value.get<uint32_t>();
    std::snprintf(text, sizeof text, "%02u:%02u", minutes / 60, minutes % 60);
    return text;
}

int print_list(const Call &call, const List &list)
{
    const Json entries = list.get(filled(list));
    if (call.json) {
        print_json(entries);
        return OK;
    }
    std::vector<std::vector<std::string>> rows = {{"SLOT"}};
    for (std::string name : list.fields) {
        std::transform(name.begin(), name.end(), name.begin(), toupper);
        rows[0].push_back(name);
    }
    for (size_t i = 0; i < entries.size(); i++) {
        rows.push_back({std::to_string(i)});
        for (const std::string &name : list.fields)
            rows.back().push_back(cell(name, entries[i][name]));
    }
    print(columns(rows));
    return OK;
}

int set_list(const Call &call, const List &list)
{
    const bool from_file = call.arguments.size() > 1;
    std::ifstream file;
    if (from_file)
        file.open(call.arguments[1], std::ios::binary);
    std::ostringstream input;
    input << (from_file ? file.rdbuf() : std::cin.rdbuf());
    if (from_file && !file) {
        complain("cannot read " + call.arguments[1]);
        return NOT_FOUND;
    }
    Json entries;
    try {
        entries = parse(list, input.str());
    } catch (const BadInput &bad) {
        complain(std::string(bad.what()) + "; nothing is changed");
        return USAGE;
    }
    list.set(entries);
    if (filled(list) != static_cast<int>(entries.size())) {
        complain("only " + std::to_string(filled(list)) + " of " + std::to_string(entries.size()) +
                 " entries are stored");
        return STORE_FAILED;
    }
    return save(call);
}

int list_verb(const Call &call, const List &list)
{
    if (call.arguments[0] == "set")
        return set_list(call, list);
    if (call.arguments[0] == "list" && call.arguments.size() == 1)
        return print_list(call, list);
    complain("it is list, or set and a file");
    return USAGE;
}

} // namespace

int schedule(const Call &call)
{
    return list_verb(call, SCHEDULES);
}

int alarm_clock(const Call &call)
{
    return list_verb(call, ALARM_CLOCKS);
}

} // namespace cfgctl
