/*
 * cfg_set: configuration and device control of the camera.
 *
 * Turns stored settings into device state and answers questions about the
 * device. Plain functions for C and C++; no thread and no start-up call.
 *
 * Conventions. The text of a function below says where it differs.
 *
 * 1. Results. Setters, savers and restorers return 0 for success and -1 for
 *    failure. Predicates return 1 or 0 and never -1. The library retries
 *    nothing and rolls nothing back: a value stored before a later step failed
 *    stays stored.
 *
 * 2. Reports. A failure prints one line, "[FUNCTION LINE] TEXT", on standard
 *    output through the caller's stdio: the reporting function, its source line
 *    and the TEXT. Below, double quotes enclose TEXTs, keys and commands.
 *    Reports on standard error are marked. A function prints only what its text
 *    names. There is no log file.
 *
 * 3. Settings. Values live in the parameter store as text. A setter
 *    (cfg_set...) applies a value to the device and does not change the store.
 *    A saver (cfg_save...) checks, stores, commits and applies. A restorer
 *    (cfg_restore...) reads the stored value and applies it, once at start-up.
 *    Setters of the app's records (..._set_config and similar) store them. Only
 *    cfg_saveMicEnable commits the store: after any other change, the caller
 *    calls param_save.
 *
 * 4. Stored numbers. Decimal text, of which 255 characters count unless a
 *    function names fewer. Trailing characters are ignored ("1x" is 1) and text
 *    without digits is 0. Restorers, except the time zone's, read unsigned 32
 *    bits: a number beyond them becomes 4294967295, and a minus negates modulo
 *    2^32 ("-1" is 4294967295, "-4294967295" is 1). All others read an int: a
 *    number beyond it becomes the nearest int. A 64-bit desk reads the same
 *    values.
 *
 * 5. Strings and buffers. Strings are NUL-terminated and must not be NULL,
 *    except where NULL is named. Sizes are in bytes and count the terminator.
 *    Every copy is bounded. Text that is too long is refused with a report
 *    before anything is stored or run, unless the function says that it cuts
 *    the text. A command line that would be cut is never run.
 *
 * 6. Commands. The library drives the device with shell command lines. system()
 *    runs them in the foreground: a call returns when the command ends. Exit
 *    codes are ignored. A text from outside that becomes part of a line is
 *    refused when it holds a shell character, one of ; & | < > ( ) $ ` \ " ' * ? [
 *    or a control character; a time server also for a blank, ~, # or a leading
 *    "-"; a zone name for a blank, ~, # or ".."; a sound or a language
 *    for a leading "-", and for ~ or # where a word begins. Blanks of a sound or a
 *    language separate words, except where the line has quotes around it.
 *
 * 7. Processes and threads. Any number of processes may call functions at the
 *    same time; each function names the objects that processes share. Within a
 *    process, functions are as thread-safe as the store and system(), which
 *    blocks SIGCHLD and ignores SIGINT and SIGQUIT while a command runs. A
 *    process that ignores SIGCHLD cannot get a command's exit status, which
 *    cfg_startWiFi needs.
 *
 * 8. Memory. Every buffer is the caller's or is in the called function's frame
 *    (under 2 KB, except for the viewer list). Only str_replace allocates for
 *    the caller. During a call, the time zone's setter allocates, and so does
 *    the C library for streams and the list of interfaces. cfg_killProcess
 *    leaves one descriptor open; no other function does.
 *
 * The firmware supplies the platform functions declared in platform/.
 */
#ifndef CFG_SET_H
#define CFG_SET_H

#include <stddef.h>
#include <stdint.h>
#include <stdio.h>

#if defined(__GNUC__)
#define CFG_API __attribute__((visibility("default")))
#else
#define CFG_API
#endif

/*
 * The version of this header, and as one number to compare: 1.2.3 is 10203. A
 * program built with a header runs with every library of the same major number
 * that is not older. The build takes its version from these lines.
 */
#define CFG_SET_VERSION_MAJOR 1
#define CFG_SET_VERSION_MINOR 0
#define CFG_SET_VERSION_PATCH 0
#define CFG_SET_VERSION_NUMBER                                                                     \
    (CFG_SET_VERSION_MAJOR * 10000 + CFG_SET_VERSION_MINOR * 100 + CFG_SET_VERSION_PATCH)

#ifdef __cplusplus
extern "C" {
#endif

/* ======================================================================
 * Settings: utilities
 * ====================================================================== */

/*
 * Returns the version of the loaded library as a constant text ("1.2.3").
 *
 * number  receives it in the form of CFG_SET_VERSION_NUMBER; may be NULL
 */
CFG_API const char *cfg_version(uint32_t *number);

/*
 * The name of the language whose speech package is on the card.
 *
 * buffer  receives the first line of /mnt/sdcard/morvenix/lang without its end
 *         (carriage return or line feed)
 * size    bytes to read at most
 *
 * The text is not terminated when the file has no line end: pass a zeroed
 * buffer and its size less one. Returns 0, or -1 when the file cannot be opened
 * (buffer untouched).
 */
CFG_API int get_from_lang_file(char *buffer, size_t size);

/*
 * Whether `path` can be opened for reading: 1 or 0. NULL gives 0. A folder
 * counts as readable.
 */
CFG_API int file_check(const char *path);

/* ======================================================================
 * Settings: daemon messages
 * ====================================================================== */

#define MSG_PARAM_LEN 256 /* bytes of a message's parameter */

/*
 * A message to the detection and recording daemons: one record on the System V
 * queue with key 5678. The type selects the daemon, which takes only its own.
 * 296 bytes on the camera, where `long` has 4; the 292 bytes after the type are
 * the same everywhere. Clear the whole record before filling it.
 */
struct daemon_message {
    long msg_type;    /* 1 privacy, 2 PIR, 4 sound level, 7 recording */
    uint32_t command; /* the receiver's command code */
    char param[MSG_PARAM_LEN];
    uint8_t reserved1[8];
    int32_t value;
    uint8_t reserved2[20];
};

/*
 * Posts a message, which stays the caller's. Never waits and never retries: a
 * message that does not fit the queue is lost. The first post makes the queue,
 * with permissions 0666.
 *
 * Returns 0; -1 after "msgget fail" or "msgsnd fail".
 */
CFG_API int cfg_sendMsg(const struct daemon_message *message);

/*
 * Posts a recording command (type 7, value 0).
 *
 * command  the recorder's command code
 * params   parameter bytes, or NULL for none (`length` is then ignored);
 *          the rest of the field is zero
 * length   bytes of `params`, at most 256
 *
 * Returns 0; -1 after "dwParamLen[LENGTH] > MSG_PARAM_LEN[256]" (nothing is
 * posted) or after cfg_sendMsg's report and "cfg_sendMsg fail".
 */
CFG_API int cfg_setRec(uint32_t command, const void *params, uint32_t length);

/*
 * Other messages that the library posts (no parameter, value 0 unless given):
 *
 *     type  command  means                         posted by
 *     1     7        privacy, value 1 on, 0 off    cfg_setPrivacyEvent
 *     2     2, 3     PIR detection on, off         cfg_setPirEnable
 *     2     4, 5     privacy mode entered, left    cfg_setPirPrivacyMode
 *     4     3        sensitivity, param "0" to "2" cfg_setVolumeDetectSensitivity
 *     4     4, 5     sound detection on, off       cfg_setVolumeDetect
 *     4     6, 7     privacy mode entered, left    cfg_setVolumeDetectPrivacyMode
 *     7     5, 7     privacy mode entered, left    cfg_set_privacy
 *     7     0, 1     upload mode 2 set or left     smbu_set_config, 0 then 1
 */

/* ======================================================================
 * Settings: audio
 * ====================================================================== */

/*
 * Switches the microphone.
 *
 * value  1 on: runs "demo_MXSetMicMute_ 0", waits 50 ms (signals do not shorten
 *        it), runs "demo_MXSetMicVol_ 60"; 0 off: runs "demo_MXSetMicMute_ 1"
 *
 * Returns 0; -1 after "invalid value[VALUE]" for any other value, with nothing
 * run.
 */
CFG_API int cfg_setMicEnable(uint32_t value);

/*
 * Checks `value` (0 or 1), stores it under "io_mic_enable", commits the store
 * and applies it, in this order.
 *
 * Returns 0; -1 after the first of "invalid value[VALUE]" (nothing stored),
 * "param_set fail", "param_save fail" (stored, neither committed nor applied)
 * or "cfg_setMicEnable fail".
 */
CFG_API int cfg_saveMicEnable(uint32_t value);

/*
 * Applies the stored "io_mic_enable" with cfg_setMicEnable.
 * Returns 0; -1 after "param_get fail" or "cfg_setMicEnable fail".
 */
CFG_API int cfg_restoreMicEnable(void);

/*
 * Sets the speaker's level with one command.
 *
 * volume  stored volume: 0 runs "demo_MXSetSpeakerVol_ 0", any other value
 *         "demo_MXSetSpeakerVol_ LEVEL" with level 35 for 23, 50 for 31 and 40
 *         for all others
 *
 * Always returns 0.
 */
CFG_API int cfg_setSpeakerVolume(uint32_t volume);

/*
 * Applies the stored "io_speaker_volume" with cfg_setSpeakerVolume.
 * Returns 0; -1 after "param_get fail".
 */
CFG_API int cfg_restoreSpeakerVolume(void);

/*
 * Enables the speaker.
 *
 * value  0: prints "cfg_restoreSpeakerVolume off" and leaves the speaker at
 *        the level it has; anything else: cfg_restoreSpeakerVolume
 *
 * Returns 0; -1 after "cfg_restoreSpeakerVolume fail".
 */
CFG_API int cfg_setSpeakerEnable(uint32_t value);

/*
 * Applies the stored "io_speaker_enable" with cfg_setSpeakerEnable.
 * Returns 0; -1 after "param_get fail" or "cfg_setSpeakerEnable fail".
 */
CFG_API int cfg_restoreSpeakerEnable(void);

/*
 * Tells the peer-connection watchdog that two-way audio was switched: runs
 * "killall -SIGUSR1 peerconn_watchdog", the same for every value.
 * Always returns 0.
 */
CFG_API int cfg_set2WayAudioEnable(uint32_t value);

/*
 * Do nothing and return 0 for every value: this firmware does not have the
 * voice processing.
 */
CFG_API int cfg_setSkypeAecEnable(uint32_t value);
CFG_API int cfg_setSkypeAgcEnable(uint32_t value);
CFG_API int cfg_setSkypeNoiseSuppressorEnable(uint32_t value);

/*
 * Plays a spoken prompt with the AAC player: runs "demo_MXAacPlayer_ PATH".
 *
 * name  file name without a folder, at most 230 characters (convention 6)
 *
 * PATH is the first of these that exists and that the command line can hold:
 *     /mnt/sdcard/morvenix/LANGUAGE/speech/NAME    when the card is mounted
 *     /localization/LANGUAGE/NAME
 *     /audio/NAME                                  taken without a test
 * LANGUAGE is the stored "lang_name" (at most 15 characters of it on the card,
 * 31 in /localization); without one, or if convention 6 refuses it, the
 * paths that need it are skipped.
 *
 * A stored "io_speaker_volume" of 27, 0, or one that cannot be read first sets
 * the speaker with cfg_setSpeakerVolume(27); any other leaves it alone. At most
 * 7 characters of it count. The level is not restored.
 *
 * Blocks until playback ends, then for one second. If a signal ends that second
 * early, returns the whole seconds left, else 0; -1 after "invalid name" for
 * NULL and any other name, with nothing run. When /proc/mounts cannot be read
 * the card counts as not mounted, and "sdcard_mounted:LINE error opening
 * /proc/mounts..." goes to standard error.
 */
CFG_API int voice_prompt(const char *name);

/*
 * Plays an alert sound at raised priority, then restores the speaker.
 *
 * path  at most 225 characters (convention 6); a path that contains
 *       ".aac" uses the AAC player, any other the WAV player
 *
 * Prints "alert<TAB>LINE cmd COMMAND" (without a bracket) and runs COMMAND,
 * "nice -n -20 demo_MXAacPlayer_ PATH" or "nice -n -20 demo_MXWavPlayer_ PATH".
 * Blocks until playback ends, then for one second.
 * Returns the result of cfg_restoreSpeakerEnable; -1 after "invalid path" for
 * NULL and any other path, with nothing run.
 */
CFG_API int alert(const char *path);

/* ======================================================================
 * Settings: detection and alerts
 * ====================================================================== */

/*
 * Switches PIR (passive infrared) detection.
 *
 * on  0 off, anything else on
 *
 * Posts its message, then sends signal 38 to the motion-tracking engine, the
 * process that /var/run/GMMdVideo.pid names; a pid that is not positive is not
 * signalled. Returns 0, also after "notify motion tracking engine fail" when
 * that file cannot be opened; -1 after cfg_sendMsg's report and
 * "cfg_sendMsg fail", with nothing signalled.
 */
CFG_API int cfg_setPirEnable(uint32_t on);

/*
 * Tell the PIR daemon, the privacy listener and the sound daemon of the privacy
 * mode: 0 left, anything else entered. Each posts one message.
 * Return 0; -1 after cfg_sendMsg's report and "cfg_sendMsg fail", which for
 * cfg_setPrivacyEvent reads "cfg_setPrivacyEvent fail".
 */
CFG_API int cfg_setPirPrivacyMode(uint32_t on);
CFG_API int cfg_setPrivacyEvent(uint32_t on);
CFG_API int cfg_setVolumeDetectPrivacyMode(uint32_t on);

/*
 * Switches sound detection (0 off, anything else on), and sets its sensitivity
 * (any level, posted modulo 3). Each posts one message.
 * Return 0; -1 after cfg_sendMsg's report and "cfg_sendMsg fail".
 */
CFG_API int cfg_setVolumeDetect(uint32_t on);
CFG_API int cfg_setVolumeDetectSensitivity(uint32_t level);

/*
 * Apply the stored "alert_pir_enable" with cfg_setPirEnable and the stored
 * "alert_audio_enable" with cfg_setVolumeDetect. A board whose serial number
 * reads exactly B2 or D1 cannot have them on: 0 is then stored (not committed)
 * and applied. Any other board applies what is stored, also, after
 * cfg_getBoardInfo's report, one that cannot be queried.
 * Return 0; -1 after "param_get fail" or "cfg_setPirEnable fail",
 * "cfg_setVolumeDetect fail".
 */
CFG_API int cfg_restorePirEnable(void);
CFG_API int cfg_restoreVolumeDetect(void);

/*
 * Applies the stored "alert_audio_sensitivity" with
 * cfg_setVolumeDetectSensitivity.
 * Returns 0; -1 after "param_get fail" or
 * "cfg_setVolumeDetectSensitivity fail".
 */
CFG_API int cfg_restoreVolumeDetectSensitivity(void);

/*
 * Do nothing and return 0 for every value (an account may be NULL): alert
 * channels live in the store alone.
 */
CFG_API int cfg_setMotionTrackEnable(uint32_t value);
CFG_API int cfg_setAlertAppEnable(uint32_t value);
CFG_API int cfg_setAlertVideoCallEnable(uint32_t value);
CFG_API int cfg_setAlertVideoCallAccount(const char *account);
CFG_API int cfg_setAlertEmailEnable(uint32_t value);
CFG_API int cfg_setAlertEmailAccount(const char *account);

/*
 * Check that the setting they depend on can be read: "alert_chat_enable" and,
 * for any value except 0, "alert_type". They change nothing. Return 0; -1 after
 * "param_get fail".
 */
CFG_API int cfg_setAlertType(uint32_t value);
CFG_API int cfg_setAlertChatEnable(uint32_t value);

/*
 * Apply the stored "alert_type" with cfg_setAlertType and "alert_chat_enable"
 * with cfg_setAlertChatEnable.
 * Return 0; -1 after "param_get fail" or "cfg_setAlertType fail",
 * "cfg_setAlertChatEnable fail".
 */
CFG_API int cfg_restoreAlertType(void);
CFG_API int cfg_restoreAlertChatEnable(void);

/*
 * Read "alert_motion_track_enable", "alert_app_enable",
 * "alert_video_call_enable", "alert_call_account", "alert_email_enable" and
 * "alert_email_account", and apply nothing.
 * Return 0; -1 after "param_get fail".
 */
CFG_API int cfg_restoreMotionTrackEnable(void);
CFG_API int cfg_restoreAlertAppEnable(void);
CFG_API int cfg_restoreAlertVideoCallEnable(void);
CFG_API int cfg_restoreAlertVideoCallAccount(void);
CFG_API int cfg_restoreAlertEmailEnable(void);
CFG_API int cfg_restoreAlertEmailAccount(void);

/* ======================================================================
 * Settings: image and lights
 * ====================================================================== */

/*
 * Sets the infrared illumination.
 *
 * mode  0, 1 or 2 writes "0", "2" or "3", with its NUL, to /proc/ir_mode; any
 *       other opens the file with truncation and writes nothing
 *
 * Always returns 0, also when the file cannot be opened.
 */
CFG_API int cfg_setIrEnable(int mode);

/*
 * Applies the stored "io_ir_enable" with cfg_setIrEnable.
 * Returns 0; -1 after "param_get fail".
 */
CFG_API int cfg_restoreIrEnable(void);

/*
 * The number in /proc/ir_mode, of which 31 characters count (the driver's
 * number: 0, 2 or 3); 2 when it cannot be opened.
 */
CFG_API int ir_mode(void);

/*
 * The hardware version: the hexadecimal number at the start of what
 * "board hwver" prints, of which 15 characters count. 0 when it prints nothing
 * or cannot be started. Blocks until the command ends.
 */
CFG_API uint32_t cfg_get_hw_ver(void);

/*
 * Orients the image: runs "demo_MXTurnVideo_ 3 &" for 0 and
 * "demo_MXTurnVideo_ 0 &" for any other value. Does not wait for the command.
 * Always returns 0.
 */
CFG_API int cfg_setVideoOrientation(uint32_t value);

/*
 * Applies the stored "io_video_orientation" with cfg_setVideoOrientation; on
 * boards of hardware version 56CA stores 0 there first (not committed).
 * Returns 0; -1 after "param_get fail".
 */
CFG_API int cfg_restoreVideoOrientation(void);

/*
 * Switches backlight compensation (0 off, anything else on) with two commands:
 * one writes 1 or 0 to /proc/backlight, one sets saturation, dynamic range and
 * contrast of the image processor under /proc/isp320.
 * Always returns 0.
 */
CFG_API int cfg_setBacklightCompensation(uint32_t value);

/*
 * Applies the stored "io_backlight_compensation" with
 * cfg_setBacklightCompensation.
 * Returns 0; -1 after "param_get fail".
 */
CFG_API int cfg_restoreBacklightCompensation(void);

/*
 * Switches night mode: writes the character 1 to /proc/night_mode, 0 for an
 * `on` of 0. Always returns 0, also when the file cannot be opened.
 */
CFG_API int night_mode(uint32_t on);

/*
 * The numbers in /proc/night_mode and /proc/light_sensor, of which 31
 * characters count; 0 when they cannot be opened.
 */
CFG_API int in_night_mode(void);
CFG_API int light_sensor(void);

/*
 * Whether the board has the WLED (bit 4 of the hardware version) and the Rlamp
 * (bit 6): answered as cfg_is_slip_ring_model answers.
 */
CFG_API int cfg_isWLEDVersion(void);
CFG_API int cfg_isRlampVersion(void);

/*
 * Drives the WLED, whether or not the board has one.
 *
 * mode  0 to 2: written to /proc/wled_mode as a digit with its NUL; 3: the
 *       same, but only while the file, opened with truncation, reads 1; any
 *       other: nothing written
 *
 * Returns the result of closing the file, 0 or EOF, regardless of what was
 * written; after "open /proc/wled_mode file fail" the (positive) length of that
 * report.
 */
CFG_API int wled_mode(uint32_t mode);

/*
 * Sets the WLED with wled_mode; a mode above 2 is ignored.
 * Always returns 0.
 */
CFG_API int cfg_setWLEDEnable(uint32_t mode);

/*
 * Applies the stored "wled_mode" with cfg_setWLEDEnable.
 * Returns 0; -1 after "param_get fail", and without a report of its own when
 * the board has no WLED or cannot be queried.
 */
CFG_API int cfg_restoreWLEDEnable(void);

/*
 * Drives the Rlamp, whether or not the board has one.
 *
 * mode  0 to 2: written to /proc/rlamp_mode as one digit; 3: prints
 *       "sValue=[STORED]" with the stored "rlamp_mode" (3 characters of it at
 *       most) and writes the digit only when that is 3, too; any other:
 *       nothing written
 *
 * Returns 0; -1 after "open file fail".
 */
CFG_API int rlamp_mode(int mode);

/*
 * Sets the Rlamp with rlamp_mode; a mode above 3 is ignored.
 * Always returns 0.
 */
CFG_API int cfg_setRlampEnable(uint32_t mode);

/*
 * Applies the stored "rlamp_mode" with cfg_setRlampEnable.
 * Returns 0; -1 after "param_get fail", and without a report of its own when
 * the board has no Rlamp or cannot be queried.
 */
CFG_API int cfg_restoreRlampEnable(void);

/*
 * Whether the status LED is switched off: the first character of the stored
 * "led_disable" as a number, 0 when it cannot be read.
 */
CFG_API int cfg_isLEDDisabled(void);

/* ======================================================================
 * Settings: privacy
 * ====================================================================== */

/*
 * Enters or leaves privacy mode.
 *
 * on  0 leave, anything else enter; callers pass 1
 *
 * Does nothing when the stored "orb_privacy_mode_enable" is this number (31
 * characters of it count; one that cannot be read is 0). Otherwise stores it
 * there (not committed), then, in this order:
 *
 *     entering                               leaving
 *     cfg_setPrivacyEvent(1)                 cfg_setPrivacyEvent(0)
 *     "MotorCtrlApp privacy 1"               "MotorCtrlApp privacy 0"
 *     "LEDCtrlApp power PRIVACY_ON"          "LEDCtrlApp power PRIVACY_OFF"
 *     cfg_setIrEnable(0)                     restores infrared, WLED, Rlamp
 *     cfg_setRec(5, NULL, 0)                 cfg_setRec(7, NULL, 0)
 *     cfg_setPirPrivacyMode(1)               cfg_setPirPrivacyMode(0)
 *     cfg_setVolumeDetectPrivacyMode(1)      cfg_setVolumeDetectPrivacyMode(0)
 *     "killall -SIGHUP peerconn"             "killall -SIGPROF peerconn"
 *     "killall AudioPlayback"
 *     "killall -SIGUSR2 ffplay"
 * and when the stored "continus_take_pic" (15 characters count) is not 0
 *     "killall -37 capture"                  "killall -35 ctrl_sched"
 *     "killall -41 eventd"
 *
 * Every step runs, even after an earlier one failed. One caller at a time,
 * across processes: the others wait at the semaphore with key 0xDEF1 until the
 * whole change is done. Without the semaphore the change goes ahead unlocked.
 *
 * Always returns 0. Each step makes its own reports. "cfg_setPrivacyEvent fail"
 * then goes to standard output; "cfg_setRec fail", "cfg_setPirPrivacyMode fail"
 * and "cfg_setVolumeDetectPrivacyMode fail" go to standard error. Failures of
 * the semaphore are reported as with the event queue.
 */
CFG_API int cfg_set_privacy(uint32_t on);

/*
 * Whether privacy mode is on: the first character of the stored
 * "orb_privacy_mode_enable" as a number, 0 when it cannot be read.
 */
CFG_API int cfg_isPrivacyMode(void);

/* ======================================================================
 * Settings: probes
 *
 * Quick answers about the camera's state. A source that is missing gives the
 * fallback named; text without digits counts as 0. 31 characters of a line
 * count, and 32 of the files of valid events.
 * ====================================================================== */

/*
 * The number of running streams: what /proc/stream_counter reads; 0 without it.
 */
CFG_API int streaming_counter(void);

/*
 * Whether an activity event and a tracking event count now: 1 when
 * /proc/is_valid_activity_event, /proc/is_valid_track_event read a number other
 * than 0, else 0. Without the file: 1.
 */
CFG_API int is_valid_activity_event(void);
CFG_API int is_valid_track_event(void);

/*
 * Whether the enhanced image mode is on: 1 when /proc/azba_enhanced begins with
 * the character 1, else 0; 0 without it.
 */
CFG_API int get_enhanced_mode(void);

/*
 * Whether a fixed capture is active: the first character of the stored
 * "fix_capture_status" as a number; 0 when it cannot be read.
 */
CFG_API int CheckFixCaptureSatus(void);

/*
 * Whether the neural-network detectors of image and sound are enabled: the
 * number that "param get nn_enable" and "param get sound_nn_enable" print, of
 * which 63 characters count; 0 when they print none or cannot be started. Block
 * until the command ends, whose standard error is the caller's.
 */
CFG_API int is_nn_enable(void);
CFG_API int is_sound_nn_enable(void);

/*
 * Reads or writes the state of the activity zones.
 *
 * write  0: returns the number of one or two digits that /proc/activity_zones
 *        begins with; anything else: writes `value` there
 * value  0 to 9, written as a digit with its NUL; ignored when reading
 *
 * Returns the number read; 0 when writing, also any other value (the file is
 * then left alone), and after "fopen: REASON" on standard error when the file
 * cannot be opened.
 */
CFG_API int activity_zones_state(int write, int value);

/*
 * Switches the check of the face detection hardware to what the motor zones
 * allow. The stored "motor_zones" begins with the form {A,B}{C,D,E,F. With any
 * of C to F not 0 it runs "GMCtrl c 0"; with all 0, and "alert_face_enable"
 * stored as exactly "1", "GMCtrl c 1"; otherwise nothing.
 *
 * Always returns 0. Nothing runs when "motor_zones" cannot be read, or after
 * "sscanf value fail " on standard error (without a bracket) when it has
 * another form.
 */
CFG_API int disable_face_hw_check(void);

/* ======================================================================
 * Event queue
 *
 * Pending events, oldest first, that all processes share. A ring in shared
 * memory holds them (System V key 0x20130002, 4108 bytes). After every change
 * the whole ring is written to /mnt/sdcard/video/.event. Each call holds one
 * lock (semaphore 0x20130001) until it returns, so it blocks while another
 * process is in a call, and for the card. A handled signal does not end the
 * wait, but prints "error getting semaphore." on standard error.
 *
 * The first call after a restart creates the lock and the ring and loads the
 * copy. A copy is refused as a whole when it is short, when head, tail and
 * count do not agree, or when any of its 512 slots, in use or not, has a type
 * above 4 or, once the clock is past 2014-01-17 23:06:40 UTC, a time that is
 * not past. For a copy that is not short, checkEventQueue reports the reason.
 * "load fail" follows, "rm -rf /mnt/sdcard/video/.event" deletes the copy, and
 * the ring starts empty. If the copy cannot be opened for reading and writing,
 * for example on a read-only card, "[/mnt/sdcard/video/.event] not found" is
 * reported. Later calls trust the ring in memory. If another program has a
 * smaller segment under the key, every call fails.
 *
 * A call that cannot get the lock or the ring returns its failure value after
 * "sem_get fail iSemId[-1]" or after getEventQueue's report and "getEventQueue
 * fail". The reasons for the lock go to standard error without a bracket:
 * "error creating semaphore." and "sem_get: REASON", "SETALL failed (ERRNO)",
 * "error getting semaphore.", "error releasing semaphore.". A ring that exists
 * but cannot be attached ends the caller with a segmentation fault, because
 * only a null address counts as a failure of shmat. "saveEventQueue fail" and
 * "sem_put fail iSemId[ID]" do not change a result: the events stay in memory,
 * and the next change writes them.
 *
 * The kernel releases the lock of a process that dies in a call. The events are
 * then those before its change or those after it, never a mixture; an unused
 * slot may hold part of an event. The process can leave behind:
 *
 * - a copy that is one change old, empty, or cut short. The next change writes
 *   it whole; a restart before that takes the old one and refuses the others.
 * - in the first call after a restart: a ring that is empty although the card
 *   has events, or that was loaded but not checked. cfg_dequeueAllEvent resets
 *   head, tail and count of a ring that holds events. A ring whose count is 0
 *   and whose head equals its tail counts as empty and stays as it is. The
 *   slots keep their types, which the next restart checks. "ipcrm -M
 *   0x20130002" makes the next call load the copy again.
 * - if it dies in that first call, after creating the semaphore and before
 *   setting its value: a lock that stays taken until "ipcrm -S 0x20130001"
 *   removes it. Two processes that make the first call together may also both
 *   get the lock; it then admits two at once until the one that locked first
 *   ends. Let one process make the first call before it starts the others.
 * ====================================================================== */

#define EVENT_QUEUE_SIZE 512 /* events that the ring holds */

/* One event. 8 bytes, in memory and on the card. */
struct EventQueueEntry {
    uint32_t type; /* the producer's code, 0..4 */
    uint32_t time; /* when it was added, seconds since 1970-01-01 UTC */
};

/*
 * 1 when there are no events; 0 when there are, or when the lock or the ring is
 * unavailable.
 */
CFG_API int cfg_isEventQueueEmpty(void);

/*
 * Adds an event with the time of the call.
 *
 * type  stored as it is; one above 4 stays in memory, but makes the next
 *       restart refuse the whole copy
 *
 * Returns 0, also after "saveEventQueue fail"; -1 when the lock or the ring is
 * unavailable, or after "EventQueue is full", with nothing changed.
 */
CFG_API int cfg_enqueueEvent(uint32_t type);

/*
 * Drops the `n` oldest events, or all when there are fewer. 0 drops none but
 * writes the copy again when there are events.
 *
 * Returns 0, also after "saveEventQueue fail" and when there were none; -1 when
 * the lock or the ring is unavailable.
 */
CFG_API int cfg_dequeueEvent(uint32_t n);

/*
 * Drops all events. Returns as cfg_dequeueEvent does.
 */
CFG_API int cfg_dequeueAllEvent(void);

/*
 * Reads an event and leaves it where it is. To handle events, read number 0,
 * then drop 1. Consumers in several processes need their own lock around these
 * two calls, or two of them handle the same event.
 *
 * index  0 for the oldest event, 1 for the next, ...
 * event  receives it; unchanged on failure
 *
 * Returns 0; -1 when there is no such event, when the lock or the ring is
 * unavailable, or after "event buffer is null".
 */
CFG_API int cfg_getEvent(uint32_t index, struct EventQueueEntry *event);

/* ======================================================================
 * Event queue: device status
 * ====================================================================== */

/*
 * Stores the device status, a number from 0 to 255, as the one byte of
 * /tmp/dev_status. A restart clears it.
 *
 * Prints "result:N" (of taking the file's lock), "status: STATUS, writeSize: N,
 * sizeof(status):1" and "result:N" (of giving it back). The lock is shared: a
 * reader may see 0 during the write. Blocks while another program holds an
 * exclusive lock on the file.
 *
 * Returns 0, even when the byte could not be written (writeSize is then 0); -1
 * after "Fail to open /tmp/dev_status file".
 */
CFG_API int cfg_setDeviceStatus(uint8_t status);

/*
 * The stored device status: the first byte of the file, 0 when it is empty,
 * and 255, which can also be a stored one, after "Fail to open /tmp/dev_status
 * file". Prints and blocks as cfg_setDeviceStatus does, with readSize.
 */
CFG_API uint8_t cfg_getDeviceStatus(void);

/* ======================================================================
 * Upload
 * ====================================================================== */

/*
 * The upload daemon smbu copies recordings to a network share. The library
 * controls it with signals on the System V queue with key 0x20130005. Account
 * records are posted on the queue with key 0x20130003; who takes them is not
 * known here. The first post makes a queue, with permissions 0666; a post never
 * waits, and one that does not fit is lost.
 *
 * A signal is a `long` type, the code, and 4 bytes: time() in seconds.
 *     1 wake up           2 new event
 *     5, 6 stop           7 switched on           8 started with new settings
 * An account record is a `long` type, 1, and 272 bytes, all zero except
 *     at 0    the code 11, 16 bits
 *     at 12   the stored "gdu_account", at most 255 characters
 *
 * "cifs_mode" is a digit: 0 off; 1 on; 2 on, and told of events; 3 left to
 * itself, neither started nor woken from here. Failures of the store and of
 * these queues are ignored without a report. Functions whose text names no
 * result return 0.
 */

/*
 * The upload mode: the first character of the stored "cifs_mode" as a number,
 * 0 when there is none.
 */
CFG_API int smbu_status(void);

/*
 * Whether the daemon runs: 1 when the process whose pid is in
 * /var/run/smbu.pid has "smbu" in the first 32 characters of its program name,
 * else 0.
 */
CFG_API int smbu_exist(void);

/*
 * Wakes the daemon with signal 1; in mode 0 or 3 does nothing. If it does not
 * run, "smbu" starts it first, which blocks until the daemon is in the
 * background, and one second more.
 */
CFG_API int smbu_wake_up(void);

/*
 * Tells the daemon of a new event with signal 2, in mode 2 only. Starts it as
 * smbu_wake_up does.
 */
CFG_API int smbu_event_notify(void);

/*
 * Sends a running daemon signal 6 and waits one second, after which it may
 * still run.
 */
CFG_API int smbu_force_stop(void);

/*
 * Stores what is given and brings the daemon in line with it.
 *
 * user, pass, target, mode, size
 *         texts for "cifs_user", "cifs_pass", "cifs_target", "cifs_mode" and
 *         "cifs_size", stored unchanged; NULL leaves a setting unchanged
 *
 * When `user`, `pass` or `target` is given, changed or not, a running daemon is
 * stopped after they are stored: by signal 5 when `mode` is a text of the value
 * 0, else by 6. Until it has ended, without limit, "Wait smbu is terminated" (no
 * bracket) is printed once a second. Without `mode` it is then started again,
 * unless the old mode was 0 or 3.
 *
 * A `mode` that is neither NULL nor empty is then applied:
 *     1, 2         posts the account record; a running daemon is sent 7
 *     0            a running daemon is sent 5 and given 5 seconds
 *     not 0 or 3   starts a daemon that does not run, and sends it 7 when the
 *                  old mode was 0
 * A change to or from mode 2 is reported to the recorder: cfg_setRec with
 * command 0, then 1, both without parameters. Nothing else makes reports here.
 *
 * Every start runs "smbu &", waits one second and ends with signal 8.
 */
CFG_API int smbu_set_config(const char *user, const char *pass, const char *target,
                            const char *mode, const char *size);

/*
 * Reads the stored settings but the password, and whether the share is mounted.
 *
 * user, target, mode, size
 *          each with the bytes it has room for; the store cuts a longer
 *          value. NULL or a length below 1: not wanted. One that cannot be
 *          read is unchanged.
 * mounted  receives 1 when "cat /proc/mounts | grep /mnt/cifs" prints anything,
 *          else 0; NULL: not wanted
 */
CFG_API int smbu_get_config(char *user, int user_len, char *target, int target_len, char *mode,
                            int mode_len, char *size, int size_len, int *mounted);

/*
 * Leaves the daemon a job to recover the recording `path` (with a "/"). The job
 * is an empty file (0644), /mnt/sdcard/video/.smbu/NAME.rcy, with the
 * recording's name up to its last "."; for a name without one it is
 * /mnt/sdcard/video/.rcy. The folder is not made here. The job's path, with the
 * whole name, is cut at 127 characters before its last "." is looked for.
 *
 * Returns 0, also when the job is there already; -1 when it cannot be made, when
 * `path` is NULL or has no "/", or when the cut leaves no room for ".rcy".
 */
CFG_API int smbu_add_recovery_job(const char *path);

/* ======================================================================
 * Firmware: board identity
 * ====================================================================== */

#define BOARD_INFO_BOARDID 0UL /* board id, such as xq7h0c: model, "h", mask */
#define BOARD_INFO_SN 1UL      /* serial number */
#define BOARD_INFO_HWVER 2UL   /* hardware version, hexadecimal */

/*
 * Asks the board: the first line that "board boardid", "board sn" or
 * "board hwver" prints.
 *
 * index  one of BOARD_INFO_...
 * buf    receives the line without its line feed, cut to `size`; clear it
 *        first; it is unchanged on failure
 * size   bytes of `buf`: 17 hold a board id, 32 the others
 *
 * Returns 0; -1 after "unknown index[INDEX]", after
 * "pclose fail, errno[N][TEXT]" when the command cannot be started, or after
 * "fgets fail, errno[N][TEXT]" when it prints nothing (errno is 0 when it just
 * ended). Signals do not end the reading. Blocks until the command ends.
 */
CFG_API int cfg_getBoardInfo(unsigned long index, char *buf, int size);

/*
 * Whether the board has a slip ring and differential audio, by these bits of
 * the hardware version. Each runs "board hwver" and returns 1 or 0; 0 after
 * cfg_getBoardInfo's report when the board cannot be queried.
 */
CFG_API int cfg_is_slip_ring_model(void);    /* bit 7 */
CFG_API int cfg_is_audio_differential(void); /* bit 10 */

/*
 * Whether the board has an Ethernet port (bit 9): 1 or 0. The command runs on
 * the first call only; its answer, also the 0 of a query that failed or was
 * interrupted, is kept for the life of the process.
 */
CFG_API int cfg_check_eth_support_by_hwver(void);

/* ======================================================================
 * Firmware: image verification
 * ======================================================================
 *
 * An image begins with a 64-byte header; its numbers are big-endian:
 *
 *     byte  4   CRC-32 of the header, computed with these four bytes zero
 *     byte 24   CRC-32 of what follows the header
 *     byte 32   board id, 16 bytes: the model, "h", and in hexadecimal one bit
 *               for each board that the image runs on; NUL when shorter
 *
 * All other fields are ignored, including the magic number and the size.
 *
 * A checksum detects damage only: anyone can make an image that passes. The
 * caller must authenticate the image first. Bytes after `dwLimit` are not
 * covered.
 */

/*
 * Checks an image: first that it is for this board (cfg_checkBoardId), then its
 * header (cfg_checkHeaderChecksum), then the rest. The first failure ends it.
 *
 * fp       the image, open for reading and seekable; stays open, with its
 *          position wherever the last read stopped
 * dwLimit  bytes of the file, header included, that the checksum of the rest
 *          covers; 0 for all of them. Up to 64 it covers so many bytes of the
 *          header instead: pass more
 *
 * Returns 0; -1 after "invalid fp", "fseek fail, errno[N][TEXT]", "fread fail"
 * (fewer than 64 bytes), or after a check's own report and "cfg_checkBoardId
 * fail", "cfg_checkHeaderChecksum fail" or "cfg_checkImageChecksum fail". The
 * last check reports as checkImageChecksum: "fseek fail, errno[N][TEXT]",
 * "image checksum not match [COMPUTED]!=[STORED]", or "stream error" when the
 * checksum is right but ferror says that a read failed, now or before the call.
 *
 * Runs the board query. Reads the header twice and the file once, 512 bytes at
 * a time; blocks until that is done. With a stream buffer of 64 KB (setvbuf
 * before any reading) a 16 MB image is checked 1.1 to 1.2 times as fast.
 */
CFG_API int cfg_checkFirmware(FILE *fp, uint32_t dwLimit);

/*
 * Whether the image may run on this board: both are of one model, and their
 * masks have a bit in common. Upper and lower case count the same. The model is
 * the part of the board's own id before its first "h" that is not the first
 * letter.
 *
 * pbHeader  the first 64 bytes of the image
 *
 * Returns 0; -1 after "invalid pbHeader" (NULL), "cfg_getBoardInfo fail", "no
 * board id found" (the board's is empty) or "image mask[MASK] not valid for
 * [BOARD'S MASK]". A mask is 0, after one of these reports of getBoardIdMask,
 * when the id is of another model ("model[MODEL] not found"), has no "h" after
 * the model ("invalid board format") or a byte that is not ASCII ("non-ascii
 * char[BYTE]"), or when the board's model takes 16 characters ("dwBufSize[16]
 * not enough"). It is also 0, without a report, when no hexadecimal digit
 * follows the "h". Runs the board query.
 */
CFG_API int cfg_checkBoardId(const void *pbHeader);

/*
 * Whether the header matches its checksum.
 *
 * pbHeader  the first 64 bytes of the image
 *
 * Returns 0; -1 after "invalid pbHeader" (NULL) or "header checksum not match
 * [COMPUTED]!=[STORED]".
 */
CFG_API int cfg_checkHeaderChecksum(const void *pbHeader);

/*
 * The CRC-32 (IEEE 802.3, reflected: "123456789" gives 0xCBF43926) of `len`
 * bytes at `buf`. 0 after "invalid parameter" when `buf` is NULL or `len` 0.
 */
CFG_API uint32_t cfg_getCrc32(const void *buf, uint32_t len);

/*
 * The CRC-32 of a stream from its current position. Reads 512 bytes at a time
 * until a read returns nothing; an error counts as the end (see ferror).
 *
 * fp       open for reading; stays open
 * dwSkip   leading bytes to leave out, at most 511 and fewer than the stream
 *          holds: a read that is no longer than the skip is hashed whole, and
 *          the skip applies to the next longer read
 * dwLimit  bytes to read, the skipped ones included; 0 for all of them
 *
 * 0xFFFFFFFF after "invalid fp" when `fp` is NULL.
 */
CFG_API uint32_t cfg_getCrc32FromFile(FILE *fp, uint32_t dwSkip, uint32_t dwLimit);

/* The CRC-32 of each byte value, as the byte-wise method uses it. */
CFG_API extern const uint32_t crc32_tab[256];

/* ======================================================================
 * Firmware: upgrade preparation
 * ====================================================================== */

/*
 * Stops all other processes before flash is written. Call it only when the
 * upgrade is all that is left to do.
 *
 * 1. Runs "killall watchdog; disable_watchdog" and
 *    echo "" > /proc/sys/kernel/hotplug, so that no hot-plug program starts.
 * 2. Sends SIGTERM to every process that `ps` lists, kernel threads included,
 *    except the caller, process 1 and the Wi-Fi driver's command thread,
 *    which "iPidRTW = PID" names (0: there is none). Each is announced on
 *    standard error, without a bracket: "send SIGTERM to pid PID".
 * 3. Waits until at most two rows of `ps -l` have 1 in their fourth column:
 *    up to 20 times "dwCount: ROWS", one second, "retry: TIMES".
 *
 * Nothing is sent SIGKILL; processes that survive all 20 attempts stay. The
 * pipe from which the command thread's number was read stays open for the life
 * of the process, and its shell stays a zombie. The lists come from `ps` and
 * awk and use the columns of the camera's `ps`.
 *
 * Returns 0; -1 after "popen fail errno[N][TEXT]" when the processes cannot be
 * listed (the commands of step 1 have run; nothing was signalled). The same
 * report in step 3 counts as an attempt.
 */
CFG_API int cfg_killProcess(void);

/*
 * Whether audio is playing, that is, /tmp/play_status exists and is not empty:
 * 0 yes, -1 no.
 */
CFG_API int cfg_isPlayingMusic(void);

/*
 * Whether `version` is newer than "v5.0.44", whatever the firmware's own is: 0
 * yes, -1 no (equal, older or not a version). A version is "v" and three
 * decimal integers with dots between them; further text is ignored, and a
 * number beyond an int counts as the nearest int.
 */
CFG_API int cfg_isNewVersion(const char *version);

/*
 * Whether newer firmware has been downloaded: the first line (of at most 63
 * characters) of /mnt/sdcard/upgrade/upgrade.dat is a newer version and
 * /mnt/sdcard/upgrade/upgrade.bin can be read. Otherwise both are deleted: do
 * not call it while a download is being written. cfg_checkFirmware checks the
 * image itself.
 *
 * version_out  receives the version, cut to `size`, or "" when the answer is
 *              no; may be NULL
 * size         bytes of it; 64 hold every version, 0 writes nothing
 *
 * Returns 0 yes, -1 no.
 */
CFG_API int cfg_verifyDownloadedFw(char *version_out, uint32_t size);

/*
 * Whether the downloaded voice prompts have been unpacked. VERSION is the
 * stored "speech_version" and LANGUAGE the stored "lang_name", at most 15
 * characters of each; an empty language is EN. The download is
 *     /mnt/sdcard/morvenix/download/speechVERSION_LANGUAGE.tgz
 * and while it is being unpacked there is
 *     /mnt/sdcard/morvenix/LANGUAGE/speech/speechVERSION_LANGUAGE.tar
 *
 * lang_out  receives the language, cut to `size`; "" when it cannot be read;
 *           may be NULL
 * size      bytes of it; 16 hold every language, 0 writes nothing
 *
 * Returns -1 after "sTarPath have be remove. To sure really tar finished " (the
 * text ends with a blank) when the download exists and is unpacked. Returns 0
 * when there is no download, when the language cannot be read, and, after
 * "download ok but tar is fail, Need again", when unpacking did not finish. An
 * empty stored version is reported as "Can not get  SPEECH_VERSION", without
 * the blank after the bracket; a version that cannot be read counts as empty,
 * without a report.
 */
CFG_API int cfg_verifyDownloadedSpeech(char *lang_out, uint32_t size);

/* ======================================================================
 * Network: supplicant file
 * ====================================================================== */

/*
 * Writes /etc/wpa_supplicant.conf from the stored networks: its three general
 * lines, then the blocks of the primary network ("wl_ssid", "wl_psk") and of
 * slots 1 to 3 ("wl1_ssid", "wl1_psk" and so on), each as generate_config_block
 * writes them. A network whose SSID or key cannot be read is skipped; a file
 * without networks is still written.
 *
 * While "orb_setup" is "0" (first setup not finished) and "app_ip" holds a
 * BSSID that validate_bssid accepts, the primary network is pinned to it.
 *
 * Returns 0; -1 when the file cannot be opened, with "Error opening
 * /etc/wpa_supplicant.conf." on standard error (without a bracket). Write
 * errors are not detected. The file is rewritten in place, without a lock. It
 * holds keys, so only its owner can read it (0600).
 */
CFG_API int cfg_restoreWiFiConfig(void);

/*
 * Whether `key` has the form of a WEP key: 5 or 13 characters, or 10 or 26
 * hexadecimal digits. 1 or 0; NULL gives 0.
 */
CFG_API int could_be_wep(const char *key);

/*
 * Checks a BSSID and rewrites it in normal form: six groups of two lower-case
 * hexadecimal digits, separated by colons.
 *
 * text  at least 18 bytes; up to six hexadecimal numbers with ":" between them.
 *       What follows them is ignored, a missing one counts as 0
 *
 * Returns 1; 0 (text unchanged) when it is NULL, begins with "0", has no ":",
 * or holds a number above ff or nothing but zeros.
 */
CFG_API int validate_bssid(char *text);

/*
 * Appends the blocks of one network to a supplicant file. The security of the
 * network is unknown, so there is a block for each kind that the key allows:
 *
 *     8 to 63 characters        WPA with a passphrase
 *     64 characters             WPA with a raw key
 *     a form of could_be_wep    WEP, after WPA where both apply
 *     none                      an open network
 *
 * and no block for a key of any other length.
 *
 * fp     the file, left open; NULL writes nothing
 * index  0 the primary network, 1 to 3 the slots; not used
 * ssid   NULL or empty writes nothing
 * key    NULL writes nothing
 * bssid  NULL, or the access point's in the form of validate_bssid: each block
 *        then comes twice, pinned to it and plain
 *
 * SSID, key and BSSID are written without escaping. A line feed in any of them
 * could add settings to the file, so such a network is left out. Nothing else
 * is checked. The supplicant refuses the whole file, with all its networks, for
 * one SSID of more than 32 bytes, one passphrase with a control character or
 * one raw key that is not hexadecimal; it takes a "#" after an odd number of
 * double quotes as a comment. Check networks before you store them.
 */
CFG_API void generate_config_block(FILE *fp, int index, const char *ssid, const char *key,
                                   const char *bssid);

/* ======================================================================
 * Network: Wi-Fi link
 *
 * The station link runs on wlan0. With a stored "apmode" of exactly "1" the
 * camera is also an access point, on wlan1 as 192.168.213.1, for the first 1200
 * seconds after boot. All functions return 0: they do not see whether the
 * commands succeed.
 * ====================================================================== */

/*
 * Takes the station link down: runs "/etc_ro/udhcpc.kill wlan0" and
 * "killall wpa_supplicant". Takes no lock.
 */
CFG_API int cfg_stopWiFi(void);

/*
 * Brings the link up with the file that cfg_restoreWiFiConfig wrote: clears
 * /tmp/wps, ends the supplicant and starts it again in the background, then
 * starts the DHCP client and wpa_cli with the action script
 * /sbin/wpa_action.kx7. In between, it starts hostapd and udhcpd on wlan1 if an
 * access point is wanted and its time is not over; otherwise it ends both and
 * takes wlan1 down.
 *
 * If hostapd runs already, or pidof fails, it is not started:
 * "cfg_startWiFi:LINE hostapd alreay started." goes to standard error. A caller
 * that ignores SIGCHLD therefore never starts an access point. Takes no lock.
 * Blocks for two seconds and the commands.
 */
CFG_API int cfg_startWiFi(void);

/*
 * Takes the station link down and, unless "apmode" is "1", resets the radio
 * through /proc/wifi_reset and /etc_ro/init.d/S30wifi. The link stays down.
 *
 * Holds the System V semaphore with key 0xDEF, so that only one process at a
 * time resets or restarts the link. Waits while another process holds it;
 * continues without it when it is unavailable (reported on standard error).
 * Blocks for some three seconds more when the radio is reset.
 */
CFG_API int cfg_resetWiFi(void);

/*
 * Stops the link, resets the radio as cfg_resetWiFi does, waits 5 seconds and
 * starts the link, all under the same semaphore. Does nothing while a live
 * stream runs (/proc/live_streaming begins with "1"). Blocks for some ten
 * seconds and the wait for the semaphore.
 */
CFG_API int cfg_restartWiFi(void);

/*
 * Makes the watchdog restart the peer connection: a background shell sleeps,
 * then sends SIGUSR1 to morvenix_watchdog.
 *
 * delay_seconds  before the signal; 0 or less: at once
 *
 * Returns 0, without waiting.
 */
CFG_API int cfg_restart_peerconn(int delay_seconds);

/* ======================================================================
 * Network: interface status
 *
 * 1 when the interface holds an IPv4 address, else 0. An IPv6 address does not
 * count, nor does one of an alias such as eth0:1. 0 after
 * "FUNCTION(): Error getting interface IP addresses." on standard error when
 * the interfaces cannot be listed.
 * ====================================================================== */

/*
 * Whether eth0 is up: 1 or 0; 0 on a board without Ethernet, see
 * cfg_check_eth_support_by_hwver.
 */
CFG_API int cfg_eth_is_up(void);

/* Whether wlan0 is up: 1 or 0. */
CFG_API int cfg_wlan_is_up(void);

/* ======================================================================
 * Time: time zone
 * ====================================================================== */

/*
 * Sets the camera's time zone, named by the stored "time_zone_str", such as
 * Europe/Oslo. In this order:
 *
 * - The first row of /etc_ro/time_zone that begins with the name, in any case,
 *   gives the TZ string: the rest of the line after the name and one separator,
 *   at most 127 characters. The arguments are then ignored.
 * - Without a name or a row the TZ string is made from the arguments, such as
 *   GMT-0130 for 90 and GMT-0130DST,M4.1.0/2,M10.5.0/2 with daylight saving:
 *   POSIX's sign, hours and minutes without a colon. Readers differ there:
 *   glibc takes the four digits for hours and stops at 24.
 * - /tmp/TZ is opened for the TZ string and a line feed. "tz_string = TZ" goes
 *   to standard error, without a bracket.
 * - Runs "rm -rf /etc/localtime" and "cp /usr/share/zoneinfo/NAME
 *   /tmp/localtime", the latter unless the name has more than 217 characters or
 *   convention 6 refuses it. /tmp/TZ gets its line when both have ended.
 * - The relay client gets the name: message type 18, four bytes of length by
 *   appipc_set_uint32 and the text {"timezone":"NAME"}, not escaped. The
 *   message is allocated, and freed before the return.
 *
 * offset_minutes  of the zone, east of Greenwich; -1440 to 1440
 * dst             1: daylight saving from April to October, 0: none
 *
 * Returns 0, also after "Fail to allocate memory" or "Fail to connect to
 * relaycli"; -1 after "invalid param" or "fopen fail", with nothing run, sent
 * or written. There is no lock: two concurrent callers race for the files.
 * Blocks for the commands and the relay client.
 */
CFG_API int cfg_setTimeZoneDst(int offset_minutes, uint32_t dst);

/*
 * Applies the stored zone, "time_zone" (minutes) and "time_dst" with
 * cfg_setTimeZoneDst.
 * Returns 0; -1 after "param_get fail" or "cfg_setTimeZoneDst fail".
 */
CFG_API int cfg_restoreTimeZoneDst(void);

/* ======================================================================
 * Time: network time sync
 * ====================================================================== */

/*
 * Stops the NTP client, and starts it again when `enable` is not 0.
 *
 * enable  0: runs "killall ntpd" only; anything else: then runs "ntpd" with
 *         " -p SERVER" for each of the stored "time_server" and "time_server1"
 *         that is not empty. One that convention 6 refuses counts as empty
 *
 * A command line of more than 255 characters is not run, without a report.
 * Otherwise it prints "cfg_setTimeSync  LINE", an empty line and "Do ntpd:
 * COMMAND", without a bracket, before it is. Blocks until ntpd has put itself
 * in the background. Always returns 0.
 */
CFG_API int cfg_setTimeSync(int enable);

/*
 * Starts time sync: cfg_setTimeSync(1). No setting switches it off at start-up.
 * Returns 0.
 */
CFG_API int cfg_restoreTimeSync(void);

/* ======================================================================
 * Records: schedules and alarm clocks
 * ====================================================================== */

/*
 * The app edits a list of nine schedules and one of seven alarm clocks. Each
 * entry is a text under its own key, from "sched00" and "clock00"; the first
 * key that is empty or unreadable ends the list. Setters do not check entries:
 * call the check function first.
 */

/* Stored as "%d,%d,%d,%d,%d,%d,%d", in this order. */
struct sched_entry {
    uint32_t enable;    /* 0 or 1 */
    int32_t param1;     /* for the controller, not checked */
    int32_t param2;     /* likewise */
    uint32_t starttime; /* minute of the day, 0 to 1440 */
    uint32_t stoptime;  /* likewise; may be before starttime */
    uint32_t days;      /* days of the week, a bit each, 0 to 127 */
    uint32_t repeat;    /* 0 or 1 */
};

/* Stored as "%d,%d,%d,%s", in this order, in at most 511 characters. */
struct alarm_clock_entry {
    uint32_t enable;    /* 0 or 1 */
    uint32_t wday;      /* days of the week, a bit each, 0 to 127 */
    uint32_t starttime; /* minute of the day, 0 to 1440 */
    char text[512];     /* ends at a line feed when it is read back; not checked */
};

/*
 * Checks `count` entries of `list` in order.
 * Returns 0, or the first failure's result:
 *     -1 after "invalid sched enable VALUE"
 *     -2 after "invalid sched starttime VALUE"
 *     -3 after "invalid sched stoptime VALUE"
 *     -4 after "invalid sched days VALUE"
 *     -5 after "invalid sched repeat VALUE"
 */
CFG_API int sched_check_config(int count, const struct sched_entry *list);

/*
 * Empties sched00 to sched08, stores `count` entries of `list` from sched00 on
 * and runs "killall -35 ctrl_sched", which makes the controller read the list
 * again. Entries after the ninth are stored too, but no later call empties
 * their keys.
 *
 * A failed store, or the 101st entry, which has no key, ends the list after
 * "param_set fail"; the command still runs. Always returns 0.
 */
CFG_API int sched_set_config(int count, const struct sched_entry *list);

/*
 * Reads the list.
 *
 * count  the entries that `list` has room for, of which 100 at most are read;
 *        receives the number read
 * list   receives them. Stored numbers that int cannot hold become the nearest
 *        that it can; fields that a stored text does not reach, and entries
 *        after the last, are unchanged.
 *
 * Always returns 0, after "param_get fail" when a key that cannot be read ended
 * the list before its room did.
 */
CFG_API int sched_get_config(int *count, struct sched_entry *list);

/*
 * Checks `count` entries of `list` in order.
 * Returns 0, or the first failure's result:
 *     -1 after "invalid sched enable VALUE" (sic)
 *     -2 after "invalid alarm clock wday VALUE"
 *     -32 after "invalid alarm clock starttime VALUE"
 */
CFG_API int alarm_check_config(int count, const struct alarm_clock_entry *list);

/*
 * As sched_set_config, with clock00 to clock06 and "killall -SIGUSR1  alarm",
 * for the alarm daemon. A stored entry is cut at 511 characters.
 */
CFG_API int alarm_set_config(int count, const struct alarm_clock_entry *list);

/*
 * As sched_get_config. A text may contain commas; an empty text leaves `text`
 * unchanged.
 */
CFG_API int alarm_get_config(int *count, struct alarm_clock_entry *list);

/* ======================================================================
 * Records: viewers
 * ====================================================================== */

/*
 * Users who may view the camera's pictures: up to ten viewers, each a text
 * under its own key, from "viewer_list_00"; the first key that is empty or
 * unreadable ends the list. Stored as "%s,%s,%s,%s", in the order of the
 * fields, in at most 255 characters.
 *
 * Fields are stored unchanged; a field without a terminator is too long.
 * Reading stops at an empty passcode or credential: the later fields keep their
 * old contents, and are stored empty when another viewer is added or removed.
 * An empty name, or a comma or line feed in one of the first three fields,
 * changes the entry when it is read back: viewer_add_config refuses it,
 * viewer_set_config does not. A blank ends `once`.
 *
 * No lock protects the list: one of two concurrent changes can be lost. Reports
 * of these functions begin "[cfg_set FUNCTION LINE] " and contain passcodes and
 * credentials. Adding and deleting need over 5 KB of stack.
 */
struct viewer_entry { /* 355 bytes, without gaps */
    char name[256];   /* identifies the viewer; upper and lower case differ */
    char passcode[32];
    char credential[64];
    char once[3]; /* a decimal number, at most 2 digits */
};

/*
 * Reads the list.
 *
 * count  receives the number of entries
 * list   room for 10. A stored field that is too long for its place is cut;
 *        fields that the stored text does not reach, and entries after the
 *        last, are unchanged.
 *
 * Prints "name        = NAME", "passcode    = PASSCODE",
 * "credential  = CREDENTIAL", "once        = ONCE" and "buf         = STORED" for
 * each, and "param_get fail" for the key that cannot be read. Always returns 0.
 */
CFG_API int viewer_get_config(uint8_t *count, struct viewer_entry *list);

/*
 * Stores `count` entries of `list` from viewer_list_00 on. Later keys are
 * unchanged.
 *
 * Prints "nvram   = KEY" and "buf     = VALUE" for each. A failed store ends
 * the list after "param_set fail". When any entry or field is too long:
 * "viewer is too long", and nothing is stored. Always returns 0.
 */
CFG_API int viewer_set_config(uint8_t count, const struct viewer_entry *list);

/*
 * Adds a viewer at the end of the list, then notifies the relay (msg2relay,
 * command 1).
 *
 * Returns 0 after "add new viewer to nvram n = COUNT", COUNT being how many
 * there were, and "add new viewer to relay server db."; before the latter "add
 * new viewer to relay failed." when the relay refuses, which leaves the viewer
 * in the store. When the store refuses, after viewer_set_config's report, the
 * relay is still notified and the result is 0.
 *
 * Nothing is stored and the relay is not notified when the result is
 *     0 after "viewer has been in viewerlist": the viewer of that name is kept
 *     10 after "Viewer List (10) has achieved Max number"
 *     -1 after "invalid viewer": it would change when it is read back, or it or
 *        a field is too long
 * Other entries that are too long are cut when they are stored again.
 */
CFG_API int viewer_add_config(const struct viewer_entry *entry);

/*
 * Removes every viewer with the name of `entry`. It first notifies the relay
 * (msg2relay, command 2, with the fields of `entry`), then empties all keys of
 * the list and stores the rest from viewer_list_00 on.
 *
 * Prints "index i[INDEX] is not that viewer" for each that stays, and "deleted
 * viewer has found:NAME" and "delete viewer from relay server success." for
 * each that goes; before the latter "delete viewer from relay server failed."
 * when the relay refuses; the viewer is removed anyway. Then
 * "clear viewer  in nvram:KEY" for each key, or "viewer has not been in viewerlist:COUNT" when no
 * viewer has the name. Viewers that stay are cut if they are too long, and may
 * be lost if the store refuses. Always returns 0.
 */
CFG_API int viewer_del_config(const struct viewer_entry *entry);

/* ======================================================================
 * Records: sounds
 * ====================================================================== */

/*
 * The sounds that the camera plays, as paths of at most 255 characters.
 *
 * A path that begins with "/audio/" is built in and not checked. For any other,
 * 'AudioCheck 32000 "PATH"' runs, and its reply, the first three characters of
 * its first line, goes to standard error as "LABEL: ret = [REPLY]". The file is
 * refused when the reply begins with 1 or is -1, or after "LABEL: can't check
 * file [PATH]" (standard error) when the command cannot be started or its reply
 * cannot be read. LABEL is the setter's name, for the alarm sound
 * "alarm_file_set_config". The check blocks until the command ends.
 *
 * Setters return 0, also after "param_set fail"; -1 when the file is refused,
 * or after "invalid path" when convention 6 refuses the path or it is too long
 * for its place (100 characters for one that is checked), with nothing run or
 * stored. A NULL path is passed to the store without a check.
 */

/*
 * Chooses the alert sound, "alert_file". "/audio/alarm.aac" becomes the alarm
 * sound too and switches the greeting off ("alarm_audio", "greeting_enable" 0);
 * any other becomes the greeting and switches that on ("greeting_audio",
 * "greeting_enable" 1); NULL changes neither.
 */
CFG_API int alert_file_set_config(const char *path);

/*
 * Copies the stored "alert_file" to `dst`, at most `size` - 1 characters.
 *
 * The text is terminated only when it is shorter than that: pass a zero-filled
 * buffer. Always returns 0, after "param_get fail" with `dst` unchanged.
 */
CFG_API int alert_file_get_config(char *dst, size_t size);

/*
 * Chooses the greeting, "greeting_audio". Prints "sValue=[VALUE]" with the
 * stored "greeting_enable" (7 characters count) when that can be read; when it
 * is not 0 the greeting becomes the alert sound too.
 */
CFG_API int greeting_file_set_config(const char *path);

/* As alert_file_get_config, of "greeting_audio". */
CFG_API int greeting_file_get_config(char *dst, size_t size);

/* Chooses the alarm sound, "alarm_audio", which becomes the alert sound too. */
CFG_API int alarm_audio_set_config(const char *path);

/* As alert_file_get_config, of "alarm_audio". */
CFG_API int alarm_audio_get_config(char *dst, size_t size);

/*
 * Stores the alert volume, "alert_vol".
 *
 * volume  decimal text, 0 to 2 (text that is no number counts as 0); any other
 *         stores 1, after "alert_file_set_vol:LINE error s_alert_vol = TEXT" on
 *         standard error
 *
 * Returns 0, also after "param_set fail"; -1 when `volume` is NULL.
 */
CFG_API int alert_file_set_vol(const char *volume);

/*
 * Puts the stored alert volume into `volume`: 0 to 2, and 1 for any other or,
 * after "param_get fail", for none. The first argument is not used.
 * Always returns 0.
 */
CFG_API int alert_file_get_vol(int unused, int *volume);

/*
 * A copy of `text` in which every `old` is replaced.
 *
 * old, replacement  NULL for either: a plain copy
 *
 * After each replacement the search starts again at the front of the text, so
 * an `old` that a replacement completes is replaced too. The result is NULL
 * when the search could never end: `text` and `replacement` both contain `old`,
 * or `old` is empty. A pair such as "ab" and "bbaa" also grows until memory
 * runs out: do not take `old` or `replacement` from outside.
 *
 * Returns a string that the caller frees with free(), or NULL, also when memory
 * runs out.
 */
CFG_API char *str_replace(const char *text, const char *old, const char *replacement);

/* ======================================================================
 * Records: feature switches
 * ====================================================================== */

/*
 * Settings of features that daemons act on, stored as decimal text. All
 * functions return 0. After "param_set fail" or "param_get fail" for one key
 * they continue with the next.
 */

/*
 * Stores the cloud folder: "nimbus_enable" (any number) and "nimbus_folderid"
 * (as it is; nimbus_get_config reads at most 255 characters).
 */
CFG_API int nimbus_set_config(int enable, const char *folderid);

/*
 * Reads the cloud folder.
 *
 * enable    receives 1 when the stored text is exactly "1", else 0
 * folderid  256 bytes; receives the stored text, empty when there is none
 * status    receives the number in the first line of /tmp/.gdustatus, else 0
 */
CFG_API int nimbus_get_config(int *enable, char *folderid, int *status);

/*
 * Switches the status LED. 1 stores "led_disable" 1 and runs
 * "killall -SIGUSR1 LEDCtrl"; any other value stores 0 and runs
 * "killall -SIGUSR2 LEDCtrl".
 */
CFG_API int led_disable_set_config(int disable);

/* Reads into `disable` the stored 0 or 1, and 0 for any other or none. */
CFG_API int led_disable_get_config(int *disable);

/*
 * Stores what clip an alert keeps.
 *
 * enable    "alert_vclip": 1, or 0 for any other value
 * duration  "alert_vclip_duration": 5 to 720, or 7 for any other value
 * prelude   "alert_vclip_prelude": 3 to 30, or 4 for any other value
 */
CFG_API int alert_vclip_set_config(int enable, int duration, int prelude);

/*
 * Reads the clip's settings, with the same values for any other. Without a
 * stored value `enable` is 0, `duration` 7, and `prelude` is unchanged.
 */
CFG_API int alert_vclip_get_config(int *enable, int *duration, int *prelude);

/* Stores "event_s3_setting" and "event_push_setting", any numbers. */
CFG_API int event_set_config(int s3_setting, int push_setting);

/* Reads the event settings, 15 characters of each; 0 without a stored value. */
CFG_API int event_get_config(int *s3_setting, int *push_setting);

/*
 * Stores "media_server_enable", "media_server_auth" and
 * "kurento_max_video_level", any numbers.
 */
CFG_API int media_server_set_config(int enable, int auth, int max_video_level);

/* Reads the media server's settings; 0 without a stored value. */
CFG_API int media_server_get_config(int *enable, int *auth, int *max_video_level);

#ifdef __cplusplus
}
#endif

#endif
