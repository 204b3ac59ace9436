// wifi, link: the supplicant's file, the Wi-Fi link, and which interfaces are up.

#include "cfgctl.h"

#include "cfg_set.h"

#include <algorithm>
#include <fstream>

namespace cfgctl
{

namespace
{

constexpr const char *SUPPLICANT_FILE = "/etc/wpa_supplicant.conf";

// Whether the supplicant takes a "#" in a quoted text for a comment.
bool cut_at_hash(const std::string &text)
{
    bool inside = true;
    for (const char c : text) {
        if (c == '#' && !inside)
            return true;
        inside ^= c == '"';
    }
    return false;
}

// What makes the supplicant refuse the whole file, or read another network from
// it; empty when nothing does.
std::string unreadable(const std::string &ssid, const std::string &key)
{
    const auto control = [](char c) { return static_cast<unsigned char>(c) < ' ' || c == '\x7f'; };
    if (ssid.size() > 32)
        return "its SSID has more than 32 bytes";
    if (key.size() == 64 && key.find_first_not_of("0123456789abcdefABCDEF") != std::string::npos)
        return "its raw key is not hexadecimal";
    if (key.size() >= 8 && key.size() < 64 && std::any_of(key.begin(), key.end(), control))
        return "its passphrase has a control character";
    if (cut_at_hash(ssid) || cut_at_hash(key))
        return "its SSID or key has a # behind a double quote";
    return "";
}

// The networks in the supplicant's file, each once.
std::vector<std::string> written_networks()
{
    std::vector<std::string> ssids;
    std::ifstream file(SUPPLICANT_FILE);
    const std::string begin = "\tssid=\"";
    for (std::string line; std::getline(file, line);) {
        if (line.compare(0, begin.size(), begin) != 0 || line.back() != '"')
            continue;
        const std::string ssid = line.substr(begin.size(), line.size() - begin.size() - 1);
        if (std::find(ssids.begin(), ssids.end(), ssid) == ssids.end())
            ssids.push_back(ssid);
    }
    return ssids;
}

int write_config(const Call &call)
{
    std::vector<std::pair<std::string, std::string>> networks; // key of the SSID, SSID
    for (const std::string slot : {"wl", "wl1", "wl2", "wl3"}) {
        const auto ssid = stored(slot + "_ssid");
        const auto key = stored(slot + "_psk");
        if (!ssid || ssid->empty() || !key)
            continue;
        const bool one_line = (*ssid + *key).find('\n') == std::string::npos;
        const std::string reason = unreadable(*ssid, *key);
        if (one_line && !reason.empty()) {
            complain(slot + "_ssid: " + reason + "; the supplicant would not read the file");
            return APPLY_FAILED;
        }
        networks.emplace_back(slot + "_ssid", *ssid);
    }
    if (cfg_restoreWiFiConfig() != 0) {
        complain(std::string(SUPPLICANT_FILE) + " cannot be written");
        return APPLY_FAILED;
    }
    const auto written = written_networks();
    for (const auto &[key, ssid] : networks)
        if (std::find(written.begin(), written.end(), ssid) == written.end())
            complain(key + ": left out, for a line feed or a key of no known length");
    if (call.json) {
        print_json(Json{{"file", SUPPLICANT_FILE}, {"networks", written}});
    } else {
        for (const std::string &ssid : written)
            print(ssid + "\n");
    }
    return OK;
}

int print_state(const Call &call)
{
    const bool up = cfg_wlan_is_up() != 0;
    const bool access_point = stored("apmode").value_or("") == "1";
    const auto networks = written_networks();
    if (call.json) {
        print_json(Json{{"wlan", up}, {"access_point", access_point}, {"networks", networks}});
        return OK;
    }
    std::vector<std::vector<std::string>> rows = {{"wlan", up ? "1" : "0"},
                                                  {"access_point", access_point ? "1" : "0"}};
    for (const std::string &ssid : networks)
        rows.push_back({"network", ssid});
    print(columns(rows));
    return OK;
}

} // namespace

int wifi(const Call &call)
{
    const std::string &action = call.arguments[0];
    if (action == "config")
        return write_config(call);
    if (action == "status")
        return print_state(call);
    const std::map<std::string, int (*)()> controls = {{"start", cfg_startWiFi},
                                                       {"stop", cfg_stopWiFi},
                                                       {"reset", cfg_resetWiFi},
                                                       {"restart", cfg_restartWiFi}};
    const auto control = controls.find(action);
    if (control == controls.end()) {
        complain("wifi takes config, start, stop, reset, restart or status, not " + action);
        return USAGE;
    }
    control->second();
    return OK;
}

int link_status(const Call &call)
{
    const std::string which = call.arguments.empty() ? "" : call.arguments[0];
    if (!which.empty() && which != "eth" && which != "wlan") {
        complain("link takes eth or wlan, not " + which);
        return USAGE;
    }
    std::vector<std::vector<std::string>> rows;
    Json json = Json::object();
    bool all_up = true;
    const std::pair<std::string, int (*)()> checks[] = {{"eth", cfg_eth_is_up},
                                                        {"wlan", cfg_wlan_is_up}};
    for (const auto &[name, is_up] : checks) {
        if (!which.empty() && which != name)
            continue;
        const bool up = is_up() == 1;
        rows.push_back({name, up ? "1" : "0"});
        json[name] = up;
        all_up = all_up && up;
    }
    if (call.json)
        print_json(json);
    else
        print(columns(rows));
    return which.empty() || all_up ? OK : NOT_FOUND;
}

} // namespace cfgctl
