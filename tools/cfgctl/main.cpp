#include "cfgctl.h"

#include "platform/param_store.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <ctime>
#include <fcntl.h>
#include <numeric>
#include <unistd.h>

namespace cfgctl
{

namespace
{

FILE *data = nullptr;

// Keeps the caller's standard output for data and points descriptor 1 at
// standard error, for the library's reports and the commands it runs.
bool split_output()
{
    const int kept = fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, 3);
    if (kept < 0 || dup2(STDERR_FILENO, STDOUT_FILENO) < 0)
        return false;
    data = fdopen(kept, "w");
    return data != nullptr;
}

[[noreturn]] void wrong_usage(const Action *action, const std::string &text)
{
    fail(USAGE, text + "\nusage: " +
                    (action ? usage(*action) : "cfgctl VERB ...; cfgctl help lists the verbs"));
}

// The index of an option; the word may end with "=VALUE".
unsigned find_option(const std::string &word)
{
    for (unsigned i = 0; i < OPTION_COUNT; i++)
        if (word.substr(0, word.find('=')) == OPTIONS[i].name)
            return i;
    wrong_usage(nullptr, "unknown option " + word);
}

// Separates the options, which can be anywhere, from the other words.
void sort_words(const std::vector<std::string> &given, Call &call)
{
    bool ended = false;
    for (size_t i = 0; i < given.size(); i++) {
        const std::string &word = given[i];
        if (ended || (word.compare(0, 2, "--") != 0 && word != "-h")) {
            call.words.push_back(word);
            continue;
        }
        ended = word == "--";
        if (ended)
            continue;
        const unsigned index = find_option(word == "-h" ? "--help" : word);
        const Word &option = OPTIONS[index];
        const size_t equals = word.find('=');
        const bool inside = equals != std::string::npos;
        call.options |= 1U << index;
        if (option.kind == NONE && inside)
            wrong_usage(nullptr, std::string(option.name) + " takes no value");
        if (option.kind == NONE)
            continue;
        if (!inside && i + 1 == given.size())
            wrong_usage(nullptr, std::string(option.name) + " needs a value");
        const std::string value = inside ? word.substr(equals + 1) : given[++i];
        check(option, value);
        call.values[1U << index] = value;
    }
}

const Verb &find_verb(const std::string &name)
{
    std::vector<std::string> names;
    for (const Verb &verb : VERBS) {
        if (is(verb.name, name))
            return verb;
        names.emplace_back(verb.name);
    }
    wrong_usage(nullptr, "unknown verb " + name + nearest(name, names));
}

// Finds the action of the words and keeps only its arguments.
void choose_action(Call &call)
{
    if (call.words.empty())
        wrong_usage(nullptr, "no verb given");
    const std::string verb = find_verb(call.words[0]).name;
    const std::string name = call.words.size() > 1 ? call.words[1] : "";
    call.action = find_action(verb, name);
    if (!call.action)
        call.action = find_action(verb, "");
    std::string names;
    for (const Action &action : ACTIONS)
        if (is(action.verb, verb) && *action.name)
            names += std::string(names.empty() ? "" : ", ") + action.name;
    const bool alone = call.action && !*call.action->name;
    if (!call.action || (alone && !names.empty() && !name.empty()))
        wrong_usage(nullptr, verb + " takes one of " + names +
                                 (name.empty() ? "" : ", not " + name) + "; see cfgctl help " +
                                 verb);
    call.words.erase(call.words.begin(), call.words.begin() + (alone ? 1 : 2));
}

// The word for the `index`th argument, null when there is none. Removes the name
// from a `text` of the form NAME=VALUE.
const Word *find_word(const Action &action, size_t index, std::string &text)
{
    const Word *words = action.words;
    if (words[0].kind == ASSIGNMENT)
        return words;
    if (!words[0].name || std::string(words[0].name).back() != '=')
        return index < WORDS_MAX && words[index].name ? &words[index] : nullptr;
    for (; words->name; words++) {
        const size_t length = std::strlen(words->name);
        if (text.compare(0, length, words->name) != 0)
            continue;
        text.erase(0, length);
        return words;
    }
    return nullptr;
}

// Checks every word; reads those that come from standard input first.
void check_words(Call &call)
{
    const Action &action = *call.action;
    for (unsigned i = 0; i < OPTION_COUNT; i++)
        if (call.options & ~(action.options | JSON) & 1U << i)
            wrong_usage(&action, std::string("no option ") + OPTIONS[i].name);
    const bool begun = (action.options & TOGETHER) != 0 && !call.words.empty();
    if (call.words.size() < action.least || (begun && action.words[call.words.size()].name))
        wrong_usage(&action, std::string(action.words[call.words.size()].name) + " is missing");
    for (size_t i = 0; i < call.words.size(); i++) {
        std::string value = call.words[i];
        const Word *word = find_word(action, i, value);
        if (!word)
            wrong_usage(&action, "too many words"); // do not print them: they may be secrets
        const std::string name = call.words[i].substr(0, call.words[i].size() - value.size());
        if (is_secret(*word) && value == "-")
            value = line_of_input();
        check(*word, value);
        call.words[i] = name + value;
    }
}

// What was done, as an object: the verb, its words and call.done.
Json report(const Call &call)
{
    const std::string name = call.action->name;
    Json json{{"did", call.action->verb + (name.empty() ? "" : " " + name)}};
    for (size_t i = 0; i < call.words.size(); i++) {
        std::string value = call.words[i];
        if (call.action->words[0].kind == ASSIGNMENT)
            break; // set reports in call.done
        const Word &word = *find_word(*call.action, i, value);
        std::string field = lower(word.name);
        field.erase(std::remove(field.begin(), field.end(), '='), field.end());
        json[field] = value;
        if (word.kind == NUMBER || (word.kind == CHOICE && number(value)))
            json[field] = *number(value);
        if (is_secret(word) && !call.has(SHOW_SECRETS))
            json[field] = HIDDEN;
    }
    json.update(call.done);
    return json;
}

// A value for people to read.
std::string cell(const std::string &name, const Json &value)
{
    char text[32];
    if (value.is_null())
        return "-";
    if (value.is_boolean())
        return value.get<bool>() ? "yes" : "no";
    if (value.is_string())
        return visible(value.get<std::string>());
    const bool minutes = name == "starttime" || name == "stoptime";
    if (!minutes && name != "time")
        return text_of(value);
    // Minutes of the day, or seconds since 1970.
    const time_t seconds = value.get<time_t>() * (minutes ? 60 : 1);
    const bool midnight = minutes && seconds == 86400;
    std::strftime(text, sizeof text, minutes ? "%H:%M" : "%Y-%m-%d %H:%M:%S", gmtime(&seconds));
    return midnight ? "24:00" : text;
}

void add_rows(const Json &object, const std::string &prefix,
              std::vector<std::vector<std::string>> &rows)
{
    for (const auto &[name, value] : object.items()) {
        if (value.is_object()) {
            add_rows(value, name + ".", rows);
        } else if (value.is_array()) {
            for (const Json &element : value)
                rows.push_back({prefix + name, cell(name, element)});
        } else {
            rows.push_back({prefix + name, cell(name, value)});
        }
    }
}

std::vector<std::string> headings(std::vector<std::string> fields)
{
    for (std::string &field : fields) {
        field = field == "time" ? "time (utc)" : field;
        for (char &c : field)
            c = c == '_' ? ' ' : static_cast<char>(std::toupper(c));
    }
    return fields;
}

void finish(Call &call)
{
    if (call.printed)
        return;
    if (!call.data.is_null()) {
        print(call.has(JSON) ? text_of(call.data, 2) + "\n"
                             : call.text.value_or(table(call.data, call.fields)));
        return;
    }
    if (call.action->options & NO_SAVE) {
        call.done["saved"] = !call.has(NO_SAVE);
        if (!call.has(NO_SAVE) && param_save() != 0)
            fail(STORE_FAILED, "the change is stored, but the store cannot be saved");
    }
    if (call.has(JSON))
        print(text_of(report(call), 2) + "\n");
}

int perform(Call &call)
{
    if (call.has(VERSION)) {
        print("cfgctl " CFGCTL_VERSION "\n");
        return OK;
    }
    const bool asked = !call.words.empty() && call.words[0] == "help";
    if (asked || call.has(HELP)) {
        call.words.erase(call.words.begin(), call.words.begin() + (asked ? 1 : 0));
        print(call.words.empty() ? help() : help(find_verb(call.words[0])));
        return OK;
    }
    choose_action(call);
    check_words(call);
    if (is(call.action->verb, "viewer") && !call.has(SHOW_SECRETS))
        dup2(open("/dev/null", O_WRONLY | O_CLOEXEC), STDOUT_FILENO); // they report secrets
    call.action->run(call);
    finish(call);
    return call.status;
}

int run(const std::vector<std::string> &words)
{
    int status = OK;
    try {
        if (!split_output())
            fail(NOT_FOUND, std::string("cannot set up standard output: ") + std::strerror(errno));
        Call call;
        sort_words(words, call);
        status = perform(call);
    } catch (const Failure &failure) {
        complain(failure.what());
        status = failure.status;
    }
    std::fflush(stdout);
    const bool lost = data && std::ferror(data) != 0;
    if (!data || (std::fclose(data) == 0 && !lost))
        return status;
    complain(std::string("cannot write standard output: ") + std::strerror(errno));
    return status == OK ? NOT_FOUND : status;
}

} // namespace

void fail(Exit status, const std::string &text)
{
    throw Failure(status, text);
}

void complain(const std::string &text)
{
    std::fflush(stdout); // the library's reports come first
    std::fprintf(stderr, "cfgctl: %s\n", text.c_str());
}

bool print(const std::string &text)
{
    std::fwrite(text.data(), 1, text.size(), data);
    return std::fflush(data) == 0;
}

std::string visible(const std::string &text)
{
    if (isatty(fileno(data)) != 1)
        return text;
    std::string shown;
    for (const char c : text) {
        char hex[8];
        std::snprintf(hex, sizeof hex, "\\x%02x", static_cast<unsigned char>(c));
        const bool control = static_cast<unsigned char>(c) < ' ' || c == '\x7f';
        // U+0080 to U+009F, two bytes in UTF-8, are controls too.
        const bool second = !shown.empty() && shown.back() == '\xc2' && (c & '\xe0') == '\x80';
        shown += control || second ? hex : std::string(1, c);
    }
    return shown;
}

std::string text_of(const Json &json, int indent)
{
    return json.is_string() && indent < 0
               ? json.get<std::string>()
               : json.dump(indent, ' ', false, Json::error_handler_t::replace);
}

std::string table(const Json &json, const std::vector<std::string> &fields)
{
    std::vector<std::vector<std::string>> rows;
    if (json.is_object())
        add_rows(json, "", rows);
    else
        rows.push_back(headings(fields));
    for (size_t i = 0; json.is_array() && i < json.size(); i++) {
        rows.emplace_back();
        for (const std::string &field : fields)
            rows.back().push_back(json[i].contains(field) ? cell(field, json[i][field])
                                                          : std::to_string(i));
    }
    return columns(rows);
}

std::string nearest(const std::string &word, const std::vector<std::string> &known)
{
    size_t least = word.size() / 4 + 2; // more changes than this are no typo
    std::string best;
    for (const std::string &candidate : known) {
        std::vector<size_t> row(candidate.size() + 1);
        std::iota(row.begin(), row.end(), 0U);
        for (size_t i = 0; i < word.size(); i++) {
            size_t corner = row[0]++;
            for (size_t j = 0; j < candidate.size(); j++) {
                const size_t changed = corner + (word[i] == candidate[j] ? 0 : 1);
                corner = row[j + 1];
                row[j + 1] = std::min({changed, corner + 1, row[j] + 1});
            }
        }
        if (row.back() < least) {
            least = row.back();
            best = candidate;
        }
    }
    return best.empty() ? "" : "; did you mean " + best + "?";
}

const Action *find_action(const std::string &verb, const std::string &name)
{
    for (const Action &action : ACTIONS)
        if (is(action.verb, verb) && is(action.name, name))
            return &action;
    return nullptr;
}

std::string line_of_input()
{
    std::string line;
    int c;
    while ((c = std::getchar()) != EOF && c != '\n')
        line += static_cast<char>(c);
    if (c == EOF && line.empty())
        fail(USAGE, "no line on standard input");
    return line;
}

std::string first_line(const std::string &path)
{
    char text[256] = "";
    if (FILE *file = std::fopen(path.c_str(), "re")) {
        if (!std::fgets(text, sizeof text, file))
            *text = '\0';
        std::fclose(file);
    }
    return {text, std::strcspn(text, "\n")};
}

std::vector<std::string> split(const std::string &text, char separator)
{
    std::vector<std::string> parts;
    for (size_t at = 0, end; at < text.size(); at = end + 1) {
        end = std::min(text.find(separator, at), text.size());
        parts.push_back(text.substr(at, end - at));
    }
    return parts;
}

std::string rest_of(FILE *file)
{
    std::string text;
    for (int c; (c = std::fgetc(file)) != EOF;)
        text += static_cast<char>(c);
    return text;
}

std::string lower(std::string text)
{
    std::transform(text.begin(), text.end(), text.begin(), tolower);
    return text;
}

} // namespace cfgctl

#ifdef __GLIBCXX__
// The C++ library's own handler needs a demangler of 30 KB.
void __gnu_cxx::__verbose_terminate_handler()
{
    std::abort();
}
#endif

int main(int argc, char **argv)
try {
    return cfgctl::run({argv + (argc > 0 ? 1 : 0), argv + argc});
} catch (const std::exception &error) {
    cfgctl::complain(error.what());
    return cfgctl::NOT_FOUND;
}
