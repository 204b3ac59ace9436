// The input as each text that the library and the desk store read from others:
// the store's file with its viewers and motor zones, mounts, pid files, a BSSID,
// and what ps, AudioCheck and the board print.

#include "cfg_set.h"
#include "desk/param_store.h"
#include "platform/param_store.h"
#include "settings/audio.h"
#include "target.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <set>
#include <unistd.h>

static std::string printed; // by every command but the last list of processes
static std::set<FILE *> pipes;
static bool listed; // the processes that are signalled

extern "C" {

FILE *popen(const char *command, const char *mode)
{
    const size_t length = std::strstr(command, "ps -l") ? 0 : printed.size();
    return *pipes.insert(fmemopen(printed.data(), length, mode)).first;
}

int pclose(FILE *stream)
{
    require(pipes.erase(stream) == 1);
    return std::fclose(stream);
}

int kill(pid_t pid, int) noexcept
{
    require(pid > 0 && !(listed && (pid == 1 || pid == getpid())));
    return 0;
}

// clang-format off
int system(const char *) { return 0; }
int msgsnd(int, const void *, size_t, int) { return 0; }
// clang-format on
} // extern "C"

// Whether AudioCheck's reply accepts the file: three characters of one line.
static bool accepts(const std::string &output)
{
    const std::string line = output.substr(0, output.find('\n')).substr(0, 3);
    return line[0] != '1' && std::atoi(line.c_str()) != -1;
}

static void read_store(const std::string &text)
{
    put(desk::STORE_WORKING, text);
    require(desk::all_settings().has_value());
    viewer_entry list[10] = {};
    uint8_t count = 99;
    viewer_get_config(&count, list);
    require(count <= 10);
    for (const viewer_entry &entry : list)
        require(!entry.name[255] && !entry.passcode[31] && !entry.credential[63] && !entry.once[2]);
    viewer_add_config(&list[0]);
    viewer_del_config(&list[count / 2]);
    disable_face_hw_check();
}

static void read_commands(const std::string &output)
{
    printed = output;
    char answer[32] = "";
    if (cfg_getBoardInfo(BOARD_INFO_SN, answer, sizeof answer) == 0)
        require(output.compare(0, std::strlen(answer), answer) == 0 && !std::strchr(answer, '\n'));
    cfg_get_hw_ver();
    is_nn_enable();
    require((alert_file_set_config("/mnt/a.aac") == 0) == accepts(output));
    listed = true;
    require(cfg_killProcess() == 0);
    listed = false;
    while (!pipes.empty()) // the one that it leaves open
        pclose(*pipes.begin());
}

void try_input(const std::string &input)
{
    std::remove("/var/log/camera.log");
    read_store(input);
    read_commands(input);

    put("/proc/mounts", input);
    require(!cfg_set::sdcard_mounted() || input.find(" /mnt/sdcard ") != std::string::npos);
    put("/var/run/smbu.pid", input);
    put("/var/run/GMMdVideo.pid", input);
    smbu_exist();
    require(cfg_setPirEnable(1) == 0);

    std::string bssid = input.substr(0, std::min<size_t>(input.find('\0'), 63));
    const std::string was = bssid;
    bssid.resize(64);
    const bool usable = validate_bssid(bssid.data()) == 1;
    require(usable ? std::strlen(bssid.c_str()) == 17
                   : std::strcmp(was.c_str(), bssid.c_str()) == 0);
}
