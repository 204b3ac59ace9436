// The desk camera's recorder, relay client, log and store tool.

#include "desk/log.h"
#include "harness.h"
#include "platform/relay_ipc.h"
#include "platform/viewer_relay.h"

#include <algorithm>
#include <cstring>
#include <unistd.h>

using testing::ElementsAre;

class DeskTest : public CameraTest
{
};

// The log's lines without their time.
static std::vector<std::string> logged()
{
    std::vector<std::string> lines;
    std::istringstream log(read_file("/var/log/camera.log"));
    for (std::string line; std::getline(log, line);) {
        EXPECT_THAT(line.substr(0, 13),
                    testing::MatchesRegex("[0-9][0-9]:[0-9][0-9]:[0-9][0-9]\\.[0-9]+ "));
        lines.push_back(line.substr(13));
    }
    return lines;
}

TEST_F(DeskTest, RecorderRecordsItsArgumentsExactly)
{
    const Outcome outcome =
        run_program({"/bin/sh", "-c",
                     "killall -37 capture; ntpd 'a b' '' \"it's\" 'x\ny\\' 'tab\t'; udhcpc &"
                     " wait"});
    EXPECT_EQ(outcome.result, 0);
    EXPECT_EQ(outcome.out + outcome.err, "");
    EXPECT_THAT(logged(),
                ElementsAre("run killall -37 capture",
                            R"(run ntpd 'a b' '' 'it'\''s' $'x\ny\\' $'tab\t')", "run udhcpc"));
}

TEST_F(DeskTest, RecorderBehavesAsItsScriptSays)
{
    write_file("/etc/desk/AudioCheck", "echo \"$1/$2\"; exit 3\n");
    const Outcome outcome = run_program({"/bin/sh", "-c", "AudioCheck 32000 'a b'"});
    EXPECT_EQ(outcome.result, 3);
    EXPECT_EQ(outcome.out, "32000/a b\n");
}

TEST_F(DeskTest, RelayLogsWhatItIsGiven)
{
    void *handle = appipc_init("libmorvenix");
    ASSERT_NE(handle, nullptr);
    char message[12];
    appipc_set_uint32(message, 8);
    memcpy(message + 4, "{\"a\":\n}", 8);
    EXPECT_EQ(appipc_send(handle, 0, 18, sizeof message, message), 0);
    appipc_destroy(handle);

    viewer_relay_msg viewer{};
    viewer.command = VIEWER_RELAY_ADD;
    strcpy(viewer.name, "Ann B");
    memset(viewer.passcode, 'p', sizeof viewer.passcode); // without a terminator
    viewer.once = 1;
    EXPECT_EQ(msg2relay(&viewer), 0);

    EXPECT_THAT(logged(),
                ElementsAre("relay connected libmorvenix",
                            "relay sent type=18 option=0 bytes=12 length=8 {\"a\":\\n}\\x00",
                            "relay closed",
                            "relay viewer add name='Ann B' passcode=" + std::string(32, 'p') +
                                " credential='' once=1"));
}

TEST_F(DeskTest, RelayCanBeDown)
{
    write_file("/etc/desk/relay.down", "");
    EXPECT_EQ(appipc_init("x"), nullptr);
    const viewer_relay_msg viewer{};
    EXPECT_NE(msg2relay(&viewer), 0);
}

TEST_F(DeskTest, ParamToolReadsAndChangesTheStore)
{
    write_file("/etc_ro/param.default", "lang_name=en\n");
    EXPECT_EQ(run_program({"param", "get", "lang_name"}).out, "en\n");
    EXPECT_EQ(run_program({"param", "get", "absent"}).result, 1);
    EXPECT_EQ(run_program({"param", "set", "a", "line 1\nline 2"}).result, 0);
    EXPECT_EQ(run_program({"param", "list"}).out, "a=line 1\\nline 2\nlang_name=en\n");
    EXPECT_EQ(run_program({"param", "unset", "a"}).result, 0);
    EXPECT_EQ(run_program({"param", "save"}).result, 0);
    EXPECT_EQ(read_file("/flash/param"), "lang_name=en\n");
    EXPECT_EQ(run_program({"param", "set", "a=b", "c"}).result, 3);
    EXPECT_EQ(run_program({"param", "get"}).result, 2);
    EXPECT_EQ(run_program({"param", "frobnicate"}).result, 2);
    EXPECT_THAT(logged(),
                ElementsAre("store set a=line 1\\nline 2", "store unset a", "store saved"));
}

TEST_F(DeskTest, ProgramsRefuseToRunWithoutTheMarkOfACameraRoot)
{
    ASSERT_EQ(unlink("/.camera-root"), 0);
    for (const std::string program : {"param", "cfgctl", "recorder", "frame_test"}) {
        const Outcome outcome = run_program({program, "--help"});
        EXPECT_EQ(outcome.result, 126) << program;
        EXPECT_EQ(outcome.out, "");
        EXPECT_THAT(outcome.err, testing::HasSubstr("not in a camera root"));
    }
}
