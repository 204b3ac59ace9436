// The camera's log: one line per event, in order.
#pragma once

#include <string>
#include <string_view>

namespace desk
{

// Appends "HH:MM:SS.uuuuuu KIND TEXT" in one write, so that lines of several
// processes never mix. Escapes control characters in `text`. Ignores a failure to
// write the log.
void log(std::string_view kind, std::string_view text);

// Whether the camera is traced: the file /etc/desk/trace exists. The log then has
// more than commands, stored values and messages.
bool traced();

// The end of a line about something that took time: " (WHAT 1.234 ms)" or
// " (exit STATUS, 1.234 ms)", counted from a result of seconds().
std::string lasted(const std::string &what, double since);
std::string ended(int status, double since);
double seconds();

// `word` quoted for a shell, always on one line.
std::string quoted(std::string_view word);

// `text` with backslashes and control characters escaped as in C.
std::string escaped(std::string_view text);

} // namespace desk
