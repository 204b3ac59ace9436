// Microphone, speaker, prompts and alert sounds.

#include "cfg_set.h"
#include "doubles.h"
#include "settings/audio.h"

#include <unistd.h>

using namespace doubles;
using testing::ElementsAre;
using testing::IsEmpty;

class AudioTest : public LibraryTest
{
};

static const std::string ON_CARD = "/mnt/sdcard/morvenix/en/speech/hello.aac";
static const std::string IN_FIRMWARE = "/localization/en/hello.aac";

static void insert_card()
{
    write_file("/proc/mounts", "tmpfs /tmp tmpfs rw 0 0\n"
                               "/dev/mmcblk0p1 /mnt/sdcard vfat rw 0 0\n");
}

// The file that the prompt player was given.
static std::string played()
{
    const auto lines = recorded("system");
    const std::string player = "demo_MXAacPlayer_ ";
    if (lines.empty() || lines.back().compare(0, player.size(), player) != 0)
        return "nothing";
    return lines.back().substr(player.size());
}

TEST_F(AudioTest, MicrophoneOnSettlesBeforeItsLevelIsSet)
{
    EXPECT_EQ(cfg_setMicEnable(1), 0);
    EXPECT_THAT(calls, ElementsAre("system demo_MXSetMicMute_ 0", "usleep 50000",
                                   "system demo_MXSetMicVol_ 60"));
    calls.clear();
    EXPECT_EQ(cfg_setMicEnable(0), 0);
    EXPECT_THAT(calls, ElementsAre("system demo_MXSetMicMute_ 1"));
}

TEST_F(AudioTest, MicrophoneRefusesOtherValues)
{
    for (const uint32_t value : {2U, UINT32_MAX}) {
        const Outcome set = observe([&] { return cfg_setMicEnable(value); });
        EXPECT_EQ(set.result, -1);
        EXPECT_EQ(set.out, "[cfg_setMicEnable #] invalid value[" + std::to_string(value) + "]\n");
        const Outcome save = observe([&] { return cfg_saveMicEnable(value); });
        EXPECT_EQ(save.result, -1);
        EXPECT_EQ(save.out, "[cfg_saveMicEnable #] invalid value[" + std::to_string(value) + "]\n");
    }
    EXPECT_THAT(calls, IsEmpty());
}

TEST_F(AudioTest, SaverStoresThenCommitsThenApplies)
{
    const Outcome save = observe([] { return cfg_saveMicEnable(0); });
    EXPECT_EQ(save.result, 0);
    EXPECT_EQ(save.out + save.err, "");
    EXPECT_THAT(calls, ElementsAre("set io_mic_enable=0", "save", "system demo_MXSetMicMute_ 1"));
}

TEST_F(AudioTest, SaverStopsAtTheFirstFailure)
{
    refused = {"set io_mic_enable"};
    Outcome save = observe([] { return cfg_saveMicEnable(1); });
    EXPECT_EQ(save.result, -1);
    EXPECT_EQ(save.out, "[cfg_saveMicEnable #] param_set fail\n");
    EXPECT_THAT(calls, ElementsAre("set io_mic_enable=1"));

    calls.clear();
    refused = {"save"};
    save = observe([] { return cfg_saveMicEnable(1); });
    EXPECT_EQ(save.result, -1);
    EXPECT_EQ(save.out, "[cfg_saveMicEnable #] param_save fail\n");
    EXPECT_THAT(calls, ElementsAre("set io_mic_enable=1", "save"));
    EXPECT_EQ(store["io_mic_enable"], "1");
}

TEST_F(AudioTest, MicrophoneRestorerConvertsWhatIsStored)
{
    const std::string OFF = "demo_MXSetMicMute_ 1";
    const std::string ON = "demo_MXSetMicMute_ 0";
    const std::vector<std::pair<std::string, std::string>> accepted = {
        {"0", OFF}, {"1", ON},   {"1x", ON}, {"abc", OFF},
        {"", OFF},  {"  1", ON}, {"01", ON}, {std::string(254, '0') + "1", ON}};
    for (const auto &[text, command] : accepted) {
        store["io_mic_enable"] = text;
        calls.clear();
        EXPECT_EQ(cfg_restoreMicEnable(), 0) << text;
        ASSERT_GE(calls.size(), 2U) << text;
        EXPECT_EQ(calls[0], "get io_mic_enable 256");
        EXPECT_EQ(calls[1], "system " + command) << text;
    }
    for (const std::string text : {"2", "-1", "4294967297", "99999999999999999999"}) {
        store["io_mic_enable"] = text;
        calls.clear();
        const Outcome restore = observe([] { return cfg_restoreMicEnable(); });
        EXPECT_EQ(restore.result, -1) << text;
        EXPECT_THAT(restore.out,
                    testing::MatchesRegex("\\[cfg_setMicEnable #\\] invalid value\\[[0-9]+\\]\n"
                                          "\\[cfg_restoreMicEnable #\\] cfg_setMicEnable fail\n"))
            << text;
        EXPECT_THAT(recorded("system"), IsEmpty()) << text;
    }
}

TEST_F(AudioTest, RestorersReadTheirKeys)
{
    expect_keys_read({{"MicEnable", "io_mic_enable", cfg_restoreMicEnable},
                      {"SpeakerVolume", "io_speaker_volume", cfg_restoreSpeakerVolume},
                      {"SpeakerEnable", "io_speaker_enable", cfg_restoreSpeakerEnable}});
}

TEST_F(AudioTest, SpeakerVolumesMapToLevels)
{
    for (const auto &[volume, level] : std::map<uint32_t, int>{{0, 0},
                                                               {1, 40},
                                                               {22, 40},
                                                               {23, 35},
                                                               {24, 40},
                                                               {27, 40},
                                                               {30, 40},
                                                               {31, 50},
                                                               {32, 40},
                                                               {255 + 24, 40},
                                                               {UINT32_MAX, 40}}) {
        calls.clear();
        EXPECT_EQ(cfg_setSpeakerVolume(volume), 0);
        EXPECT_THAT(calls, ElementsAre("system demo_MXSetSpeakerVol_ " + std::to_string(level)))
            << volume;
    }
}

TEST_F(AudioTest, SpeakerRestorersApplyTheStoredVolume)
{
    store = {{"io_speaker_volume", "31"}, {"io_speaker_enable", "7"}};
    EXPECT_EQ(cfg_restoreSpeakerVolume(), 0);
    EXPECT_EQ(cfg_restoreSpeakerEnable(), 0);
    EXPECT_THAT(calls, ElementsAre("get io_speaker_volume 256", "system demo_MXSetSpeakerVol_ 50",
                                   "get io_speaker_enable 256", "get io_speaker_volume 256",
                                   "system demo_MXSetSpeakerVol_ 50"));
}

TEST_F(AudioTest, SpeakerOffIsOnlyReported)
{
    for (const std::string text : {"0", "", "off"}) {
        store = {{"io_speaker_volume", "31"}, {"io_speaker_enable", text}};
        calls.clear();
        const Outcome restore = observe([] { return cfg_restoreSpeakerEnable(); });
        EXPECT_EQ(restore.result, 0);
        EXPECT_EQ(restore.out, "[cfg_setSpeakerEnable #] cfg_restoreSpeakerVolume off\n");
        EXPECT_THAT(calls, ElementsAre("get io_speaker_enable 256"));
    }
}

TEST_F(AudioTest, SpeakerOnWithoutAVolumeFailsThroughEveryLevel)
{
    store = {{"io_speaker_enable", "1"}};
    const Outcome restore = observe([] { return cfg_restoreSpeakerEnable(); });
    EXPECT_EQ(restore.result, -1);
    EXPECT_EQ(restore.out, "[cfg_restoreSpeakerVolume #] param_get fail\n"
                           "[cfg_setSpeakerEnable #] cfg_restoreSpeakerVolume fail\n"
                           "[cfg_restoreSpeakerEnable #] cfg_setSpeakerEnable fail\n");
}

TEST_F(AudioTest, EntriesThatDoNotLookAtTheirValue)
{
    for (const uint32_t value : {0U, 1U, UINT32_MAX}) {
        calls.clear();
        EXPECT_EQ(cfg_set2WayAudioEnable(value), 0);
        EXPECT_EQ(cfg_setSkypeAecEnable(value) + cfg_setSkypeAgcEnable(value) +
                      cfg_setSkypeNoiseSuppressorEnable(value),
                  0);
        EXPECT_THAT(calls, ElementsAre("system killall -SIGUSR1 peerconn_watchdog"));
    }
}

TEST_F(AudioTest, CardIsMountedOnlyAtItsMountPoint)
{
    const auto mounted = [](const std::string &text) {
        write_file("/proc/mounts", text);
        return sdcard_mounted();
    };
    EXPECT_TRUE(mounted("/dev/mmcblk0p1 /mnt/sdcard vfat rw 0 0\n"));
    EXPECT_TRUE(mounted("tmpfs /tmp tmpfs rw 0 0\n/dev/a /mnt/sdcard vfat rw 0 0"));
    EXPECT_FALSE(mounted("/dev/mmcblk0p1 /mnt/sdcard2 vfat rw 0 0\n"));
    EXPECT_FALSE(mounted("/dev/mmcblk0p1 /root/mnt/sdcard vfat rw 0 0\n"));
    EXPECT_FALSE(mounted(""));
}

TEST_F(AudioTest, UnreadableMountsCountAsNoCardAndGoToStandardError)
{
    const Outcome check = observe([] { return sdcard_mounted() ? 1 : 0; });
    EXPECT_EQ(check.result, 0);
    EXPECT_EQ(check.out, "");
    EXPECT_EQ(check.err, "sdcard_mounted:# error opening /proc/mounts...\n");
}

TEST_F(AudioTest, PromptComesFromTheCardThenTheFirmwareThenTheBuiltInSounds)
{
    const std::string SIZE_16 = "get lang_name 16";
    const std::string VOLUME = "get io_speaker_volume 8";
    const std::string SIZE_32 = "get lang_name 32";
    const auto play = [](const std::string &path) { return "system demo_MXAacPlayer_ " + path; };
    const auto prompt = [] {
        calls.clear();
        EXPECT_EQ(voice_prompt("hello.aac"), 0);
        return calls;
    };
    insert_card();
    store = {{"lang_name", "en"}, {"io_speaker_volume", "25"}};
    write_file(ON_CARD, "");
    write_file(IN_FIRMWARE, "");
    EXPECT_THAT(prompt(), ElementsAre(SIZE_16, VOLUME, play(ON_CARD), "sleep 1"));

    write_file("/proc/mounts", ""); // a language is spoken without a card too
    EXPECT_THAT(prompt(), ElementsAre(VOLUME, SIZE_32, play(IN_FIRMWARE), "sleep 1"));

    insert_card();
    unlink(ON_CARD.c_str());
    EXPECT_THAT(prompt(), ElementsAre(SIZE_16, VOLUME, SIZE_32, play(IN_FIRMWARE), "sleep 1"));

    unlink(IN_FIRMWARE.c_str());
    prompt();
    EXPECT_EQ(played(), "/audio/hello.aac");

    write_file(IN_FIRMWARE, "");
    store["lang_name"] = "";
    prompt();
    EXPECT_EQ(played(), "/audio/hello.aac");
    store.erase("lang_name");
    prompt();
    EXPECT_EQ(played(), "/audio/hello.aac");
}

TEST_F(AudioTest, PromptSetsTheVolumeOnlyForTheStoredDefaultOrNone)
{
    write_file("/proc/mounts", "");
    const std::string player = "demo_MXAacPlayer_ /audio/a";
    sleep_left = 1;
    for (const std::string text : {"absent", "27", "0", "", "loud", "27dB", "25", "-1", "270"}) {
        store.clear();
        if (text != "absent")
            store["io_speaker_volume"] = text;
        calls.clear();
        EXPECT_EQ(voice_prompt("a"), 1) << "what is left of its second";
        if (text == "25" || text == "-1" || text == "270")
            EXPECT_THAT(recorded("system"), ElementsAre(player)) << text;
        else
            EXPECT_THAT(recorded("system"), ElementsAre("demo_MXSetSpeakerVol_ 40", player))
                << text;
    }
}

TEST_F(AudioTest, LongLanguagesAreCutAtTheirBuffers)
{
    insert_card();
    const std::string language = "abcdefghijklmnopqrstuvwxyz0123456789";
    store = {{"lang_name", language}, {"io_speaker_volume", "25"}};
    const std::string card = "/mnt/sdcard/morvenix/" + language.substr(0, 15) + "/speech/a";
    const std::string firmware = "/localization/" + language.substr(0, 31) + "/a";
    write_file(firmware, "");
    voice_prompt("a");
    EXPECT_EQ(played(), firmware);
    write_file(card, "");
    voice_prompt("a");
    EXPECT_EQ(played(), card);
}

TEST_F(AudioTest, PromptNamesEndWhereTheCommandLineDoes)
{
    write_file("/proc/mounts", "");
    store = {{"io_speaker_volume", "27"}};
    const std::string longest(230, 'n');
    EXPECT_EQ(voice_prompt(longest.c_str()), 0);
    EXPECT_EQ(played(), "/audio/" + longest);

    calls.clear();
    for (const std::string &name : {longest + "n", std::string(300, 'n'), std::string(5000, 'n')}) {
        const Outcome prompt = observe([&] { return voice_prompt(name.c_str()); });
        EXPECT_EQ(prompt.result, -1);
        EXPECT_EQ(prompt.out, "[voice_prompt #] invalid name\n");
    }
    EXPECT_EQ(observe([] { return voice_prompt(nullptr); }).result, -1);
    EXPECT_THAT(calls, IsEmpty());
}

TEST_F(AudioTest, RecordingsTooLongForTheCommandLineArePassedOver)
{
    insert_card();
    store = {{"lang_name", "en"}, {"io_speaker_volume", "25"}};
    const std::string folder = "/mnt/sdcard/morvenix/en/speech/";
    const std::string fits(237 - folder.size(), 'n');
    write_file(folder + fits, "");
    voice_prompt(fits.c_str());
    EXPECT_EQ(played(), folder + fits);

    const std::string cut = fits + "n";
    write_file(folder + cut, "");
    voice_prompt(cut.c_str());
    EXPECT_EQ(played(), "/audio/" + cut);
}

TEST_F(AudioTest, AlertPlaysAtRaisedPriorityThenRestoresTheSpeaker)
{
    store = {{"io_speaker_enable", "1"}, {"io_speaker_volume", "23"}};
    // The letters decide, wherever they stand.
    for (const auto &[path, player] :
         std::map<std::string, std::string>{{"/audio/bark.wav", "demo_MXWavPlayer_"},
                                            {"/audio/x.aac", "demo_MXAacPlayer_"},
                                            {"/a.aac/x.wav", "demo_MXAacPlayer_"}}) {
        calls.clear();
        const std::string command = "nice -n -20 " + player + " " + path;
        const Outcome sound = observe([&path = path] { return alert(path.c_str()); });
        EXPECT_EQ(sound.result, 0);
        EXPECT_EQ(sound.out, "alert\t# cmd " + command + "\n");
        EXPECT_EQ(sound.err, "");
        EXPECT_THAT(calls,
                    ElementsAre("system " + command, "sleep 1", "get io_speaker_enable 256",
                                "get io_speaker_volume 256", "system demo_MXSetSpeakerVol_ 35"));
    }
    store.clear();
    const Outcome sound = observe([] { return alert("/a.wav"); });
    EXPECT_EQ(sound.result, -1);
    EXPECT_THAT(sound.out, testing::EndsWith("[cfg_restoreSpeakerEnable #] param_get fail\n"));
}

TEST_F(AudioTest, AlertRefusesAPathThatItsCommandLineCannotHold)
{
    store = {{"io_speaker_enable", "0"}};
    const std::string longest(225, 'p');
    EXPECT_EQ(alert(longest.c_str()), 0);
    EXPECT_EQ(calls[0], "system nice -n -20 demo_MXWavPlayer_ " + longest);

    calls.clear();
    for (const std::string &path : {longest + "p", std::string(5000, 'p')}) {
        const Outcome sound = observe([&] { return alert(path.c_str()); });
        EXPECT_EQ(sound.result, -1);
        EXPECT_EQ(sound.out, "[alert #] invalid path\n");
    }
    EXPECT_EQ(observe([] { return alert(nullptr); }).result, -1);
    EXPECT_THAT(calls, IsEmpty());
}
