// Installed on PATH under the names of the firmware's tools. It logs its arguments
// and runs the script /etc/desk/NAME; without a script it prints nothing and
// succeeds. While the camera is traced, it also logs its end. Scripts add a line to
// the log with "recorder KIND TEXT".

#include "desk/log.h"

#include <cerrno>
#include <csignal>
#include <string>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

static int run_script(const std::string &script, char **words)
{
    if (access(script.c_str(), R_OK) != 0)
        return 0;
    const pid_t child = fork();
    if (child == 0) {
        prctl(PR_SET_PDEATHSIG, SIGTERM); // ends with the tool it replaces
        std::vector<const char *> arguments{"/bin/sh", script.c_str()};
        while (*words)
            arguments.push_back(*words++);
        arguments.push_back(nullptr);
        execv(arguments[0], const_cast<char *const *>(arguments.data()));
        _exit(127);
    }
    int status = 0;
    while (waitpid(child, &status, 0) < 0 && errno == EINTR) {
    }
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

int main(int argc, char **argv)
{
    const std::string path = argv[0];
    const std::string name = path.substr(path.rfind('/') + 1);
    if (name == "recorder" && argc == 3) {
        desk::log(argv[1], desk::escaped(argv[2]));
        return 0;
    }
    std::string line = desk::quoted(name);
    for (int i = 1; i < argc; i++)
        line += " " + desk::quoted(argv[i]);
    const double begin = desk::seconds();
    desk::log("run", line);
    const int result = run_script("/etc/desk/" + name, argv + 1);
    if (desk::traced())
        desk::log("end", line + desk::ended(result, begin));
    return result;
}
