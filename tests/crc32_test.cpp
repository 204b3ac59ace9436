// CRC-32 of memory and of streams.

#include "cfg_set.h"
#include "crc32_reference.h"
#include "harness.h"
#include "medium.h"

#if defined(CRC_INSTRUCTIONS) && !defined(__ARM_FEATURE_CRC32)
#error "this variant is to be built for a processor with CRC instructions"
#endif

class Crc32Test : public CameraTest
{
};

// Bytes without a pattern that a checksum could miss.
static std::string noise(size_t size)
{
    std::string bytes;
    uint32_t state = 1;
    while (bytes.size() < size) {
        state = state * 1664525 + 1013904223;
        bytes.push_back(static_cast<char>(state >> 24));
    }
    return bytes;
}

static uint32_t crc(const std::string &bytes)
{
    return cfg_getCrc32(bytes.data(), static_cast<uint32_t>(bytes.size()));
}

TEST_F(Crc32Test, PublishedValues)
{
    EXPECT_EQ(crc("123456789"), 0xCBF43926U);
    EXPECT_EQ(crc("a"), 0xE8B7BE43U);
    EXPECT_EQ(crc("The quick brown fox jumps over the lazy dog"), 0x414FA339U);
    EXPECT_EQ(crc(std::string(32, '\0')), 0x190A55ADU);
    EXPECT_EQ(crc(std::string(32, '\xff')), 0xFF6CAB0BU);
    EXPECT_EQ(crc32_tab[0], 0U);
    EXPECT_EQ(crc32_tab[1], 0x77073096U);
    EXPECT_EQ(crc32_tab[128], 0xEDB88320U);
    EXPECT_EQ(crc32_tab[255], 0x2D02EF8DU);
}

TEST_F(Crc32Test, EveryLengthFromEveryAddress)
{
    const std::string bytes = noise(120);
    for (size_t start = 0; start < 9; start++)
        for (size_t length = 1; length <= 100; length++)
            ASSERT_EQ(cfg_getCrc32(bytes.data() + start, static_cast<uint32_t>(length)),
                      crc_by_bits(bytes.substr(start, length)))
                << length << " bytes at " << start;
}

TEST_F(Crc32Test, NothingToHashIsReported)
{
    for (const char *bytes : {"", static_cast<const char *>(nullptr)}) {
        const Outcome outcome =
            observe([&] { return static_cast<int>(cfg_getCrc32(bytes, bytes ? 0 : 9)); });
        EXPECT_EQ(outcome.result, 0);
        EXPECT_EQ(outcome.out, "[cfg_getCrc32 #] invalid parameter\n");
    }
    const Outcome outcome =
        observe([] { return cfg_getCrc32FromFile(nullptr, 0, 0) == 0xFFFFFFFF ? 1 : 0; });
    EXPECT_EQ(outcome.result, 1);
    EXPECT_EQ(outcome.out, "[cfg_getCrc32FromFile #] invalid fp\n");
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
        {1, 0, 0, 0, 1, "one byte"},
        {5064, 0, 0, 0, 5064, "the whole file"},
        {5064, 64, 0, 64, 5064, "all but the header"},
        {5064, 64, 5064, 64, 5064, "a limit at the end"},
        {5064, 64, 9999, 64, 5064, "a limit behind the end"},
        {5064, 64, 5063, 64, 5063, "a limit before the end"},
        {5064, 64, 100, 64, 100, "a limit in the first chunk"},
        {5064, 64, 512, 64, 512, "a limit at the end of a chunk"},
        {5064, 64, 513, 64, 513, "a limit of one byte in a chunk"},
        {5064, 511, 0, 511, 5064, "the longest skip"},
        {64, 64, 0, 0, 64, "a file no longer than the skip is taken in whole"},
        {65, 64, 0, 64, 65, "one byte behind the skip"},
        {5064, 64, 64, 0, 64, "a limit no longer than the skip"},
        {5064, 64, 10, 0, 10, "a limit shorter than the skip"},
        {5064, 512, 0, 0, 5064, "no chunk is longer than the skip"},
        {5064, 4000, 0, 0, 5064, "a skip of several chunks never ends"},
    };
    for (const auto &test : CASES) {
        const std::string bytes = noise(test.size);
        write_file("/tmp/bytes", bytes);
        FILE *file = std::fopen("/tmp/bytes", "r");
        EXPECT_EQ(cfg_getCrc32FromFile(file, test.skip, test.limit),
                  crc_by_bits(bytes.substr(test.begin, test.end - test.begin)))
            << test.what;
        std::fclose(file);
    }
}

TEST_F(Crc32Test, FileFromWhereItStandsToWhereItStops)
{
    const std::string bytes = noise(3000);
    write_file("/tmp/bytes", bytes);
    FILE *file = std::fopen("/tmp/bytes", "r");
    std::fseek(file, 1000, SEEK_SET);
    EXPECT_EQ(cfg_getCrc32FromFile(file, 10, 700), crc_by_bits(bytes.substr(1010, 690)));
    EXPECT_EQ(std::ftell(file), 1700);
    std::fclose(file);
}

TEST_F(Crc32Test, ShortReadsAreJoinedAndAnErrorIsTheEnd)
{
    for (const int good : {0, 10, 100, 1000}) {
        Medium medium{noise(2000), 7, good};
        FILE *file = open_medium(medium);
        EXPECT_EQ(cfg_getCrc32FromFile(file, 0, 0),
                  crc_by_bits(noise(2000).substr(0, static_cast<size_t>(7 * good))));
        EXPECT_EQ(std::ferror(file) != 0, good < 1000);
        std::fclose(file);
    }
}
