// The time zone: its TZ string, its files, and what the relay client is told.

#include "time/zone.h"

#include "cfg_set.h"
#include "doubles.h"
#include "memory.h"
#include "platform/relay_ipc.h"

using namespace doubles;

static bool relay_is_down;
static const std::string OLD = "a longer line that was there before, and more and more of it\n";

extern "C" {

void *appipc_init(const char *client_name)
{
    calls.push_back("init " + std::string(client_name));
    EXPECT_EQ(read_file("/tmp/TZ").back(), '\n') << "the line is written by now";
    return relay_is_down ? nullptr : &relay_is_down;
}

void appipc_set_uint32(void *buffer, uint32_t value)
{
    memcpy(buffer, std::to_string(1000 + value).data(), 4); // four bytes of its own form
}

int appipc_send(void *handle, int option, int type, unsigned length, const void *buffer)
{
    EXPECT_EQ(handle, &relay_is_down);
    const char *const text = static_cast<const char *>(buffer);
    calls.push_back("send " + words(option, type, std::string(text, length)));
    EXPECT_EQ(text[length], '\0');
    EXPECT_EQ(last_size, length + 1);
    return -1; // which nobody looks at
}

void appipc_destroy(void *handle)
{
    calls.emplace_back(handle == &relay_is_down ? "destroy" : "destroy another");
}

} // extern "C"

using ZoneTest = LibraryTest;

// check(), and that the line is written after the commands and the message freed.
static void check_zones(const std::vector<Row> &rows)
{
    before_call = [] { EXPECT_THAT(read_file("/tmp/TZ"), testing::AnyOf("", OLD)) << "early"; };
    check(rows);
    EXPECT_TRUE(held.empty());
}

static std::string looked_up(Text name)
{
    char out[cfg_set::TZ_STRING_SIZE + 1] = "none";
    out[cfg_set::TZ_STRING_SIZE] = '!';
    const int found = cfg_set::lookup_tz_string(name.c_str(), out);
    EXPECT_EQ(out[cfg_set::TZ_STRING_SIZE], '!');
    return words(found, std::string(out));
}

// clang-format off
// All that a zone of this name does until the relay is told, and that.
static Calls files(Text zone)
{
    Calls removed = {"system rm -rf /etc/localtime"};
    if (zone.size() > 217 || zone.find_first_of(" ;\n\"*?[~#") < 217 || zone.find("../") < 217)
        return removed;
    return removed + Calls{"system cp /usr/share/zoneinfo/" + zone + " /tmp/localtime"};
}
static Calls applied(Text zone, Text tz)
{
    const std::string told = word(1000 + zone.size() + 15) + "{\"timezone\":\"" + zone + "\"}";
    return files(zone) + Calls{"init libmorvenix", "send 0 18 " + told, "destroy", "wrote /tmp/TZ " + tz + "\\n"};
}

static const std::string TOLD = "! | tz_string = ";

// A row of a zone name, one of an offset alone, and one of a name that no table has.
static Row named(Text zone, Text tz, int offset = 99999, uint32_t dst = 7)
{
    return {{{"time_zone_str", zone}}, CALL(cfg_setTimeZoneDst(offset, dst)), 0, applied(zone, tz), TOLD + tz};
}
static Row offset(int minutes, Text tz, uint32_t dst = 0) { return named("", tz, minutes, dst); }
static Row at_utc(Text zone) { return named(zone, "GMT-0000", 0, 0); }

TEST_F(ZoneTest, RowsMatchByPrefixInAnyCaseAndTheFirstOneWins)
{
    const std::string table = "/etc_ro/time_zone", name(255, 'n'), f(127, 'f'), c(127, 'c');
    write_file(table, "Foo/Barbaz x\r\nfoo/bar second\nTab\tT-1\r\nEmpty\nBlank \r\nCarriage C-1\rrest\n" +
        name + " " + std::string(255, 'a') + "Rest R-1\nFits " + f + "\nCut " + c + "c\nLast L-1");
    const auto row = [](Text given, Text found) { return Row{CALL(looked_up(given)), found}; };
    check_zones({
        row("foo/bar", "1 az x"), row("foo/barbaz", "1 x"), row("TAB", "1 T-1"), row("Empty", "1 "),
        row("Blank", "1 "), row("Carriage", "1 C-1"), row("last", "1 L-1"), row("Last L-1", "1 "),
        row("Last L-12", "0 none"), row("oo/bar", "0 none"), row("", "1 oo/Barbaz x"),
        row(name, "1 " + std::string(127, 'a')), row("Rest", "1 R-1"), // read in pieces of 511
        row("Fits", "1 " + f), row("Cut", "1 " + c),
        {{{table, ""}}, CALL(looked_up("")), "0 none"},
        {{{table, "nobody asks for this\n"}}, CALL(looked_up("foo")), "0 none"},
    });
    write_file(table, "Etc/UTC UTC0\nEurope/Berlin CET-1CEST,M3.5.0,M10.5.0/3\n");
    const Row berlin = named("Europe/Berlin", "CET-1CEST,M3.5.0,M10.5.0/3");
    Row over = berlin;
    over.given["/tmp/TZ"] = OLD;
    check_zones({berlin, over, named("Europe/Paris", "GMT-0100", 60, 0), offset(0, "GMT-0000")});
    remove(table.c_str());
    check_zones({row("", "0 none")});
}

TEST_F(ZoneTest, WithoutARowTheOffsetMakesTheString)
{
    const std::string summer = "DST,M4.1.0/2,M10.5.0/2", n(255, 'n');
    const std::string bad = "[cfg_setTimeZoneDst #] invalid param\ncfg_setTimeZoneDst fail";
    const auto invalid = [](int minutes, uint32_t dst) {
        return Row{{{"time_zone_str", "Mars/Olympus"}}, CALL(cfg_setTimeZoneDst(minutes, dst)), -1, {},
                   "invalid param", {"time_zone_str 256"}};
    };
    const Call restore = CALL(cfg_restoreTimeZoneDst());
    check_zones({
        offset(480, "GMT-0800"), offset(-300, "GMT+0500"), offset(330, "GMT-0530"),
        offset(-570, "GMT+0930"), offset(0, "GMT-0000"), offset(-30, "GMT+0030"),
        offset(59, "GMT-0059"), offset(-1, "GMT+0001"), offset(60, "GMT-0100"),
        offset(-60, "GMT+0100"), offset(1439, "GMT-2359"), offset(1440, "GMT-2400"),
        offset(-1440, "GMT+2400"), offset(480, "GMT-0800" + summer, 1),
        offset(-330, "GMT+0530" + summer, 1), named("Mars/Olympus", "GMT+0930" + summer, -570, 1),
        // No copy where a shell or a path would make more of the name, nor with a line that is cut.
        at_utc("a;b"), at_utc("a b"), at_utc("a\"\n"), at_utc("-a"), at_utc("../a"),
        at_utc("a?c"), at_utc("~"), at_utc("a#c"), at_utc(n.substr(51) + "/../../../mnt/sdcard/e"),
        at_utc(std::string(200, '/') + "../../../[mu][ns][tr]/[s]*/ntpd"),
        at_utc(n.substr(38)), at_utc(n.substr(37)), at_utc(n.substr(22)), at_utc(n),
        invalid(1441, 0), invalid(-1441, 0), invalid(INT32_MIN, 0), invalid(0, 2), invalid(0, ~0U),
        {{{"time_zone_str", "x"}}, {"get time_zone_str"}, CALL(cfg_setTimeZoneDst(0, 0)), 0,
            applied("", "GMT-0000"), TOLD + "GMT-0000"},
        {{{"/tmp/TZ/", ""}}, CALL(cfg_setTimeZoneDst(0, 0)), -1, {}, "fopen fail"},
        {{{"time_zone", "-570"}, {"time_dst", "1"}}, restore, 0, applied("", "GMT+0930" + summer),
            TOLD + "GMT+0930" + summer, {"time_zone 256", "time_dst 256", "time_zone_str 256"}},
        {{{"time_zone", "60x"}, {"time_dst", "0"}}, restore, 0, applied("", "GMT-0100"), TOLD + "GMT-0100"},
        {{{"time_zone", "0"}, {"time_dst", "-1"}}, restore, -1, {}, bad},
        {{{"time_zone", "4294967296"}, {"time_dst", "0"}}, restore, -1, {}, bad},
        {{{"time_dst", "0"}}, restore, -1, {}, "param_get fail", {"time_zone 256"}},
        {{{"time_zone", "0"}}, restore, -1, {}, "param_get fail", {"time_zone 256", "time_dst 256"}},
    });
}

TEST_F(ZoneTest, TheFilesStandWhenTheRelayCannotBeTold)
{
    Row row = offset(60, "GMT-0100");
    row.calls = files("") + Calls{"init libmorvenix", "wrote /tmp/TZ GMT-0100\\n"};
    row.printed = "Fail to connect to relaycli\n" + TOLD + "GMT-0100";
    relay_is_down = true;
    check_zones({row});
    row.calls.erase(row.calls.end() - 2);
    row.printed = "Fail to allocate memory\n" + TOLD + "GMT-0100";
    allocations_left = 0;
    check_zones({row});
    allocations_left = -1;
}
// clang-format on
