// For tests linked with --wrap=malloc,--wrap=free,--wrap=strdup: what the code under test
// allocates and does not free, and memory that runs out.
#pragma once

#include <cstdlib>
#include <cstring>
#include <set>

static int allocations_left = -1; // -1: as many as wanted
static size_t last_size;          // bytes of the last allocation
static std::set<void *> held;

// NOLINTBEGIN(bugprone-reserved-identifier): the linker's names
extern "C" {

void *__real_malloc(size_t size);
void *__wrap_malloc(size_t size)
{
    if (allocations_left == 0)
        return nullptr;
    allocations_left -= allocations_left > 0;
    last_size = size;
    return *held.insert(__real_malloc(size)).first;
}

char *__wrap_strdup(const char *text)
{
    void *const copy = __wrap_malloc(strlen(text) + 1);
    return copy ? strcpy(static_cast<char *>(copy), text) : nullptr;
}

void __real_free(void *memory);
void __wrap_free(void *memory)
{
    held.erase(memory);
    __real_free(memory);
}

} // extern "C"
// NOLINTEND(bugprone-reserved-identifier)
