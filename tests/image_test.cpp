// Infrared, image, night mode and lamps.

#include "cfg_set.h"
#include "doubles.h"

#include <dlfcn.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace doubles;
using testing::ElementsAre;
using testing::IsEmpty;

// The WLED's driver: opening its file does not clear it, each write is a mode.
static bool wled_is_there;
static std::string wled_content;
static std::string wled_writes;

static FILE *open_wled()
{
    static size_t position;
    position = 0;
    cookie_io_functions_t driver{};
    driver.read = [](void *, char *buffer, size_t size) {
        const size_t length = wled_content.copy(buffer, size, position);
        position += length;
        return static_cast<ssize_t>(length);
    };
    driver.write = [](void *, const char *bytes, size_t size) {
        wled_writes += std::to_string(position) + ":" + std::string(bytes, size);
        return static_cast<ssize_t>(size);
    };
    // NOLINTNEXTLINE(readability-non-const-parameter)
    driver.seek = [](void *, off64_t *offset, int whence) {
        position = static_cast<size_t>(*offset) + (whence == SEEK_CUR ? position : 0);
        return 0;
    };
    return fopencookie(nullptr, "w+", driver);
}

extern "C" FILE *fopen(const char *path, const char *mode)
{
    if (wled_is_there && std::string(path) == "/proc/wled_mode")
        return std::string(mode) == "w+" ? open_wled() : nullptr;
    static const auto real =
        reinterpret_cast<FILE *(*)(const char *, const char *)>(dlsym(RTLD_NEXT, "fopen"));
    return real(path, mode);
}

class ImageTest : public LibraryTest
{
  protected:
    void SetUp() override
    {
        LibraryTest::SetUp();
        wled_is_there = false;
        wled_writes.clear();
    }
};

static void board_has(const std::string &version)
{
    write_script("/tmp/bin/board", "[ \"$*\" = hwver ] && echo '" + version + "'");
}

// What the file holds after `write`, which found something else in it.
static std::string written(const std::string &path, const std::function<int()> &write)
{
    write_file(path, "before");
    const Outcome outcome = observe(write);
    EXPECT_EQ(outcome.result, 0);
    EXPECT_EQ(outcome.out + outcome.err, "");
    return read_file(path);
}

TEST_F(ImageTest, DriversGetOneValueInTheirOwnForm)
{
    const auto ir = [](int mode) {
        return written("/proc/ir_mode", [=] { return cfg_setIrEnable(mode); });
    };
    EXPECT_EQ(ir(0), std::string("0\0", 2));
    EXPECT_EQ(ir(1), std::string("2\0", 2));
    EXPECT_EQ(ir(2), std::string("3\0", 2));
    EXPECT_EQ(ir(3) + ir(-1) + ir(INT32_MIN), "");
    EXPECT_EQ(written("/proc/night_mode", [] { return night_mode(2); }), "1");
    EXPECT_EQ(written("/proc/night_mode", [] { return night_mode(0); }), "0");
    const auto rlamp = [](uint32_t mode) {
        return written("/proc/rlamp_mode", [=] { return cfg_setRlampEnable(mode); });
    };
    EXPECT_EQ(rlamp(0) + rlamp(1) + rlamp(2), "012");
    EXPECT_EQ(rlamp(4) + rlamp(UINT32_MAX), "beforebefore") << "not even opened";
    EXPECT_EQ(written("/proc/rlamp_mode", [] { return rlamp_mode(4) | rlamp_mode(-1); }), "");
}

TEST_F(ImageTest, DriversThatAreMissingAreSilentOrReported)
{
    for (const std::string name : {"ir_mode", "night_mode", "wled_mode", "rlamp_mode"})
        mkdir(("/proc/" + name).c_str(), 0755);
    const Outcome outcome = observe([] {
        return cfg_setIrEnable(1) | night_mode(1) | cfg_setWLEDEnable(1) | cfg_setRlampEnable(3);
    });
    EXPECT_EQ(outcome.result, 0);
    EXPECT_EQ(outcome.out, "[wled_mode #] open /proc/wled_mode file fail\n"
                           "[rlamp_mode #] open file fail\n");
    EXPECT_GT(observe([] { return wled_mode(1); }).result, 0);
    EXPECT_EQ(observe([] { return rlamp_mode(1); }).result, -1);
    EXPECT_THAT(calls, IsEmpty()) << "no choice is read for a lamp that is not there";
}

TEST_F(ImageTest, WledTakesModeThreeOnlyFromModeOne)
{
    wled_is_there = true;
    const auto after = [](const std::string &content, uint32_t mode) {
        wled_content = content;
        wled_writes.clear();
        EXPECT_EQ(observe([=] { return wled_mode(mode); }).out, "");
        return wled_writes;
    };
    EXPECT_EQ(after("1", 3) + after("1\n", 3), std::string("0:3\0000:3\0", 8));
    for (const std::string content : {"0", "2", "3", "", "x", " 1"})
        EXPECT_EQ(after(content, 3), "") << content;
    EXPECT_EQ(after("1", 0) + after("3", 2), std::string("0:0\0000:2\0", 8));
    EXPECT_EQ(after("1", 4) + after("1", UINT32_MAX), "");
    EXPECT_EQ(cfg_setWLEDEnable(3) | cfg_setWLEDEnable(1), 0);
    EXPECT_EQ(wled_writes, std::string("0:1\0", 4)) << "the setter does not pass 3 on";
}

TEST_F(ImageTest, RlampTakesModeThreeOnlyWhenItIsStored)
{
    const auto lamp = [](const std::string &stored) {
        store = {{"rlamp_mode", stored}};
        const Outcome outcome = observe([] { return cfg_setRlampEnable(3); });
        EXPECT_EQ(outcome.result, 0);
        EXPECT_EQ(outcome.out, "[rlamp_mode #] sValue=[" + stored.substr(0, 3) + "]\n");
        return read_file("/proc/rlamp_mode");
    };
    EXPECT_EQ(lamp("3") + lamp("3x") + lamp(" 3"), "333");
    EXPECT_EQ(lamp("2") + lamp("30") + lamp("0003") + lamp(""), "");
    store.clear();
    EXPECT_EQ(observe([] { return rlamp_mode(3); }).out, "");
    EXPECT_EQ(read_file("/proc/rlamp_mode"), "");
    EXPECT_EQ(calls.back(), "get rlamp_mode 4");
}

TEST_F(ImageTest, LampsAreBitsOfTheHardwareVersion)
{
    const auto lamps = [](const std::string &version) {
        board_has(version);
        return cfg_isWLEDVersion() + 2 * cfg_isRlampVersion();
    };
    EXPECT_EQ(lamps("10"), 1);
    EXPECT_EQ(lamps("40"), 2);
    EXPECT_EQ(lamps("50"), 3);
    EXPECT_EQ(lamps("faf") + lamps(""), 0);
    write_script("/tmp/bin/board", "exit 1");
    EXPECT_EQ(observe([] { return cfg_isWLEDVersion() + cfg_isRlampVersion(); }).result, 0);
}

TEST_F(ImageTest, LampsAreRestoredOnlyWhereTheBoardHasThem)
{
    wled_is_there = true;
    store = {{"wled_mode", "2"}, {"rlamp_mode", "3"}};
    const auto restore = [] { return cfg_restoreWLEDEnable() + cfg_restoreRlampEnable(); };
    board_has("280");
    const Outcome without = observe(restore);
    EXPECT_EQ(without.result, -2);
    EXPECT_EQ(without.out + without.err, "");
    EXPECT_THAT(calls, ElementsAre("popen board hwver", "popen board hwver"));
    board_has("40");
    EXPECT_EQ(observe(restore).result, -1) << "one of them";

    board_has("50");
    EXPECT_EQ(observe(restore).result, 0);
    EXPECT_EQ(wled_writes, std::string("0:2\0", 4));
    EXPECT_EQ(read_file("/proc/rlamp_mode"), "3");
    store.clear();
    EXPECT_EQ(observe(restore).out, "[cfg_restoreWLEDEnable #] param_get fail\n"
                                    "[cfg_restoreRlampEnable #] param_get fail\n");
}

TEST_F(ImageTest, HardwareVersionIsTheNumberInSixteenBytesOfTheFirstLine)
{
    const auto version = [](const std::string &line) {
        board_has(line);
        return cfg_get_hw_ver();
    };
    EXPECT_EQ(version("0x56CA rev 2"), 0x56CAU);
    EXPECT_EQ(version(std::string(14, '0') + "12"), 1U) << "the last byte is the terminator";
    EXPECT_EQ(version("fffffffff"), UINT32_MAX);
    EXPECT_EQ(version("xyz") + version(""), 0U);
    popen_error = ENOMEM;
    EXPECT_EQ(version("56ca"), 0U);
}

TEST_F(ImageTest, OrientationIsAppliedInTheBackground)
{
    EXPECT_EQ(cfg_setVideoOrientation(0) | cfg_setVideoOrientation(2), 0);
    EXPECT_THAT(calls, ElementsAre("system demo_MXTurnVideo_ 3 &", "system demo_MXTurnVideo_ 0 &"));

    store = {{"io_video_orientation", "1"}};
    board_has("56cb");
    calls.clear();
    EXPECT_EQ(cfg_restoreVideoOrientation(), 0);
    EXPECT_THAT(calls, ElementsAre("popen board hwver", "get io_video_orientation 256",
                                   "system demo_MXTurnVideo_ 0 &"));
    board_has("56ca");
    calls.clear();
    EXPECT_EQ(cfg_restoreVideoOrientation(), 0);
    EXPECT_THAT(calls, ElementsAre("popen board hwver", "set io_video_orientation=0",
                                   "get io_video_orientation 256", "system demo_MXTurnVideo_ 3 &"))
        << "this board's image always stands upright";
}

TEST_F(ImageTest, BacklightCompensationSetsTheDriverThenTheImageProcessor)
{
    const auto set = [](uint32_t value) {
        calls.clear();
        EXPECT_EQ(cfg_setBacklightCompensation(value), 0);
        return recorded("system");
    };
    EXPECT_THAT(set(7),
                ElementsAre("echo 1 > /proc/backlight",
                            "echo w saturation 100 > /proc/isp320/command;echo 6 > "
                            "/proc/isp320/ae/auto_drc;echo 1 > /proc/isp320/ae/auto_contrast;echo "
                            "w dr_mode 1 > /proc/isp320/command;"));
    EXPECT_THAT(set(0),
                ElementsAre("echo 0 > /proc/backlight",
                            "echo w saturation 128 > /proc/isp320/command;echo 0 > "
                            "/proc/isp320/ae/auto_drc;echo 0 > /proc/isp320/ae/auto_contrast;echo "
                            "w dr_mode 0  > /proc/isp320/command;"));
}

TEST_F(ImageTest, RestorersReadTheirKeys)
{
    expect_keys_read(
        {{"IrEnable", "io_ir_enable", cfg_restoreIrEnable},
         {"BacklightCompensation", "io_backlight_compensation", cfg_restoreBacklightCompensation}});
    EXPECT_EQ(observe(cfg_restoreVideoOrientation).out,
              "[cfg_restoreVideoOrientation #] param_get fail\n");
    const auto restored = [](const std::string &stored) {
        store = {{"io_ir_enable", stored}};
        EXPECT_EQ(cfg_restoreIrEnable(), 0);
        return read_file("/proc/ir_mode");
    };
    EXPECT_EQ(restored("2x"), std::string("3\0", 2));
    EXPECT_EQ(restored("off"), std::string("0\0", 2));
    EXPECT_EQ(restored("-1") + restored("3"), "");
}
