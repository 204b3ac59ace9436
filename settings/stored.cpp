#include "settings/stored.h"

using namespace cfg_set;

int cfg_set::stored_int(const char *key, unsigned size)
{
    char text[VALUE_SIZE] = "";
    param_get(key, text, size);
    return to_int(text);
}

bool cfg_set::stored_text(const char *key, char *text, unsigned size, const char *function,
                          int line)
{
    if (param_get(key, text, size) == 0)
        return true;
    report(function, line, "param_get fail");
    return false;
}

bool cfg_set::put_setting(const char *key, const char *text, const char *function, int line)
{
    if (param_set(key, text) == 0)
        return true;
    report(function, line, "param_set fail");
    return false;
}

bool cfg_set::stored_number(const char *key, uint32_t *value, const char *function, int line)
{
    char text[VALUE_SIZE];
    if (!stored_text(key, text, sizeof text, function, line))
        return false;
    *value = to_number(text, 10);
    return true;
}
