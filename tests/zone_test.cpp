// The time zone: its TZ string, its files, and what the relay client is told.

#include "time/zone.h"

#include "cfg_set.h"
#include "doubles.h"
#include "platform/relay_ipc.h"

#include <ctime>
#include <fstream>
#include <sys/stat.h>

using namespace doubles;
using testing::ElementsAre;
using testing::IsEmpty;

static const std::string TABLE = "/etc_ro/time_zone";
static const std::string TZ_FILE = "/tmp/TZ";

static bool relay_is_down;
static bool memory_is_full;
static void *allocated; // by the library, and not freed
static size_t allocated_size;
static std::string sent;

extern "C" {

void *appipc_init(const char *client_name)
{
    calls.push_back(std::string("init ") + client_name);
    return relay_is_down ? nullptr : &sent;
}

void appipc_set_uint32(void *buffer, uint32_t value)
{
    const uint8_t bytes[] = {static_cast<uint8_t>(value >> 24), static_cast<uint8_t>(value >> 16),
                             static_cast<uint8_t>(value >> 8), static_cast<uint8_t>(value)};
    memcpy(buffer, bytes, sizeof bytes);
}

int appipc_send(void *handle, int option, int type, unsigned length, const void *buffer)
{
    EXPECT_EQ(handle, &sent);
    calls.push_back("send " + std::to_string(option) + " " + std::to_string(type));
    sent.assign(static_cast<const char *>(buffer), length);
    EXPECT_EQ(static_cast<const char *>(buffer)[length], '\0');
    return -1; // which nobody looks at
}

void appipc_destroy(void *handle)
{
    EXPECT_EQ(handle, &sent);
    calls.emplace_back("destroy");
}

// NOLINTBEGIN(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp): the linker's names
void *__real_malloc(size_t size);
void *__wrap_malloc(size_t size)
{
    allocated_size = size;
    allocated = memory_is_full ? nullptr : __real_malloc(size);
    return allocated;
}

void __real_free(void *memory);
void __wrap_free(void *memory)
{
    if (memory == allocated)
        allocated = nullptr;
    __real_free(memory);
}
// NOLINTEND(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp)

} // extern "C"

class ZoneTest : public LibraryTest
{
  protected:
    void SetUp() override
    {
        LibraryTest::SetUp();
        relay_is_down = false;
        memory_is_full = false;
        sent.clear();
        tzset();
    }
    void TearDown() override
    {
        unsetenv("TZ");
        EXPECT_EQ(allocated, nullptr) << "the message was not freed";
        LibraryTest::TearDown();
    }
};

static Outcome set_zone(int offset, uint32_t dst)
{
    calls.clear();
    return observe([=] { return cfg_setTimeZoneDst(offset, dst); });
}

// What the table says of `name`; "none" when it has no row.
static std::string looked_up(const std::string &name)
{
    char out[TZ_STRING_SIZE] = "none";
    const int found = lookup_tz_string(name.c_str(), out);
    EXPECT_EQ(found == 0, std::string(out) == "none");
    return out;
}

// Minutes east of Greenwich at `time`, as the C library reads the TZ string.
static long offset_at(const std::string &tz, time_t time)
{
    setenv("TZ", tz.c_str(), 1);
    tzset();
    tm local{};
    localtime_r(&time, &local);
    return local.tm_gmtoff / 60;
}

constexpr time_t JANUARY = 1705320000; // 15th, 2024
constexpr time_t JULY = 1721044800;

TEST_F(ZoneTest, AZoneOfTheTableIsWrittenCopiedAndSent)
{
    write_file(TABLE, "Etc/UTC UTC0\nEurope/Berlin CET-1CEST,M3.5.0,M10.5.0/3\n");
    const std::string old = "a longer line that was there before, and more and more of it\n";
    write_file(TZ_FILE, old);
    store["time_zone_str"] = "Europe/Berlin";
    static std::vector<std::string> during;
    before_call = [] { during.push_back(read_file(TZ_FILE)); };
    const Outcome zone = set_zone(99999, 7);
    EXPECT_EQ(zone.result, 0);
    EXPECT_EQ(zone.out, "");
    EXPECT_EQ(zone.err, "tz_string = CET-1CEST,M3.5.0,M10.5.0/3\n");
    EXPECT_EQ(read_file(TZ_FILE), "CET-1CEST,M3.5.0,M10.5.0/3\n");
    EXPECT_THAT(calls, ElementsAre("get time_zone_str 256", "system rm -rf /etc/localtime",
                                   "system cp /usr/share/zoneinfo/Europe/Berlin /tmp/localtime",
                                   "init libmorvenix", "send 0 18", "destroy"));
    EXPECT_THAT(during, ElementsAre(old, "", "")) << "the line gets there after the commands";
    EXPECT_EQ(sent, std::string("\0\0\0\x1c", 4) + "{\"timezone\":\"Europe/Berlin\"}");
    EXPECT_EQ(allocated_size, strlen("Europe/Berlin") + 20);
}

TEST_F(ZoneTest, TheCommandsReplaceTheZoneFile)
{
    store["time_zone_str"] = "Asia/Kolkata";
    write_file("/etc/localtime", "old");
    write_file("/tmp/localtime", "old");
    run_commands = true;
    EXPECT_EQ(set_zone(330, 0).result, 0);
    struct stat file;
    EXPECT_NE(stat("/etc/localtime", &file), 0);
    EXPECT_EQ(read_file("/tmp/localtime"), read_file("/usr/share/zoneinfo/Asia/Kolkata"));
    EXPECT_EQ(offset_at(":/tmp/localtime", JULY), 330);
}

TEST_F(ZoneTest, RowsMatchByPrefixInAnyCaseAndTheFirstOneWins)
{
    write_file(TABLE, "Foo/Barbaz x\r\n"
                      "foo/bar second\n"
                      "Tab\tT-1\r\n"
                      "Empty\n"
                      "Blank \r\n"
                      "Carriage C-1\rrest\n"
                      "Last L-1");
    EXPECT_EQ(looked_up("foo/bar"), "az x");
    EXPECT_EQ(looked_up("foo/barbaz"), "x");
    EXPECT_EQ(looked_up("TAB"), "T-1");
    EXPECT_EQ(looked_up("Empty"), "");
    EXPECT_EQ(looked_up("Blank"), "");
    EXPECT_EQ(looked_up("Carriage"), "C-1");
    EXPECT_EQ(looked_up("last"), "L-1");
    EXPECT_EQ(looked_up("Last L-1"), "") << "nothing stands behind the row's end";
    EXPECT_EQ(looked_up("Last L-12"), "none");
    EXPECT_EQ(looked_up("oo/bar"), "none");
    EXPECT_EQ(looked_up(""), "oo/Barbaz x");
    write_file(TABLE, "");
    EXPECT_EQ(looked_up(""), "none");
    unlink(TABLE.c_str());
    EXPECT_EQ(looked_up("foo/bar"), "none");
}

TEST_F(ZoneTest, LongRowsGoOnAsRowsAndLongStringsAreCut)
{
    const std::string name(255, 'n');
    write_file(TABLE, name + " " + std::string(255, 'a') + "Rest R-1\n" + // 511 to the Rest
                          "Fits " + std::string(127, 'f') + "\nCut " + std::string(128, 'c'));
    EXPECT_EQ(looked_up(name), std::string(127, 'a'));
    EXPECT_EQ(looked_up("Rest"), "R-1");
    EXPECT_EQ(looked_up("Fits"), std::string(127, 'f'));
    EXPECT_EQ(looked_up("Cut"), std::string(127, 'c'));
}

TEST_F(ZoneTest, TheDesksTableSaysWhatItsZoneFilesSay)
{
    std::ifstream table("/desk/time_zone");
    int rows = 0;
    for (std::string name, tz; table >> name >> tz; rows++) {
        std::string text = read_file("/usr/share/zoneinfo/" + name);
        ASSERT_FALSE(text.empty()) << name;
        text.pop_back();
        EXPECT_EQ(text.substr(text.rfind('\n') + 1), tz) << name;
        const std::string from_file = ":/usr/share/zoneinfo/" + name;
        EXPECT_EQ(offset_at(tz, JANUARY), offset_at(from_file, JANUARY)) << name;
        EXPECT_EQ(offset_at(tz, JULY), offset_at(from_file, JULY)) << name;
    }
    EXPECT_GT(rows, 5);
}

TEST_F(ZoneTest, WithoutARowTheOffsetMakesTheString)
{
    const std::map<int, std::string> strings = {
        {480, "GMT-0800"}, {-300, "GMT+0500"}, {330, "GMT-0530"},   {-570, "GMT+0930"},
        {0, "GMT-0000"},   {-30, "GMT+0030"},  {59, "GMT-0059"},    {-1, "GMT+0001"},
        {60, "GMT-0100"},  {1440, "GMT-2400"}, {-1440, "GMT+2400"}, {1439, "GMT-2359"}};
    for (const auto &[offset, tz] : strings) {
        set_zone(offset, 0);
        EXPECT_EQ(read_file(TZ_FILE), tz + "\n");
        set_zone(offset, 1);
        EXPECT_EQ(read_file(TZ_FILE), tz + "DST,M4.1.0/2,M10.5.0/2\n");
    }
    // Every one of them reads back as the offset it came from.
    observe([] {
        for (int offset = -1440; offset <= 1440; offset++) {
            EXPECT_EQ(cfg_setTimeZoneDst(offset, 0), 0);
            char sign = '?';
            int hours = -1;
            int minutes = -1;
            EXPECT_EQ(sscanf(read_file(TZ_FILE).c_str(), "GMT%c%2d%2d", &sign, &hours, &minutes),
                      3);
            EXPECT_LT(minutes, 60);
            EXPECT_EQ((hours * 60 + minutes) * (sign == '+' ? -1 : 1), offset);
        }
        return 0;
    });
}

TEST_F(ZoneTest, GlibcTakesTheDigitsForHours)
{
    // It reads up to the first colon, and at most 24 hours: right for 0 and a
    // whole day only. The sign and the hour of daylight saving are as meant.
    for (const int offset : {0, 1, -1, 23, 59, 60, 330, 480, -300, -570, 1440, -1440}) {
        const int digits = abs(offset) / 60 * 100 + abs(offset) % 60;
        const long read = (offset < 0 ? -60L : 60L) * std::min(digits, 24);
        set_zone(offset, 0);
        std::string tz = read_file(TZ_FILE);
        tz.pop_back();
        EXPECT_EQ(offset_at(tz, JANUARY), read) << tz;
        EXPECT_EQ(offset_at(tz, JULY), read) << tz;
        set_zone(offset, 1);
        tz = read_file(TZ_FILE);
        tz.pop_back();
        EXPECT_EQ(offset_at(tz, JANUARY), read) << tz;
        EXPECT_EQ(offset_at(tz, JULY), read + 60) << tz;
    }
}

TEST_F(ZoneTest, TheFallbackRefusesWhatIsOutOfRangeBeforeItActs)
{
    const std::vector<std::pair<int, uint32_t>> refusals = {
        {1441, 0}, {-1441, 0}, {INT32_MAX, 0}, {INT32_MIN, 0}, {0, 2}, {0, UINT32_MAX}};
    for (const std::string name : {"", "Mars/Olympus"}) {
        store["time_zone_str"] = name;
        for (const auto &[offset, dst] : refusals) {
            const Outcome zone = set_zone(offset, dst);
            EXPECT_EQ(zone.result, -1);
            EXPECT_EQ(zone.out, "[cfg_setTimeZoneDst #] invalid param\n");
            EXPECT_EQ(zone.err, "");
            EXPECT_THAT(calls, ElementsAre("get time_zone_str 256"));
        }
    }
    EXPECT_EQ(read_file(TZ_FILE), "");
}

TEST_F(ZoneTest, TheRelayIsToldTheStoredNameNeverTheString)
{
    for (const std::string name : {"", "Mars/Olympus", "a\"b\n"}) {
        store["time_zone_str"] = name;
        EXPECT_EQ(set_zone(-330, 1).result, 0);
        EXPECT_EQ(read_file(TZ_FILE), "GMT+0530DST,M4.1.0/2,M10.5.0/2\n");
        EXPECT_EQ(recorded("system")[1], "cp /usr/share/zoneinfo/" + name + " /tmp/localtime");
        const std::string length(1, static_cast<char>(name.size() + 15));
        EXPECT_EQ(sent, std::string(3, '\0') + length + "{\"timezone\":\"" + name + "\"}");
    }
    refused = {"get time_zone_str"};
    set_zone(0, 0);
    EXPECT_EQ(sent.size(), 19U);
}

TEST_F(ZoneTest, ALongNameCutsTheCopyCommand)
{
    for (const size_t length : {217U, 218U, 232U, 233U, 255U}) {
        const std::string name(length, 'n');
        store["time_zone_str"] = name;
        EXPECT_EQ(set_zone(0, 0).result, 0);
        const std::string whole = "cp /usr/share/zoneinfo/" + name + " /tmp/localtime";
        EXPECT_EQ(recorded("system")[1], whole.substr(0, 255)) << length;
        EXPECT_EQ(sent.size(), length + 19) << "the relay is told all of it";
    }
}

TEST_F(ZoneTest, FailuresStopBeforeTheCommandsOrLeaveTheFilesWritten)
{
    memory_is_full = true;
    Outcome zone = set_zone(0, 0);
    memory_is_full = false;
    EXPECT_EQ(zone.result, 0);
    EXPECT_EQ(zone.out, "[cfg_setTimeZoneDst #] Fail to allocate memory\n");
    EXPECT_EQ(calls.back(), "system cp /usr/share/zoneinfo/ /tmp/localtime");
    EXPECT_EQ(read_file(TZ_FILE), "GMT-0000\n");

    relay_is_down = true;
    zone = set_zone(60, 0);
    EXPECT_EQ(zone.result, 0);
    EXPECT_EQ(zone.out, "[cfg_setTimeZoneDst #] Fail to connect to relaycli\n");
    EXPECT_EQ(calls.back(), "init libmorvenix");
    EXPECT_EQ(read_file(TZ_FILE), "GMT-0100\n");

    unlink(TZ_FILE.c_str());
    write_file(TZ_FILE + "/in-the-way", "");
    zone = set_zone(0, 0);
    EXPECT_EQ(zone.result, -1);
    EXPECT_EQ(zone.out, "[cfg_setTimeZoneDst #] fopen fail\n");
    EXPECT_EQ(zone.err, "");
    EXPECT_THAT(calls, ElementsAre("get time_zone_str 256"));
}

TEST_F(ZoneTest, TheRestorerAppliesWhatIsStored)
{
    store = {{"time_zone", "-570"}, {"time_dst", "1"}};
    Outcome restore = observe(cfg_restoreTimeZoneDst);
    EXPECT_EQ(restore.result, 0);
    EXPECT_EQ(restore.err, "tz_string = GMT+0930DST,M4.1.0/2,M10.5.0/2\n");
    EXPECT_THAT(std::vector<std::string>(calls.begin(), calls.begin() + 3),
                ElementsAre("get time_zone 256", "get time_dst 256", "get time_zone_str 256"));

    const std::string refusal = "[cfg_setTimeZoneDst #] invalid param\n"
                                "[cfg_restoreTimeZoneDst #] cfg_setTimeZoneDst fail\n";
    const std::string unread = "[cfg_restoreTimeZoneDst #] param_get fail\n";
    for (const auto &[settings, out] :
         std::vector<std::pair<std::map<std::string, std::string>, std::string>>{
             {{{"time_zone", "0"}, {"time_dst", "-1"}}, refusal},
             {{{"time_zone", "4294967296"}, {"time_dst", "0"}}, refusal},
             {{{"time_dst", "0"}}, unread},
             {{{"time_zone", "0"}}, unread}}) {
        store = settings;
        calls.clear();
        restore = observe(cfg_restoreTimeZoneDst);
        EXPECT_EQ(restore.result, -1);
        EXPECT_EQ(restore.out, out);
        EXPECT_THAT(recorded("system"), IsEmpty());
    }
}
