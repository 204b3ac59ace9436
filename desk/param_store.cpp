#include "desk/param_store.h"

#include "desk/log.h"
#include "platform/param_store.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

namespace desk
{

namespace
{

// The writers' lock, held for the lifetime of the object. The kernel releases it
// when the holder dies.
class Lock
{
  public:
    Lock() : file_(open(STORE_LOCK, O_RDWR | O_CREAT | O_CLOEXEC, 0666))
    {
        while (file_ >= 0 && flock(file_, LOCK_EX) != 0) {
            if (errno == EINTR)
                continue;
            close(file_);
            file_ = -1;
        }
    }
    ~Lock()
    {
        if (file_ >= 0)
            close(file_);
    }
    Lock(const Lock &) = delete;
    Lock &operator=(const Lock &) = delete;
    explicit operator bool() const
    {
        return file_ >= 0;
    }

  private:
    int file_;
};

std::string to_line(const std::string &key, const std::string &value)
{
    std::string line = key + "=";
    for (const char c : value) {
        if (c == '\\')
            line += "\\\\";
        else if (c == '\n')
            line += "\\n";
        else if (c == '\r')
            line += "\\r";
        else
            line += c;
    }
    return line + "\n";
}

std::string from_line(std::string_view text)
{
    std::string value;
    for (size_t i = 0; i < text.size(); i++) {
        if (text[i] != '\\' || i + 1 == text.size()) {
            value += text[i];
            continue;
        }
        i++;
        value += text[i] == 'n' ? '\n' : text[i] == 'r' ? '\r' : text[i];
    }
    return value;
}

// Lines without "=" and comments (a "#" before the "=") are not settings.
Settings parse(std::string_view text)
{
    Settings settings;
    while (!text.empty()) {
        const size_t end = std::min(text.find('\n'), text.size());
        const std::string_view line = text.substr(0, end);
        text.remove_prefix(std::min(end + 1, text.size()));
        const size_t equals = line.find('=');
        if (line.empty() || line[0] == '#' || equals == std::string_view::npos)
            continue;
        settings[std::string(line.substr(0, equals))] = from_line(line.substr(equals + 1));
    }
    return settings;
}

// The file's text; none when it cannot be read. `absent` is set if the file does not
// exist; only then may an older file be used instead.
std::optional<std::string> read_file(const char *path, bool &absent)
{
    FILE *file = std::fopen(path, "re");
    absent = !file && errno == ENOENT;
    if (!file)
        return std::nullopt;
    std::string text;
    char block[4096];
    size_t length;
    while ((length = std::fread(block, 1, sizeof block, file)) > 0)
        text.append(block, length);
    const bool failed = std::ferror(file) != 0;
    std::fclose(file);
    if (failed)
        return std::nullopt;
    return text;
}

bool sync_folder(const std::string &path)
{
    const std::string folder = path.substr(0, path.rfind('/'));
    const int handle = open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (handle < 0)
        return false;
    const bool synced = fsync(handle) == 0;
    close(handle);
    return synced;
}

// Replaces `path` with a complete new file. Readers see either the old or the new
// file, even after a full disk or a power cut.
bool replace_file(const std::string &path, const std::string &text)
{
    const std::string temporary = path + ".new";
    FILE *file = std::fopen(temporary.c_str(), "we");
    if (!file)
        return false;
    bool good = std::fwrite(text.data(), 1, text.size(), file) == text.size();
    good = std::fflush(file) == 0 && good;
    good = good && fsync(fileno(file)) == 0;
    good = good && std::rename(temporary.c_str(), path.c_str()) == 0;
    // On vfat, fsync of the renamed file, not of its folder, makes the name durable.
    good = good && fsync(fileno(file)) == 0;
    good = std::fclose(file) == 0 && good;
    if (!good) {
        std::remove(temporary.c_str());
        return false;
    }
    return sync_folder(path);
}

// The working copy, made from the saved one on first use. Call with the lock held.
std::optional<std::string> working_copy()
{
    bool absent = false;
    std::optional<std::string> text = read_file(STORE_WORKING, absent);
    if (text || !absent)
        return text;
    text = read_file(STORE_SAVED, absent);
    if (!text && absent)
        text = read_file(STORE_DEFAULTS, absent);
    if (!text || !replace_file(STORE_WORKING, *text))
        return std::nullopt;
    return text;
}

bool valid_key(const char *key)
{
    return key && *key && *key != '#' && !std::strpbrk(key, "=\r\n");
}

// Changes one setting, or removes it when `value` is null.
int change(const char *key, const char *value)
{
    if (!valid_key(key))
        return -1;
    const Lock lock;
    if (!lock)
        return -1;
    const std::optional<std::string> old_text = working_copy();
    if (!old_text)
        return -1;
    Settings settings = parse(*old_text);
    if (value)
        settings[key] = value;
    else
        settings.erase(key);
    std::string text;
    for (const auto &[name, stored] : settings)
        text += to_line(name, stored);
    if (!replace_file(STORE_WORKING, text))
        return -1;
    log("store",
        value ? "set " + std::string(key) + "=" + escaped(value) : "unset " + std::string(key));
    return 0;
}

} // namespace

std::optional<Settings> all_settings()
{
    bool absent = false;
    std::optional<std::string> text = read_file(STORE_WORKING, absent);
    if (!text && absent) {
        const Lock lock;
        if (lock)
            text = working_copy();
    }
    if (!text)
        return std::nullopt;
    return parse(*text);
}

} // namespace desk

int param_get(const char *key, char *buffer, unsigned int size)
try {
    if (!desk::valid_key(key) || !buffer || size == 0)
        return -1;
    const std::optional<desk::Settings> settings = desk::all_settings();
    if (!settings)
        return -1;
    const auto found = settings->find(key);
    if (found == settings->end())
        return -1;
    if (found->second.size() >= size && access(desk::STORE_REFUSES, F_OK) == 0)
        return -1;
    const size_t length = std::min<size_t>(found->second.size(), size - 1);
    std::memcpy(buffer, found->second.data(), length);
    buffer[length] = '\0';
    return 0;
} catch (...) {
    return -1;
}

int param_set(const char *key, const char *text)
try {
    return text ? desk::change(key, text) : -1;
} catch (...) {
    return -1;
}

int param_unset(const char *key)
try {
    return desk::change(key, nullptr);
} catch (...) {
    return -1;
}

int param_save()
try {
    const desk::Lock lock;
    if (!lock)
        return -1;
    const std::optional<std::string> text = desk::working_copy();
    if (!text || !desk::replace_file(desk::STORE_SAVED, *text))
        return -1;
    desk::log("store", "saved");
    return 0;
} catch (...) {
    return -1;
}
