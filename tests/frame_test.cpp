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
    char buffer[8];
    const auto read_language = [&](size_t size) {
        memset(buffer, 0, sizeof buffer);
        return observe([&] { return get_from_lang_file(buffer, size); });
    };

    EXPECT_EQ(read_language(7).result, -1);
    EXPECT_STREQ(buffer, "");

    const char *const file = "/mnt/sdcard/morvenix/lang";
    write_file(file, "en\r\n");
    EXPECT_EQ(read_language(7).result, 0);
    EXPECT_STREQ(buffer, "en");

    write_file(file, "en\nde");
    EXPECT_EQ(read_language(7).result, 0);
    EXPECT_STREQ(buffer, "en");

    write_file(file, "portuguese\n");
    EXPECT_EQ(read_language(7).result, 0);
    EXPECT_STREQ(buffer, "portugu");

    write_file(file, "");
    EXPECT_EQ(read_language(7).result, 0);
    EXPECT_STREQ(buffer, "");
}

TEST_F(FrameTest, LanguageFileDoesNotLookPastWhatItRead)
{
    write_file("/mnt/sdcard/morvenix/lang", "en");
    char buffer[] = "xx\nxx";
    EXPECT_EQ(get_from_lang_file(buffer, 2), 0);
    EXPECT_STREQ(buffer, "en\nxx");
}

TEST_F(FrameTest, FileCheckAsksForAReadableFile)
{
    EXPECT_EQ(file_check(nullptr), 0);
    EXPECT_EQ(file_check("/tmp/none"), 0);
    write_file("/tmp/some", "");
    EXPECT_EQ(file_check("/tmp/some"), 1);
    EXPECT_TRUE(calls.empty());
}
