// What a device must have for the library to work, for the verb check. A test
// compares docs/porting.md with it.
#pragma once

#include "cfg_set.h"

#include <unistd.h>

namespace cfgctl
{

struct Part {
    const char *names; // separated by blanks
    const char *purpose;
    int access = X_OK;           // to a driver's file: read, write or both
    int (*on_board)() = nullptr; // null when every board has it
};

// clang-format off
inline constexpr Part TOOLS[] = {
    {"board", "the board's identity"},
    {"param", "the probes of the neural networks"},
    {"demo_MXSetMicMute_ demo_MXSetMicVol_", "the microphone"},
    {"demo_MXSetSpeakerVol_ demo_MXAacPlayer_ demo_MXWavPlayer_", "sounds"},
    {"demo_MXTurnVideo_", "the orientation of the picture"},
    {"MotorCtrlApp LEDCtrlApp GMCtrl", "privacy mode"},
    {"AudioCheck", "sounds outside /audio"},
    {"smbu", "the upload"},
    {"wpa_supplicant wpa_cli /sbin/wpa_action.kx7 udhcpc /etc_ro/udhcpc.kill /etc_ro/init.d/S30wifi", "Wi-Fi"},
    {"ifconfig hostapd udhcpd pidof", "the access point"},
    {"ntpd cp", "time zone and time sync"},
    {"ps awk disable_watchdog", "upgrades"},
    {"killall nice echo cat grep rm sleep", "everything"},
};

inline constexpr Part DRIVERS[] = {
    {"/proc/ir_mode", "infrared", R_OK | W_OK},
    {"/proc/night_mode", "night mode", R_OK | W_OK},
    {"/proc/light_sensor /proc/stream_counter /proc/is_valid_activity_event "
     "/proc/is_valid_track_event /proc/azba_enhanced", "probes", R_OK},
    {"/proc/activity_zones", "the activity zones", R_OK | W_OK},
    {"/proc/wled_mode", "the lamp", R_OK | W_OK, cfg_isWLEDVersion},
    {"/proc/rlamp_mode", "the lamp", R_OK | W_OK, cfg_isRlampVersion},
    {"/proc/backlight /proc/isp320/command /proc/isp320/ae/auto_drc /proc/isp320/ae/auto_contrast",
     "backlight compensation", W_OK},
    {"/proc/live_streaming", "restarts of Wi-Fi", R_OK},
    {"/proc/wifi_reset", "resets of the radio", W_OK},
};

// Processes that always run and get signals by name.
inline constexpr Part PROCESSES[] = {
    {"ctrl_sched", "schedules"},
    {"alarm", "alarm clocks"},
    {"capture eventd", "privacy mode"},
    {"peerconn peerconn_watchdog morvenix_watchdog", "the connection to the app"},
    {"LEDCtrl", "the status LED"},
};
// clang-format on

struct SharedObject {
    const char *key;
    const char *purpose;
};

inline constexpr SharedObject QUEUES[] = {{"5678", "daemon messages"},
                                          {"0x20130005", "signals to the upload daemon"},
                                          {"0x20130003", "accounts for the upload daemon"}};
inline constexpr SharedObject LOCKS[] = {
    {"0x20130001", "event ring"}, {"0xDEF", "Wi-Fi link"}, {"0xDEF1", "privacy switch"}};
inline constexpr SharedObject RING = {"0x20130002", "event ring"};

} // namespace cfgctl
