// The upload daemon: what it is told, in which order, and its recovery jobs.

#include "cfg_set.h"
#include "doubles.h"

#include <cstring>
#include <sstream>
#include <sys/ipc.h>
#include <sys/msg.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

using namespace doubles;
using testing::ElementsAre;
using testing::IsEmpty;

static constexpr key_t SIGNALS = 0x20130005;
static constexpr key_t ACCOUNTS = 0x20130003;
static constexpr key_t RECORDER = 5678;

// Recorded as "send QUEUE TYPE", and sent.
extern "C" int msgsnd(int queue, const void *message, size_t size, int flags)
{
    static const std::map<key_t, std::string> NAMES = {
        {SIGNALS, "signal "}, {ACCOUNTS, "account "}, {RECORDER, "recorder "}};
    msqid_ds state{};
    msgctl(queue, IPC_STAT, &state);
    long type = 0;
    memcpy(&type, message, sizeof type);
    calls.push_back("send " + NAMES.at(state.msg_perm.__key) + std::to_string(type));
    EXPECT_EQ(flags, IPC_NOWAIT);
    EXPECT_EQ(state.msg_perm.mode, 0666);
    return static_cast<int>(syscall(SYS_msgsnd, queue, message, size, flags));
}

class UploadTest : public LibraryTest
{
};

// What lies in a queue, the oldest record first, without the types.
static std::vector<std::string> bodies(key_t key)
{
    struct {
        long type;
        char body[512];
    } record{};
    std::vector<std::string> found;
    const int queue = msgget(key, 0);
    ssize_t length;
    while ((length = msgrcv(queue, &record, sizeof record.body, 0, IPC_NOWAIT)) >= 0)
        found.emplace_back(record.body, static_cast<size_t>(length));
    return found;
}

static void run_daemon(bool runs)
{
    write_file("/proc/77/cmdline", std::string("/sbin/smbu\0-d", 13));
    if (runs)
        write_file("/var/run/smbu.pid", "77\n");
    else
        unlink("/var/run/smbu.pid");
}

// What was stored (without "cifs_"), sent, run and slept; the calls begin anew.
static std::string acts()
{
    std::string found;
    for (const std::string &call : calls) {
        const size_t blank = call.find(' ');
        const std::string word = call.substr(0, blank);
        if (word == "set" || word == "send" || word == "system" || word == "sleep")
            found += (found.empty() ? "" : ", ") +
                     call.substr(word == "sleep" ? 0 : blank + (word == "set" ? 6 : 1));
    }
    calls.clear();
    return found;
}

// smbu_set_config with what "user=TEXT, mode=TEXT" names.
static int set_config(const std::string &texts)
{
    std::map<std::string, std::string> given;
    std::istringstream input(texts);
    for (std::string name; std::getline(input >> std::ws, name, '=');)
        std::getline(input, given[name], ',');
    const auto text = [&](const char *name) {
        return given.count(name) ? given[name].c_str() : nullptr;
    };
    return smbu_set_config(text("user"), text("pass"), text("target"), text("mode"), text("size"));
}

TEST_F(UploadTest, ModeIsTheFirstCharacterOfTheStoredOne)
{
    EXPECT_EQ(smbu_status(), 0);
    for (const auto &[text, mode] :
         std::map<std::string, int>{{"", 0}, {"0", 0}, {"3", 3}, {"12", 1}, {"-1", 0}}) {
        store["cifs_mode"] = text;
        EXPECT_EQ(smbu_status(), mode) << text;
    }
}

TEST_F(UploadTest, DaemonRunsWhenItsPidNamesAProcessOfItsName)
{
    EXPECT_EQ(smbu_exist(), 0) << "no pid file";
    for (const auto &[pid, program, exists] :
         std::vector<std::tuple<std::string, std::string, int>>{
             {"77\n", "smbu", 1},
             {"77", std::string("sh\0smbu", 7), 0}, // the arguments do not count
             {"77", "", 0},
             {"77", std::string(28, '/') + "smbu", 1},
             {"77", std::string(29, '/') + "smbu", 0}, // past the 32 bytes looked at
             {"", "smbu", 0},
             {"78", "smbu", 0},
             {std::string(30, ' ') + "779", "smbu", 1},
             {"99999999999999999999", "smbu", 0}}) {
        write_file("/var/run/smbu.pid", pid);
        write_file("/proc/77/cmdline", program);
        EXPECT_EQ(smbu_exist(), exists) << pid << ", " << program;
    }
}

TEST_F(UploadTest, SignalsStartTheDaemonInTheModesThatWantThem)
{
    for (const std::string mode : {"0", "1", "2", "3", "4", ""}) {
        store["cifs_mode"] = mode;
        for (const bool runs : {false, true}) {
            run_daemon(runs);
            const std::string start = runs ? "" : "smbu, sleep 1, ";
            EXPECT_EQ(smbu_wake_up(), 0);
            EXPECT_EQ(acts(), mode == "1" || mode == "2" || mode == "4" ? start + "signal 1" : "");
            EXPECT_EQ(smbu_event_notify(), 0);
            EXPECT_EQ(acts(), mode == "2" ? start + "signal 2" : "");
            EXPECT_EQ(smbu_force_stop(), 0);
            EXPECT_EQ(acts(), runs ? "signal 6, sleep 1" : "");
        }
    }
}

TEST_F(UploadTest, RecordsAreAsTheReceiversKnowThem)
{
    clock_now = 0x65a4b3c2;
    store = {{"cifs_mode", "1"}, {"gdu_account", std::string(300, 'a')}};
    run_daemon(true);
    smbu_wake_up();
    EXPECT_THAT(bodies(SIGNALS), ElementsAre("\xc2\xb3\xa4\x65"));

    const std::string head = std::string("\x0b\0\0\0\0\0\0\0\0\0\0\0", 12);
    const auto account = [&] {
        set_config("mode=1");
        return bodies(ACCOUNTS);
    };
    EXPECT_THAT(account(), ElementsAre(head + std::string(255, 'a') + std::string(5, 0)));
    store["gdu_account"] = "ann";
    EXPECT_THAT(account(), ElementsAre(head + "ann" + std::string(257, 0)));
    store.erase("gdu_account");
    EXPECT_THAT(account(), ElementsAre(head + std::string(260, 0)));

    set_config("mode=2");
    EXPECT_THAT(bodies(RECORDER), ElementsAre(std::string(292, 0), "\1" + std::string(291, 0)));
}

TEST_F(UploadTest, NewSettingsReachTheDaemon)
{
    const std::string ended = "signal 6, sleep 1, sleep 1";
    const std::string begun = "smbu &, sleep 1, signal ";
    const struct {
        std::string old_mode;
        bool runs;
        std::string given;
        std::string expected;
    } CASES[] = {
        {"1", true, "", ""},
        {"1", true, "size=9", ""},
        {"1", true, "user=u", ended + ", " + begun + "8"},
        {"0", true, "pass=p", ended},
        {"3", true, "target=t", ended},
        {"1", false, "user=u", ""},
        {"1", true, "user=u, pass=p, target=t, mode=0, size=9", "signal 5, sleep 1, sleep 1"},
        {"1", true, "user=, mode=", "signal 5, sleep 1, sleep 1"},
        {"1", true, "user=u, mode=2",
         ended + ", account 1, " + begun + "8, recorder 7, recorder 7"},
        {"0", false, "mode=1", "account 1, " + begun + "7, signal 8"},
        {"", false, "mode=2", "account 1, " + begun + "7, signal 8, recorder 7, recorder 7"},
        {"1", false, "mode=2", "account 1, " + begun + "8, recorder 7, recorder 7"},
        {"1", true, "mode=2", "account 1, signal 7, recorder 7, recorder 7"},
        {"2", true, "mode=2", "account 1, signal 7"},
        {"2", true, "mode=0", "signal 5, sleep 5, recorder 7, recorder 7"},
        {"2", false, "mode=3", "recorder 7, recorder 7"},
        {"1", true, "mode=3", ""},
        {"12", false, "mode=4", begun + "8"},
        {"2", true, "mode=", ""},
    };
    for (const auto &[old_mode, runs, given, expected] : CASES) {
        store["cifs_mode"] = old_mode;
        run_daemon(runs);
        int sleeps = 0;
        on_sleep = [&] { // the daemon takes two seconds to end
            if (++sleeps == 2)
                run_daemon(false);
        };
        calls.clear();
        const Outcome set = observe([&, &texts = given] { return set_config(texts); });
        on_sleep = nullptr;
        EXPECT_EQ(set.result, 0);
        const std::string between = given.empty() || expected.empty() ? "" : ", ";
        EXPECT_EQ(acts(), std::string(given).append(between).append(expected))
            << "from mode " << old_mode;
        const std::string wait = "Wait smbu is terminated\n";
        const bool stops = runs && given.find_first_of("upt") == 0;
        EXPECT_EQ(set.out, stops ? wait + wait : "") << given;
    }
    EXPECT_THAT(bodies(SIGNALS), testing::Each(testing::SizeIs(4)));
    EXPECT_THAT(bodies(ACCOUNTS), testing::Each(testing::SizeIs(272)));
}

TEST_F(UploadTest, RefusalsOfTheStoreAndOfTheQueuesArePassedOver)
{
    refused = {"set cifs_user", "set cifs_mode"};
    const int queue = msgget(SIGNALS, IPC_CREAT | 0666);
    while (syscall(SYS_msgsnd, queue, "\1\0\0\0\0\0\0\0", 0, IPC_NOWAIT) == 0) {
    }
    const Outcome set =
        observe([] { return set_config("user=u, pass=p, target=t, mode=1, size=9"); });
    EXPECT_EQ(set.result, 0);
    EXPECT_EQ(set.out + set.err, "");
    EXPECT_EQ(acts(), "user=u, pass=p, target=t, mode=1, size=9, account 1, "
                      "smbu &, sleep 1, signal 7, signal 8");
}

TEST_F(UploadTest, ConfigurationIsReadAsFarAsItIsWanted)
{
    store = {{"cifs_user", "ann"}, {"cifs_target", "//nas/cam"}, {"cifs_mode", "2"}};
    write_file("/proc/mounts", "tmpfs /tmp tmpfs rw 0 0\n//nas/cam /mnt/cifs2 cifs rw 0 0\n");
    char user[8] = "";
    char target[4] = "";
    char mode[4] = "";
    char size[4] = "was";
    int mounted = -1;
    EXPECT_EQ(smbu_get_config(user, 8, target, 4, mode, 4, size, 4, &mounted), 0);
    EXPECT_THAT(calls, ElementsAre("get cifs_user 8", "get cifs_target 4", "get cifs_mode 4",
                                   "get cifs_size 4", "popen cat /proc/mounts | grep /mnt/cifs"));
    EXPECT_STREQ(user, "ann");
    EXPECT_STREQ(target, "//n");
    EXPECT_STREQ(mode, "2");
    EXPECT_STREQ(size, "was");
    EXPECT_EQ(mounted, 1);

    calls.clear();
    smbu_get_config(nullptr, 9, nullptr, 9, mode, 0, size, -1, nullptr);
    EXPECT_THAT(calls, IsEmpty());
    const auto is_mounted = [&] {
        mounted = -1;
        smbu_get_config(nullptr, 0, nullptr, 0, nullptr, 0, nullptr, 0, &mounted);
        return mounted;
    };
    write_file("/proc/mounts", "tmpfs /tmp tmpfs rw 0 0\n");
    EXPECT_EQ(is_mounted(), 0);
    popen_error = EMFILE;
    EXPECT_EQ(is_mounted(), 0);
}

TEST_F(UploadTest, RecoveryJobsAreEmptyFilesNamedAfterRecordings)
{
    umask(0);
    const std::string folder = "/mnt/sdcard/video/.smbu/";
    const auto add = [](const std::string &path) { return smbu_add_recovery_job(path.c_str()); };
    const auto exists = [](const std::string &path) { return access(path.c_str(), F_OK) == 0; };
    EXPECT_EQ(add("/mnt/sdcard/video/1/clip.mp4"), -1) << "without its folder";
    write_file(folder + "kept.rcy", "kept");
    EXPECT_EQ(add("/mnt/sdcard/video/1/clip.mp4"), 0);
    struct stat state {
    };
    EXPECT_EQ(stat((folder + "clip.rcy").c_str(), &state), 0);
    EXPECT_EQ(state.st_mode, S_IFREG | 0644);
    EXPECT_EQ(state.st_size, 0);
    EXPECT_EQ(add("/kept.mp4"), 0);
    EXPECT_EQ(read_file(folder + "kept.rcy"), "kept");
    EXPECT_EQ(add("/a.b/c.d.e"), 0);
    EXPECT_TRUE(exists(folder + "c.d.rcy"));
    EXPECT_FALSE(exists("/mnt/sdcard/video/.rcy"));
    EXPECT_EQ(add("/a.b/c"), 0);
    EXPECT_TRUE(exists("/mnt/sdcard/video/.rcy"));

    EXPECT_EQ(add(""), -1);
    EXPECT_EQ(add("clip.mp4"), -1);
    const std::string longest(127 - folder.size() - 4, 'n');
    EXPECT_EQ(add("/" + longest + ".mp4"), 0);
    EXPECT_TRUE(exists(folder + longest + ".rcy"));
    EXPECT_EQ(add("/" + longest + "n.mp4"), -1);
    EXPECT_EQ(add("/" + longest + "n.h"), -1) << "fits only until its end is replaced";
    EXPECT_FALSE(exists(folder + longest + "n.rc"));
}
