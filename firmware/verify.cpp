#include "firmware/verify.h"

#include "firmware/board.h"
#include "settings/frame.h"

#include <endian.h>
#include <errno.h>
#include <string.h>

using namespace cfg_set;

// The header of an image. Numbers are big-endian; the other bytes are not used.
struct ImageHeader {
    uint8_t rest1[4];
    uint32_t dwHeaderChecksum;
    uint8_t rest2[16];
    uint32_t dwImageChecksum;
    uint8_t rest3[4];
    char sBoardId[16]; // NUL only when shorter
    uint8_t rest4[16];
};
static_assert(sizeof(ImageHeader) == 64, "header");
static_assert(offsetof(ImageHeader, dwHeaderChecksum) == 4, "dwHeaderChecksum");
static_assert(offsetof(ImageHeader, dwImageChecksum) == 24, "dwImageChecksum");
static_assert(offsetof(ImageHeader, sBoardId) == 32, "sBoardId");

// Bytes of the longest board id, with a terminator.
constexpr size_t BOARD_ID_TEXT_SIZE = sizeof(ImageHeader::sBoardId) + 1;

int cfg_checkHeaderChecksum(const void *pbHeader)
{
    if (!pbHeader) {
        REPORT("invalid pbHeader");
        return -1;
    }
    ImageHeader header;
    memcpy(&header, pbHeader, sizeof header);
    const uint32_t stored = be32toh(header.dwHeaderChecksum);
    header.dwHeaderChecksum = 0;
    const uint32_t computed = cfg_getCrc32(&header, sizeof header);
    if (computed != stored) {
        REPORT("header checksum not match [%#x]!=[%#x]", computed, stored);
        return -1;
    }
    return 0;
}

int cfg_checkBoardId(const void *pbHeader)
{
    if (!pbHeader) {
        REPORT("invalid pbHeader");
        return -1;
    }
    char device[BOARD_ID_TEXT_SIZE] = "";
    if (cfg_getBoardInfo(BOARD_INFO_BOARDID, device, sizeof device) != 0) {
        REPORT("cfg_getBoardInfo fail");
        return -1;
    }
    if (*device == '\0') {
        REPORT("no board id found");
        return -1;
    }
    toLower(device, sizeof device);

    // The model ends before the first "h" that is not the first letter.
    char model[BOARD_ID_TEXT_SIZE];
    memcpy(model, device, sizeof model);
    char *end = strchr(model + 1, 'h');
    if (end)
        *end = '\0';

    ImageHeader header;
    memcpy(&header, pbHeader, sizeof header);
    char image[BOARD_ID_TEXT_SIZE] = "";
    memcpy(image, header.sBoardId, sizeof header.sBoardId);
    toLower(image, sizeof header.sBoardId);

    const uint32_t image_mask = getBoardIdMask(image, model);
    const uint32_t device_mask = getBoardIdMask(device, model);
    if ((image_mask & device_mask) == 0) {
        REPORT("image mask[%#x] not valid for [%#x]", image_mask, device_mask);
        return -1;
    }
    return 0;
}

// Back to the start of the file; a failure is reported for the caller.
static bool rewound(FILE *fp, const char *function, int line)
{
    if (fseek(fp, 0, SEEK_SET) == 0)
        return true;
    report(function, line, "fseek fail, errno[%d][%s]", errno, strerror(errno));
    return false;
}

int cfg_set::checkImageChecksum(FILE *fp, uint32_t dwLimit)
{
    if (!rewound(fp, HERE))
        return -1;
    ImageHeader header = {};
    const size_t count = fread(&header, 1, sizeof header, fp);
    (void)count; // what was not read is zero
    if (!rewound(fp, HERE))
        return -1;

    const uint32_t stored = be32toh(header.dwImageChecksum);
    const uint32_t computed = cfg_getCrc32FromFile(fp, sizeof header, dwLimit);
    if (computed != stored) {
        REPORT("image checksum not match [%#x]!=[%#x]", computed, stored);
        return -1;
    }
    // After a read error the missing bytes count as zeros and as the end of file.
    if (ferror(fp)) {
        REPORT("stream error");
        return -1;
    }
    return 0;
}

int cfg_checkFirmware(FILE *fp, uint32_t dwLimit)
{
    if (!fp) {
        REPORT("invalid fp");
        return -1;
    }
    if (!rewound(fp, HERE))
        return -1;
    ImageHeader header;
    if (fread(&header, 1, sizeof header, fp) != sizeof header) {
        REPORT("fread fail");
        return -1;
    }
    if (result_of("cfg_checkBoardId", cfg_checkBoardId(&header), HERE) != 0)
        return -1;
    if (result_of("cfg_checkHeaderChecksum", cfg_checkHeaderChecksum(&header), HERE) != 0)
        return -1;
    return result_of("cfg_checkImageChecksum", checkImageChecksum(fp, dwLimit), HERE);
}
