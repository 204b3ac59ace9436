// Access to the parameter store, with reports. Separate from the frame, so that a
// program that uses no setting links without a store.
#pragma once

#include "platform/param_store.h"
#include "settings/frame.h"

namespace cfg_set
{

// The stored text of `key`. A failed read is reported for the caller as
// "param_get fail" and leaves `text` unchanged.
bool stored_text(const char *key, char *text, unsigned size, const char *function, int line);

// Stores a text; a refusal is reported for the caller as "param_set fail".
bool put_setting(const char *key, const char *text, const char *function, int line);

// The number at the start of the stored value, of which `size` - 1 characters
// count (`size` at most VALUE_SIZE); 0 when it cannot be read. Reports nothing.
int stored_int(const char *key, unsigned size);

// First half of a restorer: the stored number of `key`, base 10. A failed read
// is reported for the caller as "param_get fail".
bool stored_number(const char *key, uint32_t *value, const char *function, int line);

} // namespace cfg_set
