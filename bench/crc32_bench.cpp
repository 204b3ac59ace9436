// Compares CRC-32 with its references and measures the memory of an image check.

#include "bench/byte_wise.h"
#include "bench/measure.h"

#include <algorithm>
#include <climits>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <libdeflate.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>
#include <zlib.h>

constexpr char FILE_NAME[] = "/tmp/bytes";
constexpr size_t FILE_SIZE = 16 << 20; // a firmware image
constexpr size_t SAMPLE_BYTES = 4 << 20;

using Bytes = std::vector<unsigned char>;
using Add = uint32_t (*)(uint32_t crc, const unsigned char *bytes, size_t length);

static uint32_t by_zlib(uint32_t crc, const unsigned char *bytes, size_t length)
{
    return static_cast<uint32_t>(crc32(crc, bytes, static_cast<uInt>(length)));
}

static uint32_t by_libdeflate(uint32_t crc, const unsigned char *bytes, size_t length)
{
    return libdeflate_crc32(crc, bytes, length);
}

static uint32_t by_library(uint32_t, const unsigned char *bytes, size_t length)
{
    return cfg_getCrc32(bytes, static_cast<uint32_t>(length));
}

// Reads the whole file without hashing it.
static uint32_t by_reading(uint32_t crc, const unsigned char *, size_t)
{
    return crc;
}

static Bytes sample(size_t size)
{
    Bytes bytes(size);
    uint32_t state = 1;
    for (unsigned char &byte : bytes)
        byte = static_cast<unsigned char>((state = state * 1664525 + 1013904223) >> 24);
    return bytes;
}

static void in_memory(size_t size, const std::string &title)
{
    const Bytes bytes = sample(size);
    const uint32_t expected = by_byte(0, bytes.data(), size);
    const auto way = [&](const char *name, Add add) {
        return Way{name, cost_of(static_cast<int>(std::max<size_t>(1, SAMPLE_BYTES / size)),
                                 [=] { require(add(0, bytes.data(), size) == expected, name); })};
    };
    const Way reference = way("byte-wise", by_byte);
    compare("CRC-32, " + title + " in memory",
            {reference, way("cfg_set", by_library), way("zlib", by_zlib),
             way("libdeflate", by_libdeflate)});
}

static uint32_t of_file(FILE *file, Add add)
{
    unsigned char chunk[512]; // as the library does
    uint32_t crc = 0;
    for (size_t count; (count = std::fread(chunk, 1, sizeof chunk, file)) > 0;)
        crc = add(crc, chunk, count);
    return crc;
}

static uint32_t library_of_file(FILE *file, Add)
{
    return cfg_getCrc32FromFile(file, 0, 0);
}

static void in_file()
{
    const Bytes bytes = sample(FILE_SIZE);
    std::ofstream(FILE_NAME, std::ios::binary)
        .write(reinterpret_cast<const char *>(bytes.data()), FILE_SIZE);
    const uint32_t expected = by_byte(0, bytes.data(), FILE_SIZE);
    const auto way = [=](const char *name, uint32_t (*of)(FILE *, Add), Add add,
                         size_t buffer = BUFSIZ) {
        return Way{name, cost_of(1, [=] {
                       FILE *file = std::fopen(FILE_NAME, "r");
                       Bytes room(buffer);
                       if (buffer != BUFSIZ)
                           std::setvbuf(file, reinterpret_cast<char *>(room.data()), _IOFBF,
                                        buffer);
                       require(of(file, add) == (add == by_reading ? 0 : expected), name);
                       std::fclose(file);
                   })};
    };
    const Way library = way("cfg_set", library_of_file, nullptr);
    compare("CRC-32, 16 MB file, 512 bytes a read",
            {way("byte-wise", of_file, by_byte), library, way("zlib", of_file, by_zlib),
             way("libdeflate", of_file, by_libdeflate),
             way("read only, nothing hashed", of_file, by_reading)});
    compare("CRC-32, 16 MB file, cfg_set",
            {{"with fopen's own buffer", library.cost},
             way("with a stream buffer of 64 KB", library_of_file, nullptr, 65536)});
}

// Peak memory, in KB, of a process that only checks an image of this size: a
// sparse file whose header passes all checks but the last.
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
    require(wait4(child, &status, 0, &usage) == child && status == 0,
            "reading the image to its end");
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
    print_row("peak memory of cfg_checkFirmware", "image of 1 MB", static_cast<double>(small),
              "KB");
    print_row("peak memory of cfg_checkFirmware", "image of 1 GB", static_cast<double>(large),
              "KB");
}

int main()
{
    memory();
    in_memory(64, "64 bytes");
    in_memory(512, "512 bytes");
    in_memory(65536, "64 KB");
    in_file();
    return 0;
}
