// Network time sync: the command line and where it ends.

#include "cfg_set.h"
#include "doubles.h"

using namespace doubles;

using SyncTest = LibraryTest;

static const Calls KILLED = {"system killall ntpd"};

// clang-format off
// A row of these servers, which make this command or ("") none.
static Row row(const std::string &first, const std::string &second, const std::string &command)
{
    const Calls acts = command.empty() ? KILLED : Calls{KILLED[0], "told", "system " + command};
    return {{{"time_server", first}, {"time_server1", second}}, CALL(cfg_setTimeSync(-1)), 0, acts,
            command.empty() ? "" : "| cfg_setTimeSync  #\n| \n| Do ntpd: " + command};
}

TEST_F(SyncTest, ClientIsPointedAtTheServersThatAreSetAndFit)
{
    before_call = [] { // what is run next was told before
        std::fflush(stdout);
        if (read_file("/tmp/observed.out").find("Do ntpd: ") != std::string::npos)
            calls.emplace_back("told");
    };
    const auto server = [](size_t length) { return std::string(length, 's'); };
    const std::string plain = "| cfg_setTimeSync  #\n| \n| Do ntpd: ntpd";
    check({
        {{{"time_server", "a"}}, CALL(cfg_setTimeSync(0)), 0, KILLED},
        {CALL(cfg_setTimeSync(1)), 0, {KILLED[0], "told", "system ntpd"}, plain, {"time_server 256", "time_server1 256"}},
        {{{"time_server1", "a"}}, CALL(cfg_restoreTimeSync()), 0, {KILLED[0], "told", "system ntpd -p a"}, plain + " -p a"},
        row("", "", "ntpd"),
        row("ntp0.example.net", "", "ntpd -p ntp0.example.net"),
        row("", "192.0.2.1", "ntpd -p 192.0.2.1"),
        row("%s", "2001:db8::1", "ntpd -p %s -p 2001:db8::1"),
        row("a-b", "a b", "ntpd -p a-b"), row("-a", "b;c", "ntpd"), row("b\x01", "$c", "ntpd"),
        row("b\x7f", "\n", "ntpd"), row("*", "[-]*", "ntpd"), row("a#", "~", "ntpd"), // not what a shell or ntpd would act on
        // "ntpd", and " -p " before each server, in at most 255 characters
        row(server(247), "", "ntpd -p " + server(247)),
        row(server(248), "", ""),
        row(server(243), "", "ntpd -p " + server(243)),
        row(server(247), "b", ""),
        row(server(240), "bcd", "ntpd -p " + server(240) + " -p bcd"),
        row(server(240), "bcde", ""),
        row("", server(248), ""),
        row(server(255), server(255), ""),
        row(server(252), server(255), ""),
        row(server(251), server(255), ""),
    });
}
// clang-format on
