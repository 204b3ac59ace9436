/*
 * The relay IPC client: one message to the relay client process.
 * The firmware supplies these four functions; cfg_set only calls them.
 */
#ifndef CFG_SET_PLATFORM_RELAY_IPC_H
#define CFG_SET_PLATFORM_RELAY_IPC_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* Connects under `client_name`. NULL when the relay client cannot be reached. */
void *appipc_init(const char *client_name);

/* Stores `value` in the first four bytes of `buffer`, in the relay's byte order. */
void appipc_set_uint32(void *buffer, uint32_t value);

/*
 * Sends `length` bytes of `buffer` as one message of type `type`. `option` is
 * the relay's own and always 0 here. 0 for success, non-zero for failure.
 */
int appipc_send(void *handle, int option, int type, unsigned int length, const void *buffer);

/* Closes the connection and frees the handle. */
void appipc_destroy(void *handle);

#ifdef __cplusplus
}
#endif

#endif
