#include "events/storage.h"

#include "settings/frame.h"

#include <errno.h>
#include <string.h>
#include <sys/ipc.h>
#include <sys/shm.h>

using namespace cfg_set;

// Reads the file into the ring and closes it. False when it is short or invalid.
static bool load(EventQueue *queue, FILE *file)
{
    const size_t length = fread(queue, 1, sizeof *queue, file);
    fclose(file);
    return length == sizeof *queue && checkEventQueue(queue) == 0;
}

EventQueue *cfg_set::getEventQueue()
{
    int id = shmget(EVENT_SHM_KEY, sizeof(EventQueue), 0666);
    const bool existed = id >= 0;
    if (!existed)
        id = shmget(EVENT_SHM_KEY, sizeof(EventQueue), IPC_CREAT | 0666);
    if (id < 0) {
        REPORT("shmget fail iShmId[%d] errno[%d][%s]", id, errno, strerror(errno));
        return nullptr;
    }
    EventQueue *queue = (EventQueue *)shmat(id, nullptr, 0);
    if (!queue) { // and not -1: a deliberately narrow test
        REPORT("shmat fail iShmId[%d] errno[%d][%s]", id, errno, strerror(errno));
        return nullptr;
    }
    if (existed)
        return queue;

    memset(queue, 0, sizeof *queue);
    FILE *file = open_unbuffered(EVENT_QUEUE_FILE, "r+e");
    if (!file) {
        REPORT("[%s] not found", EVENT_QUEUE_FILE);
        return queue;
    }
    if (!load(queue, file)) {
        REPORT("load fail");
        memset(queue, 0, sizeof *queue);
        run("rm -rf " EVENT_QUEUE_FILE);
    }
    return queue;
}

void cfg_set::putEventQueue(EventQueue *queue)
{
    if (!queue)
        return;
    const int result = shmdt(queue);
    if (result != 0)
        REPORT("shmdt fail ptQueue[%#x] ret[%d] errno[%d][%s]", (unsigned)(uintptr_t)queue, result,
               errno, strerror(errno));
}

int cfg_set::saveEventQueue(const EventQueue *queue)
{
    FILE *file = open_unbuffered(EVENT_QUEUE_FILE, "w+e");
    if (!file) {
        REPORT("fopen [%s] fail errno[%d][%s]", EVENT_QUEUE_FILE, errno, strerror(errno));
        return -1;
    }
    int result = 0;
    const size_t written = fwrite(queue, 1, sizeof *queue, file);
    if (written != sizeof *queue) {
        REPORT("dwWrite[%lu] != dwSize[%lu]", (unsigned long)written, (unsigned long)sizeof *queue);
        result = -1;
    }
    fclose(file);
    return result;
}

int cfg_set::isEventQueueEmpty(const EventQueue *queue)
{
    return queue->head == queue->tail && queue->count == 0;
}
