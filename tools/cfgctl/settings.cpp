// get, set, unset, restore, show, board: the stored settings, and what the
// board says of itself.

#include "cfgctl.h"

#include "cfg_set.h"
#include "platform/param_store.h"

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

constexpr const char *PRIVACY_KEY = "orb_privacy_mode_enable"; // whose setter stores it

// The stored text as the library reads it: "1x" is 1.
uint32_t loose_number(const std::string &text)
{
    return static_cast<uint32_t>(std::strtoul(text.c_str(), nullptr, 10));
}

// Whether the board says that it does not have what the setting is for.
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

// "applied" when the driver's file shows the value, "called" when nothing does.
const char *seen(const Setting &setting, const std::string &value)
{
    if (!setting.file)
        return "called";
    const std::string shown = first_line(setting.file);
    const size_t last = std::strlen(setting.digits) - 1;
    const char digit = setting.digits[std::min<size_t>(loose_number(value), last)];
    if (shown.empty() && writable(setting.file))
        return "called"; // a driver may be mute
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

// Another verb as a step of restore.
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
    std::string value(256, '\0');
    for (;; value.assign(value.size() * 2, '\0')) { // until nothing is cut
        if (param_get(key.c_str(), value.data(), static_cast<unsigned>(value.size())) != 0)
            return std::nullopt;
        if (std::strlen(value.c_str()) + 1 < value.size())
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
        fail(APPLY_FAILED, "the daemons' queue has no room, they do not take their messages; "
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
    const Setting *setting = find_setting(key);
    const bool applies = setting && setting->set && !call.has(NO_APPLY);
    const bool stores = is(PRIVACY_KEY, key) && applies;
    const bool unchanged = stores && number(stored(key).value_or("")) == number(value);
    if (applies && setting->on_board && setting->on_board() == 0)
        fail(APPLY_FAILED,
             "the board does not say that it has what " + key + " sets; nothing is stored");
    if (applies && !unchanged)
        require_room(setting->messages);
    if (stores)
        setting->set(loose_number(value)); // has to find the old value
    if (stores ? number(stored(key).value_or("")) != number(value)
               : param_set(key.c_str(), value.c_str()) != 0)
        fail(STORE_FAILED, key + " cannot be stored");
    if (!applies || stores)
        return applies ? "called" : "stored";
    if (setting->set(loose_number(value)) != 0)
        fail(APPLY_FAILED, key + " is stored but " +
                               std::string(setting->applied, std::strcspn(setting->applied, ",")) +
                               " failed; nothing is saved");
    return seen(*setting, value);
}

void get(Call &call)
{
    const std::string &key = call.words[0];
    const auto value = stored(key);
    if (!value)
        fail(NOT_FOUND, "no value of " + key + " can be read");
    call.answer({{"key", key}, {"value", *value}}, *value);
}

void set(Call &call)
{
    const std::string &key = call.words[0];
    const std::string &value = call.words[1];
    const Setting *setting = find_setting(key);
    std::vector<std::string> known;
    for (const Setting &row : SETTINGS)
        known.emplace_back(row.value.name);
    if (!setting && !call.has(FORCE))
        fail(USAGE, "nothing knows the key " + key + nearest(key, known) +
                        " --force stores it all the same");
    if (setting)
        check(setting->value, value);
    if (setting && setting->value.kind == SECRET)
        call.done["value"] = HIDDEN;
    call.done["result"] = change(call, key, value);
}

void unset(Call &call)
{
    const std::string &key = call.words[0];
    if (!stored(key))
        fail(NOT_FOUND, key + " is not stored");
    if (param_unset(key.c_str()) != 0 || stored(key))
        fail(STORE_FAILED, key + " cannot be removed");
}

void restore(Call &call)
{
    if (call.has(ALL) != call.words.empty())
        fail(USAGE, "restore takes either a key or --all");
    const Setting *one = call.has(ALL) ? nullptr : find_setting(call.words[0]);
    if (!call.has(ALL) && (!one || !one->restore))
        fail(NOT_FOUND, "nothing restores " + call.words[0]);

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
        else if (one && result == "not on this board") // with --all no failure
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
    call.data = Json::array();
    call.fields = {"key", "value", "applied_by"};
    for (const Setting &setting : SETTINGS) {
        if (std::string(setting.value.name).compare(0, prefix.size(), prefix) != 0)
            continue;
        const auto value = stored(setting.value.name);
        const bool hidden = setting.value.kind == SECRET && !call.has(SHOW_SECRETS);
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
        complain(std::string("the board does not tell its ") + name);
        call.status = NOT_FOUND;
    }
    call.data["slip_ring"] = cfg_is_slip_ring_model() != 0;
    call.data["ethernet"] = cfg_check_eth_support_by_hwver() != 0;
    call.data["differential_audio"] = cfg_is_audio_differential() != 0;
    call.data["wled"] = cfg_isWLEDVersion() != 0;
    call.data["rlamp"] = cfg_isRlampVersion() != 0;
}

} // namespace cfgctl
