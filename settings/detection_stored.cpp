#include "firmware/board.h"
#include "settings/stored.h"

#include <string.h>

using namespace cfg_set;

// stored_number of a detection switch; on boards that cannot have it on, the
// number is 0 and stored as such.
static bool stored_switch(const char *key, uint32_t *on, const char *function, int line)
{
    if (!stored_number(key, on, function, line))
        return false;
    char board[BOARD_TEXT_SIZE] = "";
    cfg_getBoardInfo(BOARD_INFO_SN, board, sizeof board);
    if (strcmp(board, "B2") == 0 || strcmp(board, "D1") == 0) {
        *on = 0;
        param_set(key, "0");
    }
    return true;
}

int cfg_restorePirEnable(void)
{
    uint32_t on;
    if (!stored_switch("alert_pir_enable", &on, HERE))
        return -1;
    return result_of("cfg_setPirEnable", cfg_setPirEnable(on), HERE);
}

int cfg_restoreVolumeDetect(void)
{
    uint32_t on;
    if (!stored_switch("alert_audio_enable", &on, HERE))
        return -1;
    return result_of("cfg_setVolumeDetect", cfg_setVolumeDetect(on), HERE);
}

int cfg_restoreVolumeDetectSensitivity(void)
{
    uint32_t level;
    if (!stored_number("alert_audio_sensitivity", &level, HERE))
        return -1;
    return result_of("cfg_setVolumeDetectSensitivity", cfg_setVolumeDetectSensitivity(level), HERE);
}

// 0 when the setting can be read, else -1 after the caller's report.
static int readable(const char *key, const char *function, int line)
{
    char text[VALUE_SIZE];
    return stored_text(key, text, sizeof text, function, line) ? 0 : -1;
}

int cfg_setAlertType(uint32_t)
{
    return readable("alert_chat_enable", HERE);
}

int cfg_setAlertChatEnable(uint32_t value)
{
    return value == 0 ? 0 : readable("alert_type", HERE);
}

int cfg_restoreAlertType(void)
{
    char text[VALUE_SIZE];
    if (!stored_text("alert_type", text, sizeof text, HERE))
        return -1;
    return result_of("cfg_setAlertType", cfg_setAlertType((uint32_t)to_int(text)), HERE);
}

int cfg_restoreAlertChatEnable(void)
{
    uint32_t value;
    if (!stored_number("alert_chat_enable", &value, HERE))
        return -1;
    return result_of("cfg_setAlertChatEnable", cfg_setAlertChatEnable(value), HERE);
}

int cfg_restoreMotionTrackEnable(void)
{
    return readable("alert_motion_track_enable", HERE);
}

int cfg_restoreAlertAppEnable(void)
{
    return readable("alert_app_enable", HERE);
}

int cfg_restoreAlertVideoCallEnable(void)
{
    return readable("alert_video_call_enable", HERE);
}

int cfg_restoreAlertEmailEnable(void)
{
    return readable("alert_email_enable", HERE);
}

int cfg_restoreAlertVideoCallAccount(void)
{
    return readable("alert_call_account", HERE);
}

int cfg_restoreAlertEmailAccount(void)
{
    return readable("alert_email_account", HERE);
}
