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
    for (const char *version : {
             "v5.0.45", "v5.1.0", "v6.0.0", "v5.1.-1", "v10.0.0", "v5.0.45-rc1", "v5.0.45.1",
             "v5.0.045", "v 5. 0.\t+45", "v2147483647.0.0", "v4294967301.0.0", "v99999999999999999999.0.0"})
        EXPECT_EQ(cfg_isNewVersion(version), 0) << version;
    for (const char *version : {
             "v5.0.44", "v5.0.9", "v4.9.99", "5.0.45", "v5.0.44.9", "v-6.0.0", "v5.0.-45", "v6.-.0",
             "", "v", "v6", "v6.", "v6.0", "v6.0.", "v6.0.x", "v6,0,0", "v6 .0.0", "V6.0.0",
             " v6.0.0", "vv6.0.0", "v-99999999999999999999.9.9"})
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

#define FIRMWARE(size) CALL_AS(cfg_verifyDownloadedFw, into(cfg_verifyDownloadedFw, size))
#define SPEECH(size) CALL_AS(cfg_verifyDownloadedSpeech, into(cfg_verifyDownloadedSpeech, size))

TEST_F(UpgradeTest, Downloads)
{
    const std::string upgrade = "/mnt/sdcard/upgrade/upgrade.", DAT = upgrade + "dat";
    const std::string BIN = upgrade + "bin", folder = "/mnt/sdcard/morvenix/";
    const std::string download = folder + "download/speech";
    const std::string longest = "v5.1.0 " + std::string(56, 'x'), version = "speech_version";
    const std::string language = "lang_name", digits = "123456789012345";
    const std::string letters = "abcdefghijklmno", long_name = digits + "_" + letters;
    const std::string gone = "sTarPath have be remove. To sure really tar finished ";
    const std::string again = "download ok but tar is fail, Need again";
    const std::string tar = folder + "EN/speech/speech12_EN.tar";
    const auto has = [&](Text stored, Text name, Text file = "/tmp/1", Text other = "/tmp/2") {
        return Given{{version, stored}, {language, name}, {file, ""}, {other, ""}};
    };
    const auto holds = [&](Text text) { return Given{{DAT, text}, {BIN, ""}}; };
    const Calls both = {"removed " + BIN, "removed " + DAT}, read = {version + " 16", "lang_name 16"};
    check({
        {holds("v5.1.0\n"), FIRMWARE(64), "0 v5.1.0|"},
        {holds("v5.1.0"), FIRMWARE(4), "0 v5.|"},
        {holds("v5.1.0"), FIRMWARE(0), "0 "},
        {holds("v5.1.0"), CALL(cfg_verifyDownloadedFw(nullptr, 9)), 0},
        {holds("v5.1.0 \r\nv1.0.0\n"), FIRMWARE(64), "0 v5.1.0 \r|"},
        {holds(longest + "yz\n"), FIRMWARE(99), "0 " + longest + "|"},
        {{{DAT, "v5.1.0\n"}}, FIRMWARE(64), "-1 |", {"removed " + DAT}},
        {{{BIN, ""}}, FIRMWARE(64), "-1 |", {"removed " + BIN}},
        {holds("v5.0.44\n"), FIRMWARE(64), "-1 |", both},
        {holds("\nv5.1.0\n"), FIRMWARE(1), "-1 |", both},
        {holds(""), FIRMWARE(0), "-1 ", both},
        {CALL(cfg_verifyDownloadedFw(nullptr, 9)), -1},

        {has("12", "EN"), SPEECH(16), "0 EN|", {}, "", read},
        {has("12", "EN", download + "12_EN.tgz"), SPEECH(2), "-1 E|", {}, gone},
        {has("12", "EN", download + "12_EN.tgz", tar), SPEECH(1), "0 |", {}, again},
        {has("3", "", download + "3_EN.tgz", tar), SPEECH(0), "-1 ", {}, gone},
        {has("3", "de", download + "3_EN.tgz"), CALL(cfg_verifyDownloadedSpeech(nullptr, 9)), 0},
        {has("", "de", download + "_de.tgz"), SPEECH(16), "-1 de|", {},
            "[cfg_verifyDownloadedSpeech #]Can not get  SPEECH_VERSION\n" + gone},
        {{{language, "de"}, {download + "_de.tgz", ""}}, SPEECH(16), "-1 de|", {}, gone, read},
        {{{version, "12"}, {download + "12_.tgz", ""}}, SPEECH(16), "0 |"},
        {has(digits, letters, download + long_name + ".tgz", folder + letters + "/speech/speech" + long_name + ".tar"),
            SPEECH(16), "0 " + letters + "|", {}, again},
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
        {CALL(cfg_isPlayingMusic()), -1},
        {{{"/tmp/play_status", ""}}, CALL(cfg_isPlayingMusic()), -1},
        {{{"/tmp/play_status", "1"}}, CALL(cfg_isPlayingMusic()), 0},
        {{{"/tmp/play_status", "1"}}, CALL(playing_in_2040()), 0},
    });
}

TEST_F(UpgradeTest, Processes)
{
    const std::string LIST = "ps | awk '{ print $1 }'", PARENTS = "ps -l | awk '{ print $4}'";
    const std::string WIFI = "ps | awk '$5==\"[RTW_CMD_THREAD]\" {print $1}'";
    const std::string left = "left open " + WIFI, wait = "popen " + PARENTS, self = word(getpid());
    const std::string blanks(27, ' '), zeros(29, '0'), term = "! | send SIGTERM to pid ";
    const std::string failed = "popen fail errno[12][Cannot allocate memory]";
    const Calls begin = {"system killall watchdog; disable_watchdog",
        "system echo \"\" > /proc/sys/kernel/hotplug", "popen " + LIST, "popen " + WIFI};
    Calls twenty;
    std::string reports = "iPidRTW = 0", failures = reports;
    for (int attempt = 1; attempt <= 20; attempt++) {
        twenty.insert(twenty.end(), {wait, "sleep 1"});
        reports += "\ndwCount: 3\nretry: " + word(attempt);
        failures += "\n" + failed + "\nretry: " + word(attempt);
    }
    const auto ps = [&](Text list, Text wifi, Text parents) {
        return Given{{"$ " + LIST, list}, {"$ " + WIFI, wifi}, {"$ " + PARENTS, parents}};
    };
    const Call kill = CALL(cfg_killProcess());
    check({
        {ps("PID\n1\n44\n" + self + "\n77\n 5\n-5\n0\n88x9\n7" + blanks + "   99\n0001\n32767", "77\n44\n",
            "PPID\n1\n01 x\n10\n11\n 1\n0\n2\n"), kill, 0,
            begin + Calls{"kill 44 15", "kill 88 15", "kill 7 15", "kill 99 15", "kill 32767 15", wait, left},
            "iPidRTW = 77\ndwCount: 2\n" + term + "44\n" + term + "88\n" + term + "7\n" + term + "99\n" + term + "32767"},
        {ps("77\n778", zeros + "778", ""), kill, 0, begin + Calls{"kill 778 15", wait, left},
            "iPidRTW = 77\ndwCount: 0\n" + term + "778"},
        {ps("", "", "1\n1\n1\n"), {"popen " + WIFI}, kill, 0, begin + twenty, reports},
        {ps("", "50", ""), {"popen " + LIST}, kill, -1, begin + Calls{left}, "iPidRTW = 50\n" + failed},
        {{}, {"popen " + LIST, "popen " + WIFI}, kill, -1, begin, "iPidRTW = 0\n" + failed},
        {ps("50\n", "", "1\n"), {"popen " + WIFI}, kill, 0, begin + Calls{"kill 50 15", wait},
            "iPidRTW = 0\ndwCount: 1\n" + term + "50"},
        {ps("", "", ""), {"popen " + WIFI, wait}, kill, 0, begin + twenty, failures},
    });
    on_sleep = [=] { answers[PARENTS].erase(0, puts("asleep") >= 0 ? 2 : 0); }; // one more ended
    check({
        {ps("", "", "1\n1\n1\n1\n"), kill, 0, begin + Calls{wait, "sleep 1", wait, "sleep 1", wait, left},
            "iPidRTW = 0\ndwCount: 4\n| asleep\nretry: 1\ndwCount: 3\n| asleep\nretry: 2\ndwCount: 2"},
    });
}
