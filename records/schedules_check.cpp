#include "settings/frame.h"

using namespace cfg_set;

constexpr uint32_t SWITCH_MAX = 1;
constexpr uint32_t MINUTE_MAX = 24 * 60;
constexpr uint32_t DAYS_MAX = 0x7f;

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
