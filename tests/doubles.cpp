#include "doubles.h"

#include "platform/param_store.h"

#include <cerrno>
#include <csignal>
#include <cstdarg>
#include <cstring>
#include <dlfcn.h>
#include <fcntl.h>
#include <sys/msg.h>
#include <sys/sem.h>
#include <sys/shm.h>
#include <sys/wait.h>
#include <unistd.h>

namespace doubles
{

std::vector<std::string> calls;
std::function<void()> before_call;
std::map<std::string, std::string> store;
std::set<std::string> refused;
std::map<std::string, std::string> answers;
int popen_error;
bool run_commands;
std::map<std::string, int> statuses;
unsigned sleep_left;
time_t clock_now;
std::map<std::string, int> failing;
void *failed_address;
std::function<void()> on_sleep;
std::vector<viewer_relay_msg> relayed;
int relay_result;

namespace
{

struct Pipe {
    std::string line;
    pid_t child; // 0 when the line was not run
};
std::map<FILE *, Pipe> pipes;

} // namespace

static void record(const std::string &call)
{
    if (before_call)
        before_call();
    calls.push_back(call);
}

std::vector<std::string> recorded(const std::string &word)
{
    std::vector<std::string> found;
    for (const std::string &call : calls)
        if (call.compare(0, word.size() + 1, word + " ") == 0)
            found.push_back(call.substr(word.size() + 1));
    return found;
}

// A message as it lies on the queue, on either width of `long`.
struct Message {
    long type;
    char body[292];
};

static int32_t number_at(const char *bytes)
{
    int32_t number;
    memcpy(&number, bytes, sizeof number);
    return number;
}

static std::string described(const Message &message)
{
    const std::string body(message.body, sizeof message.body);
    std::string text = std::to_string(message.type) + " " + std::to_string(number_at(message.body));
    const int32_t value = number_at(message.body + 268);
    if (value != 0)
        text += " value=" + std::to_string(value);
    const std::string param = body.substr(4, 256);
    if (param.find_last_not_of('\0') != std::string::npos)
        text += " param=" + param.substr(0, param.find_last_not_of('\0') + 1);
    if ((body.substr(260, 8) + body.substr(272)).find_first_not_of('\0') != std::string::npos)
        text += " reserved";
    return text;
}

constexpr key_t DAEMON_QUEUE = 5678;

std::vector<std::string> posted()
{
    std::vector<std::string> found;
    const int queue = msgget(DAEMON_QUEUE, 0);
    Message message{};
    for (;;) {
        const ssize_t length = msgrcv(queue, &message, sizeof message.body, 0, IPC_NOWAIT);
        if (length < 0)
            return found;
        EXPECT_EQ(length, 292);
        found.push_back(described(message));
    }
}

void fill_queue()
{
    const int queue = msgget(DAEMON_QUEUE, IPC_CREAT | 0666);
    const Message message = {99, {}};
    while (msgsnd(queue, &message, sizeof message.body, IPC_NOWAIT) == 0) {
    }
}

void expect_keys_read(const std::vector<Restorer> &restorers)
{
    for (const Restorer &restorer : restorers) {
        store.erase(restorer.key);
        calls.clear();
        const Outcome outcome = observe(restorer.restore);
        EXPECT_EQ(outcome.result, -1);
        EXPECT_EQ(outcome.out, "[cfg_restore" + restorer.name + " #] param_get fail\n");
        EXPECT_THAT(calls, testing::ElementsAre("get " + restorer.key + " 256"));
    }
}

std::vector<std::string> close_pipes()
{
    std::vector<std::string> lines;
    while (!pipes.empty()) {
        lines.push_back(pipes.begin()->second.line);
        pclose(pipes.begin()->first);
    }
    return lines;
}

void LibraryTest::SetUp()
{
    CameraTest::SetUp();
    posted();
    calls.clear();
    before_call = nullptr;
    store.clear();
    refused.clear();
    answers.clear();
    popen_error = 0;
    run_commands = false;
    statuses.clear();
    sleep_left = 0;
    clock_now = 0;
    failing.clear();
    failed_address = nullptr;
    on_sleep = nullptr;
    relayed.clear();
    relay_result = 0;
}

// A shell with `line`; its standard output goes to `output` when there is one.
static pid_t start_shell(const char *line, int output)
{
    const pid_t child = fork();
    if (child == 0) {
        if (output >= 0)
            dup2(output, STDOUT_FILENO);
        execl("/bin/sh", "sh", "-c", line, nullptr);
        _exit(127);
    }
    return child;
}

// Whether the call fails, with errno set.
static bool fails(const char *call)
{
    const auto found = failing.find(call);
    if (found == failing.end())
        return false;
    errno = found->second;
    return true;
}

// The C library's own function.
template <typename Function> static Function *real(const char *name)
{
    return reinterpret_cast<Function *>(dlsym(RTLD_NEXT, name));
}

static int wait_for(pid_t child)
{
    int status = 0;
    while (waitpid(child, &status, 0) < 0 && errno == EINTR) {
    }
    return status;
}

} // namespace doubles

using namespace doubles;

extern "C" {

int system(const char *line)
{
    record(std::string("system ") + line);
    return run_commands ? wait_for(start_shell(line, -1)) : statuses[line];
}

FILE *popen(const char *line, const char *mode)
{
    record(std::string("popen ") + line);
    EXPECT_STREQ(mode, "r");
    if (popen_error || refused.count(std::string("popen ") + line)) {
        errno = popen_error ? popen_error : ENOMEM;
        return nullptr;
    }
    const auto answer = answers.find(line);
    if (answer != answers.end()) {
        FILE *stream = fmemopen(answer->second.data(), answer->second.size(), mode);
        pipes[stream] = {line, 0};
        return stream;
    }
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0)
        return nullptr;
    const pid_t child = start_shell(line, ends[1]);
    close(ends[1]);
    FILE *stream = fdopen(ends[0], "r");
    pipes[stream] = {line, child};
    return stream;
}

int pclose(FILE *stream)
{
    const pid_t child = pipes.at(stream).child;
    pipes.erase(stream);
    fclose(stream);
    return child == 0 ? 0 : wait_for(child);
}

int kill(pid_t pid, int signal) noexcept
{
    record("kill " + std::to_string(pid) + " " + std::to_string(signal));
    return 0;
}

unsigned sleep(unsigned seconds)
{
    record("sleep " + std::to_string(seconds));
    if (on_sleep)
        on_sleep();
    return sleep_left;
}

time_t time(time_t *result)
{
    timespec clock{clock_now, 0};
    if (clock_now == 0)
        clock_gettime(CLOCK_REALTIME, &clock);
    if (result)
        *result = clock.tv_sec;
    return clock.tv_sec;
}

int usleep(useconds_t microseconds)
{
    record("usleep " + std::to_string(microseconds));
    return 0;
}

int msgget(key_t key, int flags)
{
    return fails("msgget") ? -1 : real<decltype(msgget)>("msgget")(key, flags);
}

int semget(key_t key, int count, int flags)
{
    return fails("semget") ? -1 : real<decltype(semget)>("semget")(key, count, flags);
}

int semctl(int id, int number, int command, ...)
{
    va_list arguments;
    va_start(arguments, command);
    void *values = va_arg(arguments, void *);
    va_end(arguments);
    if (command == SETALL && fails("SETALL"))
        return -1;
    return real<decltype(semctl)>("semctl")(id, number, command, values);
}

int semop(int id, sembuf *operations, size_t count)
{
    if (fails("semop") || (operations->sem_op > 0 && fails("unlock")))
        return -1;
    return real<decltype(semop)>("semop")(id, operations, count);
}

int shmget(key_t key, size_t size, int flags)
{
    char text[64];
    snprintf(text, sizeof text, "shmget %x %zu %o", static_cast<unsigned>(key), size,
             static_cast<unsigned>(flags));
    record(text);
    return fails("shmget") ? -1 : real<decltype(shmget)>("shmget")(key, size, flags);
}

void *shmat(int id, const void *address, int flags)
{
    return fails("shmat") ? failed_address : real<decltype(shmat)>("shmat")(id, address, flags);
}

int shmdt(const void *address)
{
    return fails("shmdt") ? -1 : real<decltype(shmdt)>("shmdt")(address);
}

int param_get(const char *key, char *buffer, unsigned size)
{
    record(std::string("get ") + key + " " + std::to_string(size));
    const auto found = store.find(key);
    if (refused.count(std::string("get ") + key) || found == store.end())
        return -1;
    const size_t length = std::min<size_t>(found->second.size(), size - 1);
    memcpy(buffer, found->second.data(), length);
    buffer[length] = '\0';
    return 0;
}

int param_set(const char *key, const char *text)
{
    record(std::string("set ") + key + "=" + (text ? text : "(null)"));
    if (!text || refused.count(std::string("set ") + key))
        return -1;
    store[key] = text;
    return 0;
}

int param_save()
{
    record("save");
    return refused.count("save") ? -1 : 0;
}

int param_unset(const char *key)
{
    record(std::string("unset ") + key);
    if (refused.count(std::string("unset ") + key))
        return -1;
    store.erase(key);
    return 0;
}

int msg2relay(const viewer_relay_msg *message)
{
    record("relay " + std::to_string(message->command) + " " + message->name);
    relayed.push_back(*message);
    return relay_result;
}

} // extern "C"
