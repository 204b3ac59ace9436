#include "network/link.h"

#include "settings/frame.h"

#include <sys/sysinfo.h>

using namespace cfg_set;

long cfg_set::sys_uptime()
{
    struct sysinfo info;
    return sysinfo(&info) == 0 ? info.uptime : 0;
}

int cfg_set::live_streaming()
{
    char state[5];
    return file_block("/proc/live_streaming", state, sizeof state) > 0 && state[0] == '1';
}

int cfg_stopWiFi(void)
{
    run(RELEASE_LEASE);
    run("killall wpa_supplicant");
    return 0;
}

int cfg_restart_peerconn(int delay_seconds)
{
    char command[128];
    format(command, sizeof command, "(sleep %d; killall -SIGUSR1 morvenix_watchdog;) &",
           delay_seconds);
    run(command);
    return 0;
}
