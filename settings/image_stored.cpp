#include "settings/stored.h"

using namespace cfg_set;

constexpr uint32_t FIXED_BOARD = 0x56CA; // hardware version whose orientation is always 0

int cfg_restoreIrEnable(void)
{
    uint32_t mode;
    if (!stored_number("io_ir_enable", &mode, HERE))
        return -1;
    return result_of("cfg_setIrEnable", cfg_setIrEnable((int)mode), HERE);
}

int cfg_restoreVideoOrientation(void)
{
    if (cfg_get_hw_ver() == FIXED_BOARD)
        param_set("io_video_orientation", "0");
    uint32_t value;
    if (!stored_number("io_video_orientation", &value, HERE))
        return -1;
    return result_of("cfg_setVideoOrientation", cfg_setVideoOrientation(value), HERE);
}

int cfg_restoreBacklightCompensation(void)
{
    uint32_t value;
    if (!stored_number("io_backlight_compensation", &value, HERE))
        return -1;
    return result_of("cfg_setBacklightCompensation", cfg_setBacklightCompensation(value), HERE);
}

int cfg_restoreWLEDEnable(void)
{
    if (!cfg_isWLEDVersion())
        return -1;
    uint32_t mode;
    if (!stored_number("wled_mode", &mode, HERE))
        return -1;
    return result_of("cfg_setWLEDEnable", cfg_setWLEDEnable(mode), HERE);
}

int rlamp_mode(int mode)
{
    FILE *lamp = open_unbuffered("/proc/rlamp_mode", "w");
    if (!lamp) {
        REPORT("open file fail");
        return -1;
    }
    bool taken = mode >= 0 && mode <= 2;
    char stored[4] = "";
    if (mode == 3 && param_get("rlamp_mode", stored, sizeof stored) == 0) {
        REPORT("sValue=[%s]", stored);
        taken = to_int(stored) == 3;
    }
    if (taken)
        fputc('0' + mode, lamp);
    fclose(lamp);
    return 0;
}

int cfg_setRlampEnable(uint32_t mode)
{
    if (mode <= 3)
        rlamp_mode((int)mode);
    return 0;
}

int cfg_restoreRlampEnable(void)
{
    if (!cfg_isRlampVersion())
        return -1;
    uint32_t mode;
    if (!stored_number("rlamp_mode", &mode, HERE))
        return -1;
    // The other lamp's name is the text that log readers look for.
    return result_of("cfg_setWLEDEnable", cfg_setRlampEnable(mode), HERE);
}

int cfg_isLEDDisabled(void)
{
    return stored_int("led_disable", 2);
}
