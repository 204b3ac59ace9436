// upload: the upload daemon.

#include "cfgctl.h"

#include "cfg_set.h"

#include <cerrno>
#include <cstring>
#include <sys/stat.h>

namespace cfgctl
{

constexpr const char *RECORDINGS = "/mnt/sdcard/video/";
constexpr const char *JOBS = "/mnt/sdcard/video/.smbu";

void upload_status(Call &call)
{
    call.data = {{"mode", smbu_status()}, {"running", smbu_exist() != 0}};
}

static void print_config(Call &call)
{
    char texts[4][256] = {};
    int mounted = 0;
    smbu_get_config(texts[0], 256, texts[1], 256, texts[2], 256, texts[3], 256, &mounted);
    size_t i = 0;
    for (const char *name : {"user", "target", "mode", "size"})
        call.data[name] = is(name, "mode") ? number_or_null(texts[i++]) : Json(texts[i++]);
    call.data["mounted"] = mounted != 0;
}

void upload_config(Call &call)
{
    if (call.words.empty())
        return print_config(call);
    std::map<std::string, std::string> given;
    for (const std::string &word : call.words)
        given[word.substr(0, word.find('='))] = word.substr(word.find('=') + 1);
    const auto text = [&](const char *name) {
        return given.count(name) != 0 ? given[name].c_str() : nullptr;
    };
    if (given.count("mode") != 0 && (given["mode"] == "2") != (smbu_status() == 2))
        require_room(2);
    smbu_set_config(text("user"), text("pass"), text("target"), text("mode"), text("size"));
    for (const auto &[name, value] : given)
        require_stored("cifs_" + name, value);
}

void upload_control(Call &call)
{
    const int mode = smbu_status();
    const std::string in_mode = " in upload mode " + std::to_string(mode);
    const std::string name = call.action->name;
    if (name == "stop" && smbu_exist() == 0)
        fail(NOT_FOUND, "the daemon does not run");
    if (name == "wake" && (mode == 0 || mode == 3))
        fail(NOT_FOUND, "the daemon is not woken" + in_mode);
    if (name == "notify" && mode != 2)
        fail(NOT_FOUND, "the daemon gets no event signals" + in_mode);
    name == "stop" ? smbu_force_stop() : name == "wake" ? smbu_wake_up() : smbu_event_notify();
    call.done["result"] = "called";
}

void upload_recover(Call &call)
{
    const std::string &path = call.words[0];
    const std::string name = path.substr(path.rfind('/') + 1);
    struct stat file = {};
    if (path.compare(0, std::strlen(RECORDINGS), RECORDINGS) != 0 || name[0] == '.' ||
        name.find('.') == std::string::npos || path.find("/../") != std::string::npos)
        fail(USAGE, "recover takes a recording below " + std::string(RECORDINGS) + ", such as " +
                        "20240101/clip_0001.mp4, not " + path);
    if (stat(path.c_str(), &file) != 0)
        fail(APPLY_FAILED, path + ": " + std::strerror(errno));
    if (!S_ISREG(file.st_mode))
        fail(APPLY_FAILED, path + " is not a file");
    if (stat(JOBS, &file) != 0 || !S_ISDIR(file.st_mode))
        fail(APPLY_FAILED,
             "no folder " + std::string(JOBS) + "; the upload daemon creates it when it starts");
    if (smbu_add_recovery_job(path.c_str()) != 0)
        fail(APPLY_FAILED, "the job for " + path + " cannot be created: " + std::strerror(errno));
    call.done["job"] = std::string(JOBS) + "/" + name.substr(0, name.rfind('.')) + ".rcy";
}

} // namespace cfgctl
