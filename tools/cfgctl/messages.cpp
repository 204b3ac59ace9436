// rec, monitor: the daemons' messages, one end and the other.

#include "cfgctl.h"
#include "message_text.h"

#include <cerrno>
#include <csignal>
#include <cstring>
#include <sys/msg.h>
#include <unistd.h>

namespace cfgctl
{

namespace
{

constexpr ssize_t BODY_SIZE = 292;
constexpr const char *PID_FILE = "/var/run/monitor.pid";

// Room for a message that is not one of the library's, too.
struct Received {
    daemon_message message;
    char more[8192];
};

std::string json_of(const daemon_message &message)
{
    return text_of({{"type", message.msg_type},
                    {"command", message.command},
                    {"value", message.value},
                    {"param", parameter(message)},
                    {"meaning", meaning(message)}});
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

// Asks other receivers to step aside while it lives, and says who may not.
struct Notice {
    explicit Notice(int queue)
    {
        msqid_ds state = {};
        const int64_t other = number(first_line(PID_FILE)).value_or(0);
        if (lives(other)) {
            complain("monitor " + std::to_string(other) + " runs too: each message goes to one");
            return;
        }
        if (msgctl(queue, IPC_STAT, &state) == 0 && lives(state.msg_lrpid))
            complain("process " + std::to_string(state.msg_lrpid) +
                     " has taken messages too: while it does not step aside, each goes to one");
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
    const Notice notice(queue);
    Received received{};
    for (uint32_t left = call.option(COUNT); !call.has(COUNT) || left > 0; left--) {
        ssize_t length;
        do
            length =
                msgrcv(queue, &received, sizeof received - sizeof received.message.msg_type, 0, 0);
        while (length < 0 && errno == EINTR);
        if (length < 0)
            fail(NOT_FOUND, std::string("cannot receive: ") + std::strerror(errno));
        if (length != BODY_SIZE)
            complain("not a daemon message: type " + std::to_string(received.message.msg_type) +
                     ", " + std::to_string(length) + " bytes");
        else if (!print((call.has(JSON) ? json_of(received.message) : line_of(received.message)) +
                        "\n"))
            return;
    }
}

} // namespace cfgctl
