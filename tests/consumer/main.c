/* Stores and applies a setting, with a platform of the program's own. */
#include <cfg_set.h>
#include <cfg_set/platform/param_store.h>
#include <cfg_set/platform/relay_ipc.h>
#include <cfg_set/platform/viewer_relay.h>
#include <stdio.h>
#include <string.h>

static char stored[256];

int param_get(const char *key, char *buffer, unsigned int size)
{
    (void)key;
    snprintf(buffer, size, "%s", stored);
    return 0;
}

int param_set(const char *key, const char *text)
{
    snprintf(stored, sizeof stored, "%s=%s", key, text);
    return 0;
}

int param_save(void)
{
    return 0;
}

int param_unset(const char *key)
{
    (void)key;
    return 0;
}

int msg2relay(const struct viewer_relay_msg *message)
{
    (void)message;
    return 0;
}

void *appipc_init(const char *client_name)
{
    (void)client_name;
    return NULL;
}

void appipc_set_uint32(void *buffer, uint32_t value)
{
    memcpy(buffer, &value, sizeof value);
}

int appipc_send(void *handle, int option, int type, unsigned int length, const void *buffer)
{
    (void)handle, (void)option, (void)type, (void)length, (void)buffer;
    return -1;
}

void appipc_destroy(void *handle)
{
    (void)handle;
}

int main(void)
{
    const int saved = cfg_saveMicEnable(1);
    const int refused = cfg_setMicEnable(2);
    const int settings = saved == 0 && refused == -1 && strcmp(stored, "io_mic_enable=1") == 0;
    return settings && crc32_tab[1] == 0x77073096 ? 0 : 1;
}
