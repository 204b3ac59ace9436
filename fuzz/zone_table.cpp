// A zone name, a line feed, and a table of zones: the row found must be the one
// that a reading of the whole table in memory finds.

#include "time/zone.h"

#include "target.h"

#include <cstring>
#include <optional>
#include <strings.h>
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

void try_input(const std::string &input)
{
    const size_t feed = input.find('\n');
    if (feed == std::string::npos)
        return;
    std::string name = input.substr(0, std::min<size_t>(feed, 255));
    name.resize(strlen(name.c_str())); // the store keeps no NUL
    const std::string table = input.substr(feed + 1);
    put("/etc_ro/time_zone", table);

    std::vector<char> out(TZ_STRING_SIZE, '?');
    const int found = lookup_tz_string(name.c_str(), out.data());
    const auto row = expected(name, table);
    require(found == (row ? 1 : 0) && (row ? *row == out.data() : out[0] == '?'));
}
