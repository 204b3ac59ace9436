// Firmware images: a real one, made by mkimage for the board xq7h0c, and what
// can be wrong with one.

#include "cfg_set.h"
#include "crc32_reference.h"
#include "doubles.h"

#include <cerrno>
#include <climits>

using namespace doubles;

// clang-format off

constexpr size_t HEADER = 64;

class FirmwareTest : public LibraryTest
{
  protected:
    const std::string image = read_file("/tests/firmware.img");
};

static std::string with(std::string bytes, size_t offset, uint32_t big_endian)
{
    for (size_t i = 0; i < 4; i++)
        bytes.at(offset + i) = static_cast<char>(big_endian >> (24 - 8 * i));
    return bytes;
}

static std::string flipped(std::string bytes, size_t bit)
{
    bytes[bit / CHAR_BIT] = static_cast<char>(bytes[bit / CHAR_BIT] ^ 1 << bit % CHAR_BIT);
    return bytes;
}

// "TEXT not match [#COMPUTED]!=[#STORED]" of these bytes.
static std::string unequal(Text text, Text bytes, uint32_t stored)
{
    char numbers[40];
    snprintf(numbers, sizeof numbers, " not match [%#x]!=[%#x]", crc_by_bits(bytes), stored);
    return text + numbers;
}

// The check of a file with these bytes, which stands in its middle and whose
// reads and seeks fail after so many good ones.
static int checked(Text bytes, uint32_t limit = 0, int reads = INT_MAX, int seeks = INT_MAX)
{
    struct Medium {
        Text bytes;
        int reads, seeks;
        size_t at;
    } medium{bytes, reads, seeks, bytes.size() / 2};
    const auto read = [](void *cookie, char *buffer, size_t size) -> ssize_t {
        auto *self = static_cast<Medium *>(cookie);
        errno = EIO;
        const size_t count = self->bytes.copy(buffer, size, self->at);
        self->at += count;
        return self->reads-- > 0 ? static_cast<ssize_t>(count) : -1;
    };
    const auto seek = [](void *cookie, off64_t *offset, int) { // NOLINT(readability-non-const-parameter)
        auto *self = static_cast<Medium *>(cookie);
        errno = EIO;
        self->at = static_cast<size_t>(*offset);
        return self->seeks-- > 0 ? 0 : -1;
    };
    FILE *file = fopencookie(&medium, "r", {read, nullptr, seek, nullptr});
    char buffer[512];
    std::setvbuf(file, buffer, _IOFBF, sizeof buffer);
    const int result = cfg_checkFirmware(file, limit);
    std::fclose(file);
    return result;
}

#define CHECK(...) CALL_AS(cfg_checkFirmware, checked(__VA_ARGS__))

TEST_F(FirmwareTest, ImagesAndWhatIsWrongWithThem)
{
    const auto size = static_cast<uint32_t>(image.size());
    const std::string body = image.substr(HEADER), changed = flipped(image, 800);
    const std::string zero = with(image, 4, 0).substr(0, HEADER), wrong = with(changed, 4, 0x12ab);
    const uint32_t stored = crc_by_bits(body);
    const std::string open = with(with(image, 24, crc_by_bits(body.substr(0, 36))), 4, 0);
    const std::string part = with(open, 4, crc_by_bits(open.substr(0, HEADER))); // checked to 100
    const auto bad_image = [](Text text) {
        return "[checkImageChecksum #] " + text + "\ncfg_checkImageChecksum fail";
    };
    const std::string seek = "fseek fail, errno[5][Input/output error]", stream = bad_image("stream error");
    const auto differs = [&](Text b) { return bad_image(unequal("image checksum", b, stored)); };
    const Calls board = {"popen board boardid"};
    const Given id = {{"$ board boardid", "xq7h0c\n"}};
    check({
        {id, CHECK(image), 0, board},
        {id, CHECK(image, size), 0, board},
        {id, CHECK(image, UINT32_MAX), 0, board},
        {id, CHECK(flipped(part, 800), 100), 0, board}, // behind the limit
        {id, CHECK(image, size - 1), -1, board, differs(body.substr(0, size - 65))},
        {id, CHECK(changed), -1, board, differs(changed.substr(HEADER))},
        {id, CHECK(wrong), -1, board,
            "[cfg_checkHeaderChecksum #] " + unequal("header checksum", zero, 0x12ab) +
                "\ncfg_checkHeaderChecksum fail"},
        {id, CHECK(with(wrong, 32, 0)), -1, board,
            "[getBoardIdMask #] model[xq7] not found\n"
            "[cfg_checkBoardId #] image mask[0] not valid for [0xc]\ncfg_checkBoardId fail"},
        {CHECK(image.substr(0, 63)), -1, {}, "fread fail"},
        {CHECK(image, 0, 99, 0), -1, {}, seek},
        {id, CHECK(image, 0, 99, 1), -1, board, bad_image(seek)},
        {id, CHECK(image, 0, 99, 2), -1, board, bad_image(seek)},
        {CHECK(image, 0, 0), -1, {}, "fread fail"},
        {id, CHECK(changed, 0, 1), -1, board, stream}, // zeros, and no bytes
        {id, CHECK(image, 0, 12), -1, board, stream}, // at the end of the file
        {id, CHECK(image, 0, 13), 0, board},
        {CALL(cfg_checkFirmware(nullptr, 0)), -1, {}, "invalid fp"},
        {CALL(cfg_checkBoardId(nullptr)), -1, {}, "invalid pbHeader"},
        {CALL(cfg_checkHeaderChecksum(nullptr)), -1, {}, "invalid pbHeader"},
    });
}

// Whether an image for this board may run.
static int fits(Text board)
{
    return cfg_checkBoardId(std::string(HEADER, '\0').replace(32, board.size(), board).data());
}

#define FITS(board) CALL_AS(cfg_checkBoardId, fits(board))

TEST_F(FirmwareTest, BoardsMatchByModelAndMask)
{
    const auto on = [](Text board) { return Given{{"$ board boardid", board}}; };
    const std::string mask = "[getBoardIdMask #] ", too_long = mask + "dwBufSize[16] not enough\n";
    const std::string no_mask = "image mask[0] not valid for [0]";
    const Calls asked = {"popen board boardid"};
    check({
        {on("xq7h02"), FITS("xq7h03"), 0, asked},
        {on("xq7h04"), FITS("xq7h03"), -1, asked, "image mask[0x3] not valid for [0x4]"},
        {on("MODELNAME1H08"), FITS("modelname1h0c"), 0, asked},
        {on("modelname1h08"), FITS("MODELNAME1H0C"), 0, asked},
        {on("xq7h80000000"), FITS("xq7hffffffff"), 0, asked},
        {on("habch02"), FITS("habch03"), 0, asked}, // begins with the letter
        {on("habch02"), FITS("habch01"), -1, asked, "image mask[0x1] not valid for [0x2]"},
        {on("abchh12"), FITS("abchh12"), -1, asked, no_mask},
        {on("xq7"), FITS("xq8h0c"), -1, asked,
            mask + "model[xq7] not found\n" + mask + "invalid board format\n" + no_mask},
        // Both fill the field; what follows it in the header is not the image's.
        {on("modelname01h0010"), FITS("modelname01h0100ffff"), -1, asked,
            "image mask[0x100] not valid for [0x10]"},
        {on("sixteenletters16"), FITS("sixteenletters16"), -1, asked,
            too_long + too_long + no_mask},
        {on("\n"), FITS("xq7h0c"), -1, asked, "no board id found"},
        {on(""), FITS("xq7h0c"), -1, asked,
            "[cfg_getBoardInfo #] fgets fail, errno[0][Success]\ncfg_getBoardInfo fail"},
    });
}

// What mkimage's own counterpart says of the image.
static bool passes_dumpimage(Text bytes)
{
    write_file("/tmp/image", bytes);
    return run_program({"/tests/dumpimage", "-l", "-T", "firmware", "/tmp/image"}).result == 0;
}

TEST_F(FirmwareTest, EveryDamageOfARealImageIsRefused)
{
    answers["board boardid"] = "xq7h0c\n";
    std::vector<std::string> sample;
    int tried = 0, passed = 0;
    const auto tries = [&](Text bytes) {
        passed += checked(bytes) == 0;
        if (tried++ % 997 == 0)
            sample.push_back(bytes);
    };
    quietly([&] {
        for (size_t bit = 0; bit < image.size() * CHAR_BIT; bit++)
            tries(flipped(image, bit));
        for (size_t size = 0; size < image.size(); size++)
            tries(image.substr(0, size));
        for (size_t more = 1; more <= 16; more++)
            for (const char byte : {'\0', '\xff', 'x'})
                tries(image + std::string(more, byte));
        return passed;
    });
    EXPECT_EQ(passed, 0);
    EXPECT_TRUE(passes_dumpimage(image));
    for (Text bytes : sample)
        EXPECT_FALSE(passes_dumpimage(bytes));
}
