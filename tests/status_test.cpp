// The device status record.

#include "cfg_set.h"
#include "doubles.h"

#include <unistd.h>

using namespace doubles;

using StatusTest = LibraryTest;

// clang-format off

static const std::string STATUS = "/tmp/dev_status";

// What a call prints between the two results of the lock.
static std::string printed(const std::string &text, const std::string &lock = "0")
{
    return "result:" + lock + "\nstatus: " + text + ", sizeof(status):1\nresult:" + lock;
}

TEST_F(StatusTest, IsOneByteOfAFile)
{
    const Calls locks = {"flock shared", "flock none"};
    const auto wrote = [&](const std::string &byte) { return locks + Calls{"wrote " + STATUS + " " + byte}; };
    const Call get = CALL(cfg_getDeviceStatus());
    check({
        {CALL(cfg_setDeviceStatus(7)), 0, wrote("\7"), printed("7, writeSize: 1")},
        {{{STATUS, "longer"}}, CALL(cfg_setDeviceStatus(255)), 0, wrote("\xff"), printed("255, writeSize: 1")},
        {CALL(cfg_setDeviceStatus(0)), 0, wrote("\\0"), printed("0, writeSize: 1")},
        {{}, {"flock"}, CALL(cfg_setDeviceStatus(7)), 0, wrote("\7"), printed("7, writeSize: 1", "-1")},
        {{{STATUS + "/", ""}}, CALL(cfg_setDeviceStatus(7)), -1, {}, "Fail to open /tmp/dev_status file"},
        {{{STATUS, "\x80\1"}}, get, 128, locks, printed("128, readSize: 1")},
        {{{STATUS, {'\0', '\1'}}}, get, 0, locks, printed("0, readSize: 1")},
        {{{STATUS, ""}}, get, 0, locks, printed("0, readSize: 0")},
        {{{STATUS + "/", ""}}, get, 0, locks, printed("0, readSize: 0")},
        {{{STATUS, "\3"}}, {"flock"}, get, 3, locks, printed("3, readSize: 1", "-1")},
        {get, 255, {}, "Fail to open /tmp/dev_status file"},
    });
    ASSERT_EQ(symlink("/dev/full", STATUS.c_str()), 0);
    check({{CALL(cfg_setDeviceStatus(1)), 0, locks, printed("1, writeSize: 0")}});
}
