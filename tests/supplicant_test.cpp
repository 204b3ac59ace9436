// The supplicant's file: byte for byte, and as the supplicant itself reads it.

#include "cfg_set.h"
#include "doubles.h"

#include <regex>

using namespace doubles;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

class SupplicantTest : public LibraryTest
{
};

static const std::string FILE_PATH = "/etc/wpa_supplicant.conf";
static const std::string HEAD = "ctrl_interface=/var/run/wpa_supplicant\n"
                                "eapol_version=1\n"
                                "fast_reauth=1\n";
static const std::string HEX_64 =
    "0123456789abcdefABCDEF01234567890123456789abcdefABCDEF0123456789";

// The lines of one block; those that differ from kind to kind are given.
static std::string block(const std::string &ssid, const std::string &lines)
{
    return "network={\n\tssid=\"" + ssid + "\"\n\tscan_ssid=1\n" + lines + "}\n";
}

static std::string wpa(const std::string &key)
{
    return "\tpsk=" + key + "\n";
}

static std::string wep(const std::string &key)
{
    return "\tkey_mgmt=NONE\n\twep_key0=" + key + "\n\twep_tx_keyidx=0\n";
}

static const std::string OPEN = "\tkey_mgmt=NONE\n";

static std::string quoted(const std::string &text)
{
    return '"' + text + '"';
}

static std::string generated(const char *ssid, const char *key, const char *bssid)
{
    FILE *file = fopen("/tmp/blocks", "w");
    generate_config_block(file, 0, ssid, key, bssid);
    fclose(file);
    return read_file("/tmp/blocks");
}

static std::string written()
{
    EXPECT_EQ(cfg_restoreWiFiConfig(), 0);
    return read_file(FILE_PATH);
}

// The networks that the real supplicant reads from the file; "refused" when it
// refuses the file.
static std::vector<std::string> judged()
{
    const Outcome run =
        run_program({"/judge", "-dd", "-K", "-Dwired", "-inosuch0", "-c" + FILE_PATH});
    if (run.out.find("Failed to read or parse configuration") != std::string::npos)
        return {"refused"};
    EXPECT_THAT(run.out, HasSubstr("driver_wired_init_common: Could not get interface flags"));
    std::vector<std::string> networks;
    static const std::regex NETWORK("\n   id=\\d+ ssid='(.*)'");
    for (std::sregex_iterator found(run.out.begin(), run.out.end(), NETWORK), end; found != end;
         ++found)
        networks.push_back((*found)[1]);
    return networks;
}

TEST_F(SupplicantTest, TheKeysLengthAndFormChooseTheBlocks)
{
    const auto key = [](size_t length, char c = 'k') { return std::string(length, c); };
    const std::vector<std::pair<std::string, std::vector<std::string>>> cases = {
        {"", {OPEN}},
        {key(1), {}},
        {key(4), {}},
        {"pa\"w\\", {wep(quoted("pa\"w\\"))}},
        {key(6), {}},
        {key(7, '1'), {}},
        {key(8), {wpa(quoted(key(8)))}},
        {key(10), {wpa(quoted(key(10)))}},
        {"0123ABcdef", {wpa(quoted("0123ABcdef")), wep("0123ABcdef")}},
        {"0123ABcdeg", {wpa(quoted("0123ABcdeg"))}},
        {key(13), {wpa(quoted(key(13))), wep(quoted(key(13)))}},
        {key(26, 'f'), {wpa(quoted(key(26, 'f'))), wep(key(26, 'f'))}},
        {key(26, 'g'), {wpa(quoted(key(26, 'g')))}},
        {key(63), {wpa(quoted(key(63)))}},
        {HEX_64, {wpa(HEX_64)}},
        {key(64), {wpa(key(64))}},
        {key(65, '1'), {}},
        {key(255), {}}};
    const std::string pin = "\tbssid=a4:01:02:03:04:05\n";
    for (const auto &[text, kinds] : cases) {
        std::string plain;
        std::string pinned;
        for (const std::string &lines : kinds) {
            plain += block("home", lines);
            pinned += block("home", lines + pin) + block("home", lines);
        }
        EXPECT_EQ(generated("home", text.c_str(), nullptr), plain) << text;
        EXPECT_EQ(generated("home", text.c_str(), "a4:01:02:03:04:05"), pinned) << text;
    }
    EXPECT_EQ(could_be_wep(nullptr), 0);
    EXPECT_EQ(could_be_wep(""), 0);
}

TEST_F(SupplicantTest, NothingIsWrittenForWhatIsMissing)
{
    generate_config_block(nullptr, 0, "home", "", nullptr);
    EXPECT_EQ(generated(nullptr, "", nullptr), "");
    EXPECT_EQ(generated("home", nullptr, nullptr), "");
    EXPECT_EQ(generated("", "", "a4:01:02:03:04:05"), "");
}

TEST_F(SupplicantTest, AStoreOfFourNetworksBecomesAFileOfFour)
{
    store = {{"orb_setup", "1"},       {"app_ip", "A4:1:2:3:4:5"},     {"wl_ssid", "home"},
             {"wl_psk", "passphrase"}, {"wl1_ssid", "Attic \"2\" #1"}, {"wl1_psk", HEX_64},
             {"wl2_ssid", "old"},      {"wl2_psk", "0123456789"},      {"wl3_ssid", "caf\xc3\xa9"},
             {"wl3_psk", ""}};
    const std::string slots = block("Attic \"2\" #1", wpa(HEX_64)) +
                              block("old", wpa("\"0123456789\"")) +
                              block("old", wep("0123456789")) + block("caf\xc3\xa9", OPEN);
    EXPECT_EQ(written(), HEAD + block("home", wpa("\"passphrase\"")) + slots);
    EXPECT_THAT(calls, ElementsAre("get orb_setup 64", "get wl_ssid 256", "get wl_psk 256",
                                   "get wl1_ssid 256", "get wl1_psk 256", "get wl2_ssid 256",
                                   "get wl2_psk 256", "get wl3_ssid 256", "get wl3_psk 256"));
    const std::vector<std::string> seen = {"home", R"(Attic \"2\" #1)", "old", "old",
                                           R"(caf\xc3\xa9)"};
    EXPECT_EQ(judged(), seen);

    store["orb_setup"] = "0";
    EXPECT_EQ(written(), HEAD +
                             block("home", wpa("\"passphrase\"") + "\tbssid=a4:01:02:03:04:05\n") +
                             block("home", wpa("\"passphrase\"")) + slots);
    EXPECT_EQ(judged().size(), 6U);
}

TEST_F(SupplicantTest, OnlyTheFirstSetupPinsToAUsableAccessPoint)
{
    for (const auto &[setup, address] :
         std::vector<std::pair<std::string, std::string>>{{"", "a4:1:2:3:4:5"},
                                                          {"00", "a4:1:2:3:4:5"},
                                                          {"0 ", "a4:1:2:3:4:5"},
                                                          {"0", "192.168.1.2"},
                                                          {"0", "00:1:2:3:4:5"}}) {
        store = {{"orb_setup", setup}, {"app_ip", address}, {"wl_ssid", "home"}, {"wl_psk", ""}};
        EXPECT_EQ(written(), HEAD + block("home", OPEN)) << setup << " " << address;
    }
    store["app_ip"] = "a4:1:2:3:4:5";
    refused = {"get app_ip"};
    EXPECT_EQ(written(), HEAD + block("home", OPEN));
    refused = {"get orb_setup"};
    EXPECT_EQ(written(), HEAD + block("home", OPEN));
}

TEST_F(SupplicantTest, NetworksWithoutBothKeysArePassedOverInSilence)
{
    write_file(FILE_PATH, std::string(5000, 'x'));
    store = {{"wl_ssid", "home"}, {"wl2_psk", "passphrase"}, {"wl3_ssid", ""}, {"wl3_psk", ""}};
    const Outcome restore = observe(cfg_restoreWiFiConfig);
    EXPECT_EQ(restore.result, 0);
    EXPECT_EQ(restore.out + restore.err, "");
    EXPECT_EQ(read_file(FILE_PATH), HEAD);
    EXPECT_THAT(judged(), IsEmpty());
}

TEST_F(SupplicantTest, AFileThatCannotBeOpenedIsReportedOnStandardError)
{
    write_file(FILE_PATH + "/in-the-way", "");
    const Outcome restore = observe(cfg_restoreWiFiConfig);
    EXPECT_EQ(restore.result, -1);
    EXPECT_EQ(restore.out, "");
    EXPECT_EQ(restore.err, "Error opening /etc/wpa_supplicant.conf.\n");
}

TEST_F(SupplicantTest, ALineFeedAddsNothingToTheFile)
{
    const std::string attack = "x\"\n}\nnetwork={\n\tssid=\"evil\"\n\tkey_mgmt=NONE\n}\n#";
    store = {{"wl_ssid", attack},         {"wl_psk", "passphrase"}, {"wl1_ssid", "home"},
             {"wl1_psk", "pass\nphrase"}, {"wl2_ssid", "kept"},     {"wl2_psk", ""}};
    EXPECT_EQ(written(), HEAD + block("kept", OPEN));
    EXPECT_THAT(judged(), ElementsAre("kept"));
}

TEST_F(SupplicantTest, EveryOtherByteOfAnSsidReachesTheSupplicant)
{
    for (int byte = 1; byte < 256; byte++) {
        if (byte == '\n')
            continue;
        const std::string ssid{'a', static_cast<char>(byte), 'b'};
        EXPECT_EQ(generated(ssid.c_str(), "", nullptr), block(ssid, OPEN));
    }
    store = {{"wl_ssid", "\r\t \\ '\"\x1b\x7f\xff "}, {"wl_psk", "#\"\\'$(reboot) "}};
    written();
    EXPECT_THAT(judged(), ElementsAre(R"(\r\t \\ '\"\e\x7f\xff )"));
}

TEST_F(SupplicantTest, OverlongValuesAreWrittenAsStored)
{
    const std::string ssid(255, 's');
    store = {{"wl_ssid", ssid}, {"wl_psk", ""}};
    EXPECT_EQ(written(), HEAD + block(ssid, OPEN));
    EXPECT_THAT(judged(), ElementsAre("refused")) << "why whoever stores an SSID checks it";
}

TEST_F(SupplicantTest, BssidsAreNormalisedOrLeftAlone)
{
    const std::map<std::string, std::string> usable = {{"A4:1:2:3:4:5", "a4:01:02:03:04:05"},
                                                       {"ff:ff:ff:ff:ff:ff", "ff:ff:ff:ff:ff:ff"},
                                                       {"a4:", "a4:00:00:00:00:00"},
                                                       {"a4:1:2", "a4:01:02:00:00:00"},
                                                       {"a4:1:2:3:4:5:6:7", "a4:01:02:03:04:05"},
                                                       {"a4:1:x:3:4:5", "a4:01:00:00:00:00"},
                                                       {" 0:0:0:0:0:1", "00:00:00:00:00:01"}};
    for (const auto &[given, normal] : usable) {
        char text[64];
        strcpy(text, given.c_str());
        EXPECT_EQ(validate_bssid(text), 1) << given;
        EXPECT_EQ(text, normal);
    }
    for (const std::string given :
         {"", "a4", ":", "x:1:2:3:4:5", "00:1:2:3:4:5", "0:1:2:3:4:5", " 0:0:0:0:0:0",
          "100:1:2:3:4:5", "a4:1:2:3:4:fff", "-1:1:2:3:4:5", "1000000a4:1:2:3:4:5",
          "100000000000000a4:1:2:3:4:5", "fffffffffffffffffffffffff:1:2:3:4:5"}) {
        std::string text = given + std::string(1, '\0') + "untouched";
        EXPECT_EQ(validate_bssid(text.data()), 0) << given;
        EXPECT_EQ(text, given + std::string(1, '\0') + "untouched");
    }
    EXPECT_EQ(validate_bssid(nullptr), 0);
}
