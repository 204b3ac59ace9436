#include "bench/measure.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <fstream>
#include <unistd.h>

// Rounds continue until the control has this precision, or up to the limit.
constexpr size_t ROUNDS_MIN = 25;
constexpr size_t ROUNDS_MAX = 400;
constexpr double ERROR_OF_CONTROL = 0.01;

void require(bool condition, const char *what)
{
    if (condition)
        return;
    std::fprintf(stderr, "bench: %s failed\n", what);
    std::exit(1);
}

void print_row(const std::string &group, const std::string &name, double value, const char *unit)
{
    std::printf(R"({"group":"%s","name":"%s","value":%.4g,"unit":"%s"})"
                "\n",
                group.c_str(), name.c_str(), value, unit);
}

static double quantile(std::vector<double> values, size_t quarters)
{
    std::sort(values.begin(), values.end());
    return values[(values.size() - 1) * quarters / 4];
}

// The error of a median is 1.25 times that of a mean; the distance between the
// quartiles is 1.35 standard deviations.
static double error_of_median(const std::vector<double> &values)
{
    return 1.25 / 1.35 * (quantile(values, 3) - quantile(values, 1)) /
           std::sqrt(static_cast<double>(values.size()));
}

void compare(const std::string &group, const std::vector<Way> &ways)
{
    std::vector<Way> all = ways;
    all.push_back({ways[0].name + ", again (control)", ways[0].cost});
    std::vector<std::vector<double>> ratios(all.size());
    std::vector<double> costs(all.size());
    for (size_t round = 0; round < ROUNDS_MAX; round++) {
        if (round >= ROUNDS_MIN && error_of_median(ratios.back()) < ERROR_OF_CONTROL)
            break;
        for (size_t turn = 0; turn < all.size(); turn++) {
            // Each way is first, last, before and after its neighbours equally often.
            const size_t place = round % 2 == 0 ? turn : all.size() - 1 - turn;
            const size_t i = (place + round / 2) % all.size();
            costs[i] = all[i].cost();
        }
        for (size_t i = 0; i < all.size(); i++)
            ratios[i].push_back(costs[0] / costs[i]);
    }
    for (size_t i = 1; i < all.size(); i++)
        std::printf(R"({"group":"%s","name":"%s","value":%.4g,"low":%.4g,"high":%.4g,)"
                    R"("unit":"times as fast as %s","control":%s})"
                    "\n",
                    group.c_str(), all[i].name.c_str(), quantile(ratios[i], 2),
                    quantile(ratios[i], 1), quantile(ratios[i], 3), ways[0].name.c_str(),
                    i + 1 == all.size() ? "true" : "false");
    std::fflush(stdout);
}

double cpu_seconds()
{
    timespec now = {};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

std::function<double()> cost_of(int times, const Operation &work, const Operation &prepare)
{
    return [=] {
        prepare();
        const double start = cpu_seconds();
        for (int i = 0; i < times; i++)
            work();
        return cpu_seconds() - start;
    };
}

// Calls of getppid, which nothing else makes, mark the start and end of each.
void perform(const Calls &calls)
{
    for (const auto &[name, call] : calls) {
        call();
        getppid();
        call();
        getppid();
    }
}

void count_system_calls(const char *program, const Calls &calls)
{
    const std::string line = std::string("/strace -o /tmp/calls ") + program + " calls";
    require(std::system(line.c_str()) == 0, "strace");
    std::ifstream trace("/tmp/calls");
    const auto next = [&] {
        std::string call;
        require(static_cast<bool>(std::getline(trace, call)), "counting system calls");
        return call.substr(0, call.find('('));
    };
    for (const auto &[name, call] : calls) {
        while (next() != "getppid") {
        }
        int count = 0;
        std::string names;
        for (std::string made = next(); made != "getppid"; made = next(), count++)
            names += (count == 0 ? ": " : " ") + made;
        print_row("system calls", name + names, count, "calls");
    }
}
