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
TEST_F(FeaturesTest, SettersStoreWhatTheirLimitsAllow)
{
    const std::string fail = "param_set fail", three = fail + "\n" + fail + "\n" + fail;
    const Calls off = {"set led_disable=1", "system killall -SIGUSR1 LEDCtrl"};
    const Calls on = {"set led_disable=0", "system killall -SIGUSR2 LEDCtrl"};
    using Text = const std::string &;
    const auto clips = [](Text enable, Text duration, Text prelude) { return Calls{"set alert_vclip=" + enable, "set alert_vclip_duration=" + duration, "set alert_vclip_prelude=" + prelude}; };
    const Calls server = {"set media_server_enable=1", "set media_server_auth=-2", "set kurento_max_video_level=3"};
    check({
        // given, refused                              call                                result calls printed
        {{}, {},                                       CALL(nimbus_set_config(-5, "a b")),      0, {"set nimbus_enable=-5", "set nimbus_folderid=a b"}, ""},
        {{}, {"set nimbus_enable", "set nimbus_folderid"}, CALL(nimbus_set_config(0, "")),      0, {"set nimbus_enable=0", "set nimbus_folderid="}, fail + "\n" + fail},
        {{}, {},                                       CALL(led_disable_set_config(1)),         0, off, ""},
        {{}, {"set led_disable"},                      CALL(led_disable_set_config(1)),         0, off, fail},
        {{}, {},                                       CALL(led_disable_set_config(0)),         0, on, ""},
        {{}, {"set led_disable"},                      CALL(led_disable_set_config(2)),         0, on, fail},
        {{}, {},                                       CALL(led_disable_set_config(-1)),        0, on, ""},
        {{}, {},                                       CALL(alert_vclip_set_config(1, 4, 2)),   0, clips("1", "7", "4"), ""},
        {{}, {},                                       CALL(alert_vclip_set_config(1, 720, 30)), 0, clips("1", "720", "30"), ""},
        {{}, {},                                       CALL(alert_vclip_set_config(-1, 721, 31)), 0, clips("0", "7", "4"), ""},
        {{}, {},                                       CALL(alert_vclip_set_config(0, -5, -3)), 0, clips("0", "7", "4"), ""},
        {{}, {"set alert_vclip", "set alert_vclip_duration", "set alert_vclip_prelude"}, CALL(alert_vclip_set_config(2, 5, 3)), 0, clips("0", "5", "3"), three},
        {{}, {},                                       CALL(event_set_config(INT32_MIN, 99)),   0, {"set event_s3_setting=-2147483648", "set event_push_setting=99"}, ""},
        {{}, {"set event_s3_setting", "set event_push_setting"}, CALL(event_set_config(-5, INT32_MAX)), 0, {"set event_s3_setting=-5", "set event_push_setting=2147483647"}, fail + "\n" + fail},
        {{}, {},                                       CALL(media_server_set_config(1, -2, 3)), 0, server, ""},
        {{}, {"set media_server_enable", "set media_server_auth", "set kurento_max_video_level"}, CALL(media_server_set_config(1, -2, 3)), 0, server, three},
    });
}

TEST_F(FeaturesTest, GettersKeepToDefaultsAndLimits)
{
    const std::string fail = "param_get fail", three = fail + "\n" + fail + "\n" + fail;
    std::vector<Row> rows = {
        {{}, {},                           CALL_AS(led_disable_get_config, got(led_disable_get_config)),   "0 0", {}, fail, {"led_disable 256"}},
        {{}, {},                           CALL_AS(alert_vclip_get_config, got(alert_vclip_get_config)),  "0 0 7 99", {}, three, {"alert_vclip 256", "alert_vclip_duration 256", "alert_vclip_prelude 256"}},
        {{}, {},                           CALL_AS(event_get_config, got(event_get_config)),      "0 0 0", {}, fail + "\n" + fail, {"event_s3_setting 16", "event_push_setting 16"}},
        {{{"event_s3_setting", "-5"}, {"event_push_setting", "2147483648"}}, {}, CALL_AS(event_get_config, got(event_get_config)), "0 -5 2147483647", {}, ""},
        {{{"event_push_setting", "x"}}, {}, CALL_AS(event_get_config, got(event_get_config)),     "0 0 0", {}, fail},
        {{}, {},                           CALL_AS(media_server_get_config, got(media_server_get_config)), "0 0 0 0", {}, three, {"media_server_enable 256", "media_server_auth 256", "kurento_max_video_level 256"}},
        {{{"media_server_enable", "7"}, {"media_server_auth", "-8"}, {"kurento_max_video_level", "9x"}}, {}, CALL_AS(media_server_get_config, got(media_server_get_config)), "0 7 -8 9", {}, ""},
    };
    for (const auto &[text, off] : std::map<const char *, const char *>{{"1", "0 1"}, {"0", "0 0"}, {"2", "0 0"}, {"-1", "0 0"}, {"", "0 0"}, {"1x", "0 1"}})
        rows.push_back({{{"led_disable", text}}, {}, CALL_AS(led_disable_get_config, got(led_disable_get_config)), off, {}, ""});
    for (const auto &[text, numbers] : std::map<const char *, const char *>{
             {"1", "0 1 7 4"}, {"2", "0 0 7 4"}, {"3", "0 0 7 3"}, {"4", "0 0 7 4"}, {"5", "0 0 5 5"}, {"30", "0 0 30 30"}, {"31", "0 0 31 4"},
             {"720", "0 0 720 4"}, {"721", "0 0 7 4"}, {"-1", "0 0 7 4"}, {"4294967301", "0 0 7 4"}, {"", "0 0 7 4"}})
        rows.push_back({{{"alert_vclip", text}, {"alert_vclip_duration", text}, {"alert_vclip_prelude", text}}, {}, CALL_AS(alert_vclip_get_config, got(alert_vclip_get_config)), numbers, {}, ""});
    check(rows);
}

TEST_F(FeaturesTest, CloudFolderIsReadWithItsStatusFile)
{
    const std::string file = "/tmp/.gdustatus";
    const auto row = [](const std::string &name, const std::string &text, const std::string &read) { return Row{{{name, text}}, {}, CALL(cloud()), "0 " + read, {}, ""}; };
    check({
        {{}, {}, CALL(cloud()), "0 0 [] 0", {}, "", {"nimbus_enable 16", "nimbus_folderid 256"}},
        row("nimbus_folderid", "a" + std::string(300, ' '), "0 [a" + std::string(254, ' ') + "] 0"),
        row("nimbus_enable", "1", "1 [] 0"), row("nimbus_enable", "01", "0 [] 0"), row("nimbus_enable", "2", "0 [] 0"), row("nimbus_enable", "1 ", "0 [] 0"),
        row(file, "3\r\n4", "0 [] 3"), row(file, "", "0 [] 0"), row(file, "\n5", "0 [] 0"), row(file, "\r5", "0 [] 0"), row(file, "-7x", "0 [] -7"),
        row(file, std::string(31, '0') + "123", "0 [] 1"), row(file + "/", "", "0 [] 0"), // 32 bytes count
    });
}
// clang-format on
