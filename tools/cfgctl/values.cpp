// The valid values of words and stored settings.

#include "cfgctl.h"

#include "cfg_set.h"
#include "settings/frame.h"

#include <algorithm>
#include <charconv>
#include <cstring>
#include <strings.h>

namespace cfgctl
{

namespace
{

constexpr const char *UNSAFE = "has a character that is special to a shell";

// Whether the supplicant reads a "#" in a quoted text as a comment.
bool cut_at_hash(const std::string &text)
{
    bool inside = true;
    for (const char c : text) {
        if (c == '#' && !inside)
            return true;
        inside ^= c == '"';
    }
    return false;
}

bool is_control(char c)
{
    return static_cast<unsigned char>(c) < ' ' || c == '\x7f';
}

// Why the supplicant would reject its whole file or read a different text.
std::string unquotable(const std::string &text)
{
    if (text.find('\n') != std::string::npos)
        return "has a line feed";
    return cut_at_hash(text) ? "has a # after a double quote" : "";
}

std::string fault_of_key(const std::string &key)
{
    const bool digits = key.find_first_not_of("0123456789abcdefABCDEF") == std::string::npos;
    if (key.size() < 8 && could_be_wep(key.c_str()) == 0)
        return "takes ";
    if (key.size() == 64 && !digits)
        return "has 64 characters but is not hexadecimal";
    if (key.size() >= 8 && std::any_of(key.begin(), key.end(), is_control))
        return "has a control character";
    return unquotable(key);
}

// Whether no row of the zone table begins with the name. Without a table, every
// name is valid.
bool is_unknown_zone(const std::string &name)
{
    FILE *table = std::fopen("/etc_ro/time_zone", "re");
    if (!table)
        return false;
    bool found = false;
    char row[256];
    while (!found && std::fgets(row, sizeof row, table))
        found = strncasecmp(row, name.c_str(), name.size()) == 0;
    std::fclose(table);
    return !found;
}

bool is_bssid(const std::string &text)
{
    char copy[32] = "";
    text.copy(copy, sizeof copy - 1);
    return validate_bssid(copy) == 1;
}

bool is_areas(const std::string &text)
{
    int area[6];
    int end = 0;
    return std::sscanf(text.c_str(), "{%d,%d}{%d,%d,%d,%d}%n", &area[0], &area[1], &area[2],
                       &area[3], &area[4], &area[5], &end) == 6 &&
           static_cast<size_t>(end) == text.size();
}

bool is_choice(const Word &word, const std::string &text)
{
    return ("|" + std::string(word.choices) + "|").find("|" + text + "|") != std::string::npos;
}

// What is wrong with a text of valid length; "takes " to print what the word takes.
std::string fault_of_text(const Word &word, const std::string &text)
{
    using cfg_set::harmless;
    switch (word.kind) {
    case PATH:
        return harmless(text.c_str(), cfg_set::SOUND_WORD) ? "" : UNSAFE;
    case SERVER:
        return harmless(text.c_str(), cfg_set::SERVER_WORD)
                   ? ""
                   : "has a character that is special to a shell, or begins with -";
    case ZONE:
        return !harmless(text.c_str(), cfg_set::ZONE_WORD) ? UNSAFE
               : is_unknown_zone(text)                     ? "is not in /etc_ro/time_zone"
                                                           : "";
    case SSID:
        return unquotable(text);
    case WIFI_KEY:
        return fault_of_key(text);
    case BSSID:
        return is_bssid(text) ? "" : "takes ";
    case AREAS:
        return is_areas(text) ? "" : "takes ";
    default:
        return "";
    }
}

} // namespace

bool is_secret(const Word &word)
{
    return word.kind == SECRET || word.kind == WIFI_KEY;
}

std::string fault_of(const Word &word, const std::string &text)
{
    const auto value = word.kind == TIME ? minutes(text) : number(text);
    const auto length = static_cast<int64_t>(text.size());
    std::string fault;
    if (word.kind == NUMBER || word.kind == TIME)
        fault = value && *value >= word.least && *value <= word.most ? "" : "takes ";
    else if (word.kind == CHOICE)
        fault = is_choice(word, text) ? "" : "takes ";
    else if (word.kind >= TEXT)
        fault = length < word.least || length > word.most ? "takes "
                : length > 0                              ? fault_of_text(word, text)
                                                          : "";
    const bool shown = word.kind < TEXT || word.kind == BSSID || word.kind == AREAS;
    return fault == "takes " ? fault + takes(word) + (shown ? ", not " + text : "") : fault;
}

void check(const Word &word, const std::string &text)
{
    const std::string fault = fault_of(word, text);
    if (!fault.empty())
        fail(USAGE, std::string(word.name) + " " + fault);
}

std::optional<int64_t> number(const std::string &text)
{
    int64_t value = 0;
    const char *end = text.data() + text.size();
    const auto [rest, error] = std::from_chars(text.data(), end, value);
    return error == std::errc() && rest == end ? std::optional(value) : std::nullopt;
}

std::optional<int64_t> minutes(const std::string &text)
{
    unsigned hour = 0;
    unsigned minute = 0;
    char more = 0;
    if (std::sscanf(text.c_str(), "%2u:%2u%c", &hour, &minute, &more) == 2 && minute < 60)
        return hour * 60 + minute;
    return number(text);
}

Json number_or_null(const std::string &text)
{
    const auto value = number(text);
    return value ? Json(*value) : Json();
}

} // namespace cfgctl
