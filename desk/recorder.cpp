// Stands on PATH under the name of every tool that the firmware runs: records
// its argument list in the camera's log, one line a call, then behaves as the
// script /etc/desk/NAME says. Without a script it prints nothing and succeeds.

#include "desk/log.h"

#include <string>
#include <unistd.h>
#include <vector>

int main(int argc, char **argv)
{
    const std::string path = argv[0];
    const std::string name = path.substr(path.rfind('/') + 1);
    std::string line = desk::quoted(name);
    for (int i = 1; i < argc; i++)
        line += " " + desk::quoted(argv[i]);
    desk::log("run", line);

    std::string script = "/etc/desk/" + name;
    if (access(script.c_str(), R_OK) != 0)
        return 0;
    char shell[] = "/bin/sh";
    std::vector<char *> arguments{shell, script.data()};
    arguments.insert(arguments.end(), argv + 1, argv + argc + 1); // with the closing null
    execv(shell, arguments.data());
    return 127;
}
