// Inside the library only: what reaches the upload daemon.
#pragma once

#include <stddef.h>
#include <sys/types.h>

namespace cfg_set
{

// Signals.
constexpr int WAKE_UP = 1;
constexpr int EVENT = 2;
constexpr int STOP = 5;
constexpr int FORCE_STOP = 6;
constexpr int SWITCHED_ON = 7;
constexpr int RECONFIGURED = 8;

// Posts a message of `size` bytes behind its type. One that does not fit the
// queue is lost, as is one without a queue.
void post(key_t key, const void *message, size_t size);

// Sends the daemon a signal, stamped with the time.
void signal_daemon(int code);

} // namespace cfg_set
