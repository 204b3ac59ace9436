// Compares probes and driver writes with open, read or write, and close by hand.
// The drivers' files are plain files here: only the calls are compared.

#include "bench/measure.h"
#include "cfg_set.h"

#include <cstdlib>
#include <fcntl.h>
#include <fstream>
#include <unistd.h>

static void by_hand(const char *path, int mode, const char *bytes, size_t length)
{
    const int file = open(path, mode, 0666);
    char text[32] = "";
    if (mode == O_RDONLY) {
        require(read(file, text, sizeof text - 1) > 0, "read");
        require(std::atoi(text) == 1, "reading by hand");
    } else {
        require(write(file, bytes, length) == static_cast<ssize_t>(length), "write");
    }
    close(file);
}

struct Row {
    const char *name;
    const char *path;
    int mode;
    const char *bytes;
    size_t length;
    Operation ours;
};

int main(int argc, char **argv)
{
    constexpr int WRITE = O_WRONLY | O_CREAT | O_TRUNC;
    constexpr int UPDATE = O_RDWR | O_CREAT | O_TRUNC;
    std::ofstream("/proc/light_sensor") << "1\n";
    std::ofstream("/proc/is_valid_track_event") << "1\n";
    const Row rows[] = {
        {"light_sensor (file_line)", "/proc/light_sensor", O_RDONLY, nullptr, 0,
         [] { require(light_sensor() == 1, "light_sensor"); }},
        {"is_valid_track_event (file_block)", "/proc/is_valid_track_event", O_RDONLY, nullptr, 0,
         [] { require(is_valid_track_event() == 1, "is_valid_track_event"); }},
        {"night_mode (put_file)", "/proc/night_mode", WRITE, "1", 1, [] { night_mode(1); }},
        {"wled_mode", "/proc/wled_mode", UPDATE, "1", 2, [] { wled_mode(1); }},
        {"rlamp_mode", "/proc/rlamp_mode", WRITE, "1", 1, [] { rlamp_mode(1); }},
    };
    Calls calls;
    for (const Row &row : rows)
        calls.emplace_back(row.name, row.ours);
    if (argc > 1) {
        perform(calls);
        return 0;
    }
    count_system_calls(argv[0], calls);
    for (const Row &row : rows) {
        constexpr int TIMES = 500;
        const auto hand = [&] { by_hand(row.path, row.mode, row.bytes, row.length); };
        compare("small files",
                {{"by hand", cost_of(TIMES, hand)}, {row.name, cost_of(TIMES, row.ours)}});
    }
    return 0;
}
