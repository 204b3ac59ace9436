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
static std::string unequal(const std::string &text, const std::string &bytes, uint32_t stored)
{
    char numbers[40];
    snprintf(numbers, sizeof numbers, " not match [%#x]!=[%#x]", crc_by_bits(bytes), stored);
    return text + numbers;
}

// The check of a file with these bytes, which stands in its middle and whose
// reads and seeks fail after so many good ones.
static int checked(const std::string &bytes, uint32_t limit = 0, int reads = INT_MAX, int seeks = INT_MAX)
{
    struct Medium {
        const std::string &bytes;
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

TEST_F(FirmwareTest, ImagesAndWhatIsWrongWithThem)
{
    const auto size = static_cast<uint32_t>(image.size());
    const std::string body = image.substr(HEADER), changed = flipped(image, 800), bad_header = with(changed, 4, 0x12ab);
    const uint32_t stored = crc_by_bits(body);
    const std::string open = with(with(image, 24, crc_by_bits(body.substr(0, 36))), 4, 0), zero = with(image, 4, 0).substr(0, HEADER);
    const std::string part = with(open, 4, crc_by_bits(open.substr(0, HEADER))); // its checksum ends at 100
    const auto bad_image = [](const std::string &text) { return "[checkImageChecksum #] " + text + "\ncfg_checkImageChecksum fail"; };
    const std::string seek = "fseek fail, errno[5][Input/output error]", no_match = "image checksum";
    const Calls board = {"popen board boardid"};
    const Given id = {{"$ board boardid", "xq7h0c\n"}};
    check({
        {id, CALL_AS(cfg_checkFirmware, checked(image)), 0, board},
        {id, CALL_AS(cfg_checkFirmware, checked(image, size)), 0, board},
        {id, CALL_AS(cfg_checkFirmware, checked(image, UINT32_MAX)), 0, board},
        {id, CALL_AS(cfg_checkFirmware, checked(flipped(part, 800), 100)), 0, board}, // behind the limit
        {id, CALL_AS(cfg_checkFirmware, checked(image, size - 1)), -1, board,
            bad_image(unequal(no_match, body.substr(0, size - 65), stored))},
        {id, CALL_AS(cfg_checkFirmware, checked(changed)), -1, board, bad_image(unequal(no_match, changed.substr(HEADER), stored))},
        {id, CALL_AS(cfg_checkFirmware, checked(bad_header)), -1, board,
            "[cfg_checkHeaderChecksum #] " + unequal("header checksum", zero, 0x12ab) + "\ncfg_checkHeaderChecksum fail"},
        {id, CALL_AS(cfg_checkFirmware, checked(with(bad_header, 32, 0))), -1, board,
            "[getBoardIdMask #] model[xq7] not found\n[cfg_checkBoardId #] image mask[0] not valid for [0xc]\ncfg_checkBoardId fail"},
        {CALL_AS(cfg_checkFirmware, checked(image.substr(0, 63))), -1, {}, "fread fail"},
        {CALL_AS(cfg_checkFirmware, checked(image, 0, 99, 0)), -1, {}, seek},
        {id, CALL_AS(cfg_checkFirmware, checked(image, 0, 99, 1)), -1, board, bad_image(seek)},
        {id, CALL_AS(cfg_checkFirmware, checked(image, 0, 99, 2)), -1, board, bad_image(seek)},
        {CALL_AS(cfg_checkFirmware, checked(image, 0, 0)), -1, {}, "fread fail"},
        {id, CALL_AS(cfg_checkFirmware, checked(changed, 0, 1)), -1, board, bad_image("stream error")}, // zeros, and no bytes
        {id, CALL_AS(cfg_checkFirmware, checked(image, 0, 12)), -1, board, bad_image("stream error")}, // at the end of the file
        {id, CALL_AS(cfg_checkFirmware, checked(image, 0, 13)), 0, board},
        {CALL(cfg_checkFirmware(nullptr, 0)), -1, {}, "invalid fp"},
        {CALL(cfg_checkBoardId(nullptr)), -1, {}, "invalid pbHeader"},
        {CALL(cfg_checkHeaderChecksum(nullptr)), -1, {}, "invalid pbHeader"},
    });
}

// Whether an image for this board may run.
static int fits(const std::string &board)
{
    return cfg_checkBoardId(std::string(HEADER, '\0').replace(32, board.size(), board).data());
}

TEST_F(FirmwareTest, BoardsMatchByModelAndMask)
{
    const auto on = [](const std::string &board) { return Given{{"$ board boardid", board}}; };
    const std::string no_form = "[getBoardIdMask #] invalid board format\n", too_long = "[getBoardIdMask #] dwBufSize[16] not enough\n";
    const Calls asked = {"popen board boardid"};
    check({
        {on("xq7h02"), CALL_AS(cfg_checkBoardId, fits("xq7h03")), 0, asked},
        {on("xq7h04"), CALL_AS(cfg_checkBoardId, fits("xq7h03")), -1, asked, "image mask[0x3] not valid for [0x4]"},
        {on("MODELNAME1H08"), CALL_AS(cfg_checkBoardId, fits("modelname1h0c")), 0, asked},
        {on("modelname1h08"), CALL_AS(cfg_checkBoardId, fits("MODELNAME1H0C")), 0, asked},
        {on("xq7h80000000"), CALL_AS(cfg_checkBoardId, fits("xq7hffffffff")), 0, asked},
        {on("habch02"), CALL_AS(cfg_checkBoardId, fits("habch03")), 0, asked}, // begins with the letter
        {on("habch02"), CALL_AS(cfg_checkBoardId, fits("habch01")), -1, asked, "image mask[0x1] not valid for [0x2]"},
        {on("abchh12"), CALL_AS(cfg_checkBoardId, fits("abchh12")), -1, asked, "image mask[0] not valid for [0]"},
        {on("xq7"), CALL_AS(cfg_checkBoardId, fits("xq8h0c")), -1, asked,
            "[getBoardIdMask #] model[xq7] not found\n" + no_form + "image mask[0] not valid for [0]"},
        // Both fill the field; what follows it in the header is not the image's.
        {on("modelname01h0010"), CALL_AS(cfg_checkBoardId, fits("modelname01h0100ffff")), -1, asked,
            "image mask[0x100] not valid for [0x10]"},
        {on("sixteenletters16"), CALL_AS(cfg_checkBoardId, fits("sixteenletters16")), -1, asked,
            too_long + too_long + "image mask[0] not valid for [0]"},
        {on("\n"), CALL_AS(cfg_checkBoardId, fits("xq7h0c")), -1, asked, "no board id found"},
        {on(""), CALL_AS(cfg_checkBoardId, fits("xq7h0c")), -1, asked,
            "[cfg_getBoardInfo #] fgets fail, errno[0][Success]\ncfg_getBoardInfo fail"},
    });
}

// What mkimage's own counterpart says of the image.
static bool passes_dumpimage(const std::string &bytes)
{
    write_file("/tmp/image", bytes);
    return run_program({"/tests/dumpimage", "-l", "-T", "firmware", "/tmp/image"}).result == 0;
}

TEST_F(FirmwareTest, EveryDamageOfARealImageIsRefused)
{
    answers["board boardid"] = "xq7h0c\n";
    std::vector<std::string> sample;
    int tried = 0, passed = 0;
    const auto tries = [&](const std::string &bytes) {
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
    for (const std::string &bytes : sample)
        EXPECT_FALSE(passes_dumpimage(bytes));
}
