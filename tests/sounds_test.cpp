// Sound choices, the command that vets them, and str_replace.

#include "cfg_set.h"
#include "doubles.h"
#include "memory.h"

using namespace doubles;

using SoundsTest = LibraryTest;

// clang-format off
// The result in its own memory, and what else is still allocated.
static std::string replaced(const char *text, const char *old, const char *with, int allocations)
{
    const size_t before = held.size();
    allocations_left = allocations;
    char *const result = str_replace(text, old, with);
    allocations_left = -1;
    const size_t more = held.size() - before;
    if (!result)
        return words("none", more);
    EXPECT_TRUE(held.count(result) == 1 && last_size == strlen(result) + 1);
    std::string said = words("[" + std::string(result) + "]", more - 1);
    free(result);
    return said;
}

// What a getter puts into a text.
static std::string got(int (*get)(char *, size_t), size_t size)
{
    char text[] = "12345678";
    const int result = get(text, size);
    return words(result, std::string(text, 8).c_str());
}

#define GOT(get) CALL_AS(get, got(get, 8))

static std::string volume()
{
    int value = 9;
    return words(alert_file_get_vol(7, &value), value);
}

static const std::string ALARM = "/audio/alarm.aac", HELLO = "/audio/hello.aac";
static const std::string FAIL = "param_set fail";

// What each setter stores of a path that is not the built-in alarm.
static Calls as_alert(Text path)
{
    return {"set alert_file=" + path, "set greeting_enable=1", "set greeting_audio=" + path};
}
static Calls as_greeting(Text path) { return {"set greeting_audio=" + path}; }
static Calls as_alarm(Text path) { return {"set alarm_audio=" + path, "set alert_file=" + path}; }

static const struct {
    int (*set)(const char *);
    std::string name, label;
    Calls (*stored)(Text path);
} SETTERS[] = {
    {alert_file_set_config, "alert_file_set_config", "alert_file_set_config", as_alert},
    {greeting_file_set_config, "greeting_file_set_config", "greeting_file_set_config", as_greeting},
    {alarm_audio_set_config, "alarm_audio_set_config", "alarm_file_set_config", as_alarm},
};

TEST_F(SoundsTest, FilesOutsideTheSoundFolderAreChecked)
{
    const std::string path = "/mnt/x y/audio/a.aac", tool = "AudioCheck 32000 \"" + path + "\"";
    const std::string p(100, 'p'), line = "AudioCheck 32000 \"" + p + "\"";
    const std::string longest = "/audio/" + std::string(248, 'p');
    const Calls asked = {"popen " + tool};
    std::vector<Row> rows;
    for (const auto &[setter, name, label, stored] : SETTERS) {
        const std::string says = "! | " + label + ": ", heard = says + "ret = [";
        const auto add = [&, set = setter, function = name](Text file, const Row &rest) {
            rows.push_back(rest);
            rows.back().call = CALL(set(file.c_str()));
            rows.back().call.function = function;
        };
        for (const auto &[reply, seen] : Given{
                 {"0\n", "0\n! | ]"}, {"", "]"}, {"2\n1\n", "2\n! | ]"}, {"-10", "-10]"},
                 {"01234", "012]"}, {" 1", " 1]"}})
            add(path, {{{"$ " + tool, reply}}, {}, {}, 0, asked + stored(path), heard + seen});
        for (const auto &[reply, seen] : Given{
                 {"1", "1]"}, {"10\n", "10\n! | ]"}, {"-1\n", "-1\n! | ]"}, {" -1", " -1]"}})
            add(path, {{{"$ " + tool, reply}}, {}, {}, -1, asked, heard + seen});
        add(path, {{}, {"popen " + tool}, {}, -1, asked, says + "can't check file [" + path + "]"});
        // As long as their places, and one more; and what a shell would act on.
        add(p, {{{"$ " + line, "1"}}, {}, {}, -1, {"popen " + line}, heard + "1]"});
        add(longest, {{}, {}, {}, 0, stored(longest)});
        for (Text bad : Calls{p + "p", longest + "p", "/audio/x;y", "bad\".aac", "a$b", "/audio/?",
                              "a'b", "/audio/a\n", "a #1"})
            add(bad, {{}, {}, {}, -1, {}, "invalid path"});
    }
    check(rows);
}

TEST_F(SoundsTest, ChoicesAreLinked)
{
    const Calls both = {"set greeting_audio=" + ALARM, "set alert_file=" + ALARM};
    const Calls no_path = {"set alarm_audio=(null)", "set alert_file=(null)"};
    const std::string three = FAIL + "\n" + FAIL + "\n" + FAIL, fail = "param_get fail";
    const std::string was = "12345678", none = "0 " + was;
    const Calls alarm_alert = {"set alert_file=" + ALARM, "set greeting_enable=0", "set alarm_audio=" + ALARM};
    const auto copied = [](int (*get)(char *, size_t), size_t size, Text text) {
        const Given has = {{"alert_file", "abcdef"}, {"greeting_audio", "abcdef"}, {"alarm_audio", "abcdef"}};
        return Row{has, CALL(got(get, size)), "0 " + text};
    };
    const auto enabled = [](const char *text) { return Given{{"greeting_enable", text}}; };
    const Call greet = CALL(greeting_file_set_config(ALARM.c_str()));
    const std::set<std::string> all = {"set alert_file", "set greeting_enable", "set greeting_audio", "set alarm_audio"};
    check({
        {CALL(alert_file_set_config(ALARM.c_str())), 0, alarm_alert},
        {{}, all, CALL(alert_file_set_config(ALARM.c_str())), 0, alarm_alert, three},
        {CALL(alert_file_set_config(HELLO.c_str())), 0, as_alert(HELLO)},
        {CALL(alert_file_set_config("/audio/alarm.aacx")), 0, as_alert("/audio/alarm.aacx")},
        {{}, all, CALL(alert_file_set_config("/audio/a")), 0, as_alert("/audio/a"), three},
        {CALL(alert_file_set_config(nullptr)), 0, {"set alert_file=(null)"}, FAIL},
        {enabled("1"), greet, 0, both, "sValue=[1]", {"greeting_enable 8"}},
        {enabled("2"), all, greet, 0, both, FAIL + "\nsValue=[2]"},
        {enabled("00000001"), greet, 0, as_greeting(ALARM), "sValue=[0000000]"},
        {enabled("0"), greet, 0, as_greeting(ALARM), "sValue=[0]"},
        {CALL(greeting_file_set_config(HELLO.c_str())), 0, as_greeting(HELLO)},
        {CALL(greeting_file_set_config(nullptr)), 0, as_greeting("(null)"), FAIL},
        {CALL(alarm_audio_set_config(HELLO.c_str())), 0, as_alarm(HELLO)},
        {CALL(alarm_audio_set_config(nullptr)), 0, no_path, FAIL + "\n" + FAIL},
        {GOT(alert_file_get_config), none, {}, fail, {"alert_file 256"}},
        {GOT(greeting_file_get_config), none, {}, fail, {"greeting_audio 256"}},
        {GOT(alarm_audio_get_config), none, {}, fail, {"alarm_audio 256"}},
        copied(alert_file_get_config, 0, was), copied(greeting_file_get_config, 1, was),
        copied(alarm_audio_get_config, 4, "abc45678"), copied(alert_file_get_config, 7, "abcdef78"),
        copied(alert_file_get_config, 8, "abcdef"),
    });
}

TEST_F(SoundsTest, VolumeIsZeroToTwoElseOne)
{
    const std::string error = "! | alert_file_set_vol:# error s_alert_vol = ";
    std::vector<Row> rows = {
        {CALL(alert_file_set_vol(nullptr)), -1},
        {{}, {"set alert_vol"},   CALL(alert_file_set_vol("0")), 0, {"set alert_vol=0"}, FAIL},
        {CALL_AS(alert_file_get_vol, volume()), "0 1", {}, "param_get fail", {"alert_vol 256"}},
    };
    for (const auto &[text, value] : std::map<const char *, std::string>{
             {"0", "0"}, {"1", "1"}, {"2x", "2"}, {"", "0"}, {"3", "1!"}, {"-1", "1!"}, {"4294967296", "1!"}}) {
        const Calls stored = {"set alert_vol=" + value.substr(0, 1)};
        const char *const given = text;
        rows.push_back({CALL(alert_file_set_vol(given)), 0, stored, value == "1!" ? error + given : ""});
        rows.push_back({{{"alert_vol", text}}, CALL(volume()), "0 " + value.substr(0, 1)});
    }
    check(rows);
}

TEST_F(SoundsTest, ReplacementSearchesAnewFromTheFrontAndFreesWhatItDoesNotReturn)
{
    const char *const no = nullptr;
    const auto row = [](auto text, auto old, auto with, const char *result, int allocations = -1) {
        return Row{CALL(replaced(text, old, with, allocations)), std::string(result) + " 0"};
    };
    check({
        row("a-b-c", "-", "+", "[a+b+c]"), row("a-b", "-", "", "[ab]"),
        row("aXbb", "X", "yy", "[ayybb]"), row("longer", "onge", "o", "[lor]"),
        row("aabb", "ab", "", "[]"), row("aab", "ab", "b", "[b]"), row("abc", "x", "y", "[abc]"),
        row("abc", "x", "axa", "[abc]"), row("", "x", "y", "[]"), row("abc", no, "y", "[abc]"),
        row("abc", "a", no, "[abc]"), row("abc", no, no, "[abc]"), row("abc", "", "", "none"),
        row("abc", "b", "abc", "none"), row("abc", "b", "b", "none"), row("a-b", "-", "--", "none"),
        row("abc", "", "x", "none"), row("a-b-c-d", "-", "+", "none", 0),
        row("a-b-c-d", "-", "+", "none", 1), row("a-b-c-d", "-", "+", "none", 2),
        row("a-b-c-d", "-", "+", "none", 3), row("a-b-c-d", "-", "+", "[a+b+c+d]", 4),
    });
}
// clang-format on
