/*
 * What the firmware's platform library was promised to supply, by every release of
 * this major version: the tests include it together with platform/. The library
 * requires no other function, and these fit. A change here takes a new major version.
 */
#include "platform/param_store.h"
#include "platform/relay_ipc.h"
#include "platform/viewer_relay.h"

#include <stddef.h>

int param_get(const char *key, char *buffer, unsigned int size);
int param_set(const char *key, const char *text);
int param_save(void);
int param_unset(const char *key);
void *appipc_init(const char *client_name);
void appipc_set_uint32(void *buffer, uint32_t value);
int appipc_send(void *handle, int option, int type, unsigned int length, const void *buffer);
void appipc_destroy(void *handle);
int msg2relay(const struct viewer_relay_msg *message);

#define AT(field, offset, bytes)                                                                   \
    _Static_assert(offsetof(struct viewer_relay_msg, field) == (offset) &&                         \
                       sizeof((struct viewer_relay_msg *)0)->field == (bytes),                     \
                   #field)
AT(command, 0, 4);
AT(name, 4, 256);
AT(passcode, 260, 32);
AT(credential, 292, 64);
AT(once, 356, 4);
_Static_assert(sizeof(struct viewer_relay_msg) == 360, "size");
_Static_assert(VIEWER_RELAY_ADD == 1 && VIEWER_RELAY_DELETE == 2, "commands");
