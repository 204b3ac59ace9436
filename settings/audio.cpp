#include "settings/audio.h"

#include "settings/frame.h"

using namespace cfg_set;

constexpr long MIC_SETTLE_NS = 50000000; // between unmuting and setting the level

constexpr uint32_t VOLUME_FIRST = 23; // stored volume of the first table entry
constexpr int LEVEL_DEFAULT = 40;
static const int8_t SPEAKER_LEVEL[] = {35, 40, 40, 40, 40, 40, 40, 40, 50};

constexpr size_t COMMAND_SIZE = 256;

int cfg_setMicEnable(uint32_t value)
{
    if (value > MIC_ENABLE_MAX) {
        REPORT("invalid value[%lu]", (unsigned long)value);
        return -1;
    }
    if (value == 0) {
        run("demo_MXSetMicMute_ 1");
        return 0;
    }
    run("demo_MXSetMicMute_ 0");
    wait_for(MIC_SETTLE_NS);
    run("demo_MXSetMicVol_ 60");
    return 0;
}

int cfg_setSpeakerVolume(uint32_t volume)
{
    if (volume == 0) {
        run("demo_MXSetSpeakerVol_ 0");
        return 0;
    }
    const uint32_t index = volume - VOLUME_FIRST; // wraps below the table, past its end
    const int level = index < sizeof SPEAKER_LEVEL ? SPEAKER_LEVEL[index] : LEVEL_DEFAULT;
    char command[COMMAND_SIZE];
    format(command, sizeof command, "demo_MXSetSpeakerVol_ %d", level);
    run(command);
    return 0;
}

int cfg_set2WayAudioEnable(uint32_t)
{
    run("killall -SIGUSR1 peerconn_watchdog");
    return 0;
}

int cfg_setSkypeAecEnable(uint32_t)
{
    return 0;
}

int cfg_setSkypeAgcEnable(uint32_t)
{
    return 0;
}

int cfg_setSkypeNoiseSuppressorEnable(uint32_t)
{
    return 0;
}
