// The upload daemon: what it is told, in which order, and its recovery jobs.

#include "cfg_set.h"
#include "doubles.h"

#include <filesystem>
#include <sys/stat.h>
#include <unistd.h>

using namespace doubles;

using UploadTest = LibraryTest;

// clang-format off
static const std::string PID = "/var/run/smbu.pid", NAME = "/proc/77/cmdline";
static const std::string WAIT = "Wait smbu is terminated\n";

// A daemon that runs, and this mode.
static Given runs(Text mode)
{
    return {{"cifs_mode", mode}, {PID, "77\n"}, {NAME, {"/sbin/smbu\0-d", 13}}};
}

// What is told of the wanted ones of user, target, mode, size and (!) mount.
static std::string got(Text wanted)
{
    std::string text[4] = {"was----", "was----", "was----", "was----"};
    char *at[4];
    for (size_t i = 0; i < 4; i++)
        at[i] = wanted.find("utms"[i]) < 9 ? text[i].data() : nullptr;
    int is_on = 9;
    int *const mount = wanted.find('!') < 9 ? &is_on : nullptr;
    const int result = smbu_get_config(at[0], 8, at[1], 4, at[2], 5, at[3], 6, mount);
    return words(result, text[0].c_str(), text[1].c_str(), text[2].c_str(), text[3].c_str(), is_on);
}

static Calls signal(int code) { return {"post 20130005 " + std::to_string(code) + " 3000000000"}; }
static const Calls BEGUN = {"system smbu", "sleep 1"}, BEGUN_ASIDE = {"system smbu &", "sleep 1"};
static const Calls ENDED = {"removed " + PID}, RECORD = {"post 7 0", "post 7 1"};

TEST_F(UploadTest, DaemonRunsWhenItsPidNamesAProcessOfItsName)
{
    const std::string fill(28, '/');
    const auto row = [](const Given &has, int is) { return Row{has, CALL(smbu_exist()), is}; };
    const auto line = [&](Text name, int is) { return row({{PID, "77"}, {NAME, name}}, is); };
    const auto pid = [&](Text text, Text number) {
        return row({{PID, text}, {"/proc/" + number + "/cmdline", "smbu"}}, 1);
    };
    const auto mode = [](const char *text, int number) {
        return Row{{{"cifs_mode", text}}, CALL(smbu_status()), number, {}, "", {"cifs_mode 2"}};
    };
    check({
        row(runs("1"), 1), row({{NAME, "smbu"}}, 0), row({{PID, "77"}}, 0),
        row({{PID + "/", ""}}, 0), row({{PID, ""}, {"/proc/0/cmdline", "smbu"}}, 0),
        line("smbu", 1), line("", 0),
        // Arguments and what is behind 32 bytes do not count.
        line({"sh\0smbu", 7}, 0), line(fill + "smbu", 1), line(fill + "/smbu", 0),
        pid(std::string(30, ' ') + "779", "77"), pid("99999999999", "2147483647"),
        mode("", 0), mode("0", 0), mode("12", 1), mode("-1", 0), mode("9", 9),
    });
}

TEST_F(UploadTest, SignalsStartTheDaemonInTheModesThatWantThem)
{
    clock_now = 3000000000; // past 31 bits
    check({
        {CALL(smbu_wake_up()), 0},
        {runs("0"), CALL(smbu_wake_up()), 0},
        {runs("3"), CALL(smbu_wake_up()), 0},
        {runs("1"), CALL(smbu_wake_up()), 0, signal(1)},
        {runs("1"), {"msgsnd"}, CALL(smbu_wake_up()), 0, signal(1)},
        {{{"cifs_mode", "2"}}, CALL(smbu_wake_up()), 0, BEGUN + signal(1)},
        {{{"cifs_mode", "4"}}, CALL(smbu_wake_up()), 0, BEGUN + signal(1)},
        {runs("1"), CALL(smbu_event_notify()), 0},
        {runs("3"), CALL(smbu_event_notify()), 0},
        {runs("2"), CALL(smbu_event_notify()), 0, signal(2)},
        {{{"cifs_mode", "2"}}, CALL(smbu_event_notify()), 0, BEGUN + signal(2)},
        {runs(""), CALL(smbu_force_stop()), 0, signal(6) + Calls{"sleep 1"}},
        {{{"cifs_mode", "2"}}, CALL(smbu_force_stop()), 0},
    });
}

static const char *const no = nullptr;
#define SET(...) CALL(smbu_set_config(__VA_ARGS__))
#define MODE(text) SET(no, no, no, text, no)

TEST_F(UploadTest, NewSettingsReachTheDaemon)
{
    clock_now = 3000000000;
    on_sleep = [] { // it takes two seconds to end, each told before it is waited for
        if (std::count(calls.begin(), calls.end(), "sleep 1") != 2)
            return;
        std::fflush(stdout);
        EXPECT_EQ(read_file("/tmp/observed.out"), WAIT + WAIT);
        unlink(PID.c_str());
    };
    const auto mode = [](const char *text) { return Given{{"cifs_mode", text}}; };
    const auto set = [](const char *text) { return Calls{std::string("set cifs_mode=") + text}; };
    const auto stopped = [](int code) { return signal(code) + Calls{"sleep 1", "sleep 1"}; };
    const Calls user = {"set cifs_user=u"}, account = {"post 20130003 1 account "};
    const Calls pass = {"set cifs_pass=p"}, target = {"set cifs_target=t"};
    const Calls size = {"set cifs_size=9"}, all = user + pass + target + set("0") + size;
    const Calls again = BEGUN_ASIDE + signal(8), start = BEGUN_ASIDE + signal(7) + signal(8);
    const Calls long_account = {"post 20130003 1 account a b" + std::string(252, 'c')};
    const std::string lost = "[cfg_sendMsg #] msgget fail\n[cfg_setRec #] cfg_sendMsg fail";
    const std::string waits = "| " + WAIT + "| Wait smbu is terminated";
    Given with_account = runs("1");
    with_account["gdu_account"] = "a b" + std::string(300, 'c');
    check({
        {runs("1"), SET(no, no, no, no, no), 0, {}, "", {"cifs_mode 256"}},
        {runs("1"), SET(no, no, no, no, "9"), 0, size},
        {runs("1"), SET("u", no, no, no, no), 0, user + stopped(6) + again + ENDED, waits},
        {runs("0"), SET(no, "p", no, no, no), 0, pass + stopped(6) + ENDED, waits},
        {runs("3"), SET(no, no, "t", no, no), 0, target + stopped(6) + ENDED, waits},
        {mode("1"), SET("u", no, no, no, no), 0, user},
        {runs("1"), SET("u", "p", "t", "0", "9"), 0, all + stopped(5) + ENDED, waits},
        {mode("2"), {"set cifs_user", "set cifs_mode"}, SET("u", "p", "t", "0", "9"), 0, all + RECORD},
        {runs("2"), SET("u", no, no, "", no), 0, user + set("") + stopped(5) + ENDED, waits},
        {runs("1"), SET("u", no, no, "2", no), 0, user + set("2") + stopped(6) + account + again + RECORD + ENDED, waits},
        {mode("0"), MODE("1"), 0, set("1") + account + start},
        {mode("0"), {"msgget"}, MODE("2"), 0, set("2") + account + start, lost + "\n" + lost},
        {MODE("2"), 0, set("2") + account + start + RECORD, "", {"cifs_mode 256", "gdu_account 256"}},
        {mode("1"), MODE("2"), 0, set("2") + account + again + RECORD},
        {mode("12"), MODE("4"), 0, set("4") + again},
        {mode("2"), MODE("3"), 0, set("3") + RECORD},
        {mode("1"), MODE("0"), 0, set("0")},
        {with_account, MODE("2"), 0, set("2") + long_account + signal(7) + RECORD},
        {runs("2"), MODE("2"), 0, set("2") + account + signal(7)},
        {runs("2"), MODE("0"), 0, set("0") + signal(5) + Calls{"sleep 5"} + RECORD},
        {runs("1"), MODE("3"), 0, set("3")},
        {runs("1"), MODE("4"), 0, set("4")},
        {runs("2"), MODE(""), 0, set("")},
    });
}

TEST_F(UploadTest, ConfigurationIsReadAsFarAsItIsWanted)
{
    const std::string line = "cat /proc/mounts | grep /mnt/cifs", grep = "popen " + line;
    const Given full = {{"cifs_user", "ann"}, {"cifs_target", "//nas/cam"}, {"cifs_mode", "2"},
                        {"cifs_size", "123456789"}, {"$ " + line, "\n"}};
    check({
        {full, CALL(got("utms!")), "0 ann //n 2 12345 1", {grep}, "",
            {"cifs_user 8", "cifs_target 4", "cifs_mode 5", "cifs_size 6"}},
        {full, CALL(got("m")), "0 was---- was---- 2 was---- 9", {}, "", {"cifs_mode 5"}},
        {{{"$ " + line, ""}}, CALL(got("s!")), "0 was---- was---- was---- was---- 0", {grep}},
        {full, {grep}, CALL(got("!")), "0 was---- was---- was---- was---- 0", {grep}},
        {full, CALL(smbu_get_config(nullptr, 9, nullptr, 9, nullptr, 9, nullptr, 9, nullptr)), 0},
    });
    // A length without room is no wish.
    store = full;
    char text[] = "was";
    EXPECT_EQ(smbu_get_config(text, 0, text, -1, text, 0, text, -1, nullptr), 0);
    EXPECT_STREQ(text, "was");
}

TEST_F(UploadTest, RecoveryJobsAreEmptyFilesNamedAfterRecordings)
{
    const std::string video = "/mnt/sdcard/video/", folder = video + ".smbu/";
    const std::string n98(98, 'n'), n99(99, 'n');
    const auto made = [&](Text path, Text job) {
        return Row{{{folder, ""}}, CALL(smbu_add_recovery_job(path.c_str())), 0,
                   {"wrote " + video + job + " "}};
    };
    const auto rejected = [&](Text path) {
        return Row{{{folder, ""}}, CALL(smbu_add_recovery_job(path.c_str())), -1};
    };
    check({
        made("/mnt/1/clip.mp4", ".smbu/clip.rcy"), made("/a.b/c.d.e", ".smbu/c.d.rcy"),
        made("/a.b/c", ".rcy"), made("/" + n98 + ".jpeg2000", ".smbu/" + n98 + ".rcy"),
        made("/" + n99 + ".mp4", ".smbu/" + n99 + ".rcy"),
        made("/" + n99 + "nnnn.mp4", ".rcy"), // the cut takes the dot
        rejected(""), rejected("clip.mp4"), rejected("/" + n99 + "n.mp4"), // 127 characters
        {{{folder, ""}}, CALL(smbu_add_recovery_job(nullptr)), -1},
        {CALL(smbu_add_recovery_job("/mnt/sdcard/video/1/clip.mp4")), -1}, // without its folder
        {{{folder + "clip.rcy", "kept"}}, CALL(smbu_add_recovery_job("/clip.mp4")), 0},
    });
    std::filesystem::create_directories(folder);
    umask(0);
    smbu_add_recovery_job("/x.mp4");
    EXPECT_EQ(std::filesystem::status(folder + "x.rcy").permissions(), std::filesystem::perms(0644));
}
// clang-format on
