// CRC-32 of memory and of streams.

#include "cfg_set.h"
#include "crc32_reference.h"
#include "harness.h"

#include <random>

#if defined(CRC_INSTRUCTIONS) && !defined(__ARM_FEATURE_CRC32)
#error "this variant is to be built for a processor with CRC instructions"
#endif

using Crc32Test = CameraTest;

// Bytes without a pattern that a checksum could miss.
static std::string noise(size_t size)
{
    std::minstd_rand random(1);
    std::string bytes(size, '\0');
    for (char &byte : bytes)
        byte = static_cast<char>(random());
    return bytes;
}

TEST_F(Crc32Test, Memory)
{
    EXPECT_EQ(cfg_getCrc32("123456789", 9), 0xCBF43926U);
    for (uint32_t byte = 0; byte < 256; byte++)
        EXPECT_EQ(crc32_tab[byte],
                  ~crc_by_bits(std::string(1, static_cast<char>(~byte))) ^ 0xFFFFFFU);
    const std::string bytes = noise(120);
    for (size_t start = 0; start < 9; start++)
        for (size_t length = 1; length <= 100; length++)
            ASSERT_EQ(cfg_getCrc32(bytes.data() + start, static_cast<uint32_t>(length)),
                      crc_by_bits(bytes.substr(start, length)))
                << length << " bytes at " << start;
}

TEST_F(Crc32Test, NothingToHashIsReported)
{
    const std::string invalid = "[cfg_getCrc32 #] invalid parameter\n";
    const Outcome outcome = observe([] {
        return static_cast<int>(cfg_getCrc32("", 0) + cfg_getCrc32(nullptr, 9) +
                                cfg_getCrc32FromFile(nullptr, 0, 0));
    });
    EXPECT_EQ(outcome.result, -1);
    EXPECT_EQ(outcome.out, invalid + invalid + "[cfg_getCrc32FromFile #] invalid fp\n");
}

TEST_F(Crc32Test, FilesBySkipAndLimit)
{
    const struct {
        size_t size;
        uint32_t skip, limit;
        size_t begin, end; // what the checksum is of
        const char *what;
    } CASES[] = {
        {0, 0, 0, 0, 0, "an empty file"},
        {5064, 0, 0, 0, 5064, "the whole file"},
        {5064, 64, 0, 64, 5064, "all but the header"},
        {5064, 64, 5064, 64, 5064, "a limit at the end"},
        {5064, 64, UINT32_MAX, 64, 5064, "a limit behind the end"},
        {5064, 64, 5063, 64, 5063, "a limit before the end"},
        {5064, 64, 512, 64, 512, "a limit at the end of a chunk"},
        {5064, 64, 513, 64, 513, "a limit of one byte in a chunk"},
        {5064, 511, 0, 511, 5064, "the longest skip"},
        {64, 64, 0, 0, 64, "a file no longer than the skip is taken in whole"},
        {65, 64, 0, 64, 65, "one byte behind the skip"},
        {5064, 64, 64, 0, 64, "a limit no longer than the skip"},
        {5064, 512, 0, 0, 5064, "no chunk is longer than the skip"},
        {5064, 4000, 0, 0, 5064, "a skip of several chunks never ends"},
    };
    for (const auto &test : CASES) {
        const std::string bytes = noise(test.size);
        write_file("/tmp/bytes", "before" + bytes);
        FILE *file = std::fopen("/tmp/bytes", "r");
        std::fseek(file, 6, SEEK_SET);
        EXPECT_EQ(cfg_getCrc32FromFile(file, test.skip, test.limit),
                  crc_by_bits(bytes.substr(test.begin, test.end - test.begin)))
            << test.what;
        std::fclose(file);
    }
}
