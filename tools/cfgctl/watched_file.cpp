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
    bool terminal;
    uint64_t total; // 0 when not known
    uint64_t done;
    Clock::time_point next; // when the bar is drawn again
    bool drawn;
};

void draw(const Watched &watched)
{
    const double megabytes = static_cast<double>(watched.done) / 1e6;
    if (watched.total == 0) {
        std::fprintf(stderr, "\r%.1f MB", megabytes);
        return;
    }
    const uint64_t done = std::min(watched.done, watched.total);
    const std::string bar(static_cast<size_t>(done * BAR_WIDTH / watched.total), '#');
    std::fprintf(stderr, "\r[%-*s] %3d%%  %.1f MB", BAR_WIDTH, bar.c_str(),
                 static_cast<int>(done * 100 / watched.total), megabytes);
}

ssize_t read_watched(void *cookie, char *buffer, size_t size)
{
    auto *watched = static_cast<Watched *>(cookie);
    const ssize_t count = read(watched->file, buffer, size);
    if (count > 0)
        watched->done += static_cast<uint64_t>(count);
    const Clock::time_point now = Clock::now();
    if (watched->terminal && now >= watched->next) {
        draw(*watched);
        watched->drawn = true;
        watched->next = now + REDRAW;
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
    if (file < 0)
        return nullptr;
    struct stat64 status = {};
    uint64_t total = limit;
    if (fstat64(file, &status) == 0 && S_ISREG(status.st_mode)) {
        const auto size = static_cast<uint64_t>(status.st_size);
        total = limit == 0 ? size : std::min<uint64_t>(size, limit);
    }
    auto *watched =
        new Watched{file, isatty(STDERR_FILENO) == 1, total, 0, Clock::now() + PATIENCE, false};
    FILE *stream = fopencookie(watched, "r", {read_watched, nullptr, seek_watched, close_watched});
    if (!stream) {
        const int error = errno;
        close_watched(watched);
        errno = error;
        return nullptr;
    }
    std::setvbuf(stream, nullptr, _IOFBF, BUFFER_SIZE);
    return stream;
}

} // namespace cfgctl
