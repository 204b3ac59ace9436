// rec, monitor: the daemons' messages, one end and the other.

#include "cfgctl.h"

#include "cfg_set.h"

#include <cerrno>
#include <cstring>
#include <sys/msg.h>

namespace cfgctl
{

namespace
{

constexpr key_t QUEUE_KEY = 5678;
constexpr ssize_t BODY_SIZE = 292;

// Room for a message that is not one of the library's, too.
struct Received {
    daemon_message message;
    char more[8192];
};

constexpr struct {
    long type;
    uint32_t command;
    const char *meaning;
} MEANINGS[] = {
    {1, 7, "privacy event"},
    {2, 2, "PIR detection on"},
    {2, 3, "PIR detection off"},
    {2, 4, "PIR: privacy mode entered"},
    {2, 5, "PIR: privacy mode left"},
    {4, 3, "sound sensitivity"},
    {4, 4, "sound detection on"},
    {4, 5, "sound detection off"},
    {4, 6, "sound: privacy mode entered"},
    {4, 7, "sound: privacy mode left"},
    {7, 5, "recording: privacy mode entered"},
    {7, 7, "recording: privacy mode left"},
};

std::string meaning(const daemon_message &message)
{
    for (const auto &row : MEANINGS)
        if (row.type == message.msg_type && row.command == message.command)
            return row.meaning;
    return message.msg_type == 7 ? "recording" : "unknown";
}

// The parameter bytes as far as their trailing zeros.
std::string parameter(const daemon_message &message)
{
    const std::string bytes(message.param, sizeof message.param);
    return bytes.substr(0, bytes.find_last_not_of('\0') + 1);
}

std::string quoted(const std::string &bytes)
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

std::string decoded(const daemon_message &message, bool as_json)
{
    const std::string param = parameter(message);
    if (as_json)
        return Json{{"type", message.msg_type},
                    {"command", message.command},
                    {"value", message.value},
                    {"param", param},
                    {"meaning", meaning(message)}}
            .dump(-1, ' ', false, Json::error_handler_t::replace);
    std::string line = "type " + std::to_string(message.msg_type) + " command " +
                       std::to_string(message.command) + " value " + std::to_string(message.value);
    if (!param.empty())
        line += " param " + quoted(param);
    return line + ": " + meaning(message);
}

} // namespace

int rec(const Call &call)
{
    const auto code = number(call.arguments[0]);
    const std::string text = call.arguments.size() > 1 ? call.arguments[1] : "";
    if (!code || text.size() > MSG_PARAM_LEN) {
        complain("rec takes a number and at most " + std::to_string(MSG_PARAM_LEN) +
                 " bytes of text");
        return USAGE;
    }
    if (cfg_setRec(*code, text.data(), static_cast<uint32_t>(text.size())) != 0) {
        complain("the command was not posted");
        return APPLY_FAILED;
    }
    return OK;
}

int monitor(const Call &call)
{
    std::optional<uint32_t> left;
    if (call.has("--count")) {
        left = number(call.options.at("--count"));
        if (!left || *left == 0) {
            complain("--count takes a number from 1");
            return USAGE;
        }
    }
    complain("takes every message off the queue; the daemons will miss them");
    const int queue = msgget(QUEUE_KEY, IPC_CREAT | 0666);
    Received received{};
    while (!left || *left > 0) {
        const ssize_t length =
            msgrcv(queue, &received, sizeof received - sizeof received.message.msg_type, 0, 0);
        if (length < 0 && errno == EINTR)
            continue;
        if (length < 0) {
            complain(std::string("cannot receive: ") + std::strerror(errno));
            return NOT_FOUND;
        }
        if (length == BODY_SIZE)
            print(decoded(received.message, call.json) + "\n");
        else
            complain("not a daemon message: type " + std::to_string(received.message.msg_type) +
                     ", " + std::to_string(length) + " bytes");
        if (!flush())
            return NOT_FOUND;
        if (left)
            (*left)--;
    }
    return OK;
}

} // namespace cfgctl
