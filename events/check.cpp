#include "events/storage.h"

#include "settings/frame.h"

#include <time.h>

using namespace cfg_set;

constexpr uint32_t TYPE_MAX = 4;

// 2014-01-17 23:06:40 UTC. An earlier clock has not been set since the boot.
constexpr int64_t EVENT_TIME_FLOOR = 1390000000;

// Whether `count` agrees with head and tail, both of which are slots.
static bool count_fits(const EventQueue *queue)
{
    if (queue->head == queue->tail)
        return queue->count % EVENT_QUEUE_SIZE == 0;
    return queue->count == slot_of(queue->tail - queue->head);
}

int cfg_set::checkEventQueue(const EventQueue *queue)
{
    const unsigned long head = queue->head, tail = queue->tail, count = queue->count;
    if (count > EVENT_QUEUE_SIZE) {
        REPORT("invalid count[%lu]", count);
        return -1;
    }
    if (head >= EVENT_QUEUE_SIZE || tail >= EVENT_QUEUE_SIZE) {
        REPORT("invalid head[%lu] or tail[%lu]", head, tail);
        return -1;
    }
    if (!count_fits(queue)) {
        REPORT("invalid head[%lu] tail[%lu] count[%lu]", head, tail, count);
        return -1;
    }
    const int64_t now = time(nullptr);
    for (int i = 0; i < EVENT_QUEUE_SIZE; i++) {
        const EventQueueEntry *slot = &queue->slots[i];
        if (slot->type > TYPE_MAX) {
            REPORT("invalid type i[%d][%lu]", i, (unsigned long)slot->type);
            return -1;
        }
        if (now > EVENT_TIME_FLOOR && slot->time >= now) {
            REPORT("invalid time i[%d][%lu] >= now[%lu]", i, (unsigned long)slot->time,
                   (unsigned long)now);
            return -1;
        }
    }
    return 0;
}
