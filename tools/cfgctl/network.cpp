// wifi, link, time: the supplicant's file, the Wi-Fi link, the interfaces, the
// time zone and time sync.

#include "cfgctl.h"

#include "cfg_set.h"
#include "settings/frame.h"

#include <algorithm>
#include <cstring>

namespace cfgctl
{

namespace
{

constexpr const char *SUPPLICANT_FILE = "/etc/wpa_supplicant.conf";
constexpr size_t COMMAND_MOST = 255; // characters of ntpd's command line

// Whether the library writes the network to the file.
bool is_written(const std::string &ssid, const std::string &key)
{
    const bool fits = key.empty() || (key.size() >= 8 && key.size() <= 64);
    return (fits || could_be_wep(key.c_str()) != 0) && (ssid + key).find('\n') == std::string::npos;
}

// Fails when the stored value would make the supplicant reject its whole file or
// read a different network.
void require_readable(const std::string &key, const std::string &value)
{
    const std::string fault = fault_of(find_setting(key)->value, value);
    if (!fault.empty())
        fail(APPLY_FAILED, key + " " + fault + "; the supplicant would reject the file");
}

// The networks in the supplicant's file, each once.
std::vector<std::string> written_networks()
{
    std::vector<std::string> ssids;
    FILE *file = std::fopen(SUPPLICANT_FILE, "re");
    const std::string begin = "\tssid=\"";
    for (const std::string &line : split(file ? rest_of(file) : "", '\n')) {
        if (line.compare(0, begin.size(), begin) != 0 || line.back() != '"')
            continue;
        const std::string ssid = line.substr(begin.size(), line.size() - begin.size() - 1);
        if (std::find(ssids.begin(), ssids.end(), ssid) == ssids.end())
            ssids.push_back(ssid);
    }
    if (file)
        std::fclose(file);
    return ssids;
}

// The stored value of `key`, checked for use in a command line.
std::string vetted(const std::string &key, cfg_set::Word kind)
{
    std::string value = stored(key).value_or("");
    if (!cfg_set::harmless(value.c_str(), kind))
        fail(APPLY_FAILED, key + " is not safe in a command line: " + value);
    return value;
}

} // namespace

void wifi_config(Call &call)
{
    unsigned kept = 0;
    unsigned left_out = 0;
    for (const std::string slot : {"wl", "wl1", "wl2", "wl3"}) {
        const std::string ssid = stored(slot + "_ssid").value_or("");
        const auto key = stored(slot + "_psk");
        if (ssid.empty())
            continue;
        const bool written = key && is_written(ssid, *key);
        kept += written ? 1 : 0;
        left_out += written ? 0 : 1;
        if (!key)
            complain(slot + "_ssid: left out; " + slot + "_psk is not stored");
        else if (!written)
            complain(slot + "_ssid: left out; it has a line feed or a key of invalid length");
        else {
            require_readable(slot + "_ssid", ssid);
            require_readable(slot + "_psk", *key);
        }
    }
    if (kept == 0 && left_out > 0)
        fail(APPLY_FAILED, std::string("no valid network; ") + SUPPLICANT_FILE + " is unchanged");
    if (kept == 0)
        complain("no network is stored");
    if (cfg_restoreWiFiConfig() != 0)
        fail(APPLY_FAILED, std::string(SUPPLICANT_FILE) + " cannot be written");
    const auto written = written_networks();
    call.data = {{"file", SUPPLICANT_FILE}, {"networks", written}};
    call.text = "";
    for (const std::string &ssid : written)
        *call.text += ssid + "\n";
    call.done["result"] = left_out > 0 ? "failed" : "applied";
    call.status = left_out > 0 ? APPLY_FAILED : OK;
}

void wifi_control(Call &call)
{
    const std::string name = call.action->name;
    if (name == "restart" && first_line("/proc/live_streaming").substr(0, 1) == "1")
        fail(APPLY_FAILED, "a live stream runs; nothing was done");
    if (name == "start")
        cfg_startWiFi();
    else
        name == "stop" ? cfg_stopWiFi() : name == "reset" ? cfg_resetWiFi() : cfg_restartWiFi();
    call.done["result"] = "called";
}

void wifi_status(Call &call)
{
    call.data = {{"wlan", cfg_wlan_is_up() != 0},
                 {"access_point", stored("apmode").value_or("") == "1"},
                 {"networks", written_networks()}};
}

void link_status(Call &call)
{
    const std::string which = call.words.empty() ? "" : call.words[0];
    if (which != "wlan")
        call.data["eth"] = cfg_eth_is_up() == 1;
    if (which != "eth")
        call.data["wlan"] = cfg_wlan_is_up() == 1;
    if (!which.empty() && !call.data[which].get<bool>())
        call.status = NOT_FOUND;
}

void time_zone(Call &call)
{
    const bool given = !call.words.empty();
    const int offset = given ? static_cast<int>(*number(call.words[0])) : 0;
    const uint32_t dst = given ? static_cast<uint32_t>(*number(call.words[1])) : 0;
    for (const char *key : {"time_zone", "time_dst"})
        if (!given && !stored(key))
            fail(APPLY_FAILED,
                 std::string(key) + " is not stored; store it or give OFFSET and DST");
    const std::string zone = vetted("time_zone_str", cfg_set::ZONE_WORD);
    if ((given ? cfg_setTimeZoneDst(offset, dst) : cfg_restoreTimeZoneDst()) != 0)
        fail(APPLY_FAILED, "the time zone was not set");
    const std::string tz = first_line("/tmp/TZ");
    if (given && tz.compare(0, 4, offset < 0 ? "GMT+" : "GMT-") != 0)
        complain("the stored time_zone_str " + zone + " overrides OFFSET and DST");
    call.answer({{"zone", zone}, {"tz", tz}}, tz);
    call.done["result"] = "applied";
}

void time_sync(Call &call)
{
    const bool on = call.words[0] == "on";
    size_t length = std::strlen("ntpd");
    for (const char *key : {"time_server", "time_server1"}) {
        const std::string server = on ? vetted(key, cfg_set::SERVER_WORD) : "";
        length += server.empty() ? 0 : std::strlen(" -p ") + server.size();
    }
    if (length > COMMAND_MOST)
        fail(APPLY_FAILED,
             "time_server and time_server1 are too long for the command line of ntpd");
    cfg_setTimeSync(on ? 1 : 0);
    call.done["result"] = "called";
}

} // namespace cfgctl
