#include "settings/audio.h"
#include "settings/stored.h"

using namespace cfg_set;

int cfg_saveMicEnable(uint32_t value)
{
    if (value > MIC_ENABLE_MAX) {
        REPORT("invalid value[%lu]", (unsigned long)value);
        return -1;
    }
    char text[VALUE_SIZE];
    format(text, sizeof text, "%lu", (unsigned long)value);
    if (param_set("io_mic_enable", text) != 0) {
        REPORT("param_set fail");
        return -1;
    }
    if (param_save() != 0) {
        REPORT("param_save fail");
        return -1;
    }
    return result_of("cfg_setMicEnable", cfg_setMicEnable(value), HERE);
}

int cfg_restoreMicEnable(void)
{
    uint32_t value;
    if (!stored_number("io_mic_enable", &value, HERE))
        return -1;
    return result_of("cfg_setMicEnable", cfg_setMicEnable(value), HERE);
}

int cfg_restoreSpeakerVolume(void)
{
    uint32_t volume;
    if (!stored_number("io_speaker_volume", &volume, HERE))
        return -1;
    return result_of("cfg_setSpeakerVolume", cfg_setSpeakerVolume(volume), HERE);
}

int cfg_setSpeakerEnable(uint32_t value)
{
    if (value == 0) {
        REPORT("cfg_restoreSpeakerVolume off");
        return 0;
    }
    return result_of("cfg_restoreSpeakerVolume", cfg_restoreSpeakerVolume(), HERE);
}

int cfg_restoreSpeakerEnable(void)
{
    uint32_t value;
    if (!stored_number("io_speaker_enable", &value, HERE))
        return -1;
    return result_of("cfg_setSpeakerEnable", cfg_setSpeakerEnable(value), HERE);
}
