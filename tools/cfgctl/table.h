// What cfgctl's words mean: its verbs, their arguments and options, and the
// stored settings. Constant data, from which come the command line's checks,
// its help, the man page and the completion.
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

// What does the verbs' work.
using Run = void(Call &call);
Run get, set, unset, save, restore, show, board, prompt, alert_sound, privacy, night, lamp, probe,
    rec, monitor, events_list, events_add, events_drop, events_clear, events_dump, status,
    firmware_check, firmware_newer, firmware_downloaded, speech, crc, wifi_config, wifi_control,
    wifi_status, link_status, time_zone, time_sync, upload_status, upload_config, upload_control,
    upload_recover, list_print, list_set, viewer_list, viewer_add, viewer_del, sound, volume,
    feature_list, feature, check_camera;

enum Kind {
    NONE,     // behind the last word; an option without a value
    NUMBER,   // decimal, least to most
    TIME,     // minute of the day, or HH:MM
    CHOICE,   // one of `choices`
    FILENAME, // of a file that cfgctl reads
    STORE_KEY,
    ASSIGNMENT, // KEY=VALUE, any number of them
    // Texts of least to most bytes; one that may be empty may be that whatever it is.
    TEXT,
    SECRET,   // may be read from standard input, and is not shown
    PATH,     // a name that stands in a command line
    SERVER,   // likewise, a time server
    ZONE,     // likewise, and in the zone table
    SSID,     // which the supplicant's file can hold
    WIFI_KEY, // likewise, and a secret
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
    VERSION = 8192, TOGETHER = 16384, // no option: either no words or all
};
// clang-format on

struct Verb {
    const char *name;
    const char *summary;
};

constexpr unsigned WORDS_MAX = 7;

// What a verb does, of which it may have several, told apart by their names.
struct Action {
    const char *verb;
    const char *name; // "" when the verb alone says it
    unsigned least;   // words that have to be given
    Word words[WORDS_MAX];
    unsigned options;
    const char *effect; // what it reads, stores, runs and posts
    const char *exits;  // when it fails, by exit status
    Run *run;
    const char *example = ""; // the words behind the verb's
};

// A key that the library or a daemon of the firmware reads.
struct Setting {
    Word value;          // its name is the key
    const char *applied; // what takes it to the device
    int (*set)(uint32_t value) = nullptr;
    int (*restore)() = nullptr;
    unsigned messages = 0;        // for the daemons' queue
    int (*on_board)() = nullptr;  // null when every board has it
    const char *file = nullptr;   // the driver's, which shows the value,
    const char *digits = nullptr; // as these; a larger value as the last
};

constexpr int64_t ANY = UINT32_MAX;
constexpr int64_t LEAST = INT32_MIN;
constexpr int64_t MOST = INT32_MAX;
constexpr int64_t DAY = 1440;   // minutes
constexpr int64_t STORED = 255; // characters that the library reads of a value

// clang-format off

// In the order of their bits.
inline constexpr Word OPTIONS[] = {
    {"--no-save", NONE, 0, 0, "do not save the store: a restart forgets the change"},
    {"--no-apply", NONE, 0, 0, "do not apply the value to the device"},
    {"--force", NONE, 0, 0, "do it all the same"},
    {"--all", NONE, 0, 0, "everything, in the order of a firmware's start"},
    {"--show-secrets", NONE, 0, 0, "print passcodes, credentials, keys and passwords as they are"},
    {"--count", NUMBER, 1, ANY, "end after so many messages"},
    {"--skip", NUMBER, 0, 511, "leading bytes to leave out"},
    {"--limit", NUMBER, 0, ANY, "bytes of the file that count; 0: all"},
    {"--export", NONE, 0, 0, "print KEY=VALUE lines, as set - reads them"},
    {"--default", TEXT, 0, STORED, "what is printed when no value can be read"},
    {"--type", NUMBER, 1, MOST, "only the messages of this type; the others stay in the queue"},
    {"--json", NONE, 0, 0, "print JSON: the data, or what was done; help and version stay text"},
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
    {"check", "tell what the camera lacks and what to do about it"},
    {"board", "print what the board is and has"}, {"prompt", "play a spoken prompt"},
    {"alert", "play an alert sound, then restore the speaker"},
    {"privacy", "tell or switch privacy mode"}, {"night", "tell or switch night mode"},
    {"lamp", "drive a lamp directly"}, {"probe", "print what every status probe answers"},
    {"rec", "post a recording command"},
    {"monitor", "take messages away from the daemons and print them"},
    {"events", "list, add and drop pending events, check a copy of the ring"},
    {"status", "print or set the device status"},
    {"firmware", "check an image, compare a version with v5.0.44, vet the download"},
    {"speech", "print whether the downloaded prompts are unpacked"},
    {"crc", "print the CRC-32 of a file"},
    {"wifi", "write the supplicant's file, control the Wi-Fi link"},
    {"link", "print which interfaces have an IPv4 address"},
    {"time", "set the time zone, switch time sync"},
    {"upload", "ask, configure and drive the upload daemon"},
    {"schedule", "list or replace the schedules"}, {"alarm", "list or replace the alarm clocks"},
    {"viewer", "list, add and remove viewers, at the relay too"},
    {"sound", "print or choose a sound or the alert volume"},
    {"feature", "print or change feature switches"},
};

inline constexpr Verb EXITS[] = {
    {"0", "done"}, {"1", "not found or false"}, {"2", "wrong usage"}, {"3", "not stored"},
    {"4", "not applied"},
};

#define ON_OFF(meaning) {"STATE", CHOICE, 0, 0, meaning, "on|off"}
#define INPUT {"FILE", FILENAME, 0, 0, "JSON as --json lists it, the table as list prints it, or an " \
    "entry a line with commas between the fields; standard input without it"}
#define SOUND {"FILE", PATH, 1, STORED, "the path; one outside /audio has at most 100 characters " \
    "and is heard by AudioCheck first"}

inline constexpr Action ACTIONS[] = {
    {"get", "", 1, {{"KEY", STORE_KEY, 0, 0, "the key, also one that nothing knows"}}, DEFAULT,
     "Prints the stored value, whole, and a line end.",
     "1 no value can be read", DO(get), "io_speaker_volume"},
    {"set", "", 1, {{"KEY=VALUE", ASSIGNMENT, 0, 0, "one of the keys below and what it takes; any key "
      "with --force. KEY VALUE does for a single one. - for the value reads it from standard "
      "input, - alone reads lines KEY=VALUE; empty ones and those with # in front do not count"}},
     NO_SAVE | NO_APPLY | FORCE,
     "Stores the values, runs the setters that the keys have (cfgctl show names them) and saves "
     "the store. All values are checked first. What the board does not have and what the daemons' "
     "queue has no room for is refused before anything is stored; when a setter fails, the store "
     "gets the old values again. A value is \"applied\" when the driver's file shows it, and "
     "\"called\" when the setter ran and nothing more can be seen.",
     "2 a wrong value or an unknown key, 3 not stored, or not saved, 4 not applied",
     DO(set), "io_speaker_volume=31 io_mic_enable=1"},
    {"unset", "", 1, {{"KEY", STORE_KEY, 0, 0, "a key that is stored"}}, NO_SAVE,
     "Removes the key and saves the store. The device is left as it is.",
     "1 the key is not stored, 3 it cannot be removed", DO(unset), "wl3_ssid"},
    {"save", "", 0, {}, 0, "Saves the store: a restart brings back what is stored now.",
     "3 the store cannot be saved", DO(save)},
    {"restore", "", 0, {{"KEY", STORE_KEY, 0, 0, "a key that has a restorer"}}, ALL,
     "Runs the restorer of the key, or with --all what a firmware's start runs: every restorer "
     "that the board has, wifi config, wifi start, time zone, time sync on. Boards with serial "
     "number B2 or D1 store 0 for PIR and sound detection, boards 56CA for the orientation.",
     "1 nothing restores the key on this board, 4 something failed", DO(restore), "--all"},
    {"show", "", 0, {{"PREFIX", STORE_KEY, 0, 0, "only keys that begin with it; a single one is "
                      "shown with what it takes"}}, SHOW_SECRETS | EXPORT,
     "Prints the keys that the library and the daemons know. --export prints those that are "
     "stored; what set would refuse and, without --show-secrets, secrets are named behind a #.",
     "1 no key begins so", DO(show), "io_"},
    {"check", "", 0, {{"AREA", CHOICE, 0, 0, "none: all", "store|board|tools|drivers|files|queues|locks|ring|daemons"}}, 0,
     "Looks at the whole camera, or at an area of it, and prints a line an item: its state, and what "
     "to do when something is wrong. Changes nothing: it writes nothing, takes no lock and runs no "
     "command but board. Stored values are judged as set judges them, and secrets are not shown.",
     "1 something is wrong", DO(check_camera), "drivers"},
    {"board", "", 0, {}, 0, "Asks the board for its id, serial number and hardware version, and "
     "prints them and the features that its version names.",
     "1 the board does not tell all", DO(board)},
    {"prompt", "", 1, {{"NAME", PATH, 1, 230, "the file's bare name"}}, 0,
     "Plays the card's recording in the stored language (lang_name), else the one of "
     "/localization, else of /audio. A stored volume of 27 or 0 sets the speaker to 27 first.",
     "4 there is no such file, or it is not played", DO(prompt), "hello.aac"},
    {"alert", "", 1, {{"FILE", PATH, 1, 225, "the sound's path; .aac, else it is a WAV file"}}, 0,
     "Plays the sound at raised priority, then restores the speaker as stored.",
     "4 there is no such file, it is not played, or the speaker not restored", DO(alert_sound), "/audio/alarm.aac"},
    {"privacy", "", 0, {ON_OFF("none: tell")}, NO_SAVE,
     "Tells whether privacy mode is on, or enters or leaves it: stores orb_privacy_mode_enable, "
     "drives motor, LED and lights, posts four messages to the daemons, signals peer connection "
     "and playback, and saves the store. Nothing happens in the mode that is stored already.",
     "1 privacy mode is off, 3 not stored, 4 the daemons' queue has no room", DO(privacy), "on"},
    {"night", "", 0, {ON_OFF("none: tell")}, 0,
     "Tells whether night mode is on, or writes /proc/night_mode. Stores nothing.",
     "1 night mode is off, 4 the driver did not take it", DO(night), "on"},
    {"lamp", "", 2, {{"LAMP", CHOICE, 0, 0, "the lamp", "wled|rlamp"},
                     {"MODE", NUMBER, 0, 3, "WLED: 3 counts only while it is in mode 1; Rlamp: 3 "
                      "counts only when rlamp_mode is stored as 3"}}, 0,
     "Writes the mode to /proc/wled_mode or /proc/rlamp_mode. Stores nothing; set wled_mode and "
     "set rlamp_mode do.", "4 the board has no such lamp, or the driver did not take the mode",
     DO(lamp), "wled 2"},
    {"probe", "", 0, {}, 0, "Asks every probe, by the name of its function, and changes nothing.",
     "", DO(probe), "--json"},
    {"rec", "", 1, {{"CODE", NUMBER, 0, ANY, "the recorder's command: 5 privacy mode entered, 7 "
                     "left; 0 and then 1 after a change of the upload mode"},
                    {"PARAM", TEXT, 0, 256, "parameter bytes"}}, 0,
     "Posts a message of type 7 on the daemons' queue.", "4 the queue has no room", DO(rec), "7"},
    {"monitor", "", 0, {}, COUNT | ONE_TYPE,
     "Takes messages away from the daemons and prints each with its time (UTC), a line each, until "
     "interrupted: the daemons never get them. While it runs, /var/run/monitor.pid names it: "
     "receivers that look there step aside. It says which process takes messages all the same.",
     "1 the queue cannot be read", DO(monitor), "--count 3"},
    {"events", "", 0, {}, 0, "Lists the pending events, oldest first, and drops none.",
     "1 they cannot be read", DO(events_list)},
    {"events", "add", 1, {{"TYPE", NUMBER, 0, ANY, "the producer's code, 0 to 4; one above takes "
                           "--force, and a restart then refuses all events"}}, FORCE,
     "Adds an event with the present time to the ring, and writes the copy on the card.",
     "2 a type above 4, 4 the ring is full or cannot be had", DO(events_add), "3"},
    {"events", "drop", 1, {{"COUNT", NUMBER, 0, ANY, "how many"}}, 0,
     "Drops the oldest events, or all when there are fewer.",
     "4 the ring cannot be had", DO(events_drop), "1"},
    {"events", "clear", 0, {}, 0, "Drops all events.", "4 the ring cannot be had",
     DO(events_clear)},
    {"events", "dump", 1, {{"FILE", FILENAME, 0, 0, "a copy of the ring, 4108 bytes"}}, 0,
     "Prints the copy and whether a restart would take it. The shared ring is left alone.",
     "1 it would not, or cannot be read", DO(events_dump), "/mnt/sdcard/video/.event"},
    {"status", "", 0, {{"VALUE", NUMBER, 0, 255, "to be stored; none: print"}}, 0,
     "Prints or writes /tmp/dev_status, a byte that the processes agree on and a restart forgets.",
     "1 unknown: nothing is stored, 4 not stored", DO(status), "3"},
    {"firmware", "check", 1, {{"FILE", FILENAME, 0, 0, "an image"}}, LIMIT,
     "Checks that the image is for this board, then the checksum of its header, then that of the "
     "rest, and says which failed and why. Shows damage, not who made the image.",
     "1 a check failed", DO(firmware_check), "/mnt/sdcard/upgrade/upgrade.bin"},
    {"firmware", "newer", 1, {{"VERSION", TEXT, 1, 63, "such as v5.1.0"}}, 0,
     "Compares the version with v5.0.44, which the library has built in: what the firmware calls "
     "itself does not matter.", "1 it is not newer",
     DO(firmware_newer), "v5.1.0"},
    {"firmware", "downloaded", 0, {}, 0,
     "Prints the version of a downloaded image that is newer. Any other download is deleted, so "
     "do not ask while one is being written.", "1 there is none", DO(firmware_downloaded)},
    {"speech", "", 0, {}, 0, "Reads speech_version and lang_name, and looks for the archive.",
     "1 not unpacked, or no download", DO(speech)},
    {"crc", "", 1, {{"FILE", FILENAME, 0, 0, "any file"}}, SKIP | LIMIT,
     "Prints the CRC-32 (IEEE 802.3) in hexadecimal.",
     "1 the file cannot be read, or has no bytes behind those skipped", DO(crc), "--skip 64 /mnt/sdcard/upgrade/upgrade.bin"},
    {"wifi", "config", 0, {}, 0,
     "Writes /etc/wpa_supplicant.conf from wl_ssid and wl_psk, wl1_ssid and so on to 3, and "
     "prints the networks in it. Nothing is written when the supplicant would refuse the file "
     "for one of them: an SSID of more than 32 bytes, a key of 64 characters that are not "
     "hexadecimal, a control character in a passphrase, a # behind a double quote. "
     "A network whose key is missing or of no known length is left out.",
     "4 refused, a network left out, or the file cannot be written", DO(wifi_config)},
    {"wifi", "start", 0, {}, 0, "Starts supplicant and DHCP client on the written file, and the "
     "access point when apmode is 1.", "", DO(wifi_control)},
    {"wifi", "stop", 0, {}, 0, "Gives the address back and ends the supplicant.", "",
     DO(wifi_control)},
    {"wifi", "reset", 0, {}, 0, "Takes the link down and resets the radio. The link stays down.",
     "", DO(wifi_control)},
    {"wifi", "restart", 0, {}, 0,
     "Stops the link, resets the radio, starts the link. Not while a live stream runs.",
     "4 a live stream runs", DO(wifi_control)},
    {"wifi", "status", 0, {}, 0, "Prints whether wlan0 has an address, whether an access point is "
     "wanted, and the networks in the written file.", "", DO(wifi_status)},
    {"link", "", 0, {{"INTERFACE", CHOICE, 0, 0, "eth0 or wlan0; none: both", "eth|wlan"}}, 0,
     "Prints which interfaces have an IPv4 address.", "1 the one asked for has none",
     DO(link_status), "wlan"},
    {"time", "zone", 0, {{"OFFSET", NUMBER, -DAY, DAY, "minutes east of Greenwich"},
                         {"DST", NUMBER, 0, 1, "1: daylight saving from April to October"}}, TOGETHER,
     "Writes /tmp/TZ and /tmp/localtime, tells the relay the zone's name, and prints the TZ "
     "string. It is that of the stored time_zone_str when /etc_ro/time_zone has it; else it is "
     "made from the arguments, or without them from time_zone and time_dst. Stores nothing.",
     "4 the stored zone is missing or not usable, or /tmp/TZ cannot be written", DO(time_zone), "60 1"},
    {"time", "sync", 1, {ON_OFF("off: only stop")}, 0,
     "Stops ntpd, and starts it with the stored time_server and time_server1.",
     "4 a stored server is not usable", DO(time_sync), "on"},
    {"upload", "status", 0, {}, 0, "Prints the mode and whether the daemon runs.", "",
     DO(upload_status)},
    {"upload", "config", 0, {{"user=", TEXT, 0, STORED, "the share's user (cifs_user)"},
      {"pass=", SECRET, 0, STORED, "the password (cifs_pass); - reads it from standard input"},
      {"target=", TEXT, 0, STORED, "the share (cifs_target)"},
      {"mode=", CHOICE, 0, 0, "0 off, 1 on, 2 on and told of events, 3 left to itself", "0|1|2|3"},
      {"size=", TEXT, 0, STORED, "the daemon's own (cifs_size)"}}, NO_SAVE,
     "Prints what is configured, without the password; or stores what is given and stops, starts "
     "and tells the daemon as that needs. A change to or from mode 2 is told to the recorder.",
     "3 not stored, 4 the daemons' queue has no room", DO(upload_config), "mode=2"},
    {"upload", "wake", 0, {}, 0, "Sends signal 1; starts a daemon that does not run.",
     "1 the mode is 0 or 3", DO(upload_control)},
    {"upload", "notify", 0, {}, 0, "Sends signal 2; starts a daemon that does not run.",
     "1 the mode is not 2", DO(upload_control)},
    {"upload", "stop", 0, {}, 0, "Sends signal 6 and waits a second.", "1 the daemon does not run",
     DO(upload_control)},
    {"upload", "recover", 1, {{"FILE", PATH, 1, STORED, "a recording below /mnt/sdcard/video"}}, 0,
     "Leaves the daemon a job: an empty file of the recording's name in "
     "/mnt/sdcard/video/.smbu, a folder that the daemon makes.",
     "2 not a recording's path, 4 no such recording, or the job cannot be made",
     DO(upload_recover), "/mnt/sdcard/video/20240101/clip_0001.mp4"},
    {"schedule", "list", 0, {}, 0, "Prints the schedules, sched00 to sched08.", "", DO(list_print)},
    {"schedule", "set", 0, {INPUT}, NO_SAVE,
     "Replaces the list by at most nine entries and tells the controller (killall -35 "
     "ctrl_sched). [] empties it. A fault anywhere changes nothing.",
     "1 the file cannot be read, 2 an entry is wrong, 3 not stored",
     DO(list_set), "/mnt/sdcard/schedules"},
    {"alarm", "list", 0, {}, 0, "Prints the alarm clocks, clock00 to clock06.", "", DO(list_print)},
    {"alarm", "set", 0, {INPUT}, NO_SAVE,
     "Replaces the list by at most seven entries and tells the alarm daemon (killall -SIGUSR1 "
     "alarm). [] empties it. A fault anywhere changes nothing.",
     "1 the file cannot be read, 2 an entry is wrong, 3 not stored",
     DO(list_set), "/mnt/sdcard/alarms"},
    {"viewer", "list", 0, {}, SHOW_SECRETS, "Prints the viewers, viewer_list_00 to viewer_list_09.",
     "", DO(viewer_list)},
    {"viewer", "add", 3, {{"NAME", TEXT, 1, 255, "what tells viewers apart"},
                          {"PASSCODE", SECRET, 1, 31, "- reads a line from standard input"},
                          {"CREDENTIAL", SECRET, 1, 63, "- reads a line from standard input"},
                          {"ONCE", NUMBER, 0, 99, "0 when it is not given"}},
     NO_SAVE | SHOW_SECRETS,
     "Stores a viewer behind the last, in at most 255 characters together, and tells the relay.",
     "1 one of the name is there, and kept, 3 not stored, or there are ten",
     DO(viewer_add), "Ann - - 1"},
    {"viewer", "del", 1, {{"NAME", TEXT, 1, 255, "of the viewer"}}, NO_SAVE | SHOW_SECRETS,
     "Tells the relay and removes the viewer.", "1 no viewer has the name, 3 not stored",
     DO(viewer_del), "Ann"},
    {"sound", "alert", 0, {SOUND}, NO_SAVE,
     "Prints or stores alert_file. /audio/alarm.aac becomes the alarm sound too and switches the "
     "greeting off; any other becomes the greeting and switches that on.",
     "1 none is chosen, 3 not stored, 4 AudioCheck refuses it", DO(sound), "/audio/alarm.aac"},
    {"sound", "greeting", 0, {SOUND}, NO_SAVE,
     "Prints or stores greeting_audio; while greeting_enable is not 0, as alert_file too.",
     "1 none is chosen, 3 not stored, 4 AudioCheck refuses it", DO(sound)},
    {"sound", "alarm", 0, {SOUND}, NO_SAVE, "Prints or stores alarm_audio, as alert_file too.",
     "1 none is chosen, 3 not stored, 4 AudioCheck refuses it", DO(sound)},
    {"sound", "volume", 0, {{"LEVEL", NUMBER, 0, 2, "1 when none is stored"}}, NO_SAVE,
     "Prints or stores alert_vol.", "3 not stored", DO(volume), "2"},
    {"feature", "list", 0, {}, 0, "Prints all features.", "", DO(feature_list)},
    {"feature", "nimbus", 0, {{"ENABLE", NUMBER, LEAST, MOST, "1 on, any other off"},
                              {"FOLDERID", TEXT, 0, STORED, "the cloud folder"}}, NO_SAVE | TOGETHER,
     "Prints the cloud folder's settings, and its status from /tmp/.gdustatus; or stores "
     "nimbus_enable and nimbus_folderid.", "3 not stored", DO(feature), "1 folder"},
    {"feature", "led_disable", 0, {{"DISABLE", NUMBER, 0, 1, "1: the status LED is off"}}, NO_SAVE | TOGETHER,
     "Prints or stores led_disable, and tells LEDCtrl (SIGUSR1 off, SIGUSR2 on).",
     "3 not stored", DO(feature), "1"},
    {"feature", "alert_vclip", 0, {{"ENABLE", NUMBER, 0, 1, "1: an alert keeps a clip"},
                                   {"DURATION", NUMBER, 5, 720, "length of the clip"},
                                   {"PRELUDE", NUMBER, 3, 30, "what it has of before the alert"}},
     NO_SAVE | TOGETHER, "Prints or stores alert_vclip, alert_vclip_duration and alert_vclip_prelude.",
     "3 not stored", DO(feature), "1 7 4"},
    {"feature", "event", 0, {{"S3_SETTING", NUMBER, LEAST, MOST, "the event daemon's own"},
                             {"PUSH_SETTING", NUMBER, LEAST, MOST, "likewise"}}, NO_SAVE | TOGETHER,
     "Prints or stores event_s3_setting and event_push_setting.", "3 not stored",
     DO(feature), "1 1"},
    {"feature", "media_server", 0, {{"ENABLE", NUMBER, LEAST, MOST, "the media server's own"},
                                    {"AUTH", NUMBER, LEAST, MOST, "likewise"},
                                    {"MAX_VIDEO_LEVEL", NUMBER, LEAST, MOST, "likewise"}}, NO_SAVE | TOGETHER,
     "Prints or stores media_server_enable, media_server_auth and kurento_max_video_level.",
     "3 not stored", DO(feature), "1 0 3"},
};

// Fields of an entry of the lists.
inline constexpr Word SCHEDULE[] = {
    {"enable", NUMBER, 0, 1, "1: it counts"},
    {"param1", NUMBER, LEAST, MOST, "the controller's own"},
    {"param2", NUMBER, LEAST, MOST, "likewise"},
    {"starttime", TIME, 0, DAY, "minute of the day, or HH:MM to 24:00"},
    {"stoptime", TIME, 0, DAY, "likewise; may lie before starttime"},
    {"days", NUMBER, 0, 127, "days of the week, a bit each"},
    {"repeat", NUMBER, 0, 1, "1: every week"},
    {},
};

inline constexpr Word ALARM_CLOCK[] = {
    {"enable", NUMBER, 0, 1, "1: it rings"},
    {"wday", NUMBER, 0, 127, "days of the week, a bit each"},
    {"starttime", TIME, 0, DAY, "minute of the day, or HH:MM to 24:00"},
    {"text", TEXT, 0, 500, "the rest of the line, commas too"},
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
    {{slot "_psk", WIFI_KEY, 0, 64, "its key; 5 or 13 characters are WEP's"}, BY("wifi config")}

// The setter and the restorer of NAME, and what they work through.
#define APPLIED(name, through) \
    "cfg_set" #name ", " through, DO(cfg_set##name), RESTORE(cfg_restore##name)
#define ALERT(key, name) {NUMBERS(key, ANY, SWITCH), APPLIED(name, "nothing")}

// What has a restorer comes in the order of a firmware's start.
inline constexpr Setting SETTINGS[] = {
    {NUMBERS("io_mic_enable", 1, "0 muted, 1 on"), APPLIED(MicEnable, "media commands")},
    {NUMBERS("io_speaker_volume", ANY, "0 silent, 23 level 35, 31 level 50; any other level 40"),
     APPLIED(SpeakerVolume, "media command")},
    {NUMBERS("io_speaker_enable", ANY, "0 leaves the speaker as it is, any other applies its volume"),
     APPLIED(SpeakerEnable, "speaker volume restorer")},
    {NUMBERS("io_ir_enable", 2, "infrared: 0 off; 1 and 2 are 2 and 3 to the driver"),
     "cfg_setIrEnable, /proc/ir_mode", DO(set_ir_mode), RESTORE(cfg_restoreIrEnable), 0, nullptr,
     "/proc/ir_mode", "023"},
    {NUMBERS("io_video_orientation", ANY, "0, or any other for the other orientation"),
     APPLIED(VideoOrientation, "media command")},
    {NUMBERS("io_backlight_compensation", ANY, SWITCH),
     APPLIED(BacklightCompensation, "/proc/backlight, image processor"), 0, nullptr,
     "/proc/backlight", "01"},
    {NUMBERS("alert_pir_enable", ANY, SWITCH), APPLIED(PirEnable, "daemon message, signal"), 1},
    {NUMBERS("alert_audio_enable", ANY, SWITCH), APPLIED(VolumeDetect, "daemon message"), 1},
    {NUMBERS("alert_audio_sensitivity", ANY, "0 to 2; a larger one counts modulo 3"),
     APPLIED(VolumeDetectSensitivity, "daemon message"), 1},
    {NUMBERS("wled_mode", 2, "the lamp's mode"), APPLIED(WLEDEnable, "/proc/wled_mode"), 0,
     DO(cfg_isWLEDVersion), "/proc/wled_mode", "012"},
    {NUMBERS("rlamp_mode", 3, "the lamp's mode"), APPLIED(RlampEnable, "/proc/rlamp_mode"), 0,
     DO(cfg_isRlampVersion), "/proc/rlamp_mode", "0123"},
    ALERT("alert_motion_track_enable", MotionTrackEnable),
    {NUMBERS("alert_type", ANY, "the daemons' own"), APPLIED(AlertType, "nothing")},
    ALERT("alert_app_enable", AlertAppEnable),
    ALERT("alert_chat_enable", AlertChatEnable),
    ALERT("alert_video_call_enable", AlertVideoCallEnable),
    {TEXTS("alert_call_account", "whom a video call goes to"), DAEMONS, nullptr,
     RESTORE(cfg_restoreAlertVideoCallAccount)},
    ALERT("alert_email_enable", AlertEmailEnable),
    {TEXTS("alert_email_account", "whom mail goes to"), DAEMONS, nullptr,
     RESTORE(cfg_restoreAlertEmailAccount)},
    // A number above INT32_MAX would be stored as a negative one, which reads as off.
    {NUMBERS("orb_privacy_mode_enable", MOST, SWITCH),
     "cfg_set_privacy, messages, commands, signals", DO(cfg_set_privacy), nullptr, 4},
    NETWORK("wl", "the primary network"),
    NETWORK("wl1", "the second network"),
    NETWORK("wl2", "the third network"),
    NETWORK("wl3", "the fourth network"),
    {NUMBERS("apmode", 1, "1: an access point too, for 20 minutes after boot"), BY("wifi start")},
    {NUMBERS("orb_setup", 1, "0: first setup is not finished"), BY("wifi config")},
    {{"app_ip", BSSID, 0, 17, "access point that the primary network is pinned to in first setup"}, BY("wifi config")},
    {NAMES("time_zone_str", ZONE, "the zone's name, such as Europe/Oslo"), BY("time zone")},
    {{"time_zone", NUMBER, -DAY, DAY, "minutes east of Greenwich, for a zone without a name"}, BY("time zone")},
    {NUMBERS("time_dst", 1, "1: that zone has daylight saving"), BY("time zone")},
    {NAMES("time_server", SERVER, "first time server"), BY("time sync")},
    {NAMES("time_server1", SERVER, "second time server"), BY("time sync")},
    {{"lang_name", PATH, 0, 15, "language of the prompts, such as en"}, BY("prompt, speech")},
    {TEXTS("speech_version", "version of the prompts"), BY("speech")},
    {NUMBERS("cifs_mode", 3, "upload: 0 off, 1 on, 2 on and told of events, 3 left to itself"), BY("upload config")},
    {TEXTS("cifs_user", "the share's user"), BY("upload config")},
    {SECRETS("cifs_pass", "the share's password"), BY("upload config")},
    {TEXTS("cifs_target", "the share"), BY("upload config")},
    {TEXTS("cifs_size", "the upload daemon's own"), BY("upload config")},
    {TEXTS("gdu_account", "text of the account record"), BY("upload config")},
    {NAMES("alert_file", PATH, "the alert sound"), BY("sound alert")},
    {NAMES("alarm_audio", PATH, "the alarm sound"), BY("sound alarm")},
    {NAMES("greeting_audio", PATH, "the greeting"), BY("sound greeting")},
    {NUMBERS("greeting_enable", 1, "1: the greeting is the alert sound"), BY("sound greeting")},
    {NUMBERS("alert_vol", 2, "the alert volume"), BY("sound volume")},
    {{"nimbus_enable", NUMBER, LEAST, MOST, "1 on, any other off"}, BY("feature nimbus")},
    {TEXTS("nimbus_folderid", "the cloud folder"), BY("feature nimbus")},
    {NUMBERS("led_disable", 1, "1: the status LED is off"), BY("feature led_disable")},
    {NUMBERS("alert_vclip", 1, "1: an alert keeps a clip"), BY("feature alert_vclip")},
    {{"alert_vclip_duration", NUMBER, 5, 720, "its length"}, BY("feature alert_vclip")},
    {{"alert_vclip_prelude", NUMBER, 3, 30, "what it has of before the alert"}, BY("feature alert_vclip")},
    {{"event_s3_setting", NUMBER, LEAST, MOST, "the event daemon's own"}, BY("feature event")},
    {{"event_push_setting", NUMBER, LEAST, MOST, "likewise"}, BY("feature event")},
    {{"media_server_enable", NUMBER, LEAST, MOST, "the media server's own"}, BY("feature media_server")},
    {{"media_server_auth", NUMBER, LEAST, MOST, "likewise"}, BY("feature media_server")},
    {{"kurento_max_video_level", NUMBER, LEAST, MOST, "likewise"}, BY("feature media_server")},
    {NAMES("motor_zones", AREAS, "zones of the motor"), DAEMONS},
    {NUMBERS("alert_face_enable", 1, "face detection"), DAEMONS},
    {NUMBERS("nn_enable", ANY, "detection by neural network, of the image"), DAEMONS},
    {NUMBERS("sound_nn_enable", ANY, "of sound"), DAEMONS},
    {NUMBERS("fix_capture_status", 9, "whether a fixed capture is active"), DAEMONS},
    {NUMBERS("continus_take_pic", ANY, "not 0: privacy mode tells capture, eventd and ctrl_sched"), DAEMONS},
};
// clang-format on

} // namespace cfgctl
