/* What the machine is measured and put under load with.
 *
 * operations        starts and ends
 * operations calls  makes each call between two of getppid, which nothing else makes
 * operations smaps  prints after them what the kernel says of the process's memory
 * operations ring   tells what is pending, then adds events and drops old ones without end
 * operations clock SECONDS
 *                   sets the clock, also to a time that the kernel does not take from
 *                   a 32-bit machine's clock chip: one after January 2038
 */
#define _POSIX_C_SOURCE 200809L /* NOLINT(bugprone-reserved-identifier): POSIX's own name */
#include "cfg_set.h"
#include "platform/param_store.h"

#include <poll.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <time.h>
#include <unistd.h>

/* The firmware's store: nothing here needs more of it. */
int param_get(const char *key, char *buffer, unsigned int size)
{
    (void)key;
    snprintf(buffer, size, "1");
    return 0;
}

#define COUNTED(call) (getppid(), (void)(call), getppid())

static void call_each(void)
{
    struct EventQueueEntry event;
    cfg_enqueueEvent(1); /* the first call makes the ring */
    COUNTED(cfg_enqueueEvent(1));
    COUNTED(cfg_getEvent(0, &event));
    COUNTED(cfg_dequeueEvent(1));
    COUNTED(ir_mode());
    COUNTED(night_mode(1));
    COUNTED(cfg_setPirEnable(1));
}

static void print_smaps(void)
{
    char line[256];
    FILE *file = fopen("/machine/proc/self/smaps", "r");
    while (file && fgets(line, sizeof line, file))
        fputs(line, stdout);
}

/* Types follow each other, so that a ring with foreign bytes in it shows. */
static uint32_t after(uint32_t type)
{
    return (type + 1) % 5;
}

static void keep_the_ring_busy(void)
{
    enum { KEPT = 20, PAUSE_MS = 100 };
    struct EventQueueEntry event;
    uint32_t count = 0;
    uint32_t next = 0;
    const char *order = "in order";
    for (; cfg_getEvent(count, &event) == 0; next = after(event.type), count++)
        if (count > 0 && event.type != next)
            order = "MIXED UP";
    printf("ring of %u events %s\n", (unsigned int)count, order);
    fflush(stdout);
    const int drops = fork() == 0;
    for (uint32_t added = 0;; poll(NULL, 0, PAUSE_MS)) {
        if (drops && cfg_getEvent(KEPT, &event) == 0)
            cfg_dequeueEvent(1);
        if (drops || cfg_enqueueEvent(next) != 0)
            continue;
        next = after(next);
        if (added++ == 0)
            puts("takes more");
        fflush(stdout);
    }
}

int main(int argc, char **argv)
{
    const char *what = argc > 1 ? argv[1] : "";
    if (argc > 2 && strcmp(what, "clock") == 0) {
        const struct timespec now = {.tv_sec = strtoll(argv[2], NULL, 10)};
        return clock_settime(CLOCK_REALTIME, &now) == 0 ? 0 : 1;
    }
    if (strcmp(what, "ring") == 0)
        keep_the_ring_busy();
    if (*what)
        call_each();
    if (strcmp(what, "smaps") == 0)
        print_smaps();
    return 0;
}
