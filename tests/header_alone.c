#include "cfg_set.h"

#include "platform/param_store.h"
#include "platform/relay_ipc.h"
#include "platform/viewer_relay.h"

int (*const header_in_c)(uint32_t value) = cfg_setMicEnable;
