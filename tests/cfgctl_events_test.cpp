// cfgctl events and status.

#include "events/storage.h"
#include "harness.h"

#include <regex>
#include <sys/shm.h>

using testing::AllOf;
using testing::HasSubstr;
using testing::MatchesRegex;

class CfgctlEventsTest : public CameraTest
{
  protected:
    void SetUp() override
    {
        CameraTest::SetUp();
        write_file("/mnt/sdcard/video/other", "");
    }
};

static std::string types()
{
    static const std::regex TYPE("\"type\": ([0-9]+),\\s+\"time\": [0-9]{10}\\s");
    const std::string list = cfgctl({"events", "--json"}).out;
    std::string found;
    for (std::sregex_iterator match(list.begin(), list.end(), TYPE), end; match != end; ++match)
        found += (*match)[1].str() + " ";
    return found;
}

TEST_F(CfgctlEventsTest, AddedEventsAreListedAndDropped)
{
    EXPECT_EQ(cfgctl({"events"}).out, "INDEX  TIME (UTC)  TYPE\n");
    EXPECT_EQ(types(), "");
    for (const char *type : {"3", "0", "4"})
        EXPECT_EQ(cfgctl({"events", "add", type}).err, "");
    EXPECT_THAT(cfgctl({"events"}).out,
                MatchesRegex("INDEX  TIME .UTC.           TYPE\n"
                             "0      [0-9]+-[0-9][0-9]-[0-9][0-9] [0-9:]+  3\n"
                             "1      [0-9]+-[0-9][0-9]-[0-9][0-9] [0-9:]+  0\n"
                             "2      [0-9]+-[0-9][0-9]-[0-9][0-9] [0-9:]+  4\n"));
    EXPECT_EQ(types(), "3 0 4 ");
    EXPECT_EQ(cfgctl({"events", "drop", "2"}).result, 0);
    EXPECT_EQ(types(), "4 ");
    EXPECT_THAT(cfgctl({"events", "add", "7"}).err, HasSubstr("will refuse all events"));
    EXPECT_EQ(types(), "4 7 ");
    EXPECT_EQ(cfgctl({"events", "clear"}).result, 0);
    EXPECT_EQ(types(), "");
}

TEST_F(CfgctlEventsTest, WrongInputIsRefused)
{
    for (const std::vector<std::string> &words :
         std::vector<std::vector<std::string>>{{"events", "add"},
                                               {"events", "add", "x"},
                                               {"events", "add", "4294967296"},
                                               {"events", "drop", "-1"},
                                               {"events", "clear", "1"},
                                               {"events", "remove", "1"},
                                               {"status", "256"},
                                               {"status", "on"}})
        EXPECT_EQ(cfgctl(words).result, 2) << words.back();
    EXPECT_LT(shmget(EVENT_SHM_KEY, 0, 0), 0) << "nothing was touched";
}

TEST_F(CfgctlEventsTest, RingThatCannotBeHadIsAFailure)
{
    ASSERT_GE(shmget(EVENT_SHM_KEY, 16, IPC_CREAT | 0666), 0);
    EXPECT_EQ(cfgctl({"events"}).result, 1);
    for (const char *action : {"add", "drop"})
        EXPECT_EQ(cfgctl({"events", action, "1"}).result, 4);
    EXPECT_EQ(cfgctl({"events", "clear"}).result, 4);
    shmctl(shmget(EVENT_SHM_KEY, 0, 0), IPC_RMID, nullptr);
}

TEST_F(CfgctlEventsTest, DumpShowsAndChecksACopyAlone)
{
    EventQueue ring = {511, 1, 2, {}};
    ring.slots[511] = {3, 1388534400};
    ring.slots[0] = {2, 1388534401};
    std::string copy(reinterpret_cast<const char *>(&ring), sizeof ring);
    write_file("/tmp/copy", copy);
    const Outcome good = cfgctl({"events", "dump", "/tmp/copy"});
    EXPECT_EQ(good.result, 0);
    EXPECT_EQ(good.out, "head 511, tail 1, count 2\n"
                        "INDEX  TIME (UTC)           TYPE\n"
                        "0      2014-01-01 00:00:00  3\n"
                        "1      2014-01-01 00:00:01  2\n");
    EXPECT_EQ(good.err, "");

    copy.replace(0, 12, 12, '\xff');
    write_file("/tmp/copy", copy);
    const Outcome bad = cfgctl({"events", "dump", "/tmp/copy", "--json"});
    EXPECT_EQ(bad.result, 1);
    EXPECT_EQ(bad.err, "[checkEventQueue #] invalid count[4294967295]\n"
                       "cfgctl: /tmp/copy is refused, for the reason above\n");
    EXPECT_THAT(bad.out, AllOf(HasSubstr("\"valid\": false"), HasSubstr("\"head\": 4294967295"),
                               HasSubstr("\"type\": 2")));

    write_file("/tmp/copy", copy.substr(1));
    const Outcome cut = cfgctl({"events", "dump", "/tmp/copy"});
    EXPECT_EQ(cut.result, 1);
    EXPECT_EQ(cut.err, "cfgctl: /tmp/copy is refused: it has 4107 of 4108 bytes\n");
    EXPECT_EQ(cfgctl({"events", "dump", "/tmp/none"}).result, 1);
    EXPECT_LT(shmget(EVENT_SHM_KEY, 0, 0), 0) << "the shared ring was not touched";
}

TEST_F(CfgctlEventsTest, StatusIsSetAndPrinted)
{
    EXPECT_EQ(cfgctl({"status"}).result, 1);
    EXPECT_EQ(cfgctl({"status", "7"}).out, "");
    EXPECT_EQ(cfgctl({"status"}).out, "7\n");
    EXPECT_EQ(cfgctl({"status", "--json"}).out, "{\n  \"status\": 7\n}\n");
    EXPECT_EQ(cfgctl({"status", "255"}).result, 0);
    EXPECT_EQ(cfgctl({"status"}).out, "255\n");
}
