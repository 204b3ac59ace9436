// The desk camera's recorder, store tool and guard.

#include "harness.h"

#include <regex>
#include <unistd.h>

class DeskTest : public CameraTest
{
};

// The log without what differs from run to run.
static std::string logged()
{
    static const std::regex STAMP(R"((^|\n)\d\d:\d\d:\d\d\.\d{6} )");
    static const std::regex LASTED(R"(, \d+\.\d{3} ms)");
    const std::string log = read_file("/var/log/camera.log");
    return std::regex_replace(std::regex_replace(log, STAMP, "$1"), LASTED, "");
}

TEST_F(DeskTest, RecorderRecordsItsArgumentsAndBehavesAsItsScriptSays)
{
    write_file("/etc/desk/trace", "");
    write_file("/etc/desk/AudioCheck", "echo \"$1/$2\"; exit 3\n");
    const Outcome outcome = run_program(
        {"/bin/sh", "-c", "ntpd 'a b' '' \"it's\" 'x\ny\\' 'tab\t'; AudioCheck 32000 'a b'"});
    EXPECT_EQ(outcome.result, 3);
    EXPECT_EQ(outcome.out + outcome.err, "32000/a b\n");
    const std::string line = R"(ntpd 'a b' '' 'it'\''s' $'x\ny\\' $'tab\t')";
    EXPECT_EQ(logged(), "run " + line + "\nend " + line + " (exit 0)\n" +
                            "run AudioCheck 32000 'a b'\nend AudioCheck 32000 'a b' (exit 3)\n");
}

TEST_F(DeskTest, ParamToolReadsAndChangesTheStore)
{
    write_file("/etc_ro/param.default", "lang_name=en\n");
    // clang-format off
    const std::tuple<std::string, int, std::string> rows[] = {
        {"get lang_name", 0, "en\n"}, {"get absent", 1, ""}, {"set a 'line 1\nline 2'", 0, ""},
        {"list", 0, "a=line 1\\nline 2\nlang_name=en\n"}, {"unset a", 0, ""}, {"save", 0, ""},
        {"set a=b c", 3, ""}, {"get", 2, ""}};
    // clang-format on
    for (const auto &[words, result, out] : rows) {
        const Outcome outcome = run_program({"/bin/sh", "-c", "$EMULATOR /tests/param " + words});
        EXPECT_EQ(outcome.result, result) << words;
        EXPECT_EQ(outcome.out, out) << words;
    }
    EXPECT_EQ(logged(), "store set a=line 1\\nline 2\nstore unset a\nstore saved\n");
}

TEST_F(DeskTest, ProgramsRefuseToRunWithoutTheMarkOfACameraRoot)
{
    ASSERT_EQ(unlink("/.camera-root"), 0);
    for (const std::string program : {"param", "cfgctl", "recorder", "receivers"}) {
        const Outcome outcome = run_program({program, "--help"});
        EXPECT_EQ(outcome.result, 126) << program;
        EXPECT_EQ(outcome.out, "");
        EXPECT_THAT(outcome.err, testing::HasSubstr("not in a camera root"));
    }
    EXPECT_EQ(logged(), "");
}
