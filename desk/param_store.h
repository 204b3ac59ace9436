// The desk camera's parameter store: a text file with one line "key=value"
// per setting. Backslash, line feed and carriage return in a value are written as
// \\, \n and \r.
//
// The working copy is in RAM, where every process of the camera sees a change at
// once; the saved copy is in flash. The first use after a start makes the working
// copy from the saved one, or from the firmware's defaults if there is none.
// Writers hold a file lock. Readers need none, because writers replace the whole
// file. A value that is too long for the reader's buffer is cut or, if the file
// STORE_REFUSES exists, rejected.
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
