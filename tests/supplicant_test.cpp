// The supplicant's file: byte for byte, and as the supplicant itself reads it.

#include "cfg_set.h"
#include "doubles.h"

#include <filesystem>
#include <regex>
#include <sys/stat.h>

using namespace doubles;

using SupplicantTest = LibraryTest;

static bool without_modes; // the file system

int fchmod(int file, mode_t mode) noexcept
{
    struct stat state = {};
    EXPECT_TRUE(fstat(file, &state) == 0 && state.st_size == 0) << "a key was written before";
    return without_modes ? -1 : chmod("/etc/wpa_supplicant.conf", mode);
}

// clang-format off
static const std::string FILE_PATH = "/etc/wpa_supplicant.conf";
static const std::string HEAD = "ctrl_interface=/var/run/wpa_supplicant\neapol_version=1\nfast_reauth=1\n";
static const std::string PIN = "a4:01:02:03:04:05", OPEN = "\tkey_mgmt=NONE\n";

// One block; the lines that differ from kind to kind are given.
static std::string block(Text ssid, Text lines)
{
    return "network={\n\tssid=\"" + ssid + "\"\n\tscan_ssid=1\n" + lines + "}\n";
}
static std::string wpa(Text key) { return "\tpsk=" + key + "\n"; }
static std::string wep(Text key) { return OPEN + "\twep_key0=" + key + "\n\twep_tx_keyidx=0\n"; }
static std::string quoted(Text text) { return '"' + text + '"'; }
static std::string wrote(Text text)
{
    return "wrote " + FILE_PATH + " " + std::regex_replace(HEAD + text, std::regex("\n"), "\\n");
}

static std::string generated(const char *ssid, const char *key, const char *bssid)
{
    FILE *file = fopen("/tmp/blocks", "we");
    generate_config_block(file, 0, ssid, key, bssid);
    fclose(file);
    std::string text = read_file("/tmp/blocks");
    remove("/tmp/blocks");
    return text;
}

static std::string validated(Text given)
{
    std::string text = given + std::string(1, '\0') + std::string(20, '.');
    const int usable = validate_bssid(text.data());
    return words(usable, text.c_str(), text.compare(18, 100, text, 18) == 0);
}

// The networks that the real supplicant reads from the file made of this store.
static std::string judged(const Given &stored)
{
    store = stored;
    cfg_restoreWiFiConfig();
    const std::string out =
        run_program({"/judge", "-dd", "-K", "-Dwired", "-inosuch0", "-c" + FILE_PATH}).out;
    EXPECT_THAT(out, testing::HasSubstr("driver_wired_init_common: Could not get interface flags"));
    std::string networks;
    static const std::regex NETWORK("\n   id=\\d+ ssid=('.*')");
    for (std::sregex_iterator found(out.begin(), out.end(), NETWORK), end; found != end; ++found)
        networks += (*found)[1];
    return networks;
}

TEST_F(SupplicantTest, TheKeysLengthAndFormChooseTheBlocks)
{
    const auto of = [](size_t length, char c = 'k') { return std::string(length, c); };
    const std::string hex = "0123456789abcdefABCDEF01234567890123456789abcdefABCDEF0123456789";
    const std::string digits = "0123ABcdef", other = "0123ABcdeg", ones(12, '1');
    const auto as_wpa = [](Text text) { return wpa(quoted(text)); };
    const std::string hex26 = hex.substr(0, 26), g26 = of(26, 'G'), k8 = of(8), k13 = of(13);
    const std::string ones14 = of(14, '1'), ones63 = of(63, '1');
    const char *const pin = PIN.c_str();
    std::vector<Row> rows = {
        {CALL(generated(nullptr, "", pin)), ""}, {CALL(generated("home", nullptr, pin)), ""},
        {CALL(generated("", "", pin)), ""}, {CALL(generated("a\nb", "", nullptr)), ""},
        {CALL(generated("home", "", "a4:1\n}")), ""},
        {CALL(generated("home", "pass\nphrase", nullptr)), ""},
        {CALL((generate_config_block(nullptr, 0, "home", "", nullptr), "no stream")), "no stream"},
        {CALL(words(could_be_wep(nullptr), could_be_wep(""), could_be_wep("12345"))), "0 0 1"},
        {CALL(words(could_be_wep(digits.c_str()), could_be_wep(other.c_str()))), "1 0"},
    };
    for (const auto &[text, kinds] : std::map<std::string, Calls>{
             {"", {OPEN}}, {"k", {}}, {"kkkk", {}}, {"pa\"w\\", {wep(quoted("pa\"w\\"))}},
             {"111111", {}}, {"1111111", {}}, {k8, {as_wpa(k8)}}, {other, {as_wpa(other)}},
             {digits, {as_wpa(digits), wep(digits)}}, {ones, {as_wpa(ones)}}, {ones14, {as_wpa(ones14)}},
             {k13, {as_wpa(k13), wep(quoted(k13))}}, {hex26, {as_wpa(hex26), wep(hex26)}},
             {g26, {as_wpa(g26)}}, {ones63, {as_wpa(ones63)}}, {hex, {wpa(hex)}},
             {of(64), {wpa(of(64))}}, {of(65, '1'), {}}, {of(255), {}}}) {
        std::string plain, pinned, key = text;
        for (Text lines : kinds) {
            plain += block("home", lines);
            pinned += block("home", lines + "\tbssid=" + PIN + "\n") + block("home", lines);
        }
        rows.push_back({CALL(generated("home", key.c_str(), nullptr)), plain});
        rows.push_back({CALL(generated("home", key.c_str(), pin)), pinned});
    }
    check(rows);
}

TEST_F(SupplicantTest, AStoreOfFourNetworksBecomesAFileOfFour)
{
    const std::string attic = "Attic \"2\" #1", odd = "\r\t \\'\xff", cafe = "caf\xc3\xa9";
    const std::string typed = "A4:1:2:3:4:5", home = wpa("\"password\""), digits = "0123456789";
    const std::string pin = "\tbssid=" + PIN + "\n";
    const Given four = {{"orb_setup", "1"}, {"app_ip", typed}, {"wl_ssid", "home"}, {"wl_psk", "password"},
        {"wl1_ssid", attic}, {"wl1_psk", digits}, {"wl2_ssid", odd}, {"wl2_psk", ""},
        {"wl3_ssid", cafe}, {"wl3_psk", ""}};
    const std::string slots = block(attic, wpa(quoted(digits))) + block(attic, wep(digits)) +
                              block(odd, OPEN) + block(cafe, OPEN);
    const Call restore = CALL(cfg_restoreWiFiConfig());
    const auto twice = [](Text without) {
        return CALL((cfg_restoreWiFiConfig(), store.erase(without), cfg_restoreWiFiConfig()));
    };
    const Calls plain = {wrote(block("home", home) + slots)};
    const Calls pinned = {wrote(block("home", home + pin) + block("home", home) + slots)};
    EXPECT_EQ(judged(four), R"('home''Attic \"2\" #1''Attic \"2\" #1''\r\t \\'\xff''caf\xc3\xa9')");
    const auto first = [&](const char *setup, Text address) {
        auto given = four;
        given["orb_setup"] = setup;
        given["app_ip"] = address;
        return given;
    };
    const auto made_with = [&](mode_t old) { // the mode of the file, and of the one that was there
        remove(FILE_PATH.c_str());
        if (old)
            write_file(FILE_PATH, "old");
        chmod(FILE_PATH.c_str(), old);
        judged(four);
        return static_cast<int>(std::filesystem::status(FILE_PATH).permissions());
    };
    EXPECT_EQ(made_with(0666), 0600) << "it holds keys";
    without_modes = true;
    umask(0);
    EXPECT_EQ(made_with(0), 0600) << "from its beginning";
    EXPECT_EQ(made_with(0644), 0644) << "and is written all the same";
    without_modes = false;
    remove(FILE_PATH.c_str());
    check({
        {first("0", typed), restore, 0, pinned},
        {first("0", typed + std::string(99, ' ')), restore, 0, pinned},
        {first("0", std::string(62, ' ') + "a4:1"), restore, 0, plain}, // 63 characters count
        {four, restore, 0, plain},
        {first("", typed), restore, 0, plain},
        {first("00", typed), restore, 0, plain},
        {first("0", "192.168.1.2"), restore, 0, plain},
        {first("0", typed), {"get orb_setup"}, restore, 0, plain},
        {first("0", typed), {"get app_ip"}, restore, 0, plain},
        {first("0", "a4:1"), twice("orb_setup"), 0, plain},
        {first("0", "a4:1"), twice("app_ip"), 0, plain},
        {four, {"get wl1_psk", "get wl2_ssid", "get wl3_psk"}, restore, 0, {wrote(block("home", home))}},
        {{{FILE_PATH, std::string(9000, 'x')}, {"wl_ssid", "home"}, {"wl2_psk", "passphrase"}, {"wl3_ssid", ""},
            {"wl3_psk", ""}}, restore, 0, {wrote("")}},
        {{{FILE_PATH + "/", ""}, {"orb_setup", "0"}, {"app_ip", "x"}}, restore, -1, {},
            "! | Error opening /etc/wpa_supplicant.conf.", {"orb_setup 64", "app_ip 64"}},
        {restore, 0, {wrote("")}, "", {"orb_setup 64", "wl_ssid 256", "wl1_ssid 256", "wl2_ssid 256", "wl3_ssid 256"}},
    });
}

TEST_F(SupplicantTest, BssidsAreNormalisedOrLeftAlone)
{
    const auto usable = [](Text given, Text normal) { return Row{CALL(validated(given)), "1 " + normal + " 1"}; };
    const auto useless = [](Text text) { return Row{CALL(validated(text)), "0 " + text + " 1"}; };
    check({
        usable("A4:1:2:3:4:5", PIN), usable("ff:ff:ff:ff:ff:ff", "ff:ff:ff:ff:ff:ff"),
        usable("a4:", "a4:00:00:00:00:00"), usable("a4:1:2", "a4:01:02:00:00:00"),
        usable("a4:1:2:3:4:5:6:7", PIN), usable("a4:1:x:3:4:5", "a4:01:00:00:00:00"),
        usable(" 0:0:0:0:0:1", "00:00:00:00:00:01"), useless(""), useless("a4"), useless(":"),
        useless("x:1:2:3:4:5"), useless("00:1:2:3:4:5"), useless("0:1:2:3:4:5"),
        useless(" 0:0:0:0:0:0"), useless("100:1:2:3:4:5"), useless("a4:1:2:3:4:fff"),
        useless("-1:1:2:3:4:5"), useless("1000000a4:1:2:3:4:5"),
        useless("100000000000000a4:1:2:3:4:5"), useless("fffffffffffffffffffffffff:1:2:3:4:5"),
        {CALL(validate_bssid(nullptr)), 0},
    });
}
// clang-format on
