// SSID, key and BSSID, separated by NUL bytes, to the supplicant's file. It must
// hold the blocks that the key's length and form call for, with the SSID as given.

#include "cfg_set.h"
#include "target.h"

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <cstring>
#include <sstream>
#include <vector>

// The lines of each kind of block that the key gives.
static std::vector<std::string> kinds(const std::string &key)
{
    const size_t length = key.size();
    const bool digits =
        std::all_of(key.begin(), key.end(), [](unsigned char c) { return isxdigit(c); });
    const std::string quoted = '"' + key + '"';
    std::vector<std::string> lines;
    if (length >= 8 && length <= 64)
        lines.push_back("\tpsk=" + (length == 64 ? key : quoted) + "\n");
    if (length == 5 || length == 13 || (digits && (length == 10 || length == 26)))
        lines.push_back("\tkey_mgmt=NONE\n\twep_key0=" + (length % 2 ? quoted : key) +
                        "\n\twep_tx_keyidx=0\n");
    if (length == 0)
        lines.emplace_back("\tkey_mgmt=NONE\n");
    return lines;
}

void try_input(const std::string &texts)
{
    std::istringstream input(texts);
    std::string ssid, key, address;
    std::getline(std::getline(std::getline(input, ssid, '\0'), key, '\0'), address, '\0');
    std::string bssid = address.substr(0, 63);
    bssid.resize(64);
    const bool pinned = validate_bssid(bssid.data()) == 1;
    const std::string pin = std::string("\tbssid=") + bssid.substr(0, bssid.find('\0')) + "\n";
    require(!pinned || pin.size() == strlen("\tbssid=00:00:00:00:00:00\n"));

    std::string expected;
    if (!ssid.empty() && (ssid + key).find('\n') == std::string::npos) {
        const std::string head = "network={\n\tssid=\"" + ssid + "\"\n\tscan_ssid=1\n";
        for (const std::string &lines : kinds(key))
            expected += (pinned ? head + lines + pin + "}\n" : "") + head + lines + "}\n";
    }
    char *written = nullptr;
    size_t length = 0;
    FILE *file = open_memstream(&written, &length);
    generate_config_block(file, 0, ssid.c_str(), key.c_str(), pinned ? bssid.data() : nullptr);
    std::fclose(file);
    require(std::string(written, length) == expected);
    std::free(written);
}
