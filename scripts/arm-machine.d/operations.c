/* Measures the machine and puts load on it.
 *
 * operations        starts and ends
 * operations calls  makes each call between two calls of getppid as marks
 * operations smaps  makes the calls, then prints /proc/self/smaps
 * operations ring TOKEN
 *                   reports what a power cut left of the ring, then changes it in bursts
 *                   without end; reports each change before and after it
 * operations clock SECONDS
 *                   sets the clock, also to times after January 2038, which the kernel
 *                   of a 32-bit machine does not take from the clock chip
 */
#define _POSIX_C_SOURCE 200809L /* NOLINT(bugprone-reserved-identifier): POSIX's own name */
#include "cfg_set.h"
#include "platform/param_store.h"

#include <poll.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>
#include <time.h>
#include <unistd.h>

/* A minimal firmware store. */
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
    cfg_enqueueEvent(1); /* the first call creates the ring */
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

static const char *const copy_of_ring = "/mnt/sdcard/video/.event";

static long size_of_copy(void)
{
    struct stat copy;
    return stat(copy_of_ring, &copy) == 0 ? (long)copy.st_size : -1;
}

static void say(const char *token, const char *word, const char *more)
{
    struct timespec now;
    clock_gettime(CLOCK_MONOTONIC, &now);
    printf("%s %s %lld%s\n", token, word, now.tv_sec * 1000LL + now.tv_nsec / 1000000, more);
}

/* Returns how many events are pending. */
static uint32_t tell_what_is_left(const char *token)
{
    char events[8192] = "";
    size_t length = 0;
    struct EventQueueEntry event;
    uint32_t count = 0;
    const long size = size_of_copy();
    for (; cfg_getEvent(count, &event) == 0 && length < sizeof events - 32; count++)
        length += (size_t)snprintf(events + length, sizeof events - length, " %u.%u",
                                   (unsigned int)event.type, (unsigned int)event.time);
    if (size < 0)
        say(token, "ring none", events);
    else if (size_of_copy() < 0)
        say(token, "ring refused", events);
    else
        say(token, size == 4108 ? "ring whole" : "ring odd", events);
    return count;
}

static uint32_t add(const char *token, uint32_t number, uint32_t pending)
{
    struct EventQueueEntry event = {.type = (number + number / 5) % 5}; /* repeats after 25 */
    char text[64];
    snprintf(text, sizeof text, " %u add %u", (unsigned int)number, (unsigned int)event.type);
    say(token, "change", text);
    cfg_enqueueEvent(event.type);
    cfg_getEvent(pending, &event);
    snprintf(text, sizeof text, " %u %u.%u", (unsigned int)number, (unsigned int)event.type,
             (unsigned int)event.time);
    say(token, "changed", text);
    return pending + 1;
}

static uint32_t drop(const char *token, uint32_t number, uint32_t pending)
{
    const uint32_t dropped = 1 + number % 4;
    char text[64];
    snprintf(text, sizeof text, " %u drop %u", (unsigned int)number, (unsigned int)dropped);
    say(token, "change", text);
    cfg_dequeueEvent(dropped);
    snprintf(text, sizeof text, " %u", (unsigned int)number);
    say(token, "changed", text);
    return pending - dropped;
}

static void keep_the_ring_busy(const char *token)
{
    enum { MOST = 10, BURST = 80, PAUSE_MS = 20, SETTLED_MS = 2300, QUIET_MS = 2000 };
    uint32_t pending = tell_what_is_left(token);
    say(token, "working", "");
    for (uint32_t number = 1;; number++) {
        pending = pending < MOST ? add(token, number, pending) : drop(token, number, pending);
        poll(NULL, 0, PAUSE_MS);
        if (number % BURST != 0)
            continue;
        poll(NULL, 0, SETTLED_MS);
        say(token, "quiet", "");
        poll(NULL, 0, QUIET_MS);
    }
}

int main(int argc, char **argv)
{
    const char *what = argc > 1 ? argv[1] : "";
    if (argc > 2 && strcmp(what, "clock") == 0) {
        const struct timespec now = {.tv_sec = strtoll(argv[2], NULL, 10)};
        return clock_settime(CLOCK_REALTIME, &now) == 0 ? 0 : 1;
    }
    setvbuf(stdout, NULL, _IOLBF, 0); /* a line is one write */
    if (argc > 2 && strcmp(what, "ring") == 0)
        keep_the_ring_busy(argv[2]);
    if (*what)
        call_each();
    if (strcmp(what, "smaps") == 0)
        print_smaps();
    return 0;
}
