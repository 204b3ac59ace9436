// privacy, night, lamp, probe, prompt, alert, sound, status: the camera's present
// state.

#include "cfgctl.h"

#include "cfg_set.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <sys/stat.h>
#include <unistd.h>

namespace cfgctl
{

static void tell(Call &call, bool on)
{
    call.answer({{"on", on}}, on ? "on" : "off");
    call.status = on ? OK : NOT_FOUND;
}

static bool is_readable(const std::string &path)
{
    return access(path.c_str(), R_OK) == 0;
}

void privacy(Call &call)
{
    if (call.words.empty())
        return tell(call, cfg_isPrivacyMode() != 0);
    call.done["result"] =
        change(call, "orb_privacy_mode_enable", call.words[0] == "on" ? "1" : "0");
}

void night(Call &call)
{
    if (call.words.empty())
        return tell(call, in_night_mode() != 0);
    const bool on = call.words[0] == "on";
    night_mode(on);
    if ((in_night_mode() != 0) != on)
        fail(APPLY_FAILED, "the driver did not accept it");
    call.done["result"] = "applied";
}

void lamp(Call &call)
{
    const std::string &name = call.words[0];
    const bool is_wled = name == "wled";
    if ((is_wled ? cfg_isWLEDVersion() : cfg_isRlampVersion()) == 0)
        fail(APPLY_FAILED, "the board does not report a " + name);
    const int mode = static_cast<int>(*number(call.words[1]));
    is_wled ? wled_mode(static_cast<uint32_t>(mode)) : rlamp_mode(mode);
    if (number(first_line("/proc/" + name + "_mode").substr(0, 1)) != mode)
        fail(APPLY_FAILED, name + " did not accept mode " + call.words[1]);
    call.done["result"] = "applied";
}

void probe(Call &call)
{
    // All except disable_face_hw_check, which acts. By their names:
#define ASK(probe) call.data[#probe] = probe()
    // clang-format off
    ASK(streaming_counter); ASK(is_valid_activity_event); ASK(is_valid_track_event);
    ASK(get_enhanced_mode); ASK(CheckFixCaptureSatus); ASK(is_nn_enable); ASK(is_sound_nn_enable);
    call.data["activity_zones_state"] = activity_zones_state(0, 0);
    ASK(ir_mode); ASK(in_night_mode); ASK(light_sensor); ASK(cfg_isLEDDisabled);
    ASK(cfg_isPrivacyMode);
    // clang-format on
}

void prompt(Call &call)
{
    const std::string &name = call.words[0];
    const std::string language = stored("lang_name").value_or("");
    if (!is_readable("/mnt/sdcard/morvenix/" + language + "/speech/" + name) &&
        !is_readable("/localization/" + language + "/" + name) && !is_readable("/audio/" + name))
        fail(APPLY_FAILED, "no prompt " + name + " in /localization/" + language + " or /audio");
    if (voice_prompt(name.c_str()) < 0)
        fail(APPLY_FAILED, "the prompt was not played");
}

void alert_sound(Call &call)
{
    if (!is_readable(call.words[0]))
        fail(APPLY_FAILED, call.words[0] + ": " + std::strerror(errno));
    if (alert(call.words[0].c_str()) != 0)
        fail(APPLY_FAILED, "the sound was not played, or the speaker was not restored");
}

void sound(Call &call)
{
    const struct {
        const char *name;
        const char *key;
        int (*choose)(const char *path);
    } SOUNDS[] = {{"alert", "alert_file", alert_file_set_config},
                  {"greeting", "greeting_audio", greeting_file_set_config},
                  {"alarm", "alarm_audio", alarm_audio_set_config}};
    const auto &chosen = *std::find_if(std::begin(SOUNDS), std::end(SOUNDS), [&](const auto &row) {
        return is(row.name, call.action->name);
    });
    if (call.words.empty()) {
        const std::string path = stored(chosen.key).value_or("");
        if (path.empty())
            fail(NOT_FOUND, "no sound is chosen");
        return call.answer({{chosen.name, path}}, path);
    }
    const std::string &path = call.words[0];
    if (path.compare(0, 7, "/audio/") != 0 && path.size() > 100)
        fail(USAGE, "a path outside /audio can have at most 100 characters");
    if (chosen.choose(path.c_str()) != 0)
        fail(APPLY_FAILED, "AudioCheck rejects " + path);
    require_stored(chosen.key, path);
}

void volume(Call &call)
{
    int value = 0;
    if (call.words.empty()) {
        alert_file_get_vol(0, &value);
        return call.answer({{"volume", value}}, std::to_string(value));
    }
    const std::string text = std::to_string(*number(call.words[0]));
    alert_file_set_vol(text.c_str());
    require_stored("alert_vol", text);
}

void status(Call &call)
{
    if (!call.words.empty()) {
        const auto value = static_cast<uint8_t>(*number(call.words[0]));
        if (cfg_setDeviceStatus(value) != 0 || cfg_getDeviceStatus() != value)
            fail(APPLY_FAILED, "the status was not stored");
        return;
    }
    struct stat file = {};
    const bool known = stat("/tmp/dev_status", &file) == 0 && file.st_size > 0;
    const Json value = known ? Json(cfg_getDeviceStatus()) : Json();
    call.answer({{"status", value}}, known ? value.dump() : "unknown");
    call.status = known ? OK : NOT_FOUND;
}

} // namespace cfgctl
