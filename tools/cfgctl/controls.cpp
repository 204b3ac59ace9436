// privacy, night, lamp, probe: what the camera does at the moment.

#include "cfgctl.h"

#include "cfg_set.h"

#include <fstream>

namespace cfgctl
{

namespace
{

int tell(const Call &call, bool on)
{
    if (call.json)
        print_json(Json{{"on", on}});
    else
        print(on ? "on\n" : "off\n");
    return on ? OK : NOT_FOUND;
}

// The call's first argument, on or off; says so when it is neither.
std::optional<bool> on_or_off(const Call &call)
{
    const std::string &word = call.arguments[0];
    if (word == "on" || word == "off")
        return word == "on";
    complain("neither on nor off: " + word);
    return std::nullopt;
}

} // namespace

int privacy(const Call &call)
{
    if (call.arguments.empty())
        return tell(call, cfg_isPrivacyMode() != 0);
    const auto on = on_or_off(call);
    if (!on)
        return USAGE;
    Call setting = call;
    setting.arguments = {PRIVACY_KEY, *on ? "1" : "0"};
    return set(setting);
}

int night(const Call &call)
{
    if (call.arguments.empty())
        return tell(call, in_night_mode() != 0);
    const auto on = on_or_off(call);
    if (!on)
        return USAGE;
    night_mode(*on);
    if ((in_night_mode() != 0) != *on) {
        complain("the driver did not take it");
        return APPLY_FAILED;
    }
    return OK;
}

int lamp(const Call &call)
{
    const std::string &name = call.arguments[0];
    const bool is_wled = name == "wled";
    const auto mode = number(call.arguments[1]);
    if ((!is_wled && name != "rlamp") || !mode || *mode > 3) {
        complain("lamp takes wled or rlamp and a mode from 0 to 3");
        return USAGE;
    }
    if ((is_wled ? cfg_isWLEDVersion() : cfg_isRlampVersion()) == 0) {
        complain("the board does not say that it has a " + name);
        return NOT_FOUND;
    }
    if (is_wled)
        wled_mode(*mode);
    else
        rlamp_mode(static_cast<int>(*mode));
    const std::string shown(1, static_cast<char>(std::ifstream("/proc/" + name + "_mode").get()));
    if (shown != std::to_string(*mode)) {
        complain(name + " did not take mode " + std::to_string(*mode));
        return APPLY_FAILED;
    }
    return OK;
}

int probe(const Call &call)
{
    // Without disable_face_hw_check, which does not ask but act.
    const std::vector<std::pair<std::string, int>> answers = {
        {"streaming_counter", streaming_counter()},
        {"is_valid_activity_event", is_valid_activity_event()},
        {"is_valid_track_event", is_valid_track_event()},
        {"get_enhanced_mode", get_enhanced_mode()},
        {"CheckFixCaptureSatus", CheckFixCaptureSatus()},
        {"is_nn_enable", is_nn_enable()},
        {"is_sound_nn_enable", is_sound_nn_enable()},
        {"activity_zones_state", activity_zones_state(0, 0)},
        {"ir_mode", ir_mode()},
        {"in_night_mode", in_night_mode()},
        {"light_sensor", light_sensor()},
        {"cfg_isLEDDisabled", cfg_isLEDDisabled()},
        {"cfg_isPrivacyMode", cfg_isPrivacyMode()}};
    std::vector<std::vector<std::string>> rows;
    Json json = Json::object();
    for (const auto &[name, answer] : answers) {
        rows.push_back({name, std::to_string(answer)});
        json[name] = answer;
    }
    if (call.json)
        print_json(json);
    else
        print(columns(rows));
    return OK;
}

} // namespace cfgctl
