#include "firmware/board.h"
#include "settings/stored.h"

using namespace cfg_set;

#define IR_FILE "/proc/ir_mode"
#define WLED_FILE "/proc/wled_mode"

constexpr unsigned WLED_BIT = 4;
constexpr unsigned RLAMP_BIT = 6;
constexpr uint32_t FIXED_BOARD = 0x56CA; // hardware version whose orientation is always 0

constexpr int HW_VER_SIZE = 16;

int cfg_setIrEnable(int mode)
{
    static const char DIGIT[][2] = {"0", "2", "3"};
    if (mode < 0 || mode > 2)
        put_file(IR_FILE, "", 0);
    else
        put_file(IR_FILE, DIGIT[mode], sizeof DIGIT[mode]);
    return 0;
}

int cfg_restoreIrEnable(void)
{
    uint32_t mode;
    if (!stored_number("io_ir_enable", &mode, HERE))
        return -1;
    return result_of("cfg_setIrEnable", cfg_setIrEnable((int)mode), HERE);
}

int ir_mode(void)
{
    return file_number(IR_FILE, 2);
}

uint32_t cfg_get_hw_ver(void)
{
    char text[HW_VER_SIZE] = "";
    command_line("board hwver", text, sizeof text);
    return to_number(text, 16);
}

int cfg_setVideoOrientation(uint32_t value)
{
    run(value == 0 ? "demo_MXTurnVideo_ 3 &" : "demo_MXTurnVideo_ 0 &");
    return 0;
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

int cfg_setBacklightCompensation(uint32_t value)
{
    if (value != 0) {
        run("echo 1 > /proc/backlight");
        run("echo w saturation 100 > /proc/isp320/command;"
            "echo 6 > /proc/isp320/ae/auto_drc;"
            "echo 1 > /proc/isp320/ae/auto_contrast;"
            "echo w dr_mode 1 > /proc/isp320/command;");
        return 0;
    }
    run("echo 0 > /proc/backlight");
    run("echo w saturation 128 > /proc/isp320/command;"
        "echo 0 > /proc/isp320/ae/auto_drc;"
        "echo 0 > /proc/isp320/ae/auto_contrast;"
        "echo w dr_mode 0  > /proc/isp320/command;");
    return 0;
}

int cfg_restoreBacklightCompensation(void)
{
    uint32_t value;
    if (!stored_number("io_backlight_compensation", &value, HERE))
        return -1;
    return result_of("cfg_setBacklightCompensation", cfg_setBacklightCompensation(value), HERE);
}

int night_mode(uint32_t on)
{
    put_file("/proc/night_mode", on ? "1" : "0", 1);
    return 0;
}

int in_night_mode(void)
{
    return file_number("/proc/night_mode", 0);
}

int light_sensor(void)
{
    return file_number("/proc/light_sensor", 0);
}

int cfg_isWLEDVersion(void)
{
    return hardware_bit(WLED_BIT);
}

int cfg_isRlampVersion(void)
{
    return hardware_bit(RLAMP_BIT);
}

int wled_mode(uint32_t mode)
{
    FILE *lamp = fopen(WLED_FILE, "w+e"); // the driver keeps its mode through it
    if (!lamp)
        return REPORT("open %s file fail", WLED_FILE);
    char buffer[SMALL_FILE_SIZE]; // what is written goes out in fclose, which tells of a failure
    setvbuf(lamp, buffer, _IOFBF, sizeof buffer);
    bool taken = mode <= 2;
    if (mode == 3 && fgetc(lamp) == '1')
        taken = fseek(lamp, 0, SEEK_SET) == 0;
    char digit[2];
    if (taken && format(digit, sizeof digit, "%d", (int)mode))
        fwrite(digit, 1, sizeof digit, lamp);
    return fclose(lamp);
}

int cfg_setWLEDEnable(uint32_t mode)
{
    if (mode <= 2)
        wled_mode(mode);
    return 0;
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
    FILE *lamp = open_unbuffered("/proc/rlamp_mode", "we");
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
    // Log readers expect the other lamp's name here.
    return result_of("cfg_setWLEDEnable", cfg_setRlampEnable(mode), HERE);
}

int cfg_isLEDDisabled(void)
{
    return stored_int("led_disable", 2);
}
