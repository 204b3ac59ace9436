#include "firmware/board.h"
#include "settings/stored.h"

#include <signal.h>
#include <string.h>

using namespace cfg_set;

// Receivers of daemon messages.
constexpr long PRIVACY = 1;
constexpr long PIR = 2;
constexpr long SOUND = 4;

constexpr uint32_t SENSITIVITIES = 3;

// The motion-tracking engine.
constexpr int PIR_CHANGED = 38;
#define ENGINE_PID_FILE "/var/run/GMMdVideo.pid"
constexpr size_t PID_SIZE = 32;

// Posts a message whose parameter is `text`.
static int post(long receiver, uint32_t command, int32_t value = 0, const char *text = "")
{
    daemon_message message = {};
    message.msg_type = receiver;
    message.command = command;
    message.value = value;
    format(message.param, sizeof message.param, "%s", text);
    return cfg_sendMsg(&message);
}

int cfg_setPirEnable(uint32_t on)
{
    if (result_of("cfg_sendMsg", post(PIR, on ? 2 : 3), HERE) != 0)
        return -1;
    char text[PID_SIZE + 1];
    if (file_block(ENGINE_PID_FILE, text, sizeof text) < 0) {
        REPORT("notify motion tracking engine fail");
        return 0;
    }
    const int engine = to_int(text);
    if (engine > 0)
        kill(engine, PIR_CHANGED);
    return 0;
}

int cfg_setPirPrivacyMode(uint32_t on)
{
    return result_of("cfg_sendMsg", post(PIR, on ? 4 : 5), HERE);
}

int cfg_setPrivacyEvent(uint32_t on)
{
    return result_of("cfg_setPrivacyEvent", post(PRIVACY, 7, on ? 1 : 0), HERE);
}

int cfg_setVolumeDetect(uint32_t on)
{
    return result_of("cfg_sendMsg", post(SOUND, on ? 4 : 5), HERE);
}

int cfg_setVolumeDetectPrivacyMode(uint32_t on)
{
    return result_of("cfg_sendMsg", post(SOUND, on ? 6 : 7), HERE);
}

// `level` modulo SENSITIVITIES, by the reciprocal, which is exact for all 2^32
// levels. Compiled for size, % would add a routine of 632 bytes.
static uint32_t sensitivity_of(uint32_t level)
{
    const uint32_t quotient = (uint32_t)((uint64_t)level * 0xAAAAAAAB >> 33);
    return level - quotient * SENSITIVITIES;
}

int cfg_setVolumeDetectSensitivity(uint32_t level)
{
    char text[VALUE_SIZE];
    format(text, sizeof text, "%lu", (unsigned long)sensitivity_of(level));
    return result_of("cfg_sendMsg", post(SOUND, 3, 0, text), HERE);
}

// stored_number of a detection switch. On boards that cannot have it on, the
// number becomes 0 and is stored.
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

// Alert channels exist only in the store: nothing is applied to a device.

int cfg_setMotionTrackEnable(uint32_t)
{
    return 0;
}

int cfg_setAlertAppEnable(uint32_t)
{
    return 0;
}

int cfg_setAlertVideoCallEnable(uint32_t)
{
    return 0;
}

int cfg_setAlertVideoCallAccount(const char *)
{
    return 0;
}

int cfg_setAlertEmailEnable(uint32_t)
{
    return 0;
}

int cfg_setAlertEmailAccount(const char *)
{
    return 0;
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
