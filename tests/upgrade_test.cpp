// What prepares an upgrade: versions, downloads, and stopping the processes,
// here with lists of processes that are made up and signals that are not sent.

#include "cfg_set.h"
#include "doubles.h"

#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace doubles;

using UpgradeTest = LibraryTest;

// clang-format off

TEST_F(UpgradeTest, OnlyNewerVersionsAreNew)
{
    for (const char *version : {"v5.0.45", "v5.1.0", "v6.0.0", "v5.1.-1", "v10.0.0", "v5.0.45-rc1", "v5.0.45.1", "v5.0.045", "v 5. 0.\t+45",
             "v2147483647.0.0", "v4294967301.0.0", "v99999999999999999999.0.0"})
        EXPECT_EQ(cfg_isNewVersion(version), 0) << version;
    for (const char *version : {"v5.0.44", "v5.0.9", "v4.9.99", "5.0.45", "v5.0.44.9", "v-6.0.0", "v5.0.-45", "v-99999999999999999999.9.9",
             "", "v", "v6", "v6.", "v6.0", "v6.0.", "v6.0.x", "v6,0,0", "v6 .0.0", "V6.0.0", " v6.0.0", "vv6.0.0", "v6.-.0"})
        EXPECT_EQ(cfg_isNewVersion(version), -1) << version;
}

// The result of a check, and what it has put into a buffer of this size: "|"
// for a terminator.
static std::string into(int (*function)(char *, uint32_t), uint32_t size)
{
    char buffer[100];
    memset(buffer, '~', sizeof buffer);
    const int result = function(buffer, size);
    std::string text(buffer, sizeof buffer);
    text.erase(text.find_last_not_of('~') + 1);
    for (char &letter : text)
        letter = letter == '\0' ? '|' : letter;
    return words(result, text);
}

static std::string firmware(uint32_t size = 64)
{
    return into(cfg_verifyDownloadedFw, size);
}

static std::string speech(uint32_t size = 16)
{
    return into(cfg_verifyDownloadedSpeech, size);
}

TEST_F(UpgradeTest, Downloads)
{
    const std::string DAT = "/mnt/sdcard/upgrade/upgrade.dat", BIN = "/mnt/sdcard/upgrade/upgrade.bin", longest = "v5.1.0 " + std::string(56, 'x');
    const std::string folder = "/mnt/sdcard/morvenix/", download = folder + "download/speech", version = "speech_version", language = "lang_name";
    const std::string digits = "123456789012345", letters = "abcdefghijklmno", gone = "sTarPath have be remove. To sure really tar finished ";
    const std::string none = "[cfg_verifyDownloadedSpeech #]Can not get  SPEECH_VERSION\n", again = "download ok but tar is fail, Need again";
    const Calls both = {"removed " + BIN, "removed " + DAT}, read = {"speech_version 16", "lang_name 16"};
    check({
        {{{DAT, "v5.1.0\n"}, {BIN, ""}},            {}, CALL(firmware()),  "0 v5.1.0|", {}, ""},
        {{{DAT, "v5.1.0"}, {BIN, ""}},              {}, CALL(firmware(4)), "0 v5.|", {}, ""},
        {{{DAT, "v5.1.0"}, {BIN, ""}},              {}, CALL(firmware(0)), "0 ", {}, ""},
        {{{DAT, "v5.1.0"}, {BIN, ""}},              {}, CALL(cfg_verifyDownloadedFw(nullptr, 9)), 0, {}, ""},
        {{{DAT, "v5.1.0 \r\nv1.0.0\n"}, {BIN, ""}}, {}, CALL(firmware()),  "0 v5.1.0 \r|", {}, ""},
        {{{DAT, longest + "yz\n"}, {BIN, ""}},      {}, CALL(firmware(99)), "0 " + longest + "|", {}, ""},
        {{{DAT, "v5.1.0\n"}},                       {}, CALL(firmware()),  "-1 |", {"removed " + DAT}, ""},
        {{{BIN, ""}},                               {}, CALL(firmware()),  "-1 |", {"removed " + BIN}, ""},
        {{{DAT, "v5.0.44\n"}, {BIN, ""}},           {}, CALL(firmware()),  "-1 |", both, ""},
        {{{DAT, "\nv5.1.0\n"}, {BIN, ""}},          {}, CALL(firmware(1)), "-1 |", both, ""},
        {{{DAT, ""}, {BIN, ""}},                    {}, CALL(firmware(0)), "-1 ", both, ""},
        {{},                                        {}, CALL(cfg_verifyDownloadedFw(nullptr, 9)), -1, {}, ""},

        {{{version, "12"}, {language, "EN"}},       {}, CALL_AS(cfg_verifyDownloadedSpeech, speech()), "0 EN|", {}, "", read},
        {{{version, "12"}, {language, "EN"}, {download + "12_EN.tgz", ""}}, {}, CALL_AS(cfg_verifyDownloadedSpeech, speech(2)), "-1 E|", {}, gone},
        {{{version, "12"}, {language, "EN"}, {download + "12_EN.tgz", ""}, {folder + "EN/speech/speech12_EN.tar", ""}}, {},
         CALL_AS(cfg_verifyDownloadedSpeech, speech(1)), "0 |", {}, again},
        {{{version, "3"}, {language, ""}, {download + "3_EN.tgz", ""}, {folder + "EN/speech/speech12_EN.tar", ""}}, {},
         CALL_AS(cfg_verifyDownloadedSpeech, speech(0)), "-1 ", {}, gone},
        {{{version, "3"}, {language, "de"}, {download + "3_EN.tgz", ""}}, {}, CALL(cfg_verifyDownloadedSpeech(nullptr, 9)), 0, {}, ""},
        {{{version, ""}, {language, "de"}, {download + "_de.tgz", ""}}, {}, CALL_AS(cfg_verifyDownloadedSpeech, speech()), "-1 de|", {},
         none + gone},
        {{{language, "de"}, {download + "_de.tgz", ""}}, {}, CALL_AS(cfg_verifyDownloadedSpeech, speech()), "-1 de|", {}, gone, read},
        {{{version, "12"}, {download + "12_.tgz", ""}},  {}, CALL_AS(cfg_verifyDownloadedSpeech, speech()), "0 |", {}, ""},
        {{{version, digits}, {language, letters}, {download + digits + "_" + letters + ".tgz", ""},
          {folder + letters + "/speech/speech" + digits + "_" + letters + ".tar", ""}}, {},
         CALL_AS(cfg_verifyDownloadedSpeech, speech()), "0 " + letters + "|", {}, again},
    });
}

// As it is asked when the marker was last written in 2040.
static int playing_in_2040()
{
    const timespec times[] = {{2208988800, 0}, {2208988800, 0}};
    EXPECT_EQ(utimensat(AT_FDCWD, "/tmp/play_status", times, 0), 0);
    return cfg_isPlayingMusic();
}

TEST_F(UpgradeTest, MusicPlaysWhileItsMarkerHoldsSomething)
{
    check({
        {{}, {}, CALL(cfg_isPlayingMusic()), -1, {}, ""},
        {{{"/tmp/play_status", ""}}, {}, CALL(cfg_isPlayingMusic()), -1, {}, ""},
        {{{"/tmp/play_status", "1"}}, {}, CALL(cfg_isPlayingMusic()), 0, {}, ""},
        {{{"/tmp/play_status", "1"}}, {}, CALL(playing_in_2040()), 0, {}, ""},
    });
}

TEST_F(UpgradeTest, Processes)
{
    const std::string LIST = "ps | awk '{ print $1 }'", PARENTS = "ps -l | awk '{ print $4}'", WIFI = "ps | awk '$5==\"[RTW_CMD_THREAD]\" {print $1}'";
    const std::string self = word(getpid()), blanks(27, ' '), zeros(29, '0'), failed = "popen fail errno[12][Cannot allocate memory]";
    const std::string wait = "popen " + PARENTS, left = "left open " + WIFI;
    const Calls begin = {"system killall watchdog; disable_watchdog", "system echo \"\" > /proc/sys/kernel/hotplug", "popen " + LIST, "popen " + WIFI};
    const auto then = [&](Calls more) { return more.insert(more.begin(), begin.begin(), begin.end()), more; };
    Calls twenty;
    std::string reports = "iPidRTW = 0", failures = reports;
    for (int attempt = 1; attempt <= 20; attempt++) {
        twenty.insert(twenty.end(), {wait, "sleep 1"});
        reports += "\ndwCount: 3\nretry: " + word(attempt);
        failures += "\n" + failed + "\nretry: " + word(attempt);
    }
    check({
        {{{"$ " + LIST, "PID\n1\n44\n" + self + "\n77\n 5\n-5\n0\n88x9\n7" + blanks + "   99\n0001\n32767"}, {"$ " + WIFI, "77\n44\n"},
          {"$ " + PARENTS, "PPID\n1\n01 x\n10\n11\n 1\n0\n2\n"}}, {}, CALL(cfg_killProcess()), 0,
         then({"kill 44 15", "kill 88 15", "kill 7 15", "kill 99 15", "kill 32767 15", wait, left}),
         "iPidRTW = 77\ndwCount: 2\n! | send SIGTERM to pid 44\n! | send SIGTERM to pid 88\n! | send SIGTERM to pid 7\n"
         "! | send SIGTERM to pid 99\n! | send SIGTERM to pid 32767"},
        {{{"$ " + LIST, "77\n778"}, {"$ " + WIFI, zeros + "778"}, {"$ " + PARENTS, ""}}, {}, CALL(cfg_killProcess()), 0,
         then({"kill 778 15", wait, left}), "iPidRTW = 77\ndwCount: 0\n! | send SIGTERM to pid 778"},
        {{{"$ " + LIST, ""}, {"$ " + PARENTS, "1\n1\n1\n"}}, {"popen " + WIFI}, CALL(cfg_killProcess()), 0, then(twenty), reports},

        {{{"$ " + WIFI, "50"}}, {"popen " + LIST}, CALL(cfg_killProcess()), -1, then({left}), "iPidRTW = 50\n" + failed},
        {{}, {"popen " + LIST, "popen " + WIFI}, CALL(cfg_killProcess()), -1, begin, "iPidRTW = 0\n" + failed},
        {{{"$ " + LIST, "50\n"}, {"$ " + PARENTS, "1\n"}}, {"popen " + WIFI}, CALL(cfg_killProcess()), 0,
         then({"kill 50 15", wait}), "iPidRTW = 0\ndwCount: 1\n! | send SIGTERM to pid 50"},
        {{{"$ " + LIST, ""}}, {"popen " + WIFI, wait}, CALL(cfg_killProcess()), 0, then(twenty), failures},
    });
    on_sleep = [=] { answers[PARENTS].erase(0, puts("asleep") >= 0 ? 2 : 0); }; // one more has ended
    check({
        {{{"$ " + LIST, ""}, {"$ " + WIFI, ""}, {"$ " + PARENTS, "1\n1\n1\n1\n"}}, {}, CALL(cfg_killProcess()), 0,
         then({wait, "sleep 1", wait, "sleep 1", wait, left}),
         "iPidRTW = 0\ndwCount: 4\n| asleep\nretry: 1\ndwCount: 3\n| asleep\nretry: 2\ndwCount: 2"},
    });
}
