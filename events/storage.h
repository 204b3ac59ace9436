// Inside the library only: the event ring in shared memory and its copy on the
// card. These functions take no lock: the caller holds EVENT_SEM_KEY from
// getEventQueue to putEventQueue.
#pragma once

#include "cfg_set.h"

#include <stddef.h>
#include <sys/types.h>

namespace cfg_set
{

constexpr key_t EVENT_SEM_KEY = 0x20130001;
constexpr key_t EVENT_SHM_KEY = 0x20130002;
#define EVENT_QUEUE_FILE "/mnt/sdcard/video/.event"

// The segment and the file hold the same bytes, in the processor's byte order.
struct EventQueue {
    uint32_t head;  // slot of the oldest event
    uint32_t tail;  // slot that the next event goes to
    uint32_t count; // tells a full ring from an empty one
    EventQueueEntry slots[EVENT_QUEUE_SIZE];
};
static_assert(offsetof(EventQueueEntry, time) == 4 && sizeof(EventQueueEntry) == 8, "a slot");
static_assert(offsetof(EventQueue, tail) == 4, "tail");
static_assert(offsetof(EventQueue, count) == 8, "count");
static_assert(offsetof(EventQueue, slots) == 12, "slots");
static_assert(sizeof(EventQueue) == 4108, "the record on the card");

// The slot of an index that may exceed the last one. Also keeps the index inside
// the ring when another program has damaged it.
constexpr uint32_t slot_of(uint32_t index)
{
    return index & (EVENT_QUEUE_SIZE - 1);
}

// Attaches the ring; creates it and loads the file when there is none. Null after
// a report on failure.
EventQueue *getEventQueue();

// Detaches it. Null is ignored.
void putEventQueue(EventQueue *queue);

// Writes the file: 0, or -1 after a report.
int saveEventQueue(const EventQueue *queue);

// Whether a record from a file is a valid ring: 0, or -1 after a report.
int checkEventQueue(const EventQueue *queue);

// 1 or 0.
int isEventQueueEmpty(const EventQueue *queue);

} // namespace cfg_set
