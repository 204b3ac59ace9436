// The usual byte-wise loop, with the library's table.
#pragma once

#include "cfg_set.h"

#include <cstddef>

// Adds bytes to a CRC-32 as zlib's crc32() does: complemented before and after.
inline uint32_t by_byte(uint32_t crc, const unsigned char *bytes, size_t length)
{
    const uint32_t *table = crc32_tab;
    asm("" : "+r"(table)); // else code for size loads the address for every byte
    crc = ~crc;
    for (size_t i = 0; i < length; i++)
        crc = table[(crc ^ bytes[i]) & 0xFF] ^ crc >> 8;
    return ~crc;
}
