// cfgctl: the library's functions on the command line. This header declares what
// its verbs share; main.cpp reads the words, table.h defines them.
#pragma once

#include "help.h"

#include <map>
#include <nlohmann/json.hpp>
#include <optional>
#include <stdexcept>

namespace cfgctl
{

enum Exit { OK = 0, NOT_FOUND = 1, USAGE = 2, STORE_FAILED = 3, APPLY_FAILED = 4 };

using Json = nlohmann::ordered_json;

// The whole text as a decimal number; minutes() also takes HH:MM.
std::optional<int64_t> number(const std::string &text);
std::optional<int64_t> minutes(const std::string &text);

// The number as JSON, null when the text is not a number.
Json number_or_null(const std::string &text);

// The text; on a terminal, with control characters as \xHH.
std::string visible(const std::string &text);

// One call from the command line, and its results to print.
struct Call {
    const Action *action = nullptr;
    std::vector<std::string> words;         // checked
    unsigned options = 0;                   // the given ones
    std::map<unsigned, std::string> values; // of options, checked

    Exit status = OK;
    Json data;                       // the answer; null for an action
    std::optional<std::string> text; // the answer as text, unless it is the data as a table
    std::vector<std::string> fields; // columns, if data is an array
    bool printed = false;            // by the verb itself
    Json done = Json::object();      // of an action: more members for --json

    [[nodiscard]] bool has(unsigned option) const
    {
        return (options & option) != 0;
    }
    [[nodiscard]] uint32_t option(unsigned option) const
    {
        return has(option) ? static_cast<uint32_t>(*number(values.at(option))) : 0;
    }
    void answer(Json json, const std::string &for_people)
    {
        data = std::move(json);
        text = visible(for_people) + "\n";
    }
};

// Ends a verb without success.
struct Failure : std::runtime_error {
    Failure(Exit with, const std::string &text) : std::runtime_error(text), status(with) {}
    Exit status;
};

[[noreturn]] void fail(Exit status, const std::string &text);

// "cfgctl: TEXT" on standard error.
void complain(const std::string &text);

// Prints data, on the caller's standard output. What the library and its commands
// print goes to standard error instead. False when the write fails.
bool print(const std::string &text);

// On one line or, with an indent, several. Invalid UTF-8 becomes U+FFFD.
std::string text_of(const Json &json, int indent = -1);

// The members of an object, one per line; or the fields of an array's objects,
// with headings. A field that the objects lack shows the row's number.
std::string table(const Json &json, const std::vector<std::string> &fields = {});

// "; did you mean WORD?", or nothing when no known word is similar.
std::string nearest(const std::string &word, const std::vector<std::string> &known);

const Action *find_action(const std::string &verb, const std::string &name);
const Setting *find_setting(const std::string &key);

// What is wrong with the text, to print after the word's name; empty when it is
// valid. New and stored values are both judged by this.
std::string fault_of(const Word &word, const std::string &text);

// Ends with USAGE when there is a fault.
void check(const Word &word, const std::string &text);

std::string lower(std::string text);

// The parts between the separators, without an empty last one.
std::vector<std::string> split(const std::string &text, char separator);

// The unread rest of a file.
std::string rest_of(FILE *file);

bool is_secret(const Word &word);

// Printed in place of a secret.
constexpr const char *HIDDEN = "***";

// The next line of standard input. Ends with USAGE when there is none.
std::string line_of_input();

// The first line of a file, empty when it cannot be read.
std::string first_line(const std::string &path);

// The whole stored value.
std::optional<std::string> stored(const std::string &key);

// Ends with STORE_FAILED unless the value is stored.
void require_stored(const std::string &key, const std::string &value);

// The daemons' queue.
constexpr int QUEUE_KEY = 5678;

// Ends with APPLY_FAILED when the daemons' queue has no room for the messages.
void require_room(unsigned messages);

// Stores and, unless the call has NO_APPLY, applies, as set does. Returns "applied"
// when the driver shows the value, "called" when the setter ran, else "stored".
const char *change(const Call &call, const std::string &key, const std::string &value);

} // namespace cfgctl
