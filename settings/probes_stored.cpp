#include "settings/stored.h"

#include <string.h>

using namespace cfg_set;

int CheckFixCaptureSatus(void)
{
    return stored_int("fix_capture_status", 2);
}

// Reads "{%d,%d}{%d,%d,%d,%d}"; the second group is the zones.
static bool scan_zones(const char *text, int (&zone)[4])
{
    int unused;
    text = scan_number(text, "{", &unused);
    if (text)
        text = scan_number(text, ",", &unused);
    const char *before = "}{";
    for (int i = 0; text && i < 4; i++) {
        text = scan_number(text, before, &zone[i]);
        before = ",";
    }
    return text != nullptr;
}

int disable_face_hw_check(void)
{
    char text[VALUE_SIZE] = "";
    if (param_get("motor_zones", text, sizeof text) != 0)
        return 0;
    int zone[4];
    if (!scan_zones(text, zone)) {
        fputs("sscanf value fail \n", stderr);
        return 0;
    }
    if (zone[0] || zone[1] || zone[2] || zone[3]) {
        run("GMCtrl c 0");
        return 0;
    }
    char enable[8] = "";
    param_get("alert_face_enable", enable, sizeof enable);
    if (strcmp(enable, "1") == 0)
        run("GMCtrl c 1");
    return 0;
}
