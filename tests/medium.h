// A file on a medium that delivers little at a time, or fails.
#pragma once

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <string>

struct Medium {
    std::string bytes;
    size_t most;           // bytes that a read delivers
    int good;              // calls; the later ones fail
    int calls = 0;         // made
    size_t at = 0;         // the position
    char buffer[512] = {}; // of the stream
};

inline ssize_t read_medium(void *cookie, char *buffer, size_t size)
{
    auto *medium = static_cast<Medium *>(cookie);
    if (medium->calls++ >= medium->good) {
        errno = EIO;
        return -1;
    }
    const size_t count = medium->bytes.copy(buffer, std::min(size, medium->most), medium->at);
    medium->at += count;
    return static_cast<ssize_t>(count);
}

inline int seek_medium(void *cookie, off64_t *offset, int)
{
    auto *medium = static_cast<Medium *>(cookie);
    if (medium->calls++ >= medium->good) {
        errno = EIO;
        return -1;
    }
    medium->at = static_cast<size_t>(*offset);
    *offset = static_cast<off64_t>(medium->at);
    return 0;
}

inline FILE *open_medium(Medium &medium)
{
    FILE *file = fopencookie(&medium, "r", {read_medium, nullptr, seek_medium, nullptr});
    std::setvbuf(file, medium.buffer, _IOFBF, sizeof medium.buffer);
    return file;
}
