// Inside the library only: hardware-version bits and board-id parsing.
#pragma once

#include <stdint.h>

namespace cfg_set
{

// Bytes of the buffers that hold a serial number or a hardware version.
constexpr int BOARD_TEXT_SIZE = 32;

// Whether the board has an Ethernet port: -1 until the first query, then 0 or 1
// for the life of the process. Concurrent first callers store the same value.
extern int eth_support;

// Bit `bit` of the hardware version; 0 when the board cannot be queried.
int hardware_bit(unsigned bit);

// The board mask of `board` (a 16-byte field, NUL only when shorter) after the
// model prefix `model`; 0, with a report, when it has another form.
uint32_t getBoardIdMask(const char *board, const char *model);

} // namespace cfg_set
