// cfgctl: the library's functions on the command line. This header is what
// its verbs share; main.cpp reads the words, table.h says what they mean.
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

// The whole text as a decimal number; as that or the minutes of HH:MM.
std::optional<int64_t> number(const std::string &text);
std::optional<int64_t> minutes(const std::string &text);

// The number as JSON, null when the text is none.
Json number_or_null(const std::string &text);

// The text as it is, or for a terminal its control characters as \xHH.
std::string visible(const std::string &text);

// One call as the command line gave it, and what it leaves to be printed.
struct Call {
    const Action *action = nullptr;
    std::vector<std::string> words;         // checked
    unsigned options = 0;                   // those given
    std::map<unsigned, std::string> values; // of options that take one, checked

    Exit status = OK;
    Json data;                       // the answer; null when something was done instead
    std::optional<std::string> text; // the answer for people, when it is not the data as a table
    std::vector<std::string> fields; // of data that is an array, as columns
    bool printed = false;            // by the verb itself
    Json done = Json::object();      // what --json says of what was done, beside the words

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

// What ends a verb without success.
struct Failure : std::runtime_error {
    Failure(Exit with, const std::string &text) : std::runtime_error(text), status(with) {}
    Exit status;
};

[[noreturn]] void fail(Exit status, const std::string &text);

// "cfgctl: TEXT" on standard error.
void complain(const std::string &text);

// Data goes here and nowhere else: the caller's standard output. While a verb
// runs, what the library and its commands print there goes to standard error.
// False when it cannot be handed on.
bool print(const std::string &text);

// In one line or, with an indent, several; what is no UTF-8 becomes U+FFFD.
std::string text_of(const Json &json, int indent = -1);

// The members of an object, a line each; or the fields of an array's objects,
// with headings. A field that they do not have numbers the rows.
std::string table(const Json &json, const std::vector<std::string> &fields = {});

// "; did you mean WORD?", or nothing when no known word is like it.
std::string nearest(const std::string &word, const std::vector<std::string> &known);

const Action *find_action(const std::string &verb, const std::string &name);
const Setting *find_setting(const std::string &key);

// What is wrong with the text, behind the word's name; empty when it is what the
// word takes. Whatever is stored or was is judged by this.
std::string fault_of(const Word &word, const std::string &text);

// Ends with USAGE when there is a fault.
void check(const Word &word, const std::string &text);

std::string lower(std::string text);

// What stands before, between and behind the separators, but for an empty end.
std::vector<std::string> split(const std::string &text, char separator);

// All that can still be read of a file.
std::string rest_of(FILE *file);

bool is_secret(const Word &word);

// What stands for a secret that is not shown.
constexpr const char *HIDDEN = "***";

// The next line of standard input, which has to be there.
std::string line_of_input();

// The first line of a file, empty when it cannot be read.
std::string first_line(const std::string &path);

// A stored value, whole.
std::optional<std::string> stored(const std::string &key);

// Ends with STORE_FAILED unless the value is stored.
void require_stored(const std::string &key, const std::string &value);

// The daemons' queue.
constexpr int QUEUE_KEY = 5678;

// Ends with APPLY_FAILED when the daemons' queue has no room for the messages.
void require_room(unsigned messages);

// The steps of set: stores, and applies unless the call says otherwise.
// "applied" when that was seen, "called" when the setter ran, "stored".
const char *change(const Call &call, const std::string &key, const std::string &value);

} // namespace cfgctl
