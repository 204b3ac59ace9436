#include "settings/audio.h"

#include "settings/stored.h"

#include <string.h>
#include <unistd.h>

using namespace cfg_set;

constexpr uint32_t MIC_ENABLE_MAX = 1;
constexpr long MIC_SETTLE_NS = 50000000; // between unmuting and setting the level
constexpr long ALERT_PAUSE_NS = 1000000000;

constexpr uint32_t VOLUME_FIRST = 23; // stored volume of the first table entry
constexpr uint32_t VOLUME_PROMPT = 27;
constexpr int LEVEL_DEFAULT = 40;
static const int8_t SPEAKER_LEVEL[] = {35, 40, 40, 40, 40, 40, 40, 40, 50};

constexpr size_t COMMAND_SIZE = 256;
#define AAC_PLAYER "demo_MXAacPlayer_"
#define WAV_PLAYER "demo_MXWavPlayer_"
#define SOUND_FOLDER "/audio/"

// The longest path that fits the prompt player's command line, and the longest
// playable prompt name.
constexpr size_t PROMPT_PATH_MAX = COMMAND_SIZE - sizeof AAC_PLAYER " ";
constexpr size_t PROMPT_NAME_MAX = PROMPT_PATH_MAX - (sizeof SOUND_FOLDER - 1);

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

bool cfg_set::sdcard_mounted()
{
    FILE *mounts = fopen("/proc/mounts", "re");
    if (!mounts) {
        fprintf(stderr, "%s:%d error opening /proc/mounts...\n", HERE);
        return false;
    }
    char line[256];
    bool mounted = false;
    while (!mounted && fgets(line, sizeof line, mounts))
        mounted = strstr(line, " /mnt/sdcard ") != nullptr;
    fclose(mounts);
    return mounted;
}

// A recorded prompt counts only when its path fits the player's command line.
static bool playable(const char *path)
{
    return strlen(path) <= PROMPT_PATH_MAX && file_check(path);
}

// Finds the prompt `name`: in the card's speech folder of `language` (empty: no
// card), in the firmware's folder of the stored language, or among the built-in
// sounds, whose existence is not checked.
static void find_prompt(const char *name, const char *language, char *path, size_t size)
{
    if (*language && harmless(language, SOUND_WORD)) {
        char folder[64];
        format(folder, sizeof folder, "/mnt/sdcard/morvenix/%s/speech/", language);
        if (format(path, size, "%s%s", folder, name) && playable(path))
            return;
    }
    char stored[32] = "";
    param_get("lang_name", stored, sizeof stored);
    if (*stored && harmless(stored, SOUND_WORD) &&
        format(path, size, "/localization/%s/%s", stored, name) && playable(path))
        return;
    format(path, size, SOUND_FOLDER "%s", name);
}

int voice_prompt(const char *name)
{
    if (!name || strlen(name) > PROMPT_NAME_MAX || !harmless(name, SOUND_WORD)) {
        REPORT("invalid name");
        return -1;
    }
    char language[16] = "";
    if (sdcard_mounted())
        param_get("lang_name", language, sizeof language);

    char volume[8] = "";
    param_get("io_speaker_volume", volume, sizeof volume);
    const int stored = to_int(volume);
    if (stored == 0 || stored == (int)VOLUME_PROMPT)
        cfg_setSpeakerVolume(VOLUME_PROMPT);

    char path[512];
    find_prompt(name, language, path, sizeof path);
    char command[COMMAND_SIZE];
    format(command, sizeof command, "%s %s", AAC_PLAYER, path);
    run(command);
    return (int)sleep(1);
}

int alert(const char *path)
{
    char command[COMMAND_SIZE];
    if (!path || !harmless(path, SOUND_WORD) ||
        !format(command, sizeof command, "nice -n -20 %s %s",
                strstr(path, ".aac") ? AAC_PLAYER : WAV_PLAYER, path)) {
        REPORT("invalid path");
        return -1;
    }
    printf("%s\t%d cmd %s\n", HERE, command);
    run(command);
    wait_for(ALERT_PAUSE_NS);
    return cfg_restoreSpeakerEnable();
}
