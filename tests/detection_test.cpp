// PIR and sound detection, and the alert channels. The messages themselves are
// messages_test's.

#include "cfg_set.h"
#include "doubles.h"

using namespace doubles;
using testing::ElementsAre;
using testing::IsEmpty;

class DetectionTest : public LibraryTest
{
};

static const std::string PID_FILE = "/var/run/GMMdVideo.pid";

// Whom PIR detection signals when the pid file holds `text`.
static std::vector<std::string> signalled(const std::string &text)
{
    write_file(PID_FILE, text);
    calls.clear();
    const Outcome outcome = observe([] { return cfg_setPirEnable(1); });
    EXPECT_EQ(outcome.result, 0);
    EXPECT_EQ(outcome.out + outcome.err, "");
    return calls;
}

TEST_F(DetectionTest, EngineIsSignalledOnlyUnderAPositivePid)
{
    EXPECT_THAT(signalled("42"), ElementsAre("kill 42 38"));
    EXPECT_THAT(signalled(" 42 engine\n7"), ElementsAre("kill 42 38"));
    EXPECT_THAT(signalled(std::string(31, ' ') + "78"), ElementsAre("kill 7 38")) << "32 bytes";
    EXPECT_THAT(signalled("4294967338"), ElementsAre("kill 2147483647 38")) << "not 42";
    for (const std::string text : {"0", "-1", "-42", "-99999999999", "", "engine"})
        EXPECT_THAT(signalled(text), IsEmpty()) << text;
}

TEST_F(DetectionTest, EngineThatDoesNotRunIsReportedButNoFailure)
{
    const Outcome outcome = observe([] { return cfg_setPirEnable(0); });
    EXPECT_EQ(outcome.result, 0);
    EXPECT_EQ(outcome.out, "[cfg_setPirEnable #] notify motion tracking engine fail\n");
    EXPECT_THAT(posted(), ElementsAre("2 3"));

    write_file(PID_FILE + "/a", ""); // a folder can be opened, not read
    EXPECT_EQ(observe([] { return cfg_setPirEnable(0); }).out, "");
    EXPECT_THAT(calls, IsEmpty());
}

// What is posted when both detections, stored as on, are restored on a board
// whose tool is `board`.
static std::vector<std::string> restored_on(const std::string &board)
{
    write_file(PID_FILE, "");
    write_script("/tmp/bin/board", board);
    store = {{"alert_pir_enable", "1"}, {"alert_audio_enable", "1"}};
    EXPECT_EQ(observe(cfg_restorePirEnable).result, 0);
    EXPECT_EQ(observe(cfg_restoreVolumeDetect).result, 0);
    return posted();
}

TEST_F(DetectionTest, BoardsThatCannotHaveDetectionRestoreItOff)
{
    for (const std::string board :
         {"echo B20", "echo 'B2 '", "echo b2", "echo ' D1'", "echo; echo B2", "exit 1"}) {
        EXPECT_THAT(restored_on(board), ElementsAre("2 2", "4 4")) << board;
        EXPECT_EQ(store["alert_pir_enable"] + store["alert_audio_enable"], "11");
    }
    refused = {"set alert_audio_enable"}; // makes no difference
    for (const std::string board : {"echo B2", "printf D1", "echo B2; exit 1"}) {
        EXPECT_THAT(restored_on(board), ElementsAre("2 3", "4 5")) << board;
        EXPECT_EQ(store["alert_pir_enable"] + store["alert_audio_enable"], "01");
    }
    calls.clear();
    EXPECT_EQ(cfg_restorePirEnable(), 0);
    EXPECT_THAT(calls,
                ElementsAre("get alert_pir_enable 256", "popen board sn", "set alert_pir_enable=0"))
        << "and the commit is left to others";
}

TEST_F(DetectionTest, RestorersReadTheirKeys)
{
    store = {{"alert_type", "1"}, {"alert_chat_enable", "1"}};
    expect_keys_read(
        {{"PirEnable", "alert_pir_enable", cfg_restorePirEnable},
         {"VolumeDetect", "alert_audio_enable", cfg_restoreVolumeDetect},
         {"VolumeDetectSensitivity", "alert_audio_sensitivity", cfg_restoreVolumeDetectSensitivity},
         {"MotionTrackEnable", "alert_motion_track_enable", cfg_restoreMotionTrackEnable},
         {"AlertType", "alert_type", cfg_restoreAlertType},
         {"AlertAppEnable", "alert_app_enable", cfg_restoreAlertAppEnable},
         {"AlertChatEnable", "alert_chat_enable", cfg_restoreAlertChatEnable},
         {"AlertVideoCallEnable", "alert_video_call_enable", cfg_restoreAlertVideoCallEnable},
         {"AlertVideoCallAccount", "alert_call_account", cfg_restoreAlertVideoCallAccount},
         {"AlertEmailEnable", "alert_email_enable", cfg_restoreAlertEmailEnable},
         {"AlertEmailAccount", "alert_email_account", cfg_restoreAlertEmailAccount}});
}

TEST_F(DetectionTest, RestorersNameTheSetterThatFailed)
{
    store = {{"alert_pir_enable", "0"},
             {"alert_audio_enable", "0"},
             {"alert_type", "2"},
             {"alert_audio_sensitivity", "-1"}};
    EXPECT_EQ(cfg_restoreVolumeDetectSensitivity(), 0);
    EXPECT_THAT(posted(), ElementsAre("4 3 param=0"));
    fill_queue();
    const std::vector<Restorer> restorers = {
        {"PirEnable", "", cfg_restorePirEnable},
        {"VolumeDetect", "", cfg_restoreVolumeDetect},
        {"VolumeDetectSensitivity", "", cfg_restoreVolumeDetectSensitivity},
        {"AlertType", "", cfg_restoreAlertType}};
    for (const Restorer &restorer : restorers) {
        const Outcome outcome = observe(restorer.restore);
        EXPECT_EQ(outcome.result, -1);
        EXPECT_THAT(outcome.out, testing::EndsWith("[cfg_restore" + restorer.name + " #] cfg_set" +
                                                   restorer.name + " fail\n"));
    }
}

TEST_F(DetectionTest, AlertChannelsChangeNothing)
{
    EXPECT_EQ(cfg_setMotionTrackEnable(1) | cfg_setAlertAppEnable(1) |
                  cfg_setAlertVideoCallEnable(1) | cfg_setAlertVideoCallAccount("a") |
                  cfg_setAlertEmailEnable(1) | cfg_setAlertEmailAccount(nullptr) |
                  cfg_setAlertChatEnable(0),
              0);
    EXPECT_THAT(calls, IsEmpty());
    store = {{"alert_motion_track_enable", "1"}, {"alert_email_account", "a"}, {"alert_type", ""}};
    EXPECT_EQ(cfg_restoreMotionTrackEnable() | cfg_restoreAlertEmailAccount(), 0);
    EXPECT_EQ(cfg_setAlertChatEnable(1), 0) << "chat needs the type";
    store = {{"alert_chat_enable", "1"}};
    EXPECT_EQ(cfg_setAlertType(0), 0) << "and the type needs chat";
    const Outcome outcome = observe(cfg_restoreAlertChatEnable);
    EXPECT_EQ(outcome.result, -1);
    EXPECT_EQ(outcome.out, "[cfg_setAlertChatEnable #] param_get fail\n"
                           "[cfg_restoreAlertChatEnable #] cfg_setAlertChatEnable fail\n");
    EXPECT_EQ(recorded("get").size(), calls.size());
}
