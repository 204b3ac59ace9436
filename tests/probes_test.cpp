// Status probes, the drivers' readers among them: every source answers its
// number or its fallback.

#include "cfg_set.h"
#include "doubles.h"

using namespace doubles;
using testing::ElementsAre;

class ProbesTest : public LibraryTest
{
};

// What the probe answers, printing nothing, for each content of its file.
static std::vector<int> probed(int (*probe)(), const std::string &path,
                               const std::vector<std::string> &contents)
{
    std::vector<int> numbers;
    for (const std::string &text : contents) {
        write_file(path, text);
        const Outcome outcome = observe(probe);
        EXPECT_EQ(outcome.out + outcome.err, "");
        numbers.push_back(outcome.result);
    }
    return numbers;
}

TEST_F(ProbesTest, FirstLinesOfDriversAreNumbersAndMissingOnesTheirFallback)
{
    const std::vector<std::tuple<std::string, int (*)(), int>> probes = {
        {"/proc/stream_counter", streaming_counter, 0},
        {"/proc/ir_mode", ir_mode, 2},
        {"/proc/night_mode", in_night_mode, 0},
        {"/proc/light_sensor", light_sensor, 0}};
    for (const auto &[path, probe, fallback] : probes) {
        EXPECT_EQ(probe(), fallback) << path;
        EXPECT_THAT(
            probed(probe, path, {"27\n9", "3", std::string("2\0", 2), "-5", "", "\n7", "dark"}),
            ElementsAre(27, 3, 2, -5, 0, 0, 0));
        EXPECT_THAT(
            probed(probe, path,
                   {"99999999999", std::string(30, ' ') + "12", std::string(5000, '0') + "1"}),
            ElementsAre(INT32_MAX, 1, 0));
    }
}

TEST_F(ProbesTest, EventsAreValidWithoutTheirFile)
{
    const std::map<std::string, int (*)()> probes = {
        {"/proc/is_valid_activity_event", is_valid_activity_event},
        {"/proc/is_valid_track_event", is_valid_track_event}};
    for (const auto &[path, probe] : probes) {
        EXPECT_EQ(probe(), 1);
        EXPECT_THAT(probed(probe, path, {"1", "-3", "\n\n1", std::string(31, '0') + "1"}),
                    testing::Each(1));
        EXPECT_THAT(probed(probe, path, {"0", "", "yes", std::string(32, '0') + "1"}),
                    testing::Each(0));
    }
}

TEST_F(ProbesTest, EnhancedModeIsTheCharacterOne)
{
    const std::string path = "/proc/azba_enhanced";
    EXPECT_EQ(get_enhanced_mode(), 0);
    EXPECT_THAT(probed(get_enhanced_mode, path, {"10", "1\n", std::string(100, '1')}),
                testing::Each(1));
    EXPECT_THAT(probed(get_enhanced_mode, path, {"0", "2", " 1", ""}), testing::Each(0));
}

TEST_F(ProbesTest, StoredFlagsAreTheirFirstCharacter)
{
    const std::map<std::string, int (*)()> flags = {{"fix_capture_status", CheckFixCaptureSatus},
                                                    {"led_disable", cfg_isLEDDisabled}};
    for (const auto &[key, flag] : flags) {
        calls.clear();
        EXPECT_EQ(flag(), 0);
        EXPECT_THAT(calls, ElementsAre("get " + key + " 2"));
        store[key] = "12";
        EXPECT_EQ(flag(), 1);
        store[key] = "-1";
        EXPECT_EQ(flag(), 0);
    }
}

TEST_F(ProbesTest, NeuralNetworkFlagsComeFromTheParamTool)
{
    write_script("/tmp/bin/param", "[ $1 = get ] && cat /tmp/$2");
    const std::map<std::string, int (*)()> probes = {{"nn_enable", is_nn_enable},
                                                     {"sound_nn_enable", is_sound_nn_enable}};
    for (const auto &[key, probe] : probes) {
        EXPECT_THAT(
            probed(probe, "/tmp/" + key, {"1\n2\n", "", "no value\n", std::string(62, ' ') + "12"}),
            ElementsAre(1, 0, 0, 1));
        EXPECT_EQ(calls.back(), "popen param get " + key);
        popen_error = ENOMEM;
        EXPECT_EQ(probe(), 0);
        popen_error = 0;
    }
}

TEST_F(ProbesTest, ActivityZonesAreOneDigit)
{
    const std::string file = "/proc/activity_zones";
    const Outcome missing = observe([] { return activity_zones_state(0, 1); });
    EXPECT_EQ(missing.result, 0);
    EXPECT_EQ(missing.err, "fopen: No such file or directory\n");
    const auto read = [] { return activity_zones_state(0, 9); };
    EXPECT_THAT(probed(read, file, {std::string("7\0", 2), "5", "3\n", "456", "", "x1"}),
                ElementsAre(7, 5, 3, 45, 0, 0));

    EXPECT_EQ(activity_zones_state(-1, 7), 0);
    for (const int value : {10, -1, INT32_MAX, INT32_MIN}) {
        const Outcome outcome = observe([=] { return activity_zones_state(1, value); });
        EXPECT_EQ(outcome.result, 0);
        EXPECT_EQ(outcome.out,
                  "[activity_zones_state #] invalid value[" + std::to_string(value) + "]\n");
    }
    EXPECT_EQ(read_file(file), std::string("7\0", 2));
    remove(file.c_str());
    write_file(file + "/a", ""); // a folder cannot be written
    EXPECT_EQ(observe([] { return activity_zones_state(1, 1); }).err, "fopen: Is a directory\n");
}

// What the check runs or, when it runs nothing, prints.
static std::string checked(const std::string &zones, const std::string &face)
{
    store = {{"motor_zones", zones}, {"alert_face_enable", face}};
    calls.clear();
    const Outcome outcome = observe(disable_face_hw_check);
    EXPECT_EQ(outcome.result, 0);
    EXPECT_EQ(outcome.out, "");
    return recorded("system").empty() ? outcome.err : recorded("system")[0];
}

TEST_F(ProbesTest, FaceCheckFollowsTheMotorZones)
{
    for (const std::string zones :
         {"{1,2}{0,0,5,0}", "{1,2}{3,0,0,0}*", "{0,0}{0,-1,0,0} more", "{1,2}{ 0, 0, 0, 4}{5"})
        EXPECT_EQ(checked(zones, "1"), "GMCtrl c 0") << zones;
    EXPECT_EQ(checked("{1,2}{0,0,0,0}", "1"), "GMCtrl c 1");
    for (const std::string face : {"0", "", "11", "1 ", "on"})
        EXPECT_EQ(checked("{1,2}{0,0,0,0}", face), "") << face;
    for (const std::string zones : {"", "{}{}", "{1", "{1,2}", "{1,2}{3", "{1,2}{3,4}",
                                    "{1,2}{3,4,5}", "{1,2,3,4,5,6,7}", "{1,2} x{3,4,5,6}", "zones"})
        EXPECT_EQ(checked(zones, "1"), "sscanf value fail \n") << zones;
    store.clear();
    calls.clear();
    EXPECT_EQ(observe(disable_face_hw_check).err, "");
    EXPECT_THAT(calls, ElementsAre("get motor_zones 256"));
}
