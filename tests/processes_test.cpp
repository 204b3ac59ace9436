// Real processes, real signals and nothing intercepted. cfg_killProcess needs the
// kernel's own /proc and a PID namespace of its own, and is not called before both
// are seen.

#include "cfg_set.h"
#include "harness.h"
#include "platform/param_store.h"

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <sys/statvfs.h>
#include <sys/time.h>
#include <sys/wait.h>
#include <unistd.h>

using testing::HasSubstr;

static std::string link_target(const char *path)
{
    std::error_code none;
    return std::filesystem::read_symlink(path, none);
}

// Whether no process but this root's own can be seen or signalled from here.
static bool isolated()
{
    const char *host = std::getenv("HOST_PID_NAMESPACE");
    const std::string own = link_target("/proc/self/ns/pid");
    struct statvfs proc = {};
    return host && std::string(host).rfind("pid:[", 0) == 0 && own.rfind("pid:[", 0) == 0 &&
           own != host && link_target("/proc/self") == std::to_string(getpid()) &&
           read_file("/proc/1/comm") == "bwrap\n" && statvfs("/proc", &proc) == 0 &&
           (proc.f_flag & ST_RDONLY) != 0;
}

// A process of this name that waits for a signal.
static pid_t start(const std::string &name)
{
    const std::string path = "/tmp/" + name;
    EXPECT_EQ(symlink("/bin/sh", path.c_str()), 0);
    const pid_t child = fork();
    if (child == 0) {
        execl(path.c_str(), name.c_str(), "-c", "while :; do sleep 9; done", nullptr);
        _exit(127);
    }
    while (read_file("/proc/" + std::to_string(child) + "/cmdline").rfind(name, 0) != 0)
        usleep(1000);
    return child;
}

// From now on a signal each 5 ms (0: none), after which no system call is restarted.
static void storm(suseconds_t microseconds)
{
    struct sigaction action = {};
    action.sa_handler = [](int) {};
    sigaction(SIGALRM, &action, nullptr);
    const itimerval timer = {{0, microseconds}, {0, microseconds}};
    setitimer(ITIMER_REAL, &timer, nullptr);
}

// clang-format off
TEST(ProcessesTest, SignalsDoNotEndTheReadingOfWhatACommandPrints)
{
    setenv("PATH", "/tmp/bin:/sbin:/bin", 1);
    for (const auto &[tool, answer] : std::map<std::string, const char *>{
             {"board", "[ $1 = sn ] && echo B2 || echo 56ca"}, {"AudioCheck", "echo 1"}, {"param", "echo 7"}})
        write_script("/tmp/bin/" + tool, std::string("usleep 50000\n") + answer);
    write_file("/etc_ro/param.default", "");
    const auto stores_zero = [](const char *key, int (*restore)()) {
        char text[4] = "";
        param_set(key, "1");
        return restore() + param_get(key, text, sizeof text) == 0 && std::string(text) == "0";
    };
    char sn[32];
    storm(5000);
    const std::vector<std::pair<const char *, bool>> held = {
        {"cfg_getBoardInfo", cfg_getBoardInfo(BOARD_INFO_SN, sn, sizeof sn) == 0 && std::string(sn) == "B2"},
        {"cfg_get_hw_ver", cfg_get_hw_ver() == 0x56ca},
        {"cfg_is_slip_ring_model", cfg_is_slip_ring_model() == 1},
        {"is_nn_enable", is_nn_enable() == 7},
        {"is_sound_nn_enable", is_sound_nn_enable() == 7},
        {"alert_file_set_config", alert_file_set_config("/mnt/a.aac") == -1},
        {"greeting_file_set_config", greeting_file_set_config("/mnt/a.aac") == -1},
        {"alarm_audio_set_config", alarm_audio_set_config("/mnt/a.aac") == -1},
        {"cfg_restorePirEnable", stores_zero("alert_pir_enable", cfg_restorePirEnable)},
        {"cfg_restoreVolumeDetect", stores_zero("alert_audio_enable", cfg_restoreVolumeDetect)},
        {"cfg_restoreVideoOrientation", stores_zero("io_video_orientation", cfg_restoreVideoOrientation)}};
    storm(0);
    for (const auto &[call, well] : held)
        EXPECT_TRUE(well) << call;
}
// clang-format on

TEST(ProcessesTest, EveryOneButTheWifiThreadIsTerminated)
{
    ASSERT_TRUE(isolated()) << "not in a root with processes of its own: tests/in-root -p";
    setenv("PATH", "/tmp/bin:/sbin:/bin", 1);
    // The columns of the camera's ps, from the kernel's list.
    write_script("/tmp/bin/ps",
                 "usleep 50000; [ \"$1\" = -l ] && exec /bin/ps -o stat,user,pid,ppid,args\n"
                 "exec /bin/ps -o pid,user,vsz,stat,args");
    const pid_t other = start("other");
    const pid_t wifi = start("[RTW_CMD_THREAD]");
    storm(5000);
    const Outcome outcome = observe(cfg_killProcess);
    storm(0);
    EXPECT_EQ(outcome.result, 0);
    EXPECT_THAT(outcome.out,
                HasSubstr("[cfg_killProcess #] iPidRTW = " + std::to_string(wifi) + "\n"));
    EXPECT_THAT(outcome.err, HasSubstr("send SIGTERM to pid " + std::to_string(other) + "\n"));
    int status = 0;
    EXPECT_EQ(waitpid(other, &status, 0), other);
    EXPECT_EQ(WTERMSIG(status), SIGTERM);
    EXPECT_EQ(waitpid(wifi, &status, WNOHANG), 0) << "lives";
    kill(wifi, SIGKILL);
    waitpid(wifi, &status, 0);
}
