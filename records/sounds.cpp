#include "settings/stored.h"

#include <string.h>

using namespace cfg_set;

#define SOUND_FOLDER "/audio/"
#define BUILT_IN_ALARM SOUND_FOLDER "alarm.aac"

constexpr size_t CHECK_COMMAND_SIZE = 120;
constexpr int REPLY_SIZE = 4;

constexpr int VOLUME_DEFAULT = 1;
constexpr unsigned VOLUME_MAX = 2;

static bool is_built_in(const char *path)
{
    return strncmp(path, SOUND_FOLDER, sizeof SOUND_FOLDER - 1) == 0;
}

// Whether AudioCheck accepts the file. Reports begin with `label`.
static bool passes_check(const char *path, const char *command, const char *label)
{
    char reply[REPLY_SIZE] = "";
    if (command_line(command, reply, sizeof reply) < 0) {
        fprintf(stderr, "%s: can't check file [%s]\n", label, path);
        return false;
    }
    fprintf(stderr, "%s: ret = [%s]\n", label, reply);
    return *reply != '1' && to_int(reply) != -1;
}

// Whether a sound may be chosen: none (null), a built-in one, or one that
// AudioCheck accepts. A path that is too long or that `harmless` refuses is reported
// for the caller.
static bool may_choose(const char *path, const char *label, const char *function, int line)
{
    if (!path)
        return true;
    const bool built_in = is_built_in(path);
    char command[CHECK_COMMAND_SIZE];
    const bool fits = built_in ? strlen(path) < VALUE_SIZE
                               : format(command, sizeof command, "AudioCheck 32000 \"%s\"", path);
    if (!fits || !harmless(path, SOUND_WORD)) {
        report(function, line, "invalid path");
        return false;
    }
    return built_in || passes_check(path, command, label);
}

static int copy_stored(const char *key, char *dst, size_t size, const char *function, int line)
{
    char value[VALUE_SIZE] = "";
    if (stored_text(key, value, sizeof value, function, line) && size > 0)
        strncpy(dst, value, size - 1);
    return 0;
}

int alert_file_set_config(const char *path)
{
    if (!may_choose(path, "alert_file_set_config", HERE))
        return -1;
    put_setting("alert_file", path, HERE);
    if (!path)
        return 0;
    const bool alarm = strcmp(path, BUILT_IN_ALARM) == 0;
    put_setting("greeting_enable", alarm ? "0" : "1", HERE);
    put_setting(alarm ? "alarm_audio" : "greeting_audio", path, HERE);
    return 0;
}

int alert_file_get_config(char *dst, size_t size)
{
    return copy_stored("alert_file", dst, size, HERE);
}

int greeting_file_set_config(const char *path)
{
    if (!may_choose(path, "greeting_file_set_config", HERE))
        return -1;
    put_setting("greeting_audio", path, HERE);
    char enabled[8] = "";
    if (param_get("greeting_enable", enabled, sizeof enabled) != 0)
        return 0;
    REPORT("sValue=[%s]", enabled);
    if (to_int(enabled) != 0)
        param_set("alert_file", path);
    return 0;
}

int greeting_file_get_config(char *dst, size_t size)
{
    return copy_stored("greeting_audio", dst, size, HERE);
}

int alarm_audio_set_config(const char *path)
{
    // The label that log readers expect; not this function's name.
    if (!may_choose(path, "alarm_file_set_config", HERE))
        return -1;
    put_setting("alarm_audio", path, HERE);
    put_setting("alert_file", path, HERE);
    return 0;
}

int alarm_audio_get_config(char *dst, size_t size)
{
    return copy_stored("alarm_audio", dst, size, HERE);
}

int alert_file_set_vol(const char *volume)
{
    if (!volume)
        return -1;
    int value = to_int(volume);
    if ((unsigned)value > VOLUME_MAX) {
        fprintf(stderr, "%s:%d error s_alert_vol = %s\n", HERE, volume);
        value = VOLUME_DEFAULT;
    }
    char text[VALUE_SIZE];
    format(text, sizeof text, "%d", value);
    put_setting("alert_vol", text, HERE);
    return 0;
}

int alert_file_get_vol(int, int *volume)
{
    *volume = VOLUME_DEFAULT;
    char text[VALUE_SIZE];
    if (!stored_text("alert_vol", text, sizeof text, HERE))
        return 0;
    const int value = to_int(text);
    if ((unsigned)value <= VOLUME_MAX)
        *volume = value;
    return 0;
}
