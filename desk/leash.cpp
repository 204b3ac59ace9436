// leash COMMAND...: how a command joins a running camera. Gives up what the
// camera's root may not do, has no terminal to type into, and ends with the
// process outside that started it, its process group with it.
// leash -t COMMAND...: the same on a terminal of its own, whose end does that.

#include <cerrno>
#include <csignal>
#include <cstring>
#include <linux/capability.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

static void end_together(int)
{
    kill(0, SIGKILL);
}

static int become(char **command)
{
    execvp(command[0], command);
    return errno == ENOENT ? 127 : 126;
}

int main(int argc, char **argv)
{
    for (int capability = 0; prctl(PR_CAPBSET_READ, capability) >= 0; capability++)
        if (capability != CAP_DAC_OVERRIDE)
            prctl(PR_CAPBSET_DROP, capability);
    prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0);
    if (argc > 2 && std::strcmp(argv[1], "-t") == 0) {
        // A shell goes back to the group that it found in front.
        setpgid(0, 0);
        std::signal(SIGTTOU, SIG_IGN);
        tcsetpgrp(STDIN_FILENO, getpid());
        std::signal(SIGTTOU, SIG_DFL);
        return become(argv + 2);
    }

    setsid();
    std::signal(SIGTERM, end_together);
    prctl(PR_SET_PDEATHSIG, SIGTERM);
    const pid_t child = fork();
    if (child == 0)
        return become(argv + 1);
    int status = 0;
    while (waitpid(child, &status, 0) < 0 && errno == EINTR) {
    }
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}
