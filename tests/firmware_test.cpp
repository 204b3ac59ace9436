// Firmware images: a real one, made by mkimage for the board xq7h0c, and what
// can be wrong with one.

#include "cfg_set.h"
#include "crc32_reference.h"
#include "doubles.h"
#include "firmware/verify.h"
#include "medium.h"

#include <climits>
#include <sys/stat.h>

using namespace doubles;
using testing::ElementsAre;
using testing::HasSubstr;

constexpr size_t HEADER = 64;

class FirmwareTest : public LibraryTest
{
  protected:
    void SetUp() override
    {
        LibraryTest::SetUp();
        answers["board boardid"] = "xq7h0c\n";
        image = read_file("/tests/firmware.img");
        ASSERT_GT(image.size(), 5000U);
    }
    std::string image;
};

static Outcome check(const std::string &bytes, uint32_t limit = 0,
                     int (*part)(FILE *fp, uint32_t dwLimit) = cfg_checkFirmware)
{
    return observe([&] {
        FILE *file = fmemopen(const_cast<char *>(bytes.data()), bytes.size(), "r");
        const int result = part(file, limit);
        std::fclose(file);
        return result;
    });
}

static void put_big_endian(std::string &bytes, size_t offset, uint32_t value)
{
    for (size_t i = 0; i < 4; i++)
        bytes[offset + i] = static_cast<char>(value >> (24 - 8 * i));
}

// Makes the header's own checksum right.
static void seal(std::string &bytes)
{
    put_big_endian(bytes, 4, 0);
    put_big_endian(bytes, 4, crc_by_bits(bytes.substr(0, HEADER)));
}

static std::string header_for(const std::string &board)
{
    std::string header(HEADER, '\0');
    header.replace(32, board.size(), board);
    seal(header);
    return header;
}

// The bytes whose checksum the header states are those from its end to `end`.
static std::string covered_to(std::string bytes, size_t end)
{
    put_big_endian(bytes, 24, crc_by_bits(bytes.substr(HEADER, end - HEADER)));
    seal(bytes);
    return bytes;
}

TEST_F(FirmwareTest, RealImagePassesForItsBoard)
{
    const auto size = static_cast<uint32_t>(image.size());
    for (const uint32_t limit : {0U, size, size + 1, UINT32_MAX}) {
        const Outcome outcome = check(image, limit);
        EXPECT_EQ(outcome.result, 0) << limit;
        EXPECT_EQ(outcome.out + outcome.err, "");
    }
    EXPECT_EQ(calls[0], "popen board boardid");
    EXPECT_EQ(calls.size(), 4U);

    FILE *file = std::fopen("/tests/firmware.img", "r");
    std::fseek(file, 1000, SEEK_SET);
    EXPECT_EQ(cfg_checkFirmware(file, 0), 0) << "from wherever the file stands";
    EXPECT_EQ(std::ftell(file), static_cast<long>(size)) << "and leaves it where reading ended";
    std::fclose(file);
}

TEST_F(FirmwareTest, BoardsMatchByModelAndMask)
{
    const std::string other_model = "[getBoardIdMask #] model[xq7] not found\n";
    const std::string no_form = "[getBoardIdMask #] invalid board format\n";
    const auto no_match = [](const std::string &masks) {
        return "[cfg_checkBoardId #] image mask" + masks + "\n";
    };
    const struct {
        std::string image, device, out; // nothing printed: it may run
    } CASES[] = {
        {"xq7h03", "xq7h02", ""},
        {"xq7h03", "xq7h04", no_match("[0x3] not valid for [0x4]")},
        {"XQ7H0C", "xq7h08", ""},
        {"xq7h0c", "XQ7H08", ""},
        {"xq8h0c", "xq7h0c", other_model + no_match("[0] not valid for [0xc]")},
        {"", "xq7h0c", other_model + no_match("[0] not valid for [0xc]")},
        {"xq7", "xq7h0c", no_form + no_match("[0] not valid for [0xc]")},
        {"xq7", "xq7", no_form + no_form + no_match("[0] not valid for [0]")},
        {"xq7h\xe9", "xq7h0c",
         "[getBoardIdMask #] non-ascii char[0xe9]\n" + no_match("[0] not valid for [0xc]")},
        {"habch01", "habch0f", ""},
        {"abchh12", "abchh12", no_match("[0] not valid for [0]")},
        {"xq7hffffffff", "xq7h80000000", ""},
        // Both fill the field; what follows it in the header is not the image's.
        {"modelname01h0100ffff", "modelname01h0010", no_match("[0x100] not valid for [0x10]")},
        {"sixteenletters16", "sixteenletters16",
         "[getBoardIdMask #] dwBufSize[16] not enough\n"
         "[getBoardIdMask #] dwBufSize[16] not enough\n" +
             no_match("[0] not valid for [0]")},
        {"xq7h0c", "\n", "[cfg_checkBoardId #] no board id found\n"},
        {"xq7h0c", "",
         "[cfg_getBoardInfo #] fgets fail, errno[0][Success]\n"
         "[cfg_checkBoardId #] cfg_getBoardInfo fail\n"},
    };
    for (const auto &test : CASES) {
        answers["board boardid"] = test.device;
        const std::string header = header_for(test.image);
        const Outcome outcome = observe([&] { return cfg_checkBoardId(header.data()); });
        EXPECT_EQ(outcome.out, test.out) << test.image << " on " << test.device;
        EXPECT_EQ(outcome.result, test.out.empty() ? 0 : -1) << test.image << " on " << test.device;
    }
}

TEST_F(FirmwareTest, HeaderChecksumIsBigEndianOverItself)
{
    std::string header = header_for("xq7h0c");
    EXPECT_EQ(cfg_checkHeaderChecksum(header.data()), 0);
    std::swap(header[4], header[7]);
    std::swap(header[5], header[6]);
    EXPECT_EQ(quietly([&] { return cfg_checkHeaderChecksum(header.data()); }), -1);

    put_big_endian(header, 4, 0);
    const uint32_t computed = crc_by_bits(header);
    put_big_endian(header, 4, 0x12AB);
    char expected[80];
    std::snprintf(expected, sizeof expected,
                  "[cfg_checkHeaderChecksum #] header checksum not match [%#x]!=[0x12ab]\n",
                  computed);
    EXPECT_EQ(observe([&] { return cfg_checkHeaderChecksum(header.data()); }).out, expected);
}

TEST_F(FirmwareTest, ChecksAreMadeInOrderAndTheFirstFailureEndsThem)
{
    std::string broken = image;
    broken[100] ^= 1;
    EXPECT_THAT(check(broken).out,
                testing::MatchesRegex("\\[checkImageChecksum #\\] image checksum not match "
                                      "\\[0x[0-9a-f]+\\]!=\\[0x[0-9a-f]+\\]\n"
                                      "\\[cfg_checkFirmware #\\] cfg_checkImageChecksum fail\n"));
    broken[8] ^= 1;
    EXPECT_THAT(check(broken).out,
                testing::MatchesRegex("\\[cfg_checkHeaderChecksum #\\] header checksum not match "
                                      "\\[0x[0-9a-f]+\\]!=\\[0x[0-9a-f]+\\]\n"
                                      "\\[cfg_checkFirmware #\\] cfg_checkHeaderChecksum fail\n"));
    broken[32] = 'y';
    EXPECT_EQ(check(broken).out, "[getBoardIdMask #] model[xq7] not found\n"
                                 "[cfg_checkBoardId #] image mask[0] not valid for [0xc]\n"
                                 "[cfg_checkFirmware #] cfg_checkBoardId fail\n");
    EXPECT_EQ(check(broken).result, -1);
    broken[100] ^= 1;
    EXPECT_EQ(check(broken, 0, checkImageChecksum).result, 0) << "it looks at nothing else";
}

TEST_F(FirmwareTest, LimitEndsWhatTheChecksumCovers)
{
    std::string part = covered_to(image, 100);
    EXPECT_EQ(check(part, 100).result, 0);
    EXPECT_EQ(check(part, 0).result, -1);
    EXPECT_EQ(check(part, 99).result, -1);
    part[100] ^= 1;
    EXPECT_EQ(check(part, 100).result, 0) << "what is behind the limit is not covered";
    part[99] ^= 1;
    EXPECT_EQ(check(part, 100).result, -1);
}

TEST_F(FirmwareTest, WhatIsNoImageIsRefused)
{
    const auto check_path = [](const char *path) {
        return observe([&] {
            FILE *file = std::fopen(path, "r+");
            if (!file)
                file = std::fopen(path, "r");
            const int result = cfg_checkFirmware(file, 0);
            std::fclose(file);
            return result;
        });
    };
    for (const size_t size : {0U, 1U, 63U}) {
        write_file("/tmp/short", image.substr(0, size));
        const Outcome outcome = check_path("/tmp/short");
        EXPECT_EQ(outcome.result, -1) << size;
        EXPECT_EQ(outcome.out, "[cfg_checkFirmware #] fread fail\n") << size;
    }
    EXPECT_EQ(check_path("/tmp").out, "[cfg_checkFirmware #] fread fail\n") << "a folder";
    ASSERT_EQ(mkfifo("/tmp/fifo", 0600), 0);
    EXPECT_EQ(check_path("/tmp/fifo").out,
              "[cfg_checkFirmware #] fseek fail, errno[29][Illegal seek]\n");
    EXPECT_THAT(calls, testing::IsEmpty()) << "none got as far as the board";

    write_file("/tmp/header", image.substr(0, HEADER));
    EXPECT_THAT(check_path("/tmp/header").out, HasSubstr("cfg_checkImageChecksum fail\n"));

    EXPECT_EQ(observe([] { return cfg_checkFirmware(nullptr, 0); }).out,
              "[cfg_checkFirmware #] invalid fp\n");
    EXPECT_EQ(observe([] { return cfg_checkBoardId(nullptr); }).out,
              "[cfg_checkBoardId #] invalid pbHeader\n");
    EXPECT_EQ(observe([] { return cfg_checkHeaderChecksum(nullptr); }).out,
              "[cfg_checkHeaderChecksum #] invalid pbHeader\n");
}

// What mkimage's own counterpart says of the image.
static bool passes_dumpimage(const std::string &bytes)
{
    write_file("/tmp/image", bytes);
    return run_program({"/tests/dumpimage", "-l", "-T", "firmware", "/tmp/image"}).result == 0;
}

TEST_F(FirmwareTest, EveryDamageOfARealImageIsRefused)
{
    std::vector<std::string> sample;
    size_t tried = 0;
    const auto refuses = [&](const std::string &bytes) {
        if (tried++ % 997 == 0)
            sample.push_back(bytes);
        FILE *file = fmemopen(const_cast<char *>(bytes.data()), bytes.size(), "r");
        const int result = cfg_checkFirmware(file, 0);
        std::fclose(file);
        return result == -1;
    };
    std::vector<std::string> passed;
    quietly([&] {
        for (size_t bit = 0; bit < image.size() * CHAR_BIT; bit++) {
            std::string damaged = image;
            char &byte = damaged[bit / CHAR_BIT];
            byte = static_cast<char>(byte ^ 1 << bit % CHAR_BIT);
            if (!refuses(damaged))
                passed.push_back("bit " + std::to_string(bit));
        }
        for (size_t size = 0; size < image.size(); size++)
            if (!refuses(image.substr(0, size)))
                passed.push_back("cut to " + std::to_string(size));
        for (size_t more = 1; more <= 16; more++)
            for (const char byte : {'\0', '\xff', 'x'})
                if (!refuses(image + std::string(more, byte)))
                    passed.push_back("longer by " + std::to_string(more));
        return 0;
    });
    EXPECT_THAT(passed, ElementsAre());
    EXPECT_EQ(tried, image.size() * (CHAR_BIT + 1) + 48);

    EXPECT_TRUE(passes_dumpimage(image));
    EXPECT_GT(sample.size(), 40U);
    for (const std::string &bytes : sample)
        EXPECT_FALSE(passes_dumpimage(bytes));
}

TEST_F(FirmwareTest, NoReadOrSeekCanFailUnnoticed)
{
    const auto check_medium = [](Medium &medium) {
        return observe([&] {
            FILE *file = open_medium(medium);
            const int result = cfg_checkFirmware(file, 0);
            std::fclose(file);
            return result;
        });
    };
    Medium slow{image, 7, INT_MAX};
    EXPECT_EQ(check_medium(slow).result, 0) << "short reads are joined";

    std::set<std::string> seen;
    bool failed = true;
    for (int good = 0; failed; good++) {
        Medium medium{image, SIZE_MAX, good};
        const Outcome outcome = check_medium(medium);
        failed = medium.calls > good;
        EXPECT_EQ(outcome.result, medium.at == image.size() ? 0 : -1) << good << " good calls";
        seen.insert(outcome.out.substr(0, outcome.out.find('\n')));
    }
    const std::string seek = "fseek fail, errno[5][Input/output error]";
    EXPECT_THAT(seen, testing::IsSupersetOf({"[cfg_checkFirmware #] " + seek,
                                             std::string("[cfg_checkFirmware #] fread fail"),
                                             "[checkImageChecksum #] " + seek, std::string()}));
}
