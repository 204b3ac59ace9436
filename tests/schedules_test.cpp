// Schedules and alarm clocks: their checks, stored texts and reload signals.

#include "cfg_set.h"
#include "doubles.h"

using namespace doubles;

using SchedulesTest = LibraryTest;

// clang-format off
static std::string key(Text list, int slot) { return list + (slot < 10 ? "0" : "") + word(slot); }

// The calls of a setter that stores `values`, and its signal.
static Calls stored(Text list, const Calls &values, Text signal)
{
    Calls made;
    for (int i = 0; i < (list == "sched" ? 9 : 7); i++)
        made.push_back("unset " + key(list, i));
    for (size_t i = 0; i < values.size(); i++)
        made.push_back("set " + key(list, static_cast<int>(i)) + "=" + values[i]);
    return made + Calls{"system " + signal};
}

static alarm_clock_entry alarm_clock(Text text)
{
    alarm_clock_entry entry{1, 127, 1440, ""};
    text.copy(entry.text, sizeof entry.text);
    return entry;
}

static std::string told(const sched_entry &e)
{
    return words(int(e.enable), e.param1, e.param2, e.starttime, e.stoptime, e.days, e.repeat);
}
static std::string told(const alarm_clock_entry &e) { return words(int(e.enable), e.wday, e.starttime, e.text); }

// Checks an entry behind a good one and before a bad one, which is not looked at.
template <typename Entry>
static int checked(int (*check)(int, const Entry *), const Entry &good, const Entry &entry)
{
    Entry list[] = {good, entry, good};
    list[2].enable = 9;
    return check(2, list);
}

// The result, the count and the entries that were read over others.
template <typename Entry>
static std::string read_over(const Entry &was, int (*get)(int *, Entry *), int room)
{
    std::vector<Entry> list(101, was);
    std::string text = words(get(&room, list.data()), room);
    for (const Entry &entry : list)
        text += told(entry) == told(was) ? "" : ": " + told(entry);
    return text;
}

static const sched_entry GOOD = {1, -5, 99999, 1440, 0, 127, 1}, WAS = {90, 91, 92, 93, 94, 95, 96};
static const alarm_clock_entry CLOCK_WAS = {90, 91, 92, "was"};
#define SCHEDULES(room) CALL_AS(sched_get_config, read_over(WAS, sched_get_config, room))
#define CLOCKS(room) CALL_AS(alarm_get_config, read_over(CLOCK_WAS, alarm_get_config, room))

TEST_F(SchedulesTest, ChecksNameTheFirstBadFieldOfTheFirstBadEntry)
{
    const uint32_t minus = UINT32_MAX;
    const auto schedule = [](const sched_entry &e, int is, Text text) {
        check({{CALL_AS(sched_check_config, checked(sched_check_config, GOOD, e)), is, {}, text}});
    };
    const auto clock = [](const alarm_clock_entry &e, int is, Text text) {
        const alarm_clock_entry good = alarm_clock("");
        check({{CALL_AS(alarm_check_config, checked(alarm_check_config, good, e)), is, {}, text}});
    };
    schedule(GOOD, 0, "");
    schedule({2, 0, 0, 1441, 1441, 128, 2}, -1, "invalid sched enable 2");
    schedule({minus, 0, 0, 0, 0, 0, 0}, -1, "invalid sched enable -1");
    schedule({0, 0, 0, 1441, 1441, 128, 2}, -2, "invalid sched starttime 1441");
    schedule({1, 0, 0, minus, 0, 0, 0}, -2, "invalid sched starttime -1");
    schedule({1, 0, 0, 1440, 1441, 128, 2}, -3, "invalid sched stoptime 1441");
    schedule({1, 0, 0, 0, minus, 0, 0}, -3, "invalid sched stoptime -1");
    schedule({0, 0, 0, 0, 1440, 128, 2}, -4, "invalid sched days 128");
    schedule({0, 0, 0, 0, 0, 0, 2}, -5, "invalid sched repeat 2");
    clock(alarm_clock(std::string(512, 'x')), 0, "");
    clock({2, 128, 1441, ""}, -1, "invalid sched enable 2");
    clock({0, 128, 1441, ""}, -2, "invalid alarm clock wday 128");
    clock({1, 127, 1441, ""}, -32, "invalid alarm clock starttime 1441");
    clock({1, 0, minus, ""}, -32, "invalid alarm clock starttime -1");
    check({{CALL(words(sched_check_config(0, nullptr), alarm_check_config(-1, nullptr))), "0 0"}});
}

TEST_F(SchedulesTest, SettersEmptyTheSlotsStoreTheListAndSignal)
{
    std::vector<sched_entry> list(101, {0, 0, 0, 0, 0, 0, 0});
    list[0] = {1, -5, INT32_MIN, 1440, 0, 127, 1};
    list[1] = {UINT32_MAX, 2, 3, 4, 5, 6, 7};
    Calls values(100, "0,0,0,0,0,0,0");
    values[0] = "1,-5,-2147483648,1440,0,127,1";
    values[1] = "-1,2,3,4,5,6,7";
    const Calls all = stored("sched", values, "killall -35 ctrl_sched");
    values.resize(2);
    const Calls two = stored("sched", values, "killall -35 ctrl_sched");
    const alarm_clock_entry alarms[] = {alarm_clock("a,b"), alarm_clock(""), alarm_clock("c")};
    const alarm_clock_entry longest[] = {alarm_clock(std::string(512, 't'))}; // 511 in all
    const std::vector<alarm_clock_entry> many(101, alarm_clock("x"));
    const auto clocks = [](const Calls &a) { return stored("clock", a, "killall -SIGUSR1  alarm"); };
    const Calls texts = clocks({"1,127,1440,a,b", "1,127,1440,"});
    const std::string fail = "param_set fail";
    check({
        {CALL(sched_set_config(100, list.data())), 0, all},
        {CALL(sched_set_config(101, list.data())), 0, all, fail},
        {{}, {"set sched01", "unset sched04"}, CALL(sched_set_config(5, list.data())), 0, two, fail},
        {CALL(sched_set_config(0, nullptr)), 0, stored("sched", {}, "killall -35 ctrl_sched")},
        {{}, {"set clock01", "unset clock01"}, CALL(alarm_set_config(3, alarms)), 0, texts, fail},
        {CALL(alarm_set_config(2, alarms)), 0, texts},
        {CALL(alarm_set_config(-1, nullptr)), 0, clocks({})},
        {CALL(alarm_set_config(1, longest)), 0, clocks({"1,127,1440," + std::string(500, 't')})},
        {CALL(alarm_set_config(101, many.data())), 0, clocks(Calls(100, "1,127,1440,x")), fail},
    });
}

TEST_F(SchedulesTest, GettersFillOnlyWhatTheStoredTextsReach)
{
    const Given two = {{"sched00", "1"}, {"sched01", "2"}, {"clock00", "1"}, {"clock01", "2"}};
    const std::string fail = "param_get fail", rest = " 92 93 94 95 96", first = "0 1: 1 91" + rest;
    const std::string most = "2147483647";
    std::vector<Row> rows = {
        {SCHEDULES(9), "0 0", {}, fail, {"sched00 256"}},
        {two, SCHEDULES(9), "0 2: 1 91" + rest + ": 2 91" + rest, {}, fail,
            {"sched00 256", "sched01 256", "sched02 256"}},
        {{{"sched00", "1"}, {"sched01", ""}, {"sched02", "1"}}, SCHEDULES(9), first},
        {two, SCHEDULES(1), first},
        {two, SCHEDULES(0), "0 0"},
        {two, SCHEDULES(-1), "0 0"},
        {{{"sched00", "x,2"}}, SCHEDULES(1), "0 1"},
        {{{"clock00", "x,2,3,a"}}, CLOCKS(1), "0 1"},
        {CLOCKS(7), "0 0", {}, fail, {"clock00 512"}},
        {{{"clock00", ""}, {"clock01", "1"}}, CLOCKS(7), "0 0"},
        {two, CLOCKS(1), "0 1: 1 91 92 was"},
        {two, CLOCKS(7), "0 2: 1 91 92 was: 2 91 92 was", {}, fail},
    };
    for (const auto &[text, read] : Given{
             {"1,-2,3,4,5,6,7", "1 -2 3 4 5 6 7"}, {"1,2,3,4,5,6,7,8,9", "1 2 3 4 5 6 7"},
             {"1,2", "1 2" + rest}, {"1,2,", "1 2" + rest}, {" 1,\n+2,x", "1 2" + rest},
             {"1,,3", "1 91" + rest}, {"1 ,2", "1 91" + rest}, {"1;2", "1 91" + rest},
             {std::string(300, '9'), most + " 91" + rest},
             {"-1,2147483648,-2147483649,4294967297", "-1 " + most + " -2147483648 " + most + " 94 95 96"}})
        rows.push_back({{{"sched00", text}}, SCHEDULES(1), "0 1: " + read});
    for (const auto &[text, read] : Given{
             {"1,2,3,a,b", "1 2 3 a,b"}, {"1,2,3,", "1 2 3 was"}, {"1,2,3", "1 2 3 was"},
             {"1,2,3x,a", "1 2 3 was"}, {"1,2,3;a", "1 2 3 was"}, {"1,2,3,\na", "1 2 3 was"},
             {"1,2,3, a\nb", "1 2 3  a"}, {"1,2", "1 2 92 was"},
             {"-1,2,3," + std::string(600, 't'), "-1 2 3 " + std::string(504, 't')}})
        rows.push_back({{{"clock00", text}}, CLOCKS(1), "0 1: " + read});
    // A caller's room for more than there can be keys.
    Given full;
    for (int i = 0; i < 100; i++)
        full[key("sched", i)] = full[key("clock", i)] = "1";
    rows.push_back({full, CALL(read_over(WAS, sched_get_config, 101).substr(0, 5)), "0 100"});
    rows.push_back({full, CALL(read_over(CLOCK_WAS, alarm_get_config, 101).substr(0, 5)), "0 100"});
    check(rows);
}
// clang-format on
