// The firmware's message queues and their records.
#pragma once

#include <string>
#include <sys/msg.h>

namespace desk
{

constexpr key_t DAEMON_QUEUE = 5678;
constexpr key_t ACCOUNT_QUEUE = 0x20130003;
constexpr key_t UPLOAD_QUEUE = 0x20130005;

// Room for any record of these queues; msgrcv fills `type`.
struct QueueRecord {
    long type;
    char body[512];
};

// The record as one line of text; `length` is the length of its body.
std::string decoded(key_t queue, const QueueRecord &record, size_t length);

// Takes the next record of the type (0: any) and returns it as text, empty when
// there is none. `flags` are those of msgrcv.
std::string take(key_t queue, long type, int flags, long *taken = nullptr);

} // namespace desk
