// check: what is missing or wrong? It changes nothing: it writes and creates
// nothing, takes no lock and runs no command except "board".

#include "cfgctl.h"
#include "parts.h"

#include "cfg_set.h"
#include "events/storage.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <dirent.h>
#include <fcntl.h>
#include <sys/msg.h>
#include <sys/sem.h>
#include <sys/shm.h>
#include <sys/statvfs.h>

namespace cfgctl
{

namespace
{

constexpr const char *CARD = "/mnt/sdcard";
constexpr uint64_t LEAST_ROOM = 1 << 20;       // bytes of the card
constexpr size_t MESSAGE_SIZE = 292;           // of a daemon message
constexpr useconds_t LOCK_HOLD = 200 * 1000;   // locks are held for less
constexpr uint32_t LAST_TYPE = 4;              // of an event
constexpr uint32_t CLOCK_IS_SET = 1390000000U; // the library's limit

// A line of the answer. `to_do` is empty when nothing is wrong.
void enter(Call &call, const std::string &item, const std::string &state,
           const std::string &to_do = "")
{
    call.data.push_back({{"area", call.words[0]},
                         {"item", item},
                         {"state", state},
                         {"ok", to_do.empty()},
                         {"to_do", to_do.empty() ? Json() : Json(to_do)}});
    if (!to_do.empty())
        call.status = NOT_FOUND;
}

bool may(const std::string &path, int access_mode)
{
    return access(path.c_str(), access_mode) == 0;
}

bool lives(pid_t pid)
{
    return pid > 0 && (kill(pid, 0) == 0 || errno == EPERM);
}

std::string process(pid_t pid)
{
    return "process " + std::to_string(pid) + (lives(pid) ? "" : ", which is gone");
}

std::string content(const char *path)
{
    FILE *file = std::fopen(path, "re");
    if (!file)
        return "";
    std::string text = rest_of(file);
    std::fclose(file);
    return text;
}

bool fits(const std::string &field, size_t size)
{
    return !field.empty() && field.size() < size;
}

void check_viewers(Call &call)
{
    const viewer_entry entry = {};
    bool ended = false;
    for (int i = 0; i < 10; i++) {
        const std::string key = "viewer_list_0" + std::to_string(i);
        const std::string value = stored(key).value_or("");
        const auto field = split(value, ',');
        const bool good =
            field.size() == 4 && value.find('\n') == std::string::npos &&
            fits(field[0], sizeof entry.name) && fits(field[1], sizeof entry.passcode) &&
            fits(field[2], sizeof entry.credential) && fits(field[3], sizeof entry.once);
        if (!value.empty() && ended)
            enter(call, key, "comes after an empty slot", "cfgctl unset " + key);
        else if (!value.empty() && !good)
            enter(call, key, "cannot be read back", "cfgctl unset " + key + ", viewer add");
        ended = value.empty();
    }
}

void check_store(Call &call)
{
    size_t found = 0;
    for (const Setting &setting : SETTINGS) {
        const std::string key = setting.value.name;
        const auto value = stored(key);
        found += value ? 1 : 0;
        const std::string wrong = value ? fault_of(setting.value, *value) : "";
        if (!wrong.empty())
            enter(call, key, wrong, "cfgctl set or unset " + key);
    }
    enter(call, "known keys", std::to_string(found) + " are stored",
          found > 0 ? "" : "supply param_get; store the factory settings");
    check_viewers(call);
}

void check_board(Call &call)
{
    constexpr std::pair<const char *, unsigned long> QUERIES[] = {
        {"boardid", BOARD_INFO_BOARDID}, {"sn", BOARD_INFO_SN}, {"hwver", BOARD_INFO_HWVER}};
    char header[64] = ""; // of an image for this board
    for (const auto &[name, index] : QUERIES) {
        char text[256] = "";
        const bool told = cfg_getBoardInfo(index, text, sizeof text) == 0 && *text;
        enter(call, name, told ? text : "not reported",
              told ? "" : "make 'board " + std::string(name) + "' print a line");
        if (index == BOARD_INFO_BOARDID)
            std::memcpy(header + 32, text, 16);
    }
    const bool accepted = cfg_checkBoardId(header) == 0;
    enter(call, "image mask", accepted ? "an image for this board passes" : "no image can pass",
          accepted ? "" : "let 'board boardid' print MODELhMASK, such as xq7h0c");
    std::string names;
    for (const auto &[has, name] : {std::pair(cfg_is_slip_ring_model(), "slip ring"),
                                    {cfg_check_eth_support_by_hwver(), "Ethernet"},
                                    {cfg_is_audio_differential(), "differential audio"},
                                    {cfg_isWLEDVersion(), "WLED"},
                                    {cfg_isRlampVersion(), "Rlamp"}})
        names += has == 0 ? "" : (names.empty() ? "" : ", ") + std::string(name);
    enter(call, "features", names.empty() ? "none" : names);
}

void check_tools(Call &call)
{
    const char *path = std::getenv("PATH");
    const auto folders = split(path ? path : "/sbin:/usr/sbin:/bin:/usr/bin", ':');
    for (const Part &part : TOOLS)
        for (const std::string &name : split(part.names, ' ')) {
            const bool found =
                name[0] == '/'
                    ? may(name, X_OK)
                    : std::any_of(folders.begin(), folders.end(), [&](const auto &folder) {
                          return may(folder + "/" + name, X_OK);
                      });
            enter(call, name, found ? "there" : "missing, or not executable",
                  found ? "" : "install it: needed for " + std::string(part.purpose));
        }
}

void check_drivers(Call &call)
{
    for (const Part &part : DRIVERS)
        for (const std::string &name : split(part.names, ' ')) {
            if (part.on_board && part.on_board() == 0) {
                enter(call, name, "not on this board");
                continue;
            }
            const bool there = may(name, F_OK);
            const bool good = may(name, part.access);
            enter(call, name,
                  good    ? "there"
                  : there ? "no access"
                          : "missing",
                  good    ? ""
                  : there ? "change its mode"
                          : "load the driver: needed for " + std::string(part.purpose));
        }
}

void check_zone(Call &call)
{
    const std::string zone = stored("time_zone_str").value_or("");
    const auto zones = split(content("/etc_ro/time_zone"), '\n');
    const bool listed = std::any_of(zones.begin(), zones.end(), [&](const std::string &line) {
        return line.compare(0, zone.size(), zone) == 0 && line.size() > zone.size() &&
               std::strchr(" \t", line[zone.size()]);
    });
    enter(call, "/etc_ro/time_zone", std::to_string(zones.size()) + " zones",
          zones.empty() ? "install the zone table" : "");
    if (zone.empty())
        return enter(call, "time_zone_str", "not stored");
    enter(call, "time_zone_str", zone + (listed ? "" : ", which is not in the table"),
          listed ? "" : "set time_zone_str to a zone of the table");
    const std::string file = "/usr/share/zoneinfo/" + zone;
    enter(call, file, may(file, R_OK) ? "there" : "missing",
          may(file, R_OK) ? "" : "install the zone file");
}

void check_sounds(Call &call)
{
    for (const std::string key : {"alert_file", "greeting_audio", "alarm_audio"}) {
        const std::string path = stored(key).value_or("");
        if (!path.empty())
            enter(call, key, may(path, R_OK) ? path : path + " is missing",
                  may(path, R_OK) ? "" : "choose another with cfgctl sound");
    }
    const std::string language = stored("lang_name").value_or("");
    const std::string folder = "/localization/" + language;
    const bool found = may(folder, R_OK) || may(CARD + ("/morvenix/" + language), R_OK);
    if (!language.empty())
        enter(call, "prompts", found ? language : "none in " + language,
              found ? "" : "install " + folder + ", or set lang_name");
}

void check_card(Call &call)
{
    const bool mounted =
        content("/proc/mounts").find(" " + std::string(CARD) + " ") != std::string::npos;
    struct statvfs state = {};
    const uint64_t room =
        statvfs(CARD, &state) == 0 ? uint64_t{state.f_bavail} * state.f_frsize : 0;
    enter(call, CARD, mounted ? "mounted" : "not mounted", mounted ? "" : "mount the card");
    enter(call, "access to the card", may(CARD, W_OK) ? "writable" : "not writable",
          may(CARD, W_OK) ? "" : "check the card and mount it for writing");
    enter(call, "space on the card", std::to_string(room >> 20) + " MB",
          room < LEAST_ROOM ? "delete recordings" : "");
}

// What is wrong with a ring; empty when it is good.
std::string ring_fault(const cfg_set::EventQueue &ring)
{
    const auto now = static_cast<uint64_t>(std::time(nullptr));
    const auto count = [&](const auto &judge) {
        return std::count_if(std::begin(ring.slots), std::end(ring.slots), judge);
    };
    const auto future =
        count([&](const EventQueueEntry &e) { return now > CLOCK_IS_SET && e.time > now; });
    const auto unknown = count([](const EventQueueEntry &e) { return e.type > LAST_TYPE; });
    if (std::max(ring.head, ring.tail) >= EVENT_QUEUE_SIZE || ring.count > EVENT_QUEUE_SIZE ||
        cfg_set::slot_of(ring.head + ring.count) != ring.tail)
        return "head " + std::to_string(ring.head) + ", tail " + std::to_string(ring.tail) +
               " and count " + std::to_string(ring.count) + " do not match";
    if (future > 0)
        return std::to_string(future) + " events from the future";
    return unknown > 0 ? std::to_string(unknown) + " events of unknown type" : "";
}

void check_copies(Call &call)
{
    cfg_set::EventQueue ring;
    const std::string bytes = content(EVENT_QUEUE_FILE);
    const bool whole = bytes.size() == sizeof ring;
    if (whole)
        std::memcpy(&ring, bytes.data(), sizeof ring);
    const std::string wrong = whole ? ring_fault(ring) : std::to_string(bytes.size()) + " bytes";
    if (!may(EVENT_QUEUE_FILE, F_OK))
        enter(call, EVENT_QUEUE_FILE, "not made yet",
              may("/mnt/sdcard/video", F_OK) ? "" : "make its folder");
    else
        enter(call, EVENT_QUEUE_FILE, wrong.empty() ? "good" : wrong,
              wrong.empty() ? "" : "a restart deletes it; see cfgctl events dump");

    FILE *image = std::fopen("/mnt/sdcard/upgrade/upgrade.bin", "re");
    const bool version = may("/mnt/sdcard/upgrade/upgrade.dat", R_OK);
    const bool good = image ? version && cfg_checkFirmware(image, 0) == 0 : !version;
    if (image)
        std::fclose(image);
    enter(call, "/mnt/sdcard/upgrade",
          !good   ? "the download is not complete"
          : image ? "the download is complete"
                  : "no download",
          good ? "" : "wait for it to end, or download again");
}

void check_files(Call &call)
{
    check_zone(call);
    check_sounds(call);
    enter(call, "/etc", may("/etc", W_OK) ? "writable" : "not writable",
          may("/etc", W_OK) ? "" : "make it writable for wpa_supplicant.conf");
    check_card(call);
    check_copies(call);
}

std::string name_of(const SharedObject &object)
{
    return std::string(object.key) + " " + object.purpose;
}

key_t key_of(const SharedObject &object)
{
    return static_cast<key_t>(std::strtol(object.key, nullptr, 0));
}

// Enters an object that does not exist or cannot be accessed; `id` is negative then.
bool absent(Call &call, const std::string &item, int id)
{
    if (id < 0)
        enter(call, item, errno == ENOENT ? "not made yet" : std::strerror(errno),
              errno == ENOENT ? "" : "see the limits: ipcs -l");
    return id < 0;
}

void check_queues(Call &call)
{
    for (const SharedObject &object : QUEUES) {
        const std::string item = name_of(object);
        const int id = msgget(key_of(object), 0);
        if (absent(call, item, id))
            continue;
        msqid_ds queue = {};
        if (msgctl(id, IPC_STAT, &queue) != 0) {
            enter(call, item, std::strerror(errno), "give it the rights 0666");
            continue;
        }
        const bool full = queue.msg_cbytes + MESSAGE_SIZE > queue.msg_qbytes;
        const bool waits = queue.msg_qnum > 0 && !lives(queue.msg_lrpid);
        enter(call, item,
              std::to_string(queue.msg_qnum) + " messages, " + std::to_string(queue.msg_cbytes) +
                  " of " + std::to_string(queue.msg_qbytes) + " bytes; " +
                  (queue.msg_lrpid == 0 ? "none taken yet"
                                        : "last taken by " + process(queue.msg_lrpid)),
              full || waits ? "start the daemon that takes them" : "");
    }
}

void check_locks(Call &call)
{
    for (const SharedObject &object : LOCKS) {
        const std::string item = name_of(object);
        const int id = semget(key_of(object), 0, 0);
        if (absent(call, item, id))
            continue;
        int value = semctl(id, 0, GETVAL);
        if (value == 0 && usleep(LOCK_HOLD) == 0)
            value = semctl(id, 0, GETVAL);
        const int pid = semctl(id, 0, GETPID);
        if (value < 0 || pid < 0)
            enter(call, item, std::strerror(errno), "give it the rights 0666");
        else if (value == 0)
            enter(call, item,
                  std::string(lives(pid) ? "held by " : "stuck: taken by ") + process(pid),
                  lives(pid) ? "" : std::string("ipcrm -S ") + object.key);
        else
            enter(call, item, "value " + std::to_string(value) + ", last used by " + process(pid),
                  value == 1 ? ""
                             : std::string("two processes may hold it: ipcrm -S ") + object.key);
    }
}

void check_ring(Call &call)
{
    const std::string item = name_of(RING);
    const std::string remove = std::string("ipcrm -M ") + RING.key;
    const int id = shmget(key_of(RING), 0, 0);
    if (absent(call, item, id))
        return;
    shmid_ds segment = {};
    if (shmctl(id, IPC_STAT, &segment) != 0)
        return enter(call, item, std::strerror(errno), "give it the rights 0666");
    cfg_set::EventQueue ring;
    if (segment.shm_segsz < sizeof ring)
        return enter(call, item, std::to_string(segment.shm_segsz) + " bytes", remove);
    const void *shared = shmat(id, nullptr, SHM_RDONLY);
    if (shared == reinterpret_cast<void *>(-1)) // NOLINT(performance-no-int-to-ptr)
        return enter(call, item, std::strerror(errno), "give it the rights 0666");
    // It does not take the lock, so it reads a ring that looks wrong again.
    std::string wrong;
    for (int i = 0; i == 0 || (i < 3 && !wrong.empty() && usleep(LOCK_HOLD) == 0); i++) {
        std::memcpy(&ring, shared, sizeof ring);
        wrong = ring_fault(ring);
    }
    shmdt(shared);
    enter(call, item, wrong.empty() ? std::to_string(ring.count) + " events" : wrong,
          wrong.empty() ? "" : "set the clock, or run cfgctl events clear, then " + remove);
}

// Whether a process with this name runs.
bool running(const std::string &name)
{
    bool found = false;
    DIR *processes = opendir("/proc");
    while (const dirent *entry = processes && !found ? readdir(processes) : nullptr)
        found = number(entry->d_name) &&
                first_line("/proc/" + std::string(entry->d_name) + "/comm") == name;
    if (processes)
        closedir(processes);
    return found;
}

void check_daemons(Call &call)
{
    const int64_t mode = number(stored("cifs_mode").value_or("")).value_or(0);
    const std::pair<const char *, bool> PID_FILES[] = {
        {"/var/run/GMMdVideo.pid", true}, {"/var/run/smbu.pid", mode == 1 || mode == 2}};
    for (const auto &[path, wanted] : PID_FILES) {
        const auto pid = static_cast<pid_t>(number(first_line(path)).value_or(0));
        const bool there = may(path, F_OK);
        enter(call, path,
              there    ? process(pid)
              : wanted ? "missing"
                       : "not wanted",
              (there ? lives(pid) : !wanted) ? "" : "start the daemon");
    }
    if (!may("/proc/self/comm", R_OK))
        return enter(call, "daemons by name", "/proc lists no processes");
    // The kernel keeps 15 characters of a name.
    for (const Part &part : PROCESSES)
        for (const std::string &name : split(part.names, ' ')) {
            const bool runs = running(name.substr(0, 15));
            enter(call, name, runs ? "runs" : "does not run",
                  runs ? "" : "start it: needed for " + std::string(part.purpose));
        }
}

constexpr std::pair<const char *, void (*)(Call &)> LOOKS[] = {
    {"store", check_store},     {"board", check_board}, {"tools", check_tools},
    {"drivers", check_drivers}, {"files", check_files}, {"queues", check_queues},
    {"locks", check_locks},     {"ring", check_ring},   {"daemons", check_daemons}};

} // namespace

void check_camera(Call &call)
{
    std::fflush(stdout);
    dup2(open("/dev/null", O_WRONLY | O_CLOEXEC), STDOUT_FILENO); // drop the library's reports
    const std::string wanted = call.words.empty() ? "" : call.words[0];
    call.words.resize(1);
    call.data = Json::array();
    call.fields = {"area", "item", "state", "to_do"};
    for (const auto &[area, look] : LOOKS)
        if (wanted.empty() || wanted == area) {
            call.words[0] = area;
            look(call);
        }
    const auto bad = std::count_if(call.data.begin(), call.data.end(),
                                   [](const Json &line) { return !line["ok"].get<bool>(); });
    if (bad > 0)
        complain("something is wrong with " + std::to_string(bad) + " of " +
                 std::to_string(call.data.size()) + " items");
}

} // namespace cfgctl
