#include "upload/daemon.h"

#include "settings/frame.h"

#include <fcntl.h>
#include <string.h>
#include <sys/ipc.h>
#include <sys/msg.h>
#include <time.h>
#include <unistd.h>

using namespace cfg_set;

constexpr key_t SMBU_MSG_KEY = 0x20130005;

// The record as the daemon knows it, behind a type of the platform's `long`.
struct signal_message {
    long mtype;
    uint32_t time; // seconds since the epoch
};
constexpr size_t SIGNAL_SIZE = 4;
static_assert(offsetof(signal_message, time) == sizeof(long), "the time follows the type");

void cfg_set::post(key_t key, const void *message, size_t size)
{
    const int sent = msgsnd(msgget(key, IPC_CREAT | 0666), message, size, IPC_NOWAIT);
    (void)sent;
}

void cfg_set::signal_daemon(int code)
{
    signal_message message = {};
    message.mtype = code;
    message.time = (uint32_t)time(nullptr);
    post(SMBU_MSG_KEY, &message, SIGNAL_SIZE);
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

int smbu_force_stop(void)
{
    if (smbu_exist()) {
        signal_daemon(FORCE_STOP);
        sleep(1);
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
    // Without a dot in what is left of the name this is the folder's own.
    char *dot = strrchr(marker, '.');
    if (!format(dot, sizeof marker - (size_t)(dot - marker), ".rcy"))
        return -1;
    const int file = open(marker, O_WRONLY | O_CREAT | O_CLOEXEC, 0644);
    if (file < 0)
        return -1;
    close(file);
    return 0;
}
