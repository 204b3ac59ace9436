#include "settings/stored.h"

#include <stdlib.h>
#include <string.h>

using namespace cfg_set;

#define SCHEDULES "sched"
#define ALARM_CLOCKS "clock"

constexpr int SCHEDULE_SLOTS = 9; // emptied before a list is stored
constexpr int ALARM_CLOCK_SLOTS = 7;
constexpr size_t KEY_SIZE = sizeof SCHEDULES "00";
static_assert(sizeof SCHEDULES == sizeof ALARM_CLOCKS, "the keys of both lists");

constexpr int SCHEDULE_NUMBERS = 7;
constexpr int ALARM_CLOCK_NUMBERS = 3;
constexpr size_t ALARM_CLOCK_VALUE_SIZE = 512;

constexpr uint32_t SWITCH_MAX = 1;
constexpr uint32_t MINUTE_MAX = 24 * 60;
constexpr uint32_t DAYS_MAX = 0x7f;

// The numbers of an entry are read as an array.
static_assert(sizeof(sched_entry) == 28 && SCHEDULE_NUMBERS * sizeof(int32_t) == 28, "numbers");
static_assert(sizeof(alarm_clock_entry) == 524, "alarm_clock_entry");
static_assert(offsetof(alarm_clock_entry, text) == ALARM_CLOCK_NUMBERS * sizeof(int32_t), "text");

// False for a slot of more than two digits, which has no key.
static bool slot_key(char *key, const char *list, int slot)
{
    return format(key, KEY_SIZE, "%s%02d", list, slot);
}

static void clear_slots(const char *list, int slots)
{
    for (int i = 0; i < slots; i++) {
        char key[KEY_SIZE];
        slot_key(key, list, i);
        param_unset(key);
    }
}

static bool set_slot(const char *list, int slot, const char *value, const char *function, int line)
{
    char key[KEY_SIZE];
    if (slot_key(key, list, slot))
        return put_setting(key, value, function, line);
    report(function, line, "param_set fail");
    return false;
}

// The value of a slot. False where the list ends: at an empty slot, at one
// without a key, or at one that cannot be read, which is reported for the caller.
static bool get_slot(const char *list, int slot, char *value, unsigned size, const char *function,
                     int line)
{
    char key[KEY_SIZE];
    return slot_key(key, list, slot) && stored_text(key, value, size, function, line) &&
           *value != '\0';
}

// sscanf's "%d,%d,..." for `count` numbers. Numbers that the text does not reach
// are unchanged. Returns the rest of the text, or null when it ended early.
static const char *scan_numbers(const char *text, int32_t *numbers, int count)
{
    for (int i = 0; text && i < count; i++)
        text = scan_number(text, i == 0 ? "" : ",", &numbers[i]);
    return text;
}

int sched_check_config(int count, const struct sched_entry *list)
{
    for (int i = 0; i < count; i++) {
        const sched_entry *entry = &list[i];
        if (entry->enable > SWITCH_MAX) {
            REPORT("invalid sched enable %d", (int)entry->enable);
            return -1;
        }
        if (entry->starttime > MINUTE_MAX) {
            REPORT("invalid sched starttime %d", (int)entry->starttime);
            return -2;
        }
        if (entry->stoptime > MINUTE_MAX) {
            REPORT("invalid sched stoptime %d", (int)entry->stoptime);
            return -3;
        }
        if (entry->days > DAYS_MAX) {
            REPORT("invalid sched days %d", (int)entry->days);
            return -4;
        }
        if (entry->repeat > SWITCH_MAX) {
            REPORT("invalid sched repeat %d", (int)entry->repeat);
            return -5;
        }
    }
    return 0;
}

int sched_set_config(int count, const struct sched_entry *list)
{
    clear_slots(SCHEDULES, SCHEDULE_SLOTS);
    for (int i = 0; i < count; i++) {
        const sched_entry *entry = &list[i];
        char value[VALUE_SIZE];
        format(value, sizeof value, "%d,%d,%d,%d,%d,%d,%d", (int)entry->enable, entry->param1,
               entry->param2, (int)entry->starttime, (int)entry->stoptime, (int)entry->days,
               (int)entry->repeat);
        if (!set_slot(SCHEDULES, i, value, HERE))
            break;
    }
    run("killall -35 ctrl_sched");
    return 0;
}

int sched_get_config(int *count, struct sched_entry *list)
{
    const int room = *count;
    *count = 0;
    for (int i = 0; i < room; i++) {
        char value[VALUE_SIZE];
        if (!get_slot(SCHEDULES, i, value, sizeof value, HERE))
            return 0;
        int32_t numbers[SCHEDULE_NUMBERS];
        memcpy(numbers, &list[i], sizeof numbers);
        scan_numbers(value, numbers, SCHEDULE_NUMBERS);
        memcpy(&list[i], numbers, sizeof numbers);
        ++*count;
    }
    return 0;
}

int alarm_check_config(int count, const struct alarm_clock_entry *list)
{
    for (int i = 0; i < count; i++) {
        const alarm_clock_entry *entry = &list[i];
        if (entry->enable > SWITCH_MAX) {
            REPORT("invalid sched enable %d", (int)entry->enable);
            return -1;
        }
        if (entry->wday > DAYS_MAX) {
            REPORT("invalid alarm clock wday %d", (int)entry->wday);
            return -2;
        }
        if (entry->starttime > MINUTE_MAX) {
            REPORT("invalid alarm clock starttime %d", (int)entry->starttime);
            return -32; // not -3: callers know it so
        }
    }
    return 0;
}

int alarm_set_config(int count, const struct alarm_clock_entry *list)
{
    clear_slots(ALARM_CLOCKS, ALARM_CLOCK_SLOTS);
    for (int i = 0; i < count; i++) {
        const alarm_clock_entry *entry = &list[i];
        char value[ALARM_CLOCK_VALUE_SIZE]; // a text that does not fit is cut there
        format(value, sizeof value, "%d,%d,%d,%.*s", (int)entry->enable, (int)entry->wday,
               (int)entry->starttime, (int)sizeof entry->text, entry->text);
        if (!set_slot(ALARM_CLOCKS, i, value, HERE))
            break;
    }
    run("killall -SIGUSR1  alarm");
    return 0;
}

int alarm_get_config(int *count, struct alarm_clock_entry *list)
{
    const int room = *count;
    *count = 0;
    for (int i = 0; i < room; i++) {
        char value[ALARM_CLOCK_VALUE_SIZE];
        if (!get_slot(ALARM_CLOCKS, i, value, sizeof value, HERE))
            return 0;
        int32_t numbers[ALARM_CLOCK_NUMBERS];
        memcpy(numbers, &list[i], sizeof numbers);
        const char *rest = scan_numbers(value, numbers, ALARM_CLOCK_NUMBERS);
        memcpy(&list[i], numbers, sizeof numbers);
        const int length = rest && *rest == ',' ? (int)strcspn(rest + 1, "\n") : 0;
        if (length > 0)
            format(list[i].text, sizeof list[i].text, "%.*s", length, rest + 1);
        ++*count;
    }
    return 0;
}
