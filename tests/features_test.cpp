// Feature switches: their stored forms, defaults and limits.

#include "cfg_set.h"
#include "doubles.h"

#include <tuple>

using namespace doubles;

using FeaturesTest = LibraryTest;

// What a getter puts into variables of 99.
template <typename... Pointer> static std::string got(int (*get)(Pointer...))
{
    std::tuple<std::remove_pointer_t<Pointer>...> numbers;
    std::apply([](auto &...number) { ((number = 99), ...); }, numbers);
    const int result = std::apply([=](auto &...number) { return get(&number...); }, numbers);
    return std::apply([=](auto &...number) { return words(result, number...); }, numbers);
}

static std::string cloud()
{
    int on = 99, status = 99;
    std::string folder = "was" + std::string(300, 'w');
    const int result = nimbus_get_config(&on, folder.data(), &status);
    return words(result, on, "[" + folder.substr(0, folder.find('\0')) + "]", status);
}

// clang-format off
#define GOT(get) CALL_AS(get, got(get))

static const Calls CLIP = {"alert_vclip", "alert_vclip_duration", "alert_vclip_prelude"};
static const Calls CLOUD = {"nimbus_enable", "nimbus_folderid"}, EVENT = {"event_s3_setting", "event_push_setting"};
static const Calls SERVER = {"media_server_enable", "media_server_auth", "kurento_max_video_level"};

// What is said when so many keys fail.
static std::string fail(const std::string &call, size_t times)
{
    return "param_" + call + " fail" + (times > 1 ? "\n" + fail(call, times - 1) : "");
}

static Calls set(const Calls &keys, const Calls &values)
{
    Calls made;
    for (size_t i = 0; i < keys.size(); i++)
        made.push_back("set " + keys[i] + "=" + values[i]);
    return made;
}

// The setter as it stores, and when none of the keys can be stored.
static void check_set(const Call &call, const Calls &keys, const Calls &values, const Calls &signal = {})
{
    Row::Refused all;
    for (const std::string &key : keys)
        all.insert("set " + key);
    const Calls made = set(keys, values) + signal;
    check({{call, 0, made}, {{}, all, call, 0, made, fail("set", keys.size())}});
}

TEST_F(FeaturesTest, SettersStoreWhatTheirLimitsAllow)
{
    const Calls off = {"system killall -SIGUSR1 LEDCtrl"}, on = {"system killall -SIGUSR2 LEDCtrl"};
    check_set(CALL(nimbus_set_config(-5, "a b")), CLOUD, {"-5", "a b"});
    check_set(CALL(led_disable_set_config(1)), {"led_disable"}, {"1"}, off);
    check_set(CALL(led_disable_set_config(0)), {"led_disable"}, {"0"}, on);
    check_set(CALL(led_disable_set_config(2)), {"led_disable"}, {"0"}, on);
    check_set(CALL(led_disable_set_config(-1)), {"led_disable"}, {"0"}, on);
    check_set(CALL(alert_vclip_set_config(1, 4, 2)), CLIP, {"1", "7", "4"});
    check_set(CALL(alert_vclip_set_config(1, 720, 30)), CLIP, {"1", "720", "30"});
    check_set(CALL(alert_vclip_set_config(-1, 721, 31)), CLIP, {"0", "7", "4"});
    check_set(CALL(alert_vclip_set_config(0, -5, -3)), CLIP, {"0", "7", "4"});
    check_set(CALL(alert_vclip_set_config(2, 5, 3)), CLIP, {"0", "5", "3"});
    check_set(CALL(event_set_config(INT32_MIN, INT32_MAX)), EVENT, {"-2147483648", "2147483647"});
    check_set(CALL(media_server_set_config(1, -2, 3)), SERVER, {"1", "-2", "3"});
}

TEST_F(FeaturesTest, GettersKeepToDefaultsAndLimits)
{
    const Given event = {{EVENT[0], "-5"}, {EVENT[1], "2147483648"}};
    const Given server = {{SERVER[0], "7"}, {SERVER[1], "-8"}, {SERVER[2], "9x"}};
    std::vector<Row> rows = {
        {GOT(led_disable_get_config), "0 0", {}, fail("get", 1), {"led_disable 256"}},
        {GOT(alert_vclip_get_config), "0 0 7 99", {}, fail("get", 3), {CLIP[0] + " 256", CLIP[1] + " 256", CLIP[2] + " 256"}},
        {GOT(event_get_config), "0 0 0", {}, fail("get", 2), {EVENT[0] + " 16", EVENT[1] + " 16"}},
        {event, GOT(event_get_config), "0 -5 2147483647"},
        {{{EVENT[1], "x"}}, GOT(event_get_config), "0 0 0", {}, fail("get", 1)},
        {GOT(media_server_get_config), "0 0 0 0", {}, fail("get", 3), {SERVER[0] + " 256", SERVER[1] + " 256", SERVER[2] + " 256"}},
        {server, GOT(media_server_get_config), "0 7 -8 9"},
    };
    for (const char *text : {"1", "0", "2", "-1", "", "1x"})
        rows.push_back({{{"led_disable", text}}, GOT(led_disable_get_config), text[0] == '1' ? "0 1" : "0 0"});
    for (const auto &[text, numbers] : Given{
             {"1", "0 1 7 4"}, {"2", "0 0 7 4"}, {"3", "0 0 7 3"}, {"4", "0 0 7 4"}, {"5", "0 0 5 5"}, {"30", "0 0 30 30"},
             {"31", "0 0 31 4"}, {"720", "0 0 720 4"}, {"721", "0 0 7 4"}, {"-1", "0 0 7 4"}, {"4294967301", "0 0 7 4"}, {"", "0 0 7 4"}})
        rows.push_back({{{CLIP[0], text}, {CLIP[1], text}, {CLIP[2], text}}, GOT(alert_vclip_get_config), numbers});
    check(rows);
}

TEST_F(FeaturesTest, CloudFolderIsReadWithItsStatusFile)
{
    const std::string file = "/tmp/.gdustatus", &on = CLOUD[0];
    const auto row = [](const std::string &name, const std::string &text, const std::string &read) {
        return Row{{{name, text}}, CALL(cloud()), "0 " + read};
    };
    check({
        {CALL(cloud()), "0 0 [] 0", {}, "", {"nimbus_enable 16", "nimbus_folderid 256"}},
        row("nimbus_folderid", "a" + std::string(300, ' '), "0 [a" + std::string(254, ' ') + "] 0"),
        row(on, "1", "1 [] 0"), row(on, "01", "0 [] 0"), row(on, "2", "0 [] 0"), row(on, "1 ", "0 [] 0"),
        row(file, "3\r\n4", "0 [] 3"), row(file, "", "0 [] 0"), row(file, "\n5", "0 [] 0"), row(file, "\r5", "0 [] 0"),
        row(file, "-7x", "0 [] -7"), row(file, std::string(31, '0') + "12", "0 [] 1"), row(file + "/", "", "0 [] 0"), // 32 bytes count
    });
}
// clang-format on
