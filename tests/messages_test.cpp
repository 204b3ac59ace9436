// Daemon messages, and what happens when they cannot be posted.

#include "cfg_set.h"
#include "doubles.h"

using namespace doubles;
using MessagesTest = LibraryTest;

// clang-format off

TEST_F(MessagesTest, EverySendersMessageOrItsReportOfTheLoss)
{
    const std::string bytes(257, 'p'), event = "cfg_setPrivacyEvent";
    const auto engine = [](const std::string &pid) { return Given{{"/var/run/GMMdVideo.pid", pid}}; };
    const std::vector<Row> senders = {
        {CALL(cfg_setPrivacyEvent(0)), 0, {"post 1 7"}},
        {CALL(cfg_setPrivacyEvent(UINT32_MAX)), 0, {"post 1 7 value=1"}},
        {engine("0"), CALL(cfg_setPirEnable(2)), 0, {"post 2 2"}},
        {engine("0"), CALL(cfg_setPirEnable(0)), 0, {"post 2 3"}},
        {CALL(cfg_setPirPrivacyMode(2)), 0, {"post 2 4"}},
        {CALL(cfg_setPirPrivacyMode(0)), 0, {"post 2 5"}},
        {CALL(cfg_setVolumeDetectSensitivity(3)), 0, {"post 4 3 param=0"}},
        {CALL(cfg_setVolumeDetectSensitivity(4)), 0, {"post 4 3 param=1"}},
        {CALL(cfg_setVolumeDetectSensitivity(UINT32_MAX - 1)), 0, {"post 4 3 param=2"}},
        {CALL(cfg_setVolumeDetect(2)), 0, {"post 4 4"}},
        {CALL(cfg_setVolumeDetect(0)), 0, {"post 4 5"}},
        {CALL(cfg_setVolumeDetectPrivacyMode(2)), 0, {"post 4 6"}},
        {CALL(cfg_setVolumeDetectPrivacyMode(0)), 0, {"post 4 7"}},
        {CALL(cfg_setRec(5, nullptr, 300)), 0, {"post 7 5"}},
        {CALL(cfg_setRec(1, "abc", 0)), 0, {"post 7 1"}},
        {CALL(cfg_setRec(UINT32_MAX, "a\tbc", 3)), 0, {"post 7 -1 param=a\tb"}},
        {CALL(cfg_setRec(1, bytes.data(), 256)), 0, {"post 7 1 param=" + bytes.substr(1)}},
    };
    check(senders);
    for (const Row &sender : senders) { // nobody is signalled a change that was not posted
        const std::string fail = (sender.call.text.rfind(event, 0) == 0 ? event : "cfg_sendMsg") + " fail";
        check({{engine("42"), {"msgsnd"}, sender.call, -1, sender.calls, "[cfg_sendMsg #] msgsnd fail\n" + fail},
               {engine("42"), {"msgget"}, sender.call, -1, {}, "[cfg_sendMsg #] msgget fail\n" + fail}});
    }
    for (const uint32_t length : {257U, UINT32_MAX})
        check({{CALL(cfg_setRec(1, "", length)), -1, {}, "dwParamLen[" + std::to_string(length) + "] > MSG_PARAM_LEN[256]"}});
}
