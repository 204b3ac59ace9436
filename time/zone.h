// Inside the library only: the table of TZ strings.
#pragma once

#include <stddef.h>

namespace cfg_set
{

// Bytes of a TZ string, with the terminator.
constexpr size_t TZ_STRING_SIZE = 128;

// Puts the TZ string of the first row of /etc_ro/time_zone that begins with
// `name`, in any case, into `out` (TZ_STRING_SIZE bytes; a longer one is cut).
// 1, or 0 (and `out` as it was) when no row does or the table cannot be read.
int lookup_tz_string(const char *name, char *out);

} // namespace cfg_set
