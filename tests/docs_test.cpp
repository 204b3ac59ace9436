// What the documents show is what the library makes, and what they list is all
// that it uses.

#define CFGCTL_PAGES // of the tables the texts alone

#include "cfg_set.h"
#include "harness.h"
#include "platform/relay_ipc.h"
#include "platform/viewer_relay.h"
#include "tools/cfgctl/parts.h"
#include "tools/cfgctl/table.h"

#include <cstring>
#include <filesystem>
#include <regex>
#include <sstream>
#include <sys/msg.h>
#include <sys/stat.h>

static std::map<std::string, std::string> made;

static std::string bytes(const void *data, size_t size)
{
    return {static_cast<const char *>(data), size};
}

// What stands at the firmware's end, with what the document says is stored.
extern "C" {
// clang-format off
int param_get(const char *key, char *buffer, unsigned size)
{
    const std::map<std::string, std::string> stored = {
        {"cifs_mode", "1"}, {"gdu_account", "me"}, {"time_zone_str", "UTC"}};
    const auto found = stored.find(key);
    if (found == stored.end())
        return -1;
    snprintf(buffer, size, "%s", found->second.c_str());
    return 0;
}
int param_set(const char *, const char *) { return 0; }
int param_save() { return 0; }
int param_unset(const char *) { return 0; }
int msg2relay(const viewer_relay_msg *m) { made["viewer relay"] = bytes(m, sizeof *m); return 0; }
void *appipc_init(const char *) { return &made; }
void appipc_set_uint32(void *buffer, uint32_t value) { memcpy(buffer, &value, sizeof value); }
int appipc_send(void *, int, int, unsigned length, const void *buffer)
{
    made["zone ipc"] = bytes(buffer, length);
    return 0;
}
void appipc_destroy(void *) {}
int system(const char *) { return 0; }
unsigned sleep(unsigned) { return 0; }
time_t time(time_t *) { return 1704067200; } // 2024-01-01
// clang-format on
}

// What the pattern's group matches in the text.
static std::vector<std::string> matches(const std::string &text, const std::regex &pattern)
{
    const std::sregex_token_iterator found(text.begin(), text.end(), pattern, 1), end;
    return {found, end};
}

// The next message of a queue, without its type.
static std::string taken(key_t key)
{
    struct {
        long type;
        char body[512];
    } message;
    const ssize_t size = msgrcv(msgget(key, 0), &message, sizeof message.body, 0, IPC_NOWAIT);
    return bytes(message.body, size < 0 ? 0 : static_cast<size_t>(size));
}

// "0b00 10*00" as bytes.
static std::string parsed(const std::string &line)
{
    std::string result;
    std::istringstream words(line);
    for (std::string word; words >> word;) {
        const size_t star = word.find('*');
        const size_t times = star == std::string::npos ? 1 : std::stoul(word);
        const std::string digits = word.substr(star == std::string::npos ? 0 : star + 1);
        for (size_t n = 0; n < times; n++)
            for (size_t i = 0; i < digits.size(); i += 2)
                result += static_cast<char>(std::stoi(digits.substr(i, 2), nullptr, 16));
    }
    return result;
}

TEST(DocsTest, FormatsAreAsTheDocumentShowsThem)
{
    mkdir("/mnt/sdcard/video", 0755);
    quietly([] {
        cfg_setVolumeDetectSensitivity(5);
        made["message 5678"] = taken(5678);
        cfg_setPrivacyEvent(1);
        made["privacy 5678"] = taken(5678);
        smbu_wake_up();
        made["signal 20130005"] = taken(0x20130005);
        smbu_set_config(nullptr, nullptr, nullptr, "1", nullptr);
        made["account 20130003"] = taken(0x20130003);
        cfg_setTimeZoneDst(0, 0);
        const viewer_entry ann = {"ann", "1234", "key", "1"};
        cfg_setDeviceStatus(7);
        cfg_enqueueEvent(2);
        return viewer_add_config(&ann);
    });
    for (const std::string name : {"ring /mnt/sdcard/video/.event", "status /tmp/dev_status"})
        made[name] = read_file(name.substr(name.find('/')));

    std::map<std::string, std::string> shown;
    std::istringstream document(read_file("/desk/docs/formats.md"));
    const std::string mark = "```example ";
    for (std::string line, example; std::getline(document, line);)
        if (line.rfind(mark, 0) == 0 && std::getline(document, example))
            shown[line.substr(mark.size())] = parsed(example);
    EXPECT_EQ(shown, made);
}

// The same in the library's sources.
static std::vector<std::string> used(const std::string &pattern)
{
    const std::regex use(pattern);
    std::vector<std::string> found;
    for (const char *folder :
         {"settings", "events", "upload", "firmware", "network", "time", "records"}) {
        const std::filesystem::directory_iterator files(std::string("/desk/") + folder);
        for (const auto &entry : files)
            for (const std::string &match : matches(read_file(entry.path()), use))
                found.push_back(match);
    }
    EXPECT_GT(found.size(), 5U);
    return found;
}

// Every match of the pattern stands in the document.
static void expect_listed(const std::string &document, const std::string &pattern)
{
    const std::string text = read_file("/desk/docs/" + document);
    for (const std::string &match : used(pattern))
        EXPECT_NE(text.find(match), std::string::npos) << document << ": " << match;
}

TEST(DocsTest, ListsHoldWhatTheSourcesUse)
{
    expect_listed("porting.md",
                  R"((/(?:proc|tmp|etc|etc_ro|mnt|var|sbin|usr|audio)/[\w/]*(?:\.\w+)*))");
    expect_listed("porting.md",
                  R"re((?:run|popen|command_line|start_and_wait|system)\("([\w./]+))re");
    expect_listed("porting.md",
                  R"re((?:param_\w+|\w*stored\w*|store_\w+|put_setting|read_number|)re"
                  R"re(readable|get_wanted|printed_number|add_server)\("(\w+)")re");
    expect_listed("operations.md", R"re(REPORT\w*\((?:SETTER, )?"([^"%\[\\]{4,}))re");
    expect_listed("operations.md",
                  R"re((?:"\[%s %d\] ?|report\(function, line, ")([^"%\[\\]{4,}))re");
    // With names and numbers around it, a report fits the frame's 256 bytes.
    for (const std::string &text : used(R"re((?:REPORT\w*|report\w*)\([^"]*"([^"]*)")re"))
        EXPECT_LT(text.size(), 200U) << text;
}

// What cfgctl knows and looks for is in the lists, and every driver's file is looked for.
TEST(DocsTest, ListsHoldWhatCheckLooksFor)
{
    using namespace cfgctl;
    const std::string text = read_file("/desk/docs/porting.md");
    std::string wanted;
    const auto add = [&](const auto &parts) {
        for (const auto &part : parts)
            wanted += std::string(part.names) + " ";
    };
    add(TOOLS);
    add(PROCESSES);
    add(DRIVERS);
    for (const auto &setting : SETTINGS)
        wanted += std::string(setting.value.name) + " ";
    for (const auto &object : {QUEUES[0], QUEUES[1], QUEUES[2], LOCKS[0], LOCKS[1], LOCKS[2], RING})
        wanted += std::string(object.key) + " ";
    std::istringstream names(wanted);
    for (std::string name; names >> name;)
        EXPECT_TRUE(std::regex_search(text, std::regex("[`/ ]" + name + "[`, ]"))) << name;

    const std::string drivers =
        text.substr(text.find("## Drivers"), text.find("## Files") - text.find("## Drivers"));
    const std::regex file("(/proc/[a-z0-9_/]+)`[^\n]*\\|[^\n]*\\|");
    for (const std::string &found : matches(drivers, file))
        EXPECT_TRUE(found == "/proc/mounts" || wanted.find(found) != std::string::npos) << found;
}
