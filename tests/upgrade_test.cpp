// What prepares an upgrade: versions, downloads, and stopping the processes,
// here with lists of processes that are made up and signals that are not sent.

#include "cfg_set.h"
#include "doubles.h"

#include <cerrno>
#include <filesystem>
#include <unistd.h>

using namespace doubles;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

constexpr char LIST[] = "ps | awk '{ print $1 }'";
constexpr char WIFI[] = "ps | awk '$5==\"[RTW_CMD_THREAD]\" {print $1}'";
constexpr char PARENTS[] = "ps -l | awk '{ print $4}'";
constexpr char DAT[] = "/mnt/sdcard/upgrade/upgrade.dat";
constexpr char BIN[] = "/mnt/sdcard/upgrade/upgrade.bin";

class UpgradeTest : public LibraryTest
{
};

TEST_F(UpgradeTest, OnlyNewerVersionsAreNew)
{
    for (const char *version : {"v5.0.45", "v5.1.0", "v6.0.0", "v5.1.-1", "v10.0.0", "v5.0.45-rc1",
                                "v5.0.45.1", "v5.0.045", "v 5. 0.\t+45", "v2147483647.0.0",
                                "v4294967301.0.0", "v99999999999999999999.0.0"})
        EXPECT_EQ(cfg_isNewVersion(version), 0) << version;
    for (const char *version : {"v5.0.44",   "v5.0.9",  "v4.9.99",  "5.0.45",
                                "v5.0.44.9", "v-6.0.0", "v5.0.-45", "v-99999999999999999999.9.9",
                                "",          "v",       "v6",       "v6.",
                                "v6.0",      "v6.0.",   "v6.0.x",   "v6,0,0",
                                "v6 .0.0",   "V6.0.0",  " v6.0.0",  "vv6.0.0",
                                "v6.-.0"})
        EXPECT_EQ(cfg_isNewVersion(version), -1) << version;
}

TEST_F(UpgradeTest, DownloadIsNewFirmwareOrDeleted)
{
    const std::string longest = "v5.1.0 " + std::string(56, 'x');
    const struct {
        const char *what;
        std::string dat; // "-": there is none
        bool bin;
        std::string version; // none: refused
    } CASES[] = {
        {"newer", "v5.1.0\n", true, "v5.1.0"},
        {"newer, without a line end", "v5.1.0", true, "v5.1.0"},
        {"only the first line counts", "v5.1.0\nv1.0.0\n", true, "v5.1.0"},
        {"what follows the version is kept", "v5.1.0 beta\r\n", true, "v5.1.0 beta\r"},
        {"longest line", longest + "\n", true, longest},
        {"longer line", longest + "yz\n", true, longest},
        {"newer, without its image", "v5.1.0\n", false, ""},
        {"equal", "v5.0.44\n", true, ""},
        {"older", "v4.9.99\n", true, ""},
        {"malformed", "5.1.0\n", true, ""},
        {"empty", "", true, ""},
        {"empty first line", "\nv5.1.0\n", true, ""},
        {"an image alone", "-", true, ""},
        {"nothing", "-", false, ""},
    };
    for (const auto &test : CASES) {
        std::remove(DAT);
        std::remove(BIN);
        if (test.dat != "-")
            write_file(DAT, test.dat);
        if (test.bin)
            write_file(BIN, "image");
        const bool found = !test.version.empty();
        char version[64] = "old";
        const Outcome outcome =
            observe([&] { return cfg_verifyDownloadedFw(version, sizeof version); });
        EXPECT_EQ(outcome.result, found ? 0 : -1) << test.what;
        EXPECT_EQ(version, test.version) << test.what;
        EXPECT_EQ(outcome.out + outcome.err, "") << test.what;
        EXPECT_EQ(access(DAT, F_OK) == 0, found) << test.what;
        EXPECT_EQ(access(BIN, F_OK) == 0, found) << test.what;
    }
}

TEST_F(UpgradeTest, DownloadedVersionFitsItsBuffer)
{
    write_file(DAT, "v5.1.0\n");
    write_file(BIN, "");
    char version[8] = "1234567";
    EXPECT_EQ(cfg_verifyDownloadedFw(version, 4), 0);
    EXPECT_EQ(std::string(version, 8), std::string("v5.\000567\0", 8));
    EXPECT_EQ(cfg_verifyDownloadedFw(version, 0), 0);
    EXPECT_STREQ(version, "v5.");
    EXPECT_EQ(cfg_verifyDownloadedFw(nullptr, 8), 0);
    std::remove(BIN);
    EXPECT_EQ(cfg_verifyDownloadedFw(version, 0), -1);
    EXPECT_STREQ(version, "v5.");
}

TEST_F(UpgradeTest, SpeechPackageIsUnpackedWhenItsTarIsGone)
{
    const std::string gone = "[cfg_verifyDownloadedSpeech #] "
                             "sTarPath have be remove. To sure really tar finished \n";
    const std::string again = "[cfg_verifyDownloadedSpeech #] "
                              "download ok but tar is fail, Need again\n";
    const std::string no_version = "[cfg_verifyDownloadedSpeech #]Can not get  SPEECH_VERSION\n";
    const struct {
        const char *version, *language; // null: cannot be read
        const char *archive;            // in the download folder, or none
        const char *tar;                // below the language's folder, or none
        int result;
        std::string out, used;
    } CASES[] = {
        {"12", "EN", nullptr, nullptr, 0, "", "EN"},
        {"12", "EN", "speech12_EN.tgz", nullptr, -1, gone, "EN"},
        {"12", "EN", "speech12_EN.tgz", "EN/speech/speech12_EN.tar", 0, again, "EN"},
        {"12", "EN", "speech12_EN.tgz", "EN/speech/speech11_EN.tar", -1, gone, "EN"},
        {"12", "EN", nullptr, "EN/speech/speech12_EN.tar", 0, "", "EN"},
        {"3", "", "speech3_EN.tgz", nullptr, -1, gone, "EN"},
        {"3", "de", "speech3_EN.tgz", nullptr, 0, "", "de"},
        {"", "de", "speech_de.tgz", nullptr, -1, no_version + gone, "de"},
        {nullptr, "de", "speech_de.tgz", nullptr, -1, gone, "de"},
        {"12", nullptr, "speech12_.tgz", nullptr, 0, "", ""},
        {"123456789012345", "abcdefghijklmno", "speech123456789012345_abcdefghijklmno.tgz",
         "abcdefghijklmno/speech/speech123456789012345_abcdefghijklmno.tar", 0, again,
         "abcdefghijklmno"},
    };
    for (const auto &test : CASES) {
        std::filesystem::remove_all("/mnt/sdcard/morvenix");
        store.clear();
        if (test.version)
            store["speech_version"] = test.version;
        if (test.language)
            store["lang_name"] = test.language;
        if (test.archive)
            write_file(std::string("/mnt/sdcard/morvenix/download/") + test.archive, "");
        if (test.tar)
            write_file(std::string("/mnt/sdcard/morvenix/") + test.tar, "");

        char language[16] = "old";
        const Outcome outcome =
            observe([&] { return cfg_verifyDownloadedSpeech(language, sizeof language); });
        EXPECT_EQ(outcome.result, test.result) << test.used << test.out;
        EXPECT_EQ(outcome.out, test.out);
        EXPECT_EQ(language, test.used);
        char cut[4] = "123";
        quietly([&] { return cfg_verifyDownloadedSpeech(cut, 2); });
        EXPECT_EQ(cut, test.used.substr(0, 1));
        EXPECT_EQ(quietly([] { return cfg_verifyDownloadedSpeech(nullptr, 2); }), test.result);
    }
    EXPECT_THAT(recorded("get"), testing::Contains("speech_version 16"));
    EXPECT_THAT(recorded("get"), testing::Contains("lang_name 16"));
}

TEST_F(UpgradeTest, MusicPlaysWhileItsMarkerHoldsSomething)
{
    EXPECT_EQ(cfg_isPlayingMusic(), -1);
    write_file("/tmp/play_status", "");
    EXPECT_EQ(cfg_isPlayingMusic(), -1);
    write_file("/tmp/play_status", "1");
    EXPECT_EQ(cfg_isPlayingMusic(), 0);
}

// A `ps` that lists `processes` and `parents` below their headings, as the
// camera's does.
static void ps_lists(const std::string &processes, const std::string &parents)
{
    write_file("/tmp/list", "  PID USER       VSZ STAT COMMAND\n" + processes);
    write_file("/tmp/long", "S   UID   PID  PPID   VSZ   RSS TTY   CMD\n" + parents);
    write_script("/tmp/bin/ps", "[ \"$1\" = -l ] && exec cat /tmp/long; exec cat /tmp/list");
}

static std::string children_of(int parent, int count)
{
    std::string rows;
    for (int i = 0; i < count; i++)
        rows += "S     0   " + std::to_string(100 + i) + "     " + std::to_string(parent) +
                "   900   400 0:0   x\n";
    return rows;
}

TEST_F(UpgradeTest, EveryListedProcessButThreeIsTerminated)
{
    const std::string self = std::to_string(getpid());
    ps_lists("    1 root       900 S    init\n"
             "   44 root         0 SW   [kthreadd]\n" +
                 self +
                 " root 900 S upgrade\n"
                 "  77 root         0 SW   [RTW_CMD_THREAD]\n"
                 "  78 root         0 SW   grep [RTW_CMD_THREAD]\n"
                 "    0 root         0 SW   nobody\n"
                 "  -5 root         0 SW   nobody\n"
                 "88x9 root         0 SW   odd\n"
                 "32767 root       900 S    -sh\n",
             children_of(2, 9) + children_of(1, 2) + children_of(11, 3));
    const Outcome outcome = observe(cfg_killProcess);
    EXPECT_EQ(close_pipes(), std::vector<std::string>{WIFI}) << "which stays open";
    EXPECT_EQ(outcome.result, 0);
    EXPECT_THAT(calls, ElementsAre("system killall watchdog; disable_watchdog",
                                   "system echo \"\" > /proc/sys/kernel/hotplug",
                                   std::string("popen ") + LIST, std::string("popen ") + WIFI,
                                   "kill 44 15", "kill 78 15", "kill 88 15", "kill 32767 15",
                                   std::string("popen ") + PARENTS));
    EXPECT_EQ(outcome.out, "[cfg_killProcess #] iPidRTW = 77\n[cfg_killProcess #] dwCount: 2\n");
    EXPECT_EQ(outcome.err, "send SIGTERM to pid 44\nsend SIGTERM to pid 78\n"
                           "send SIGTERM to pid 88\nsend SIGTERM to pid 32767\n");
}

TEST_F(UpgradeTest, WaitEndsWhenTwoAreLeftOrAfterTwentyAttempts)
{
    ps_lists("", children_of(1, 3));
    Outcome outcome = observe(cfg_killProcess);
    EXPECT_EQ(outcome.result, 0);
    std::string waiting = "[cfg_killProcess #] iPidRTW = 0\n";
    for (int attempt = 1; attempt <= 20; attempt++)
        waiting += "[cfg_killProcess #] dwCount: 3\n[cfg_killProcess #] retry: " +
                   std::to_string(attempt) + "\n";
    EXPECT_EQ(outcome.out, waiting);
    EXPECT_EQ(recorded("sleep"), std::vector<std::string>(20, "1"));

    // One more is gone each time.
    calls.clear();
    write_script("/tmp/bin/ps", "sed -i 2d /tmp/long; exec cat /tmp/long");
    write_file("/tmp/long", "PPID\n" + children_of(1, 7));
    outcome = observe(cfg_killProcess);
    EXPECT_EQ(close_pipes().size(), 2U);
    EXPECT_THAT(outcome.out, testing::EndsWith("[cfg_killProcess #] dwCount: 3\n"
                                               "[cfg_killProcess #] retry: 2\n"
                                               "[cfg_killProcess #] dwCount: 2\n"));
    EXPECT_THAT(recorded("sleep"), ElementsAre("1", "1"));
}

TEST_F(UpgradeTest, ListThatCannotBeReadEndsBeforeAnySignal)
{
    popen_error = EMFILE;
    const Outcome outcome = observe(cfg_killProcess);
    EXPECT_EQ(outcome.result, -1);
    EXPECT_EQ(outcome.out, "[cfg_killProcess #] iPidRTW = 0\n"
                           "[cfg_killProcess #] popen fail errno[24][Too many open files]\n");
    EXPECT_EQ(recorded("system").size(), 2U);
    EXPECT_THAT(recorded("kill"), IsEmpty());
    EXPECT_THAT(recorded("sleep"), IsEmpty());
}

TEST_F(UpgradeTest, EachPipeFailsByItself)
{
    const std::string failed = "[cfg_killProcess #] popen fail errno[12][Cannot allocate memory]\n";
    ps_lists("  50 root 0 SW [RTW_CMD_THREAD]\n  51 root 0 S x\n", "");
    refused = {std::string("popen ") + LIST};
    Outcome outcome = observe(cfg_killProcess);
    EXPECT_EQ(outcome.result, -1);
    EXPECT_EQ(outcome.out, "[cfg_killProcess #] iPidRTW = 50\n" + failed);

    refused = {std::string("popen ") + WIFI};
    outcome = observe(cfg_killProcess);
    EXPECT_EQ(outcome.result, 0);
    EXPECT_THAT(recorded("kill"), ElementsAre("50 15", "51 15"));

    refused = {std::string("popen ") + PARENTS};
    outcome = observe(cfg_killProcess);
    EXPECT_EQ(outcome.result, 0);
    EXPECT_THAT(outcome.out, HasSubstr(failed + "[cfg_killProcess #] retry: 1\n" + failed));
    EXPECT_EQ(recorded("sleep").size(), 20U);
    close_pipes();
}
