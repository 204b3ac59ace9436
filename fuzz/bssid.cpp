// Any text as a BSSID: refused and unchanged, or six groups of two digits.

#include "cfg_set.h"

#include <algorithm>
#include <cstdlib>
#include <string>
#include <vector>

static bool normal(const std::string &text)
{
    if (text.size() != 17)
        return false;
    for (size_t i = 0; i < text.size(); i++) {
        const char *allowed = i % 3 == 2 ? ":" : "0123456789abcdef";
        if (std::string(allowed).find(text[i]) == std::string::npos)
            return false;
    }
    return text != "00:00:00:00:00:00";
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    std::vector<char> buffer(std::max<size_t>(size + 1, 18));
    std::copy(data, data + size, buffer.begin());
    const std::vector<char> before = buffer;
    if (validate_bssid(buffer.data()) == 0) {
        if (buffer != before)
            std::abort();
        return 0;
    }
    const std::string text = buffer.data();
    if (!normal(text))
        std::abort();
    // What is normal stays as it is, but for the leading 0 that is refused.
    if (text[0] != '0' && (validate_bssid(buffer.data()) != 1 || text != buffer.data()))
        std::abort();
    return 0;
}
