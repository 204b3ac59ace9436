#include "cfg_set.h"

#include "platform/param_store.h"
#include "platform/relay_ipc.h"
#include "platform/viewer_relay.h"

static_assert(sizeof(viewer_relay_msg) == 360, "the relay's record");

extern int (*const header_in_cpp)(uint32_t value);
int (*const header_in_cpp)(uint32_t value) = cfg_setMicEnable;
