// Shows the progress of verbs that read a whole file.
#pragma once

#include <cstdint>
#include <cstdio>
#include <string>

namespace cfgctl
{

// Opens the file for reading. When standard error is a terminal and reading
// takes longer than a second, shows a progress bar until the file is closed.
// `limit` is the maximum number of bytes to read, 0 for all. Null, with errno, when
// it cannot be opened.
FILE *open_watched(const std::string &path, uint32_t limit);

} // namespace cfgctl
