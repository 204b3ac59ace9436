// get, set, restore, show: the stored settings and what applies them.

#include "cfgctl.h"

#include "cfg_set.h"
#include "platform/param_store.h"

#include <algorithm>

namespace cfgctl
{

namespace
{

// A stored setting that the library applies to the device.
struct Setting {
    const char *key;
    const char *family;
    uint32_t largest; // value the setter takes
    int (*apply)(uint32_t value);
    int (*restore)();
    const char *setter;
    const char *applied_through;
};

constexpr uint32_t ANY = UINT32_MAX;

const std::vector<Setting> SETTINGS = {
    {"io_mic_enable", "audio", 1, cfg_setMicEnable, cfg_restoreMicEnable, "cfg_setMicEnable",
     "media commands"},
    {"io_speaker_volume", "audio", ANY, cfg_setSpeakerVolume, cfg_restoreSpeakerVolume,
     "cfg_setSpeakerVolume", "media command"},
    {"io_speaker_enable", "audio", ANY, cfg_setSpeakerEnable, cfg_restoreSpeakerEnable,
     "cfg_setSpeakerEnable", "speaker volume restorer"},
};

const Setting *find(const std::string &key)
{
    const auto found = std::find_if(SETTINGS.begin(), SETTINGS.end(),
                                    [&](const Setting &setting) { return key == setting.key; });
    return found == SETTINGS.end() ? nullptr : &*found;
}

} // namespace

int get(const Call &call)
{
    const std::string &key = call.arguments[0];
    const auto value = stored(key);
    if (!value) {
        complain("no value of " + key + " can be read");
        return NOT_FOUND;
    }
    if (call.json)
        print_json(Json{{"key", key}, {"value", *value}});
    else
        print(*value + "\n");
    return OK;
}

int set(const Call &call)
{
    const std::string &key = call.arguments[0];
    const std::string &value = call.arguments[1];
    const Setting *setting = find(key);
    uint32_t applied = 0;
    if (setting) {
        const auto given = number(value);
        if (!given || *given > setting->largest) {
            complain(key + " takes a number from 0 to " + std::to_string(setting->largest) +
                     ", not " + value);
            return USAGE;
        }
        applied = *given;
    }

    if (param_set(key.c_str(), value.c_str()) != 0) {
        complain(key + " cannot be stored");
        return STORE_FAILED;
    }
    if (setting && !call.has("--no-apply") && setting->apply(applied) != 0) {
        complain(key + " is stored but " + setting->setter + " failed; nothing is saved");
        return APPLY_FAILED;
    }
    if (!call.has("--no-save") && param_save() != 0) {
        complain(key + " is stored, but the store cannot be saved");
        return STORE_FAILED;
    }
    if (call.json)
        print_json(Json{{"key", key},
                        {"value", value},
                        {"applied", setting && !call.has("--no-apply")},
                        {"saved", !call.has("--no-save")}});
    return OK;
}

int restore(const Call &call)
{
    const bool all = call.has("--all");
    if (all != call.arguments.empty()) {
        complain("restore takes either a key or --all");
        return USAGE;
    }
    if (!all && !find(call.arguments[0])) {
        complain("nothing restores " + call.arguments[0]);
        return NOT_FOUND;
    }

    int result = OK;
    std::vector<std::vector<std::string>> rows;
    Json json = Json::array();
    for (const Setting &setting : SETTINGS) {
        if (!all && call.arguments[0] != setting.key)
            continue;
        const bool done = setting.restore() == 0;
        if (!done)
            result = APPLY_FAILED;
        rows.push_back({setting.key, done ? "ok" : "failed"});
        json.push_back({{"key", setting.key}, {"ok", done}});
    }
    if (call.json)
        print_json(json);
    else
        print(columns(rows));
    return result;
}

int show(const Call &call)
{
    const std::string prefix = call.arguments.empty() ? "" : call.arguments[0];
    std::vector<std::vector<std::string>> rows = {{"KEY", "FAMILY", "VALUE", "APPLIED BY"}};
    Json json = Json::array();
    for (const Setting &setting : SETTINGS) {
        if (std::string(setting.key).compare(0, prefix.size(), prefix) != 0)
            continue;
        const auto value = stored(setting.key);
        rows.push_back({setting.key, setting.family, value.value_or("-"),
                        std::string(setting.setter) + ", " + setting.applied_through});
        json.push_back({{"key", setting.key},
                        {"family", setting.family},
                        {"value", value ? Json(*value) : Json()},
                        {"setter", setting.setter},
                        {"applied_through", setting.applied_through}});
    }
    if (json.empty()) {
        complain("no setting begins with " + prefix);
        return NOT_FOUND;
    }
    if (call.json)
        print_json(json);
    else
        print(columns(rows));
    return OK;
}

} // namespace cfgctl
