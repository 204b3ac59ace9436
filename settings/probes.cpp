#include "settings/stored.h"

#include <string.h>

using namespace cfg_set;

#define ZONES_FILE "/proc/activity_zones"

int streaming_counter(void)
{
    return file_number("/proc/stream_counter", 0);
}

// An event whose file is missing counts as valid.
static int valid_event(const char *path)
{
    char text[32 + 1];
    return file_block(path, text, sizeof text) < 0 || to_int(text) != 0;
}

int is_valid_activity_event(void)
{
    return valid_event("/proc/is_valid_activity_event");
}

int is_valid_track_event(void)
{
    return valid_event("/proc/is_valid_track_event");
}

int get_enhanced_mode(void)
{
    char text[16 + 1] = "";
    file_block("/proc/azba_enhanced", text, sizeof text);
    return text[0] == '1';
}

int CheckFixCaptureSatus(void)
{
    return stored_int("fix_capture_status", 2);
}

// The stored number of `key` as the store's shell tool prints it.
static int printed_number(const char *key)
{
    char command[64];
    char line[64] = "";
    format(command, sizeof command, "param get %s", key);
    command_line(command, line, sizeof line);
    return to_int(line);
}

int is_nn_enable(void)
{
    return printed_number("nn_enable");
}

int is_sound_nn_enable(void)
{
    return printed_number("sound_nn_enable");
}

int activity_zones_state(int write, int value)
{
    char digit[2 + 1] = "";
    if (!write) {
        if (file_block(ZONES_FILE, digit, sizeof digit) < 0)
            perror("fopen");
        return to_int(digit);
    }
    if (!format(digit, 2, "%d", value))
        return 0;
    if (!put_file(ZONES_FILE, digit, 2))
        perror("fopen");
    return 0;
}

// Reads "{%d,%d}{%d,%d,%d,%d}", of which the second group is the zones.
static bool scan_zones(const char *text, int (&zone)[4])
{
    int unused;
    text = scan_number(text, "{", &unused);
    if (text)
        text = scan_number(text, ",", &unused);
    const char *before = "}{";
    for (int i = 0; text && i < 4; i++) {
        text = scan_number(text, before, &zone[i]);
        before = ",";
    }
    return text != nullptr;
}

int disable_face_hw_check(void)
{
    char text[VALUE_SIZE] = "";
    if (param_get("motor_zones", text, sizeof text) != 0)
        return 0;
    int zone[4];
    if (!scan_zones(text, zone)) {
        fputs("sscanf value fail \n", stderr);
        return 0;
    }
    if (zone[0] || zone[1] || zone[2] || zone[3]) {
        run("GMCtrl c 0");
        return 0;
    }
    char enable[8] = "";
    param_get("alert_face_enable", enable, sizeof enable);
    if (strcmp(enable, "1") == 0)
        run("GMCtrl c 1");
    return 0;
}
