#include "message_text.h"

#include <cstdio>

namespace cfgctl
{

// clang-format off
static constexpr struct {
    long type;
    uint32_t command;
    const char *meaning;
} MEANINGS[] = {
    {1, 7, "privacy event"}, {4, 3, "sound sensitivity"},
    {2, 2, "PIR detection on"}, {2, 3, "PIR detection off"},
    {2, 4, "PIR: privacy mode entered"}, {2, 5, "PIR: privacy mode left"},
    {4, 4, "sound detection on"}, {4, 5, "sound detection off"},
    {4, 6, "sound: privacy mode entered"}, {4, 7, "sound: privacy mode left"},
    {7, 5, "recording: privacy mode entered"}, {7, 7, "recording: privacy mode left"},
};
// clang-format on

static std::string in_quotes(const std::string &bytes)
{
    std::string text = "\"";
    for (const char c : bytes) {
        char hex[8];
        std::snprintf(hex, sizeof hex, "\\x%02x", static_cast<unsigned char>(c));
        const bool plain = c >= ' ' && c <= '~' && c != '"' && c != '\\';
        text += plain ? std::string(1, c) : hex;
    }
    return text + "\"";
}

const char *meaning(const daemon_message &message)
{
    for (const auto &row : MEANINGS)
        if (row.type == message.msg_type && row.command == message.command)
            return row.meaning;
    return message.msg_type == 7 ? "recording" : "unknown";
}

std::string parameter(const daemon_message &message)
{
    const std::string bytes(message.param, sizeof message.param);
    return bytes.substr(0, bytes.find_last_not_of('\0') + 1);
}

std::string line_of(const daemon_message &message)
{
    const std::string bytes = parameter(message);
    return "type " + std::to_string(message.msg_type) + " command " +
           std::to_string(message.command) + " value " + std::to_string(message.value) +
           (bytes.empty() ? "" : " param " + in_quotes(bytes)) + ": " + meaning(message);
}

} // namespace cfgctl
