// firmware, speech, crc: images, and what was downloaded.

#include "cfgctl.h"
#include "watched_file.h"

#include "cfg_set.h"

#include <array>
#include <cerrno>
#include <cstring>
#include <memory>

namespace cfgctl
{

namespace
{

constexpr size_t HEADER_SIZE = 64;
constexpr size_t BOARD_ID_SIZE = 16;
constexpr uint32_t LONGEST_SKIP = 511; // that the library leaves out

using File = std::unique_ptr<FILE, int (*)(FILE *)>;
using Header = std::array<char, HEADER_SIZE>;

// The number of an option that takes one, 0 when it is not given.
std::optional<uint32_t> option_number(const Call &call, const std::string &option,
                                      uint32_t largest = UINT32_MAX)
{
    if (!call.has(option))
        return 0;
    const std::string &text = call.options.at(option);
    const auto value = number(text);
    if (value && *value <= largest)
        return value;
    complain(option + " takes a number from 0 to " + std::to_string(largest) + ", not " + text);
    return std::nullopt;
}

File open_file(const std::string &path, uint32_t limit)
{
    File file(open_watched(path, limit), std::fclose);
    if (!file)
        complain(path + ": " + std::strerror(errno));
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
    for (size_t i = 0; i < 4; i++)
        value = value << 8 | static_cast<unsigned char>(header[offset + i]);
    return value;
}

std::string mismatch(uint32_t computed, uint32_t stated)
{
    return "its checksum is " + hexadecimal(computed) + ", the header states " +
           hexadecimal(stated);
}

// The three checks of an image, in the order in which the library makes them:
// nothing when it passes, else what is wrong.

std::string check_board(const Header &header)
{
    if (cfg_checkBoardId(header.data()) == 0)
        return "";
    char board[BOARD_ID_SIZE + 1] = "";
    if (cfg_getBoardInfo(BOARD_INFO_BOARDID, board, sizeof board) != 0 || *board == '\0')
        return "the board does not tell its id";
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

// The whole check once more: that an image passes is for it alone to say.
std::string check_image(const Header &header, FILE *file, uint32_t limit)
{
    if (cfg_checkFirmware(file, limit) == 0)
        return "";
    if (std::ferror(file) || std::fseek(file, 0, SEEK_SET) != 0)
        return "the file cannot be read";
    return mismatch(cfg_getCrc32FromFile(file, HEADER_SIZE, limit), big_endian(header, 24));
}

int firmware_check(const Call &call)
{
    const auto limit = option_number(call, "--limit");
    if (!limit)
        return USAGE;
    const std::string &path = call.arguments[1];
    const File file = open_file(path, *limit);
    if (!file)
        return NOT_FOUND;
    Header header;
    if (std::fread(header.data(), 1, HEADER_SIZE, file.get()) != HEADER_SIZE) {
        complain(path + (std::ferror(file.get()) ? " cannot be read"
                                                 : " is shorter than the header of an image"));
        return NOT_FOUND;
    }

    std::string wrong;
    std::vector<std::vector<std::string>> rows;
    Json json{{"file", path}, {"ok", false}, {"board", {}}, {"header", {}}, {"image", {}}};
    const auto enter = [&](const char *check, const std::string &finding) {
        wrong = finding;
        json[check] = wrong.empty();
        if (wrong.empty())
            rows.push_back({check, "ok"});
        else
            rows.push_back({check, "failed", wrong});
    };
    enter("board", check_board(header));
    if (wrong.empty())
        enter("header", check_header(header));
    if (wrong.empty())
        enter("image", check_image(header, file.get(), *limit));

    json["ok"] = wrong.empty();
    json["why"] = wrong.empty() ? Json() : Json(wrong);
    if (call.json)
        print_json(json);
    else
        print(columns(rows));
    return wrong.empty() ? OK : NOT_FOUND;
}

int firmware_newer(const Call &call)
{
    const std::string &version = call.arguments[1];
    int patch = 0;
    if (std::sscanf(version.c_str(), "v%*d.%*d.%d", &patch) != 1) {
        complain("a version reads like v5.1.0, not " + version);
        return USAGE;
    }
    const bool newer = cfg_isNewVersion(version.c_str()) == 0;
    if (call.json)
        print_json(Json{{"version", version}, {"newer", newer}});
    else
        print(newer ? "newer\n" : "not newer\n");
    return newer ? OK : NOT_FOUND;
}

int firmware_downloaded(const Call &call)
{
    char version[64] = "";
    const bool found = cfg_verifyDownloadedFw(version, sizeof version) == 0;
    if (!found)
        complain("no newer firmware is downloaded; what there was of one is deleted");
    if (call.json)
        print_json(Json{{"version", found ? Json(version) : Json()}});
    else if (found)
        print(std::string(version) + "\n");
    return found ? OK : NOT_FOUND;
}

} // namespace

int firmware(const Call &call)
{
    const std::string &what = call.arguments[0];
    const bool with_one = call.arguments.size() == 2;
    if (what == "check" && with_one)
        return firmware_check(call);
    if (what == "newer" && with_one && !call.has("--limit"))
        return firmware_newer(call);
    if (what == "downloaded" && !with_one && !call.has("--limit"))
        return firmware_downloaded(call);
    complain("firmware takes check FILE [--limit N], newer VERSION or downloaded");
    return USAGE;
}

int speech(const Call &call)
{
    char language[16] = "";
    const bool unpacked = cfg_verifyDownloadedSpeech(language, sizeof language) != 0;
    if (call.json)
        print_json(Json{{"language", language}, {"unpacked", unpacked}});
    else
        print(columns({{"language", language}, {"unpacked", unpacked ? "yes" : "no"}}));
    return unpacked ? OK : NOT_FOUND;
}

int crc(const Call &call)
{
    const auto skip = option_number(call, "--skip", LONGEST_SKIP);
    const auto limit = option_number(call, "--limit");
    if (!skip || !limit)
        return USAGE;
    const std::string &path = call.arguments[0];
    const File file = open_file(path, *limit);
    if (!file)
        return NOT_FOUND;
    const std::string value = hexadecimal(cfg_getCrc32FromFile(file.get(), *skip, *limit));
    if (std::ferror(file.get())) {
        complain(path + " cannot be read");
        return NOT_FOUND;
    }
    if (call.json)
        print_json(Json{{"file", path}, {"crc", value}});
    else
        print(value + "\n");
    return OK;
}

} // namespace cfgctl
