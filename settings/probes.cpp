#include "settings/frame.h"

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

// The number of `key` that the store's shell tool prints.
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
    char digits[2 + 1] = "";
    if (!write) {
        if (file_block(ZONES_FILE, digits, sizeof digits) < 0)
            perror("fopen");
        return to_int(digits);
    }
    if (value < 0 || value > 9)
        return 0;
    digits[0] = (char)('0' + value);
    if (!put_file(ZONES_FILE, digits, 2))
        perror("fopen");
    return 0;
}
