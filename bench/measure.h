// Shared by the benchmarks. Each prints one JSON object a row: group, name, value,
// unit and, for a sampled value, its quartiles. scripts/bench prints the table.
#pragma once

#include <functional>
#include <string>
#include <vector>

using Operation = std::function<void()>;

// Ends the program when `condition` is false.
void require(bool condition, const char *what);

// Prints a counted figure.
void print_row(const std::string &group, const std::string &name, double value, const char *unit);

// One of several ways to do the same work.
struct Way {
    std::string name;
    std::function<double()> cost; // one sample: seconds that several repetitions take
};

// Prints the speed of each way relative to ways[0]: the median of many rounds in
// which all ways take turns. A control row compares ways[0] with itself: its
// distance from 1 is noise.
void compare(const std::string &group, const std::vector<Way> &ways);

// Processor time of this process, so other load on the machine does not count.
double cpu_seconds();

// A cost: the processor time of repeating `work`, after `prepare`.
std::function<double()> cost_of(
    int times, const Operation &work, const Operation &prepare = [] {});

// Prints how many system calls each way makes, as strace counts them. It runs the
// program again with an argument; the program must then call `perform`.
using Calls = std::vector<std::pair<std::string, Operation>>;
void count_system_calls(const char *program, const Calls &calls);
void perform(const Calls &calls);
