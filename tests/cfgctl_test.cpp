// cfgctl, as a program: its data, its reports and its exit status.

#include "harness.h"

using testing::HasSubstr;

class CfgctlTest : public CameraTest
{
  protected:
    void SetUp() override
    {
        CameraTest::SetUp();
        write_file("/etc_ro/param.default",
                   "io_mic_enable=1\nio_speaker_enable=1\nio_speaker_volume=27\nlang_name=en\n");
    }
};

TEST_F(CfgctlTest, GetPrintsTheValueAlone)
{
    EXPECT_EQ(cfgctl({"get", "lang_name"}).out, "en\n");
    EXPECT_EQ(cfgctl({"get", "lang_name", "--json"}).out,
              "{\n  \"key\": \"lang_name\",\n  \"value\": \"en\"\n}\n");
    const Outcome absent = cfgctl({"get", "absent"});
    EXPECT_EQ(absent.result, 1);
    EXPECT_EQ(absent.out, "");
    EXPECT_EQ(absent.err, "cfgctl: no value of absent can be read\n");
}

TEST_F(CfgctlTest, SetStoresAppliesAndSaves)
{
    const Outcome set = cfgctl({"set", "io_speaker_volume", "31"});
    EXPECT_EQ(set.result, 0);
    EXPECT_EQ(set.out, "");
    EXPECT_EQ(commands(), "demo_MXSetSpeakerVol_ 50\n");
    EXPECT_THAT(read_file("/flash/param"), HasSubstr("io_speaker_volume=31\n"));
}

TEST_F(CfgctlTest, SetCanLeaveOutApplyingAndSaving)
{
    EXPECT_EQ(cfgctl({"set", "io_speaker_volume", "31", "--no-apply", "--no-save"}).result, 0);
    EXPECT_EQ(commands(), "");
    EXPECT_EQ(read_file("/flash/param"), "");
    EXPECT_EQ(cfgctl({"get", "io_speaker_volume"}).out, "31\n");
    EXPECT_EQ(cfgctl({"set", "--", "any_key", "--text"}).result, 0);
    EXPECT_EQ(cfgctl({"get", "any_key"}).out, "--text\n");
}

TEST_F(CfgctlTest, SetRefusesWhatTheSetterWouldRefuse)
{
    for (const std::string value : {"2", "-1", "on", "", "1x", "4294967297"}) {
        const Outcome set = cfgctl({"set", "io_mic_enable", value});
        EXPECT_EQ(set.result, 2) << value;
        EXPECT_EQ(set.err, "cfgctl: io_mic_enable takes a number from 0 to 1, not " + value + "\n");
    }
    EXPECT_EQ(cfgctl({"get", "io_mic_enable"}).out, "1\n");
    EXPECT_EQ(commands(), "");
}

TEST_F(CfgctlTest, SetThatCannotBeAppliedIsNotSaved)
{
    run_program({"param", "unset", "io_speaker_volume"});
    const Outcome set = cfgctl({"set", "io_speaker_enable", "1"});
    EXPECT_EQ(set.result, 4);
    EXPECT_THAT(set.err, HasSubstr("cfg_setSpeakerEnable failed; nothing is saved"));
    EXPECT_EQ(read_file("/flash/param"), "");
}

TEST_F(CfgctlTest, SetThatCannotBeStoredChangesNothing)
{
    write_file("/flash/param/in-the-way", "");
    const Outcome set = cfgctl({"set", "io_mic_enable", "0"});
    EXPECT_EQ(set.result, 3);
    EXPECT_EQ(commands(), "");
}

TEST_F(CfgctlTest, RestoreAppliesOneOrAll)
{
    EXPECT_EQ(cfgctl({"restore", "io_speaker_volume"}).out, "io_speaker_volume  ok\n");
    EXPECT_EQ(commands(), "demo_MXSetSpeakerVol_ 40\n");

    run_program({"param", "unset", "io_speaker_volume"});
    const Outcome all = cfgctl({"restore", "--all"});
    EXPECT_EQ(all.result, 4);
    EXPECT_THAT(all.out, testing::StartsWith("io_mic_enable              ok\n"
                                             "io_speaker_volume          failed\n"
                                             "io_speaker_enable          failed\n"));
    EXPECT_THAT(all.err, HasSubstr("[cfg_restoreSpeakerVolume #] param_get fail\n"));

    EXPECT_EQ(cfgctl({"restore", "lang_name"}).result, 1);
    EXPECT_EQ(cfgctl({"restore"}).result, 2);
    EXPECT_EQ(cfgctl({"restore", "--all", "io_mic_enable"}).result, 2);
}

TEST_F(CfgctlTest, ShowListsSettingsWithWhatAppliesThem)
{
    run_program({"param", "unset", "io_speaker_enable"});
    EXPECT_EQ(cfgctl({"show", "io_sp"}).out,
              "KEY                FAMILY  VALUE  APPLIED BY\n"
              "io_speaker_volume  audio   27     cfg_setSpeakerVolume, media command\n"
              "io_speaker_enable  audio   -      cfg_setSpeakerEnable, speaker volume restorer\n");
    EXPECT_THAT(cfgctl({"show", "--json"}).out, HasSubstr("\"value\": null"));
    EXPECT_EQ(cfgctl({"show", "nothing"}).result, 1);
}

TEST_F(CfgctlTest, BoardPrintsIdentityAndFeatures)
{
    write_script("/tmp/bin/board", "case $1 in boardid) echo xq7h0c;; sn) echo 42;; *) echo 280;;"
                                   " esac");
    EXPECT_EQ(cfgctl({"board"}).out, "boardid             xq7h0c\n"
                                     "sn                  42\n"
                                     "hwver               280\n"
                                     "slip_ring           1\n"
                                     "ethernet            1\n"
                                     "differential_audio  0\n"
                                     "wled                0\n"
                                     "rlamp               0\n");
    write_script("/tmp/bin/board", "[ $1 = sn ] && echo 42");
    const Outcome partly = cfgctl({"board", "--json"});
    EXPECT_EQ(partly.result, 1);
    EXPECT_THAT(partly.out, HasSubstr("\"boardid\": null"));
    EXPECT_THAT(partly.out, HasSubstr("\"sn\": \"42\""));
    EXPECT_THAT(partly.err, HasSubstr("[cfg_getBoardInfo #] fgets fail"));
}

TEST_F(CfgctlTest, SoundsReportOnStandardErrorOnly)
{
    const Outcome sound = cfgctl({"alert", "/audio/bark.wav"});
    EXPECT_EQ(sound.result, 0);
    EXPECT_EQ(sound.out, "");
    EXPECT_THAT(sound.err, HasSubstr("alert\t# cmd nice -n -20 demo_MXWavPlayer_ /audio/bark.wav"));
    EXPECT_EQ(cfgctl({"alert", std::string(300, 'p')}).result, 4);
    EXPECT_EQ(cfgctl({"prompt", std::string(300, 'n')}).result, 4);
    EXPECT_EQ(cfgctl({"prompt", "hello.aac"}).result, 0);
    EXPECT_THAT(commands(), testing::EndsWith("demo_MXAacPlayer_ /audio/hello.aac\n"));
}

TEST_F(CfgctlTest, UsageErrorsSayWhatIsWrong)
{
    EXPECT_EQ(cfgctl({}).result, 2);
    const Outcome verb = cfgctl({"frobnicate"});
    EXPECT_EQ(verb.result, 2);
    EXPECT_THAT(verb.err, HasSubstr("no verb frobnicate"));
    const Outcome option = cfgctl({"get", "--no-save", "x"});
    EXPECT_EQ(option.result, 2);
    EXPECT_THAT(option.err, HasSubstr("no option --no-save\nusage: cfgctl get KEY\n"));
    EXPECT_EQ(cfgctl({"get"}).result, 2);
    EXPECT_EQ(cfgctl({"get", "a", "b"}).result, 2);
    EXPECT_EQ(verb.out + option.out, "");
}

TEST_F(CfgctlTest, HelpAndVersionAreData)
{
    const Outcome help = cfgctl({"--help"});
    EXPECT_EQ(help.result, 0);
    for (const std::string verb : {"get", "set", "restore", "show", "board", "prompt", "alert"})
        EXPECT_THAT(help.out, HasSubstr("cfgctl " + verb));
    EXPECT_THAT(cfgctl({"set", "--help"}).out,
                HasSubstr("usage: cfgctl set [--no-save] [--no-apply] KEY VALUE\n"));
    EXPECT_THAT(cfgctl({"--version"}).out, testing::MatchesRegex("cfgctl [0-9]+\\.[0-9.]+\n"));
}

TEST_F(CfgctlTest, OutputThatCannotBeWrittenIsAFailure)
{
    write_file("/tmp/full", "");
    const Outcome outcome =
        run_program({"/bin/sh", "-c", "${EMULATOR:-} /tests/cfgctl get lang_name >/dev/full"});
    EXPECT_EQ(outcome.result, 1);
    EXPECT_THAT(outcome.err, HasSubstr("cannot write standard output"));
}
