// For verbs that read a whole file: shows how far they are.
#pragma once

#include <cstdint>
#include <cstdio>
#include <string>

namespace cfgctl
{

// Opens the file for reading. When standard error is a terminal and reading
// takes longer than a second, a progress bar stands there until the file is
// closed. `limit` is how many bytes will be read at most, 0 for all. Null, with
// errno, when it cannot be opened.
FILE *open_watched(const std::string &path, uint32_t limit);

} // namespace cfgctl
