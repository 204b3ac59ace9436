#include "watched_file.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace cfgctl
{

namespace
{

using Clock = std::chrono::steady_clock;

constexpr std::chrono::seconds PATIENCE{1};
constexpr std::chrono::milliseconds REDRAW{100};
constexpr size_t BUFFER_SIZE = 65536;
constexpr int BAR_WIDTH = 40;

struct Watched {
    int file;
    uint64_t total; // 0 when not known
    uint64_t done = 0;
    Clock::time_point next = Clock::now() + PATIENCE; // time to redraw the bar
    bool drawn = false;
};

void draw(const Watched &watched)
{
    const double part =
        std::min(1.0, static_cast<double>(watched.done) /
                          static_cast<double>(std::max<uint64_t>(watched.total, 1)));
    const std::string bar(static_cast<size_t>(part * BAR_WIDTH), '#');
    std::fputs("\r", stderr);
    if (watched.total > 0)
        std::fprintf(stderr, "[%-*s] %3d%%  ", BAR_WIDTH, bar.c_str(),
                     static_cast<int>(part * 100));
    std::fprintf(stderr, "%.1f MB", static_cast<double>(watched.done) / 1e6);
}

ssize_t read_watched(void *cookie, char *buffer, size_t size)
{
    auto *watched = static_cast<Watched *>(cookie);
    const ssize_t count = read(watched->file, buffer, size);
    watched->done += static_cast<uint64_t>(std::max<ssize_t>(count, 0));
    if (Clock::now() >= watched->next && isatty(STDERR_FILENO) == 1) {
        draw(*watched);
        watched->drawn = true;
        watched->next = Clock::now() + REDRAW;
    }
    return count;
}

int seek_watched(void *cookie, off64_t *offset, int whence)
{
    auto *watched = static_cast<Watched *>(cookie);
    const off64_t position = lseek64(watched->file, *offset, whence);
    if (position < 0)
        return -1;
    *offset = position;
    watched->done = static_cast<uint64_t>(position);
    return 0;
}

int close_watched(void *cookie)
{
    auto *watched = static_cast<Watched *>(cookie);
    if (watched->drawn)
        std::fputs("\r\033[K", stderr);
    const int result = close(watched->file);
    delete watched;
    return result;
}

} // namespace

FILE *open_watched(const std::string &path, uint32_t limit)
{
    const int file = open64(path.c_str(), O_RDONLY | O_CLOEXEC);
    struct stat64 status = {};
    if (file < 0 || fstat64(file, &status) != 0)
        return nullptr;
    const auto size = static_cast<uint64_t>(status.st_size);
    const bool cut = limit > 0 && (limit < size || !S_ISREG(status.st_mode));
    auto *watched = new Watched{file, cut ? limit : size};
    FILE *stream = fopencookie(watched, "r", {read_watched, nullptr, seek_watched, close_watched});
    if (stream)
        std::setvbuf(stream, nullptr, _IOFBF, BUFFER_SIZE);
    return stream;
}

} // namespace cfgctl
