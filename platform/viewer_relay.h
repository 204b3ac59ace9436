/*
 * The viewer relay: tells the relay server's database of viewers what changed
 * in the camera's viewer list. The firmware supplies msg2relay.
 */
#ifndef CFG_SET_PLATFORM_VIEWER_RELAY_H
#define CFG_SET_PLATFORM_VIEWER_RELAY_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

#define VIEWER_RELAY_ADD 1    /* a viewer was added */
#define VIEWER_RELAY_DELETE 2 /* a viewer was removed */

/*
 * One change of the viewer list. 360 bytes, integers in the machine's own byte
 * order. Bytes after a string's terminator carry no meaning.
 */
struct viewer_relay_msg {
    int32_t command; /* VIEWER_RELAY_ADD or VIEWER_RELAY_DELETE */
    char name[256];
    char passcode[32];
    char credential[64];
    int32_t once;
};

/*
 * Hands one record to the relay. 0 for success, non-zero for failure. The
 * record stays the caller's.
 */
int msg2relay(const struct viewer_relay_msg *message);

#ifdef __cplusplus
}
#endif

#endif
