// The device status record.

#include "cfg_set.h"
#include "doubles.h"

#include <unistd.h>

using namespace doubles;

constexpr char STATUS_FILE[] = "/tmp/dev_status";

class StatusTest : public LibraryTest
{
  protected:
    void SetUp() override
    {
        LibraryTest::SetUp();
        unlink(STATUS_FILE);
    }
};

TEST_F(StatusTest, StoresOneByteAndSaysSo)
{
    write_file(STATUS_FILE, "longer");
    for (const int status : {7, 255, 0}) {
        const Outcome set =
            observe([&] { return cfg_setDeviceStatus(static_cast<uint8_t>(status)); });
        EXPECT_EQ(set.result, 0);
        EXPECT_EQ(set.out, "[cfg_setDeviceStatus #] result:0\n[cfg_setDeviceStatus #] status: " +
                               std::to_string(status) +
                               ", writeSize: 1, sizeof(status):1\n"
                               "[cfg_setDeviceStatus #] result:0\n");
        EXPECT_EQ(read_file(STATUS_FILE), std::string(1, static_cast<char>(status)));
        EXPECT_EQ(observe(cfg_getDeviceStatus).result, status);
    }
}

TEST_F(StatusTest, ReadsTheFirstByteIfThereIsOne)
{
    const auto reading = [](const std::string &status, int size) {
        return "[cfg_getDeviceStatus #] result:0\n[cfg_getDeviceStatus #] status: " + status +
               ", readSize: " + std::to_string(size) +
               ", sizeof(status):1\n[cfg_getDeviceStatus #] result:0\n";
    };
    write_file(STATUS_FILE, "\x80\x01");
    Outcome outcome = observe(cfg_getDeviceStatus);
    EXPECT_EQ(outcome.result, 128);
    EXPECT_EQ(outcome.out, reading("128", 1));
    write_file(STATUS_FILE, "");
    outcome = observe(cfg_getDeviceStatus);
    EXPECT_EQ(outcome.result, 0);
    EXPECT_EQ(outcome.out, reading("0", 0));
}

TEST_F(StatusTest, FileThatCannotBeOpenedOrWritten)
{
    Outcome outcome = observe(cfg_getDeviceStatus);
    EXPECT_EQ(outcome.result, 255);
    EXPECT_EQ(outcome.out, "[cfg_getDeviceStatus #] Fail to open /tmp/dev_status file\n");

    ASSERT_EQ(symlink("/nowhere/status", STATUS_FILE), 0);
    outcome = observe([] { return cfg_setDeviceStatus(1); });
    EXPECT_EQ(outcome.result, -1);
    EXPECT_EQ(outcome.out, "[cfg_setDeviceStatus #] Fail to open /tmp/dev_status file\n");

    unlink(STATUS_FILE);
    ASSERT_EQ(symlink("/dev/full", STATUS_FILE), 0);
    outcome = observe([] { return cfg_setDeviceStatus(1); });
    EXPECT_EQ(outcome.result, 0);
    EXPECT_THAT(outcome.out, testing::HasSubstr("status: 1, writeSize: 0, sizeof(status):1\n"));
}
