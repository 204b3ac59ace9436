#include "time/zone.h"

#include "platform/relay_ipc.h"
#include "settings/stored.h"

#include <stdlib.h>
#include <string.h>

using namespace cfg_set;

constexpr size_t ROW_SIZE = 512;
constexpr size_t COMMAND_SIZE = 256;
constexpr int OFFSET_MAX = 1440; // minutes, either way
constexpr int RELAY_TIME_ZONE = 18;
constexpr size_t LENGTH_FIELD = 4; // bytes before the text of the notification

// The TZ string of a matching row, from where the name ends.
static void copy_tz_string(const char *rest, char *out)
{
    if (*rest)
        rest++; // the separator, whatever it is
    size_t length = strcspn(rest, "\r\n");
    if (length > TZ_STRING_SIZE - 1)
        length = TZ_STRING_SIZE - 1;
    memcpy(out, rest, length);
    out[length] = '\0';
}

int cfg_set::lookup_tz_string(const char *name, char *out)
{
    FILE *table = fopen("/etc_ro/time_zone", "re");
    if (!table)
        return 0;
    const size_t length = strlen(name);
    char row[ROW_SIZE];
    bool found = false;
    while (!found && fgets(row, sizeof row, table))
        found = strncasecmp(row, name, length) == 0;
    if (found)
        copy_tz_string(row + length, out);
    fclose(table);
    return found;
}

// The TZ string of a bare offset. Its sign follows POSIX: it is what local time
// needs to become GMT, so zones east of Greenwich have a minus.
static void gmt_string(int offset_minutes, bool daylight_saving, char *out)
{
    int hours = 0;
    int minutes = abs(offset_minutes);
    // Compiled for size, a division calls 700 bytes of the compiler's library.
    for (; minutes >= 60; minutes -= 60)
        hours++;
    format(out, TZ_STRING_SIZE, "GMT%s%02d%02d%s", offset_minutes < 0 ? "+" : "-", hours, minutes,
           daylight_saving ? "DST,M4.1.0/2,M10.5.0/2" : "");
}

// Tells the relay client the zone's name; reports for the caller.
static void notify_relay(const char *zone, const char *function, int line)
{
    const size_t size = strlen(zone) + sizeof "{\"timezone\":\"\"}";
    char *message = (char *)malloc(LENGTH_FIELD + size);
    if (!message) {
        report(function, line, "Fail to allocate memory");
        return;
    }
    const uint32_t length = (uint32_t)(size - 1);
    appipc_set_uint32(message, length);
    format(message + LENGTH_FIELD, size, "{\"timezone\":\"%s\"}", zone);
    void *relay = appipc_init("libmorvenix");
    if (relay) {
        appipc_send(relay, 0, RELAY_TIME_ZONE, LENGTH_FIELD + length, message);
        appipc_destroy(relay);
    } else {
        report(function, line, "Fail to connect to relaycli");
    }
    free(message);
}

int cfg_setTimeZoneDst(int offset_minutes, uint32_t dst)
{
    char zone[VALUE_SIZE] = "";
    param_get("time_zone_str", zone, sizeof zone);
    char tz[TZ_STRING_SIZE];
    if (!*zone || !lookup_tz_string(zone, tz)) {
        if (offset_minutes < -OFFSET_MAX || offset_minutes > OFFSET_MAX || dst > 1) {
            REPORT("invalid param");
            return -1;
        }
        gmt_string(offset_minutes, dst == 1, tz);
    }

    FILE *file = fopen("/tmp/TZ", "w+e");
    if (!file) {
        REPORT("fopen fail");
        return -1;
    }
    fprintf(stderr, "tz_string = %s\n", tz);
    fprintf(file, "%s\n", tz);
    run("rm -rf /etc/localtime");
    char copy[COMMAND_SIZE];
    if (harmless(zone, ZONE_WORD) &&
        format(copy, sizeof copy, "cp /usr/share/zoneinfo/%s /tmp/localtime", zone))
        run(copy);
    fclose(file); // the line gets there now: who sees it can read the zone file too
    notify_relay(zone, HERE);
    return 0;
}

int cfg_restoreTimeZoneDst(void)
{
    char text[VALUE_SIZE];
    if (param_get("time_zone", text, sizeof text) != 0) {
        REPORT("param_get fail");
        return -1;
    }
    const int offset_minutes = to_int(text);
    if (param_get("time_dst", text, sizeof text) != 0) {
        REPORT("param_get fail");
        return -1;
    }
    return result_of("cfg_setTimeZoneDst",
                     cfg_setTimeZoneDst(offset_minutes, (uint32_t)to_int(text)), HERE);
}
