// The Wi-Fi link: what is run, in which order, and under which lock.

#include "network/link.h"

#include "cfg_set.h"
#include "doubles.h"

#include <sys/sysinfo.h>

using namespace cfg_set;
using namespace doubles;

static long uptime = 100; // negative: sysinfo fails

extern "C" int sysinfo(struct sysinfo *info)
{
    info->uptime = uptime;
    return uptime < 0 ? -1 : 0;
}

using LinkTest = LibraryTest;

// clang-format off
static std::string start_at(long seconds)
{
    uptime = seconds;
    return words(cfg_startWiFi(), sys_uptime());
}

static const Calls STOP = {"system /etc_ro/udhcpc.kill wlan0", "system killall wpa_supplicant"};
static const Calls DOWN = {"system /etc_ro/udhcpc.kill wlan0", "system wpa_cli -iwlan0 terminate > /dev/null 2>&1 "};
static const Calls RADIO = {"system echo 1 > /proc/wifi_reset; sleep 2; /etc_ro/init.d/S30wifi restart; sleep 1;"};
static const std::string PIDOF = "= pidof hostapd 2>&1 > /dev/null"; // its wait status
static const Calls ASKED = {"system pidof hostapd 2>&1 > /dev/null"};
static const Calls ACCESS_POINT = ASKED +
    Calls{"system ifconfig wlan1 192.168.213.1; hostapd /etc/hostapd.conf -B; udhcpd /etc/udhcpd.conf;"};
static const Calls NO_ACCESS_POINT = {
    "system killall hostapd udhcpd 2>&1 > /dev/null; ifconfig wlan1 0.0.0.0;ifconfig wlan1 down;"};

// The whole start, around what it does about the access point.
static Calls start(const Calls &access_point)
{
    return Calls{"system rm -rf /tmp/wps", "system killall wpa_supplicant", "sleep 1",
                 "system nice -n 0 wpa_supplicant -Dnl80211 -iwlan0 -c/etc/wpa_supplicant.conf -B"} + access_point +
           Calls{"system sleep 1", "system nice -n 0 udhcpc -iwlan0 & ",
                 "system nice -n 0 wpa_cli -i wlan0 -a /sbin/wpa_action.kx7 -B"};
}

static Calls locked(const Calls &acts) { return Calls{"lock def"} + acts + Calls{"unlock def"}; }

TEST_F(LinkTest, StartOffersTheAccessPointForTwentyMinutesFromBoot)
{
    const Calls station = start(NO_ACCESS_POINT), access_point = start(ACCESS_POINT), asked = start(ASKED);
    const std::string already = "! | cfg_startWiFi:# hostapd alreay started.";
    const auto row = [](const Given &given, long seconds, const Calls &made, const std::string &printed = "") {
        return Row{given, CALL_AS(cfg_startWiFi, start_at(seconds)), words(0, std::max(seconds, 0L)), made, printed,
                   {"apmode 32", "skype_loginname 128"}};
    };
    const auto mode = [&](const char *text) { return row({{"apmode", text}}, 100, station); };
    const auto ends = [&](const char *status) { return Given{{"apmode", "1"}, {PIDOF, status}}; };
    const auto runs = [&](const char *status) { return row(ends(status), 9, asked, already); };
    check({
        row({}, 100, station), mode(""), mode("0"), mode("10"), mode(" 1"),
        {{{"apmode", "1"}}, {"get apmode"}, CALL_AS(cfg_startWiFi, start_at(0)), "0 0", station},
        row(ends("256"), -1, access_point), row(ends("256"), 1200, access_point), row(ends("256"), 1201, station),
        row(ends("65792"), 9, access_point), // bits above 15 do not count
        runs("0"), runs("512"), runs("33024"), runs("1"), runs("-1"),
    });
}

TEST_F(LinkTest, ResetAndRestartLeaveAccessPointsAndLiveStreamsAlone)
{
    const std::string live = "/proc/live_streaming", no_lock = "! | error getting semaphore.";
    const auto is = [&](const std::string &text, int running) {
        return Row{{{live, text}}, CALL(live_streaming()), running};
    };
    const Call again = CALL(cfg_restartWiFi());
    const Calls restart = STOP + RADIO + Calls{"sleep 5"} + start(NO_ACCESS_POINT);
    check({
        {CALL(cfg_stopWiFi()), 0, STOP},
        {CALL(cfg_resetWiFi()), 0, locked(DOWN + RADIO), "", {"apmode 32"}},
        {{{"apmode", "10"}}, CALL(cfg_resetWiFi()), 0, locked(DOWN + RADIO)},
        {{{"apmode", "1"}}, CALL(cfg_resetWiFi()), 0, locked(DOWN)},
        {{}, {"semop"},             CALL(cfg_resetWiFi()), 0, Calls{"lock def"} + DOWN + RADIO, no_lock},
        {again, 0, locked(restart), "", {"apmode 32", "apmode 32", "skype_loginname 128"}},
        {{{"apmode", "1"}, {PIDOF, "256"}}, again, 0, locked(STOP + Calls{"sleep 5"} + start(ACCESS_POINT))},
        {{}, {"semop"},             again, 0, Calls{"lock def"} + restart, no_lock},
        {{{live, "1"}}, again, 0, locked({})},
        {{{live, "10 viewers\n"}}, again, 0, locked({})},
        {{{live, "0"}}, again, 0, locked(restart)},
        is("1", 1), is("01", 0), is(" 1", 0), is("2", 0), is("", 0),
        {CALL(live_streaming()), 0}, {{{live + "/", ""}}, CALL(live_streaming()), 0},
        {CALL(cfg_restart_peerconn(0)), 0,
            {"system (sleep 0; killall -SIGUSR1 morvenix_watchdog;) &"}},
        {CALL(cfg_restart_peerconn(INT32_MIN)), 0,
            {"system (sleep -2147483648; killall -SIGUSR1 morvenix_watchdog;) &"}},
    });
}
// clang-format on
