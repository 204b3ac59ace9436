#include "cfgctl.h"

#include "platform/param_store.h"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstring>
#include <fcntl.h>
#include <unistd.h>

namespace cfgctl
{

namespace
{

const std::vector<Verb> VERBS = {
    {"get", "KEY", {}, 1, 1, "print the stored value of a key", get},
    {"set",
     "KEY VALUE",
     {"--no-save", "--no-apply"},
     2,
     2,
     "store a value, apply it to the device, save the store",
     set},
    {"restore", "KEY | --all", {"--all"}, 0, 1, "apply stored values to the device", restore},
    {"show", "[PREFIX]", {}, 0, 1, "list settings, their values and what applies them", show},
    {"board", "", {}, 0, 0, "print what the board is and has", board},
    {"prompt", "NAME", {}, 1, 1, "play a spoken prompt", prompt},
    {"alert", "PATH", {}, 1, 1, "play an alert sound, then restore the speaker", alert_sound},
    {"privacy", "[on|off]", {"--no-save"}, 0, 1, "tell or switch the privacy mode", privacy},
    {"night", "[on|off]", {}, 0, 1, "tell or switch night mode", night},
    {"lamp", "wled|rlamp MODE", {}, 2, 2, "drive a lamp directly, mode 0 to 3", lamp},
    {"probe", "", {}, 0, 0, "print what every status probe answers", probe},
    {"rec", "CODE [TEXT]", {}, 1, 2, "post a recording command", rec},
    {"monitor",
     "",
     {"--count N"},
     0,
     0,
     "take daemon messages off their queue, in the daemons' place, and print them",
     monitor},
    {"events",
     "[add TYPE | drop N | clear | dump FILE]",
     {},
     0,
     2,
     "list the pending events, add or drop some, or check a copy of the ring",
     events},
    {"status", "[VALUE]", {}, 0, 1, "print or set the device status, 0..255", status},
    {"firmware",
     "check FILE [--limit N] | newer VERSION | downloaded",
     {"--limit N"},
     1,
     2,
     "check an image, compare a version, vet the download (a stale one is deleted)",
     firmware},
    {"speech", "", {}, 0, 0, "print whether the downloaded prompts are unpacked", speech},
    {"crc", "FILE", {"--skip N", "--limit N"}, 1, 1, "print the CRC-32 of a file", crc},
    {"wifi",
     "config | start | stop | reset | restart | status",
     {},
     1,
     1,
     "write the supplicant's file; control the Wi-Fi link; print its state",
     wifi},
    {"link", "[eth | wlan]", {}, 0, 1, "print which interfaces have an IPv4 address", link_status},
    {"time",
     "zone [OFFSET DST] | sync on|off",
     {},
     1,
     3,
     "set the time zone, stored or else by offset in minutes; switch time sync",
     time_control},
    {"upload",
     "status | config [NAME=VALUE...] | wake | stop | notify | recover PATH",
     {"--no-save"},
     1,
     6,
     "ask, configure and drive the upload daemon",
     upload},
    {"schedule",
     "list | set [FILE]",
     {"--no-save"},
     1,
     2,
     "list the schedules, or store others: JSON as listed, or one a line",
     schedule},
    {"alarm", "list | set [FILE]", {"--no-save"}, 1, 2, "the same for alarm clocks", alarm_clock},
    {"viewer",
     "list | add NAME PASSCODE CREDENTIAL [ONCE] | del NAME",
     {"--no-save"},
     1,
     5,
     "list and change the viewers, at the relay too",
     viewer},
    {"sound",
     "alert | greeting | alarm [PATH], or volume [0-2]",
     {"--no-save"},
     1,
     2,
     "print or choose a sound or the alert volume",
     sound},
    {"feature",
     "list | NAME [VALUES...]",
     {"--no-save"},
     1,
     4,
     "print or change feature switches",
     feature},
};

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

std::string usage_line(const Verb &verb)
{
    std::string line = std::string("cfgctl ") + verb.name;
    for (const std::string &option : verb.options)
        if (!std::strstr(verb.arguments, option.c_str()))
            line += " [" + option + "]";
    if (*verb.arguments)
        line += std::string(" ") + verb.arguments;
    return line;
}

std::string help()
{
    std::vector<std::vector<std::string>> rows;
    for (const Verb &verb : VERBS)
        rows.push_back({"  " + usage_line(verb), verb.summary});
    return "Settings and device control of the camera.\n\n" + columns(rows) +
           "\nEvery verb takes --json and --help; cfgctl --version prints the version.\n"
           "Standard output is data only; reports of the library go to standard error.\n"
           "Exit status: 0 ok, 1 not found or false, 2 usage, 3 store failed, 4 apply failed.\n";
}

int wrong_usage(const Verb *verb, const std::string &text)
{
    complain(text);
    std::fprintf(stderr, "usage: %s\n",
                 verb ? usage_line(*verb).c_str() : "cfgctl VERB ...; cfgctl --help lists them");
    return USAGE;
}

// The verb's entry for the option `word`, or null.
const std::string *find_option(const Verb &verb, const std::string &word)
{
    for (const std::string &option : verb.options)
        if (option.substr(0, option.find(' ')) == word)
            return &option;
    return nullptr;
}

int dispatch(const std::vector<std::string> &words)
{
    if (words.empty())
        return wrong_usage(nullptr, "no verb given");
    if (words[0] == "--help") {
        print(help());
        return OK;
    }
    if (words[0] == "--version") {
        print("cfgctl " CFG_SET_VERSION "\n");
        return OK;
    }
    const auto verb = std::find_if(VERBS.begin(), VERBS.end(),
                                   [&](const Verb &entry) { return words[0] == entry.name; });
    if (verb == VERBS.end())
        return wrong_usage(nullptr, "no verb " + words[0]);

    Call call;
    bool options_end = false;
    for (size_t i = 1; i < words.size(); i++) {
        const std::string &word = words[i];
        if (options_end || word.compare(0, 2, "--") != 0) {
            call.arguments.push_back(word);
        } else if (word == "--") {
            options_end = true;
        } else if (word == "--json") {
            call.json = true;
        } else if (word == "--help") {
            print("usage: " + usage_line(*verb) + "\n\n" + verb->summary + "\n");
            return OK;
        } else {
            const std::string *option = find_option(*verb, word);
            if (!option)
                return wrong_usage(&*verb, "no option " + word);
            const bool with_value = *option != word;
            if (with_value && i + 1 == words.size())
                return wrong_usage(&*verb, word + " needs a value");
            call.options[word] = with_value ? words[++i] : "";
        }
    }
    if (call.arguments.size() < verb->least || call.arguments.size() > verb->most)
        return wrong_usage(&*verb, "wrong number of arguments");
    return verb->run(call);
}

} // namespace

void print(const std::string &text)
{
    std::fwrite(text.data(), 1, text.size(), data);
}

bool flush()
{
    return std::fflush(data) == 0;
}

void print_json(const Json &json)
{
    // Stored values need not be UTF-8; what is not becomes U+FFFD.
    print(json.dump(2, ' ', false, Json::error_handler_t::replace) + "\n");
}

int print_object(const Call &call, const Json &json)
{
    std::vector<std::vector<std::string>> rows;
    for (const auto &[name, value] : json.items())
        rows.push_back({name, text_of(value)});
    if (call.json)
        print_json(json);
    else
        print(columns(rows));
    return OK;
}

std::string text_of(const Json &value)
{
    return value.is_string() ? value.get<std::string>() : value.dump();
}

void complain(const std::string &text)
{
    std::fflush(stdout); // the library's reports come first
    std::fprintf(stderr, "cfgctl: %s\n", text.c_str());
}

std::string columns(const std::vector<std::vector<std::string>> &rows)
{
    std::vector<size_t> widths;
    for (const auto &row : rows) {
        widths.resize(std::max(widths.size(), row.size()));
        for (size_t i = 0; i < row.size(); i++)
            widths[i] = std::max(widths[i], row[i].size());
    }
    std::string text;
    for (const auto &row : rows) {
        for (size_t i = 0; i < row.size(); i++) {
            text += row[i];
            if (i + 1 < row.size())
                text.append(widths[i] - row[i].size() + 2, ' ');
        }
        text += '\n';
    }
    return text;
}

template <typename Number> static std::optional<Number> whole(const std::string &text)
{
    Number value = 0;
    const char *end = text.data() + text.size();
    const auto [rest, error] = std::from_chars(text.data(), end, value);
    if (error != std::errc() || rest != end)
        return std::nullopt;
    return value;
}

std::optional<uint32_t> number(const std::string &text)
{
    return whole<uint32_t>(text);
}

std::optional<int32_t> integer(const std::string &text)
{
    return whole<int32_t>(text);
}

int save(const Call &call)
{
    if (call.has("--no-save") || param_save() == 0)
        return OK;
    complain("the change is stored, but the store cannot be saved");
    return STORE_FAILED;
}

std::optional<std::string> stored(const std::string &key)
{
    char value[4096];
    if (param_get(key.c_str(), value, sizeof value) != 0)
        return std::nullopt;
    return value;
}

static int run(const std::vector<std::string> &words)
{
    if (!split_output()) {
        complain(std::string("cannot set up standard output: ") + std::strerror(errno));
        return NOT_FOUND;
    }
    const int result = dispatch(words);
    std::fflush(stdout);
    if (std::fclose(data) != 0) {
        complain(std::string("cannot write standard output: ") + std::strerror(errno));
        return result == OK ? NOT_FOUND : result;
    }
    return result;
}

} // namespace cfgctl

int main(int argc, char **argv)
try {
    return cfgctl::run({argv + (argc > 0 ? 1 : 0), argv + argc});
} catch (const std::exception &error) {
    cfgctl::complain(error.what());
    return cfgctl::NOT_FOUND;
}
