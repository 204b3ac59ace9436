#include "settings/frame.h"

#include <sys/file.h>

using namespace cfg_set;

#define DEV_STATUS_FILE "/tmp/dev_status"
constexpr uint8_t STATUS_UNKNOWN = 255;

int cfg_setDeviceStatus(uint8_t status)
{
    FILE *file = open_unbuffered(DEV_STATUS_FILE, "we");
    if (!file) {
        REPORT("Fail to open %s file", DEV_STATUS_FILE);
        return -1;
    }
    // The lock is shared and comes after the truncation: it does not exclude readers.
    REPORT("result:%d", flock(fileno(file), LOCK_SH));
    const size_t written = fwrite(&status, 1, sizeof status, file);
    REPORT("status: %d, writeSize: %d, sizeof(status):%d", status, (int)written,
           (int)sizeof status);
    REPORT("result:%d", flock(fileno(file), LOCK_UN));
    fclose(file);
    return 0;
}

uint8_t cfg_getDeviceStatus(void)
{
    FILE *file = open_unbuffered(DEV_STATUS_FILE, "re");
    if (!file) {
        REPORT("Fail to open %s file", DEV_STATUS_FILE);
        return STATUS_UNKNOWN;
    }
    uint8_t status = 0;
    REPORT("result:%d", flock(fileno(file), LOCK_SH));
    const size_t length = fread(&status, 1, sizeof status, file);
    REPORT("status: %d, readSize: %d, sizeof(status):%d", status, (int)length, (int)sizeof status);
    REPORT("result:%d", flock(fileno(file), LOCK_UN));
    fclose(file);
    return status;
}
