// Stand-ins for what the library calls, and cases as rows. The stand-ins record
// every call, in order, and carry out what a test lets them.
#pragma once

#include "harness.h"

#include <ctime>
#include <set>
#include <type_traits>

namespace doubles
{

using Text = const std::string &;
using Calls = std::vector<std::string>;
inline Calls operator+(Calls first, const Calls &second)
{
    first.insert(first.end(), second.begin(), second.end());
    return first;
}

// "system LINE", "popen LINE", "sleep N", "wait MILLISECONDS", "get KEY SIZE",
// "set KEY=VALUE", "unset KEY", "save", "relay COMMAND NAME PASSCODE CREDENTIAL ONCE", "kill PID
// SIGNAL", "flock shared|none|other", "shmget KEY SIZE FLAGS" (hexadecimal key, octal flags),
// "post TYPE COMMAND" to the daemons' queue, with " value=N" and " param=BYTES" (up to
// their trailing zeros) when they are not zero and " reserved" when the reserved bytes are
// not, or "post KEY TYPE BODY" to another (a time, "account TEXT", or "N bytes" of any other
// form), "lock KEY" and "unlock KEY". What deviates from creating with 0666, from not
// waiting and from an undo is told behind it.
inline Calls calls;

// Called before each of them is recorded.
inline std::function<void()> before_call;

// The parameter store, what a row has refused in it, and what a refusal returns:
// check() has every row see a negative and a positive one.
inline std::map<std::string, std::string> store;
inline std::set<std::string> refused;
inline int refusal = -1;

// System V calls that fail, and their errno; those that a row refuses are out of
// memory. shmat then gives this address.
inline std::map<std::string, int> failing;
inline void *failed_address;

// What popen reads from a line, and what system returns for it; 0 for all others.
inline std::map<std::string, std::string> answers;
inline std::map<std::string, int> statuses;

// What sleep returns, and what happens while it sleeps.
inline unsigned sleep_left;
inline std::function<void()> on_sleep;

// What time returns; 0 asks the real clock. And whether it is recorded too.
inline time_t clock_now;
inline bool record_time;

// Whether files of /proc that a row opens to write are drivers: "fopen PATH MODE",
// "write BYTES" ("write at N BYTES" not at the start) once a write, "fclose" (which
// `refused` makes fail). Opening keeps what such a file holds.
inline bool drivers;

// What the driver "NAME MODE" of /proc is given: one value, or none when it is empty.
Calls put(const std::string &driver, const std::string &value);

// A call of the library, as a row names it. CALL's reports are the called
// function's own, CALL_AS's those of the named one.
struct Call {
    int line;
    std::string function;
    std::string text;
    std::function<std::string()> run;
};
#define CALL_AS(function, ...)                                                                     \
    doubles::Call                                                                                  \
    {                                                                                              \
        __LINE__, #function, #__VA_ARGS__, [=] { return doubles::words(__VA_ARGS__); }             \
    }
#define CALL(...) CALL_AS(, __VA_ARGS__)

// Numbers and texts with a blank between them: a result, and what a call has
// put into the caller's variables.
template <typename Value> std::string word(const Value &value)
{
    if constexpr (std::is_integral_v<Value>)
        return std::to_string(value);
    else
        return value;
}
template <typename First, typename... Rest>
std::string words(const First &first, const Rest &...rest)
{
    return (word(first) + ... + (" " + word(rest)));
}

struct Result {
    std::string text;
    template <typename Value> Result(const Value &value) : text(word(value)) {}
};

using Given = std::map<std::string, std::string>;

// A case: what is there, what is refused, the call, and all that it may do. What
// is nothing is left out: {CALL(...), result}, {given, CALL(...), result}.
struct Row {
    // "KEY" is a stored value, "/PATH" a file, "/PATH/" a folder, "$ LINE" what
    // popen reads from a command, "= LINE" the wait status of one that system runs.
    Given given;
    // "get KEY", "set KEY", "unset KEY", "save", "relay", "popen LINE", or a System V call:
    // "flock", "msgget", "msgsnd", "semget", "SETALL" (a semctl), "semop", "unlock" (a
    // semop), "shmget", "shmat", "shmdt".
    using Refused = std::set<std::string>;
    Refused refused;
    Call call;
    Result result;
    // In order, but for reading the store; then "left open LINE" of pipes, and
    // files: "wrote PATH BYTES" or "removed PATH".
    Calls calls;
    // A line each, without the end. The function's own reports without their
    // head, or "cfg_set TEXT" with the module's; others whole; those
    // that are no reports behind "| "; "! " before what went to standard error.
    std::string printed;
    Calls reads; // "KEY SIZE" as the store was read; not looked at when empty

    // clang-format off
    Row(const Given &has, const Refused &not_has, const Call &makes, const Result &gives,
        const Calls &does = {}, Text says = "", const Calls &asks = {})
        : given(has), refused(not_has), call(makes), result(gives), calls(does), printed(says), reads(asks) {}
    Row(const Given &has, const Call &makes, const Result &gives, const Calls &does = {}, Text says = "", const Calls &asks = {})
        : Row(has, {}, makes, gives, does, says, asks) {}
    Row(const Call &makes, const Result &gives, const Calls &does = {}, Text says = "", const Calls &asks = {})
        : Row({}, {}, makes, gives, does, says, asks) {}
    // clang-format on
};

// Makes each row's call, from the files that the test has made, and compares.
void check(const std::vector<Row> &rows);

// A test begins with everything empty and nothing failing: it is a process of its own.
using LibraryTest = CameraTest;

} // namespace doubles
