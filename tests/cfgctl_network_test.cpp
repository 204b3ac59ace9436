// cfgctl's verbs wifi, link and time, as a program.

#include "harness.h"

#include <sched.h>

using testing::HasSubstr;

class CfgctlNetworkTest : public CameraTest
{
  protected:
    void SetUp() override
    {
        CameraTest::SetUp();
        write_file("/etc_ro/param.default", "wl_ssid=home\nwl_psk=0123456789\n"
                                            "time_zone=-300\ntime_dst=1\ntime_server=a.example\n");
        write_file("/etc_ro/time_zone", "Etc/UTC UTC0\n");
        write_script("/tmp/bin/sleep", "");
        for (const std::string script : {"/etc_ro/udhcpc.kill", "/etc_ro/init.d/S30wifi"})
            write_script(script, "exec nice ${0##*/} $*");
    }
};

static void store(const std::string &key, const std::string &value)
{
    ASSERT_EQ(run_program({"param", "set", key, value}).result, 0);
}

TEST_F(CfgctlNetworkTest, WifiConfigWritesTheFileAndListsItsNetworks)
{
    store("wl1_ssid", "guest");
    store("wl1_psk", "");
    store("wl2_ssid", "typo");
    store("wl2_psk", "key");
    store("wl3_ssid", "a\"#\nb");
    store("wl3_psk", "");
    const Outcome config = cfgctl({"wifi", "config"});
    EXPECT_EQ(config.result, 0);
    EXPECT_EQ(config.out, "home\nguest\n");
    EXPECT_THAT(config.err, HasSubstr("cfgctl: wl2_ssid: left out"));
    EXPECT_THAT(config.err, HasSubstr("cfgctl: wl3_ssid: left out"));
    EXPECT_THAT(read_file("/etc/wpa_supplicant.conf"), HasSubstr("\twep_key0=0123456789\n"));
    EXPECT_EQ(cfgctl({"wifi", "status"}).out, "wlan          0\n"
                                              "access_point  0\n"
                                              "network       home\n"
                                              "network       guest\n");
    EXPECT_THAT(cfgctl({"wifi", "config", "--json"}).out, HasSubstr("\"guest\"\n  ]"));
    EXPECT_THAT(cfgctl({"wifi", "status", "--json"}).out, HasSubstr("\"access_point\": false"));

    write_file("/tmp/removed", "");
    ASSERT_EQ(rename("/etc/wpa_supplicant.conf", "/tmp/removed"), 0);
    write_file("/etc/wpa_supplicant.conf/in-the-way", "");
    EXPECT_EQ(cfgctl({"wifi", "config"}).result, 4);
}

TEST_F(CfgctlNetworkTest, WifiConfigRefusesWhatTheSupplicantWould)
{
    const std::vector<std::pair<std::string, std::string>> unreadable = {
        {std::string(33, 's'), "passphrase"},
        {"home", "pass\tphrase"},
        {"home", std::string(64, 'x')},
        {"a\"#b", ""}};
    for (const auto &[ssid, key] : unreadable) {
        store("wl3_ssid", ssid);
        store("wl3_psk", key);
        const Outcome config = cfgctl({"wifi", "config"});
        EXPECT_EQ(config.result, 4) << ssid;
        EXPECT_THAT(config.err, HasSubstr("cfgctl: wl3_ssid: "));
    }
    EXPECT_EQ(read_file("/etc/wpa_supplicant.conf"), "");
}

TEST_F(CfgctlNetworkTest, WifiControlsTheLink)
{
    EXPECT_EQ(cfgctl({"wifi", "stop"}).result, 0);
    EXPECT_EQ(cfgctl({"wifi", "reset"}).result, 0);
    EXPECT_EQ(commands(), "nice udhcpc.kill wlan0\nkillall wpa_supplicant\n"
                          "nice udhcpc.kill wlan0\nwpa_cli -iwlan0 terminate\n"
                          "nice S30wifi restart\n");
    EXPECT_EQ(read_file("/proc/wifi_reset"), "1\n");
    EXPECT_EQ(cfgctl({"wifi", "start"}).result, 0);
    EXPECT_THAT(commands(), HasSubstr("nice -n 0 wpa_supplicant -Dnl80211 -iwlan0"));
    while (commands().find("nice -n 0 udhcpc") == std::string::npos)
        sched_yield(); // in the background
    const std::string before = commands();
    write_file("/proc/live_streaming", "1");
    EXPECT_EQ(cfgctl({"wifi", "restart"}).result, 0);
    EXPECT_EQ(cfgctl({"wifi", "up"}).result, 2);
    EXPECT_EQ(commands(), before);
}

TEST_F(CfgctlNetworkTest, LinkSaysWhatIsUpAndFailsForOneThatIsNot)
{
    EXPECT_EQ(cfgctl({"link"}).out, "eth   0\nwlan  0\n");
    EXPECT_EQ(cfgctl({"link"}).result, 0);
    const Outcome wlan = cfgctl({"link", "wlan", "--json"});
    EXPECT_EQ(wlan.out, "{\n  \"wlan\": false\n}\n");
    EXPECT_EQ(wlan.result, 1);
    EXPECT_EQ(cfgctl({"link", "lo"}).result, 2);
}

TEST_F(CfgctlNetworkTest, TimeZoneIsTheStoredOneOrTheGivenOffset)
{
    EXPECT_EQ(cfgctl({"time", "zone"}).out, "GMT+0500DST,M4.1.0/2,M10.5.0/2\n");
    EXPECT_EQ(cfgctl({"time", "zone", "-330", "0"}).out, "GMT+0530\n");
    store("time_zone_str", "Etc/UTC");
    EXPECT_EQ(cfgctl({"time", "zone", "60", "0", "--json"}).out,
              "{\n  \"zone\": \"Etc/UTC\",\n  \"tz\": \"UTC0\"\n}\n");

    write_file("/tmp/TZ", "kept");
    for (const auto &[offset, dst] : std::vector<std::pair<std::string, std::string>>{
             {"1441", "0"}, {"-1441", "0"}, {"1h", "0"}, {"", "0"}, {"60", "2"}, {"60", "-1"}})
        EXPECT_EQ(cfgctl({"time", "zone", offset, dst}).result, 2) << offset << " " << dst;
    EXPECT_EQ(cfgctl({"time", "zone", "60"}).result, 2);
    store("time_zone_str", "x; killall ntpd");
    EXPECT_EQ(cfgctl({"time", "zone"}).result, 4);
    EXPECT_EQ(commands(), "");
    EXPECT_EQ(read_file("/tmp/TZ"), "kept");
}

TEST_F(CfgctlNetworkTest, TimeSyncRefusesServersThatDoNotFitItsCommand)
{
    EXPECT_EQ(cfgctl({"time", "sync", "on"}).result, 0);
    EXPECT_EQ(cfgctl({"time", "sync", "off"}).result, 0);
    EXPECT_EQ(commands(), "killall ntpd\nntpd -p a.example\nkillall ntpd\n");
    for (const std::string state : {"", "1"})
        EXPECT_EQ(cfgctl({"time", "sync", state}).result, 2);
    for (const std::string &server : {std::string(235, 's'), std::string("$(reboot)")}) {
        store("time_server1", server);
        EXPECT_EQ(cfgctl({"time", "sync", "on"}).result, 4) << server;
    }
    EXPECT_EQ(commands(), "killall ntpd\nntpd -p a.example\nkillall ntpd\n");
    store("time_server1", std::string(234, 's'));
    EXPECT_EQ(cfgctl({"time", "sync", "on"}).result, 0);
    EXPECT_THAT(commands(), testing::EndsWith("s\n"));
}
