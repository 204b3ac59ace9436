// Infrared, image, night mode and lamps.

#include "cfg_set.h"
#include "doubles.h"

using namespace doubles;

using ImageTest = LibraryTest;
using Modes = std::map<int, std::string>;
static const Calls BOARD = {"popen board hwver"};

// clang-format off

static const std::string IR = "ir_mode w", NIGHT = "night_mode w";
static const std::string WLED = "wled_mode w+", RLAMP = "rlamp_mode w";

TEST_F(ImageTest, InfraredAndNightMode)
{
    drivers = true;
    for (const auto &mode : Modes{{0, "0\\0"}, {1, "2\\0"}, {2, "3\\0"}, {3, ""}, {4, ""}, {-1, ""}})
        check({{CALL(cfg_setIrEnable(mode.first)), 0, put(IR, mode.second)}});
    check({
        {{{"/proc/ir_mode/", ""}}, CALL(cfg_setIrEnable(1)), 0},
        {{{"io_ir_enable", "2x"}}, CALL(cfg_restoreIrEnable()), 0, put(IR, "3\\0")},
        {{{"io_ir_enable", "-1"}}, CALL(cfg_restoreIrEnable()), 0, put(IR, "")},
        {CALL(cfg_restoreIrEnable()), -1, {}, "param_get fail", {"io_ir_enable 256"}},
        {CALL(night_mode(0) | night_mode(2)), 0, put(NIGHT, "0") + put(NIGHT, "1")},
        {{{"/proc/night_mode/", ""}}, CALL(night_mode(1)), 0},
    });
}

TEST_F(ImageTest, WledTakesModeThreeOnlyFromModeOne)
{
    drivers = true;
    const Given in_one = {{"/proc/wled_mode", "1\n"}};
    for (const std::string mode : {"0", "2", "3", " 1", ""})
        check({{{{"/proc/wled_mode", mode}}, CALL(wled_mode(3)), 0, put(WLED, "")}});
    check({
        {{{"/proc/wled_mode", "3"}}, CALL(wled_mode(0)), 0, put(WLED, "0\\0")},
        {CALL(wled_mode(1) | wled_mode(2)), 0, put(WLED, "1\\0") + put(WLED, "2\\0")},
        {in_one, CALL(wled_mode(3)), 0, put(WLED, "3\\0")},
        {in_one, CALL(wled_mode(4) | wled_mode(UINT32_MAX)), 0, put(WLED, "") + put(WLED, "")},
        {{}, {"fclose"}, CALL(wled_mode(1)), -1, put(WLED, "1\\0")},
        {{{"/proc/wled_mode/", ""}}, CALL(wled_mode(1) > 0), 1, {}, "open /proc/wled_mode file fail"},
        {{}, {"fclose"}, CALL(cfg_setWLEDEnable(2)), 0, put(WLED, "2\\0")},
        {in_one, CALL(cfg_setWLEDEnable(3)), 0},
    });
}

TEST_F(ImageTest, RlampTakesModeThreeOnlyWhenItIsStored)
{
    drivers = true;
    for (const std::string text : {"3", "003", " 3", "2", "4", "30", ""})
        check({{{{"rlamp_mode", text}}, CALL(rlamp_mode(3)), 0, put(RLAMP, atoi(text.c_str()) == 3 ? "3" : ""),
            "sValue=[" + text + "]", {"rlamp_mode 4"}}});
    for (const auto &mode : Modes{{0, "0"}, {1, "1"}, {2, "2"}, {3, ""}, {4, ""}, {-1, ""}})
        check({{CALL(rlamp_mode(mode.first)), 0, put(RLAMP, mode.second)}});
    check({
        {{{"rlamp_mode", "4"}}, CALL(rlamp_mode(4)), 0, put(RLAMP, "")},
        {{{"/proc/rlamp_mode/", ""}, {"rlamp_mode", "3"}}, CALL(rlamp_mode(3)), -1, {}, "open file fail"},
        {{{"rlamp_mode", "3"}}, CALL(cfg_setRlampEnable(3)), 0, put(RLAMP, "3"), "[rlamp_mode #] sValue=[3]"},
        {CALL(cfg_setRlampEnable(4) | cfg_setRlampEnable(UINT32_MAX)), 0},
    });
}

TEST_F(ImageTest, LampsAreBitsOfTheHardwareVersion)
{
    drivers = true;
    const auto is = [](const std::string &version) {
        return Given{{"$ board hwver", version}, {"wled_mode", "2"}, {"rlamp_mode", "1"}};
    };
    const Call lamps = CALL(words(cfg_isWLEDVersion(), cfg_isRlampVersion()));
    const Call wled = CALL(cfg_restoreWLEDEnable()), rlamp = CALL(cfg_restoreRlampEnable());
    check({
        {is("10\n"), lamps, "1 0", BOARD + BOARD},
        {is("40\n"), lamps, "0 1", BOARD + BOARD},
        {is("ffaf"), lamps, "0 0", BOARD + BOARD},
        {{}, {BOARD[0]}, CALL(cfg_isWLEDVersion()), 0, BOARD,
            "[cfg_getBoardInfo #] pclose fail, errno[12][Cannot allocate memory]"},
        {is("10\n"), wled, 0, BOARD + put(WLED, "2\\0"), "", {"wled_mode 256"}},
        {is("ef\n"), wled, -1, BOARD},
        {is("10\n"), {"get wled_mode"}, wled, -1, BOARD, "param_get fail"},
        {is("40\n"), rlamp, 0, BOARD + put(RLAMP, "1"), "", {"rlamp_mode 256"}},
        {is("bf\n"), rlamp, -1, BOARD},
        {is("40\n"), {"get rlamp_mode"}, rlamp, -1, BOARD, "param_get fail"},
        {{}, {BOARD[0]}, CALL(cfg_get_hw_ver()), 0, BOARD},
    });
    // The number in sixteen bytes of the first line.
    for (const auto &line : std::map<std::string, uint32_t>{{"0x56CA rev 2\n", 0x56CA}, {"10\n20\n", 0x10}, {"xyz", 0}, {"", 0},
             {std::string(14, '0') + "12", 1}, {"ffffffff", UINT32_MAX}, {"100000000", UINT32_MAX}})
        check({{{{"$ board hwver", line.first}}, CALL(cfg_get_hw_ver()), line.second, BOARD}});
}

TEST_F(ImageTest, OrientationAndBacklight)
{
    const Calls upright = {"system demo_MXTurnVideo_ 3 &"}, turned = {"system demo_MXTurnVideo_ 0 &"};
    const Calls set = {"set io_video_orientation=0"}, key = {"io_video_orientation 256"};
    const auto on = [](const std::string &version) {
        return Given{{"$ board hwver", version}, {"io_video_orientation", "1"}};
    };
    const Call restore = CALL(cfg_restoreVideoOrientation());
    const Calls compensated = {"system echo 1 > /proc/backlight", "system echo w saturation 100 > /proc/isp320/command;"
        "echo 6 > /proc/isp320/ae/auto_drc;echo 1 > /proc/isp320/ae/auto_contrast;echo w dr_mode 1 > /proc/isp320/command;"};
    const Calls plain = {"system echo 0 > /proc/backlight", "system echo w saturation 128 > /proc/isp320/command;"
        "echo 0 > /proc/isp320/ae/auto_drc;echo 0 > /proc/isp320/ae/auto_contrast;echo w dr_mode 0  > /proc/isp320/command;"};
    check({
        {CALL(cfg_setVideoOrientation(0) | cfg_setVideoOrientation(2)), 0, upright + turned},
        {on("56cb\n"), restore, 0, BOARD + turned, "", key},
        {on("56ca\n"), restore, 0, BOARD + set + upright, "", key},
        {on("56ca\n"), {"set io_video_orientation"}, restore, 0, BOARD + set + turned},
        {on("1"), {"get io_video_orientation"}, restore, -1, BOARD, "param_get fail"},
        {CALL(cfg_setBacklightCompensation(7) | cfg_setBacklightCompensation(0)), 0, compensated + plain},
        {{{"io_backlight_compensation", "2x"}}, CALL(cfg_restoreBacklightCompensation()), 0, compensated},
        {CALL(cfg_restoreBacklightCompensation()), -1, {}, "param_get fail", {"io_backlight_compensation 256"}},
        {{{"led_disable", "12"}}, CALL(cfg_isLEDDisabled()), 1, {}, "", {"led_disable 2"}},
        {CALL(cfg_isLEDDisabled()), 0},
    });
}
