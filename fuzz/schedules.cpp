// A stored schedule and a stored alarm clock of any text: what sscanf would
// read where it is defined, nothing else touched, and the same when the entry
// is stored and read again.

#include "cfg_set.h"

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

static std::string stored;

extern "C" int system(const char *)
{
    return 0;
}

extern "C" int param_get(const char *, char *buffer, unsigned size)
{
    std::snprintf(buffer, size, "%s", stored.c_str());
    return 0;
}

extern "C" int param_set(const char *, const char *text)
{
    stored = text;
    return 0;
}

extern "C" int param_unset(const char *)
{
    return 0;
}

static void require(bool holds)
{
    if (!holds)
        std::abort();
}

// Digits that int may not hold, which sscanf must not be given.
static bool has_large_number(const std::string &text)
{
    size_t digits = 0;
    for (const char c : text) {
        digits = isdigit(static_cast<unsigned char>(c)) ? digits + 1 : 0;
        if (digits > 9)
            return true;
    }
    return false;
}

// Reads into the first of two entries, and stores and reads that again.
template <typename Entry>
static Entry read_entry(int (*get)(int *, Entry *), int (*set)(int, const Entry *), Entry was)
{
    Entry list[] = {was, was};
    int count = 1;
    get(&count, list);
    require(count == (stored.empty() ? 0 : 1));
    require(std::memcmp(&list[1], &was, sizeof was) == 0);
    Entry again = list[0];
    set(1, &list[0]);
    get(&count, &again);
    require(std::memcmp(&again, &list[0], sizeof again) == 0);
    return list[0];
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const std::string text(data, std::find(data, data + size, 0));

    stored = text.substr(0, 255);
    sched_entry s = {90, 91, 92, 93, 94, 95, 96};
    const sched_entry read = read_entry(sched_get_config, sched_set_config, s);
    if (!has_large_number(text)) {
        std::sscanf(text.substr(0, 255).c_str(), "%d,%d,%d,%d,%d,%d,%d",
                    reinterpret_cast<int *>(&s.enable), &s.param1, &s.param2,
                    reinterpret_cast<int *>(&s.starttime), reinterpret_cast<int *>(&s.stoptime),
                    reinterpret_cast<int *>(&s.days), reinterpret_cast<int *>(&s.repeat));
        require(std::memcmp(&read, &s, sizeof s) == 0);
    }

    stored = text.substr(0, 511);
    alarm_clock_entry a = {90, 91, 92, "was"};
    const alarm_clock_entry clock = read_entry(alarm_get_config, alarm_set_config, a);
    if (!has_large_number(text.substr(0, text.find_first_not_of("+-,0123456789 \t\n\v\f\r")))) {
        std::sscanf(text.substr(0, 511).c_str(), "%d,%d,%d,%511[^\n]",
                    reinterpret_cast<int *>(&a.enable), reinterpret_cast<int *>(&a.wday),
                    reinterpret_cast<int *>(&a.starttime), a.text);
        require(clock.enable == a.enable && clock.wday == a.wday);
        require(clock.starttime == a.starttime && std::strcmp(clock.text, a.text) == 0);
    }
    return 0;
}
