// Privacy mode: what happens, in which order, under which lock.

#include "cfg_set.h"
#include "doubles.h"

using namespace doubles;
using PrivacyTest = LibraryTest;

static const Calls LOCK = {"lock def1"}, UNLOCK = {"unlock def1"};

// clang-format off

// A mode stored, and what a camera with both lamps has besides.
static Given mode(const std::string &stored, const std::string &pictures)
{
    return {{"orb_privacy_mode_enable", stored}, {"continus_take_pic", pictures},
        {"io_ir_enable", "1"}, {"wled_mode", "2"}, {"rlamp_mode", "1"}, {"$ board hwver", "50"}};
}

// The steps of entering, stored as `text`, and of leaving, up to the pictures.
static Calls entered(const std::string &text)
{
    return Calls{"set orb_privacy_mode_enable=" + text, "post 1 7 value=1", "system MotorCtrlApp privacy 1",
               "system LEDCtrlApp power PRIVACY_ON"} + put("ir_mode w", "0\\0") +
        Calls{"post 7 5", "post 2 4", "post 4 6", "system killall -SIGHUP peerconn", "system killall AudioPlayback",
            "system killall -SIGUSR2 ffplay"};
}

static Calls left()
{
    const Calls board = {"popen board hwver"};
    return Calls{"set orb_privacy_mode_enable=0", "post 1 7", "system MotorCtrlApp privacy 0", "system LEDCtrlApp power PRIVACY_OFF"} +
        put("ir_mode w", "2\\0") + board + put("wled_mode w+", "2\\0") + board + put("rlamp_mode w", "1") +
        Calls{"post 7 7", "post 2 5", "post 4 7", "system killall -SIGPROF peerconn"};
}

TEST_F(PrivacyTest, EnteringAndLeaving)
{
    drivers = true;
    const std::string pictures = "continus_take_pic 16", state = "orb_privacy_mode_enable 32";
    const Calls more = {"system killall -37 capture", "system killall -41 eventd"}, less = {"system killall -35 ctrl_sched"};
    check({
        {mode("0", "7"), CALL(cfg_set_privacy(1)), 0, LOCK + entered("1") + more + UNLOCK, "", {state, pictures}},
        {mode("0", "on"), CALL(cfg_set_privacy(2)), 0, LOCK + entered("2") + UNLOCK},
        {mode("2", "-1"), CALL(cfg_set_privacy(UINT32_MAX)), 0, LOCK + entered("-1") + more + UNLOCK},
        {mode("0", "1"), {"get continus_take_pic"}, CALL(cfg_set_privacy(1)), 0, LOCK + entered("1") + UNLOCK},
        {mode("9999999999", "0"), CALL(cfg_set_privacy(UINT32_MAX)), 0, LOCK + entered("-1") + UNLOCK},
        {mode("1", "1"), CALL(cfg_set_privacy(0)), 0, LOCK + left() + less + UNLOCK, "",
            {state, "io_ir_enable 256", "wled_mode 256", "rlamp_mode 256", pictures}},
        {mode("1", ""), CALL(cfg_set_privacy(0)), 0, LOCK + left() + UNLOCK},
        // The same number changes nothing.
        {mode("1", "1"), CALL(cfg_set_privacy(1)), 0, LOCK + UNLOCK, "", {state}},
        {mode("2", "1"), CALL(cfg_set_privacy(2)), 0, LOCK + UNLOCK},
        {mode("-1", "1"), CALL(cfg_set_privacy(UINT32_MAX)), 0, LOCK + UNLOCK},
        {mode("off", "1"), CALL(cfg_set_privacy(0)), 0, LOCK + UNLOCK},
        {mode("1", "1"), {"get orb_privacy_mode_enable"}, CALL(cfg_set_privacy(0)), 0, LOCK + UNLOCK},
        {mode("12", "1"), CALL(cfg_isPrivacyMode()), 1, {}, "", {"orb_privacy_mode_enable 2"}},
        {mode("on", "1"), CALL(cfg_isPrivacyMode()), 0},
    });
}

TEST_F(PrivacyTest, NothingThatFailsStopsTheChange)
{
    drivers = true;
    const std::string lost = "[cfg_sendMsg #] msgsnd fail\n", message = "cfg_sendMsg fail\n";
    const std::string out = lost + "[cfg_setPrivacyEvent #] cfg_setPrivacyEvent fail\ncfg_setPrivacyEvent fail\n" +
        lost + "[cfg_setRec #] " + message + lost + "[cfg_setPirPrivacyMode #] " + message +
        lost + "[cfg_setVolumeDetectPrivacyMode #] " + message;
    const std::string unlocked = "! | error creating semaphore.\n! | sem_get: Cannot allocate memory\n";
    const std::string err = "! cfg_setRec fail\n! cfg_setPirPrivacyMode fail\n! cfg_setVolumeDetectPrivacyMode fail";
    const std::set<std::string> all = {"semget", "msgsnd", "set orb_privacy_mode_enable"};
    check({{mode("0", "0"), all, CALL(cfg_set_privacy(1)), 0, entered("1"), out + unlocked + err}});
    check({{mode("1", "0"), {"msgsnd"}, CALL(cfg_set_privacy(0)), 0, LOCK + left() + UNLOCK, out + err}});
}
