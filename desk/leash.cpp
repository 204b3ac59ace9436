// Separates a camera from this machine.
// leash -k DIGITS COMMAND...: executes COMMAND, which makes a camera root, without
//   the caller's keys and descriptors, except 0 to 2 and DIGITS.
// leash [-j PID:NAMESPACE] [-t] COMMAND...: runs COMMAND as the camera's root, with
//   -j in the camera that has process 1 PID and PID namespace NAMESPACE. COMMAND
//   cannot type into the terminal. It ends, with its process group, when the process
//   outside that started it ends; -t leaves both to COMMAND's own terminal.
// Linked statically and started from outside the camera. It reads nothing that the
// camera could have written until it has dropped its capabilities.

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <linux/capability.h>
#include <linux/keyctl.h>
#include <linux/nsfs.h>
#include <sched.h>
#include <string>
#include <sys/ioctl.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

static constexpr useconds_t TIME_TO_CLEAR_UP = 500000;

[[noreturn]] static void fail(const char *what)
{
    std::fprintf(stderr, "leash: %s: %s\n", what, std::strerror(errno));
    std::exit(1);
}

static void leave_the_callers(const char *kept)
{
    for (int descriptor = 3; descriptor < 10; descriptor++)
        if (!std::strchr(kept, '0' + descriptor))
            close(descriptor);
    if (close_range(10, ~0U, 0) != 0)
        fail("cannot close descriptors");
    // Without keys, or the right to use them, there are none to leave.
    if (syscall(SYS_keyctl, KEYCTL_JOIN_SESSION_KEYRING, nullptr) < 0 && errno != ENOSYS &&
        errno != EPERM)
        fail("cannot leave the session's keys");
}

static void enter(int space)
{
    if (setns(space, 0) != 0)
        fail("cannot join the camera");
}

// A camera has two user namespaces: the outer one owns the other namespaces; the
// inner one is that of its processes and owns none.
static void join(const char *camera)
{
    const std::string folder = "/proc/" + std::string(camera, std::strcspn(camera, ":")) + "/ns";
    const int spaces = open(folder.c_str(), O_RDONLY | O_DIRECTORY);
    const auto space = [spaces](const char *name) { return openat(spaces, name, O_RDONLY); };
    const int users = space("user");
    const int mounts = space("mnt");
    const int others[] = {space("ipc"), space("net"), space("uts"), space("pid")};
    const int owner = ioctl(mounts, NS_GET_USERNS);
    struct stat pids = {};
    struct stat own_users = {};
    struct stat owning_users = {};
    if (fstat(others[3], &pids) != 0 || fstat(users, &own_users) != 0 ||
        fstat(owner, &owning_users) != 0)
        fail("cannot join the camera");
    // Another process may have its number by now.
    if (std::to_string(pids.st_ino) != camera + std::strcspn(camera, ":") + 1) {
        errno = ESRCH;
        fail("cannot join the camera");
    }
    enter(owner);
    for (const int other : others)
        enter(other);
    enter(mounts);
    if (own_users.st_ino != owning_users.st_ino)
        enter(users);
    leave_the_callers("");
}

static void drop_capabilities()
{
    for (int capability = 0; prctl(PR_CAPBSET_READ, capability) >= 0; capability++)
        if (capability != CAP_DAC_OVERRIDE && prctl(PR_CAPBSET_READ, capability) == 1 &&
            prctl(PR_CAPBSET_DROP, capability) != 0)
            fail("cannot give up capabilities");
    __user_cap_header_struct header = {_LINUX_CAPABILITY_VERSION_3, 0};
    __user_cap_data_struct data[2] = {};
    data[0].effective = data[0].permitted = 1U << CAP_DAC_OVERRIDE;
    if (syscall(SYS_capset, &header, data) != 0 ||
        prctl(PR_CAP_AMBIENT, PR_CAP_AMBIENT_CLEAR_ALL, 0, 0, 0) != 0 ||
        prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) != 0)
        fail("cannot give up capabilities");
}

static int become(char **command)
{
    execvp(command[0], command);
    std::fprintf(stderr, "%s: %s\n", command[0], std::strerror(errno));
    return errno == ENOENT ? 127 : 126;
}

static int status_of(pid_t child)
{
    int status = 0;
    while (waitpid(child, &status, 0) < 0 && errno == EINTR) {
    }
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

static void end_together(int)
{
    std::signal(SIGTERM, SIG_IGN);
    kill(0, SIGTERM);
    usleep(TIME_TO_CLEAR_UP);
    kill(0, SIGKILL);
}

static int lead(char **command)
{
    setsid();
    std::signal(SIGTERM, end_together);
    prctl(PR_SET_PDEATHSIG, SIGTERM);
    const pid_t child = fork();
    if (child != 0)
        return status_of(child);
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    return become(command);
}

static int lead_on_terminal(char **command)
{
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    // A shell restores the foreground group that it found.
    setpgid(0, 0);
    std::signal(SIGTTOU, SIG_IGN);
    tcsetpgrp(STDIN_FILENO, getpid());
    std::signal(SIGTTOU, SIG_DFL);
    return become(command);
}

// The status of the leader. Its group ends with it if the leader was killed, which
// the camera can do.
static int watch(pid_t leader)
{
    siginfo_t info{};
    while (waitid(P_PID, static_cast<id_t>(leader), &info, WEXITED | WNOWAIT) != 0 &&
           errno == EINTR) {
    }
    if (info.si_code == CLD_KILLED || info.si_code == CLD_DUMPED)
        kill(-leader, SIGKILL);
    return status_of(leader);
}

int main(int argc, char **argv)
{
    const char *camera = nullptr;
    bool terminal = false;
    for (int option; (option = getopt(argc, argv, "+j:k:t")) != -1;) {
        if (option == 'k') {
            leave_the_callers(optarg);
            return become(argv + optind);
        }
        if (option == 'j')
            camera = optarg;
        else if (option == 't')
            terminal = true;
        else
            return 2;
    }
    if (optind == argc)
        return 2;
    if (camera)
        join(camera);
    drop_capabilities();
    const pid_t leader = camera ? fork() : 0;
    if (leader < 0)
        fail("cannot start a process");
    if (leader != 0)
        return watch(leader);
    return terminal ? lead_on_terminal(argv + optind) : lead(argv + optind);
}
