// viewer: the viewer list.

#include "cfgctl.h"

#include "cfg_set.h"

#include <algorithm>

namespace cfgctl
{

namespace
{

constexpr size_t MOST = 10;

std::vector<viewer_entry> viewers()
{
    std::vector<viewer_entry> list(MOST);
    uint8_t count = 0;
    viewer_get_config(&count, list.data());
    list.resize(count);
    return list;
}

// The entry of the name, or the end.
auto find(const std::vector<viewer_entry> &list, const std::string &name)
{
    return std::find_if(list.begin(), list.end(),
                        [&](const viewer_entry &entry) { return entry.name == name; });
}

int print_viewers(const Call &call)
{
    std::vector<std::vector<std::string>> rows = {{"NAME", "PASSCODE", "CREDENTIAL", "ONCE"}};
    Json json = Json::array();
    for (const viewer_entry &entry : viewers()) {
        rows.push_back({entry.name, entry.passcode, entry.credential, entry.once});
        json.push_back({{"name", entry.name},
                        {"passcode", entry.passcode},
                        {"credential", entry.credential},
                        {"once", entry.once}});
    }
    if (call.json)
        print_json(json);
    else
        print(columns(rows));
    return OK;
}

// Why the list could not give the entry back as it is; nothing when it can.
std::string fault(const std::vector<std::string> &fields)
{
    const struct {
        const char *name;
        size_t most;
    } FIELDS[] = {{"name", 255}, {"passcode", 31}, {"credential", 63}, {"once", 2}};
    size_t length = 0;
    for (size_t i = 0; i < fields.size(); i++) {
        const std::string what = FIELDS[i].name;
        length += fields[i].size() + (i > 0 ? 1 : 0);
        if (fields[i].empty() || fields[i].size() > FIELDS[i].most)
            return what + " takes 1 to " + std::to_string(FIELDS[i].most) + " characters";
        if (fields[i].find_first_of(",\n") != std::string::npos)
            return what + " cannot have a comma or a line feed";
    }
    if (!number(fields[3]))
        return "once takes a number, not " + fields[3];
    return length > 255 ? "the fields take more than 255 characters together" : "";
}

int add_viewer(const Call &call)
{
    std::vector<std::string> fields(call.arguments.begin() + 1, call.arguments.end());
    if (fields.size() == 3)
        fields.emplace_back("0");
    const std::string bad =
        fields.size() < 4 ? "add takes a name, a passcode and a credential" : fault(fields);
    if (!bad.empty()) {
        complain(bad);
        return USAGE;
    }
    const auto list = viewers();
    if (find(list, fields[0]) != list.end()) {
        complain(fields[0] + " is a viewer already, and kept as it is");
        return NOT_FOUND;
    }
    viewer_entry entry{};
    fields[0].copy(entry.name, sizeof entry.name - 1);
    fields[1].copy(entry.passcode, sizeof entry.passcode - 1);
    fields[2].copy(entry.credential, sizeof entry.credential - 1);
    fields[3].copy(entry.once, sizeof entry.once - 1);
    const int result = viewer_add_config(&entry);
    const auto now = viewers();
    if (result != 0 || find(now, fields[0]) == now.end()) {
        complain(result == 10 ? "the list has its 10 viewers" : fields[0] + " cannot be stored");
        return STORE_FAILED;
    }
    return save(call);
}

int delete_viewer(const Call &call)
{
    const std::string &name = call.arguments[1];
    const auto list = viewers();
    const auto entry = find(list, name);
    if (entry == list.end()) {
        complain("no viewer " + name);
        return NOT_FOUND;
    }
    viewer_del_config(&*entry);
    const auto now = viewers();
    if (find(now, name) != now.end() || now.size() + 1 < list.size()) {
        complain("the list cannot be stored without " + name);
        return STORE_FAILED;
    }
    return save(call);
}

} // namespace

int viewer(const Call &call)
{
    const std::string &action = call.arguments[0];
    const size_t given = call.arguments.size() - 1;
    if (action == "list" && given == 0)
        return print_viewers(call);
    if (action == "add")
        return add_viewer(call);
    if (action == "del" && given == 1)
        return delete_viewer(call);
    complain("it is list, add and a viewer, or del and a name");
    return USAGE;
}

} // namespace cfgctl
