// cfgctl's device controls, messages and the whole table of settings.

#include "harness.h"

#include <csignal>
#include <sys/msg.h>
#include <unistd.h>

using testing::EndsWith;
using testing::HasSubstr;

// Every stored setting with a restorer, in the order of the table.
static std::vector<std::string> restored()
{
    std::istringstream keys(
        "io_mic_enable io_speaker_volume io_speaker_enable io_ir_enable io_video_orientation "
        "io_backlight_compensation alert_pir_enable alert_audio_enable alert_audio_sensitivity "
        "alert_motion_track_enable alert_type alert_app_enable alert_chat_enable "
        "alert_video_call_enable alert_call_account alert_email_enable alert_email_account "
        "wled_mode rlamp_mode");
    return {std::istream_iterator<std::string>(keys), {}};
}

class CfgctlControlsTest : public CameraTest
{
  protected:
    void SetUp() override
    {
        CameraTest::SetUp();
        std::string defaults = "orb_privacy_mode_enable=0\n";
        for (const std::string &key : restored())
            defaults += key + "=1\n";
        write_file("/etc_ro/param.default", defaults);
        board_is("50");
    }

    static void board_is(const std::string &version)
    {
        write_file("/etc/desk/board", "[ $1 = hwver ] && echo " + version);
    }
};

TEST_F(CfgctlControlsTest, RestoreAllAppliesEveryFamilyThatTheBoardHas)
{
    const auto rows = [](const std::string &lamps) {
        std::string text;
        for (const std::string &key : restored())
            text += key + std::string(27 - key.size(), ' ') +
                    (key.find("lamp") + 1 || key.find("wled") + 1 ? lamps : "ok") + "\n";
        return text + "orb_privacy_mode_enable    nothing restores it\n";
    };
    const Outcome all = cfgctl({"restore", "--all"});
    EXPECT_EQ(all.result, 0);
    EXPECT_EQ(all.out, rows("ok"));
    EXPECT_EQ(read_file("/proc/rlamp_mode"), "1");
    EXPECT_EQ(cfgctl({"monitor", "--count", "3"}).out,
              "type 2 command 2 value 0: PIR detection on\n"
              "type 4 command 4 value 0: sound detection on\n"
              "type 4 command 3 value 0 param \"1\": sound sensitivity\n");

    board_is("280");
    const Outcome without_lamps = cfgctl({"restore", "--all"});
    EXPECT_EQ(without_lamps.result, 0) << "no failure";
    EXPECT_EQ(without_lamps.out, rows("not on this board")) << "nor hidden";
    const Outcome one = cfgctl({"restore", "--json", "wled_mode"});
    EXPECT_EQ(one.result, 1);
    EXPECT_THAT(one.out, HasSubstr("\"ok\": null"));

    write_file("/etc/desk/board", "exit 1");
    const Outcome no_answer = cfgctl({"restore", "--all"});
    EXPECT_EQ(no_answer.result, 4) << "a board that does not answer may have lamps";
    EXPECT_EQ(no_answer.out, rows("failed"));
    EXPECT_EQ(cfgctl({"restore", "orb_privacy_mode_enable"}).result, 1);
    const std::string shown = cfgctl({"show"}).out;
    EXPECT_EQ(std::count(shown.begin(), shown.end(), '\n'), 1 + 19 + 1);
}

TEST_F(CfgctlControlsTest, SettersTakeTheirOwnKindOfValue)
{
    EXPECT_EQ(cfgctl({"set", "alert_email_account", std::string(255, 'a')}).result, 0);
    EXPECT_EQ(cfgctl({"set", "alert_email_account", std::string(256, 'a')}).result, 2);
    EXPECT_EQ(cfgctl({"set", "io_ir_enable", "2"}).result, 0);
    EXPECT_EQ(read_file("/proc/ir_mode"), std::string("3\0", 2));
    EXPECT_EQ(cfgctl({"set", "io_ir_enable", "3"}).result, 2);
    EXPECT_EQ(cfgctl({"set", "rlamp_mode", "3"}).result, 0);
    EXPECT_EQ(read_file("/proc/rlamp_mode"), "3") << "stored before it is applied";
}

TEST_F(CfgctlControlsTest, PrivacyIsSwitchedOnceAndSaved)
{
    const Outcome off = cfgctl({"privacy"});
    EXPECT_EQ(off.out, "off\n");
    EXPECT_EQ(off.result, 1);
    EXPECT_EQ(cfgctl({"privacy", "on"}).result, 0);
    const std::string entering = commands();
    EXPECT_THAT(entering, testing::StartsWith("MotorCtrlApp privacy 1\n"));
    EXPECT_THAT(read_file("/flash/param"), HasSubstr("orb_privacy_mode_enable=1\n"));
    EXPECT_EQ(cfgctl({"set", "orb_privacy_mode_enable", "01"}).result, 0);
    EXPECT_EQ(commands(), entering) << "the same number changes nothing";
    EXPECT_EQ(cfgctl({"privacy"}).result, 0);

    EXPECT_EQ(cfgctl({"set", "--no-save", "orb_privacy_mode_enable", "0"}).result, 0);
    EXPECT_THAT(commands(), EndsWith("killall -SIGPROF peerconn\n"));
    EXPECT_THAT(read_file("/flash/param"), HasSubstr("orb_privacy_mode_enable=1\n"));
    EXPECT_EQ(cfgctl({"privacy", "maybe"}).result, 2);
    EXPECT_EQ(cfgctl({"set", "orb_privacy_mode_enable", "2147483648"}).result, 2);

    unlink("/var/run/param");
    unlink("/flash/param");
    write_file("/flash/param/in-the-way", ""); // no store any more
    EXPECT_EQ(cfgctl({"privacy", "on"}).result, 3);
}

TEST_F(CfgctlControlsTest, NightAndLampsSayWhetherTheDriverTookIt)
{
    EXPECT_EQ(cfgctl({"night"}).result, 1);
    EXPECT_EQ(cfgctl({"night", "on"}).result, 0);
    EXPECT_EQ(cfgctl({"night"}).out, "on\n");
    unlink("/proc/night_mode");
    EXPECT_EQ(cfgctl({"lamp", "wled", "2"}).result, 0);
    EXPECT_EQ(cfgctl({"lamp", "rlamp", "3"}).result, 4) << "1 is stored";
    for (const std::string mode : {"4", "on"})
        EXPECT_EQ(cfgctl({"lamp", "wled", mode}).result, 2);
    EXPECT_EQ(cfgctl({"lamp", "torch", "1"}).result, 2);
    board_is("10");
    EXPECT_EQ(cfgctl({"lamp", "rlamp", "1"}).result, 1);
    EXPECT_EQ(read_file("/proc/rlamp_mode"), "");
}

TEST_F(CfgctlControlsTest, ProbeTellsWhatEveryProbeAnswers)
{
    write_file("/proc/light_sensor", "118\n");
    const std::string probes = cfgctl({"probe"}).out;
    EXPECT_THAT(probes, HasSubstr("is_valid_track_event     1\n"));
    EXPECT_THAT(probes, HasSubstr("light_sensor             118\n"));
    EXPECT_THAT(cfgctl({"probe", "--json"}).out, HasSubstr("\"ir_mode\": 2"));
    EXPECT_EQ(commands(), "") << "probes only ask";
}

TEST_F(CfgctlControlsTest, MonitorPrintsWhatIsPosted)
{
    EXPECT_EQ(cfgctl({"rec", "7"}).result, 0);
    EXPECT_EQ(cfgctl({"rec", "4294967295", "a\"\x01\xc3"}).result, 0);
    EXPECT_EQ(cfgctl({"rec", "0", std::string(256, 'x')}).result, 0);
    EXPECT_EQ(cfgctl({"rec", "0", std::string(257, 'x')}).result, 2);
    const std::string stranger(sizeof(long) + 1000, 3);
    ASSERT_EQ(msgsnd(msgget(5678, 0), stranger.data(), 1000, 0), 0);
    const Outcome seen = cfgctl({"monitor", "--count", "4"});
    EXPECT_EQ(seen.result, 0);
    EXPECT_EQ(seen.out, "type 7 command 7 value 0: recording: privacy mode left\n"
                        "type 7 command 4294967295 value 0 param \"a\\x22\\x01\\xc3\": recording\n"
                        "type 7 command 0 value 0 param \"" +
                            std::string(256, 'x') + "\": recording\n");
    EXPECT_THAT(seen.err, HasSubstr("takes every message off the queue"));
    EXPECT_THAT(seen.err, EndsWith(", 1000 bytes\n"));

    cfgctl({"set", "--no-save", "alert_audio_sensitivity", "5"});
    EXPECT_EQ(cfgctl({"monitor", "--json", "--count", "1"}).out,
              "{\"type\":4,\"command\":3,\"value\":0,\"param\":\"2\","
              "\"meaning\":\"sound sensitivity\"}\n");
    EXPECT_EQ(cfgctl({"monitor", "--count", "0"}).result, 2);
}

TEST_F(CfgctlControlsTest, MonitorPrintsAtOnceAndGoesOnUntilInterrupted)
{
    write_script("/tmp/bin/ctl", "exec ${EMULATOR:-} /tests/cfgctl \"$@\"");
    const Outcome outcome =
        run_program({"/bin/sh", "-c",
                     "ctl monitor >/tmp/seen & ctl rec 1; for i in $(seq 200); do\n"
                     "  [ -s /tmp/seen ] && break; sleep 0.02\ndone; kill $!; wait $!"});
    EXPECT_EQ(outcome.result, 128 + SIGTERM);
    EXPECT_EQ(read_file("/tmp/seen"), "type 7 command 1 value 0: recording\n");
}
