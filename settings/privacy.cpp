#include "events/lock.h"
#include "settings/stored.h"

using namespace cfg_set;

#define PRIVACY_KEY "orb_privacy_mode_enable"
constexpr key_t PRIVACY_LOCK = 0xDEF1;

// The recorder's commands.
constexpr uint32_t PRIVACY_ENTERED = 5;
constexpr uint32_t PRIVACY_LEFT = 7;

// Motor, status LED and lights.
static void drive_device(bool entering)
{
    if (entering) {
        run("MotorCtrlApp privacy 1");
        run("LEDCtrlApp power PRIVACY_ON");
        cfg_setIrEnable(0);
        return;
    }
    run("MotorCtrlApp privacy 0");
    run("LEDCtrlApp power PRIVACY_OFF");
    cfg_restoreIrEnable();
    cfg_restoreWLEDEnable();
    cfg_restoreRlampEnable();
}

// Peer connection, playback and continuous capture.
static void signal_processes(bool entering)
{
    if (entering) {
        run("killall -SIGHUP peerconn");
        run("killall AudioPlayback");
        run("killall -SIGUSR2 ffplay");
    } else {
        run("killall -SIGPROF peerconn");
    }
    if (stored_int("continus_take_pic", 16) == 0)
        return;
    if (entering) {
        run("killall -37 capture");
        run("killall -41 eventd");
    } else {
        run("killall -35 ctrl_sched");
    }
}

int cfg_set_privacy(uint32_t on)
{
    const int lock = sem_get(PRIVACY_LOCK);
    if ((uint32_t)stored_int(PRIVACY_KEY, 32) == on) {
        sem_put(lock);
        return 0;
    }
    char text[VALUE_SIZE];
    format(text, sizeof text, "%d", (int)on);
    param_set(PRIVACY_KEY, text);

    const bool entering = on != 0;
    result_of("cfg_setPrivacyEvent", cfg_setPrivacyEvent(entering), HERE);
    drive_device(entering);
    if (cfg_setRec(entering ? PRIVACY_ENTERED : PRIVACY_LEFT, nullptr, 0) != 0)
        REPORT_ERROR("cfg_setRec fail");
    if (cfg_setPirPrivacyMode(entering) != 0)
        REPORT_ERROR("cfg_setPirPrivacyMode fail");
    if (cfg_setVolumeDetectPrivacyMode(entering) != 0)
        REPORT_ERROR("cfg_setVolumeDetectPrivacyMode fail");
    signal_processes(entering);
    sem_put(lock);
    return 0;
}

int cfg_isPrivacyMode(void)
{
    return stored_int(PRIVACY_KEY, 2);
}
