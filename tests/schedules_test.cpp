// Schedules and alarm clocks: their checks, stored texts and reload signals.

#include "cfg_set.h"
#include "doubles.h"

#include <cstring>

using namespace doubles;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;

class SchedulesTest : public LibraryTest
{
};

static const std::string NO_SET = "param_set fail\n";
static const std::string NO_GET = "param_get fail\n";

static std::string key(const std::string &list, int slot)
{
    return list + (slot < 10 ? "0" : "") + std::to_string(slot);
}

// The calls of a setter that stores `values`, up to one that is refused.
static std::vector<std::string> storing(const std::string &list, int slots,
                                        const std::vector<std::string> &values,
                                        const std::string &signal)
{
    std::vector<std::string> expected;
    for (int i = 0; i < slots; i++)
        expected.push_back("unset " + key(list, i));
    for (size_t i = 0; i < values.size(); i++)
        expected.push_back("set " + key(list, static_cast<int>(i)) + "=" + values[i]);
    expected.push_back("system " + signal);
    return expected;
}

static alarm_clock_entry alarm_clock(const std::string &text)
{
    alarm_clock_entry entry{1, 127, 1440, ""};
    text.copy(entry.text, sizeof entry.text);
    return entry;
}

TEST_F(SchedulesTest, ChecksNameTheFirstBadFieldOfTheFirstBadEntry)
{
    const auto minus = static_cast<uint32_t>(-1);
    const sched_entry good = {1, -5, 99999, 1440, 0, 127, 1};
    for (const auto &[bad, result, text] : std::vector<std::tuple<sched_entry, int, std::string>>{
             {good, 0, ""},
             {{2, 0, 0, 1441, 1441, 128, 2}, -1, "enable 2"},
             {{1, 0, 0, 1441, 1441, 128, 2}, -2, "starttime 1441"},
             {{1, 0, 0, minus, 0, 0, 0}, -2, "starttime -1"},
             {{1, 0, 0, 1440, 1441, 128, 2}, -3, "stoptime 1441"},
             {{0, 0, 0, 0, 1440, 128, 2}, -4, "days 128"},
             {{0, 0, 0, 0, 0, 0, 2}, -5, "repeat 2"}}) {
        const sched_entry list[] = {good, bad, {9, 0, 0, 0, 0, 0, 0}};
        const Outcome check = observe([&] { return sched_check_config(2, list); });
        EXPECT_EQ(check.result, result) << text;
        EXPECT_EQ(check.out,
                  text.empty() ? "" : "[sched_check_config #] invalid sched " + text + "\n");
    }
    for (const auto &[bad, result, text] :
         std::vector<std::tuple<alarm_clock_entry, int, std::string>>{
             {alarm_clock("x"), 0, ""},
             {{2, 128, 1441, ""}, -1, "sched enable 2"},
             {{1, 128, 1441, ""}, -2, "alarm clock wday 128"},
             {{1, 127, 1500, ""}, -32, "alarm clock starttime 1500"},
             {{1, 127, minus, ""}, -32, "alarm clock starttime -1"}}) {
        const alarm_clock_entry list[] = {alarm_clock(""), bad};
        const Outcome check = observe([&] { return alarm_check_config(2, list); });
        EXPECT_EQ(check.result, result) << text;
        EXPECT_EQ(check.out, text.empty() ? "" : "[alarm_check_config #] invalid " + text + "\n");
    }
    EXPECT_EQ(sched_check_config(0, nullptr) + alarm_check_config(-1, nullptr), 0);
}

TEST_F(SchedulesTest, SettersEmptyTheSlotsStoreTheListAndSignal)
{
    const std::string reload = "killall -35 ctrl_sched";
    const sched_entry list[12] = {{1, -5, INT32_MIN, 1440, 0, 127, 1},
                                  {UINT32_MAX, 0, 0, 0, 0, 0, 0}};
    EXPECT_EQ(sched_set_config(12, list), 0);
    std::vector<std::string> values(12, "0,0,0,0,0,0,0");
    values[0] = "1,-5,-2147483648,1440,0,127,1";
    values[1] = "-1,0,0,0,0,0,0";
    EXPECT_THAT(calls, ElementsAreArray(storing("sched", 9, values, reload)));

    calls.clear();
    refused = {"set sched02", "unset sched04"};
    const Outcome set = observe([&] { return sched_set_config(5, list); });
    EXPECT_EQ(set.result, 0);
    EXPECT_EQ(set.out, "[sched_set_config #] " + NO_SET);
    values.resize(3);
    EXPECT_THAT(calls, ElementsAreArray(storing("sched", 9, values, reload)));

    const std::string wake = "killall -SIGUSR1  alarm";
    const alarm_clock_entry clocks[] = {alarm_clock("a,b"), alarm_clock(""), alarm_clock("c")};
    calls.clear();
    refused = {"set clock01"};
    EXPECT_EQ(observe([&] { return alarm_set_config(3, clocks); }).out,
              "[alarm_set_config #] " + NO_SET);
    EXPECT_THAT(calls,
                ElementsAreArray(storing("clock", 7, {"1,127,1440,a,b", "1,127,1440,"}, wake)));
    calls.clear();
    EXPECT_EQ(alarm_set_config(-1, clocks), 0);
    EXPECT_THAT(calls, ElementsAreArray(storing("clock", 7, {}, wake)));
}

TEST_F(SchedulesTest, ListsThatCannotBeStoredLeaveTheStoredOnes)
{
    using Setter = std::function<int()>;
    const std::vector<sched_entry> list(101);
    const std::string longest(500, 't');
    std::vector<alarm_clock_entry> clocks(101, alarm_clock(longest));
    clocks.back() = alarm_clock(longest + "t");
    alarm_clock_entry open = alarm_clock(std::string(512, 't')); // not even terminated
    const std::vector<std::pair<Setter, std::string>> CASES = {
        {[&] { return sched_set_config(101, list.data()); },
         "[sched_set_config #] invalid count 101\n"},
        {[&] { return alarm_set_config(101, clocks.data()); },
         "[alarm_set_config #] invalid count 101\n"},
        {[&] { return alarm_set_config(2, &clocks[99]); },
         "[alarm_set_config #] invalid alarm clock text\n"},
        {[&] { return alarm_set_config(1, &open); },
         "[alarm_set_config #] invalid alarm clock text\n"}};
    for (const auto &[setter, out] : CASES) {
        const Outcome set = observe(setter);
        EXPECT_EQ(set.result, 0);
        EXPECT_EQ(set.out, out);
        EXPECT_THAT(calls, IsEmpty());
    }
    sched_set_config(100, list.data());
    EXPECT_EQ(store.size(), 100U);
    alarm_set_config(1, clocks.data());
    EXPECT_EQ(store["clock00"], "1,127,1440," + longest);
    int count = 1;
    alarm_get_config(&count, &open);
    EXPECT_EQ(open.text, longest);
}

TEST_F(SchedulesTest, StoredSchedulesFillOnlyTheFieldsTheyReach)
{
    const sched_entry was = {90, 91, 92, 93, 94, 95, 96};
    const uint32_t minus = UINT32_MAX;
    for (const auto &[text, expected] : std::vector<std::pair<std::string, sched_entry>>{
             {"1,-2,3,4,5,6,7", {1, -2, 3, 4, 5, 6, 7}},
             {"1,2,3,4,5,6,7,8,9", {1, 2, 3, 4, 5, 6, 7}},
             {"1,2", {1, 2, 92, 93, 94, 95, 96}},
             {"1,2,", {1, 2, 92, 93, 94, 95, 96}},
             {"1,,3", {1, 91, 92, 93, 94, 95, 96}},
             {"1 ,2", {1, 91, 92, 93, 94, 95, 96}},
             {" 1,\n+2,x", {1, 2, 92, 93, 94, 95, 96}},
             {"x", was},
             {"-1,2147483648,-2147483649,4294967297",
              {minus, INT32_MAX, INT32_MIN, INT32_MAX, 94, 95, 96}},
             {std::string(300, '9'), {INT32_MAX, 91, 92, 93, 94, 95, 96}}}) {
        store["sched00"] = text;
        sched_entry list[] = {was, was};
        int count = 1;
        EXPECT_EQ(sched_get_config(&count, list), 0);
        EXPECT_EQ(count, 1);
        EXPECT_EQ(memcmp(&list[0], &expected, sizeof expected), 0) << text;
        EXPECT_EQ(memcmp(&list[1], &was, sizeof was), 0) << text;
    }
}

TEST_F(SchedulesTest, StoredAlarmClocksKeepWhatTheTextDoesNotReach)
{
    const alarm_clock_entry was = {90, 91, 92, "was"};
    for (const auto &[text, minute, words] :
         std::vector<std::tuple<std::string, uint32_t, std::string>>{
             {"1,2,3,a,b", 3, "a,b"},
             {"1,2,3,", 3, "was"},
             {"1,2,3", 3, "was"},
             {"1,2,3x,a", 3, "was"},
             {"1,2,3,\na", 3, "was"},
             {"1,2,3, a\nb", 3, " a"},
             {"1,2", 92, "was"},
             {"1,2,3," + std::string(600, 't'), 3, std::string(505, 't')}}) {
        store["clock00"] = text;
        alarm_clock_entry list[] = {was, was};
        int count = 1;
        EXPECT_EQ(alarm_get_config(&count, list), 0);
        EXPECT_EQ(count, 1);
        EXPECT_EQ(list[0].starttime, minute) << text;
        EXPECT_EQ(list[0].text, words);
        EXPECT_EQ(memcmp(&list[1], &was, sizeof was), 0) << text;
    }
}

TEST_F(SchedulesTest, ListsEndAtTheFirstSlotWithoutAnEntry)
{
    const sched_entry list[9] = {};
    sched_set_config(9, list);
    sched_set_config(3, list);
    sched_entry read[9];
    int count = 9;
    calls.clear();
    const Outcome get = observe([&] { return sched_get_config(&count, read); });
    EXPECT_EQ(get.result, 0);
    EXPECT_EQ(count, 3);
    EXPECT_EQ(get.out, "[sched_get_config #] " + NO_GET);
    EXPECT_THAT(calls, ElementsAre("get sched00 256", "get sched01 256", "get sched02 256",
                                   "get sched03 256"));
    store["sched01"] = "";
    count = 9;
    EXPECT_EQ(observe([&] { return sched_get_config(&count, read); }).out, "");
    EXPECT_EQ(count, 1);
    for (const int room : {0, -1}) {
        count = room;
        calls.clear();
        sched_get_config(&count, nullptr);
        EXPECT_EQ(count, 0);
        EXPECT_THAT(calls, IsEmpty());
    }
    alarm_clock_entry clock;
    count = 1;
    EXPECT_EQ(observe([&] { return alarm_get_config(&count, &clock); }).out,
              "[alarm_get_config #] " + NO_GET);
    EXPECT_THAT(calls, ElementsAre("get clock00 512"));
}
