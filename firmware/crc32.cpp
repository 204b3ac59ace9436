#include "settings/frame.h"

#include <endian.h>
#include <string.h>
#ifdef __ARM_FEATURE_CRC32
#include <arm_acle.h>
#endif

using namespace cfg_set;

constexpr uint32_t POLYNOMIAL = 0xEDB88320;
constexpr uint32_t START = 0xFFFFFFFF;
constexpr size_t CHUNK_SIZE = 512;

// The checksum after shifting eight bits of `byte` through the polynomial.
constexpr uint32_t entry(uint32_t byte)
{
    uint32_t value = byte;
    for (int bit = 0; bit < 8; bit++)
        value = value & 1 ? value >> 1 ^ POLYNOMIAL : value >> 1;
    return value;
}

#define ENTRIES_4(byte) entry(byte), entry((byte) + 1), entry((byte) + 2), entry((byte) + 3)
#define ENTRIES_16(byte)                                                                           \
    ENTRIES_4(byte), ENTRIES_4((byte) + 4), ENTRIES_4((byte) + 8), ENTRIES_4((byte) + 12)
#define ENTRIES_64(byte)                                                                           \
    ENTRIES_16(byte), ENTRIES_16((byte) + 16), ENTRIES_16((byte) + 32), ENTRIES_16((byte) + 48)

constexpr uint32_t crc32_tab[256] = {ENTRIES_64(0), ENTRIES_64(64), ENTRIES_64(128),
                                     ENTRIES_64(192)};

static uint32_t add_byte(uint32_t crc, uint8_t byte)
{
    return crc32_tab[(crc ^ byte) & 0xFF] ^ crc >> 8;
}

// A little-endian word from any address.
static uint32_t word_at(const uint8_t *bytes)
{
    uint32_t word;
    memcpy(&word, bytes, sizeof word);
    return le32toh(word);
}

// add_step processes STEP bytes at a time.
#ifdef __ARM_FEATURE_CRC32

constexpr size_t STEP = 4;

static uint32_t add_step(uint32_t crc, const uint8_t *bytes)
{
    return __crc32w(crc, word_at(bytes));
}

#else

// One table for each byte of a step. On the camera's processor, eight tables save
// no instructions over four and fill more of the cache.
constexpr size_t STEP = sizeof(void *) == 4 ? 4 : 8;

// The table for a byte that is one place earlier in the step. Each table is a
// variable of its own, so that the loop keeps its address in a register.
struct Slice {
    uint32_t entry[256];
};

constexpr Slice byte_later(const uint32_t *table)
{
    Slice slice = {};
    for (size_t i = 0; i < 256; i++)
        slice.entry[i] = crc32_tab[table[i] & 0xFF] ^ table[i] >> 8;
    return slice;
}

static constexpr Slice SLICE_1 = byte_later(crc32_tab);
static constexpr Slice SLICE_2 = byte_later(SLICE_1.entry);
static constexpr Slice SLICE_3 = byte_later(SLICE_2.entry);
static constexpr Slice SLICE_4 = byte_later(SLICE_3.entry);
static constexpr Slice SLICE_5 = byte_later(SLICE_4.entry);
static constexpr Slice SLICE_6 = byte_later(SLICE_5.entry);
static constexpr Slice SLICE_7 = byte_later(SLICE_6.entry);

static uint32_t add_step(uint32_t crc, const uint8_t *bytes)
{
    uint32_t word = crc ^ word_at(bytes);
    uint32_t sum = 0;
    if constexpr (STEP == 8) {
        sum = SLICE_7.entry[word & 0xFF] ^ SLICE_6.entry[word >> 8 & 0xFF] ^
              SLICE_5.entry[word >> 16 & 0xFF] ^ SLICE_4.entry[word >> 24];
        word = word_at(bytes + 4);
    }
    return sum ^ SLICE_3.entry[word & 0xFF] ^ SLICE_2.entry[word >> 8 & 0xFF] ^
           SLICE_1.entry[word >> 16 & 0xFF] ^ crc32_tab[word >> 24];
}

#endif

static uint32_t add(uint32_t crc, const uint8_t *bytes, size_t length)
{
    size_t steps = length / STEP;
    if (steps > 0) {
        do { // one jump less for each step than a while loop when compiled for size
            crc = add_step(crc, bytes);
            bytes += STEP;
        } while (--steps > 0);
    }
    for (size_t rest = length % STEP; rest > 0; rest--)
        crc = add_byte(crc, *bytes++);
    return crc;
}

uint32_t cfg_getCrc32(const void *buf, uint32_t len)
{
    if (!buf || len == 0) {
        REPORT("invalid parameter");
        return 0;
    }
    return ~add(START, (const uint8_t *)buf, len);
}

uint32_t cfg_getCrc32FromFile(FILE *fp, uint32_t dwSkip, uint32_t dwLimit)
{
    if (!fp) {
        REPORT("invalid fp");
        return UINT32_MAX;
    }
    uint32_t crc = START;
    uint32_t total = 0;
    for (;;) {
        uint8_t chunk[CHUNK_SIZE];
        size_t size = sizeof chunk;
        if (dwLimit != 0 && dwLimit - total < size)
            size = dwLimit - total;
        const size_t count = fread(chunk, 1, size, fp);
        if (count == 0)
            return ~crc;
        total += (uint32_t)count;

        // A read that is no longer than the pending skip is hashed whole.
        size_t skipped = 0;
        if (count > dwSkip) {
            skipped = dwSkip;
            dwSkip = 0;
        }
        crc = add(crc, chunk + skipped, count - skipped);
    }
}
