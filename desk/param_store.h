// The desk camera's parameter store: one text file of the settings, a line a
// setting, "key=value", with backslash, line feed and carriage return of a
// value written as \\, \n and \r.
//
// The working copy is in RAM, where every process of the camera sees a change at
// once; the saved copy is in flash. The first use after a start makes the working
// copy from the saved one, or from the firmware's defaults when nothing was ever
// saved. Writers hold a file lock. Readers need none, because a copy is only ever
// replaced whole. A value that the reader's buffer cannot hold is cut or, if there
// is the file STORE_REFUSES, refused.
#pragma once

#include <map>
#include <optional>
#include <string>

namespace desk
{

constexpr const char *STORE_DEFAULTS = "/etc_ro/param.default";
constexpr const char *STORE_SAVED = "/flash/param";
constexpr const char *STORE_WORKING = "/var/run/param";
constexpr const char *STORE_LOCK = "/var/run/param.lock";
constexpr const char *STORE_REFUSES = "/etc/desk/store.refuses";

using Settings = std::map<std::string, std::string>;

// All settings of the working copy; none when it cannot be read.
std::optional<Settings> all_settings();

} // namespace desk
