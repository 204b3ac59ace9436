// time: the time zone and network time sync.

#include "cfgctl.h"

#include "cfg_set.h"

#include <charconv>
#include <fstream>

namespace cfgctl
{

namespace
{

constexpr size_t LINE_MAX_LENGTH = 255; // of ntpd's command line

// Whether the value of `key`, which goes into a command line as it stands,
// has only characters that such a value has.
bool vetted(const std::string &key, const std::string &marks)
{
    const std::string plain = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789";
    const std::string value = stored(key).value_or("");
    if (value.find_first_not_of(plain + marks) == std::string::npos)
        return true;
    complain(key + " takes letters, digits and " + marks + ", not " + value);
    return false;
}

std::optional<int> offset(const std::string &text)
{
    int minutes = 0;
    const char *end = text.data() + text.size();
    const auto [rest, error] = std::from_chars(text.data(), end, minutes);
    if (error != std::errc() || rest != end || minutes < -1440 || minutes > 1440)
        return std::nullopt;
    return minutes;
}

int zone(const Call &call)
{
    const bool given = call.arguments.size() == 3;
    const auto minutes = given ? offset(call.arguments[1]) : std::nullopt;
    const auto dst = given ? number(call.arguments[2]) : std::nullopt;
    if (call.arguments.size() == 2 || (given && (!minutes || !dst || *dst > 1))) {
        complain("time zone takes minutes from -1440 to 1440 and 0 or 1 for daylight saving");
        return USAGE;
    }
    if (!vetted("time_zone_str", "+_/-"))
        return APPLY_FAILED;
    if ((given ? cfg_setTimeZoneDst(*minutes, *dst) : cfg_restoreTimeZoneDst()) != 0) {
        complain("the time zone is not set");
        return APPLY_FAILED;
    }
    std::string tz;
    std::ifstream file("/tmp/TZ");
    std::getline(file, tz);
    if (call.json)
        print_json(Json{{"zone", stored("time_zone_str").value_or("")}, {"tz", tz}});
    else
        print(tz + "\n");
    return OK;
}

int sync(const Call &call)
{
    const std::string state = call.arguments.size() == 2 ? call.arguments[1] : "";
    if (state != "on" && state != "off") {
        complain("time sync takes on or off");
        return USAGE;
    }
    size_t length = std::string("ntpd").size();
    for (const char *key : {"time_server", "time_server1"}) {
        if (state == "on" && !vetted(key, ".:_-"))
            return APPLY_FAILED;
        const std::string server = stored(key).value_or("");
        length += server.empty() ? 0 : std::string(" -p ").size() + server.size();
    }
    if (state == "on" && length > LINE_MAX_LENGTH) {
        complain("time_server and time_server1 do not fit the command line of ntpd");
        return APPLY_FAILED;
    }
    cfg_setTimeSync(state == "on" ? 1 : 0);
    return OK;
}

} // namespace

int time_control(const Call &call)
{
    const std::string &action = call.arguments[0];
    if (action == "zone")
        return zone(call);
    if (action == "sync")
        return sync(call);
    complain("time takes zone or sync, not " + action);
    return USAGE;
}

} // namespace cfgctl
