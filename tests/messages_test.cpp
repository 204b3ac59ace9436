// Daemon messages, as they lie on the real queue.

#include "cfg_set.h"
#include "doubles.h"

#include <cerrno>
#include <sys/msg.h>

using namespace doubles;
using testing::ElementsAre;
using testing::IsEmpty;

class MessagesTest : public LibraryTest
{
};

struct Sender {
    std::string name;
    std::function<int()> send;
    std::string message;
    std::string failing = "cfg_sendMsg";
};

static const std::vector<Sender> SENDERS = {
    {"cfg_setPrivacyEvent", [] { return cfg_setPrivacyEvent(0); }, "1 7", "cfg_setPrivacyEvent"},
    {"cfg_setPrivacyEvent", [] { return cfg_setPrivacyEvent(UINT32_MAX); }, "1 7 value=1",
     "cfg_setPrivacyEvent"},
    {"cfg_setPirEnable", [] { return cfg_setPirEnable(2); }, "2 2"},
    {"cfg_setPirEnable", [] { return cfg_setPirEnable(0); }, "2 3"},
    {"cfg_setPirPrivacyMode", [] { return cfg_setPirPrivacyMode(1); }, "2 4"},
    {"cfg_setPirPrivacyMode", [] { return cfg_setPirPrivacyMode(0); }, "2 5"},
    {"cfg_setVolumeDetectSensitivity", [] { return cfg_setVolumeDetectSensitivity(3); },
     "4 3 param=0"},
    {"cfg_setVolumeDetectSensitivity",
     [] { return cfg_setVolumeDetectSensitivity(UINT32_MAX - 1); }, "4 3 param=2"},
    {"cfg_setVolumeDetect", [] { return cfg_setVolumeDetect(1); }, "4 4"},
    {"cfg_setVolumeDetect", [] { return cfg_setVolumeDetect(0); }, "4 5"},
    {"cfg_setVolumeDetectPrivacyMode", [] { return cfg_setVolumeDetectPrivacyMode(1); }, "4 6"},
    {"cfg_setVolumeDetectPrivacyMode", [] { return cfg_setVolumeDetectPrivacyMode(0); }, "4 7"},
    {"cfg_setRec", [] { return cfg_setRec(5, nullptr, 300); }, "7 5"},
    {"cfg_setRec", [] { return cfg_setRec(1, "abc", 0); }, "7 1"},
    {"cfg_setRec", [] { return cfg_setRec(UINT32_MAX, "a\tbc", 3); }, "7 -1 param=a\tb"},
};

TEST_F(MessagesTest, EverySendersMessageArrivesByteForByte)
{
    write_file("/var/run/GMMdVideo.pid", "0");
    for (const Sender &sender : SENDERS) {
        const Outcome outcome = observe(sender.send);
        EXPECT_EQ(outcome.result, 0) << sender.message;
        EXPECT_EQ(outcome.out + outcome.err, "") << sender.message;
        EXPECT_THAT(posted(), ElementsAre(sender.message));
    }
}

TEST_F(MessagesTest, FullQueueIsReportedAtOnceAndTheMessageLost)
{
    write_file("/var/run/GMMdVideo.pid", "42");
    fill_queue();
    for (const Sender &sender : SENDERS) {
        const Outcome outcome = observe(sender.send);
        EXPECT_EQ(outcome.result, -1) << sender.message;
        EXPECT_EQ(outcome.out, "[cfg_sendMsg #] msgsnd fail\n[" + sender.name + " #] " +
                                   sender.failing + " fail\n");
    }
    EXPECT_THAT(posted(), testing::Each("99 0"));
    EXPECT_THAT(calls, IsEmpty()) << "nobody is signalled a change that was not posted";
}

TEST_F(MessagesTest, FirstPostMakesTheQueueForEveryone)
{
    msgctl(msgget(5678, 0), IPC_RMID, nullptr);
    EXPECT_EQ(cfg_setRec(1, nullptr, 0), 0);
    msqid_ds queue{};
    ASSERT_EQ(msgctl(msgget(5678, 0), IPC_STAT, &queue), 0);
    EXPECT_EQ(queue.msg_perm.mode & 0777, 0666);

    failing = {{"msgget", ENOSPC}, {"semget", ENOSPC}};
    const Outcome outcome = observe([] { return cfg_setRec(1, nullptr, 0); });
    EXPECT_EQ(outcome.result, -1);
    EXPECT_EQ(outcome.out, "[cfg_sendMsg #] msgget fail\n[cfg_setRec #] cfg_sendMsg fail\n");
}

TEST_F(MessagesTest, RecordingParametersEndAt256Bytes)
{
    const std::string bytes(257, 'p');
    EXPECT_EQ(cfg_setRec(1, bytes.data(), 256), 0);
    EXPECT_THAT(posted(), ElementsAre("7 1 param=" + bytes.substr(1)));
    const Outcome outcome = observe([&] { return cfg_setRec(1, bytes.data(), 257); });
    EXPECT_EQ(outcome.result, -1);
    EXPECT_EQ(outcome.out, "[cfg_setRec #] dwParamLen[257] > MSG_PARAM_LEN[256]\n");
    EXPECT_EQ(observe([&] { return cfg_setRec(1, bytes.data(), UINT32_MAX); }).result, -1);
    EXPECT_THAT(posted(), IsEmpty());
}
