// The camera's log: what happened in it, one line an event, in order.
#pragma once

#include <string>
#include <string_view>

namespace desk
{

// Appends "HH:MM:SS.uuuuuu KIND TEXT" in one write, so that lines of several
// processes never mix. Control characters of `text` are escaped. A log that
// cannot be written is no failure of what is logged.
void log(std::string_view kind, std::string_view text);

// Whether the log is to have more than what was run, stored and told: while
// there is a file /etc/desk/trace.
bool traced();

// What a line about something that lasted ends with: " (WHAT 1.234 ms)", or
// " (exit STATUS, 1.234 ms)", since a time that seconds() gave.
std::string lasted(const std::string &what, double since);
std::string ended(int status, double since);
double seconds();

// `word` as a shell would have to be given it, always on one line.
std::string quoted(std::string_view word);

// `text` with backslashes and control characters escaped as in C.
std::string escaped(std::string_view text);

} // namespace desk
