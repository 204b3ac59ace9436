// get, set, restore, show: the stored settings and what applies them.

#include "cfgctl.h"

#include "cfg_set.h"
#include "platform/param_store.h"

#include <algorithm>
#include <variant>

namespace cfgctl
{

namespace
{

using Setter = std::variant<int (*)(uint32_t), int (*)(int), int (*)(const char *)>;

// A stored setting that the library applies to the device.
struct Setting {
    const char *key;
    const char *family;
    uint32_t largest; // number that the setter takes; of a text, its length
    Setter apply;
    int (*restore)(); // null when nothing applies the stored value again
    const char *setter;
    const char *applied_through;
    int (*on_board)() = nullptr; // null when every board has it
    bool stores = false;         // whether the setter stores the value, too
};

constexpr uint32_t ANY = UINT32_MAX;
constexpr uint32_t LONGEST = 255; // text that a stored value can have

const std::vector<Setting> SETTINGS = {
    {"io_mic_enable", "audio", 1, cfg_setMicEnable, cfg_restoreMicEnable, "cfg_setMicEnable",
     "media commands"},
    {"io_speaker_volume", "audio", ANY, cfg_setSpeakerVolume, cfg_restoreSpeakerVolume,
     "cfg_setSpeakerVolume", "media command"},
    {"io_speaker_enable", "audio", ANY, cfg_setSpeakerEnable, cfg_restoreSpeakerEnable,
     "cfg_setSpeakerEnable", "speaker volume restorer"},
    {"io_ir_enable", "image", 2, cfg_setIrEnable, cfg_restoreIrEnable, "cfg_setIrEnable",
     "/proc/ir_mode"},
    {"io_video_orientation", "image", ANY, cfg_setVideoOrientation, cfg_restoreVideoOrientation,
     "cfg_setVideoOrientation", "media command"},
    {"io_backlight_compensation", "image", ANY, cfg_setBacklightCompensation,
     cfg_restoreBacklightCompensation, "cfg_setBacklightCompensation",
     "/proc/backlight, image processor"},
    {"alert_pir_enable", "detection", ANY, cfg_setPirEnable, cfg_restorePirEnable,
     "cfg_setPirEnable", "daemon message, signal"},
    {"alert_audio_enable", "detection", ANY, cfg_setVolumeDetect, cfg_restoreVolumeDetect,
     "cfg_setVolumeDetect", "daemon message"},
    {"alert_audio_sensitivity", "detection", ANY, cfg_setVolumeDetectSensitivity,
     cfg_restoreVolumeDetectSensitivity, "cfg_setVolumeDetectSensitivity", "daemon message"},
    {"alert_motion_track_enable", "alerts", ANY, cfg_setMotionTrackEnable,
     cfg_restoreMotionTrackEnable, "cfg_setMotionTrackEnable", "nothing"},
    {"alert_type", "alerts", ANY, cfg_setAlertType, cfg_restoreAlertType, "cfg_setAlertType",
     "nothing"},
    {"alert_app_enable", "alerts", ANY, cfg_setAlertAppEnable, cfg_restoreAlertAppEnable,
     "cfg_setAlertAppEnable", "nothing"},
    {"alert_chat_enable", "alerts", ANY, cfg_setAlertChatEnable, cfg_restoreAlertChatEnable,
     "cfg_setAlertChatEnable", "nothing"},
    {"alert_video_call_enable", "alerts", ANY, cfg_setAlertVideoCallEnable,
     cfg_restoreAlertVideoCallEnable, "cfg_setAlertVideoCallEnable", "nothing"},
    {"alert_call_account", "alerts", LONGEST, cfg_setAlertVideoCallAccount,
     cfg_restoreAlertVideoCallAccount, "cfg_setAlertVideoCallAccount", "nothing"},
    {"alert_email_enable", "alerts", ANY, cfg_setAlertEmailEnable, cfg_restoreAlertEmailEnable,
     "cfg_setAlertEmailEnable", "nothing"},
    {"alert_email_account", "alerts", LONGEST, cfg_setAlertEmailAccount,
     cfg_restoreAlertEmailAccount, "cfg_setAlertEmailAccount", "nothing"},
    {"wled_mode", "lamps", 2, cfg_setWLEDEnable, cfg_restoreWLEDEnable, "cfg_setWLEDEnable",
     "/proc/wled_mode", cfg_isWLEDVersion},
    {"rlamp_mode", "lamps", 3, cfg_setRlampEnable, cfg_restoreRlampEnable, "cfg_setRlampEnable",
     "/proc/rlamp_mode", cfg_isRlampVersion},
    // A number above INT32_MAX would be stored as a negative one, which reads as off.
    {PRIVACY_KEY, "privacy", INT32_MAX, cfg_set_privacy, nullptr, "cfg_set_privacy",
     "messages, commands, signals", nullptr, true},
};

const Setting *find(const std::string &key)
{
    const auto found = std::find_if(SETTINGS.begin(), SETTINGS.end(),
                                    [&](const Setting &setting) { return key == setting.key; });
    return found == SETTINGS.end() ? nullptr : &*found;
}

// Says so when the setter does not take the value.
bool takes(const Setting &setting, const std::string &value)
{
    const std::string largest = std::to_string(setting.largest);
    if (std::holds_alternative<int (*)(const char *)>(setting.apply)) {
        if (value.size() <= setting.largest)
            return true;
        complain(std::string(setting.key) + " takes at most " + largest + " characters");
        return false;
    }
    const auto given = number(value);
    if (given && *given <= setting.largest)
        return true;
    complain(std::string(setting.key) + " takes a number from 0 to " + largest + ", not " + value);
    return false;
}

int apply(const Setting &setting, const std::string &value)
{
    if (const auto *setter = std::get_if<int (*)(const char *)>(&setting.apply))
        return (*setter)(value.c_str());
    const uint32_t given = number(value).value_or(0);
    if (const auto *setter = std::get_if<int (*)(int)>(&setting.apply))
        return (*setter)(static_cast<int>(given));
    return std::get<int (*)(uint32_t)>(setting.apply)(given);
}

int not_stored(const std::string &key)
{
    complain(key + " cannot be stored");
    return STORE_FAILED;
}

// Stores and applies as far as the call asks for it.
int change(const Call &call, const Setting *setting, const std::string &value)
{
    const std::string &key = call.arguments[0];
    const bool applies = setting && !call.has("--no-apply");
    if (applies && setting->stores) {
        apply(*setting, value); // has to find the old value
        return number(stored(key).value_or("")) == number(value) ? OK : not_stored(key);
    }
    if (param_set(key.c_str(), value.c_str()) != 0)
        return not_stored(key);
    if (applies && apply(*setting, value) != 0) {
        complain(key + " is stored but " + setting->setter + " failed; nothing is saved");
        return APPLY_FAILED;
    }
    return OK;
}

// Whether the board says that it does not have what the setting is for.
bool absent(const Setting &setting)
{
    char version[32];
    return setting.on_board && cfg_getBoardInfo(BOARD_INFO_HWVER, version, sizeof version) == 0 &&
           setting.on_board() == 0;
}

struct Restored {
    const char *result;
    Exit status;
};

Restored restored(const Setting &setting)
{
    if (!setting.restore)
        return {"nothing restores it", NOT_FOUND};
    if (setting.restore() == 0)
        return {"ok", OK};
    if (absent(setting))
        return {"not on this board", NOT_FOUND};
    return {"failed", APPLY_FAILED};
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
    if (setting && !takes(*setting, value))
        return USAGE;
    if (const int failure = change(call, setting, value))
        return failure;
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
    const Setting *one = all ? nullptr : find(call.arguments[0]);
    if (!all && (!one || !one->restore)) {
        complain("nothing restores " + call.arguments[0]);
        return NOT_FOUND;
    }

    int status = OK;
    std::vector<std::vector<std::string>> rows;
    Json json = Json::array();
    for (const Setting &setting : SETTINGS) {
        if (one && one != &setting)
            continue;
        const Restored outcome = restored(setting);
        // With --all, what this board does not have is no failure.
        if (one || outcome.status == APPLY_FAILED)
            status = outcome.status;
        rows.push_back({setting.key, outcome.result});
        json.push_back({{"key", setting.key},
                        {"ok", outcome.status == NOT_FOUND ? Json() : Json(outcome.status == OK)},
                        {"result", outcome.result}});
    }
    if (call.json)
        print_json(json);
    else
        print(columns(rows));
    return status;
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
