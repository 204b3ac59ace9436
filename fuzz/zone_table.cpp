// A zone name, a line feed, and a table of zones: the row found must be the one
// that a reading of the whole table in memory finds.

#include "time/zone.h"

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <optional>
#include <string>
#include <strings.h>
#include <sys/stat.h>
#include <vector>

using namespace cfg_set;

// As a line buffer of 512 bytes sees the table: pieces of at most 511
// characters, each up to its first NUL.
static std::optional<std::string> expected(const std::string &name, const std::string &table)
{
    for (size_t start = 0; start < table.size();) {
        const size_t feed = table.find('\n', start);
        const size_t end = feed == std::string::npos ? table.size() : feed + 1;
        const std::string piece = table.substr(start, std::min<size_t>(end - start, 511));
        start += piece.size();
        const std::string row = piece.substr(0, piece.find('\0'));
        if (strncasecmp(row.c_str(), name.c_str(), name.size()) != 0)
            continue;
        const std::string rest = row.size() > name.size() ? row.substr(name.size() + 1) : "";
        return rest.substr(0, std::min<size_t>(rest.find_first_of("\r\n"), 127));
    }
    return std::nullopt;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const std::string input(reinterpret_cast<const char *>(data), size);
    const size_t feed = input.find('\n');
    if (feed == std::string::npos)
        return 0;
    std::string name = input.substr(0, std::min<size_t>(feed, 255));
    name.resize(strlen(name.c_str())); // the store keeps no NUL
    const std::string table = input.substr(feed + 1);
    mkdir("/etc_ro", 0755);
    FILE *file = std::fopen("/etc_ro/time_zone", "w");
    std::fwrite(table.data(), 1, table.size(), file);
    std::fclose(file);

    std::vector<char> out(TZ_STRING_SIZE, '?');
    const int found = lookup_tz_string(name.c_str(), out.data());
    const auto row = expected(name, table);
    if (found != (row ? 1 : 0) || (row && *row != out.data()) || (!row && out[0] != '?'))
        std::abort();
    return 0;
}
