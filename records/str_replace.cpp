#include "cfg_set.h"

#include <stdlib.h>
#include <string.h>

// A new string: `text` with the `old_length` bytes at `found` in it replaced.
static char *replaced(const char *text, const char *found, size_t old_length,
                      const char *replacement)
{
    const size_t before = (size_t)(found - text);
    char *result = (char *)malloc(strlen(text) - old_length + strlen(replacement) + 1);
    if (!result)
        return nullptr;
    memcpy(result, text, before);
    strcpy(stpcpy(result + before, replacement), found + old_length);
    return result;
}

char *str_replace(const char *text, const char *old, const char *replacement)
{
    // A replacement that contains `old`, or an empty `old`, would never end.
    if (old && replacement && strstr(text, old) && strstr(replacement, old))
        return nullptr;
    char *copy = strdup(text);
    if (!old || !replacement)
        return copy;
    while (copy) {
        const char *found = strstr(copy, old);
        if (!found)
            break;
        char *next = replaced(copy, found, strlen(old), replacement);
        free(copy);
        copy = next;
    }
    return copy;
}
