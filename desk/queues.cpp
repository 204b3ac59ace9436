#include "desk/queues.h"

#include "cfg_set.h"
#include "desk/log.h"

#include <algorithm>
#include <cstring>

namespace desk
{

static constexpr struct {
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

static std::string meaning(long type, uint32_t command)
{
    for (const auto &row : MEANINGS)
        if (row.type == type && row.command == command)
            return row.meaning;
    return type == 7 ? "recording" : "unknown";
}

std::string decoded(key_t queue, const QueueRecord &record, size_t length)
{
    if (queue == UPLOAD_QUEUE)
        return "signal " + std::to_string(record.type);
    if (queue == ACCOUNT_QUEUE) {
        uint16_t code = 0;
        std::memcpy(&code, record.body, sizeof code);
        const char *text = record.body + 12; // behind the reserved bytes
        return "account code=" + std::to_string(code) + " " + quoted({text, strnlen(text, 256)});
    }
    daemon_message message = {};
    constexpr size_t BODY = offsetof(daemon_message, command);
    message.msg_type = record.type;
    std::memcpy(reinterpret_cast<char *>(&message) + BODY, record.body,
                std::min(length, sizeof message - BODY));
    std::string line = "type " + std::to_string(message.msg_type) + " command " +
                       std::to_string(message.command) + " value " + std::to_string(message.value);
    const std::string parameter(message.param, sizeof message.param);
    if (const size_t end = parameter.find_last_not_of('\0') + 1; end > 0)
        line += " param " + quoted(parameter.substr(0, end));
    return line + ": " + meaning(message.msg_type, message.command);
}

std::string take(key_t queue, long type, int flags, long *taken)
{
    QueueRecord record{};
    const ssize_t length = msgrcv(msgget(queue, IPC_CREAT | 0666), &record, sizeof record.body,
                                  type, flags | MSG_NOERROR);
    if (length < 0)
        return "";
    if (taken)
        *taken = record.type;
    return decoded(queue, record, static_cast<size_t>(length));
}

} // namespace desk
