// Sound choices, how files are checked, and text replacement.

#include "cfg_set.h"
#include "doubles.h"

#include <cstdlib>
#include <cstring>

using namespace doubles;
using testing::ElementsAre;
using testing::IsEmpty;

// How many more allocations succeed, below 0 any number; and what is not freed.
static int allocations_left = -1;
static int held;

// The linker's names for what --wrap goes around.
// NOLINTBEGIN(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp)
extern "C" {
void *__real_malloc(size_t size);
void __real_free(void *memory);

void *__wrap_malloc(size_t size)
{
    if (allocations_left >= 0 && allocations_left-- == 0)
        return nullptr;
    held++;
    return __real_malloc(size);
}

char *__wrap_strdup(const char *text)
{
    char *copy = static_cast<char *>(__wrap_malloc(strlen(text) + 1));
    return copy ? strcpy(copy, text) : nullptr;
}

void __wrap_free(void *memory)
{
    held -= memory ? 1 : 0;
    __real_free(memory);
}
}
// NOLINTEND(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp)

class SoundsTest : public LibraryTest
{
};

using Setter = int (*)(const char *path);

// The setters with the label of their checks.
static const std::vector<std::tuple<Setter, std::string, std::string>> SETTERS = {
    {alert_file_set_config, "alert_file_set_config", "alert_file_set_config"},
    {greeting_file_set_config, "greeting_file_set_config", "greeting_file_set_config"},
    {alarm_audio_set_config, "alarm_audio_set_config", "alarm_file_set_config"}};

static void audio_check_says(const std::string &reply)
{
    write_script("/tmp/bin/AudioCheck", "printf %b '" + reply + "'; exit 1");
}

TEST_F(SoundsTest, FilesOutsideTheSoundFolderAreChecked)
{
    const std::string path = "/mnt/x y/audio/a.aac";
    for (const auto &[setter, name, label] : SETTERS) {
        for (const auto &[reply, seen, accepted] :
             std::vector<std::tuple<std::string, std::string, bool>>{{"0\\n", "0\n", true},
                                                                     {"", "", true},
                                                                     {"2\\n1\\n", "2\n", true},
                                                                     {"-10", "-10", true},
                                                                     {"1", "1", false},
                                                                     {"10\\n", "10\n", false},
                                                                     {"-1\\n", "-1\n", false},
                                                                     {" -1", " -1", false},
                                                                     {"01234", "012", true}}) {
            audio_check_says(reply);
            calls.clear();
            const Outcome set = observe([&, run = setter] { return run(path.c_str()); });
            EXPECT_EQ(set.result, accepted ? 0 : -1) << label << reply;
            EXPECT_EQ(set.err, std::string(label).append(": ret = [").append(seen).append("]\n"));
            EXPECT_EQ(calls.at(0), "popen AudioCheck 32000 \"" + path + "\"");
            EXPECT_EQ(calls.size() > 1, accepted) << label << reply;
        }
        popen_error = 12;
        calls.clear();
        const Outcome set = observe([&, run = setter] { return run(path.c_str()); });
        EXPECT_EQ(set.result, -1);
        EXPECT_EQ(set.err,
                  std::string(label).append(": can't check file [").append(path).append("]\n"));
        EXPECT_EQ(calls.size(), 1U);
        popen_error = 0;
    }
}

TEST_F(SoundsTest, PathsEndWhereTheirPlacesDo)
{
    audio_check_says("0");
    for (const auto &[setter, name, label] : SETTERS) {
        for (const std::string &longest :
             {std::string(100, 'p'), "/audio/" + std::string(248, 'p')}) {
            EXPECT_EQ(observe([&, run = setter] { return run(longest.c_str()); }).result, 0);
            calls.clear();
            const Outcome set = observe([&, run = setter] { return run((longest + "p").c_str()); });
            EXPECT_EQ(set.result, -1);
            EXPECT_EQ(set.out, "[" + name + " #] invalid path\n");
            EXPECT_THAT(calls, IsEmpty());
        }
    }
}

TEST_F(SoundsTest, ChoicesAreLinked)
{
    const std::string alarm = "/audio/alarm.aac";
    const std::string hello = "/audio/hello.aac";
    const auto choose = [](Setter setter, const char *path) {
        calls.clear();
        EXPECT_EQ(observe([&] { return setter(path); }).result, 0);
        return recorded("set");
    };
    EXPECT_THAT(choose(alert_file_set_config, alarm.c_str()),
                ElementsAre("alert_file=" + alarm, "greeting_enable=0", "alarm_audio=" + alarm));
    EXPECT_THAT(choose(greeting_file_set_config, hello.c_str()),
                ElementsAre("greeting_audio=" + hello));
    EXPECT_THAT(choose(alert_file_set_config, hello.c_str()),
                ElementsAre("alert_file=" + hello, "greeting_enable=1", "greeting_audio=" + hello));
    EXPECT_THAT(choose(greeting_file_set_config, alarm.c_str()),
                ElementsAre("greeting_audio=" + alarm, "alert_file=" + alarm));
    EXPECT_THAT(calls, ElementsAre("set greeting_audio=" + alarm, "get greeting_enable 8",
                                   "set alert_file=" + alarm));
    EXPECT_THAT(choose(alarm_audio_set_config, hello.c_str()),
                ElementsAre("alarm_audio=" + hello, "alert_file=" + hello));
    EXPECT_THAT(choose(alert_file_set_config, nullptr), ElementsAre("alert_file=(null)"));
    EXPECT_THAT(choose(alarm_audio_set_config, nullptr),
                ElementsAre("alarm_audio=(null)", "alert_file=(null)"));
    store.erase("greeting_enable");
    EXPECT_THAT(choose(greeting_file_set_config, hello.c_str()),
                ElementsAre("greeting_audio=" + hello));
}

TEST_F(SoundsTest, RefusalsOfTheStoreAreReportedAndPassedOver)
{
    store["greeting_enable"] = "2";
    refused = {"set alert_file", "set greeting_enable", "set greeting_audio", "set alarm_audio"};
    const auto lines = [](const std::string &name, int count) {
        std::string text;
        for (int i = 0; i < count; i++)
            text += "[" + name + " #] param_set fail\n";
        return text;
    };
    for (const auto &[setter, name, label] : SETTERS) {
        const Outcome set = observe([run = setter] { return run("/audio/a"); });
        EXPECT_EQ(set.result, 0);
        EXPECT_EQ(set.out, setter == alert_file_set_config ? lines(name, 3)
                           : setter == alarm_audio_set_config
                               ? lines(name, 2)
                               : lines(name, 1) + "[" + name + " #] sValue=[2]\n");
    }
}

TEST_F(SoundsTest, GettersCopyAtMostOneCharacterLessThanTheSize)
{
    const std::vector<std::tuple<int (*)(char *, size_t), std::string, std::string>> GETTERS = {
        {alert_file_get_config, "alert_file_get_config", "alert_file"},
        {greeting_file_get_config, "greeting_file_get_config", "greeting_audio"},
        {alarm_audio_get_config, "alarm_audio_get_config", "alarm_audio"}};
    for (const auto &[getter, name, key] : GETTERS) {
        char text[] = "12345678";
        const auto get = [&, run = getter](size_t size) {
            return observe([&] { return run(text, size); });
        };
        EXPECT_EQ(get(8).out, "[" + name + " #] param_get fail\n");
        store[key] = "abcdef";
        EXPECT_EQ(get(0).result + get(1).result, 0);
        EXPECT_STREQ(text, "12345678");
        get(4);
        EXPECT_STREQ(text, "abc45678");
        EXPECT_EQ(get(8).out, "");
        EXPECT_STREQ(text, "abcdef");
        EXPECT_EQ(text[7], '8') << "past the last but one nothing is written";
        EXPECT_EQ(calls.back(), "get " + key + " 256");
    }
}

TEST_F(SoundsTest, VolumeIsZeroToTwoElseOne)
{
    EXPECT_EQ(alert_file_set_vol(nullptr), -1);
    EXPECT_THAT(calls, IsEmpty());
    int volume = 9;
    EXPECT_EQ(observe([&] { return alert_file_get_vol(0, &volume); }).out,
              "[alert_file_get_vol #] param_get fail\n");
    EXPECT_EQ(volume, 1);
    for (const auto &[text, value] : std::map<std::string, int>{
             {"0", 0}, {"2x", 2}, {"", 0}, {"3", 1}, {"7", 1}, {"-1", 1}, {"4294967296", 1}}) {
        const Outcome set =
            observe([&, given = text] { return alert_file_set_vol(given.c_str()); });
        EXPECT_EQ(set.result, 0);
        EXPECT_EQ(store["alert_vol"], std::to_string(value)) << text;
        const bool valid = text == "0" || text == "2x" || text.empty();
        EXPECT_EQ(set.err, valid ? "" : "alert_file_set_vol:# error s_alert_vol = " + text + "\n");
        store["alert_vol"] = text;
        EXPECT_EQ(alert_file_get_vol(0, &volume), 0);
        EXPECT_EQ(volume, value) << text;
    }
    refused = {"set alert_vol"};
    EXPECT_EQ(observe([] { return alert_file_set_vol("0"); }).out,
              "[alert_file_set_vol #] param_set fail\n");
}

TEST_F(SoundsTest, ReplacementSearchesAnewFromTheFront)
{
    const char *const none = nullptr;
    for (const auto &[text, old, replacement, expected] :
         std::vector<std::tuple<const char *, const char *, const char *, const char *>>{
             {"a-b-c", "-", "+", "a+b+c"},
             {"a-b", "-", "", "ab"},
             {"aXbb", "X", "yy", "ayybb"},
             {"aabb", "ab", "", ""}, // what comes together is replaced too
             {"abc", "x", "y", "abc"},
             {"abc", "x", "axa", "abc"},
             {"", "x", "y", ""},
             {"abc", none, "y", "abc"},
             {"abc", "a", none, "abc"},
             {"abc", "", "", none},
             {"abc", "b", "abc", none},
             {"abc", "b", "b", none}}) {
        char *const result = str_replace(text, old, replacement);
        EXPECT_NE(result, text);
        if (expected)
            EXPECT_STREQ(result, expected);
        else
            EXPECT_EQ(result, nullptr);
        free(result);
    }
}

TEST_F(SoundsTest, ReplacementFreesWhatItDoesNotReturn)
{
    const int before = held;
    for (int allowed = 0; allowed <= 4; allowed++) {
        allocations_left = allowed;
        char *const result = str_replace("a-b-c-d", "-", "+");
        allocations_left = -1;
        EXPECT_EQ(held, before + (result ? 1 : 0)) << allowed;
        EXPECT_EQ(result != nullptr, allowed == 4) << "a copy and three replacements";
        free(result);
    }
    EXPECT_EQ(str_replace("a-b", "-", "--"), nullptr);
    EXPECT_EQ(held, before);
}
