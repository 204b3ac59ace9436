// firmware, speech, crc: images and downloads.

#include "cfgctl.h"
#include "watched_file.h"

#include "cfg_set.h"

#include <arpa/inet.h>
#include <array>
#include <cerrno>
#include <cstring>
#include <memory>
#include <sys/stat.h>

namespace cfgctl
{

namespace
{

constexpr size_t HEADER_SIZE = 64;
constexpr size_t BOARD_ID_SIZE = 16;

using File = std::unique_ptr<FILE, int (*)(FILE *)>;
using Header = std::array<char, HEADER_SIZE>;

File open_file(const std::string &path, uint32_t limit)
{
    File file(open_watched(path, limit), std::fclose);
    if (!file)
        fail(NOT_FOUND, path + ": " + std::strerror(errno));
    return file;
}

std::string hexadecimal(uint32_t value)
{
    char text[9];
    std::snprintf(text, sizeof text, "%08x", value);
    return text;
}

uint32_t big_endian(const Header &header, size_t offset)
{
    uint32_t value = 0;
    std::memcpy(&value, header.data() + offset, sizeof value);
    return ntohl(value);
}

std::string mismatch(uint32_t computed, uint32_t stated)
{
    return "its checksum is " + hexadecimal(computed) + ", the header says " + hexadecimal(stated);
}

// The three checks of an image, in the library's order. Each returns what is
// wrong, or nothing.

std::string check_board(const Header &header)
{
    if (cfg_checkBoardId(header.data()) == 0)
        return "";
    char board[BOARD_ID_SIZE + 1] = "";
    if (cfg_getBoardInfo(BOARD_INFO_BOARDID, board, sizeof board) != 0 || *board == '\0')
        return "the board does not report its id";
    const char *image = header.data() + 32;
    return "it is for \"" + std::string(image, strnlen(image, BOARD_ID_SIZE)) +
           "\", this board is \"" + board + "\"";
}

std::string check_header(const Header &header)
{
    if (cfg_checkHeaderChecksum(header.data()) == 0)
        return "";
    Header cleared = header;
    std::fill_n(cleared.begin() + 4, 4, '\0');
    return mismatch(cfg_getCrc32(cleared.data(), HEADER_SIZE), big_endian(header, 4));
}

// The library's complete check, which alone decides whether an image passes.
std::string check_image(const Header &header, FILE *file, uint32_t limit)
{
    if (cfg_checkFirmware(file, limit) == 0)
        return "";
    if (std::ferror(file) || std::fseek(file, 0, SEEK_SET) != 0)
        return "the file cannot be read";
    return mismatch(cfg_getCrc32FromFile(file, HEADER_SIZE, limit), big_endian(header, 24));
}

} // namespace

void firmware_check(Call &call)
{
    const std::string &path = call.words[0];
    const uint32_t limit = call.option(LIMIT);
    const File file = open_file(path, limit);
    Header header;
    if (std::fread(header.data(), 1, HEADER_SIZE, file.get()) != HEADER_SIZE)
        fail(NOT_FOUND,
             path + (std::ferror(file.get()) ? " cannot be read"
                                             : " is shorter than the header of an image"));
    std::string wrong;
    std::vector<std::vector<std::string>> rows;
    call.data = {{"file", path}, {"ok", false}, {"board", {}}, {"header", {}}, {"image", {}}};
    const auto enter = [&](const char *check, const std::string &finding) {
        wrong = finding;
        call.data[check] = wrong.empty();
        rows.push_back({check, wrong.empty() ? "ok" : "failed"});
        if (!wrong.empty())
            rows.back().push_back(wrong);
    };
    enter("board", check_board(header));
    if (wrong.empty())
        enter("header", check_header(header));
    if (wrong.empty())
        enter("image", check_image(header, file.get(), limit));
    call.data["ok"] = wrong.empty();
    call.data["why"] = wrong.empty() ? Json() : Json(wrong);
    call.text = columns(rows);
    call.status = wrong.empty() ? OK : NOT_FOUND;
}

void firmware_newer(Call &call)
{
    const std::string &version = call.words[0];
    int patch = 0;
    if (std::sscanf(version.c_str(), "v%*d.%*d.%d", &patch) != 1)
        fail(USAGE, "a version looks like v5.1.0, not " + version);
    const bool newer = cfg_isNewVersion(version.c_str()) == 0;
    call.answer({{"version", version}, {"newer", newer}}, newer ? "newer" : "not newer");
    call.status = newer ? OK : NOT_FOUND;
}

void firmware_downloaded(Call &call)
{
    char version[64] = "";
    if (cfg_verifyDownloadedFw(version, sizeof version) != 0)
        fail(NOT_FOUND, "no newer firmware was downloaded; any other download is deleted");
    call.answer({{"version", version}}, version);
}

void speech(Call &call)
{
    char language[16] = "";
    const bool unpacked = cfg_verifyDownloadedSpeech(language, sizeof language) != 0;
    call.data = {{"language", language}, {"unpacked", unpacked}};
    call.status = unpacked ? OK : NOT_FOUND;
}

void crc(Call &call)
{
    const std::string &path = call.words[0];
    const File file = open_file(path, call.option(LIMIT));
    struct stat status = {};
    const bool known = stat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode);
    const uint32_t skip = call.option(SKIP);
    const bool cut = call.option(LIMIT) > 0 && call.option(LIMIT) <= skip;
    if (skip > 0 && (cut || (known && status.st_size <= static_cast<off_t>(skip))))
        fail(NOT_FOUND, "nothing is left of " + path + " after " + std::to_string(skip) + " bytes");
    const std::string value =
        hexadecimal(cfg_getCrc32FromFile(file.get(), skip, call.option(LIMIT)));
    if (std::ferror(file.get()))
        fail(NOT_FOUND, path + " cannot be read");
    call.answer({{"file", path}, {"crc", value}}, value);
}

} // namespace cfgctl
