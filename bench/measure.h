// What the benchmarks have in common. Each prints rows, a JSON object a line:
// the group a row stands in, its name, value and unit; a sampled value also
// with its quartiles. scripts/bench makes the table of them.
#pragma once

#include <functional>
#include <string>
#include <vector>

using Operation = std::function<void()>;

// Ends the program when `condition` is false.
void require(bool condition, const char *what);

// A figure that was counted.
void print_row(const std::string &group, const std::string &name, double value, const char *unit);

// One of several ways to do the same work.
struct Way {
    std::string name;
    std::function<double()> cost; // a sample: seconds of the work, done some times over
};

// Prints how many times as fast as ways[0] each of the others is: the median
// of many rounds, in each of which all take turns. A row of control compares
// ways[0] with itself: what it is off 1 is noise.
void compare(const std::string &group, const std::vector<Way> &ways);

// Processor time of this process: what else the machine does is not in it.
double cpu_seconds();

// A cost: the processor time of doing `work` so many times, after `prepare`.
std::function<double()> cost_of(
    int times, const Operation &work, const Operation &prepare = [] {});

// Prints how many system calls each way makes, which strace counts. The
// program is run again for it: with an argument it has to call `perform`.
using Calls = std::vector<std::pair<std::string, Operation>>;
void count_system_calls(const char *program, const Calls &calls);
void perform(const Calls &calls);
