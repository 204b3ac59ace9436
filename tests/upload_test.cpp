// The upload daemon: what it is told, in which order, and its recovery jobs.

#include "cfg_set.h"
#include "doubles.h"

#include <filesystem>
#include <sys/stat.h>
#include <unistd.h>

using namespace doubles;

using UploadTest = LibraryTest;
using Given = std::map<std::string, std::string>;

// clang-format off
// A daemon that runs, and this mode.
static Given runs(const std::string &mode)
{
    return {{"cifs_mode", mode}, {"/var/run/smbu.pid", "77\n"}, {"/proc/77/cmdline", {"/sbin/smbu\0-d", 13}}};
}

// What is told of the wanted ones of user, target, mode, size and (!) mount.
static std::string got(const std::string &wanted)
{
    std::string text[4] = {"was----", "was----", "was----", "was----"};
    char *at[4];
    for (size_t i = 0; i < 4; i++)
        at[i] = wanted.find("utms"[i]) < 9 ? text[i].data() : nullptr;
    int mounted = 9;
    int *const mount = wanted.find('!') < 9 ? &mounted : nullptr;
    const int result = smbu_get_config(at[0], 8, at[1], 4, at[2], 5, at[3], 6, mount);
    return words(result, text[0].c_str(), text[1].c_str(), text[2].c_str(), text[3].c_str(), mounted);
}

static Calls signal(int code) { return {"post 20130005 " + std::to_string(code) + " 3000000000"}; }
static const Calls BEGUN = {"system smbu", "sleep 1"}, BEGUN_ASIDE = {"system smbu &", "sleep 1"};
static const Calls ENDED = {"removed /var/run/smbu.pid"}, RECORD = {"post 7 0", "post 7 1"};

TEST_F(UploadTest, DaemonRunsWhenItsPidNamesAProcessOfItsName)
{
    const std::string fill(28, '/');
    const auto row = [](const Given &files, int exists) { return Row{files, {}, CALL(smbu_exist()), exists, {}, ""}; };
    const auto line = [&](const std::string &text, int exists) { return row({{"/var/run/smbu.pid", "77"}, {"/proc/77/cmdline", text}}, exists); };
    const auto pid = [&](const std::string &text, const std::string &number) { return row({{"/var/run/smbu.pid", text}, {"/proc/" + number + "/cmdline", "smbu"}}, 1); };
    const auto mode = [](const char *text, int number) { return Row{{{"cifs_mode", text}}, {}, CALL(smbu_status()), number, {}, "", {"cifs_mode 2"}}; };
    check({
        row(runs("1"), 1), row({{"/proc/77/cmdline", "smbu"}}, 0), row({{"/var/run/smbu.pid", "77"}}, 0), row({{"/var/run/smbu.pid/", ""}}, 0), row({{"/var/run/smbu.pid", ""}, {"/proc/0/cmdline", "smbu"}}, 0),
        line("smbu", 1), line("", 0), line({"sh\0smbu", 7}, 0), line(fill + "smbu", 1), line(fill + "/smbu", 0), // arguments and what is behind 32 bytes do not count
        pid(std::string(30, ' ') + "779", "77"), pid("99999999999", "2147483647"),
        mode("", 0), mode("0", 0), mode("12", 1), mode("-1", 0), mode("9", 9),
    });
}

TEST_F(UploadTest, SignalsStartTheDaemonInTheModesThatWantThem)
{
    clock_now = 3000000000; // past 31 bits
    check({
        {{}, {},                    CALL(smbu_wake_up()),       0, {}, ""},
        {runs("0"), {},             CALL(smbu_wake_up()),       0, {}, ""},
        {runs("3"), {},             CALL(smbu_wake_up()),       0, {}, ""},
        {runs("1"), {},             CALL(smbu_wake_up()),       0, signal(1), ""},
        {runs("1"), {"msgsnd"},     CALL(smbu_wake_up()),       0, signal(1), ""},
        {{{"cifs_mode", "2"}}, {},  CALL(smbu_wake_up()),       0, BEGUN + signal(1), ""},
        {{{"cifs_mode", "4"}}, {},  CALL(smbu_wake_up()),       0, BEGUN + signal(1), ""},
        {runs("1"), {},             CALL(smbu_event_notify()),  0, {}, ""},
        {runs("3"), {},             CALL(smbu_event_notify()),  0, {}, ""},
        {runs("2"), {},             CALL(smbu_event_notify()),  0, signal(2), ""},
        {{{"cifs_mode", "2"}}, {},  CALL(smbu_event_notify()),  0, BEGUN + signal(2), ""},
        {runs(""), {},              CALL(smbu_force_stop()),    0, signal(6) + Calls{"sleep 1"}, ""},
        {{{"cifs_mode", "2"}}, {},  CALL(smbu_force_stop()),    0, {}, ""},
    });
}

TEST_F(UploadTest, NewSettingsReachTheDaemon)
{
    clock_now = 3000000000;
    on_sleep = [] {
        if (std::count(calls.begin(), calls.end(), "sleep 1") == 2) { // it takes two seconds to end, each told before it is waited for
            std::fflush(stdout);
            EXPECT_EQ(read_file("/tmp/observed.out"), "Wait smbu is terminated\nWait smbu is terminated\n");
            unlink("/var/run/smbu.pid");
        }
    };
    const char *const no = nullptr;
    const auto mode = [](const char *text) { return Given{{"cifs_mode", text}}; };
    const auto set = [](const char *text) { return Calls{std::string("set cifs_mode=") + text}; };
    const auto stopped = [](int code) { return signal(code) + Calls{"sleep 1", "sleep 1"}; };
    const Calls user = {"set cifs_user=u"}, account = {"post 20130003 1 account "};
    const Calls all = {"set cifs_user=u", "set cifs_pass=p", "set cifs_target=t", "set cifs_mode=0", "set cifs_size=9"};
    const std::string waits = "| Wait smbu is terminated\n| Wait smbu is terminated";
    Given with_account = runs("1");
    with_account["gdu_account"] = "a b" + std::string(300, 'c');
    check({
        {runs("1"), {},     CALL(smbu_set_config(no, no, no, no, no)),       0, {}, "", {"cifs_mode 256"}},
        {runs("1"), {},     CALL(smbu_set_config(no, no, no, no, "9")),      0, {"set cifs_size=9"}, ""},
        {runs("1"), {},     CALL(smbu_set_config("u", no, no, no, no)),      0, user + stopped(6) + BEGUN_ASIDE + signal(8) + ENDED, waits},
        {runs("0"), {},     CALL(smbu_set_config(no, "p", no, no, no)),      0, Calls{"set cifs_pass=p"} + stopped(6) + ENDED, waits},
        {runs("3"), {},     CALL(smbu_set_config(no, no, "t", no, no)),      0, Calls{"set cifs_target=t"} + stopped(6) + ENDED, waits},
        {mode("1"), {},     CALL(smbu_set_config("u", no, no, no, no)),      0, user, ""},
        {runs("1"), {},     CALL(smbu_set_config("u", "p", "t", "0", "9")),  0, all + stopped(5) + ENDED, waits},
        {mode("2"), {"set cifs_user", "set cifs_mode"}, CALL(smbu_set_config("u", "p", "t", "0", "9")), 0, all + RECORD, ""},
        {runs("2"), {},     CALL(smbu_set_config("u", no, no, "", no)),      0, user + set("") + stopped(5) + ENDED, waits},
        {runs("1"), {},     CALL(smbu_set_config("u", no, no, "2", no)),     0, user + set("2") + stopped(6) + account + BEGUN_ASIDE + signal(8) + RECORD + ENDED, waits},
        {mode("0"), {},     CALL(smbu_set_config(no, no, no, "1", no)),      0, set("1") + account + BEGUN_ASIDE + signal(7) + signal(8), ""},
        {mode("0"), {"msgget"}, CALL(smbu_set_config(no, no, no, "1", no)),  0, set("1") + account + BEGUN_ASIDE + signal(7) + signal(8), ""},
        {{}, {},            CALL(smbu_set_config(no, no, no, "2", no)),      0, set("2") + account + BEGUN_ASIDE + signal(7) + signal(8) + RECORD, "", {"cifs_mode 256", "gdu_account 256"}},
        {mode("1"), {},     CALL(smbu_set_config(no, no, no, "2", no)),      0, set("2") + account + BEGUN_ASIDE + signal(8) + RECORD, ""},
        {mode("12"), {},    CALL(smbu_set_config(no, no, no, "4", no)),      0, set("4") + BEGUN_ASIDE + signal(8), ""},
        {mode("2"), {},     CALL(smbu_set_config(no, no, no, "3", no)),      0, set("3") + RECORD, ""},
        {mode("1"), {},     CALL(smbu_set_config(no, no, no, "0", no)),      0, set("0"), ""},
        {with_account, {},  CALL(smbu_set_config(no, no, no, "2", no)),      0, set("2") + Calls{"post 20130003 1 account a b" + std::string(252, 'c')} + signal(7) + RECORD, ""},
        {runs("2"), {},     CALL(smbu_set_config(no, no, no, "2", no)),      0, set("2") + account + signal(7), ""},
        {runs("2"), {},     CALL(smbu_set_config(no, no, no, "0", no)),      0, set("0") + signal(5) + Calls{"sleep 5"} + RECORD, ""},
        {runs("1"), {},     CALL(smbu_set_config(no, no, no, "3", no)),      0, set("3"), ""},
        {runs("1"), {},     CALL(smbu_set_config(no, no, no, "4", no)),      0, set("4"), ""},
        {runs("2"), {},     CALL(smbu_set_config(no, no, no, "", no)),       0, set(""), ""},
    });
}

TEST_F(UploadTest, ConfigurationIsReadAsFarAsItIsWanted)
{
    const std::string grep = "popen cat /proc/mounts | grep /mnt/cifs", mounts = "$ cat /proc/mounts | grep /mnt/cifs";
    const Given full = {{"cifs_user", "ann"}, {"cifs_target", "//nas/cam"}, {"cifs_mode", "2"}, {"cifs_size", "123456789"}, {mounts, "\n"}};
    check({
        {full, {},              CALL(got("utms!")), "0 ann //n 2 12345 1", {grep}, "", {"cifs_user 8", "cifs_target 4", "cifs_mode 5", "cifs_size 6"}},
        {full, {},              CALL(got("m")),     "0 was---- was---- 2 was---- 9", {}, "", {"cifs_mode 5"}},
        {{{mounts, ""}}, {},    CALL(got("s!")),    "0 was---- was---- was---- was---- 0", {grep}, ""},
        {full, {grep},          CALL(got("!")),     "0 was---- was---- was---- was---- 0", {grep}, ""},
        {full, {},              CALL(smbu_get_config(nullptr, 9, nullptr, 9, nullptr, 9, nullptr, 9, nullptr)), 0, {}, ""},
    });
    // A length without room is no wish.
    store = full;
    char text[] = "was";
    EXPECT_EQ(smbu_get_config(text, 0, text, -1, text, 0, text, -1, nullptr), 0);
    EXPECT_STREQ(text, "was");
}

TEST_F(UploadTest, RecoveryJobsAreEmptyFilesNamedAfterRecordings)
{
    const std::string folder = "/mnt/sdcard/video/.smbu/", n98(98, 'n'), n99(99, 'n'), n100 = "/" + n99 + "n.mp4";
    const auto made = [&](const std::string &path, const std::string &file) { return Row{{{folder, ""}}, {}, CALL(smbu_add_recovery_job(path.c_str())), 0, {"wrote " + file + " "}, ""}; };
    const auto rejected = [&](const char *path) { return Row{{{folder, ""}}, {}, CALL(smbu_add_recovery_job(path)), -1, {}, ""}; };
    check({
        made("/mnt/sdcard/video/1/clip.mp4", folder + "clip.rcy"), made("/a.b/c.d.e", folder + "c.d.rcy"), made("/a.b/c", "/mnt/sdcard/video/.rcy"), rejected(""), rejected("clip.mp4"), rejected(nullptr),
        made("/" + n98 + ".jpeg2000", folder + n98 + ".rcy"), made("/" + n99 + ".mp4", folder + n99 + ".rcy"), rejected(n100.c_str()), // 127 characters
        made("/" + n99 + "nnnn.mp4", "/mnt/sdcard/video/.rcy"), // the cut takes the dot
        {{}, {}, CALL(smbu_add_recovery_job("/mnt/sdcard/video/1/clip.mp4")), -1, {}, ""}, // without its folder
        {{{folder + "clip.rcy", "kept"}}, {}, CALL(smbu_add_recovery_job("/clip.mp4")), 0, {}, ""},
    });
    std::filesystem::create_directories(folder);
    umask(0);
    smbu_add_recovery_job("/x.mp4");
    EXPECT_EQ(std::filesystem::status(folder + "x.rcy").permissions(), std::filesystem::perms(0644));
}
// clang-format on
