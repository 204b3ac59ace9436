// The upload daemon of the desk camera, which /etc/desk/smbu starts: puts
// itself in the background, logs what it is sent, and ends when it is told to.
// It uploads nothing.

#include "desk/log.h"

#include <cstdint>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <string>
#include <sys/ipc.h>
#include <sys/msg.h>
#include <sys/stat.h>
#include <unistd.h>

static constexpr key_t SIGNAL_KEY = 0x20130005;
static constexpr key_t ACCOUNT_KEY = 0x20130003;
static constexpr const char *PID_FILE = "/var/run/smbu.pid";

static bool put_text(const std::string &path, const std::string &text)
{
    FILE *file = std::fopen(path.c_str(), "we");
    if (!file)
        return false;
    const bool good = std::fwrite(text.data(), 1, text.size(), file) == text.size();
    return std::fclose(file) == 0 && good;
}

static void log_accounts(int queue)
{
    struct {
        long type;
        uint16_t code;
        char reserved[10];
        char text[256];
        uint32_t reserved2;
    } record{};
    while (msgrcv(queue, &record, sizeof record - sizeof record.type, 0, IPC_NOWAIT) >= 0)
        desk::log("upload",
                  "account code=" + std::to_string(record.code) + " " +
                      desk::quoted({record.text, strnlen(record.text, sizeof record.text)}));
}

// Logs signals, each behind the account records that were sent before it,
// until one says stop.
static void serve()
{
    const int signals = msgget(SIGNAL_KEY, IPC_CREAT | 0666);
    const int accounts = msgget(ACCOUNT_KEY, IPC_CREAT | 0666);
    struct {
        long type;
        uint32_t time;
    } signal{};
    while (msgrcv(signals, &signal, sizeof signal.time, 0, 0) >= 0) {
        log_accounts(accounts);
        desk::log("upload", "signal " + std::to_string(signal.type));
        if (signal.type == 5 || signal.type == 6)
            return;
    }
}

int main()
{
    if (fork() != 0)
        return 0;
    setsid();
    const int null = open("/dev/null", O_RDWR);
    for (int standard = 0; standard < 3; standard++)
        dup2(null, standard);

    // The desk's /proc is a plain folder.
    const std::string pid = std::to_string(getpid());
    mkdir(("/proc/" + pid).c_str(), 0755);
    if (!put_text("/proc/" + pid + "/cmdline", std::string("smbu\0", 5)) ||
        !put_text(PID_FILE, pid + "\n"))
        return 1;
    serve();
    std::remove(PID_FILE);
    std::remove(("/proc/" + pid + "/cmdline").c_str());
    rmdir(("/proc/" + pid).c_str());
    return 0;
}
