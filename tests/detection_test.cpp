// PIR and sound detection, and the alert channels. The messages themselves are
// messages_test's.

#include "cfg_set.h"
#include "doubles.h"

using namespace doubles;
using DetectionTest = LibraryTest;
static const std::string PID = "/var/run/GMMdVideo.pid";

// clang-format off

TEST_F(DetectionTest, EngineIsSignalledOnlyUnderAPositivePid)
{
    for (const auto &pid : Given{{"42", "42"}, {" 42 engine\n7", "42"}, {"1", "1"},
             {std::string(31, ' ') + "78", "7"}, {"4294967338", "2147483647"}})
        check({{{{PID, pid.first}}, CALL(cfg_setPirEnable(1)), 0, {"post 2 2", "kill " + pid.second + " 38"}}});
    for (const std::string pid : {"0", "-1", "-42", "-99999999999", "", "engine"})
        check({{{{PID, pid}}, CALL(cfg_setPirEnable(0)), 0, {"post 2 3"}}});
    check({{{{PID + "/", ""}}, CALL(cfg_setPirEnable(1)), 0, {"post 2 2"}}}); // can be opened, not read
    check({{CALL(cfg_setPirEnable(1)), 0, {"post 2 2"}, "notify motion tracking engine fail"}});
}

TEST_F(DetectionTest, BoardsThatCannotHaveDetectionRestoreItOff)
{
    const Calls board = {"popen board sn"};
    const Call pir = CALL(cfg_restorePirEnable()), sound = CALL(cfg_restoreVolumeDetect());
    const Call sensitivity = CALL(cfg_restoreVolumeDetectSensitivity());
    const std::string lost = "[cfg_sendMsg #] msgsnd fail\n";
    const auto on = [](const std::string &name) {
        return Given{{"$ board sn", name}, {"alert_pir_enable", "1"}, {"alert_audio_enable", "1x"}, {PID, "0"}};
    };
    const auto level = [](const char *stored) { return Given{{"alert_audio_sensitivity", stored}}; };
    for (const std::string name : {"B20\n", "B2 \n", "b2\n", " D1\n", "D1x\n", "\nB2\n", "B\n"})
        check({
            {on(name), pir, 0, board + Calls{"post 2 2"}, "", {"alert_pir_enable 256"}},
            {on(name), sound, 0, board + Calls{"post 4 4"}, "", {"alert_audio_enable 256"}},
        });
    for (const std::string name : {"B2\n", "D1", "D1\nB20\n"})
        check({
            {on(name), pir, 0, board + Calls{"set alert_pir_enable=0", "post 2 3"}},
            {on(name), {"set alert_audio_enable"}, sound, 0, board + Calls{"set alert_audio_enable=0", "post 4 5"}},
        });
    check({
        {on("B2\n"), {board[0]}, pir, 0, board + Calls{"post 2 2"},
            "[cfg_getBoardInfo #] pclose fail, errno[12][Cannot allocate memory]"},
        {on("9\n"), {"get alert_pir_enable"}, pir, -1, {}, "param_get fail"},
        {on("9\n"), {"get alert_audio_enable"}, sound, -1, {}, "param_get fail"},
        {on("9\n"), {"msgsnd"}, pir, -1, board + Calls{"post 2 2"},
            lost + "[cfg_setPirEnable #] cfg_sendMsg fail\ncfg_setPirEnable fail"},
        {on("9\n"), {"msgsnd"}, sound, -1, board + Calls{"post 4 4"},
            lost + "[cfg_setVolumeDetect #] cfg_sendMsg fail\ncfg_setVolumeDetect fail"},
        {level("4294967294"), sensitivity, 0, {"post 4 3 param=2"}, "", {"alert_audio_sensitivity 256"}},
        {level("4"), {"msgsnd"}, sensitivity, -1, {"post 4 3 param=1"},
            lost + "[cfg_setVolumeDetectSensitivity #] cfg_sendMsg fail\ncfg_setVolumeDetectSensitivity fail"},
        {sensitivity, -1, {}, "param_get fail"},
    });
}

TEST_F(DetectionTest, AlertChannelsChangeNothing)
{
    const std::string type = "alert_type 256", chat = "alert_chat_enable 256";
    const Given both = {{"alert_chat_enable", "1"}, {"alert_type", "2"}};
    const auto reads = [](const std::string &key, const Call &call) {
        check({{{{key, "0"}}, call, 0, {}, "", {key + " 256"}}, {call, -1, {}, "param_get fail", {key + " 256"}}});
    };
    reads("alert_motion_track_enable", CALL(cfg_restoreMotionTrackEnable()));
    reads("alert_app_enable", CALL(cfg_restoreAlertAppEnable()));
    reads("alert_video_call_enable", CALL(cfg_restoreAlertVideoCallEnable()));
    reads("alert_call_account", CALL(cfg_restoreAlertVideoCallAccount()));
    reads("alert_email_enable", CALL(cfg_restoreAlertEmailEnable()));
    reads("alert_email_account", CALL(cfg_restoreAlertEmailAccount()));
    reads("alert_chat_enable", CALL(cfg_setAlertType(0)));
    reads("alert_type", CALL(cfg_setAlertChatEnable(1)));
    reads("alert_chat_enable", CALL(cfg_restoreAlertChatEnable())); // 0 needs no type
    check({
        {CALL(cfg_setMotionTrackEnable(1) | cfg_setAlertAppEnable(1) | cfg_setAlertVideoCallEnable(1)), 0},
        {CALL(cfg_setAlertVideoCallAccount("a") | cfg_setAlertEmailEnable(1) | cfg_setAlertChatEnable(0)), 0},
        {CALL(cfg_setAlertEmailAccount(nullptr)), 0},
        // The type needs chat, and chat the type.
        {both, CALL(cfg_restoreAlertType()), 0, {}, "", {type, chat}},
        {{{"alert_chat_enable", "1"}}, CALL(cfg_restoreAlertType()), -1, {}, "param_get fail", {type}},
        {{{"alert_type", "2"}}, CALL(cfg_restoreAlertType()), -1, {},
            "[cfg_setAlertType #] param_get fail\ncfg_setAlertType fail"},
        {both, CALL(cfg_restoreAlertChatEnable()), 0, {}, "", {chat, type}},
        {{{"alert_chat_enable", "1"}}, CALL(cfg_restoreAlertChatEnable()), -1, {},
            "[cfg_setAlertChatEnable #] param_get fail\ncfg_setAlertChatEnable fail"},
    });
}
