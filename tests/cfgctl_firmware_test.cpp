// cfgctl's firmware, speech and crc, as a program.

#include "harness.h"

#include <cstdlib>
#include <fcntl.h>
#include <unistd.h>

using testing::HasSubstr;

constexpr char IMAGE[] = "/tests/firmware.img"; // made by mkimage for xq7h0c

class CfgctlFirmwareTest : public CameraTest
{
  protected:
    void SetUp() override
    {
        CameraTest::SetUp();
        write_script("/tmp/bin/board", "echo xq7h04");
    }
};

static Outcome check(const std::string &bytes)
{
    write_file("/tmp/image", bytes);
    return cfgctl({"firmware", "check", "/tmp/image"});
}

TEST_F(CfgctlFirmwareTest, CheckSaysWhichCheckFailedAndWhy)
{
    std::string image = read_file(IMAGE);
    const Outcome good = check(image);
    EXPECT_EQ(good.result, 0);
    EXPECT_EQ(good.out, "board   ok\nheader  ok\nimage   ok\n");
    EXPECT_EQ(good.err, "");

    image[64] ^= 1;
    const Outcome body = check(image);
    EXPECT_EQ(body.result, 1);
    EXPECT_THAT(body.out, testing::MatchesRegex("board   ok\nheader  ok\nimage   failed  its "
                                                "checksum is [0-9a-f]+, the header states "
                                                "[0-9a-f]+\n"));
    EXPECT_THAT(body.err, HasSubstr("[checkImageChecksum #] image checksum not match"));

    image[63] ^= 1;
    EXPECT_THAT(check(image).out,
                testing::MatchesRegex("board   ok\nheader  failed  its checksum is [0-9a-f]+, "
                                      "the header states [0-9a-f]+\n"));
    image[37] = '8';
    const Outcome board = check(image);
    EXPECT_EQ(board.result, 1);
    EXPECT_EQ(board.out, "board  failed  it is for \"xq7h08\", this board is \"xq7h04\"\n");
    EXPECT_EQ(cfgctl({"firmware", "check", "/tmp/image", "--json"}).out,
              "{\n  \"file\": \"/tmp/image\",\n  \"ok\": false,\n  \"board\": false,\n"
              "  \"header\": null,\n  \"image\": null,\n"
              "  \"why\": \"it is for \\\"xq7h08\\\", this board is \\\"xq7h04\\\"\"\n}\n");
    write_script("/tmp/bin/board", "");
    EXPECT_EQ(check(image).out, "board  failed  the board does not tell its id\n");
}

TEST_F(CfgctlFirmwareTest, CheckOfAPartOrOfNoImage)
{
    EXPECT_EQ(cfgctl({"firmware", "check", IMAGE, "--limit", "5064"}).result, 0);
    const Outcome part = cfgctl({"firmware", "check", IMAGE, "--limit", "5063", "--json"});
    EXPECT_EQ(part.result, 1);
    EXPECT_THAT(part.out, HasSubstr("\"header\": true,\n  \"image\": false"));
    EXPECT_EQ(check(std::string(63, 'x')).err,
              "cfgctl: /tmp/image is shorter than the header of an image\n");
    EXPECT_EQ(cfgctl({"firmware", "check", "/tmp"}).err, "cfgctl: /tmp cannot be read\n");
    EXPECT_EQ(cfgctl({"firmware", "check", "/none"}).err,
              "cfgctl: /none: No such file or directory\n");
    EXPECT_EQ(cfgctl({"firmware", "check", "/none"}).result, 1);
}

TEST_F(CfgctlFirmwareTest, VersionsAndDownloads)
{
    EXPECT_EQ(cfgctl({"firmware", "newer", "v5.0.45"}).out, "newer\n");
    const Outcome equal = cfgctl({"firmware", "newer", "v5.0.44", "--json"});
    EXPECT_EQ(equal.result, 1);
    EXPECT_THAT(equal.out, HasSubstr("\"newer\": false"));

    write_file("/mnt/sdcard/upgrade/upgrade.dat", "v5.1.0\n");
    write_file("/mnt/sdcard/upgrade/upgrade.bin", "image");
    EXPECT_EQ(cfgctl({"firmware", "downloaded"}).out, "v5.1.0\n");
    EXPECT_EQ(cfgctl({"firmware", "downloaded", "--json"}).out,
              "{\n  \"version\": \"v5.1.0\"\n}\n");
    std::remove("/mnt/sdcard/upgrade/upgrade.bin");
    const Outcome gone = cfgctl({"firmware", "downloaded"});
    EXPECT_EQ(gone.result, 1);
    EXPECT_EQ(gone.out, "");
    EXPECT_THAT(gone.err, HasSubstr("no newer firmware is downloaded"));
    EXPECT_NE(access("/mnt/sdcard/upgrade/upgrade.dat", F_OK), 0);
}

TEST_F(CfgctlFirmwareTest, SpeechTellsWhetherItIsUnpacked)
{
    write_file("/etc_ro/param.default", "lang_name=\nspeech_version=3\n");
    const Outcome none = cfgctl({"speech"});
    EXPECT_EQ(none.result, 1);
    EXPECT_EQ(none.out, "language  EN\nunpacked  no\n");
    write_file("/mnt/sdcard/morvenix/download/speech3_EN.tgz", "");
    const Outcome unpacked = cfgctl({"speech", "--json"});
    EXPECT_EQ(unpacked.result, 0);
    EXPECT_EQ(unpacked.out, "{\n  \"language\": \"EN\",\n  \"unpacked\": true\n}\n");
}

TEST_F(CfgctlFirmwareTest, CrcOfAFile)
{
    write_file("/tmp/digits", "xx123456789yy");
    EXPECT_EQ(cfgctl({"crc", "/tmp/digits", "--skip", "2", "--limit", "11"}).out, "cbf43926\n");
    EXPECT_EQ(cfgctl({"crc", "/tmp/digits", "--json"}).out,
              "{\n  \"file\": \"/tmp/digits\",\n  \"crc\": \"ac64768d\"\n}\n");
    EXPECT_EQ(cfgctl({"crc", "/tmp"}).err, "cfgctl: /tmp cannot be read\n");
    EXPECT_EQ(cfgctl({"crc", "/none"}).result, 1);
}

TEST_F(CfgctlFirmwareTest, WrongUsageIsRefused)
{
    using Words = std::vector<std::string>;
    for (const Words &words :
         {Words{"firmware", "check"}, Words{"firmware", "burn", "x"},
          Words{"firmware", "check", IMAGE, "--limit", "x"},
          Words{"firmware", "newer", "v6.0.0", "--limit", "1"}, Words{"firmware", "newer", "6.0.0"},
          Words{"firmware", "newer", "v6.0"}, Words{"firmware", "downloaded", "x"},
          Words{"crc", IMAGE, "--limit", "4294967296"}}) {
        const Outcome outcome = cfgctl(words);
        EXPECT_EQ(outcome.result, 2) << words[1];
        EXPECT_EQ(outcome.out, "");
    }
    EXPECT_EQ(cfgctl({"crc", IMAGE, "--skip", "512"}).err,
              "cfgctl: --skip takes a number from 0 to 511, not 512\n");
}

TEST_F(CfgctlFirmwareTest, SlowFilesShowProgressOnATerminalAlone)
{
    const int terminal = posix_openpt(O_RDWR | O_NOCTTY);
    ASSERT_EQ(grantpt(terminal), 0);
    ASSERT_EQ(unlockpt(terminal), 0);
    write_script("/tmp/slow", "head -c 500 /dev/zero; sleep 1.2; head -c 250 /dev/zero\n"
                              "sleep 0.2; head -c 250 /dev/zero");
    const Outcome slow =
        run_program({"/bin/sh", "-c",
                     std::string("mkfifo /tmp/a /tmp/b; /tmp/slow >/tmp/a & /tmp/slow >/tmp/b &\n"
                                 "crc='/tests/cfgctl crc --limit 1000'\n"
                                 "${EMULATOR:-} $crc /tmp/b & ${EMULATOR:-} $crc /tmp/a 2>") +
                         ptsname(terminal) + "; wait"});
    EXPECT_EQ(slow.out, "060b1780\n060b1780\n");
    EXPECT_EQ(slow.err, "");
    char shown[512] = "";
    fcntl(terminal, F_SETFL, O_NONBLOCK);
    EXPECT_GT(read(terminal, shown, sizeof shown - 1), 0);
    EXPECT_THAT(shown, testing::HasSubstr("\r[##############################          ]  75%"));
    EXPECT_THAT(shown, testing::EndsWith("\r\033[K"));
    close(terminal);
}
