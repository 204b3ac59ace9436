#include "doubles.h"

#include "platform/param_store.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace doubles
{

std::vector<std::string> calls;
std::map<std::string, std::string> store;
std::set<std::string> refused;
int popen_error;
bool run_commands;
unsigned sleep_left;

static std::map<FILE *, pid_t> pipes;

std::vector<std::string> recorded(const std::string &word)
{
    std::vector<std::string> found;
    for (const std::string &call : calls)
        if (call.compare(0, word.size() + 1, word + " ") == 0)
            found.push_back(call.substr(word.size() + 1));
    return found;
}

void LibraryTest::SetUp()
{
    CameraTest::SetUp();
    calls.clear();
    store.clear();
    refused.clear();
    popen_error = 0;
    run_commands = false;
    sleep_left = 0;
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
    calls.push_back(std::string("system ") + line);
    return run_commands ? wait_for(start_shell(line, -1)) : 0;
}

FILE *popen(const char *line, const char *mode)
{
    calls.push_back(std::string("popen ") + line);
    EXPECT_STREQ(mode, "r");
    if (popen_error) {
        errno = popen_error;
        return nullptr;
    }
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0)
        return nullptr;
    const pid_t child = start_shell(line, ends[1]);
    close(ends[1]);
    FILE *stream = fdopen(ends[0], "r");
    pipes[stream] = child;
    return stream;
}

int pclose(FILE *stream)
{
    const pid_t child = pipes.at(stream);
    pipes.erase(stream);
    fclose(stream);
    return wait_for(child);
}

unsigned sleep(unsigned seconds)
{
    calls.push_back("sleep " + std::to_string(seconds));
    return sleep_left;
}

int usleep(useconds_t microseconds)
{
    calls.push_back("usleep " + std::to_string(microseconds));
    return 0;
}

int param_get(const char *key, char *buffer, unsigned size)
{
    calls.push_back(std::string("get ") + key + " " + std::to_string(size));
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
    calls.push_back(std::string("set ") + key + "=" + text);
    if (refused.count(std::string("set ") + key))
        return -1;
    store[key] = text;
    return 0;
}

int param_save()
{
    calls.emplace_back("save");
    return refused.count("save") ? -1 : 0;
}

int param_unset(const char *key)
{
    calls.push_back(std::string("unset ") + key);
    store.erase(key);
    return 0;
}

} // extern "C"
