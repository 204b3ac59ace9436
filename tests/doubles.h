// Stand-ins for what the library calls. They record every call, in order, and
// carry out what a test lets them.
#pragma once

#include "harness.h"
#include "platform/viewer_relay.h"

#include <ctime>
#include <map>
#include <set>

namespace doubles
{

// "system LINE", "popen LINE", "sleep N", "usleep N", "get KEY SIZE",
// "set KEY=VALUE", "unset KEY", "save", "relay COMMAND NAME", "kill PID SIGNAL",
// "shmget KEY SIZE FLAGS" (hexadecimal key, octal flags).
extern std::vector<std::string> calls;

// Called before each of them is recorded.
extern std::function<void()> before_call;

// The parameter store, and the operations that it refuses: "get KEY",
// "set KEY", "unset KEY", "save", "popen LINE" (out of memory).
extern std::map<std::string, std::string> store;
extern std::set<std::string> refused;

// What popen reads from a line that is not run; the others run for real.
extern std::map<std::string, std::string> answers;

// The errno that popen fails with; 0 lets it run the command for real.
extern int popen_error;

// Whether system runs the line for real; else it only records it.
extern bool run_commands;

// What system returns for a line that it only records; 0 for all others.
extern std::map<std::string, int> statuses;

// What sleep returns, and what happens while it sleeps.
extern unsigned sleep_left;
extern std::function<void()> on_sleep;

// What time returns; 0 asks the real clock.
extern time_t clock_now;

// System V calls that fail, and their errno: "msgget", "semget", "SETALL" (a semctl),
// "semop", "unlock" (a semop), "shmget", "shmat", "shmdt". shmat then gives this address.
extern std::map<std::string, int> failing;
extern void *failed_address;

// What the viewer relay was given, and what it returns.
extern std::vector<viewer_relay_msg> relayed;
extern int relay_result;

// Closes the pipes that are still open; their lines.
std::vector<std::string> close_pipes();

// The recorded calls that begin with `word`, without it.
std::vector<std::string> recorded(const std::string &word);

// Takes the messages off the daemons' queue: "TYPE COMMAND", then " value=N" and
// " param=BYTES" (up to their trailing zeros) when they are not zero, and
// " reserved" when the reserved bytes are not.
std::vector<std::string> posted();

// Fills the daemons' queue until nothing fits any more.
void fill_queue();

// Checks that each restorer reads its key first and, when that is absent,
// reports so and does nothing. It is cfg_restoreNAME.
struct Restorer {
    std::string name;
    std::string key;
    int (*restore)();
};
void expect_keys_read(const std::vector<Restorer> &restorers);

// Begins with everything empty and nothing failing.
class LibraryTest : public CameraTest
{
  protected:
    void SetUp() override;
};

} // namespace doubles
