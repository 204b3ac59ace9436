// Microphone, speaker, prompts and alert sounds.

#include "cfg_set.h"
#include "doubles.h"
#include "settings/audio.h"

using namespace cfg_set;
using namespace doubles;
using AudioTest = LibraryTest;

// clang-format off

using Pair = std::pair<const std::string, std::string>;
static const Pair CARD = {"/proc/mounts", "tmpfs /tmp tmpfs rw 0 0\n/dev/a /mnt/sdcard vfat rw\n/dev/b /b vfat\n"};
static const Pair NO_CARD = {"/proc/mounts", ""}, EN = {"lang_name", "en"}, VOLUME = {"io_speaker_volume", "25"};

static Calls level(int number)
{
    return {"system demo_MXSetSpeakerVol_ " + std::to_string(number)};
}

TEST_F(AudioTest, Microphone)
{
    const Calls on = {"system demo_MXSetMicMute_ 0", "wait 50", "system demo_MXSetMicVol_ 60"};
    const Calls off = {"system demo_MXSetMicMute_ 1"}, store_0 = {"set io_mic_enable=0", "save"};
    const Calls store_1 = {"set io_mic_enable=1", "save"};
    check({
        {CALL(cfg_setMicEnable(0)), 0, off},
        {CALL(cfg_setMicEnable(1)), 0, on},
        {CALL(cfg_setMicEnable(2)), -1, {}, "invalid value[2]"},
        {CALL(cfg_saveMicEnable(0)), 0, store_0 + off},
        {CALL(cfg_saveMicEnable(1)), 0, store_1 + on},
        {CALL(cfg_saveMicEnable(2)), -1, {}, "invalid value[2]"},
        {CALL(cfg_saveMicEnable(UINT32_MAX)), -1, {}, "invalid value[4294967295]"},
        {{}, {"set io_mic_enable"}, CALL(cfg_saveMicEnable(1)), -1, {store_1[0]}, "param_set fail"},
        {{}, {"save"}, CALL(cfg_saveMicEnable(1)), -1, store_1, "param_save fail"},
        {{{"io_mic_enable", "1x"}}, CALL(cfg_restoreMicEnable()), 0, on},
        {{{"io_mic_enable", ""}}, CALL(cfg_restoreMicEnable()), 0, off},
        {{{"io_mic_enable", "-1"}}, CALL(cfg_restoreMicEnable()), -1, {},
            "[cfg_setMicEnable #] invalid value[4294967295]\ncfg_setMicEnable fail"},
        {CALL(cfg_restoreMicEnable()), -1, {}, "param_get fail", {"io_mic_enable 256"}},
    });
}

TEST_F(AudioTest, Speaker)
{
    const Calls watchdog = {"system killall -SIGUSR1 peerconn_watchdog"};
    const Calls reads = {"io_speaker_enable 256", "io_speaker_volume 256"};
    const std::string none = "[cfg_restoreSpeakerVolume #] param_get fail\n", set = "[cfg_setSpeakerEnable #] ";
    const Call restore = CALL(cfg_restoreSpeakerEnable());
    for (const auto &entry : std::map<uint32_t, int>{{0, 0}, {1, 40}, {22, 40}, {23, 35}, {24, 40}, {25, 40}, {26, 40}, {27, 40},
             {28, 40}, {29, 40}, {30, 40}, {31, 50}, {32, 40}, {255 + 24, 40}, {UINT32_MAX, 40}})
        check({{CALL(cfg_setSpeakerVolume(entry.first)), 0, level(entry.second)}});
    check({
        {{{"io_speaker_volume", "31"}}, CALL(cfg_restoreSpeakerVolume()), 0, level(50), "", {reads[1]}},
        {CALL(cfg_restoreSpeakerVolume()), -1, {}, "param_get fail"},
        {{VOLUME}, CALL(cfg_setSpeakerEnable(0)), 0, {}, "cfg_restoreSpeakerVolume off"},
        {{VOLUME, {"io_speaker_enable", "7"}}, restore, 0, level(40), "", reads},
        {{VOLUME, {"io_speaker_enable", ""}}, restore, 0, {}, set + "cfg_restoreSpeakerVolume off", {reads[0]}},
        {{{"io_speaker_enable", "1"}}, restore, -1, {}, 
            none + set + "cfg_restoreSpeakerVolume fail\ncfg_setSpeakerEnable fail"},
        {{VOLUME}, restore, -1, {}, "param_get fail"},
        {CALL(cfg_set2WayAudioEnable(0) | cfg_set2WayAudioEnable(1)), 0, watchdog + watchdog},
        {CALL(cfg_setSkypeAecEnable(1) | cfg_setSkypeAgcEnable(1) | cfg_setSkypeNoiseSuppressorEnable(1)), 0},
    });
}

TEST_F(AudioTest, CardIsMountedAtItsMountPointInALineOf255)
{
    for (const auto &mounts : std::map<std::string, int>{{CARD.second, 1}, {"/dev/a /mnt/sdcard vfat", 1}, {"", 0},
             {"/dev/a /mnt/sdcard2 vfat\n/dev/b /root/mnt/sdcard vfat\n/mnt/sdcard /a", 0},
             {std::string(242, 'd') + " /mnt/sdcard vfat", 1}, {std::string(243, 'd') + " /mnt/sdcard vfat", 0}})
        check({{{{"/proc/mounts", mounts.first}}, CALL(sdcard_mounted()), mounts.second}});
    check({{CALL(sdcard_mounted()), 0, {}, "! | sdcard_mounted:# error opening /proc/mounts..."}});
}

TEST_F(AudioTest, PromptComesFromTheCardThenTheFirmwareThenTheBuiltInSounds)
{
    const auto plays = [](const std::string &path) { return Calls{"system demo_MXAacPlayer_ " + path, "sleep 1"}; };
    const Calls built_in = plays("/audio/a");
    const std::string folder = "/mnt/sdcard/morvenix/en/speech/", loud = "io_speaker_volume 8";
    const std::string language = "abcde ghijklmnopqrstuvwxyz0123456789", s16 = "lang_name 16", s32 = "lang_name 32";
    const Pair on_card = {folder + "a", ""}, in_firmware = {"/localization/en/a", ""};
    const Pair cut = {"lang_name", language}, bad = {"lang_name", ";"};
    const Call prompt = CALL(voice_prompt("a"));
    const Pair card_15 = {"/mnt/sdcard/morvenix/" + language.substr(0, 15) + "/speech/a", ""};
    const Pair firmware_31 = {"/localization/" + language.substr(0, 31) + "/a", ""};
    const std::string longest = "a " + std::string(228, 'n'), fits(237 - folder.size(), 'n'), more = fits + "n";
    check({
        {{CARD, EN, VOLUME, on_card, in_firmware}, prompt, 0, plays(on_card.first), "", {s16, loud}},
        {{NO_CARD, EN, VOLUME, on_card, in_firmware}, prompt, 0, plays(in_firmware.first), "", {loud, s32}},
        {{CARD, EN, VOLUME, in_firmware}, prompt, 0, plays(in_firmware.first), "", {s16, loud, s32}},
        {{CARD, EN, VOLUME}, prompt, 0, built_in},
        {{CARD, VOLUME, {"/mnt/sdcard/morvenix//speech/a", ""}, {"/localization//a", ""}}, prompt, 0, built_in},
        {{CARD, bad, VOLUME, {"/mnt/sdcard/morvenix/;/speech/a", ""}, {"/localization/;/a", ""}}, prompt, 0, built_in},
        {{CARD, cut, VOLUME, card_15, firmware_31}, prompt, 0, plays(card_15.first)},
        {{CARD, cut, VOLUME, firmware_31}, prompt, 0, plays(firmware_31.first)},
        {{NO_CARD, VOLUME}, CALL(voice_prompt(longest.c_str())), 0, plays("/audio/" + longest)},
        {{NO_CARD, VOLUME}, CALL(voice_prompt((longest + "n").c_str())), -1, {}, "invalid name"},
        {{NO_CARD, VOLUME}, {}, CALL(voice_prompt(nullptr)), -1, {}, "invalid name"},
        {{NO_CARD, VOLUME}, {}, CALL(voice_prompt("*.aac")), -1, {}, "invalid name"},
        // A recording too long for the command line is passed over.
        {{CARD, EN, VOLUME, {folder + fits, ""}}, CALL(voice_prompt(fits.c_str())), 0, plays(folder + fits)},
        {{CARD, EN, VOLUME, {folder + more, ""}}, CALL(voice_prompt(more.c_str())), 0, plays("/audio/" + more)},
    });
    sleep_left = 1; // of its second, when a signal ends it
    for (const auto &volume : std::map<std::string, Calls>{{"27", level(40)}, {"0", level(40)}, {"", level(40)}, {"loud", level(40)},
             {"27dB", level(40)}, {"1", {}}, {"25", {}}, {"26", {}}, {"28", {}}, {"-1", {}}, {"270", {}}, {"2700", {}}})
        check({{{NO_CARD, {"io_speaker_volume", volume.first}}, CALL(voice_prompt("a")), 1, volume.second + built_in}});
}

TEST_F(AudioTest, AlertPlaysAtRaisedPriorityThenRestoresTheSpeaker)
{
    const Pair on = {"io_speaker_enable", "1"};
    const std::string longest(225, 'p');
    for (const auto &sound : Given{{"/b c.wav", "Wav"}, {"/a.aac/x.wav", "Aac"}, {"/xaac", "Wav"}, {longest, "Wav"}}) {
        const std::string line = "nice -n -20 demo_MX" + sound.second + "Player_ " + sound.first;
        const std::string told = "| alert\t# cmd " + line;
        const Calls played = {"system " + line, "wait 1000"};
        check({{{on, VOLUME}, CALL(alert(sound.first.c_str())), 0, played + level(40), told},
               {CALL(alert(sound.first.c_str())), -1, played, told + "\n[cfg_restoreSpeakerEnable #] param_get fail"}});
    }
    check({{{on, VOLUME}, CALL(alert((longest + "p").c_str())), -1, {}, "invalid path"}});
    check({{{on, VOLUME}, {}, CALL(alert(nullptr)), -1, {}, "invalid path"}});
    check({{{on, VOLUME}, {}, CALL(alert("/audio/*.aac")), -1, {}, "invalid path"}});
}
