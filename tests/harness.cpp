#include "harness.h"

#include <cstdlib>
#include <fcntl.h>
#include <fstream>
#include <regex>
#include <sstream>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

// Takes out what differs from run to run: the source lines of reports, and the
// sanitizers' complaints that the root has no kernel's /proc.
static std::string settled(const std::string &text)
{
    static const std::regex SANITIZER("==\\d+==WARNING: (reading executable name failed[^\n]*\n|"
                                      "ASan is ignoring requested[^\n]*\n[^\n]*\n[^\n]*\n)");
    static const std::regex REPORT(R"((^|\n)\[(cfg_set )?(\w+) [1-9]\d*\])");
    static const std::regex BARE(R"((^|\n)(\w+)(:|\t)[1-9]\d* )");
    return std::regex_replace(
        std::regex_replace(std::regex_replace(text, SANITIZER, ""), REPORT, "$1[$2$3 #]"), BARE,
        "$1$2$3# ");
}

namespace
{

// Sends a descriptor to a file while it lives.
class Redirect
{
  public:
    Redirect(int descriptor, const char *path) : descriptor_(descriptor), kept_(dup(descriptor))
    {
        const int file = open(path, O_WRONLY | O_CREAT | O_TRUNC | O_APPEND, 0644);
        dup2(file, descriptor);
        close(file);
    }
    ~Redirect()
    {
        dup2(kept_, descriptor_);
        close(kept_);
    }
    Redirect(const Redirect &) = delete;
    Redirect &operator=(const Redirect &) = delete;

  private:
    int descriptor_;
    int kept_;
};

} // namespace

Outcome observe(const std::function<int()> &code)
{
    Outcome outcome;
    std::fflush(nullptr);
    {
        const Redirect out(STDOUT_FILENO, "/tmp/observed.out");
        const Redirect err(STDERR_FILENO, "/tmp/observed.err");
        outcome.result = code();
        std::fflush(nullptr);
    }
    outcome.out = settled(read_file("/tmp/observed.out"));
    outcome.err = settled(read_file("/tmp/observed.err"));
    return outcome;
}

int quietly(const std::function<int()> &code)
{
    std::fflush(nullptr);
    const Redirect out(STDOUT_FILENO, "/dev/null");
    const int result = code();
    std::fflush(nullptr);
    return result;
}

Outcome run_program(std::vector<std::string> words)
{
    if (words[0][0] != '/') {
        words[0] = "/tests/" + words[0];
        if (const char *emulator = std::getenv("EMULATOR"))
            words.insert(words.begin(), emulator);
    }
    std::vector<char *> arguments;
    for (std::string &word : words)
        arguments.push_back(word.data());
    arguments.push_back(nullptr);
    return observe([&] {
        const pid_t child = fork();
        if (child == 0) {
            execv(arguments[0], arguments.data());
            _exit(127);
        }
        int status = 0;
        waitpid(child, &status, 0);
        return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    });
}

Outcome cfgctl(std::vector<std::string> words)
{
    words.insert(words.begin(), "cfgctl");
    return run_program(words);
}

std::string commands()
{
    std::string found;
    std::istringstream log(read_file("/var/log/camera.log"));
    for (std::string line; std::getline(log, line);)
        if (line.find(" run ") != std::string::npos)
            found += line.substr(line.find(" run ") + 5) + "\n";
    return found;
}

void write_file(const std::string &path, const std::string &text)
{
    for (size_t slash = path.find('/', 1); slash != std::string::npos;
         slash = path.find('/', slash + 1))
        mkdir(path.substr(0, slash).c_str(), 0755);
    std::ofstream file(path, std::ios::binary | std::ios::trunc);
    file << text;
    file.close();
    ASSERT_TRUE(file) << "cannot write " << path;
}

std::string read_file(const std::string &path)
{
    std::ostringstream text;
    text << std::ifstream(path, std::ios::binary).rdbuf();
    return text.str();
}

void write_script(const std::string &path, const std::string &text)
{
    write_file(path, "#!/bin/sh\n" + text);
    chmod(path.c_str(), 0755);
}

static int open_descriptors()
{
    int count = 0;
    for (int descriptor = 0; descriptor < 256; descriptor++)
        count += fcntl(descriptor, F_GETFD) >= 0;
    return count;
}

void CameraTest::SetUp()
{
    setenv("PATH", "/tmp/bin:/sbin:/bin", 1);
    open_before_ = open_descriptors();
}

void CameraTest::TearDown()
{
    EXPECT_EQ(open_before_, open_descriptors()) << "a descriptor stayed open";
}
