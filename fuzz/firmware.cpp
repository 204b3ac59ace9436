// What an image and a download may hold: board ids, headers, bodies, versions.
// The input is the answer of the board tool (17 bytes) and then an image; all
// of it is a version, too. Results are compared with plainer ways to get them.

#include "cfg_set.h"
#include "target.h"
#include "tests/crc32_reference.h"

#include <algorithm>
#include <array>
#include <climits>
#include <cstdio>

constexpr size_t ANSWER = 17;
constexpr size_t HEADER = 64;

static std::string answer;

// clang-format off
extern "C" FILE *popen(const char *, const char *) { return fmemopen(answer.data(), ANSWER, "r"); }
extern "C" int pclose(FILE *stream) { return std::fclose(stream); }
// clang-format on

static uint32_t big_endian(const std::string &bytes, size_t offset)
{
    uint32_t value = 0;
    for (const char byte : bytes.substr(offset, 4))
        value = value << 8 | static_cast<unsigned char>(byte);
    return value;
}

// The bytes that a checksum with this skip and limit is of.
static std::string part(const std::string &bytes, uint32_t skip, uint32_t limit)
{
    const std::string read = bytes.substr(0, limit == 0 ? bytes.size() : limit);
    return read.substr(skip < std::min<size_t>(read.size(), 512) ? skip : 0);
}

static bool is_newer(const char *text)
{
    std::array<long long, 3> numbers{};
    if (std::sscanf(text, "v%lld.%lld.%lld", &numbers[0], &numbers[1], &numbers[2]) != 3)
        return false;
    for (long long &number : numbers)
        number = std::clamp<long long>(number, INT_MIN, INT_MAX);
    return numbers > std::array<long long, 3>{5, 0, 44};
}

// The text before the first "h" that is not the first character, in lower case.
static std::string model(std::string board)
{
    board.resize(std::min({board.size(), board.find('\0'), board.find('\n')}));
    std::transform(board.begin(), board.end(), board.begin(),
                   [](unsigned char letter) { return std::tolower(letter); });
    return board.substr(0, board.find('h', 1));
}

void try_input(const std::string &input)
{
    require((cfg_isNewVersion(input.c_str()) == 0) == is_newer(input.c_str()));
    if (input.size() < ANSWER + HEADER)
        return;
    answer = input.substr(0, ANSWER);
    std::string image = input.substr(ANSWER);
    std::string header = image.substr(0, HEADER);

    const bool right_board = cfg_checkBoardId(header.data()) == 0;
    if (right_board)
        require(model(answer.substr(0, 16)) == model(header.substr(32, 16)));

    const bool whole_header = cfg_checkHeaderChecksum(header.data()) == 0;
    const uint32_t header_checksum = big_endian(header, 4);
    header.replace(4, 4, 4, '\0');
    require(whole_header == (crc_by_bits(header) == header_checksum));

    const auto skip = static_cast<unsigned char>(input.front()) * 4U;
    const auto limit = static_cast<unsigned char>(input.back()) * 9U;
    FILE *file = fmemopen(image.data(), image.size(), "r");
    require(cfg_getCrc32FromFile(file, skip, limit) == crc_by_bits(part(image, skip, limit)));
    const bool whole_image = crc_by_bits(part(image, HEADER, limit)) == big_endian(image, 24);
    require((cfg_checkFirmware(file, limit) == 0) == (right_board && whole_header && whole_image));
    std::fclose(file);
}
