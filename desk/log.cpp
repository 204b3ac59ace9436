#include "desk/log.h"

#include <cstdio>
#include <ctime>
#include <fcntl.h>
#include <unistd.h>

namespace desk
{

static constexpr const char *LOG_FILE = "/var/log/camera.log";

static bool is_control(char c)
{
    return static_cast<unsigned char>(c) < 0x20 || c == 0x7f;
}

std::string escaped(std::string_view text)
{
    std::string result;
    for (const char c : text) {
        if (c == '\\')
            result += "\\\\";
        else if (c == '\n')
            result += "\\n";
        else if (c == '\r')
            result += "\\r";
        else if (c == '\t')
            result += "\\t";
        else if (is_control(c)) {
            char hex[8];
            std::snprintf(hex, sizeof hex, "\\x%02x", static_cast<unsigned char>(c));
            result += hex;
        } else
            result += c;
    }
    return result;
}

std::string quoted(std::string_view word)
{
    constexpr std::string_view PLAIN = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ"
                                       "0123456789_-+=./:,@%";
    if (!word.empty() && word.find_first_not_of(PLAIN) == std::string_view::npos)
        return std::string(word);
    bool control = false;
    for (const char c : word)
        control |= is_control(c);
    std::string result = control ? "$'" : "'";
    for (const char c : control ? escaped(word) : std::string(word)) {
        if (c == '\'')
            result += control ? "\\'" : "'\\''";
        else
            result += c;
    }
    return result + "'";
}

bool traced()
{
    return access("/etc/desk/trace", F_OK) == 0;
}

std::string lasted(const std::string &what, double since)
{
    char text[32];
    std::snprintf(text, sizeof text, " %.3f ms)", (seconds() - since) * 1e3);
    return " (" + what + text;
}

std::string ended(int status, double since)
{
    return lasted("exit " + std::to_string(status) + ",", since);
}

double seconds()
{
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) / 1e9;
}

void log(std::string_view kind, std::string_view text)
{
    timespec now{};
    clock_gettime(CLOCK_REALTIME, &now);
    tm utc{};
    gmtime_r(&now.tv_sec, &utc);
    char stamp[32];
    std::snprintf(stamp, sizeof stamp, "%02d:%02d:%02d.%06d ", utc.tm_hour, utc.tm_min, utc.tm_sec,
                  static_cast<int>(now.tv_nsec / 1000));

    // Does not block, even if the log is a pipe without a reader.
    const int flags = O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC | O_NONBLOCK;
    const int file = open(LOG_FILE, flags, 0644);
    if (file < 0)
        return;
    const std::string line = stamp + std::string(kind) + " " + std::string(text) + "\n";
    const ssize_t written = write(file, line.data(), line.size());
    (void)written;
    close(file);
}

} // namespace desk
