// Privacy mode: what happens, in which order, under which lock.

#include "cfg_set.h"
#include "doubles.h"
#include "events/lock.h"

#include <cerrno>
#include <sched.h>
#include <sys/sem.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace doubles;
using testing::ElementsAre;
using testing::HasSubstr;

constexpr key_t LOCK = 0xDEF1;
static const std::string KEY = "orb_privacy_mode_enable";
static const std::string INFRARED = "/proc/ir_mode";

class PrivacyTest : public LibraryTest
{
  protected:
    void SetUp() override
    {
        LibraryTest::SetUp();
        write_file(INFRARED, "");
        write_script("/tmp/bin/board", "echo 50");
        store = {{KEY, "0"}, {"io_ir_enable", "1"}, {"wled_mode", "2"}, {"rlamp_mode", "1"}};
        // Puts messages and infrared changes between the calls that they precede.
        before_call = [] { note_effects(); };
    }

    static void note_effects()
    {
        const std::string infrared = read_file(INFRARED).substr(0, 1);
        if (!infrared.empty()) {
            calls.push_back("infrared " + infrared);
            write_file(INFRARED, "");
        }
        for (const std::string &message : posted())
            calls.push_back("post " + message);
    }
};

// All that cfg_set_privacy(on) did, in order.
static std::vector<std::string> switched(uint32_t on)
{
    calls.clear();
    const Outcome outcome = observe([=] { return cfg_set_privacy(on); });
    EXPECT_EQ(outcome.result, 0);
    EXPECT_EQ(outcome.out + outcome.err, "");
    before_call();
    return calls;
}

TEST_F(PrivacyTest, EnteringRunsItsSequence)
{
    store["continus_take_pic"] = "7";
    EXPECT_THAT(switched(1),
                ElementsAre("get orb_privacy_mode_enable 32", "set orb_privacy_mode_enable=1",
                            "post 1 7 value=1", "system MotorCtrlApp privacy 1",
                            "system LEDCtrlApp power PRIVACY_ON", "infrared 0", "post 7 5",
                            "post 2 4", "post 4 6", "system killall -SIGHUP peerconn",
                            "system killall AudioPlayback", "system killall -SIGUSR2 ffplay",
                            "get continus_take_pic 16", "system killall -37 capture",
                            "system killall -41 eventd"));
}

TEST_F(PrivacyTest, LeavingRunsItsSequence)
{
    store[KEY] = "1";
    store["continus_take_pic"] = "-1";
    EXPECT_THAT(switched(0),
                ElementsAre("get orb_privacy_mode_enable 32", "set orb_privacy_mode_enable=0",
                            "post 1 7", "system MotorCtrlApp privacy 0",
                            "system LEDCtrlApp power PRIVACY_OFF", "get io_ir_enable 256",
                            "infrared 2", "popen board hwver", "get wled_mode 256",
                            "popen board hwver", "get rlamp_mode 256", "post 7 7", "post 2 5",
                            "post 4 7", "system killall -SIGPROF peerconn",
                            "get continus_take_pic 16", "system killall -35 ctrl_sched"));
}

TEST_F(PrivacyTest, WithoutContinuousPicturesNobodyElseIsSignalled)
{
    for (const std::string flag : {"0", "", "on"}) {
        store["continus_take_pic"] = flag;
        EXPECT_EQ(switched(1).back(), "get continus_take_pic 16") << flag;
        EXPECT_EQ(switched(0).back(), "get continus_take_pic 16") << flag;
    }
}

TEST_F(PrivacyTest, SameNumberChangesNothing)
{
    const auto steps = [](const std::string &stored, uint32_t on) {
        store[KEY] = stored;
        return switched(on).size();
    };
    EXPECT_EQ(steps("1", 1) + steps("2", 2) + steps("-1", UINT32_MAX), 3U) << "only a look each";
    EXPECT_EQ(steps("", 0) + steps("off", 0), 2U);
    EXPECT_EQ(steps("2", 1), 13U) << "another number, though on already";
    store.erase(KEY);
    EXPECT_EQ(switched(0).size(), 1U) << "an absent key is off";
}

TEST_F(PrivacyTest, NothingThatFailsStopsTheChange)
{
    before_call = nullptr;
    failing = {{"msgget", ENOSPC}, {"semget", ENOSPC}};
    refused = {"set " + KEY, "get continus_take_pic", "get io_ir_enable"};
    for (const std::string stored : {"0", "1"}) {
        store[KEY] = stored;
        calls.clear();
        const Outcome outcome = observe([&] { return cfg_set_privacy(stored == "0"); });
        EXPECT_EQ(outcome.result, 0);
        EXPECT_EQ(recorded("system").size(), stored == "0" ? 5U : 3U);
        EXPECT_THAT(outcome.out, HasSubstr("[cfg_set_privacy #] cfg_setPrivacyEvent fail\n"));
        EXPECT_EQ(outcome.err, "error creating semaphore.\nsem_get: No space left on device\n"
                               "[cfg_set_privacy #] cfg_setRec fail\n"
                               "[cfg_set_privacy #] cfg_setPirPrivacyMode fail\n"
                               "[cfg_set_privacy #] cfg_setVolumeDetectPrivacyMode fail\n");
    }
}

static bool lock_is_free()
{
    return semctl(semget(LOCK, 1, 0), 0, GETVAL) == 1;
}

TEST_F(PrivacyTest, LockIsHeldThroughout)
{
    store["continus_take_pic"] = "1";
    before_call = [] { EXPECT_FALSE(lock_is_free()) << "after step " << calls.size(); };
    for (const uint32_t on : {1U, 1U, 0U}) {
        EXPECT_EQ(cfg_set_privacy(on), 0);
        EXPECT_TRUE(lock_is_free());
    }
    EXPECT_EQ(calls.size(), 10U + 1 + 12);
}

TEST_F(PrivacyTest, SecondProcessWaitsForTheFirst)
{
    before_call = nullptr;
    const int lock = sem_get(LOCK);
    const pid_t second = fork();
    if (second == 0)
        _exit(cfg_set_privacy(1));
    while (semctl(lock, 0, GETNCNT) == 0 && waitpid(second, nullptr, WNOHANG) == 0)
        sched_yield();
    EXPECT_EQ(semctl(lock, 0, GETNCNT), 1);
    EXPECT_THAT(posted(), testing::IsEmpty());
    EXPECT_EQ(sem_put(lock), 0);
    EXPECT_EQ(waitpid(second, nullptr, 0), second);
    EXPECT_EQ(posted().size(), 4U);
}

TEST_F(PrivacyTest, ModeIsTheFirstDigitStored)
{
    const auto mode = [](const std::string &stored) {
        store[KEY] = stored;
        return cfg_isPrivacyMode();
    };
    EXPECT_EQ(mode("12") + mode("2"), 1 + 2);
    EXPECT_EQ(mode("0") + mode("") + mode("on"), 0);
}
