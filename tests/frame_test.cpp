// The frame: stored numbers, bounded text, and the small utilities. What every
// setting's test sees of it is not repeated here.

#include "doubles.h"
#include "settings/stored.h"

using namespace cfg_set;
using namespace doubles;
using FrameTest = LibraryTest;

// clang-format off

TEST_F(FrameTest, NumbersAreTheSameOnBothWordWidths)
{
    for (const auto &[text, number] : std::map<std::string, uint32_t>{
             {"27", 27}, {" 1x", 1}, {"010", 10}, {"abc", 0}, {"", 0}, {"0x10", 0}, {"-1", UINT32_MAX}, {" \t\n\v\f\r-2", UINT32_MAX - 1},
             {"-4294967295", 1}, {"-4294967296", UINT32_MAX}, {"-99999999999999999999", UINT32_MAX}, {"2147483648", 2147483648},
             {"4294967294", UINT32_MAX - 1}, {"4294967297", UINT32_MAX}, {"99999999999999999999999", UINT32_MAX}})
        EXPECT_EQ(to_number(text.c_str(), 10), number) << text;
    EXPECT_EQ(to_number("0x56ca rev b", 16), 0x56CAU);
    for (const auto &[text, number] : std::map<std::string, int>{
             {"-12x", -12}, {"x", 0}, {"010", 10}, {"2147483648", INT32_MAX}, {"4294967297", INT32_MAX}, {"2147483647", INT32_MAX},
             {"-2147483648", INT32_MIN}, {"-2147483649", INT32_MIN}, {"-99999999999999999999999", INT32_MIN}})
        EXPECT_EQ(to_int(text.c_str()), number) << text;
    int number;
    EXPECT_STREQ(scan_number("}{ 99999999999x", "}{", &number), "x");
    EXPECT_EQ(scan_number("{x", "{", &number), nullptr);
    EXPECT_EQ(number, INT32_MAX) << "kept";
}

static std::string got(const char *command)
{
    char line[5] = "kept";
    const int any = command_line(command, line, sizeof line);
    return words(any, line);
}

// Three lines of "abcdef\n", of which a signal (or an error) comes before each byte.
static std::string pieces(int error)
{
    struct Bytes {
        int error;
        size_t reads;
    } bytes = {error, 0};
    const auto read = [](void *cookie, char *buffer, size_t) -> ssize_t {
        auto &[failure, reads] = *static_cast<Bytes *>(cookie);
        if (reads++ % 2 == 0)
            return errno = failure, -1;
        return static_cast<ssize_t>(std::string("abcdef\n").copy(buffer, 1, std::min<size_t>(reads / 2 - 1, 7)));
    };
    FILE *stream = fopencookie(&bytes, "r", {read, nullptr, nullptr, nullptr});
    std::string said;
    char line[5] = "kept";
    for (int i = 0; i < 3; i++) {
        const int result = read_line(stream, line, sizeof line);
        said += (i > 0 ? " " : "") + words(result, line);
    }
    fclose(stream);
    return said;
}

static size_t written(size_t size)
{
    FILE *file = open_unbuffered("/proc/value", "we");
    const size_t count = file ? fwrite(std::string(size, 'x').c_str(), 1, size, file) : 0;
    param_save(); // is told after the write
    return file ? count + static_cast<size_t>(fclose(file)) : count;
}

TEST_F(FrameTest, CommandsAndFiles)
{
    drivers = true;
    check({
        {{{"$ a", "abcde"}}, {}, CALL(got("a")), "1 abcd", {"popen a"}, ""},
        {{{"$ a", ""}}, {}, CALL(got("a")), "0 kept", {"popen a"}, ""},
        {{}, {"popen a"}, CALL(got("a")), "-2 kept", {"popen a"}, ""},
        {{}, {}, CALL(pieces(EINTR)), "1 abcd 1 ef\n 0 ef\n", {}, ""},
        {{}, {}, CALL(pieces(EIO)), "-1  -1  -1 ", {}, ""},
        {{{"/tmp/value", "longer"}}, {}, CALL(put_file("/tmp/value", "2", 2)), 1, {"wrote /tmp/value 2\\0"}, ""},
        {{}, {}, CALL(put_file("/tmp", "2", 2)), 0, {}, ""},
        {{}, {}, CALL(written(5000)), 5000, {"fopen /proc/value w", "write " + std::string(5000, 'x'), "save", "fclose"}, ""},
        {{{"/proc/value/", ""}}, {}, CALL(written(1)), 0, {"save"}, ""},
        {{}, {"set key"}, CALL_AS(caller, put_setting("key", "v", "caller", 7)), 0, {"set key=v"}, "param_set fail"},
        {{}, {}, CALL_AS(caller, result_of("setter", 1, "caller", 7)), -1, {}, "setter fail"},
        {{{"/tmp/some", ""}}, {}, CALL(words(file_check(nullptr), file_check("/tmp/none"), file_check("/tmp/some"))), "0 0 1", {}, ""},
    });
}

TEST_F(FrameTest, WordsOfACommandLineAreWhatTheShellTakesThemFor)
{
    for (int character = 1; character < 256; character++) {
        const std::string text = {'a', static_cast<char>(character), 'z'};
        const bool acts = character < ' ' || character == 0x7f || strchr(";&|<>()$`\\\"'*?[", character);
        EXPECT_EQ(harmless(text.c_str(), SOUND_WORD), !acts) << character;
        for (const Word kind : {ZONE_WORD, SERVER_WORD})
            EXPECT_EQ(harmless(text.c_str(), kind), !acts && !strchr(" ~#", character)) << character;
    }
    // Sound, zone, server.
    for (const auto &[text, good] : std::map<std::string, std::string>{
             {"", "111"}, {"-a", "010"}, {"a-", "111"}, {"a -b", "100"}, {"~a", "000"}, {"a ~", "000"}, {"a #1", "000"}, {"#1", "000"},
             {"..", "101"}, {"../a", "101"}, {"/..", "101"}, {"a//../b", "101"}, {"a/..", "101"}, {"a..", "101"},
             {"a/.b", "111"}, {".", "111"}})
        EXPECT_EQ(word(harmless(text.c_str(), SOUND_WORD)) + word(harmless(text.c_str(), ZONE_WORD)) +
                      word(harmless(text.c_str(), SERVER_WORD)), good) << text;
}

TEST_F(FrameTest, TextsEndWhereTheirBuffersDo)
{
    char buffer[] = "AZ\0BCD";
    toLower(buffer, 0);
    EXPECT_STREQ(buffer, "AZ");
    toLower(buffer, 4);
    EXPECT_EQ(std::string(buffer, 6), std::string("az\0bCD", 6));
    EXPECT_TRUE(format(buffer, 4, "%s", "abc") && !format(buffer, 4, "%s", "abcd"));
    write_file("/mnt/sdcard/morvenix/other", "");
    EXPECT_EQ(get_from_lang_file(buffer, 7), -1);
    EXPECT_STREQ(buffer, "abc");
    EXPECT_EQ(file_block("/tmp", buffer, 4), 0) << "a folder can be opened, not read";
    EXPECT_STREQ(buffer, "");
    for (const auto &[text, language] : std::map<std::string, std::string>{
             {"portuguese", "portugu\n"}, {"en\r\n", "en"}, {"e\nde", "e"}, {"", "kept"}}) {
        char name[] = "kept\0\0\0\n"; // a line end past what it reads
        write_file("/mnt/sdcard/morvenix/lang", text);
        EXPECT_EQ(get_from_lang_file(name, 7), 0);
        EXPECT_EQ(name, language);
    }
}
