// sound: which sounds are chosen, and the alert volume.

#include "cfgctl.h"

#include "cfg_set.h"

#include <algorithm>

namespace cfgctl
{

namespace
{

const struct Sound {
    const char *name;
    const char *key;
    int (*set)(const char *path);
    int (*get)(char *dst, size_t size);
} SOUNDS[] = {{"alert", "alert_file", alert_file_set_config, alert_file_get_config},
              {"greeting", "greeting_audio", greeting_file_set_config, greeting_file_get_config},
              {"alarm", "alarm_audio", alarm_audio_set_config, alarm_audio_get_config}};

int print_value(const Call &call, const Json &value)
{
    if (call.json)
        print_json(Json{{call.arguments[0], value}});
    else
        print(text_of(value) + "\n");
    return OK;
}

// AudioCheck is given the path in a shell's double quotes.
std::string fault(const std::string &path)
{
    const bool built_in = path.compare(0, 7, "/audio/") == 0;
    const size_t most = built_in ? 255 : 100;
    if (path.empty() || path.size() > most)
        return "a path " + std::string(built_in ? "under" : "outside") + " /audio takes at most " +
               std::to_string(most) + " characters";
    if (path.find_first_of("\"$`\\\n") != std::string::npos)
        return "a path cannot have any of \" $ ` \\ or a line feed";
    return "";
}

int choose(const Call &call, const Sound &sound)
{
    const std::string &path = call.arguments[1];
    const std::string bad = fault(path);
    if (!bad.empty()) {
        complain(bad);
        return USAGE;
    }
    if (sound.set(path.c_str()) != 0) {
        complain("AudioCheck refuses " + path);
        return APPLY_FAILED;
    }
    if (stored(sound.key) != path) {
        complain(std::string(sound.key) + " cannot be stored");
        return STORE_FAILED;
    }
    return save(call);
}

int volume(const Call &call)
{
    int value = 0;
    if (call.arguments.size() == 1) {
        alert_file_get_vol(0, &value);
        return print_value(call, value);
    }
    const std::string &text = call.arguments[1];
    if (text != "0" && text != "1" && text != "2") {
        complain("volume takes a number from 0 to 2, not " + text);
        return USAGE;
    }
    alert_file_set_vol(text.c_str());
    if (stored("alert_vol") != text) {
        complain("alert_vol cannot be stored");
        return STORE_FAILED;
    }
    return save(call);
}

} // namespace

int sound(const Call &call)
{
    if (call.arguments[0] == "volume")
        return volume(call);
    const auto found = std::find_if(std::begin(SOUNDS), std::end(SOUNDS), [&](const Sound &entry) {
        return call.arguments[0] == entry.name;
    });
    if (found == std::end(SOUNDS)) {
        complain("no sound " + call.arguments[0]);
        return USAGE;
    }
    if (call.arguments.size() > 1)
        return choose(call, *found);
    char path[256] = "";
    found->get(path, sizeof path);
    if (!*path) {
        complain("no sound is chosen");
        return NOT_FOUND;
    }
    return print_value(call, path);
}

} // namespace cfgctl
