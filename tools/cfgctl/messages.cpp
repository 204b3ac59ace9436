// rec, monitor: posts and takes daemon messages.

#include "cfgctl.h"
#include "message_text.h"

#include <cerrno>
#include <csignal>
#include <cstring>
#include <ctime>
#include <sys/msg.h>
#include <sys/time.h>
#include <unistd.h>

namespace cfgctl
{

namespace
{

constexpr ssize_t BODY_SIZE = 292;
constexpr const char *PID_FILE = "/var/run/monitor.pid";

// Also has room for messages that the library did not post.
struct Received {
    daemon_message message;
    char more[8192];
};

// With the time of its receipt.
bool print_message(const daemon_message &message, bool json)
{
    timespec now = {};
    clock_gettime(CLOCK_REALTIME, &now);
    const long ms = now.tv_nsec / 1000000;
    if (json)
        return print(text_of({{"time", now.tv_sec},
                              {"milliseconds", ms},
                              {"type", message.msg_type},
                              {"command", message.command},
                              {"value", message.value},
                              {"param", parameter(message)},
                              {"meaning", meaning(message)}}) +
                     "\n");
    char time[16];
    const size_t length = std::strftime(time, sizeof time, "%H:%M:%S", gmtime(&now.tv_sec));
    std::snprintf(time + length, sizeof time - length, ".%03ld ", ms);
    return print(time + line_of(message) + "\n");
}

bool lives(int64_t pid)
{
    return pid > 0 && pid != getpid() && (kill(static_cast<pid_t>(pid), 0) == 0 || errno == EPERM);
}

extern "C" void end_by_signal(int signal)
{
    unlink(PID_FILE);
    std::signal(signal, SIG_DFL);
    std::raise(signal);
}

// Makes other receivers wait while it lives.
struct Notice {
    Notice()
    {
        const int64_t other = number(first_line(PID_FILE)).value_or(0);
        if (lives(other)) {
            complain("monitor " + std::to_string(other) +
                     " also runs; each message goes to only one");
            return;
        }
        for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGPIPE})
            std::signal(signal, end_by_signal);
        if (FILE *file = std::fopen(PID_FILE, "we")) {
            std::fprintf(file, "%d\n", static_cast<int>(getpid()));
            ours = std::fclose(file) == 0;
        }
    }
    ~Notice()
    {
        if (ours)
            unlink(PID_FILE);
    }
    Notice(const Notice &) = delete;
    Notice &operator=(const Notice &) = delete;
    bool ours = false;
};

extern "C" void wake_up(int) {}

// Reports other processes that take messages. The kernel's receive times have a
// resolution of one second.
struct Rivals {
    explicit Rivals(int of) : queue(of)
    {
        msgctl(queue, IPC_STAT, &before);
        std::signal(SIGALRM, wake_up); // ends the wait for a message
        const itimerval second = {{1, 0}, {1, 0}};
        setitimer(ITIMER_REAL, &second, nullptr);
    }
    void look()
    {
        msqid_ds now = {};
        if (msgctl(queue, IPC_STAT, &now) != 0 || now.msg_lrpid == getpid() ||
            (now.msg_lrpid == before.msg_lrpid && now.msg_rtime == before.msg_rtime))
            return;
        if (now.msg_lrpid != named)
            complain("process " + std::to_string(now.msg_lrpid) +
                     " also takes messages; each goes to only one");
        named = now.msg_lrpid;
        before = now;
    }
    int queue;
    msqid_ds before = {};
    pid_t named = 0;
};

} // namespace

void rec(Call &call)
{
    const std::string text = call.words.size() > 1 ? call.words[1] : "";
    require_room(1);
    if (cfg_setRec(static_cast<uint32_t>(*number(call.words[0])), text.data(),
                   static_cast<uint32_t>(text.size())) != 0)
        fail(APPLY_FAILED, "the command was not posted");
}

void monitor(Call &call)
{
    call.printed = true;
    const int queue = msgget(QUEUE_KEY, IPC_CREAT | 0666);
    const Notice notice;
    Rivals rivals(queue);
    const auto type = static_cast<long>(call.option(ONE_TYPE)); // 0: any
    Received received{};
    for (uint32_t left = call.option(COUNT); !call.has(COUNT) || left > 0; left--) {
        ssize_t length;
        do {
            rivals.look();
            length = msgrcv(queue, &received, sizeof received - sizeof received.message.msg_type,
                            type, 0);
        } while (length < 0 && errno == EINTR);
        if (length < 0)
            fail(NOT_FOUND, std::string("cannot receive: ") + std::strerror(errno));
        if (length != BODY_SIZE)
            complain("not a daemon message: type " + std::to_string(received.message.msg_type) +
                     ", " + std::to_string(length) + " bytes");
        else if (!print_message(received.message, call.has(JSON)))
            return;
    }
}

} // namespace cfgctl
