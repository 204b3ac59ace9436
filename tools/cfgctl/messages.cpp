// rec, monitor: the daemons' messages, one end and the other.

#include "cfgctl.h"

#include "cfg_set.h"

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

// clang-format off
constexpr struct {
    long type;
    uint32_t command;
    const char *meaning;
} MEANINGS[] = {
    {1, 7, "privacy event"}, {4, 3, "sound sensitivity"},
    {2, 2, "PIR detection on"}, {2, 3, "PIR detection off"},
    {2, 4, "PIR: privacy mode entered"}, {2, 5, "PIR: privacy mode left"},
    {4, 4, "sound detection on"}, {4, 5, "sound detection off"},
    {4, 6, "sound: privacy mode entered"}, {4, 7, "sound: privacy mode left"},
    {7, 5, "recording: privacy mode entered"}, {7, 7, "recording: privacy mode left"},
};
// clang-format on

std::string meaning(const daemon_message &message)
{
    for (const auto &row : MEANINGS)
        if (row.type == message.msg_type && row.command == message.command)
            return row.meaning;
    return message.msg_type == 7 ? "recording" : "unknown";
}

std::string in_quotes(const std::string &bytes)
{
    std::string text = "\"";
    for (const char c : bytes) {
        char hex[8];
        std::snprintf(hex, sizeof hex, "\\x%02x", static_cast<unsigned char>(c));
        const bool plain = c >= ' ' && c <= '~' && c != '"' && c != '\\';
        text += plain ? std::string(1, c) : hex;
    }
    return text + "\"";
}

// The parameter bytes count as far as their trailing zeros.
std::string decoded(const daemon_message &message, bool as_json)
{
    std::string param(message.param, sizeof message.param);
    param.erase(param.find_last_not_of('\0') + 1);
    if (as_json)
        return text_of({{"type", message.msg_type},
                        {"command", message.command},
                        {"value", message.value},
                        {"param", param},
                        {"meaning", meaning(message)}});
    return "type " + std::to_string(message.msg_type) + " command " +
           std::to_string(message.command) + " value " + std::to_string(message.value) +
           (param.empty() ? "" : " param " + in_quotes(param)) + ": " + meaning(message);
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
        else if (!print(decoded(received.message, call.has(JSON)) + "\n"))
            return;
    }
}

} // namespace cfgctl
