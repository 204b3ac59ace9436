#include "settings/stored.h"

#include <string.h>

using namespace cfg_set;

constexpr unsigned SHORT_VALUE_SIZE = 16;
constexpr size_t CLOUD_STATUS_SIZE = 32;

constexpr int CLIP_MIN = 5;
constexpr int CLIP_MAX = 720;
constexpr int CLIP_DEFAULT = 7;
constexpr int PRELUDE_MIN = 3;
constexpr int PRELUDE_MAX = 30;
constexpr int PRELUDE_DEFAULT = 4;

static void store_number(const char *key, int value, const char *function, int line)
{
    char text[VALUE_SIZE];
    format(text, sizeof text, "%d", value);
    put_setting(key, text, function, line);
}

// A number stored as at most `size` - 1 characters. False, with the caller's
// report and `value` unchanged, when it cannot be read.
static bool read_number(const char *key, unsigned size, int *value, const char *function, int line)
{
    char text[VALUE_SIZE];
    if (!stored_text(key, text, size, function, line))
        return false;
    *value = to_int(text);
    return true;
}

static int within(int value, int least, int most, int otherwise)
{
    return value >= least && value <= most ? value : otherwise;
}

int nimbus_set_config(int enable, const char *folderid)
{
    store_number("nimbus_enable", enable, HERE);
    put_setting("nimbus_folderid", folderid, HERE);
    return 0;
}

int nimbus_get_config(int *enable, char *folderid, int *status)
{
    char enabled[SHORT_VALUE_SIZE] = "";
    param_get("nimbus_enable", enabled, sizeof enabled);
    *enable = strcmp(enabled, "1") == 0 ? 1 : 0;
    *folderid = '\0';
    param_get("nimbus_folderid", folderid, VALUE_SIZE);

    *status = 0;
    char text[CLOUD_STATUS_SIZE + 1];
    if (file_block("/tmp/.gdustatus", text, sizeof text) <= 0)
        return 0;
    text[strcspn(text, "\r\n")] = '\0';
    *status = to_int(text);
    return 0;
}

int led_disable_set_config(int disable)
{
    const bool off = disable == 1;
    store_number("led_disable", off, HERE);
    run(off ? "killall -SIGUSR1 LEDCtrl" : "killall -SIGUSR2 LEDCtrl");
    return 0;
}

int led_disable_get_config(int *disable)
{
    *disable = 0;
    if (read_number("led_disable", VALUE_SIZE, disable, HERE))
        *disable = within(*disable, 0, 1, 0);
    return 0;
}

int alert_vclip_set_config(int enable, int duration, int prelude)
{
    store_number("alert_vclip", enable == 1, HERE);
    store_number("alert_vclip_duration", within(duration, CLIP_MIN, CLIP_MAX, CLIP_DEFAULT), HERE);
    store_number("alert_vclip_prelude", within(prelude, PRELUDE_MIN, PRELUDE_MAX, PRELUDE_DEFAULT),
                 HERE);
    return 0;
}

int alert_vclip_get_config(int *enable, int *duration, int *prelude)
{
    *enable = 0;
    *duration = CLIP_DEFAULT; // the prelude is left to the caller
    if (read_number("alert_vclip", VALUE_SIZE, enable, HERE))
        *enable = within(*enable, 0, 1, 0);
    if (read_number("alert_vclip_duration", VALUE_SIZE, duration, HERE))
        *duration = within(*duration, CLIP_MIN, CLIP_MAX, CLIP_DEFAULT);
    if (read_number("alert_vclip_prelude", VALUE_SIZE, prelude, HERE))
        *prelude = within(*prelude, PRELUDE_MIN, PRELUDE_MAX, PRELUDE_DEFAULT);
    return 0;
}

int event_set_config(int s3_setting, int push_setting)
{
    store_number("event_s3_setting", s3_setting, HERE);
    store_number("event_push_setting", push_setting, HERE);
    return 0;
}

int event_get_config(int *s3_setting, int *push_setting)
{
    *s3_setting = 0;
    *push_setting = 0;
    read_number("event_s3_setting", SHORT_VALUE_SIZE, s3_setting, HERE);
    read_number("event_push_setting", SHORT_VALUE_SIZE, push_setting, HERE);
    return 0;
}

int media_server_set_config(int enable, int auth, int max_video_level)
{
    store_number("media_server_enable", enable, HERE);
    store_number("media_server_auth", auth, HERE);
    store_number("kurento_max_video_level", max_video_level, HERE);
    return 0;
}

int media_server_get_config(int *enable, int *auth, int *max_video_level)
{
    *enable = 0;
    *auth = 0;
    *max_video_level = 0;
    read_number("media_server_enable", VALUE_SIZE, enable, HERE);
    read_number("media_server_auth", VALUE_SIZE, auth, HERE);
    read_number("kurento_max_video_level", VALUE_SIZE, max_video_level, HERE);
    return 0;
}
