#include "settings/stored.h"

#include <fcntl.h>
#include <string.h>
#include <sys/ipc.h>
#include <sys/msg.h>
#include <time.h>
#include <unistd.h>

using namespace cfg_set;

constexpr key_t SMBU_MSG_KEY = 0x20130005;
constexpr key_t ACCOUNT_MSG_KEY = 0x20130003;

constexpr int WAKE_UP = 1;
constexpr int EVENT = 2;
constexpr int STOP = 5;
constexpr int FORCE_STOP = 6;
constexpr int SWITCHED_ON = 7;
constexpr int RECONFIGURED = 8;

constexpr int MODE_OFF = 0;
constexpr int MODE_EVENTS = 2; // the only mode that is told of events
constexpr int MODE_ALONE = 3;  // neither started nor woken from here

// The receivers' layout, after a type of the platform's `long`.
struct signal_message {
    long mtype;
    uint32_t time; // seconds since the epoch
};
constexpr size_t SIGNAL_SIZE = 4;
static_assert(offsetof(signal_message, time) == sizeof(long), "the time follows the type");

constexpr long ACCOUNT_TYPE = 1;
constexpr uint16_t ACCOUNT_CODE = 11;
struct account_message {
    long mtype;
    uint16_t code;
    uint16_t reserved1;
    uint32_t reserved2[2];
    char text[VALUE_SIZE];
    uint32_t reserved3;
};
constexpr size_t ACCOUNT_SIZE = 272;
constexpr size_t ACCOUNT_BODY = offsetof(account_message, code);
static_assert(ACCOUNT_BODY == sizeof(long), "the body follows the type");
static_assert(offsetof(account_message, text) - ACCOUNT_BODY == 12, "text");
static_assert(offsetof(account_message, reserved3) - ACCOUNT_BODY == 268, "reserved3");
static_assert(sizeof(account_message) == ACCOUNT_BODY + ACCOUNT_SIZE, "the body is whole");

// A message is lost when it does not fit the queue or there is no queue.
static void post(key_t key, const void *message, size_t size)
{
    const int sent = msgsnd(msgget(key, IPC_CREAT | 0666), message, size, IPC_NOWAIT);
    (void)sent;
}

static void signal_daemon(int code)
{
    signal_message message = {};
    message.mtype = code;
    message.time = (uint32_t)time(nullptr);
    post(SMBU_MSG_KEY, &message, SIGNAL_SIZE);
}

static void send_account()
{
    char account[VALUE_SIZE] = "";
    param_get("gdu_account", account, sizeof account);
    account_message message = {};
    message.mtype = ACCOUNT_TYPE;
    message.code = ACCOUNT_CODE;
    format(message.text, sizeof message.text, "%s", account);
    post(ACCOUNT_MSG_KEY, &message, ACCOUNT_SIZE);
}

static void start_and_wait(const char *command)
{
    run(command);
    sleep(1);
}

int smbu_status(void)
{
    char mode[2] = "";
    param_get("cifs_mode", mode, sizeof mode);
    return to_int(mode);
}

int smbu_exist(void)
{
    char text[32 + 1];
    if (file_block("/var/run/smbu.pid", text, sizeof text) <= 0)
        return 0;
    char path[32];
    format(path, sizeof path, "/proc/%d/cmdline", to_int(text));
    if (file_block(path, text, sizeof text) <= 0)
        return 0;
    return strstr(text, "smbu") ? 1 : 0;
}

// Signals the daemon, and starts it first when it does not run.
static void rouse(int code)
{
    if (!smbu_exist())
        start_and_wait("smbu");
    signal_daemon(code);
}

int smbu_wake_up(void)
{
    const int mode = smbu_status();
    if (mode != MODE_OFF && mode != MODE_ALONE)
        rouse(WAKE_UP);
    return 0;
}

int smbu_event_notify(void)
{
    if (smbu_status() == MODE_EVENTS)
        rouse(EVENT);
    return 0;
}

int smbu_force_stop(void)
{
    if (smbu_exist()) {
        signal_daemon(FORCE_STOP);
        sleep(1);
    }
    return 0;
}

static void store_given(const char *key, const char *text)
{
    if (text)
        param_set(key, text);
}

static void stop_and_wait(int code)
{
    signal_daemon(code);
    while (smbu_exist()) {
        puts("Wait smbu is terminated");
        sleep(1);
    }
}

static bool switched_on(int mode)
{
    return mode == 1 || mode == MODE_EVENTS;
}

// Signals the daemon's new mode, or starts the daemon when the mode needs it.
static void apply_mode(int mode, int old_mode)
{
    if (smbu_exist()) {
        if (mode == MODE_OFF) {
            signal_daemon(STOP);
            sleep(5);
        } else if (switched_on(mode)) {
            signal_daemon(SWITCHED_ON);
        }
        return;
    }
    if (mode == MODE_OFF || mode == MODE_ALONE)
        return;
    start_and_wait("smbu &");
    if (old_mode == MODE_OFF)
        signal_daemon(SWITCHED_ON);
    signal_daemon(RECONFIGURED);
}

int smbu_set_config(const char *user, const char *pass, const char *target, const char *mode,
                    const char *size)
{
    char stored[VALUE_SIZE] = "";
    param_get("cifs_mode", stored, sizeof stored);
    const int old_mode = to_int(stored);
    store_given("cifs_user", user);
    store_given("cifs_pass", pass);
    store_given("cifs_target", target);
    store_given("cifs_mode", mode);
    store_given("cifs_size", size);

    if ((user || pass || target) && smbu_exist()) {
        stop_and_wait(mode && to_int(mode) == MODE_OFF ? STOP : FORCE_STOP);
        if (!mode && old_mode != MODE_OFF && old_mode != MODE_ALONE) {
            start_and_wait("smbu &");
            signal_daemon(RECONFIGURED);
        }
    }
    if (!mode || !*mode)
        return 0;

    const int new_mode = to_int(mode);
    if (switched_on(new_mode))
        send_account();
    apply_mode(new_mode, old_mode);
    if ((new_mode == MODE_EVENTS) != (old_mode == MODE_EVENTS)) {
        cfg_setRec(0, nullptr, 0);
        cfg_setRec(1, nullptr, 0);
    }
    return 0;
}

static void get_wanted(const char *key, char *buffer, int length)
{
    if (buffer && length > 0)
        param_get(key, buffer, (unsigned)length);
}

int smbu_get_config(char *user, int user_len, char *target, int target_len, char *mode,
                    int mode_len, char *size, int size_len, int *mounted)
{
    get_wanted("cifs_user", user, user_len);
    get_wanted("cifs_target", target, target_len);
    get_wanted("cifs_mode", mode, mode_len);
    get_wanted("cifs_size", size, size_len);
    if (mounted) {
        char first[2];
        *mounted =
            command_line("cat /proc/mounts | grep /mnt/cifs", first, sizeof first) > 0 ? 1 : 0;
    }
    return 0;
}

int smbu_add_recovery_job(const char *path)
{
    const char *name = path ? strrchr(path, '/') : nullptr;
    if (!name)
        return -1;
    char marker[128]; // a longer path is cut there
    format(marker, sizeof marker, "/mnt/sdcard/video/.smbu%s", name);
    // If the cut name has no dot, this finds the dot of ".smbu".
    char *dot = strrchr(marker, '.');
    if (!format(dot, sizeof marker - (size_t)(dot - marker), ".rcy"))
        return -1;
    const int file = open(marker, O_WRONLY | O_CREAT | O_CLOEXEC, 0644);
    if (file < 0)
        return -1;
    close(file);
    return 0;
}
