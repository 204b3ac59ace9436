#include "firmware/board.h"

#include "settings/frame.h"

#include <errno.h>
#include <string.h>

using namespace cfg_set;

// Bytes of the board-id field of a firmware image.
constexpr size_t BOARD_ID_SIZE = 16;
constexpr size_t MASK_DIGITS = 8;

constexpr unsigned SLIP_RING_BIT = 7;
constexpr unsigned ETHERNET_BIT = 9;
constexpr unsigned DIFFERENTIAL_AUDIO_BIT = 10;

int cfg_set::eth_support = -1;

int cfg_getBoardInfo(unsigned long index, char *buf, int size)
{
    const char *command;
    switch (index) {
    case BOARD_INFO_BOARDID:
        command = "board boardid";
        break;
    case BOARD_INFO_SN:
        command = "board sn";
        break;
    case BOARD_INFO_HWVER:
        command = "board hwver";
        break;
    default:
        REPORT("unknown index[%lu]", index);
        return -1;
    }

    const int read = command_line(command, buf, size);
    if (read <= 0) {
        // Log readers expect "pclose" for a failed open.
        REPORT("%s fail, errno[%d][%s]", read == NOT_STARTED ? "pclose" : "fgets", errno,
               strerror(errno));
        return -1;
    }
    char *newline = strchr(buf, '\n');
    if (newline)
        *newline = '\0';
    return 0;
}

int cfg_set::hardware_bit(unsigned bit)
{
    char text[BOARD_TEXT_SIZE] = "";
    if (cfg_getBoardInfo(BOARD_INFO_HWVER, text, sizeof text) != 0)
        return 0;
    return (int)(to_number(text, 16) >> bit & 1);
}

int cfg_is_slip_ring_model(void)
{
    return hardware_bit(SLIP_RING_BIT);
}

int cfg_is_audio_differential(void)
{
    return hardware_bit(DIFFERENTIAL_AUDIO_BIT);
}

int cfg_check_eth_support_by_hwver(void)
{
    if (eth_support == -1)
        eth_support = hardware_bit(ETHERNET_BIT);
    return eth_support;
}

uint32_t cfg_set::getBoardIdMask(const char *board, const char *model)
{
    const size_t prefix = strlen(model);
    if (prefix + 1 > BOARD_ID_SIZE) {
        REPORT("dwBufSize[%lu] not enough", (unsigned long)BOARD_ID_SIZE);
        return 0;
    }
    if (strncmp(board, model, prefix) != 0) {
        REPORT("model[%s] not found", model);
        return 0;
    }
    if (board[prefix] != 'h') {
        REPORT("invalid board format");
        return 0;
    }

    // The digits may fill the field, which then has no terminator.
    char digits[MASK_DIGITS + 1] = "";
    const size_t room = BOARD_ID_SIZE - 1 - prefix;
    strncpy(digits, board + prefix + 1, room < MASK_DIGITS ? room : MASK_DIGITS);
    for (const char *digit = digits; *digit; digit++) {
        if ((unsigned char)*digit & 0x80) {
            REPORT("non-ascii char[%#x]", (unsigned)(unsigned char)*digit);
            return 0;
        }
    }
    return to_number(digits, 16);
}
