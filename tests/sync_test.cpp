// Network time sync: the command line and where it ends.

#include "cfg_set.h"
#include "doubles.h"

using namespace doubles;
using testing::ElementsAre;

class SyncTest : public LibraryTest
{
};

static const std::string TRACE = "cfg_setTimeSync  [1-9][0-9]*\n\nDo ntpd: ";

TEST_F(SyncTest, OffOnlyStopsTheClient)
{
    store = {{"time_server", "a"}};
    const Outcome off = observe([] { return cfg_setTimeSync(0); });
    EXPECT_EQ(off.result, 0);
    EXPECT_EQ(off.out + off.err, "");
    EXPECT_THAT(calls, ElementsAre("system killall ntpd"));
}

TEST_F(SyncTest, TheClientIsPointedAtTheServersThatAreSet)
{
    const std::vector<std::pair<std::map<std::string, std::string>, std::string>> cases = {
        {{}, "ntpd"},
        {{{"time_server", ""}, {"time_server1", ""}}, "ntpd"},
        {{{"time_server", "ntp0.example.net"}}, "ntpd -p ntp0.example.net"},
        {{{"time_server1", "192.0.2.1"}}, "ntpd -p 192.0.2.1"},
        {{{"time_server", ""}, {"time_server1", "b"}}, "ntpd -p b"},
        {{{"time_server", "%s"}, {"time_server1", "b"}}, "ntpd -p %s -p b"}};
    for (const auto &[servers, command] : cases) {
        store = servers;
        calls.clear();
        const Outcome on = observe([] { return cfg_setTimeSync(-1); });
        EXPECT_EQ(on.result, 0);
        EXPECT_EQ(on.err, "");
        EXPECT_THAT(on.out, testing::MatchesRegex(TRACE + command + "\n"));
        EXPECT_THAT(calls, ElementsAre("system killall ntpd", "get time_server 256",
                                       "get time_server1 256", "system " + command));
    }
}

TEST_F(SyncTest, ServersThatDoNotFitStopTheClientInSilence)
{
    const auto server = [](size_t length) { return std::string(length, 's'); };
    struct Case {
        size_t first;
        size_t second;
        bool runs;
    };
    // "ntpd", and " -p " before each server, in at most 255 characters.
    for (const Case &given : {Case{247, 0, true},
                              {248, 0, false},
                              {247, 1, false},
                              {243, 0, true},
                              {240, 3, true},
                              {240, 4, false},
                              {0, 247, true},
                              {0, 248, false},
                              {255, 255, false},
                              {251, 255, false}}) {
        store = {{"time_server", server(given.first)}, {"time_server1", server(given.second)}};
        calls.clear();
        const Outcome on = observe([] { return cfg_restoreTimeSync(); });
        EXPECT_EQ(on.result, 0);
        EXPECT_EQ(calls.front(), "system killall ntpd");
        EXPECT_EQ(recorded("system").size(), given.runs ? 2U : 1U)
            << given.first << " " << given.second;
        EXPECT_EQ(on.out.empty(), !given.runs);
        if (given.runs && given.second) {
            EXPECT_THAT(calls.back(), testing::EndsWith(" -p " + server(given.second)));
        }
    }
}
