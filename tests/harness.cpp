#include "harness.h"

#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
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
    static const std::regex BARE(R"((^|\n)(\w+)(?:([:\t])[1-9]\d*(?= )|(  )[1-9]\d*(?=\n\n)))");
    return std::regex_replace(
        std::regex_replace(std::regex_replace(text, SANITIZER, ""), REPORT, "$1[$2$3 #]"), BARE,
        "$1$2$3$4#");
}

// Sends a descriptor to a file. What it was.
static int redirect(int descriptor, const char *path)
{
    std::fflush(nullptr);
    const int kept = dup(descriptor);
    const int file = open(path, O_WRONLY | O_CREAT | O_TRUNC | O_APPEND, 0644);
    dup2(file, descriptor);
    close(file);
    return kept;
}

static std::string restored(int descriptor, int kept, const char *path)
{
    std::fflush(nullptr);
    dup2(kept, descriptor);
    close(kept);
    return settled(read_file(path));
}

Outcome observe(const std::function<int()> &code)
{
    const int out = redirect(STDOUT_FILENO, "/tmp/observed.out");
    const int err = redirect(STDERR_FILENO, "/tmp/observed.err");
    const int result = code();
    return {result, restored(STDOUT_FILENO, out, "/tmp/observed.out"),
            restored(STDERR_FILENO, err, "/tmp/observed.err")};
}

int quietly(const std::function<int()> &code)
{
    const int out = redirect(STDOUT_FILENO, "/dev/null");
    const int result = code();
    restored(STDOUT_FILENO, out, "/dev/null");
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

void write_file(const std::string &path, const std::string &text)
{
    std::filesystem::create_directories(std::filesystem::path(path).parent_path());
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

std::map<std::string, std::string> files()
{
    namespace fs = std::filesystem;
    std::map<std::string, std::string> found;
    for (const char *folder :
         {"/etc", "/etc_ro", "/flash", "/localization", "/mnt", "/proc", "/tmp", "/var"}) {
        std::error_code gone;
        for (const auto &entry : fs::recursive_directory_iterator(folder, gone))
            if (entry.is_regular_file() && entry.path().filename().string().find("observed.") != 0)
                found[entry.path()] = read_file(entry.path());
    }
    return found;
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
