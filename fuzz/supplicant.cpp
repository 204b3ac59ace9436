// SSID, key and BSSID, separated by NUL bytes, to the supplicant's file. It must
// hold blocks of exactly the lines that blocks have, with the SSID as given.

#include "cfg_set.h"

#include <cstdlib>
#include <string>
#include <string_view>

// Takes `line` off the front of the text.
static void expect(std::string_view &text, const std::string &line)
{
    if (text.substr(0, line.size()) != line)
        std::abort();
    text.remove_prefix(line.size());
}

static bool take(std::string_view &text, const std::string &line)
{
    const bool there = text.substr(0, line.size()) == line;
    text.remove_prefix(there ? line.size() : 0);
    return there;
}

static void expect_block(std::string_view &text, const std::string &ssid, const std::string &key)
{
    expect(text, "network={\n\tssid=\"" + ssid + "\"\n\tscan_ssid=1\n");
    if (take(text, "\tkey_mgmt=NONE\n")) {
        if (take(text, "\twep_key0=\"" + key + "\"\n") || take(text, "\twep_key0=" + key + "\n"))
            expect(text, "\twep_tx_keyidx=0\n");
        else if (!key.empty())
            std::abort();
    } else if (!take(text, "\tpsk=" + key + "\n")) {
        expect(text, "\tpsk=\"" + key + "\"\n");
    }
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    std::string fields[3];
    size_t field = 0;
    for (size_t i = 0; i < size && field < 3; i++) {
        if (data[i])
            fields[field] += static_cast<char>(data[i]);
        else
            field++;
    }
    const auto &[ssid, key, address] = fields;
    std::string bssid = address.substr(0, 63);
    bssid.resize(64);
    const bool pinned = validate_bssid(bssid.data()) == 1;

    char *written = nullptr;
    size_t length = 0;
    FILE *file = open_memstream(&written, &length);
    generate_config_block(file, 0, ssid.c_str(), key.c_str(), pinned ? bssid.data() : nullptr);
    std::fclose(file);
    std::string_view text(written, length);
    while (!text.empty()) {
        expect_block(text, ssid, key);
        if (pinned) {
            const char *normal = bssid.data(); // shorter than it was read
            expect(text, std::string("\tbssid=") + normal + "\n}\n");
            expect_block(text, ssid, key);
        }
        expect(text, "}\n");
    }
    if (length != 0 && (ssid + key).find('\n') != std::string::npos)
        std::abort();
    std::free(written);
    return 0;
}
