#include "doubles.h"

#include "platform/param_store.h"
#include "platform/viewer_relay.h"

#include <cerrno>
#include <csignal>
#include <cstdarg>
#include <cstring>
#include <ctime>
#include <dlfcn.h>
#include <filesystem>
#include <regex>
#include <sstream>
#include <sys/file.h>
#include <sys/msg.h>
#include <sys/sem.h>
#include <sys/shm.h>
#include <unistd.h>

namespace doubles
{

static std::map<FILE *, std::string> pipes; // that are open, and their lines
static std::map<int, key_t> semaphores;     // by their ids
static key_t queue;                         // that was asked for last; nothing lies on it
static bool in_row;

static void record(Text call)
{
    if (before_call)
        before_call();
    calls.push_back(call);
}

// A text in one line, with what cannot be seen.
static std::string visible(Text text)
{
    std::string line;
    for (const char c : text)
        line += c == '\n' ? "\\n" : c == '\0' ? "\\0" : std::string(1, c);
    return line;
}

Calls put(Text driver, Text value)
{
    const Calls written = value.empty() ? Calls() : Calls{"write " + value};
    return Calls{"fopen /proc/" + driver} + written + Calls{"fclose"};
}

// A message as msgsnd is given it, on either width of `long`.
static std::string described(const void *message, size_t size)
{
    long type;
    memcpy(&type, message, sizeof type);
    const std::string body(static_cast<const char *>(message) + sizeof type, size);
    const auto number = [&](size_t at) {
        int32_t value;
        memcpy(&value, &body[at], sizeof value);
        return value;
    };
    const auto trimmed = [](Text text) { return text.substr(0, text.find_last_not_of('\0') + 1); };
    if (queue == 5678 && size == 292) { // the daemons'
        const std::string param = trimmed(body.substr(4, 256));
        const std::string reserved = trimmed(body.substr(260, 8) + body.substr(272));
        return words(type, number(0)) + (number(268) ? " value=" + word(number(268)) : "") +
               (param.empty() ? "" : " param=" + param) + (reserved.empty() ? "" : " reserved");
    }
    std::ostringstream text;
    text << std::hex << queue << " " << std::dec << type << " ";
    if (size == 4) // a time
        text << static_cast<uint32_t>(number(0));
    else if (size == 272 && number(0) == 11 && body.find_first_not_of('\0', 4) >= 12)
        text << "account " << trimmed(body).erase(0, 12);
    else
        text << size << " bytes";
    return text.str();
}

// One stream as rows have it: a mark before each line, reports of `function`
// without their head.
static std::string told(Text text, Text function, const char *mark)
{
    std::string lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);) {
        lines += (lines.empty() ? "" : "\n") + std::string(mark);
        const std::regex own("^\\[(cfg_set )?" + function + " #\\] ");
        lines += line[0] == '[' ? std::regex_replace(line, own, "$1") : "| " + line;
    }
    return lines + (text.empty() || text.back() == '\n' ? "" : "<no line end>");
}

// The files as they were, and nothing else that a row has given.
static void reset(const Given &kept, const Row &row)
{
    for (const auto &[name, value] : row.given)
        if (name[0] == '/' && name.back() == '/')
            std::filesystem::remove_all(name);
    for (const auto &[path, text] : files())
        if (kept.count(path) == 0)
            remove(path.c_str());
    for (const auto &[path, text] : kept)
        if (read_file(path) != text)
            write_file(path, text);
    store.clear();
    answers.clear();
    statuses.clear();
}

static void give(Text name, Text value)
{
    if (name[0] == '/' && name.back() == '/')
        std::filesystem::create_directories(name);
    else if (name[0] == '/')
        write_file(name, value);
    else if (name[0] == '$')
        answers[name.substr(2)] = value;
    else if (name[0] == '=')
        statuses[name.substr(2)] = std::stoi(value);
    else
        store[name] = value;
}

static void check_row(const Row &row)
{
    for (const auto &[name, value] : row.given)
        give(name, value);
    refused = row.refused;
    calls.clear();
    const Given before = files();

    std::string result;
    in_row = true;
    const Outcome outcome = observe([&] {
        result = row.call.run();
        return 0;
    });
    in_row = false;

    Calls made, reads;
    for (Text call : calls)
        call.rfind("get ", 0) == 0 ? reads.push_back(call.substr(4)) : made.push_back(call);
    for (; !pipes.empty(); pclose(pipes.begin()->first))
        made.push_back("left open " + pipes.begin()->second);
    const Given after = files();
    for (const auto &[path, text] : after)
        if (before.count(path) == 0 || before.at(path) != text)
            made.push_back("wrote " + path + " " + visible(text));
    for (const auto &[path, text] : before)
        if (after.count(path) == 0)
            made.push_back("removed " + path);

    Text text = row.call.text;
    const std::string function =
        row.call.function.empty() ? text.substr(0, text.find('(')) : row.call.function;
    const std::string out = told(outcome.out, function, "");
    const std::string err = told(outcome.err, function, "! ");
    EXPECT_EQ(result, row.result.text);
    EXPECT_EQ(made, row.calls);
    EXPECT_EQ(out + (out.empty() || err.empty() ? "" : "\n") + err, row.printed);
    EXPECT_TRUE(row.reads.empty() || row.reads == reads) << testing::PrintToString(reads);
}

void check(const std::vector<Row> &rows)
{
    const Given kept = files();
    for (const Row &row : rows) {
        for (refusal = -1; refusal <= 1; refusal += 2) {
            const testing::ScopedTrace trace("row", row.call.line, row.call.text);
            check_row(row);
            reset(kept, row);
        }
    }
    refusal = -1;
    refused.clear();
}

// Whether the call fails, with errno set.
static bool fails(Text call)
{
    const auto found = failing.find(call);
    if (found == failing.end() && refused.count(call) == 0)
        return false;
    errno = found == failing.end() ? ENOMEM : found->second;
    return true;
}

// Records the call, that may be made to fail as `name`.
static int result_of(Text call, Text name)
{
    record(call);
    return fails(name) ? -1 : 0;
}

// The C library's own function.
template <typename Function> static Function *real(const char *name)
{
    return reinterpret_cast<Function *>(dlsym(RTLD_NEXT, name));
}
#define REAL(function) real<decltype(function)>(#function)

// The driver that is open: what it answers, and where.
static std::string driver;
static size_t position;

static FILE *open_driver(const char *mode)
{
    cookie_io_functions_t driven{};
    driven.read = [](void *, char *buffer, size_t size) {
        const size_t length = driver.copy(buffer, size, position);
        position += length;
        return static_cast<ssize_t>(length);
    };
    driven.write = [](void *, const char *bytes, size_t size) {
        const std::string at = position == 0 ? "" : "at " + word(position) + " ";
        record("write " + at + visible(std::string(bytes, size)));
        position += size;
        return static_cast<ssize_t>(size);
    };
    // NOLINTNEXTLINE(readability-non-const-parameter)
    driven.seek = [](void *, off64_t *offset, int whence) {
        position = static_cast<size_t>(*offset) + (whence == SEEK_CUR ? position : 0);
        return 0;
    };
    driven.close = [](void *) { return result_of("fclose", "fclose"); };
    return fopencookie(nullptr, mode, driven);
}

} // namespace doubles

using namespace doubles;

// clang-format off
extern "C" {

int system(const char *line) { record(std::string("system ") + line); return statuses[line]; }
int kill(pid_t pid, int signal) noexcept { record("kill " + words(pid, signal)); return 0; }

// The clock that a row's waits are measured with stands still.
constexpr timespec CLOCK = {1000, 999000000};

int clock_gettime(clockid_t clock, timespec *now) noexcept
{
    if (!in_row || clock != CLOCK_MONOTONIC)
        return real<int(clockid_t, timespec *)>("clock_gettime")(clock, now);
    *now = CLOCK;
    return 0;
}

// Interrupted the first time, done the second, when it is for the same time.
int clock_nanosleep(clockid_t clock, int, const timespec *end, timespec *)
{
    static timespec asked;
    if (memcmp(&asked, end, sizeof asked) != 0) {
        asked = *end;
        return EINTR;
    }
    asked = {};
    record("wait " + word((end->tv_sec - CLOCK.tv_sec) * 1000 + (end->tv_nsec - CLOCK.tv_nsec) / 1000000));
    return clock == CLOCK_MONOTONIC ? 0 : EINVAL;
}

unsigned sleep(unsigned seconds)
{
    record("sleep " + word(seconds));
    if (on_sleep)
        on_sleep();
    return sleep_left;
}

time_t time(time_t *result)
{
    if (record_time)
        record("time");
    const time_t now = clock_now == 0 ? REAL(time)(nullptr) : clock_now;
    return result ? *result = now : now;
}

FILE *popen(const char *line, const char *mode)
{
    EXPECT_STREQ(mode, "re");
    const std::string call = std::string("popen ") + line;
    if (result_of(call, call) != 0)
        return nullptr;
    std::string &answer = answers.at(line);
    FILE *stream = fmemopen(answer.data(), answer.size(), mode);
    pipes[stream] = line;
    return stream;
}

int pclose(FILE *stream) { EXPECT_EQ(pipes.erase(stream), 1U); return fclose(stream); }

FILE *fopen(const char *path, const char *mode)
{
    const bool own = !in_row || strchr(mode, 'b'); // binary: the tests' own streams
    EXPECT_TRUE(own || mode[strlen(mode) - 1] == 'e') << path << " stays open on exec";
    if (!drivers || !in_row || std::string(path).rfind("/proc/", 0) != 0 || mode[0] != 'w' || std::filesystem::is_directory(path))
        return real<FILE *(const char *, const char *)>("fopen")(path, mode);
    record(std::string("fopen ") + path + " " + std::string(mode, strlen(mode) - 1));
    driver = read_file(path);
    position = 0;
    return open_driver(mode);
}

int flock(int file, int lock)
{
    record(lock == LOCK_SH ? "flock shared" : lock == LOCK_UN ? "flock none" : "flock other");
    return fails("flock") ? -1 : REAL(flock)(file, lock);
}

int msgget(key_t key, int flags)
{
    queue = key;
    if (flags != (IPC_CREAT | 0666))
        record("msgget with other flags");
    return fails("msgget") ? -1 : 0;
}

int msgsnd(int, const void *message, size_t size, int flags)
{
    return result_of("post " + described(message, size) + (flags == IPC_NOWAIT ? "" : " waits"), "msgsnd");
}

int semget(key_t key, int count, int flags)
{
    if (count != 1 || (flags != 0 && flags != (IPC_CREAT | 0666)))
        record("semget with other flags");
    const int id = fails("semget") ? -1 : REAL(semget)(key, count, flags);
    semaphores[id] = key;
    return id;
}

int semctl(int id, int number, int command, ...)
{
    va_list arguments;
    va_start(arguments, command);
    void *values = va_arg(arguments, void *);
    va_end(arguments);
    return command == SETALL && fails("SETALL") ? -1 : REAL(semctl)(id, number, command, values);
}

int semop(int id, sembuf *change, size_t count)
{
    const bool unlocks = change->sem_op > 0;
    const char *const undo = change->sem_flg == SEM_UNDO ? "" : " without undo";
    std::ostringstream text;
    text << (unlocks ? "unlock " : "lock ") << std::hex << semaphores[id] << undo;
    record(text.str());
    return fails("semop") || (unlocks && fails("unlock")) ? -1 : REAL(semop)(id, change, count);
}

int shmget(key_t key, size_t size, int flags)
{
    std::ostringstream text;
    text << "shmget " << std::hex << key << " " << std::dec << size << " " << std::oct << flags;
    return result_of(text.str(), "shmget") ? -1 : REAL(shmget)(key, size, flags);
}

void *shmat(int id, const void *address, int flags)
{
    return fails("shmat") ? failed_address : REAL(shmat)(id, address, flags);
}
int shmdt(const void *address) { return fails("shmdt") ? -1 : REAL(shmdt)(address); }

int param_get(const char *key, char *buffer, unsigned size)
{
    record("get " + words(key, size));
    const auto found = store.find(key);
    if (refused.count(std::string("get ") + key) || found == store.end())
        return refusal;
    buffer[found->second.copy(buffer, size - 1)] = '\0';
    return 0;
}

int param_set(const char *key, const char *text)
{
    record(std::string("set ") + key + "=" + (text ? text : "(null)"));
    if (!text || refused.count(std::string("set ") + key))
        return refusal;
    store[key] = text;
    return 0;
}

int param_unset(const char *key)
{
    record(std::string("unset ") + key);
    if (refused.count(std::string("unset ") + key))
        return refusal;
    store.erase(key);
    return 0;
}

int param_save() { record("save"); return refused.count("save") ? refusal : 0; }

int msg2relay(const viewer_relay_msg *message)
{
    record("relay " + words(message->command, message->name, message->passcode, message->credential, message->once));
    return refused.count("relay") ? refusal : 0;
}

} // extern "C"
