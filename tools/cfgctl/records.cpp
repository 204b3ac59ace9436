// viewer, feature: the viewer list and the feature switches.

#include "cfgctl.h"

#include "cfg_set.h"

#include <algorithm>

namespace cfgctl
{

namespace
{

constexpr size_t VIEWERS_MOST = 10;

std::vector<viewer_entry> viewers()
{
    std::vector<viewer_entry> list(VIEWERS_MOST);
    uint8_t count = 0;
    viewer_get_config(&count, list.data());
    list.resize(count);
    return list;
}

// The entry with this name, or the end.
auto find(const std::vector<viewer_entry> &list, const std::string &name)
{
    return std::find_if(list.begin(), list.end(),
                        [&](const viewer_entry &entry) { return entry.name == name; });
}

struct Feature {
    const char *name;
    const char *keys[3]; // of its numbers
    const char *folder;  // key of the text after them, or null
    void (*get)(int *numbers, char *folder);
    void (*set)(const int *numbers, const char *folder);
};

// clang-format off
#define GET [](int *n, [[maybe_unused]] char *folder)
#define SET [](const int *n, [[maybe_unused]] const char *folder)
constexpr Feature FEATURES[] = {
    {"nimbus", {"nimbus_enable"}, "nimbus_folderid",
     GET { nimbus_get_config(&n[0], folder, &n[2]); }, SET { nimbus_set_config(n[0], folder); }},
    {"led_disable", {"led_disable"}, nullptr,
     GET { led_disable_get_config(&n[0]); },
     SET { led_disable_set_config(n[0]); }},
    {"alert_vclip", {"alert_vclip", "alert_vclip_duration", "alert_vclip_prelude"}, nullptr,
     GET { n[2] = 4; alert_vclip_get_config(&n[0], &n[1], &n[2]); },
     SET { alert_vclip_set_config(n[0], n[1], n[2]); }},
    {"event", {"event_s3_setting", "event_push_setting"}, nullptr,
     GET { event_get_config(&n[0], &n[1]); },
     SET { event_set_config(n[0], n[1]); }},
    {"media_server", {"media_server_enable", "media_server_auth", "kurento_max_video_level"}, nullptr,
     GET { media_server_get_config(&n[0], &n[1], &n[2]); },
     SET { media_server_set_config(n[0], n[1], n[2]); }},
};
// clang-format on

Json values(const Feature &feature)
{
    Json json;
    int numbers[3] = {};
    char folder[256] = "";
    feature.get(numbers, folder);
    const Word *word = find_action("feature", feature.name)->words;
    for (size_t i = 0; word[i].name; i++)
        json[lower(word[i].name)] = word[i].kind == TEXT ? Json(folder) : Json(numbers[i]);
    if (feature.folder)
        json["status"] = numbers[2];
    return json;
}

} // namespace

void viewer_list(Call &call)
{
    call.data = Json::array();
    call.fields = {"name", "passcode", "credential", "once"};
    const bool shown = call.has(SHOW_SECRETS);
    for (const viewer_entry &entry : viewers())
        call.data.push_back({{"name", entry.name},
                             {"passcode", shown ? entry.passcode : HIDDEN},
                             {"credential", shown ? entry.credential : HIDDEN},
                             {"once", number_or_null(entry.once)}});
}

void viewer_add(Call &call)
{
    if (call.words.size() == 3)
        call.words.emplace_back("0");
    size_t length = call.words.size() - 1;
    for (const std::string &field : call.words) {
        length += field.size();
        if (field.find_first_of(",\n") != std::string::npos)
            fail(USAGE, "a viewer's fields cannot contain a comma or a line feed");
    }
    if (length > 255)
        fail(USAGE, "the fields have more than 255 characters in total");
    const auto list = viewers();
    const std::string &name = call.words[0];
    if (find(list, name) != list.end())
        fail(NOT_FOUND, name + " is already a viewer; nothing was changed");
    viewer_entry entry{};
    name.copy(entry.name, sizeof entry.name - 1);
    call.words[1].copy(entry.passcode, sizeof entry.passcode - 1);
    call.words[2].copy(entry.credential, sizeof entry.credential - 1);
    call.words[3].copy(entry.once, sizeof entry.once - 1);
    const int result = viewer_add_config(&entry);
    const auto now = viewers();
    if (result != 0 || find(now, name) == now.end())
        fail(STORE_FAILED,
             result == 10 ? "the list is full: 10 viewers" : name + " cannot be stored");
}

void viewer_del(Call &call)
{
    const std::string &name = call.words[0];
    const auto list = viewers();
    const auto entry = find(list, name);
    if (entry == list.end())
        fail(NOT_FOUND, "no viewer " + name);
    viewer_del_config(&*entry);
    const auto now = viewers();
    if (find(now, name) != now.end() || now.size() + 1 < list.size())
        fail(STORE_FAILED, "the list cannot be stored without " + name);
}

void feature_list(Call &call)
{
    for (const Feature &feature : FEATURES)
        call.data[feature.name] = values(feature);
}

void feature(Call &call)
{
    const Feature &feature =
        *std::find_if(std::begin(FEATURES), std::end(FEATURES),
                      [&](const Feature &row) { return is(row.name, call.action->name); });
    if (call.words.empty()) {
        call.data = values(feature);
        return;
    }
    int numbers[3] = {};
    const Word *words = call.action->words;
    for (size_t i = 0; i < call.words.size(); i++)
        numbers[i] = words[i].kind == NUMBER ? static_cast<int>(*number(call.words[i])) : 0;
    feature.set(numbers, call.words.back().c_str());
    for (size_t i = 0; i < call.words.size(); i++)
        if (words[i].kind == TEXT)
            require_stored(feature.folder, call.words[i]);
        else
            require_stored(feature.keys[i], std::to_string(numbers[i]));
}

} // namespace cfgctl
