#include "events/lock.h"
#include "events/storage.h"
#include "settings/frame.h"

#include <time.h>

using namespace cfg_set;

static void unlock(int lock, const char *function, int line)
{
    if (sem_put(lock) != 0)
        report(function, line, "sem_put fail iSemId[%d]", lock);
}

// Begins an operation: takes the lock and attaches the ring. Null when either
// fails; the lock is then not held.
static EventQueue *enter(int *lock, const char *function, int line)
{
    *lock = sem_get(EVENT_SEM_KEY);
    if (*lock < 0) {
        report(function, line, "sem_get fail iSemId[%d]", *lock);
        return nullptr;
    }
    EventQueue *queue = getEventQueue();
    if (!queue) {
        report(function, line, "getEventQueue fail");
        unlock(*lock, function, line);
    }
    return queue;
}

static void leave(EventQueue *queue, int lock, const char *function, int line)
{
    putEventQueue(queue);
    unlock(lock, function, line);
}

// Head, tail and count change in one store, so that a process killed between
// any two instructions leaves the old ones or the new, never a mixture. On ARM
// this is one stmia, which a signal does not divide. It stores registers in
// ascending order, so the code names three, and it moves the address, because
// Thumb-1 has no other form. Elsewhere it is a vector of four words, which the
// compiler splits if the processor has no 16-byte stores.
static void set_indices(EventQueue *queue, uint32_t head, uint32_t tail, uint32_t count)
{
    __atomic_signal_fence(__ATOMIC_SEQ_CST); // an event is whole before it counts
#if defined(__arm__)
    register uint32_t first asm("r1") = head;
    register uint32_t second asm("r2") = tail;
    register uint32_t third asm("r3") = count;
    EventQueue *end = queue;
    asm volatile("stmia %0!, {%1, %2, %3}"
                 : "+l"(end)
                 : "r"(first), "r"(second), "r"(third)
                 : "memory");
#else
    // The fourth word, slot 0's type, keeps its value.
    typedef uint32_t Words __attribute__((vector_size(16), aligned(4), may_alias));
    *(volatile Words *)queue = Words{head, tail, count, queue->slots[0].type};
#endif
}

static void change(EventQueue *queue, uint32_t head, uint32_t tail, uint32_t count,
                   const char *function, int line)
{
    set_indices(queue, head, tail, count);
    if (saveEventQueue(queue) != 0)
        report(function, line, "saveEventQueue fail");
}

int cfg_isEventQueueEmpty(void)
{
    int lock;
    EventQueue *queue = enter(&lock, HERE);
    if (!queue)
        return 0;
    const int result = isEventQueueEmpty(queue);
    leave(queue, lock, HERE);
    return result;
}

int cfg_enqueueEvent(uint32_t type)
{
    const uint32_t now = (uint32_t)time(nullptr);
    int lock;
    EventQueue *queue = enter(&lock, HERE);
    if (!queue)
        return -1;
    int result = 0;
    if (queue->head == queue->tail && queue->count == EVENT_QUEUE_SIZE) {
        REPORT("EventQueue is full");
        result = -1;
    } else {
        queue->slots[slot_of(queue->tail)] = {type, now};
        change(queue, queue->head, slot_of(queue->tail + 1), queue->count + 1, HERE);
    }
    leave(queue, lock, HERE);
    return result;
}

int cfg_dequeueEvent(uint32_t n)
{
    int lock;
    EventQueue *queue = enter(&lock, HERE);
    if (!queue)
        return -1;
    if (!isEventQueueEmpty(queue)) {
        const uint32_t dropped = n < queue->count ? n : queue->count;
        change(queue, slot_of(queue->head + dropped), queue->tail, queue->count - dropped, HERE);
    }
    leave(queue, lock, HERE);
    return 0;
}

int cfg_dequeueAllEvent(void)
{
    int lock;
    EventQueue *queue = enter(&lock, HERE);
    if (!queue)
        return -1;
    if (!isEventQueueEmpty(queue))
        change(queue, 0, 0, 0, HERE);
    leave(queue, lock, HERE);
    return 0;
}

int cfg_getEvent(uint32_t index, struct EventQueueEntry *event)
{
    if (!event) {
        REPORT("event buffer is null");
        return -1;
    }
    int lock;
    EventQueue *queue = enter(&lock, HERE);
    if (!queue)
        return -1;
    const bool held = !isEventQueueEmpty(queue) && index < queue->count;
    if (held)
        *event = queue->slots[slot_of(queue->head + index)];
    leave(queue, lock, HERE);
    return held ? 0 : -1;
}
