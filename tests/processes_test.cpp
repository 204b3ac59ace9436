// cfg_killProcess with real processes, real signals and nothing intercepted.
// It needs the kernel's own /proc and a PID namespace of its own, and calls
// nothing before it has seen that it has both.

#include "cfg_set.h"
#include "harness.h"

#include <csignal>
#include <cstdlib>
#include <sys/statvfs.h>
#include <sys/wait.h>
#include <unistd.h>

using testing::HasSubstr;

static std::string link_target(const char *path)
{
    char target[64] = "";
    const ssize_t length = readlink(path, target, sizeof target - 1);
    return length > 0 ? target : "";
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

TEST(ProcessesTest, EveryOneButTheWifiThreadIsTerminated)
{
    ASSERT_TRUE(isolated()) << "not in a root with processes of its own: tests/in-root -p";
    setenv("PATH", "/tmp/bin:/sbin:/bin", 1);
    // The columns of the camera's ps, from the kernel's list.
    write_script("/tmp/bin/ps", "[ \"$1\" = -l ] && exec /bin/ps -o stat,user,pid,ppid,args\n"
                                "exec /bin/ps -o pid,user,vsz,stat,args");
    const pid_t other = start("other");
    const pid_t wifi = start("[RTW_CMD_THREAD]");
    const Outcome outcome = observe(cfg_killProcess);
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
