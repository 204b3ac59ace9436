// The frame: stored numbers, bounded text, and the small utilities.

#include "doubles.h"
#include "settings/frame.h"

using namespace doubles;

class FrameTest : public LibraryTest
{
};

TEST_F(FrameTest, NumbersAreTheSameOnBothWordWidths)
{
    EXPECT_EQ(to_number("27", 10), 27U);
    EXPECT_EQ(to_number(" 1x", 10), 1U);
    EXPECT_EQ(to_number("abc", 10), 0U);
    EXPECT_EQ(to_number("", 10), 0U);
    EXPECT_EQ(to_number("-1", 10), UINT32_MAX);
    EXPECT_EQ(to_number("4294967295", 10), UINT32_MAX);
    // Wider than 32 bits must not come back as a small, valid number.
    EXPECT_EQ(to_number("4294967297", 10), UINT32_MAX);
    EXPECT_EQ(to_number("99999999999999999999999", 10), UINT32_MAX);
    EXPECT_EQ(to_number("0x56ca", 16), 0x56CAU);
    EXPECT_EQ(to_number("280 rev b", 16), 0x280U);
}

TEST_F(FrameTest, IntegersAreTheSameOnBothWordWidths)
{
    EXPECT_EQ(to_int("-12x"), -12);
    EXPECT_EQ(to_int("x"), 0);
    EXPECT_EQ(to_int("4294967297"), INT32_MAX);
    EXPECT_EQ(to_int("-99999999999999999999999"), INT32_MIN);
}

TEST_F(FrameTest, RefusalsOfTheStoreAreReportedForTheCaller)
{
    char text[4] = "was";
    refused = {"set key"};
    const Outcome fail = observe([&] {
        return stored_text("key", text, sizeof text, "caller", 7) ||
               put_setting("key", "value", "caller", 8);
    });
    EXPECT_EQ(fail.result, 0);
    EXPECT_EQ(fail.out, "[caller #] param_get fail\n[caller #] param_set fail\n");
    EXPECT_STREQ(text, "was");

    refused.clear();
    EXPECT_TRUE(put_setting("key", "value", "caller", 9));
    EXPECT_TRUE(stored_text("key", text, sizeof text, "caller", 9));
    EXPECT_STREQ(text, "val");
}

TEST_F(FrameTest, FormatTellsACutTextAndTerminatesIt)
{
    char buffer[4] = "xxx";
    EXPECT_TRUE(format(buffer, sizeof buffer, "%s", "abc"));
    EXPECT_STREQ(buffer, "abc");
    EXPECT_FALSE(format(buffer, sizeof buffer, "%s", "abcd"));
    EXPECT_STREQ(buffer, "abc");
}

TEST_F(FrameTest, ToLowerTakesExactlyItsLength)
{
    char buffer[] = "AB\0CDh\xc4";
    toLower(buffer, 0);
    EXPECT_EQ(std::string(buffer, 7), std::string("AB\0CDh\xc4", 7));
    toLower(buffer, 4);
    EXPECT_EQ(std::string(buffer, 7), std::string("ab\0cDh\xc4", 7));
    toLower(buffer, 7);
    EXPECT_EQ(std::string(buffer, 7), std::string("ab\0cdh\xc4", 7));
}

TEST_F(FrameTest, LanguageFileIsCutAtItsFirstLineEnd)
{
    char buffer[10] = "kept";
    EXPECT_EQ(get_from_lang_file(buffer, 7), -1);
    EXPECT_STREQ(buffer, "kept");
    for (const auto &[text, language] : std::map<std::string, std::string>{
             {"en\r\n", "en"}, {"en\nde", "en"}, {"portuguese", "portugu"}, {"", ""}}) {
        write_file("/mnt/sdcard/morvenix/lang", text);
        memset(buffer, 0, sizeof buffer);
        buffer[8] = '\n'; // past what it reads
        EXPECT_EQ(get_from_lang_file(buffer, 7), 0);
        EXPECT_EQ(buffer, language);
        EXPECT_EQ(buffer[8], '\n');
    }
}

TEST_F(FrameTest, FileCheckAsksForAReadableFile)
{
    EXPECT_EQ(file_check(nullptr), 0);
    EXPECT_EQ(file_check("/tmp/none"), 0);
    write_file("/tmp/some", "");
    EXPECT_EQ(file_check("/tmp/some"), 1);
    EXPECT_TRUE(calls.empty());
}

TEST_F(FrameTest, FirstLineOfACommand)
{
    char line[8] = "kept";
    EXPECT_FALSE(command_line("true", line, sizeof line));
    popen_error = 12;
    EXPECT_FALSE(command_line("echo a", line, sizeof line));
    EXPECT_STREQ(line, "kept");
    popen_error = 0;
    EXPECT_TRUE(command_line("echo a b; echo c", line, sizeof line));
    EXPECT_STREQ(line, "a b\n");
    EXPECT_TRUE(command_line("yes abcdefghij", line, sizeof line));
    EXPECT_STREQ(line, "abcdefg");
}

TEST_F(FrameTest, LinesAndBlocksOfFilesFitTheirBuffers)
{
    char text[5] = "kept";
    EXPECT_FALSE(file_line("/proc/none", text, sizeof text));
    EXPECT_EQ(file_block("/proc/none", text, sizeof text), -1);
    write_file("/proc/empty", "");
    EXPECT_TRUE(file_line("/proc/empty", text, sizeof text));
    EXPECT_STREQ(text, "kept");
    EXPECT_EQ(file_block("/proc/empty", text, sizeof text), 0);
    EXPECT_STREQ(text, "");

    write_file("/proc/value", "1\n23456789");
    EXPECT_TRUE(file_line("/proc/value", text, sizeof text));
    EXPECT_STREQ(text, "1\n");
    EXPECT_EQ(file_block("/proc/value", text, sizeof text), 4);
    EXPECT_STREQ(text, "1\n23");
    EXPECT_EQ(file_block("/proc", text, sizeof text), 0) << "a folder cannot be read";
}

TEST_F(FrameTest, PutFileReplacesWhatWasThere)
{
    write_file("/proc/value", "longer");
    EXPECT_TRUE(put_file("/proc/value", "2", 2));
    EXPECT_EQ(read_file("/proc/value"), std::string("2\0", 2));
    EXPECT_FALSE(put_file("/proc", "2", 2));
}
