// The Wi-Fi link: what is run, in which order, and under which lock.

#include "cfg_set.h"
#include "doubles.h"
#include "events/lock.h"
#include "network/link.h"

#include <cerrno>
#include <sched.h>
#include <sys/sem.h>
#include <sys/sysinfo.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace doubles;
using testing::Each;
using testing::ElementsAre;
using testing::ElementsAreArray;

static long uptime; // negative: sysinfo fails

extern "C" int sysinfo(struct sysinfo *info)
{
    info->uptime = uptime;
    return uptime < 0 ? -1 : 0;
}

using Lines = std::vector<std::string>;

constexpr key_t WIFI_LOCK = 3567;
static const char *const PIDOF = "pidof hostapd 2>&1 > /dev/null";
static const Lines STOP = {"system /etc_ro/udhcpc.kill wlan0", "system killall wpa_supplicant"};
static const Lines RESET = {
    "get apmode 32",
    "system echo 1 > /proc/wifi_reset; sleep 2; /etc_ro/init.d/S30wifi restart; sleep 1;"};
static const Lines STATION_ONLY = {"system killall hostapd udhcpd 2>&1 > /dev/null; ifconfig wlan1 "
                                   "0.0.0.0;ifconfig wlan1 down;"};
static const Lines ACCESS_POINT = {
    std::string("system ") + PIDOF,
    "system ifconfig wlan1 192.168.213.1; hostapd /etc/hostapd.conf -B; udhcpd /etc/udhcpd.conf;"};

static Lines operator+(Lines first, const Lines &second)
{
    first.insert(first.end(), second.begin(), second.end());
    return first;
}

// The whole start, around what it does about the access point.
static Lines start(const Lines &access_point)
{
    return Lines{"system rm -rf /tmp/wps", "system killall wpa_supplicant", "sleep 1",
                 "system nice -n 0 wpa_supplicant -Dnl80211 -iwlan0 -c/etc/wpa_supplicant.conf -B",
                 "get apmode 32"} +
           access_point +
           Lines{"system sleep 1", "get skype_loginname 128", "system nice -n 0 udhcpc -iwlan0 & ",
                 "system nice -n 0 wpa_cli -i wlan0 -a /sbin/wpa_action.kx7 -B"};
}

class LinkTest : public LibraryTest
{
  protected:
    void SetUp() override
    {
        LibraryTest::SetUp();
        uptime = 100;
    }
};

// Runs `code` and expects nothing but `expected` of it, and no words.
static void expect_run(int (*code)(), const Lines &expected)
{
    calls.clear();
    const Outcome outcome = observe(code);
    EXPECT_EQ(outcome.result, 0);
    EXPECT_EQ(outcome.out + outcome.err, "");
    EXPECT_THAT(calls, ElementsAreArray(expected));
}

static int lock_query(int what)
{
    return semctl(semget(WIFI_LOCK, 1, 0), 0, what);
}

TEST_F(LinkTest, StationStartsAndStopsWithTheseCommands)
{
    expect_run(cfg_startWiFi, start(STATION_ONLY));
    expect_run(cfg_stopWiFi, STOP);
    for (const std::string mode : {"0", "", "10", " 1", "1\n"}) {
        store["apmode"] = mode;
        expect_run(cfg_startWiFi, start(STATION_ONLY));
    }
    EXPECT_EQ(semget(WIFI_LOCK, 1, 0), -1) << "start and stop take no lock";
}

TEST_F(LinkTest, AccessPointLastsTwentyMinutesFromBoot)
{
    store["apmode"] = "1";
    statuses[PIDOF] = 1 << 8;
    for (const long early : {-1L, 0L, 1200L}) {
        uptime = early;
        EXPECT_EQ(sys_uptime(), std::max(early, 0L));
        expect_run(cfg_startWiFi, start(ACCESS_POINT));
    }
    uptime = 1201;
    expect_run(cfg_startWiFi, start(STATION_ONLY));
}

TEST_F(LinkTest, AccessPointThatRunsOrCannotBeAskedForIsLeftAlone)
{
    store["apmode"] = "1";
    for (const int status : {0, 2 << 8, 129 << 8, 1, -1}) {
        statuses[PIDOF] = status;
        calls.clear();
        const Outcome outcome = observe(cfg_startWiFi);
        EXPECT_EQ(outcome.result, 0);
        EXPECT_EQ(outcome.out, "");
        EXPECT_EQ(outcome.err, "cfg_startWiFi:# hostapd alreay started.\n");
        EXPECT_THAT(calls, ElementsAreArray(start({ACCESS_POINT[0]})));
    }
}

TEST_F(LinkTest, ResetLeavesTheLinkDownAndTheAccessPointsRadioAlone)
{
    const Lines down = {STOP[0], "system wpa_cli -iwlan0 terminate > /dev/null 2>&1 "};
    expect_run(cfg_resetWiFi, down + RESET);
    store["apmode"] = "1";
    expect_run(cfg_resetWiFi, down + Lines{RESET[0]});
}

TEST_F(LinkTest, RestartStopsResetsWaitsAndStarts)
{
    expect_run(cfg_restartWiFi, STOP + RESET + Lines{"sleep 5"} + start(STATION_ONLY));
    store["apmode"] = "1";
    statuses[PIDOF] = 1 << 8;
    expect_run(cfg_restartWiFi, STOP + Lines{RESET[0], "sleep 5"} + start(ACCESS_POINT));
}

TEST_F(LinkTest, ALiveStreamIsNotInterrupted)
{
    for (const std::string text : {"1", "1\n", "10", "1 viewer"}) {
        write_file("/proc/live_streaming", text);
        expect_run(cfg_restartWiFi, {});
    }
    EXPECT_EQ(lock_query(GETVAL), 1) << "the lock was taken and given back";
    for (const std::string text : {"", "0", " 1", "\n1", "01"}) {
        write_file("/proc/live_streaming", text);
        EXPECT_EQ(live_streaming(), 0) << text;
    }
    unlink("/proc/live_streaming");
    EXPECT_EQ(live_streaming(), 0);
}

TEST_F(LinkTest, ResetAndRestartHoldTheLockThroughout)
{
    static std::vector<int> values;
    before_call = [] { values.push_back(lock_query(GETVAL)); };
    for (int (*code)() : {cfg_resetWiFi, cfg_restartWiFi}) {
        values.clear();
        observe(code);
        EXPECT_THAT(values, testing::SizeIs(testing::Gt(2U)));
        EXPECT_THAT(values, Each(0)) << "taken";
        EXPECT_EQ(lock_query(GETVAL), 1) << "given back";
    }
}

TEST_F(LinkTest, AnotherProcessWaitsForTheLock)
{
    const int lock = sem_get(WIFI_LOCK);
    const pid_t other = fork();
    if (other == 0) {
        before_call = [] { write_file("/tmp/began", ""); };
        cfg_resetWiFi();
        _exit(0);
    }
    while (lock_query(GETNCNT) == 0)
        sched_yield();
    EXPECT_NE(access("/tmp/began", F_OK), 0);
    sem_put(lock);
    int status = -1;
    EXPECT_EQ(waitpid(other, &status, 0), other);
    EXPECT_EQ(status, 0);
    EXPECT_EQ(access("/tmp/began", F_OK), 0);
}

TEST_F(LinkTest, WithoutALockTheLinkIsResetAllTheSame)
{
    failing = {{"semop", EIDRM}};
    for (int (*code)() : {cfg_resetWiFi, cfg_restartWiFi}) {
        calls.clear();
        const Outcome outcome = observe(code);
        EXPECT_EQ(outcome.result, 0);
        EXPECT_EQ(outcome.err, "error getting semaphore.\n");
        EXPECT_THAT(calls, testing::Contains(STOP[0]));
    }
    EXPECT_EQ(lock_query(GETVAL), 1) << "nothing was given back that was not taken";
}

TEST_F(LinkTest, TheWatchdogIsToldInTheBackground)
{
    cfg_restart_peerconn(0);
    cfg_restart_peerconn(INT32_MIN);
    EXPECT_THAT(recorded("system"),
                ElementsAre("(sleep 0; killall -SIGUSR1 morvenix_watchdog;) &",
                            "(sleep -2147483648; killall -SIGUSR1 morvenix_watchdog;) &"));

    // For real: the call is over while the shell still sleeps.
    write_script("/tmp/bin/sleep", "until [ -e /tmp/awake ]; do /bin/sleep 0.01; done");
    run_commands = true;
    EXPECT_EQ(cfg_restart_peerconn(30), 0);
    const std::string log = "/var/log/camera.log";
    EXPECT_EQ(read_file(log), "");
    write_file("/tmp/awake", "");
    while (read_file(log).empty())
        sched_yield();
    EXPECT_THAT(read_file(log), testing::HasSubstr(" run killall -SIGUSR1 morvenix_watchdog\n"));
}
