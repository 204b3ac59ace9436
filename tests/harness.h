// What every test has at hand: running a piece of code or a program and seeing
// what it printed, and small files of the camera root.
#pragma once

#include <functional>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <map>
#include <string>
#include <vector>

struct Outcome {
    int result = 0;
    std::string out;
    std::string err;
};

// Runs `code` with standard output and standard error caught apart. Lines of
// reports read "[function #] text": the source line is not a test's business,
// but that there is one is.
Outcome observe(const std::function<int()> &code);

// Runs `code` and drops what it prints.
int quietly(const std::function<int()> &code);

// Runs a program of this build ("cfgctl") or of the root ("/bin/sh").
Outcome run_program(std::vector<std::string> words);

void write_file(const std::string &path, const std::string &text);
std::string read_file(const std::string &path);
// The files that code in the root may write, with what is in them.
std::map<std::string, std::string> files();
// An executable /bin/sh script; tests put theirs in /tmp/bin, first on PATH.
void write_script(const std::string &path, const std::string &text);

// Fails a test that leaves a descriptor open.
class CameraTest : public testing::Test
{
  protected:
    void SetUp() override;
    void TearDown() override;

  private:
    int open_before_ = 0;
};
