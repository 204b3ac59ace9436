// What cfgctl's words mean: its verbs, their arguments and options, and the
// stored settings. The command line's checks, the help, the man page and the
// completion all come from these tables.
#pragma once

#include <cstdint>
#include <iterator>

#ifdef CFGCTL_PAGES // the texts alone, for the man page's generator
#define DO(function) nullptr
#define RESTORE(function) some_restorer
inline int some_restorer()
{
    return 0;
}
#else
#include "cfg_set.h"
#define DO(function) function
#define RESTORE(function) function
inline int set_ir_mode(uint32_t mode)
{
    return cfg_setIrEnable(static_cast<int>(mode));
}
#endif

namespace cfgctl
{

struct Call;

// The functions that do the verbs' work.
using Run = void(Call &call);
Run get, set, unset, save, restore, show, board, prompt, alert_sound, privacy, night, lamp, probe,
    rec, monitor, events_list, events_add, events_drop, events_clear, events_dump, status,
    firmware_check, firmware_newer, firmware_downloaded, speech, crc, wifi_config, wifi_control,
    wifi_status, link_status, time_zone, time_sync, upload_status, upload_config, upload_control,
    upload_recover, list_print, list_set, viewer_list, viewer_add, viewer_del, sound, volume,
    feature_list, feature, check_camera;

enum Kind {
    NONE,     // end of a word list; an option without a value
    NUMBER,   // decimal, least to most
    TIME,     // minute of the day, or HH:MM
    CHOICE,   // one of `choices`
    FILENAME, // a file that cfgctl reads
    STORE_KEY,
    ASSIGNMENT, // KEY=VALUE, any number of them
    // Texts of least to most bytes. Where least is 0, the empty text is always valid.
    TEXT,
    SECRET,   // may come from standard input, and is not shown
    PATH,     // a name that goes into a command line
    SERVER,   // a time server, goes into a command line
    ZONE,     // goes into a command line, is in the zone table
    SSID,     // one that the supplicant's file can hold
    WIFI_KEY, // the same for a key; a secret
    BSSID,
    AREAS, // {A,B}{C,D,E,F}
};

// An argument, an option, or a stored value.
struct Word {
    const char *name;
    Kind kind;
    int64_t least;
    int64_t most;
    const char *meaning;
    const char *choices = nullptr; // "on|off"
};

// clang-format off
enum Option : unsigned {
    NO_SAVE = 1, NO_APPLY = 2, FORCE = 4, ALL = 8, SHOW_SECRETS = 16, COUNT = 32, SKIP = 64,
    LIMIT = 128, EXPORT = 256, DEFAULT = 512, ONE_TYPE = 1024, JSON = 2048, HELP = 4096,
    VERSION = 8192, TOGETHER = 16384, // not an option: all optional words or none
};
// clang-format on

struct Verb {
    const char *name;
    const char *summary;
};

constexpr unsigned WORDS_MAX = 7;

// What a verb does. A verb may have several actions with different names.
struct Action {
    const char *verb;
    const char *name; // "" for a verb with a single action
    unsigned least;   // number of required words
    Word words[WORDS_MAX];
    unsigned options;
    const char *effect; // what it reads, stores, runs and posts
    const char *exits;  // reasons to fail, by exit status
    Run *run;
    const char *example = ""; // the words after the verb
};

// A key that the library or a daemon of the firmware reads.
struct Setting {
    Word value;          // its name is the key
    const char *applied; // what applies it to the device
    int (*set)(uint32_t value) = nullptr;
    int (*restore)() = nullptr;
    unsigned messages = 0;        // that the setter posts to the daemons
    int (*on_board)() = nullptr;  // null when every board has it
    const char *file = nullptr;   // of the driver; shows the value
    const char *digits = nullptr; // by these digits; larger values by the last
};

constexpr int64_t ANY = UINT32_MAX;
constexpr int64_t LEAST = INT32_MIN;
constexpr int64_t MOST = INT32_MAX;
constexpr int64_t DAY = 1440;   // minutes
constexpr int64_t STORED = 255; // characters that the library reads of a value

// clang-format off

// In the order of their bits.
inline constexpr Word OPTIONS[] = {
    {"--no-save", NONE, 0, 0, "do not save the store: a restart loses the change"},
    {"--no-apply", NONE, 0, 0, "do not apply the value to the device"},
    {"--force", NONE, 0, 0, "do it anyway"},
    {"--all", NONE, 0, 0, "everything, in the order of a firmware's start"},
    {"--show-secrets", NONE, 0, 0, "print passcodes, credentials, keys and passwords as they are"},
    {"--count", NUMBER, 1, ANY, "end after this many messages"},
    {"--skip", NUMBER, 0, 511, "leading bytes to skip"},
    {"--limit", NUMBER, 0, ANY, "read only this many bytes of the file; 0: all"},
    {"--export", NONE, 0, 0, "print KEY=VALUE lines that set - can read"},
    {"--default", TEXT, 0, STORED, "print this when no value can be read"},
    {"--type", NUMBER, 1, MOST, "take only messages of this type"},
    {"--json", NONE, 0, 0, "print the data, or what was done, as JSON; help and version stay text"},
    {"--help", NONE, 0, 0, "print help, also -h and help VERB"},
    {"--version", NONE, 0, 0, "print the version"},
};
constexpr unsigned OPTION_COUNT = std::size(OPTIONS);

inline constexpr Verb VERBS[] = {
    {"get", "print the stored value of a key"},
    {"set", "store values, apply them to the device, save the store"},
    {"unset", "remove a key from the store, save the store"},
    {"save", "save the store"},
    {"restore", "apply stored values to the device"},
    {"show", "list the known keys, their values and what applies them"},
    {"check", "print what is missing or wrong, and how to fix it"},
    {"board", "print the board's identity and features"}, {"prompt", "play a spoken prompt"},
    {"alert", "play an alert sound, then restore the speaker"},
    {"privacy", "print or switch privacy mode"}, {"night", "print or switch night mode"},
    {"lamp", "drive a lamp directly"}, {"probe", "print the result of every status probe"},
    {"rec", "post a recording command"},
    {"monitor", "take messages from the daemons' queue and print them"},
    {"events", "list, add and drop pending events, check a copy of the ring"},
    {"status", "print or set the device status"},
    {"firmware", "check an image, a version or the download"},
    {"speech", "print whether the downloaded prompts are unpacked"},
    {"crc", "print the CRC-32 of a file"},
    {"wifi", "write the supplicant's file, control the Wi-Fi link"},
    {"link", "print which interfaces have an IPv4 address"},
    {"time", "set the time zone, switch time sync"},
    {"upload", "query, configure and control the upload daemon"},
    {"schedule", "list or replace the schedules"}, {"alarm", "list or replace the alarm clocks"},
    {"viewer", "list, add and remove viewers, also at the relay"},
    {"sound", "print or choose a sound or the alert volume"},
    {"feature", "print or change feature switches"},
};

inline constexpr Verb EXITS[] = {
    {"0", "done"}, {"1", "not found or false"}, {"2", "wrong usage"}, {"3", "not stored"},
    {"4", "not applied"},
};

#define ON_OFF(meaning) {"STATE", CHOICE, 0, 0, meaning, "on|off"}
#define INPUT {"FILE", FILENAME, 0, 0, "the list as list or list --json prints it, or one entry " \
    "per line with commas between the fields; default: standard input"}
#define SOUND {"FILE", PATH, 1, STORED, "the path; outside /audio, at most 100 characters, " \
    "and AudioCheck must accept the file"}

inline constexpr Action ACTIONS[] = {
    {"get", "", 1, {{"KEY", STORE_KEY, 0, 0, "any key, known or not"}}, DEFAULT,
     "Prints the whole stored value and a line feed.",
     "1 no value can be read", DO(get), "io_speaker_volume"},
    {"set", "", 1, {{"KEY=VALUE", ASSIGNMENT, 0, 0, "one of the keys below and its value; any key "
      "with --force. KEY VALUE sets a single key. With - as value, set reads the value from "
      "standard input; with - alone, lines KEY=VALUE. # begins a comment line"}},
     NO_SAVE | NO_APPLY | FORCE,
     "Stores the values, runs the keys' setters (cfgctl show names them) and saves the store. "
     "First it checks the values, the board's features and the room in the daemons' queue; if one "
     "check fails, it changes nothing. When a setter fails, the store gets the old values back. "
     "A value is \"applied\" when the driver's file shows it, and \"called\" when the setter ran "
     "but no file shows the value.",
     "2 a wrong value or an unknown key, 3 not stored or not saved, 4 not applied",
     DO(set), "io_speaker_volume=31 io_mic_enable=1"},
    {"unset", "", 1, {{"KEY", STORE_KEY, 0, 0, "a stored key"}}, NO_SAVE,
     "Removes the key and saves the store. Does not change the device.",
     "1 the key is not stored, 3 it cannot be removed", DO(unset), "wl3_ssid"},
    {"save", "", 0, {}, 0, "Saves the store: the values survive a restart.",
     "3 the store cannot be saved", DO(save)},
    {"restore", "", 0, {{"KEY", STORE_KEY, 0, 0, "a key that has a restorer"}}, ALL,
     "Runs the restorer of the key. --all does what the firmware does when it starts: it runs "
     "every restorer of this board, wifi config, wifi start, time zone and time sync on. Boards "
     "with serial number B2 or D1 store 0 for PIR and sound detection, boards 56CA for the orientation.",
     "1 the key has no restorer on this board, 4 something failed", DO(restore), "--all"},
    {"show", "", 0, {{"PREFIX", STORE_KEY, 0, 0, "only keys that begin with it; for a single key, "
                      "also its valid values"}}, SHOW_SECRETS | EXPORT,
     "Prints the keys that the library and the daemons know. --export prints the stored ones. A "
     "# comment replaces values that set rejects and, without --show-secrets, secrets.",
     "1 no such key", DO(show), "io_"},
    {"check", "", 0, {{"AREA", CHOICE, 0, 0, "default: all", "store|board|tools|drivers|files|queues|locks|ring|daemons"}}, 0,
     "Checks the whole camera or one area of it. Prints one line per item: its state and, if "
     "something is wrong, what to do. Changes nothing: it writes nothing, takes no lock and runs "
     "only the command board. Checks stored values by the rules of set. Shows no secrets.",
     "1 something is wrong", DO(check_camera), "drivers"},
    {"board", "", 0, {}, 0, "Prints the board's id, serial number and hardware version, and the "
     "features that the version implies.",
     "1 the board does not report all three", DO(board)},
    {"prompt", "", 1, {{"NAME", PATH, 1, 230, "file name without folder"}}, 0,
     "Plays the prompt in the stored language (lang_name) from the card, else from /localization, "
     "else from /audio. If the stored volume is 27 or 0, sets the speaker to 27 first.",
     "4 no such file, or it was not played", DO(prompt), "hello.aac"},
    {"alert", "", 1, {{"FILE", PATH, 1, 225, "the sound's path; without .aac, it is a WAV file"}}, 0,
     "Plays the sound at raised priority, then restores the stored speaker setting.",
     "4 no such file, it was not played, or the speaker was not restored", DO(alert_sound), "/audio/alarm.aac"},
    {"privacy", "", 0, {ON_OFF("default: print the state")}, NO_SAVE,
     "Prints whether privacy mode is on, or enters or leaves it: stores orb_privacy_mode_enable, "
     "drives motor, LED and lights, posts four messages to the daemons, signals peer connection "
     "and playback, and saves the store. Does nothing if the store already has that mode.",
     "1 privacy mode is off, 3 not stored, 4 the daemons' queue has no room", DO(privacy), "on"},
    {"night", "", 0, {ON_OFF("default: print the state")}, 0,
     "Prints whether night mode is on, or writes /proc/night_mode. Stores nothing.",
     "1 night mode is off, 4 the driver did not take it", DO(night), "on"},
    {"lamp", "", 2, {{"LAMP", CHOICE, 0, 0, "the lamp", "wled|rlamp"},
                     {"MODE", NUMBER, 0, 3, "3 works on the WLED only in mode 1, on the Rlamp "
                      "only while the stored rlamp_mode is 3"}}, 0,
     "Writes the mode to /proc/wled_mode or /proc/rlamp_mode. Stores nothing; set wled_mode and "
     "set rlamp_mode do.", "4 the board has no such lamp, or the driver did not take the mode",
     DO(lamp), "wled 2"},
    {"probe", "", 0, {}, 0, "Prints the result of every probe by its function's name. Changes nothing.",
     "", DO(probe), "--json"},
    {"rec", "", 1, {{"CODE", NUMBER, 0, ANY, "the recorder's command: 5 privacy mode entered, 7 "
                     "left; 0, then 1 after a change of upload mode"},
                    {"PARAM", TEXT, 0, 256, "parameter bytes"}}, 0,
     "Posts a message of type 7 on the daemons' queue.", "4 the queue has no room", DO(rec), "7"},
    {"monitor", "", 0, {}, COUNT | ONE_TYPE,
     "Takes messages from the daemons' queue and prints one line for each, with the time (UTC), "
     "until interrupted. The daemons do not get these messages. Its own process id is "
     "in /var/run/monitor.pid: receivers that check this file wait. Reports other receivers.",
     "1 the queue cannot be read", DO(monitor), "--count 3"},
    {"events", "", 0, {}, 0, "Lists the pending events, oldest first. Drops none.",
     "1 the ring cannot be read", DO(events_list)},
    {"events", "add", 1, {{"TYPE", NUMBER, 0, ANY, "the producer's code, 0 to 4; a larger one needs "
                           "--force, and a restart then rejects all events"}}, FORCE,
     "Adds an event with the current time to the ring and updates the copy on the card.",
     "2 a type above 4, 4 the ring is full or not available", DO(events_add), "3"},
    {"events", "drop", 1, {{"COUNT", NUMBER, 0, ANY, "how many"}}, 0,
     "Drops the oldest events, or all if there are fewer.",
     "4 the ring is not available", DO(events_drop), "1"},
    {"events", "clear", 0, {}, 0, "Drops all events.", "4 the ring is not available",
     DO(events_clear)},
    {"events", "dump", 1, {{"FILE", FILENAME, 0, 0, "a copy of the ring, 4108 bytes"}}, 0,
     "Prints the copy and whether a restart would accept it. Does not touch the shared ring.",
     "1 it would be rejected, or the file cannot be read", DO(events_dump), "/mnt/sdcard/video/.event"},
    {"status", "", 0, {{"VALUE", NUMBER, 0, 255, "the new status; default: print it"}}, 0,
     "Prints or writes /tmp/dev_status, a byte that the processes share and a restart clears.",
     "1 no status is stored, 4 not stored", DO(status), "3"},
    {"firmware", "check", 1, {{"FILE", FILENAME, 0, 0, "an image"}}, LIMIT,
     "Checks the image's board id, the checksum of its header and that of the rest, and prints "
     "which check failed and why. Detects damage, but not who made the image.",
     "1 a check failed", DO(firmware_check), "/mnt/sdcard/upgrade/upgrade.bin"},
    {"firmware", "newer", 1, {{"VERSION", TEXT, 1, 63, "such as v5.1.0"}}, 0,
     "Compares the version with v5.0.44, which is built into the library. The version of the "
     "running firmware does not matter.", "1 it is not newer",
     DO(firmware_newer), "v5.1.0"},
    {"firmware", "downloaded", 0, {}, 0,
     "Prints the version of a downloaded image that is newer. Deletes any other download, so do "
     "not run it during a download.", "1 there is none", DO(firmware_downloaded)},
    {"speech", "", 0, {}, 0, "Reads speech_version and lang_name, and checks for the archive.",
     "1 not unpacked, or no download", DO(speech)},
    {"crc", "", 1, {{"FILE", FILENAME, 0, 0, "any file"}}, SKIP | LIMIT,
     "Prints the CRC-32 (IEEE 802.3) in hexadecimal.",
     "1 the file cannot be read, or has no bytes after the skipped ones", DO(crc), "--skip 64 /mnt/sdcard/upgrade/upgrade.bin"},
    {"wifi", "config", 0, {}, 0,
     "Writes /etc/wpa_supplicant.conf from wl_ssid and wl_psk, wl1_ssid and so on to wl3, "
     "and prints its networks. Leaves out a network whose key is missing or has an invalid length. "
     "Writes nothing if the supplicant would reject the file: for an SSID of more than 32 bytes, a "
     "key of 64 characters that is not hexadecimal, a control character in a passphrase, or a # "
     "after a double quote.",
     "4 rejected, a network left out, or the file cannot be written", DO(wifi_config)},
    {"wifi", "start", 0, {}, 0, "Starts the supplicant, the DHCP client and, if apmode is 1, the "
     "access point.", "", DO(wifi_control)},
    {"wifi", "stop", 0, {}, 0, "Releases the address and stops the supplicant.", "",
     DO(wifi_control)},
    {"wifi", "reset", 0, {}, 0, "Takes the link down and resets the radio. The link stays down.",
     "", DO(wifi_control)},
    {"wifi", "restart", 0, {}, 0,
     "Stops the link, resets the radio and starts the link, unless a live stream runs.",
     "4 a live stream runs", DO(wifi_control)},
    {"wifi", "status", 0, {}, 0, "Prints whether wlan0 has an address, whether apmode is 1, and the "
     "networks in /etc/wpa_supplicant.conf.", "", DO(wifi_status)},
    {"link", "", 0, {{"INTERFACE", CHOICE, 0, 0, "eth0 or wlan0; default: both", "eth|wlan"}}, 0,
     "Prints which interfaces have an IPv4 address.", "1 INTERFACE has none",
     DO(link_status), "wlan"},
    {"time", "zone", 0, {{"OFFSET", NUMBER, -DAY, DAY, "minutes east of Greenwich"},
                         {"DST", NUMBER, 0, 1, "1: daylight saving from April to October"}}, TOGETHER,
     "Writes /tmp/TZ and /tmp/localtime, sends the zone's name to the relay, and prints the TZ "
     "string. If /etc_ro/time_zone has the stored time_zone_str, the string comes from there; "
     "else from the arguments, or from time_zone and time_dst. Stores nothing.",
     "4 the stored zone is missing or not usable, or /tmp/TZ cannot be written", DO(time_zone), "60 1"},
    {"time", "sync", 1, {ON_OFF("off only stops ntpd")}, 0,
     "Stops ntpd, and starts it with the stored time_server and time_server1.",
     "4 a stored server is not usable", DO(time_sync), "on"},
    {"upload", "status", 0, {}, 0, "Prints the upload mode and whether the daemon runs.", "",
     DO(upload_status)},
    {"upload", "config", 0, {{"user=", TEXT, 0, STORED, "the share's user (cifs_user)"},
      {"pass=", SECRET, 0, STORED, "the password (cifs_pass); - reads it from standard input"},
      {"target=", TEXT, 0, STORED, "the share (cifs_target)"},
      {"mode=", CHOICE, 0, 0, "0 off, 1 on, 2 on with event signals, 3 not controlled", "0|1|2|3"},
      {"size=", TEXT, 0, STORED, "for the daemon (cifs_size)"}}, NO_SAVE,
     "Prints the configuration without the password, or stores the given values and stops, starts "
     "or signals the daemon as needed. Reports a change to or from mode 2 to the recorder.",
     "3 not stored, 4 the daemons' queue has no room", DO(upload_config), "mode=2"},
    {"upload", "wake", 0, {}, 0, "Sends signal 1 to the daemon, or starts it.",
     "1 the mode is 0 or 3", DO(upload_control)},
    {"upload", "notify", 0, {}, 0, "Sends signal 2 to the daemon, or starts it.",
     "1 the mode is not 2", DO(upload_control)},
    {"upload", "stop", 0, {}, 0, "Sends signal 6 and waits a second.", "1 the daemon does not run",
     DO(upload_control)},
    {"upload", "recover", 1, {{"FILE", PATH, 1, STORED, "a recording below /mnt/sdcard/video"}}, 0,
     "Creates a job for the daemon: an empty file with the recording's name in "
     "/mnt/sdcard/video/.smbu, a folder that the daemon creates.",
     "2 not a recording's path, 4 no such recording, or the job cannot be created",
     DO(upload_recover), "/mnt/sdcard/video/20240101/clip_0001.mp4"},
    {"schedule", "list", 0, {}, 0, "Prints the schedules, sched00 to sched08.", "", DO(list_print)},
    {"schedule", "set", 0, {INPUT}, NO_SAVE,
     "Replaces the list with at most nine entries and signals the controller (killall -35 "
     "ctrl_sched). [] empties it. If any entry is wrong, nothing changes.",
     "1 the file cannot be read, 2 an entry is wrong, 3 not stored",
     DO(list_set), "/mnt/sdcard/schedules"},
    {"alarm", "list", 0, {}, 0, "Prints the alarm clocks, clock00 to clock06.", "", DO(list_print)},
    {"alarm", "set", 0, {INPUT}, NO_SAVE,
     "Replaces the list with at most seven entries and signals the alarm daemon (killall -SIGUSR1 "
     "alarm). [] empties it. If any entry is wrong, nothing changes.",
     "1 the file cannot be read, 2 an entry is wrong, 3 not stored",
     DO(list_set), "/mnt/sdcard/alarms"},
    {"viewer", "list", 0, {}, SHOW_SECRETS, "Prints the viewers, viewer_list_00 to viewer_list_09.",
     "", DO(viewer_list)},
    {"viewer", "add", 3, {{"NAME", TEXT, 1, 255, "unique name of the viewer"},
                          {"PASSCODE", SECRET, 1, 31, "- reads a line from standard input"},
                          {"CREDENTIAL", SECRET, 1, 63, "- reads a line from standard input"},
                          {"ONCE", NUMBER, 0, 99, "default: 0"}},
     NO_SAVE | SHOW_SECRETS,
     "Appends a viewer of at most 255 characters in total, and reports it to the relay.",
     "1 the name exists already, 3 not stored, or there are ten",
     DO(viewer_add), "Ann - - 1"},
    {"viewer", "del", 1, {{"NAME", TEXT, 1, 255, "the viewer's name"}}, NO_SAVE | SHOW_SECRETS,
     "Removes the viewer, also at the relay.", "1 no such viewer, 3 not stored",
     DO(viewer_del), "Ann"},
    {"sound", "alert", 0, {SOUND}, NO_SAVE,
     "Prints or stores alert_file. /audio/alarm.aac also becomes the alarm sound and switches the "
     "greeting off; any other file becomes the greeting and switches it on.",
     "1 none is chosen, 3 not stored, 4 AudioCheck refuses it", DO(sound), "/audio/alarm.aac"},
    {"sound", "greeting", 0, {SOUND}, NO_SAVE,
     "Prints or stores greeting_audio. Unless greeting_enable is 0, also stores alert_file.",
     "1 none is chosen, 3 not stored, 4 AudioCheck refuses it", DO(sound)},
    {"sound", "alarm", 0, {SOUND}, NO_SAVE, "Prints or stores alarm_audio. Also stores alert_file.",
     "1 none is chosen, 3 not stored, 4 AudioCheck refuses it", DO(sound)},
    {"sound", "volume", 0, {{"LEVEL", NUMBER, 0, 2, "1 if none is stored"}}, NO_SAVE,
     "Prints or stores alert_vol.", "3 not stored", DO(volume), "2"},
    {"feature", "list", 0, {}, 0, "Prints all features.", "", DO(feature_list)},
    {"feature", "nimbus", 0, {{"ENABLE", NUMBER, LEAST, MOST, "1 on, any other off"},
                              {"FOLDERID", TEXT, 0, STORED, "the cloud folder"}}, NO_SAVE | TOGETHER,
     "Prints the cloud folder's settings and its status from /tmp/.gdustatus, or stores "
     "nimbus_enable and nimbus_folderid.", "3 not stored", DO(feature), "1 folder"},
    {"feature", "led_disable", 0, {{"DISABLE", NUMBER, 0, 1, "1: the status LED is off"}}, NO_SAVE | TOGETHER,
     "Prints led_disable, or stores it and signals LEDCtrl (SIGUSR1 off, SIGUSR2 on).",
     "3 not stored", DO(feature), "1"},
    {"feature", "alert_vclip", 0, {{"ENABLE", NUMBER, 0, 1, "1: an alert saves a clip"},
                                   {"DURATION", NUMBER, 5, 720, "length of the clip"},
                                   {"PRELUDE", NUMBER, 3, 30, "length of its part before the alert"}},
     NO_SAVE | TOGETHER, "Prints or stores alert_vclip, alert_vclip_duration and alert_vclip_prelude.",
     "3 not stored", DO(feature), "1 7 4"},
    {"feature", "event", 0, {{"S3_SETTING", NUMBER, LEAST, MOST, "for the event daemon"},
                             {"PUSH_SETTING", NUMBER, LEAST, MOST, "for the event daemon"}}, NO_SAVE | TOGETHER,
     "Prints or stores event_s3_setting and event_push_setting.", "3 not stored",
     DO(feature), "1 1"},
    {"feature", "media_server", 0, {{"ENABLE", NUMBER, LEAST, MOST, "for the media server"},
                                    {"AUTH", NUMBER, LEAST, MOST, "for the media server"},
                                    {"MAX_VIDEO_LEVEL", NUMBER, LEAST, MOST, "for the media server"}}, NO_SAVE | TOGETHER,
     "Prints or stores media_server_enable, media_server_auth and kurento_max_video_level.",
     "3 not stored", DO(feature), "1 0 3"},
};

// The fields of a list entry.
inline constexpr Word SCHEDULE[] = {
    {"enable", NUMBER, 0, 1, "1: active"},
    {"param1", NUMBER, LEAST, MOST, "for the controller"},
    {"param2", NUMBER, LEAST, MOST, "for the controller"},
    {"starttime", TIME, 0, DAY, "minute of the day, or HH:MM to 24:00"},
    {"stoptime", TIME, 0, DAY, "the same; may be before starttime"},
    {"days", NUMBER, 0, 127, "days of the week, a bit each"},
    {"repeat", NUMBER, 0, 1, "1: every week"},
    {},
};

inline constexpr Word ALARM_CLOCK[] = {
    {"enable", NUMBER, 0, 1, "1: active"},
    {"wday", NUMBER, 0, 127, "days of the week, a bit each"},
    {"starttime", TIME, 0, DAY, "minute of the day, or HH:MM to 24:00"},
    {"text", TEXT, 0, 500, "the rest of the line, including commas"},
    {},
};

#define NUMBERS(key, most, meaning) {key, NUMBER, 0, most, meaning}
#define TEXTS(key, meaning) {key, TEXT, 0, STORED, meaning}
#define NAMES(key, kind, meaning) {key, kind, 0, STORED, meaning}
#define SECRETS(key, meaning) {key, SECRET, 0, STORED, meaning}
#define SWITCH "0 off, any other on"
#define BY(verb) "cfgctl " verb
#define DAEMONS "daemons read it"
#define NETWORK(slot, meaning) \
    {{slot "_ssid", SSID, 0, 32, "SSID of " meaning}, BY("wifi config")}, \
    {{slot "_psk", WIFI_KEY, 0, 64, "its key; WEP if 5 or 13 characters"}, BY("wifi config")}

// The setter and the restorer of NAME, and the interfaces that they use.
#define APPLIED(name, through) \
    "cfg_set" #name ", " through, DO(cfg_set##name), RESTORE(cfg_restore##name)
#define ALERT(key, name) {NUMBERS(key, ANY, SWITCH), APPLIED(name, "nothing")}

// Settings with a restorer are in the order in which the firmware starts.
inline constexpr Setting SETTINGS[] = {
    {NUMBERS("io_mic_enable", 1, "0 muted, 1 on"), APPLIED(MicEnable, "media commands")},
    {NUMBERS("io_speaker_volume", ANY, "0 silent, 23 level 35, 31 level 50; any other level 40"),
     APPLIED(SpeakerVolume, "media command")},
    {NUMBERS("io_speaker_enable", ANY, "0 leaves the speaker as it is, any other applies its volume"),
     APPLIED(SpeakerEnable, "speaker volume restorer")},
    {NUMBERS("io_ir_enable", 2, "infrared: 0 off; the driver gets 2 for 1 and 3 for 2"),
     "cfg_setIrEnable, /proc/ir_mode", DO(set_ir_mode), RESTORE(cfg_restoreIrEnable), 0, nullptr,
     "/proc/ir_mode", "023"},
    {NUMBERS("io_video_orientation", ANY, "0 one orientation, any other the opposite one"),
     APPLIED(VideoOrientation, "media command")},
    {NUMBERS("io_backlight_compensation", ANY, SWITCH),
     APPLIED(BacklightCompensation, "/proc/backlight, image processor"), 0, nullptr,
     "/proc/backlight", "01"},
    {NUMBERS("alert_pir_enable", ANY, SWITCH), APPLIED(PirEnable, "daemon message, signal"), 1},
    {NUMBERS("alert_audio_enable", ANY, SWITCH), APPLIED(VolumeDetect, "daemon message"), 1},
    {NUMBERS("alert_audio_sensitivity", ANY, "0 to 2; larger values modulo 3"),
     APPLIED(VolumeDetectSensitivity, "daemon message"), 1},
    {NUMBERS("wled_mode", 2, "the lamp's mode"), APPLIED(WLEDEnable, "/proc/wled_mode"), 0,
     DO(cfg_isWLEDVersion), "/proc/wled_mode", "012"},
    {NUMBERS("rlamp_mode", 3, "the lamp's mode"), APPLIED(RlampEnable, "/proc/rlamp_mode"), 0,
     DO(cfg_isRlampVersion), "/proc/rlamp_mode", "0123"},
    ALERT("alert_motion_track_enable", MotionTrackEnable),
    {NUMBERS("alert_type", ANY, "for the daemons"), APPLIED(AlertType, "nothing")},
    ALERT("alert_app_enable", AlertAppEnable),
    ALERT("alert_chat_enable", AlertChatEnable),
    ALERT("alert_video_call_enable", AlertVideoCallEnable),
    {TEXTS("alert_call_account", "recipient of a video call"), DAEMONS, nullptr,
     RESTORE(cfg_restoreAlertVideoCallAccount)},
    ALERT("alert_email_enable", AlertEmailEnable),
    {TEXTS("alert_email_account", "recipient of mail"), DAEMONS, nullptr,
     RESTORE(cfg_restoreAlertEmailAccount)},
    // The setter would store a number above INT32_MAX as a negative one, which means off.
    {NUMBERS("orb_privacy_mode_enable", MOST, SWITCH),
     "cfg_set_privacy, messages, commands, signals", DO(cfg_set_privacy), nullptr, 4},
    NETWORK("wl", "the primary network"),
    NETWORK("wl1", "the second network"),
    NETWORK("wl2", "the third network"),
    NETWORK("wl3", "the fourth network"),
    {NUMBERS("apmode", 1, "1: also an access point, for 20 minutes after boot"), BY("wifi start")},
    {NUMBERS("orb_setup", 1, "0: first setup is not finished"), BY("wifi config")},
    {{"app_ip", BSSID, 0, 17, "access point to which first setup pins the primary network"}, BY("wifi config")},
    {NAMES("time_zone_str", ZONE, "name of the zone, such as Europe/Oslo"), BY("time zone")},
    {{"time_zone", NUMBER, -DAY, DAY, "minutes east of Greenwich, for an unnamed zone"}, BY("time zone")},
    {NUMBERS("time_dst", 1, "1: that zone has daylight saving"), BY("time zone")},
    {NAMES("time_server", SERVER, "first time server"), BY("time sync")},
    {NAMES("time_server1", SERVER, "second time server"), BY("time sync")},
    {{"lang_name", PATH, 0, 15, "language of the prompts, such as en"}, BY("prompt, speech")},
    {{"speech_version", TEXT, 0, 15, "version of the prompts"}, BY("speech")},
    {NUMBERS("cifs_mode", 3, "upload: 0 off, 1 on, 2 on with event signals, 3 not controlled"), BY("upload config")},
    {TEXTS("cifs_user", "the share's user"), BY("upload config")},
    {SECRETS("cifs_pass", "the share's password"), BY("upload config")},
    {TEXTS("cifs_target", "the share"), BY("upload config")},
    {TEXTS("cifs_size", "for the upload daemon"), BY("upload config")},
    {TEXTS("gdu_account", "text of the account record"), BY("upload config")},
    {NAMES("alert_file", PATH, "the alert sound"), BY("sound alert")},
    {NAMES("alarm_audio", PATH, "the alarm sound"), BY("sound alarm")},
    {NAMES("greeting_audio", PATH, "the greeting"), BY("sound greeting")},
    {NUMBERS("greeting_enable", 1, "1: the greeting is the alert sound"), BY("sound greeting")},
    {NUMBERS("alert_vol", 2, "the alert volume"), BY("sound volume")},
    {{"nimbus_enable", NUMBER, LEAST, MOST, "1 on, any other off"}, BY("feature nimbus")},
    {TEXTS("nimbus_folderid", "the cloud folder"), BY("feature nimbus")},
    {NUMBERS("led_disable", 1, "1: the status LED is off"), BY("feature led_disable")},
    {NUMBERS("alert_vclip", 1, "1: an alert saves a clip"), BY("feature alert_vclip")},
    {{"alert_vclip_duration", NUMBER, 5, 720, "length of the clip"}, BY("feature alert_vclip")},
    {{"alert_vclip_prelude", NUMBER, 3, 30, "length of its part before the alert"}, BY("feature alert_vclip")},
    {{"event_s3_setting", NUMBER, LEAST, MOST, "for the event daemon"}, BY("feature event")},
    {{"event_push_setting", NUMBER, LEAST, MOST, "for the event daemon"}, BY("feature event")},
    {{"media_server_enable", NUMBER, LEAST, MOST, "for the media server"}, BY("feature media_server")},
    {{"media_server_auth", NUMBER, LEAST, MOST, "for the media server"}, BY("feature media_server")},
    {{"kurento_max_video_level", NUMBER, LEAST, MOST, "for the media server"}, BY("feature media_server")},
    {NAMES("motor_zones", AREAS, "zones of the motor"), DAEMONS},
    {NUMBERS("alert_face_enable", 1, "face detection"), DAEMONS},
    {NUMBERS("nn_enable", ANY, "image detection by neural network"), DAEMONS},
    {NUMBERS("sound_nn_enable", ANY, "sound detection by neural network"), DAEMONS},
    {NUMBERS("fix_capture_status", 9, "whether a fixed capture is active"), DAEMONS},
    {NUMBERS("continus_take_pic", ANY, "not 0: privacy mode signals capture, eventd and ctrl_sched"), DAEMONS},
};
// clang-format on

} // namespace cfgctl
