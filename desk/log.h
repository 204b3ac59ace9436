// The camera's log: what happened in it, one line an event, in order.
#pragma once

#include <string>
#include <string_view>

namespace desk
{

// Appends "HH:MM:SS.mmm KIND TEXT" in one write, so that lines of several
// processes never mix. Control characters of `text` are escaped. A log that
// cannot be written is no failure of what is logged.
void log(std::string_view kind, std::string_view text);

// `word` as a shell would have to be given it, always on one line.
std::string quoted(std::string_view word);

// `text` with backslashes and control characters escaped as in C.
std::string escaped(std::string_view text);

} // namespace desk
