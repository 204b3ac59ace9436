#include "settings/stored.h"

#include <string.h>

using namespace cfg_set;

constexpr size_t COMMAND_SIZE = 256;

// Appends the server stored under `key` to the command line of `length` characters,
// cut to fit. Returns the length that the whole line needs.
static size_t add_server(const char *key, char *command, size_t length)
{
    char server[VALUE_SIZE] = "";
    if (param_get(key, server, sizeof server) != 0 || !*server || !harmless(server, SERVER_WORD))
        return length;
    if (length < COMMAND_SIZE)
        format(command + length, COMMAND_SIZE - length, " -p %s", server);
    return length + strlen(" -p ") + strlen(server);
}

int cfg_setTimeSync(int enable)
{
    run("killall ntpd");
    if (enable == 0)
        return 0;
    char command[COMMAND_SIZE] = "ntpd";
    size_t length = strlen(command);
    length = add_server("time_server", command, length);
    length = add_server("time_server1", command, length);
    if (length >= COMMAND_SIZE)
        return 0;
    printf("%s  %d\n\n", HERE);
    printf("Do ntpd: %s\n", command);
    run(command);
    return 0;
}

int cfg_restoreTimeSync(void)
{
    return result_of("cfg_setTimeSync", cfg_setTimeSync(1), HERE);
}
