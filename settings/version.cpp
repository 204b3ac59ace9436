#include "cfg_set.h"

#define JOINED(major, minor, patch) #major "." #minor "." #patch
#define TEXT(...) JOINED(__VA_ARGS__)

const char *cfg_version(uint32_t *number)
{
    if (number)
        *number = CFG_SET_VERSION_NUMBER;
    return TEXT(CFG_SET_VERSION_MAJOR, CFG_SET_VERSION_MINOR, CFG_SET_VERSION_PATCH);
}
