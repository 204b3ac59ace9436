// cfgctl: the library's functions on the command line. This header is what
// its verbs share; main.cpp holds the table of verbs.
#pragma once

#include <cstdio>
#include <map>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <vector>

namespace cfgctl
{

enum Exit { OK = 0, NOT_FOUND = 1, USAGE = 2, STORE_FAILED = 3, APPLY_FAILED = 4 };

using Json = nlohmann::ordered_json;

// One call as the command line gave it.
struct Call {
    std::vector<std::string> arguments;         // after the verb
    std::map<std::string, std::string> options; // with their dashes; the value, or nothing
    bool json = false;

    [[nodiscard]] bool has(const std::string &option) const
    {
        return options.count(option) != 0;
    }
};

struct Verb {
    const char *name;
    const char *arguments;            // as usage shows them
    std::vector<std::string> options; // "--name", or "--name VALUE" when it takes one
    size_t least;                     // arguments
    size_t most;
    const char *summary;
    int (*run)(const Call &call);
};

int get(const Call &call);
int set(const Call &call);
int restore(const Call &call);
int show(const Call &call);
int board(const Call &call);
int prompt(const Call &call);
int alert_sound(const Call &call);
int privacy(const Call &call);
int night(const Call &call);
int lamp(const Call &call);
int probe(const Call &call);
int rec(const Call &call);
int monitor(const Call &call);
int events(const Call &call);
int status(const Call &call);
int firmware(const Call &call);
int speech(const Call &call);
int crc(const Call &call);
int wifi(const Call &call);
int link_status(const Call &call);
int time_control(const Call &call);
int upload(const Call &call);
int schedule(const Call &call);
int alarm_clock(const Call &call);
int viewer(const Call &call);
int sound(const Call &call);
int feature(const Call &call);

// The one setting whose setter stores it.
constexpr const char *PRIVACY_KEY = "orb_privacy_mode_enable";

// Data goes here and nowhere else: the caller's standard output. While a verb
// runs, what the library and its commands print on standard output goes to
// standard error.
void print(const std::string &text);
void print_json(const Json &json);
// Hands on what was printed, for verbs that go on; false when it cannot be.
bool flush();

// The members of an object, a line each for people. Returns OK.
int print_object(const Call &call, const Json &json);

// A number or text as people read it.
std::string text_of(const Json &value);

// "cfgctl: TEXT" on standard error.
void complain(const std::string &text);

// Rows as columns, each as wide as its widest cell.
std::string columns(const std::vector<std::vector<std::string>> &rows);

// The whole text as a decimal number of 32 bits.
std::optional<uint32_t> number(const std::string &text);

// The whole text as a decimal number of 32 bits with a sign.
std::optional<int32_t> integer(const std::string &text);

// Saves the store unless the call says --no-save: the last step of a change.
int save(const Call &call);

// A stored value, as far as 4095 characters.
std::optional<std::string> stored(const std::string &key);

} // namespace cfgctl
