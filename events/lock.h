// Inside the library only: locks between processes. Each key names a System V
// set of one semaphore, created on first use and never removed.
#pragma once

#include <sys/types.h>

namespace cfg_set
{

// Takes the lock, waiting as long as needed. The set's id, or -1 after a report
// on standard error. The kernel releases the lock of a holder that dies.
int sem_get(key_t key);

// Releases the lock: 0, or -1 on failure and at once for a negative id.
int sem_put(int id);

} // namespace cfg_set
