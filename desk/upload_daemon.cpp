// The upload daemon of the desk camera, started by /etc/desk/smbu. It runs in the
// background, logs what it receives, and ends on request. It uploads nothing.

#include "desk/log.h"
#include "desk/queues.h"

#include <cstdio>
#include <fcntl.h>
#include <string>
#include <sys/msg.h>
#include <sys/stat.h>
#include <unistd.h>

static constexpr const char *PID_FILE = "/var/run/smbu.pid";

static bool put_text(const std::string &path, const std::string &text)
{
    FILE *file = std::fopen(path.c_str(), "we");
    if (!file)
        return false;
    const bool good = std::fwrite(text.data(), 1, text.size(), file) == text.size();
    return std::fclose(file) == 0 && good;
}

// Logs signals until a stop signal. Logs account records before the signals that
// were sent after them.
static void serve()
{
    long signal = 0;
    while (signal != 5 && signal != 6) {
        const std::string text = desk::take(desk::UPLOAD_QUEUE, 0, 0, &signal);
        if (text.empty())
            return;
        for (std::string account;
             !(account = desk::take(desk::ACCOUNT_QUEUE, 0, IPC_NOWAIT)).empty();)
            desk::log("upload", account);
        desk::log("upload", text);
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
