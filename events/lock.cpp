#include "events/lock.h"

#include <errno.h>
#include <stdio.h>
#include <sys/ipc.h>
#include <sys/sem.h>

using namespace cfg_set;

constexpr unsigned short FREE = 1;

// One operation on the semaphore, repeated while signals interrupt it. Each failure
// is reported on standard error.
static bool operate(int id, short change, const char *failure)
{
    sembuf operation = {0, change, SEM_UNDO};
    while (semop(id, &operation, 1) != 0) {
        const int error = errno;
        fputs(failure, stderr);
        if (error != EINTR)
            return false;
    }
    return true;
}

// The id of the new set, whose lock is free, or -1.
static int create(key_t key)
{
    const int id = semget(key, 1, IPC_CREAT | 0666);
    if (id < 0) {
        const int error = errno;
        fputs("error creating semaphore.\n", stderr);
        errno = error;
        perror("sem_get");
        return -1;
    }
    unsigned short values[] = {FREE};
    union { // semctl's, which the caller declares
        int val;
        semid_ds *buf;
        unsigned short *array;
    } argument;
    argument.array = values;
    if (semctl(id, 0, SETALL, argument) != 0) {
        fprintf(stderr, "SETALL failed (%d)\n", errno);
        return -1;
    }
    return id;
}

int cfg_set::sem_get(key_t key)
{
    int id = semget(key, 1, 0);
    if (id < 0)
        id = create(key);
    if (id < 0 || !operate(id, -1, "error getting semaphore.\n"))
        return -1;
    return id;
}

int cfg_set::sem_put(int id)
{
    if (id < 0)
        return -1;
    return operate(id, 1, "error releasing semaphore.\n") ? 0 : -1;
}
