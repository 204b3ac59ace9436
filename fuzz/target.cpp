#include "target.h"

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>

void require(bool holds)
{
    if (!holds)
        std::abort();
}

void put(const std::string &path, const std::string &text)
{
    std::filesystem::create_directories(std::filesystem::path(path).parent_path());
    require(static_cast<bool>(std::ofstream(path, std::ios::binary) << text << std::flush));
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    static FILE *const quiet = std::freopen("/dev/null", "w", stdout);
    stderr = quiet;
    try_input({reinterpret_cast<const char *>(data), size});
    return 0;
}
