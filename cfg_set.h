/*
 * cfg_set: configuration and device control of the camera.
 *
 * Turns stored settings into device state and answers what the device is.
 * Plain functions for C and C++; no thread, no main loop, no start-up call.
 *
 * Conventions. A function's own text below says where it differs.
 *
 * 1. Results. Setters, savers and restorers return 0 for success and -1 for
 *    failure. Predicates return 1 or 0 and never -1. Nothing is retried and
 *    nothing is rolled back: what was stored before a later step failed stays
 *    stored.
 *
 * 2. Reports. A failure is reported on standard output as one line,
 *    "[FUNCTION LINE] TEXT", with the name of the reporting function and its
 *    source line, through the caller's own stdio. Texts in double quotes below
 *    are what follows the bracket. A report that goes to standard error says
 *    so. There are no log levels and no log file.
 *
 * 3. Settings. Values live in the parameter store as text. A setter
 *    (cfg_set...) applies a value to the device and leaves the store alone. A
 *    saver (cfg_save...) checks, stores, commits and applies. A restorer
 *    (cfg_restore...) reads the stored value and applies it, once at start-up.
 *    Only cfg_saveMicEnable commits the store: after any other change the
 *    caller calls param_save itself.
 *
 * 4. Stored numbers. Decimal text of at most 255 characters. Trailing
 *    characters are ignored ("1x" is 1), text without digits is 0, and a
 *    negative or overlong number becomes a large one, which a range check
 *    then refuses.
 *
 * 5. Strings and buffers. Strings are NUL-terminated and must not be NULL,
 *    except where NULL is named. Sizes are in bytes and count the terminator.
 *    Every copy is bounded; text too long for its place is refused with a
 *    report before anything is stored or run, and a command line that would be
 *    cut is never run.
 *
 * 6. Commands. The device is driven by shell command lines, run by system()
 *    in the foreground: a call returns when the command ends. Exit codes are
 *    not examined. Names and paths are put into the line as they stand, so the
 *    caller must not pass text with blanks or shell characters that it has not
 *    vetted itself.
 *
 * 7. Processes and threads. Functions may be called from any number of
 *    processes at once; what the processes share is named with each function.
 *    Within a process they are as safe as the store and as system(), which
 *    blocks SIGCHLD and ignores SIGINT and SIGQUIT while a command runs.
 *
 * 8. Memory. Every buffer is the caller's or lives in the called function's
 *    frame (under 2 KB). Nothing is allocated for the caller and no descriptor
 *    stays open; the C library's own streams allocate while they are open.
 *
 * The firmware supplies the platform functions declared in platform/.
 */
#ifndef CFG_SET_H
#define CFG_SET_H

#include <stddef.h>
#include <stdint.h>

#if defined(__GNUC__)
#define CFG_API __attribute__((visibility("default")))
#else
#define CFG_API
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* ======================================================================
 * Settings: utilities
 * ====================================================================== */

/*
 * The name of the language whose speech package is on the card.
 *
 * buffer  receives the first line of /mnt/sdcard/morvenix/lang without its end
 *         (carriage return or line feed)
 * size    bytes to read at most
 *
 * The text is not terminated when the file has no line end: pass a zero-filled
 * buffer and its size less one. One read; never blocks on a healthy card.
 * Returns 0, or -1 when the file cannot be opened (buffer untouched). Prints
 * nothing.
 */
CFG_API int get_from_lang_file(char *buffer, size_t size);

/*
 * Whether `path` can be opened for reading: 1 or 0. NULL gives 0. A folder
 * counts as readable. Prints nothing.
 */
CFG_API int file_check(const char *path);

/* ======================================================================
 * Settings: daemon messages
 * ====================================================================== */

#define MSG_PARAM_LEN 256

/*
 * What the detection and recording daemons are told: one record on the System V
 * queue with key 5678. The type selects the daemon, which takes only its own.
 * 296 bytes on the camera, where `long` has 4; the 292 bytes behind the type
 * are the same everywhere. Clear the whole record before filling it.
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
 * params   parameter bytes, or NULL for none (`length` is then not looked at);
 *          bytes behind them are zero
 * length   bytes of `params`, at most 256
 *
 * Returns 0; -1 after "dwParamLen[LENGTH] > MSG_PARAM_LEN[256]" (nothing is
 * posted) or after cfg_sendMsg's report and "cfg_sendMsg fail".
 */
CFG_API int cfg_setRec(uint32_t command, const void *params, uint32_t length);

/* ======================================================================
 * Settings: audio
 * ====================================================================== */

/*
 * Switches the microphone.
 *
 * value  1 on: runs "demo_MXSetMicMute_ 0", waits 50 ms, runs
 *        "demo_MXSetMicVol_ 60"; 0 off: runs "demo_MXSetMicMute_ 1"
 *
 * Returns 0; -1 after "invalid value[VALUE]" for any other value, with nothing
 * run. Blocks for the commands and the wait.
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
 * Always returns 0. Prints nothing.
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
 * Applies the stored "io_speaker_enable" with cfg_setSpeakerEnable; an empty
 * value counts as 0.
 * Returns 0; -1 after "param_get fail" or "cfg_setSpeakerEnable fail".
 */
CFG_API int cfg_restoreSpeakerEnable(void);

/*
 * Tells the peer-connection watchdog that two-way audio was switched: runs
 * "killall -SIGUSR1 peerconn_watchdog", the same for every value.
 * Always returns 0. Prints nothing.
 */
CFG_API int cfg_set2WayAudioEnable(uint32_t value);

/*
 * Entry points of voice processing that this firmware does not have. Each does
 * nothing and returns 0 for every value.
 */
CFG_API int cfg_setSkypeAecEnable(uint32_t value);
CFG_API int cfg_setSkypeAgcEnable(uint32_t value);
CFG_API int cfg_setSkypeNoiseSuppressorEnable(uint32_t value);

/*
 * Plays a spoken prompt with the AAC player: runs "demo_MXAacPlayer_ PATH".
 *
 * name  bare file name, at most 230 characters
 *
 * PATH is the first of these that exists and that the command line can hold:
 *     /mnt/sdcard/morvenix/LANGUAGE/speech/NAME    when the card is mounted
 *     /localization/LANGUAGE/NAME
 *     /audio/NAME                                  taken without a test
 * LANGUAGE is the stored "lang_name" (at most 15 characters of it on the card,
 * 31 in /localization); without one the path that needs it is passed over.
 *
 * A stored "io_speaker_volume" of 27, 0, or one that cannot be read first sets
 * the speaker with cfg_setSpeakerVolume(27); any other leaves it alone. The
 * level is not put back.
 *
 * Blocks until playback ends, then for one second. Returns the rest of that
 * second when a signal cut it short, in whole seconds, else 0; -1 after
 * "invalid name" when the name is NULL or too long, with nothing run. When
 * /proc/mounts cannot be read the card counts as not mounted, and
 * "sdcard_mounted:LINE error opening /proc/mounts..." goes to standard error.
 */
CFG_API int voice_prompt(const char *name);

/*
 * Plays an alert sound at raised priority, then restores the speaker.
 *
 * path  at most 225 characters; with ".aac" anywhere in it the AAC player is
 *       used, else the WAV player
 *
 * Prints "alert<TAB>LINE cmd COMMAND" (without a bracket) and runs COMMAND,
 * "nice -n -20 demo_MXAacPlayer_ PATH" or "nice -n -20 demo_MXWavPlayer_ PATH".
 * Blocks until playback ends, then for one second.
 * Returns the result of cfg_restoreSpeakerEnable; -1 after "invalid path" when
 * the path is NULL or too long, with nothing run.
 */
CFG_API int alert(const char *path);

/* ======================================================================
 * Event queue
 *
 * Pending events, oldest first, that all processes share. They are kept in a
 * ring in shared memory (System V key 0x20130002, 4108 bytes), and a copy of
 * the whole ring in /mnt/sdcard/video/.event is written anew after every
 * change. One lock (semaphore 0x20130001) is held for the whole of a call, so
 * every call blocks while another process is in one, and for the card. A
 * signal does not end the wait; each prints "error getting semaphore." on
 * standard error.
 *
 * The first call after a restart makes lock and ring and loads the copy. A
 * copy is refused as a whole when it is short, when head, tail and count do
 * not agree, or when any of its 512 slots, in use or not, has a type above 4
 * or, once the clock is past 2014-01-17 23:06:40 UTC, a time that is not past.
 * It is then deleted with "rm -rf /mnt/sdcard/video/.event" and the ring comes
 * up empty, after checkEventQueue's report and "load fail". Without a copy,
 * "[/mnt/sdcard/video/.event] not found" is reported. Later calls trust what
 * is in memory, and a smaller segment of another program under the key makes
 * every call fail.
 *
 * A call that cannot have lock or ring returns its failure value after
 * "sem_get fail iSemId[-1]" (and the reason on standard error) or after
 * getEventQueue's report and "getEventQueue fail". "saveEventQueue fail" and
 * "sem_put fail iSemId[ID]" do not change a result: what cannot be written to
 * the card stays in memory, and the next change writes it.
 *
 * A process that dies in a call gives back the lock. Whatever instruction it
 * was at, the events are those before its change or those after it; a slot not
 * in use may hold part of an event that never was. It can leave behind:
 *
 * - a copy that is one change old, empty, or cut short. The next change writes
 *   it whole; a restart before that refuses it.
 * - in the first call after a restart: a ring that is empty, though the card
 *   has events, or that was loaded and not checked. cfg_dequeueAllEvent makes
 *   any ring good.
 * - between the making of the semaphore and its first value, a moment of that
 *   same call: a lock that stays taken, until "ipcrm -S 0x20130001" removes
 *   it. Two processes in that moment may also both get the lock. So let one
 *   process make the first call before it starts the others.
 * ====================================================================== */

#define EVENT_QUEUE_SIZE 512 /* events that the ring holds */

/* One event. 8 bytes, in memory and on the card. */
struct EventQueueEntry {
    uint32_t type; /* the producer's code, 0..4 */
    uint32_t time; /* when it was added, seconds since 1970-01-01 UTC */
};

/*
 * Whether there are no events: 1 when so; 0 when there are some, and also when
 * lock or ring cannot be had.
 */
CFG_API int cfg_isEventQueueEmpty(void);

/*
 * Adds an event with the time of the call.
 *
 * type  stored as it is; one above 4 stays in memory, but makes the next
 *       restart refuse the whole copy
 *
 * Returns 0, also after "saveEventQueue fail"; -1 when lock or ring cannot be
 * had, or after "EventQueue is full", with nothing changed.
 */
CFG_API int cfg_enqueueEvent(uint32_t type);

/*
 * Drops the `n` oldest events, or all when there are fewer. 0 drops none, but
 * writes the copy anew when there are events.
 *
 * Returns 0, also after "saveEventQueue fail" and when there were none; -1
 * when lock or ring cannot be had.
 */
CFG_API int cfg_dequeueEvent(uint32_t n);

/*
 * Drops all events. Returns as cfg_dequeueEvent does.
 */
CFG_API int cfg_dequeueAllEvent(void);

/*
 * Reads an event and leaves it where it is. To handle events, read number 0,
 * then drop 1. Those are two calls: consumers in several processes need a lock
 * of their own around them, or two of them handle the same event.
 *
 * index  0 for the oldest event, 1 for the next, ...
 * event  receives it; a failure leaves it as it was
 *
 * Returns 0; -1 when there is no such event (prints nothing), when lock or
 * ring cannot be had, or after "event buffer is null".
 */
CFG_API int cfg_getEvent(uint32_t index, struct EventQueueEntry *event);

/* ======================================================================
 * Event queue: device status
 * ====================================================================== */

/*
 * Stores the device status, a number from 0 to 255 that the processes agree
 * on, as the one byte of /tmp/dev_status. A restart forgets it.
 *
 * Prints "result:N" (of taking the file's lock), "status: STATUS, writeSize: N,
 * sizeof(status):1" and "result:N" (of giving it back). The lock is a shared
 * one: a reader may see 0 while the byte is being written. Blocks while
 * another program holds an exclusive lock on the file.
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
 * The upload daemon smbu copies recordings to a network share. It is told what
 * to do by signals on the System V queue with key 0x20130005 and by account
 * records on the queue with key 0x20130003. The first post makes a queue, with
 * permissions 0666; a post never waits, and one that does not fit is lost.
 *
 * A signal is a `long` type, the code, and 4 bytes: time() in seconds.
 *     1 wake up           2 new event
 *     5, 6 stop           7 switched on           8 started with new settings
 * An account record is a `long` type, 1, and 272 bytes, zero but for
 *     at 0    the code 11, 16 bits
 *     at 12   the stored "gdu_account", at most 255 characters
 *
 * "cifs_mode" is a digit: 0 off; 1 on; 2 on, and told of events; 3 left to
 * itself, neither started nor woken from here. Nothing is reported: what the
 * store or a queue refuses is passed over.
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
 * Wakes the daemon with signal 1; in mode 0 or 3 does nothing. One that does
 * not run is started first with "smbu", which blocks until the daemon has put
 * itself in the background, and given a second.
 * Always returns 0.
 */
CFG_API int smbu_wake_up(void);

/*
 * Tells the daemon of a new event with signal 2, in mode 2 only. Starts it as
 * smbu_wake_up does.
 * Always returns 0.
 */
CFG_API int smbu_event_notify(void);

/*
 * Sends a running daemon signal 6 and waits one second. It need not have ended
 * by then.
 * Always returns 0.
 */
CFG_API int smbu_force_stop(void);

/*
 * Stores what is given and brings the daemon in line with it.
 *
 * user, pass, target, mode, size
 *         texts for "cifs_user", "cifs_pass", "cifs_target", "cifs_mode" and
 *         "cifs_size", stored as they are; NULL leaves a setting as it was
 *
 * A running daemon is stopped before it is given another user, pass or target:
 * by signal 5 when `mode` is a text of the value 0, else by 6. Until it has
 * ended, without limit, "Wait smbu is terminated" (no bracket) is printed once
 * a second. Without `mode` it is then started again, unless the old mode was 0
 * or 3.
 *
 * A `mode` that is neither NULL nor empty is then applied:
 *     1, 2         posts the account record; a running daemon is sent 7
 *     0            a running daemon is sent 5 and given 5 seconds
 *     not 0 or 3   starts a daemon that does not run, and sends it 7 when the
 *                  old mode was 0
 * A change to or from mode 2 is told to the recorder: cfg_setRec with command
 * 0, then 1, both without parameters.
 *
 * Every start runs "smbu &", waits one second and ends with signal 8.
 * Always returns 0.
 */
CFG_API int smbu_set_config(const char *user, const char *pass, const char *target,
                            const char *mode, const char *size);

/*
 * Reads the stored settings but the password, and whether the share is mounted.
 *
 * user, target, mode, size
 *          each with the bytes it has room for; a longer value is cut. NULL or
 *          a length below 1: not wanted. One that cannot be read stays as it
 *          was.
 * mounted  receives 1 when "cat /proc/mounts | grep /mnt/cifs" prints anything,
 *          else 0; NULL: not wanted
 *
 * Always returns 0.
 */
CFG_API int smbu_get_config(char *user, int user_len, char *target, int target_len, char *mode,
                            int mode_len, char *size, int size_len, int *mounted);

/*
 * Leaves the daemon a job: to recover the recording `path` (with a "/"). The
 * job is an empty file (0644), /mnt/sdcard/video/.smbu/NAME.rcy, with the
 * recording's name up to its last "."; for a name without one it is
 * /mnt/sdcard/video/.rcy. The folder is not made here.
 *
 * Returns 0, also when the job is there already; -1 when it cannot be made, or
 * when its path would be longer than 127 characters.
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
 *        first, a failure leaves it as it was
 * size   bytes of `buf`: 17 hold a board id, 32 the others
 *
 * Returns 0; -1 after "unknown index[INDEX]", after
 * "pclose fail, errno[N][TEXT]" when the command cannot be started, or after
 * "fgets fail, errno[N][TEXT]" when it prints nothing (errno is 0 when it just
 * ended). Blocks until the command ends.
 */
CFG_API int cfg_getBoardInfo(unsigned long index, char *buf, int size);

/*
 * Bits of the hardware version. Each runs "board hwver" and returns 1 or 0;
 * 0 after cfg_getBoardInfo's report when the board cannot be queried.
 */
CFG_API int cfg_is_slip_ring_model(void);    /* bit 7 */
CFG_API int cfg_is_audio_differential(void); /* bit 10 */

/*
 * Whether the board has an Ethernet port (bit 9): 1 or 0. The command runs on
 * the first call only; its answer, also the 0 of a failed query, is kept for
 * the life of the process.
 */
CFG_API int cfg_check_eth_support_by_hwver(void);

#ifdef __cplusplus
}
#endif

#endif
