// The firmware's message queues and what their records say.
#pragma once

#include <string>
#include <sys/msg.h>

namespace desk
{

constexpr key_t DAEMON_QUEUE = 5678;
constexpr key_t ACCOUNT_QUEUE = 0x20130003;
constexpr key_t UPLOAD_QUEUE = 0x20130005;

// Room for every record of these queues; `type` is what msgrcv puts there.
struct QueueRecord {
    long type;
    char body[512];
};

// One line of what the record says, `length` being that of its body.
std::string decoded(key_t queue, const QueueRecord &record, size_t length);

// Takes the next record of the type, 0 being any, and says what it says; empty
// when there is none. `flags` are msgrcv's.
std::string take(key_t queue, long type, int flags, long *taken = nullptr);

} // namespace desk
