// get, set, unset, restore, show, board: the stored settings, and the board's
// identity.

#include "cfgctl.h"

#include "cfg_set.h"
#include "platform/param_store.h"
#include "settings/frame.h"

#include <algorithm>
#include <cstring>
#include <fcntl.h>
#include <sys/msg.h>
#include <unistd.h>

namespace cfgctl
{

namespace
{

constexpr size_t BODY_SIZE = 292; // of a daemon message
constexpr size_t LARGE_VALUE = 65536;

constexpr const char *PRIVACY_KEY = "orb_privacy_mode_enable"; // its setter stores it

// Whether the board reports that it lacks the setting's feature.
bool absent(const Setting &setting)
{
    char version[32];
    return setting.on_board && cfg_getBoardInfo(BOARD_INFO_HWVER, version, sizeof version) == 0 &&
           setting.on_board() == 0;
}

bool writable(const char *path)
{
    const int file = open(path, O_WRONLY | O_CLOEXEC);
    return file >= 0 && close(file) == 0;
}

// "applied" when the driver's file shows the value, "called" when it cannot.
const char *seen(const Setting &setting, const std::string &value)
{
    if (!setting.file)
        return "called";
    const std::string shown = first_line(setting.file);
    const size_t last = std::strlen(setting.digits) - 1;
    const char digit =
        setting.digits[std::min<size_t>(cfg_set::to_number(value.c_str(), 10), last)];
    if (shown.empty() && writable(setting.file))
        return "called"; // the driver shows nothing
    if (shown.empty() || shown[0] != digit)
        fail(APPLY_FAILED, std::string(setting.value.name) + " is not applied: " + setting.file +
                               " does not show it");
    return "applied";
}

std::string restored(const Setting &setting)
{
    if (setting.restore() == 0)
        return seen(setting, stored(setting.value.name).value_or(""));
    return absent(setting) ? "not on this board" : "failed";
}

// "; did you mean KEY?" for an unknown key.
std::string like(const std::string &key, bool restorable = false)
{
    std::vector<std::string> known;
    for (const Setting &row : SETTINGS)
        if (!restorable || row.restore)
            known.emplace_back(row.value.name);
    return find_setting(key) ? "" : nearest(key, known);
}

// A step of set.
struct Change {
    std::string key;
    std::string value;
    const Setting *setting;
    bool applies = false;
    bool is_stored = false;
    bool is_applied = false;
    std::optional<std::string> old = {};
    const char *result = "stored";

    // The setter stores the value itself and needs the old one.
    [[nodiscard]] bool by_setter() const
    {
        return applies && is(PRIVACY_KEY, key);
    }
    [[nodiscard]] bool is_there() const
    {
        return number(stored(key).value_or("")) == number(value);
    }
};

void store(Change &change)
{
    change.old = stored(change.key);
    if (!change.by_setter() && param_set(change.key.c_str(), change.value.c_str()) != 0)
        fail(STORE_FAILED, change.key + " cannot be stored");
    change.is_stored = true;
}

void apply(Change &change)
{
    const Setting &setting = *change.setting;
    const int result = setting.set(cfg_set::to_number(change.value.c_str(), 10));
    if (change.by_setter() && !change.is_there())
        fail(STORE_FAILED, change.key + " cannot be stored");
    if (!change.by_setter() && result != 0)
        fail(APPLY_FAILED, change.key + ": " +
                               std::string(setting.applied, std::strcspn(setting.applied, ",")) +
                               " failed");
    change.is_applied = true;
    change.result = seen(setting, change.value);
}

// Restores store and device to their state before the changes.
void take_back(std::vector<Change> &changes)
{
    for (auto change = changes.rbegin(); change != changes.rend(); ++change) {
        if (change->by_setter() && change->is_applied)
            change->setting->set(cfg_set::to_number(change->old.value_or("0").c_str(), 10));
        const char *key = change->key.c_str();
        if (change->is_stored && stored(change->key) != change->old &&
            (change->old ? param_set(key, change->old->c_str()) : param_unset(key)) != 0)
            complain("the old value of " + change->key + " cannot be restored");
    }
    for (const Change &change : changes)
        if (change.is_applied && !change.by_setter() && change.old)
            change.setting->set(cfg_set::to_number(change.old->c_str(), 10));
}

// Stores all and, unless the call has NO_APPLY, applies all; or changes nothing.
void change_all(const Call &call, std::vector<Change> &changes)
{
    unsigned messages = 0;
    for (Change &change : changes) {
        const Setting *setting = change.setting;
        change.applies = setting && setting->set && !call.has(NO_APPLY);
        if (change.applies && setting->on_board && setting->on_board() == 0)
            fail(APPLY_FAILED,
                 "the board does not report the feature of " + change.key + "; nothing is stored");
        if (change.applies && !(change.by_setter() && change.is_there()))
            messages += setting->messages;
    }
    require_room(messages);
    try {
        for (Change &change : changes)
            store(change);
        for (Change &change : changes)
            if (change.applies)
                apply(change);
    } catch (const Failure &failure) {
        take_back(changes);
        fail(failure.status, failure.what() + std::string("; the store is unchanged"));
    }
}

// One KEY=VALUE; the value may come from standard input.
Change parsed(const std::string &text, bool dash)
{
    const size_t equals = text.find('=');
    if (equals == std::string::npos)
        fail(USAGE, "set takes KEY=VALUE; one word or line has no =");
    const std::string key = text.substr(0, equals);
    const std::string value = text.substr(equals + 1);
    return {key, dash && value == "-" ? line_of_input() : value, find_setting(key)};
}

// The changes that set's words, or the lines of standard input, ask for.
std::vector<Change> wanted(const Call &call)
{
    std::vector<Change> changes;
    const auto &words = call.words;
    if (words.size() == 2 && words[0].find('=') == std::string::npos)
        return {parsed(words[0] + "=" + words[1], true)};
    if (words.size() != 1 || words[0] != "-") {
        for (const std::string &word : words)
            changes.push_back(parsed(word, true));
        return changes;
    }
    for (const std::string &line : split(rest_of(stdin), '\n'))
        if (!line.empty() && line[0] != '#')
            changes.push_back(parsed(line, false));
    if (changes.empty())
        fail(USAGE, "no KEY=VALUE on standard input");
    return changes;
}

bool begins(const Setting &setting, const std::string &prefix)
{
    return std::string(setting.value.name).compare(0, prefix.size(), prefix) == 0;
}

// Why export leaves out the stored value; empty when set accepts it.
std::string left_out(const Call &call, const Setting &setting, const std::string &value)
{
    if (is_secret(setting.value) && !value.empty() && !call.has(SHOW_SECRETS))
        return "is left out; --show-secrets prints it";
    if (setting.on_board && setting.on_board() == 0)
        return "is left out; this board does not have it";
    return value.find('\n') == std::string::npos ? fault_of(setting.value, value)
                                                 : "has a line feed";
}

// Lines that `set -` can read, or an object.
void export_settings(Call &call, const std::string &prefix)
{
    call.data = Json::object();
    call.text = "";
    for (const Setting &setting : SETTINGS) {
        const std::string key = setting.value.name;
        const auto value = begins(setting, prefix) ? stored(key) : std::nullopt;
        if (!value)
            continue;
        const std::string reason = left_out(call, setting, *value);
        if (reason.empty())
            call.data[key] = *value;
        *call.text += reason.empty() ? key + "=" + *value + "\n" : "# " + key + " " + reason + "\n";
    }
    if (call.text->empty())
        fail(NOT_FOUND, "no setting that begins with " + prefix + " is stored");
}

// Runs another verb as a step of restore.
std::string performed(const std::string &line)
{
    Call call;
    call.words = split(line, ' ');
    call.action = find_action(call.words[0], call.words[1]);
    call.words.erase(call.words.begin(), call.words.begin() + 2);
    call.action->run(call);
    return call.done["result"];
}

} // namespace

std::optional<std::string> stored(const std::string &key)
{
    std::string value;
    // A store may cut or refuse a value that does not fit.
    for (size_t size = 256;; size = std::max(size * 2, LARGE_VALUE)) {
        value.assign(size, '\0');
        const bool got = param_get(key.c_str(), value.data(), static_cast<unsigned>(size)) == 0;
        if (!got && size >= LARGE_VALUE)
            return std::nullopt;
        if (got && std::strlen(value.c_str()) + 1 < size)
            return value.substr(0, std::strlen(value.c_str()));
    }
}

void require_stored(const std::string &key, const std::string &value)
{
    if (stored(key) != value)
        fail(STORE_FAILED, key + " cannot be stored");
}

void require_room(unsigned messages)
{
    msqid_ds state = {};
    const int queue = messages > 0 ? msgget(QUEUE_KEY, 0) : -1;
    if (queue >= 0 && msgctl(queue, IPC_STAT, &state) == 0 &&
        state.msg_cbytes + messages * BODY_SIZE > state.msg_qbytes)
        fail(APPLY_FAILED, "the daemons' queue is full: they do not take their messages; "
                           "nothing is changed");
}

const Setting *find_setting(const std::string &key)
{
    for (const Setting &setting : SETTINGS)
        if (is(setting.value.name, key))
            return &setting;
    return nullptr;
}

const char *change(const Call &call, const std::string &key, const std::string &value)
{
    std::vector<Change> changes = {{key, value, find_setting(key)}};
    change_all(call, changes);
    return changes[0].result;
}

void get(Call &call)
{
    const std::string &key = call.words[0];
    const auto value = stored(key);
    if (!value && !call.has(DEFAULT))
        fail(NOT_FOUND, "no value of " + key + " can be read" + like(key));
    const std::string text = value ? *value : call.values[DEFAULT];
    call.answer({{"key", key}, {"value", text}}, text);
}

void set(Call &call)
{
    std::vector<Change> changes = wanted(call);
    for (const Change &change : changes) {
        if (!change.setting && !call.has(FORCE)) {
            const std::string known = like(change.key);
            fail(USAGE, "unknown key " + change.key + (known.empty() ? ";" : known) +
                            " --force stores it anyway");
        }
        if (change.setting)
            check(change.setting->value, change.value);
    }
    change_all(call, changes);
    Json done = Json::array();
    for (const Change &change : changes)
        done.push_back(
            {{"key", change.key},
             {"value", change.setting && is_secret(change.setting->value) ? HIDDEN : change.value},
             {"result", change.result}});
    call.done = done.size() == 1 ? done[0] : Json{{"settings", done}};
}

void save(Call &call)
{
    if (param_save() != 0)
        fail(STORE_FAILED, "the store cannot be saved");
    call.done["saved"] = true;
}

void unset(Call &call)
{
    const std::string &key = call.words[0];
    if (!stored(key))
        fail(NOT_FOUND, key + " is not stored" + like(key));
    if (param_unset(key.c_str()) != 0 || stored(key))
        fail(STORE_FAILED, key + " cannot be removed");
}

void restore(Call &call)
{
    if (call.has(ALL) != call.words.empty())
        fail(USAGE, "restore takes either a key or --all");
    const Setting *one = call.has(ALL) ? nullptr : find_setting(call.words[0]);
    if (!call.has(ALL) && (!one || !one->restore))
        fail(NOT_FOUND, "no restorer for " + call.words[0] + like(call.words[0], true));

    call.data = Json::array();
    call.fields = {"key", "result"};
    const auto enter = [&](const char *key, const auto &step) {
        std::string result = "failed";
        try {
            result = step();
        } catch (const Failure &failure) {
            complain(failure.what());
        }
        call.data.push_back({{"key", key}, {"result", result}});
        if (result == "failed")
            call.status = APPLY_FAILED;
        else if (one && result == "not on this board") // no failure with --all
            call.status = NOT_FOUND;
    };
    for (const Setting &setting : SETTINGS)
        if (setting.restore && (!one || one == &setting))
            enter(setting.value.name, [&] { return restored(setting); });
    for (const char *step : {"wifi config", "wifi start", "time zone", "time sync on"})
        if (!one)
            enter(step, [&] { return performed(step); });
}

void show(Call &call)
{
    const std::string prefix = call.words.empty() ? "" : call.words[0];
    if (call.has(EXPORT))
        return export_settings(call, prefix);
    call.data = Json::array();
    call.fields = {"key", "value", "applied_by"};
    for (const Setting &setting : SETTINGS) {
        if (!begins(setting, prefix))
            continue;
        const auto value = stored(setting.value.name);
        const bool hidden = is_secret(setting.value) && !call.has(SHOW_SECRETS);
        call.data.push_back(
            {{"key", setting.value.name},
             {"value", value ? Json(hidden && !value->empty() ? HIDDEN : *value) : Json()},
             {"takes", takes(setting.value) + ": " + setting.value.meaning},
             {"applied_by", setting.applied}});
    }
    if (call.data.empty())
        fail(NOT_FOUND, "no setting begins with " + prefix);
    if (call.data.size() == 1)
        call.text = table(call.data[0]);
}

void board(Call &call)
{
    constexpr std::pair<const char *, unsigned long> QUERIES[] = {
        {"boardid", BOARD_INFO_BOARDID}, {"sn", BOARD_INFO_SN}, {"hwver", BOARD_INFO_HWVER}};
    for (const auto &[name, index] : QUERIES) {
        char text[256] = "";
        call.data[name] = cfg_getBoardInfo(index, text, sizeof text) == 0 ? Json(text) : Json();
        if (!call.data[name].is_null())
            continue;
        complain(std::string("the board does not report its ") + name);
        call.status = NOT_FOUND;
    }
    call.data["slip_ring"] = cfg_is_slip_ring_model() != 0;
    call.data["ethernet"] = cfg_check_eth_support_by_hwver() != 0;
    call.data["differential_audio"] = cfg_is_audio_differential() != 0;
    call.data["wled"] = cfg_isWLEDVersion() != 0;
    call.data["rlamp"] = cfg_isRlampVersion() != 0;
}

} // namespace cfgctl
