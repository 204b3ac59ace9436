// upload: the upload daemon.

#include "cfgctl.h"

#include "cfg_set.h"

#include <set>

namespace cfgctl
{

namespace
{

const std::set<std::string> SETTINGS = {"user", "pass", "target", "mode", "size"};

int print_state(const Call &call)
{
    return print_object(call, {{"mode", smbu_status()}, {"running", smbu_exist() != 0}});
}

int print_config(const Call &call)
{
    char user[256] = "";
    char target[256] = "";
    char mode[256] = "";
    char size[256] = "";
    int mounted = 0;
    smbu_get_config(user, sizeof user, target, sizeof target, mode, sizeof mode, size, sizeof size,
                    &mounted);
    return print_object(call, {{"user", user},
                               {"target", target},
                               {"mode", mode},
                               {"size", size},
                               {"mounted", mounted != 0}});
}

int config(const Call &call)
{
    std::map<std::string, std::string> given;
    for (size_t i = 1; i < call.arguments.size(); i++) {
        const size_t equals = call.arguments[i].find('=');
        const std::string name = call.arguments[i].substr(0, equals);
        if (equals == std::string::npos || SETTINGS.count(name) == 0) {
            complain("config takes user, pass, target, mode or size, as NAME=VALUE");
            return USAGE;
        }
        given[name] = call.arguments[i].substr(equals + 1);
    }
    if (given.empty())
        return print_config(call);
    for (const auto &[name, text] : given) {
        if (text.size() > 255) {
            complain(name + " takes at most 255 characters");
            return USAGE;
        }
    }
    if (given.count("mode") != 0 &&
        (given["mode"].size() != 1 || given["mode"] < "0" || given["mode"] > "3")) {
        complain("mode takes a number from 0 to 3, not " + given["mode"]);
        return USAGE;
    }
    const auto text = [&](const char *name) {
        return given.count(name) != 0 ? given[name].c_str() : nullptr;
    };
    smbu_set_config(text("user"), text("pass"), text("target"), text("mode"), text("size"));
    for (const auto &[name, value] : given) {
        if (stored("cifs_" + name) != value) {
            complain("cifs_" + name + " cannot be stored");
            return STORE_FAILED;
        }
    }
    return save(call);
}

// For what the library passes over without a word.
int only_if(bool done, const std::string &otherwise)
{
    if (done)
        return OK;
    complain(otherwise);
    return NOT_FOUND;
}

int recover(const std::string &path)
{
    if (path.find('/') == std::string::npos) {
        complain("recover takes the full path of a recording, not " + path);
        return USAGE;
    }
    if (smbu_add_recovery_job(path.c_str()) != 0) {
        complain("the job for " + path + " cannot be made");
        return APPLY_FAILED;
    }
    return OK;
}

} // namespace

int upload(const Call &call)
{
    const std::string &action = call.arguments[0];
    const int mode = smbu_status();
    const std::string in_mode = " in upload mode " + std::to_string(mode);
    if (action == "recover" && call.arguments.size() == 2)
        return recover(call.arguments[1]);
    if (action == "config")
        return config(call);
    if (call.arguments.size() == 1) {
        if (action == "status")
            return print_state(call);
        if (action == "stop")
            return only_if(smbu_exist() != 0 && smbu_force_stop() == 0, "the daemon does not run");
        if (action == "wake")
            return only_if(mode != 0 && mode != 3 && smbu_wake_up() == 0,
                           "nothing is woken" + in_mode);
        if (action == "notify")
            return only_if(mode == 2 && smbu_event_notify() == 0, "no event is told" + in_mode);
    }
    complain("it is status, config, wake, stop, notify, or recover PATH");
    return USAGE;
}

} // namespace cfgctl
