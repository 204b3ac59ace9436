// counted WHAT TIMES: repeats one operation TIMES times, so that bench/count can
// count its instructions.

#include "bench/byte_wise.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <unistd.h>

static volatile uint32_t result; // keeps the compiler from removing the work

static const unsigned char BYTES[8192] = {};

static void number_by_hand()
{
    char text[32] = "";
    const int file = open("/proc/light_sensor", O_RDONLY | O_CLOEXEC);
    result = static_cast<uint32_t>(read(file, text, sizeof text - 1));
    close(file);
    result = static_cast<uint32_t>(std::atoi(text));
}

static void write_by_hand()
{
    const int file = open("/proc/night_mode", O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
    result = static_cast<uint32_t>(write(file, "1", 1));
    close(file);
}

int main(int argc, char **argv)
{
    if (argc != 3)
        return 2;
    const size_t times = std::strtoul(argv[2], nullptr, 10);
    const auto is = [&](const char *what) { return std::strcmp(argv[1], what) == 0; };
    if (is("byte-wise"))
        result = by_byte(0, BYTES, times);
    else if (is("cfg_getCrc32"))
        result = cfg_getCrc32(BYTES, static_cast<uint32_t>(times));
    else
        for (size_t i = 0; i < times; i++) {
            if (is("light_sensor"))
                result = static_cast<uint32_t>(light_sensor());
            else if (is("light_sensor-by-hand"))
                number_by_hand();
            else if (is("night_mode"))
                night_mode(1);
            else if (is("night_mode-by-hand"))
                write_by_hand();
            else if (is("cfg_enqueueEvent"))
                cfg_enqueueEvent(1);
        }
    return 0;
}
