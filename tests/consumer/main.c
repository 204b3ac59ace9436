/* Stores and applies a setting, with the platform that a port begins with. */
#include <cfg_set.h>
#include <cfg_set/platform/param_store.h>
#include <cfg_set/platform/relay_ipc.h>
#include <cfg_set/platform/viewer_relay.h>
#include <stdio.h>
#include <string.h>
#include <unistd.h>

/* Whether the store has the text under the key, or nothing for NULL. */
static int stored(const char *key, const char *text)
{
    char value[6];
    return param_get(key, value, sizeof value) == 0 ? text && strcmp(value, text) == 0 : !text;
}

int main(void)
{
    char version[32];
    uint32_t number;
    snprintf(version, sizeof version, "%d.%d.%d", CFG_SET_VERSION_MAJOR, CFG_SET_VERSION_MINOR,
             CFG_SET_VERSION_PATCH);
    int right = strcmp(cfg_version(&number), version) == 0 && number == CFG_SET_VERSION_NUMBER &&
                cfg_version(NULL) && crc32_tab[1] == 0x77073096;

    right &=
        param_set("io", "longer") == 0 && cfg_saveMicEnable(1) == 0 && cfg_setMicEnable(2) == -1;
    right &= param_set("io", "twice") == 0 && param_set("not", "saved") == 0 &&
             param_unset("io_mic_enable") == 0;
    right &= param_set("io", NULL) != 0 && param_set("io", "two\nlines") != 0 &&
             stored("io", "twice") && stored("not", "saved") && stored("io_mic_enable", NULL);
    unlink("/var/run/cfg_set.store"); /* a restart */
    right &= stored("io_mic_enable", "1") && stored("io", "longe") && stored("not", NULL);
    return right ? 0 : 1;
}
