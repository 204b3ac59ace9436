// Linked into cfgctl for the desk. While the camera is traced, it logs cfgctl's
// start and end, its shell lines and pauses, the locks it waited for and held, the
// messages it posted, and the files it opened for writing. The linker redirects
// the C library calls to these functions (--wrap).

#include "desk/log.h"
#include "desk/queues.h"

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <fcntl.h>
#include <sys/sem.h>
#include <sys/wait.h>
#include <unistd.h>

static const std::string *called; // null when nothing is logged
static double began;
static double locked;

static void tell(const char *kind, const std::string &text)
{
    const int error = errno;
    if (called)
        desk::log(kind, text);
    errno = error;
}

__attribute__((constructor)) static void begin(int argc, char **argv)
{
    if (!desk::traced())
        return;
    began = desk::seconds();
    auto *line = new std::string("cfgctl"); // for as long as the process lives
    for (int i = 1; i < argc; i++)
        *line += " " + desk::quoted(argv[i]);
    called = line;
    tell("call", *called);
    on_exit([](int status, void *) { tell("done", *called + desk::ended(status, began)); },
            nullptr);
}

static void opened_for_writing(const char *path)
{
    // The store and the log need no extra lines.
    for (const std::string_view own : {"/var/log/", "/var/run/param", "/flash/param", "/dev/"})
        if (std::string_view(path).substr(0, own.size()) == own)
            return;
    tell("write", desk::quoted(path));
}

static std::string lock_name(int id)
{
    semid_ds set{};
    semctl(id, 0, IPC_STAT, &set);
    const key_t key = set.sem_perm.__key;
    return key == 0xDEF1 ? "privacy" : key == 0xDEF ? "Wi-Fi" : "event queue";
}

// On 32-bit machines the calls for large files and 64-bit times have other names.
// NOLINTBEGIN(bugprone-reserved-identifier)
#define WRAP_FOPEN(name)                                                                           \
    FILE *__real_##name(const char *, const char *);                                               \
    FILE *__wrap_##name(const char *path, const char *mode)                                        \
    {                                                                                              \
        FILE *file = __real_##name(path, mode);                                                    \
        if (file && std::strpbrk(mode, "wa+"))                                                     \
            opened_for_writing(path);                                                              \
        return file;                                                                               \
    }
#define WRAP_OPEN(name)                                                                            \
    int __real_##name(const char *, int, mode_t);                                                  \
    int __wrap_##name(const char *path, int flags, mode_t mode)                                    \
    {                                                                                              \
        const int file = __real_##name(path, flags, mode);                                         \
        if (file >= 0 && (flags & O_ACCMODE) != O_RDONLY)                                          \
            opened_for_writing(path);                                                              \
        return file;                                                                               \
    }
#define WRAP_NANOSLEEP(name)                                                                       \
    int __real_##name(clockid_t, int, const timespec *, timespec *);                               \
    int __wrap_##name(clockid_t clock, int flags, const timespec *end, timespec *left)             \
    {                                                                                              \
        const double since = desk::seconds();                                                      \
        const int result = __real_##name(clock, flags, end, left);                                 \
        const auto at =                                                                            \
            static_cast<double>(end->tv_sec) + static_cast<double>(end->tv_nsec) / 1e9;            \
        tell("pause", std::to_string(std::lround((at - since) * 1e3)) + " ms" +                    \
                          desk::lasted("slept", since));                                           \
        return result;                                                                             \
    }

extern "C" {
WRAP_FOPEN(fopen)
WRAP_FOPEN(fopen64)
WRAP_OPEN(open)
WRAP_OPEN(open64)
#ifdef _TIME_BITS
WRAP_NANOSLEEP(__clock_nanosleep_time64)
#else
WRAP_NANOSLEEP(clock_nanosleep)
#endif

unsigned __real_sleep(unsigned);
unsigned __wrap_sleep(unsigned time)
{
    const double since = desk::seconds();
    const unsigned result = __real_sleep(time);
    tell("pause", std::to_string(time) + " s" + desk::lasted("slept", since));
    return result;
}

int __real_system(const char *);
int __wrap_system(const char *command)
{
    const double since = desk::seconds();
    const int status = __real_system(command);
    tell("shell", desk::escaped(command) + desk::ended(WEXITSTATUS(status), since));
    return status;
}

int __real_semop(int, sembuf *, size_t);
int __wrap_semop(int id, sembuf *operations, size_t count)
{
    const double since = desk::seconds();
    const int result = __real_semop(id, operations, count);
    if (result == 0 && operations->sem_op < 0) {
        locked = desk::seconds();
        tell("lock", lock_name(id) + " taken" + desk::lasted("waited", since));
    } else if (result == 0) {
        tell("lock", lock_name(id) + " given back" + desk::lasted("held", locked));
    }
    return result;
}

int __real_msgsnd(int, const void *, size_t, int);
int __wrap_msgsnd(int id, const void *message, size_t length, int flags)
{
    const int result = __real_msgsnd(id, message, length, flags);
    msqid_ds queue{};
    msgctl(id, IPC_STAT, &queue);
    desk::QueueRecord record{};
    std::memcpy(&record, message, std::min(sizeof record, sizeof record.type + length));
    tell(result == 0 ? "post" : "lost", desk::decoded(queue.msg_perm.__key, record, length));
    return result;
}
}
// NOLINTEND(bugprone-reserved-identifier)
