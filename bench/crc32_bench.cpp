// CRC-32 beside its references, as ratios to the byte-wise loop of the same
// run, and the memory that checking an image takes. Under an emulator the
// instructions for each byte instead: time says nothing there.

#include "cfg_set.h"

#include <algorithm>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <functional>
#include <string>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>
#ifdef WITH_ZLIB
#include <zlib.h>
#endif
#ifdef WITH_LIBDEFLATE
#include <libdeflate.h>
#endif

using Bytes = std::vector<unsigned char>;

// Adds bytes to a CRC-32 as zlib's crc32() does: complemented before and after.
using Add = uint32_t (*)(uint32_t crc, const unsigned char *bytes, size_t length);

struct Method {
    const char *name;
    std::function<uint32_t(const unsigned char *bytes, size_t length)> memory;
    std::function<uint32_t(FILE *file)> file;
};

constexpr char NO_HASHING[] = "no hashing";

static void wrong(const char *what)
{
    std::fprintf(stderr, "wrong: %s\n", what);
    std::exit(1);
}

static uint32_t by_byte(uint32_t crc, const unsigned char *bytes, size_t length)
{
    crc = ~crc;
    for (size_t i = 0; i < length; i++)
        crc = crc32_tab[(crc ^ bytes[i]) & 0xFF] ^ crc >> 8;
    return ~crc;
}

// Takes in every byte and hashes none.
static uint32_t by_reading(uint32_t sum, const unsigned char *bytes, size_t length)
{
    for (size_t i = 0; i < length; i++)
        sum += bytes[i];
    return sum;
}

// A reference hashes files in the chunks in which the library does.
static Method reference(const char *name, Add add)
{
    const auto of_file = [add](FILE *file) {
        unsigned char chunk[512];
        uint32_t crc = 0;
        for (size_t count; (count = std::fread(chunk, 1, sizeof chunk, file)) > 0;)
            crc = add(crc, chunk, count);
        return crc;
    };
    const auto of_memory = [add](const unsigned char *bytes, size_t length) {
        return add(0, bytes, length);
    };
    return {name, of_memory, of_file};
}

static uint32_t library_memory(const unsigned char *bytes, size_t length)
{
    return cfg_getCrc32(bytes, static_cast<uint32_t>(length));
}

static uint32_t library_file(FILE *file)
{
    return cfg_getCrc32FromFile(file, 0, 0);
}

static const std::vector<Method> METHODS = {
    reference("byte-wise", by_byte),
    {"cfg_set", library_memory, library_file},
#ifdef WITH_ZLIB
    reference("zlib",
              [](uint32_t crc, const unsigned char *bytes, size_t length) {
                  return static_cast<uint32_t>(crc32(crc, bytes, static_cast<uInt>(length)));
              }),
#endif
#ifdef WITH_LIBDEFLATE
    reference("libdeflate", [](uint32_t crc, const unsigned char *bytes,
                               size_t length) { return libdeflate_crc32(crc, bytes, length); }),
#endif
    reference(NO_HASHING, by_reading),
};

constexpr size_t SIZES[] = {512, 4096, 65536, 16 << 20};
constexpr size_t TRACED_SIZE = 4096;
constexpr int ROUNDS = 9;
constexpr double ROUND_SECONDS = 0.01;

static Bytes sample(size_t size)
{
    Bytes bytes(size);
    uint32_t state = 1;
    for (unsigned char &byte : bytes)
        byte = static_cast<unsigned char>((state = state * 1664525 + 1013904223) >> 24);
    return bytes;
}

// Of this process: what else the machine does is not counted.
static double cpu_seconds()
{
    timespec now = {};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) / 1e9;
}

static double seconds_of(const std::function<void()> &job)
{
    for (int times = 1;; times *= 2) {
        const double start = cpu_seconds();
        for (int i = 0; i < times; i++)
            job();
        const double elapsed = cpu_seconds() - start;
        if (elapsed >= ROUND_SECONDS)
            return elapsed / times;
    }
}

// The best time of each job; they take turns, so that all meet the same weather.
static std::vector<double> best_times(const std::vector<std::function<void()>> &jobs)
{
    std::vector<double> best(jobs.size(), 1e9);
    for (int round = 0; round < ROUNDS; round++)
        for (size_t i = 0; i < jobs.size(); i++)
            best[i] = std::min(best[i], seconds_of(jobs[i]));
    return best;
}

static uint32_t work(const Method &method, const Bytes &bytes, bool in_memory)
{
    if (in_memory)
        return method.memory(bytes.data(), bytes.size());
    FILE *file = std::fopen("/tmp/bytes", "r");
    const uint32_t crc = method.file(file);
    std::fclose(file);
    return crc;
}

// The times of each method for one size. All but one must agree.
static std::vector<double> times_for(size_t size, bool in_memory)
{
    const Bytes bytes = sample(size);
    std::ofstream("/tmp/bytes", std::ios::binary)
        .write(reinterpret_cast<const char *>(bytes.data()), static_cast<std::streamsize>(size));
    const uint32_t expected = by_byte(0, bytes.data(), size);
    std::vector<std::function<void()>> jobs;
    for (const Method &method : METHODS)
        jobs.emplace_back([&] {
            if (work(method, bytes, in_memory) != expected && method.name != NO_HASHING)
                wrong(method.name);
        });
    return best_times(jobs);
}

// A row for each method, a column for each size.
static void compare(const char *title, bool in_memory)
{
    std::vector<std::vector<double>> columns;
    for (const size_t size : SIZES)
        columns.push_back(times_for(size, in_memory));
    std::printf("%s, times as fast as the byte-wise loop\n%-12s", title, "");
    for (const size_t size : SIZES)
        std::printf("%10zu B", size);
    for (size_t row = 0; row < METHODS.size(); row++) {
        std::printf("\n%-12s", METHODS[row].name);
        for (const std::vector<double> &times : columns)
            std::printf("%12.1f", times[0] / times[row]);
    }
    std::printf("\nits MB/s    ");
    for (size_t i = 0; i < columns.size(); i++)
        std::printf("%12.0f", static_cast<double>(SIZES[i]) / columns[i][0] / 1e6);
    std::printf("\n\n");
}

// Peak memory, in KB, of a process that does nothing but check an image of
// this size: holes, with a header that passes up to the last check.
static long peak_of_check(off_t size)
{
    std::fflush(stdout);
    const pid_t child = fork();
    if (child == 0) {
        unsigned char header[64] = {};
        std::memcpy(header + 32, "xq7h0c", sizeof "xq7h0c");
        const uint32_t checksum = cfg_getCrc32(header, sizeof header);
        for (int i = 0; i < 4; i++)
            header[4 + i] = static_cast<unsigned char>(checksum >> (24 - 8 * i));
        FILE *image = std::fopen("/tmp/image", "w+");
        std::fwrite(header, 1, sizeof header, image);
        std::fflush(image);
        const bool sized = ftruncate(fileno(image), size) == 0;
        if (!std::freopen("/tmp/report", "w", stdout) || !sized)
            _exit(1);
        cfg_checkFirmware(image, 0);
        const bool read_to_the_end = std::ftell(image) == size;
        _exit(read_to_the_end ? 0 : 1);
    }
    int status = 0;
    rusage usage = {};
    if (wait4(child, &status, 0, &usage) != child || status != 0) {
        wrong("the image was not read to its end");
    }
    return usage.ru_maxrss;
}

static void memory()
{
    std::filesystem::create_directories("/etc/desk");
    std::ofstream("/etc/desk/board") << "echo xq7h0c\n";
    long small = LONG_MAX;
    long large = LONG_MAX;
    for (int i = 0; i < 5; i++) { // the kernel counts in batches
        small = std::min(small, peak_of_check(1 << 20));
        large = std::min(large, peak_of_check(1 << 30));
    }
    std::printf(
        "peak memory of cfg_checkFirmware: %ld KB for an image of 1 MB, %ld KB for 1 GB\n\n", small,
        large);
}

static long traced_instructions(const char *emulator, const char *method, size_t size)
{
    const std::string command =
        std::string(emulator) + " -singlestep -d exec,nochain -D /tmp/trace /tests/crc32_bench " +
        method + " " + std::to_string(size) + " && grep -c ^Trace /tmp/trace > /tmp/count";
    long count = 0;
    if (std::system(command.c_str()) != 0 || !(std::ifstream("/tmp/count") >> count)) {
        wrong(command.c_str());
    }
    return count;
}

// The difference between two sizes has nothing of the start in it.
static void instructions(const char *emulator)
{
    std::printf("instructions for each byte\n");
    for (const char *method : {"byte-wise", "cfg_set"})
        std::printf("%-12s%6.2f\n", method,
                    static_cast<double>(traced_instructions(emulator, method, 2 * TRACED_SIZE) -
                                        traced_instructions(emulator, method, TRACED_SIZE)) /
                        TRACED_SIZE);
}

// crc32_bench METHOD SIZE: one checksum, for the emulator to trace.
static int once(const char *name, size_t size)
{
    const Bytes bytes(2 * TRACED_SIZE);
    for (const Method &method : METHODS)
        if (std::strcmp(name, method.name) == 0)
            return method.memory(bytes.data(), std::min(size, bytes.size())) != 0 ? 0 : 1;
    return 1;
}

int main(int argc, char **argv)
{
    if (argc == 3)
        return once(argv[1], std::strtoul(argv[2], nullptr, 10));
    if (const char *emulator = std::getenv("EMULATOR")) {
        instructions(emulator);
        return 0;
    }
    memory();
    compare("in memory", true);
    compare("a file, opened, read by 512 bytes and closed", false);
    return 0;
}
