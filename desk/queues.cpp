#include "desk/queues.h"

#include "desk/log.h"
#include "tools/cfgctl/message_text.h"

#include <algorithm>
#include <cstring>

namespace desk
{

std::string decoded(key_t queue, const QueueRecord &record, size_t length)
{
    if (queue == UPLOAD_QUEUE)
        return "signal " + std::to_string(record.type);
    if (queue == ACCOUNT_QUEUE) {
        uint16_t code = 0;
        std::memcpy(&code, record.body, sizeof code);
        const char *text = record.body + 12; // after the reserved bytes
        return "account code=" + std::to_string(code) + " " + quoted({text, strnlen(text, 256)});
    }
    daemon_message message = {};
    constexpr size_t BODY = offsetof(daemon_message, command);
    message.msg_type = record.type;
    std::memcpy(reinterpret_cast<char *>(&message) + BODY, record.body,
                std::min(length, sizeof message - BODY));
    return cfgctl::line_of(message);
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
