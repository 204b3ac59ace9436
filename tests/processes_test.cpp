// cfg_killProcess with real processes, real signals and nothing intercepted.
// It needs the kernel's own /proc and a PID namespace of its own, and calls
// nothing before it has seen that it has both.

#include "cfg_set.h"
#include "harness.h"

#include <csignal>
#include <cstdlib>
#include <set>
#include <sys/stat.h>
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

class ProcessesTest : public testing::Test
{
  protected:
    void SetUp() override
    {
        ASSERT_TRUE(isolated()) << "not in a root with processes of its own: tests/in-root -p";
        setenv("PATH", "/tmp/bin:/sbin:/bin", 1);
        // The columns of the camera's ps, from the kernel's list.
        write_script("/tmp/bin/ps", "[ \"$1\" = -l ] && exec /bin/ps -o stat,user,pid,ppid,args\n"
                                    "exec /bin/ps -o pid,user,vsz,stat,args");
    }
};

// A child that does nothing, with `on_sigterm` in place before it starts.
static pid_t start_child(void (*on_sigterm)(int))
{
    const auto before = std::signal(SIGTERM, on_sigterm);
    const pid_t child = fork();
    if (child == 0)
        while (true)
            pause();
    std::signal(SIGTERM, before);
    return child;
}

// A process that no one here is the parent of. The pipe ends with it.
static pid_t start_orphan(int ends[2])
{
    EXPECT_EQ(pipe(ends), 0);
    const pid_t middle = fork();
    if (middle == 0) {
        setsid();
        const pid_t orphan = start_child(SIG_DFL);
        _exit(write(ends[1], &orphan, sizeof orphan) == sizeof orphan ? 0 : 1);
    }
    waitpid(middle, nullptr, 0);
    close(ends[1]);
    pid_t orphan = 0;
    EXPECT_EQ(read(ends[0], &orphan, sizeof orphan), static_cast<ssize_t>(sizeof orphan));
    return orphan;
}

// A process that ps shows as the Wi-Fi driver's command thread.
static pid_t start_wifi_thread()
{
    EXPECT_EQ(symlink("/bin/sh", "/tmp/[RTW_CMD_THREAD]"), 0);
    EXPECT_EQ(mkfifo("/tmp/never", 0600), 0);
    int ends[2];
    EXPECT_EQ(pipe(ends), 0);
    const pid_t child = fork();
    if (child == 0) {
        dup2(ends[1], STDOUT_FILENO);
        execl("/tmp/[RTW_CMD_THREAD]", "[RTW_CMD_THREAD]", "-c",
              "echo x; exec >&-; read -r x < /tmp/never", nullptr);
        _exit(127);
    }
    close(ends[1]);
    char started = 0;
    EXPECT_EQ(read(ends[0], &started, 1), 1);
    close(ends[0]);
    return child;
}

static std::set<pid_t> announced(const std::string &text)
{
    constexpr char WORDS[] = "send SIGTERM to pid ";
    std::set<pid_t> pids;
    for (size_t at = text.find(WORDS); at != std::string::npos; at = text.find(WORDS, at + 1))
        pids.insert(std::stoi(text.substr(at + sizeof WORDS - 1)));
    return pids;
}

TEST_F(ProcessesTest, EveryOneButThreeIsTerminated)
{
    const pid_t plain = start_child(SIG_DFL);
    const pid_t tidy = start_child([](int) { _exit(42); });
    const pid_t stubborn = start_child(SIG_IGN);
    const pid_t wifi = start_wifi_thread();
    int orphan_lives[2];
    const pid_t orphan = start_orphan(orphan_lives);

    const Outcome outcome = observe(cfg_killProcess);
    EXPECT_EQ(outcome.result, 0);
    EXPECT_THAT(outcome.out, HasSubstr("[cfg_killProcess #] iPidRTW = " + std::to_string(wifi)));
    EXPECT_THAT(read_file("/var/log/camera.log"), HasSubstr("run killall watchdog\n"));
    EXPECT_THAT(read_file("/var/log/camera.log"), HasSubstr("run disable_watchdog\n"));

    std::set<pid_t> signalled = announced(outcome.err);
    for (const pid_t pid : {plain, tidy, stubborn, orphan})
        EXPECT_EQ(signalled.erase(pid), 1U);
    for (const pid_t pid : {1, getpid(), wifi})
        EXPECT_EQ(signalled.count(pid), 0U);
    EXPECT_FALSE(signalled.empty()) << "the list's own tools are in the list";

    int status = 0;
    EXPECT_EQ(waitpid(plain, &status, 0), plain);
    EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGTERM);
    EXPECT_EQ(waitpid(tidy, &status, 0), tidy);
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 42);
    char nothing;
    EXPECT_EQ(read(orphan_lives[0], &nothing, 1), 0) << "its end closed the pipe";
    for (const pid_t pid : {stubborn, wifi}) {
        EXPECT_EQ(waitpid(pid, &status, WNOHANG), 0) << "lives";
        kill(pid, SIGKILL);
        waitpid(pid, &status, 0);
    }
}
