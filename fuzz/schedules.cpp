// A stored schedule and a stored alarm clock of any text: what sscanf would
// read where it is defined, nothing else touched, and the same when the entry
// is stored and read again.

#include "cfg_set.h"
#include "target.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <regex>

static std::string stored;

// clang-format off
extern "C" {
int system(const char *) { return 0; }
int param_get(const char *, char *buffer, unsigned size)
{
    return std::snprintf(buffer, size, "%s", stored.c_str()) < 0;
}
int param_set(const char *, const char *text) { stored = text; return 0; }
int param_unset(const char *) { return 0; }
}
// clang-format on

// Reads into the first of two entries, and stores and reads that again.
template <typename Entry>
static Entry read_entry(int (*get)(int *, Entry *), int (*set)(int, const Entry *), Entry was)
{
    Entry list[] = {was, was};
    int count = 1;
    get(&count, list);
    require(count == (stored.empty() ? 0 : 1) && std::memcmp(&list[1], &was, sizeof was) == 0);
    Entry again = list[0];
    set(1, list);
    get(&count, &again);
    require(std::memcmp(&again, list, sizeof again) == 0);
    return list[0];
}

void try_input(const std::string &input)
{
    const std::string text = input.substr(0, std::min<size_t>(input.find('\0'), 600));
    // sscanf must not be given what int cannot hold.
    static const std::regex LARGE("[0-9]{10}");
    const bool comparable = !std::regex_search(text, LARGE);
    stored = text.substr(0, 255);
    int n[7] = {90, 91, 92, 93, 94, 95, 96};
    sched_entry s;
    std::memcpy(&s, n, sizeof s);
    if (comparable)
        std::sscanf(stored.c_str(), "%d,%d,%d,%d,%d,%d,%d", &n[0], &n[1], &n[2], &n[3], &n[4],
                    &n[5], &n[6]);
    s = read_entry(sched_get_config, sched_set_config, s);
    require(!comparable || std::memcmp(&s, n, sizeof s) == 0);

    stored = text.substr(0, 511);
    alarm_clock_entry a = {90, 91, 92, "was"};
    if (comparable)
        std::sscanf(stored.c_str(), "%u,%u,%u,%511[^\n]", &a.enable, &a.wday, &a.starttime, a.text);
    const auto read =
        read_entry<alarm_clock_entry>(alarm_get_config, alarm_set_config, {90, 91, 92, "was"});
    require(!comparable ||
            (std::memcmp(&read, &a, 12) == 0 && std::strcmp(read.text, a.text) == 0));
}
