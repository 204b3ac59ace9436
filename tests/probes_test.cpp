// Status probes, the drivers' readers among them: every source answers its
// number or its fallback.

#include "cfg_set.h"
#include "doubles.h"

using namespace doubles;
using ProbesTest = LibraryTest;

// clang-format off

using Answers = std::map<std::string, int>;

// The probe's answer, printing nothing, for each content of its source.
static void check_probe(const Call &call, const std::string &source, const Calls &made, const Answers &all)
{
    for (const auto &[content, answer] : all)
        check({{{{source, content}}, call, answer, made}});
}

TEST_F(ProbesTest, SourcesAnswerTheirNumberAndMissingOnesTheirFallback)
{
    const Answers lines = {{"27\n9", 27}, {"-5", -5}, {"", 0}, {"\n7", 0}, {"dark", 0}, {"99999999999", INT32_MAX},
        {std::string(30, ' ') + "12", 1}, {std::string(5000, '0') + "1", 0}};
    check_probe(CALL(streaming_counter()), "/proc/stream_counter", {}, lines);
    check_probe(CALL(ir_mode()), "/proc/ir_mode", {}, lines);
    check_probe(CALL(in_night_mode()), "/proc/night_mode", {}, lines);
    check_probe(CALL(light_sensor()), "/proc/light_sensor", {}, lines);
    const Answers blocks = {{"1", 1}, {"-3", 1}, {"\n\n1", 1}, {std::string(31, '0') + "1", 1},
        {"0", 0}, {"", 0}, {"yes", 0}, {std::string(32, '0') + "1", 0}};
    check_probe(CALL(is_valid_activity_event()), "/proc/is_valid_activity_event", {}, blocks);
    check_probe(CALL(is_valid_track_event()), "/proc/is_valid_track_event", {}, blocks);
    check_probe(CALL(get_enhanced_mode()), "/proc/azba_enhanced", {}, {{"10", 1}, {"1\n", 1}, {"0", 0}, {"2", 0}, {" 1", 0}, {"", 0}});
    check_probe(CALL(CheckFixCaptureSatus()), "fix_capture_status", {}, {{"12", 1}, {"3", 3}, {"-1", 0}, {"", 0}});
    const Answers tool = {{"1\n2\n", 1}, {"", 0}, {"no value\n", 0}, {"-3", -3}, {std::string(62, ' ') + "12", 1}};
    check_probe(CALL(is_nn_enable()), "$ param get nn_enable", {"popen param get nn_enable"}, tool);
    check_probe(CALL(is_sound_nn_enable()), "$ param get sound_nn_enable", {"popen param get sound_nn_enable"}, tool);
    check({
        {CALL(words(streaming_counter(), ir_mode(), in_night_mode(), light_sensor())), "0 2 0 0"},
        {CALL(words(is_valid_activity_event(), is_valid_track_event(), get_enhanced_mode())), "1 1 0"},
        {CALL(CheckFixCaptureSatus()), 0, {}, "", {"fix_capture_status 2"}},
        {{}, {"popen param get nn_enable"}, CALL(is_nn_enable()), 0, {"popen param get nn_enable"}},
    });
}

TEST_F(ProbesTest, ActivityZonesAreOneDigit)
{
    const std::string file = "/proc/activity_zones";
    check_probe(CALL(activity_zones_state(0, 9)), file, {}, {{std::string("7\0", 2), 7}, {"3\n", 3}, {"456", 45}, {"", 0}, {"x1", 0}});
    check({
        {CALL(activity_zones_state(0, 1)), 0, {}, "! | fopen: No such file or directory"},
        {{{file, "12345"}}, CALL(activity_zones_state(-1, 7)), 0, {"wrote /proc/activity_zones 7\\0"}},
        {CALL(activity_zones_state(1, 9)), 0, {"wrote /proc/activity_zones 9\\0"}},
        {CALL(activity_zones_state(1, 10) | activity_zones_state(1, -1)), 0},
        {{{file + "/", ""}}, CALL(activity_zones_state(1, 1)), 0, {}, "! | fopen: Is a directory"},
    });
}

TEST_F(ProbesTest, FaceCheckFollowsTheMotorZones)
{
    const auto stored = [](const std::string &zones, const char *face) {
        return Given{{"motor_zones", zones}, {"alert_face_enable", face}};
    };
    const Call look = CALL(disable_face_hw_check());
    const std::string none = "{1,2}{0,0,0,0}";
    const Calls zones_only = {"motor_zones 256"}, both = {"motor_zones 256", "alert_face_enable 8"};
    for (const std::string zones : {"{0,0}{5,0,0,0}", "{0,0}{0,-1,0,0} more", "{1,2}{0,0,5,0}*", "{1,2}{ 0, 0, 0, 4}{5"})
        check({{stored(zones, "1"), look, 0, {"system GMCtrl c 0"}, "", zones_only}});
    for (const char *face : {"0", "", "11", "1 ", "on"})
        check({{stored(none, face), look, 0, {}, "", both}});
    for (const std::string zones : {"", "{}{}", "{1,2}", "{1,2}{0,0}", "{1,2}{3,4,5}", "{1,2,3,4,5,6,7}", "{1;2}{3,4,5,6}",
                                    "{1,2} {3,4,5,6}"})
        check({{stored(zones, "1"), look, 0, {}, "! | sscanf value fail ", zones_only}});
    check({{stored(none, "1"), look, 0, {"system GMCtrl c 1"}, "", both},
           {stored(none, "1"), {"get motor_zones"}, look, 0, {}, "", zones_only},
           {stored(none, "1"), {"get alert_face_enable"}, look, 0, {}, "", both}});
}
