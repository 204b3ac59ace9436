#include "network/link.h"

#include "events/lock.h"
#include "settings/stored.h"

#include <stdlib.h>
#include <string.h>
#include <unistd.h>

using namespace cfg_set;

constexpr key_t WIFI_SEM_KEY = 0xDEF;
constexpr long ACCESS_POINT_SECONDS = 1200; // of uptime, while the access point is offered
constexpr unsigned SUPPLICANT_EXIT_S = 1;
constexpr unsigned RADIO_SETTLE_S = 5;
constexpr int NOT_RUNNING = 1; // pidof's exit status

static bool access_point_mode()
{
    char mode[32] = "";
    param_get("apmode", mode, sizeof mode);
    return strcmp(mode, "1") == 0;
}

static void start_access_point(const char *function, int line)
{
    const int status = system("pidof hostapd 2>&1 > /dev/null");
    if (WEXITSTATUS(status) != NOT_RUNNING) {
        fprintf(stderr, "%s:%d hostapd alreay started.\n", function, line);
        return;
    }
    run("ifconfig wlan1 192.168.213.1; hostapd /etc/hostapd.conf -B; udhcpd /etc/udhcpd.conf;");
}

// Resets the radio, unless it serves as an access point.
static void reset_radio()
{
    if (!access_point_mode())
        run("echo 1 > /proc/wifi_reset; sleep 2; /etc_ro/init.d/S30wifi restart; sleep 1;");
}

int cfg_startWiFi(void)
{
    run("rm -rf /tmp/wps");
    run("killall wpa_supplicant");
    sleep(SUPPLICANT_EXIT_S);
    run("nice -n 0 wpa_supplicant -Dnl80211 -iwlan0 -c/etc/wpa_supplicant.conf -B");
    if (access_point_mode() && sys_uptime() <= ACCESS_POINT_SECONDS)
        start_access_point(HERE);
    else
        run("killall hostapd udhcpd 2>&1 > /dev/null; ifconfig wlan1 0.0.0.0;ifconfig wlan1 "
            "down;");
    run("sleep 1");
    char login[128]; // read and not used
    param_get("skype_loginname", login, sizeof login);
    run("nice -n 0 udhcpc -iwlan0 & ");
    run("nice -n 0 wpa_cli -i wlan0 -a /sbin/wpa_action.kx7 -B");
    return 0;
}

int cfg_resetWiFi(void)
{
    const int lock = sem_get(WIFI_SEM_KEY);
    run(RELEASE_LEASE);
    run("wpa_cli -iwlan0 terminate > /dev/null 2>&1 ");
    reset_radio();
    sem_put(lock);
    return 0;
}

int cfg_restartWiFi(void)
{
    const int lock = sem_get(WIFI_SEM_KEY);
    if (!live_streaming()) {
        cfg_stopWiFi();
        reset_radio();
        sleep(RADIO_SETTLE_S);
        cfg_startWiFi();
    }
    sem_put(lock);
    return 0;
}
