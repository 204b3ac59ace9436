// The desk camera's detection and recording daemons, as far as their queue
// goes: take the messages of their types and log them, decoded. They step
// aside while /var/run/monitor.pid names a process that lives.

#include "desk/log.h"
#include "desk/queues.h"

#include <csignal>
#include <fstream>
#include <sys/msg.h>
#include <unistd.h>

static constexpr long TYPES[] = {1, 2, 4, 7}; // privacy, PIR, sound, recording
static constexpr useconds_t PAUSE = 5000;

static bool monitored()
{
    pid_t pid = 0;
    std::ifstream("/var/run/monitor.pid") >> pid;
    return pid > 0 && kill(pid, 0) == 0;
}

int main()
{
    for (;; usleep(PAUSE)) {
        if (monitored())
            continue;
        for (const long type : TYPES)
            for (std::string text;
                 !(text = desk::take(desk::DAEMON_QUEUE, type, IPC_NOWAIT)).empty();)
                desk::log("take", text);
    }
}
