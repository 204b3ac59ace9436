// Feature switches: their stored forms, defaults and limits.

#include "cfg_set.h"
#include "doubles.h"

using namespace doubles;
using testing::ElementsAre;

class FeaturesTest : public LibraryTest
{
};

TEST_F(FeaturesTest, SettersStoreWhatTheirLimitsAllow)
{
    using Setter = std::function<int()>;
    using Calls = std::vector<std::string>;
    const std::vector<std::pair<Setter, Calls>> CASES = {
        {[] { return nimbus_set_config(-5, "a b"); },
         {"set nimbus_enable=-5", "set nimbus_folderid=a b"}},
        {[] { return led_disable_set_config(1); },
         {"set led_disable=1", "system killall -SIGUSR1 LEDCtrl"}},
        {[] { return led_disable_set_config(2); },
         {"set led_disable=0", "system killall -SIGUSR2 LEDCtrl"}},
        {[] { return alert_vclip_set_config(1, 4, 2); },
         {"set alert_vclip=1", "set alert_vclip_duration=7", "set alert_vclip_prelude=4"}},
        {[] { return alert_vclip_set_config(1, 720, 30); },
         {"set alert_vclip=1", "set alert_vclip_duration=720", "set alert_vclip_prelude=30"}},
        {[] { return alert_vclip_set_config(-1, 721, 31); },
         {"set alert_vclip=0", "set alert_vclip_duration=7", "set alert_vclip_prelude=4"}},
        {[] { return alert_vclip_set_config(2, 5, 3); },
         {"set alert_vclip=0", "set alert_vclip_duration=5", "set alert_vclip_prelude=3"}},
        {[] { return event_set_config(INT32_MIN, 99); },
         {"set event_s3_setting=-2147483648", "set event_push_setting=99"}},
        {[] { return media_server_set_config(1, -2, 3); },
         {"set media_server_enable=1", "set media_server_auth=-2",
          "set kurento_max_video_level=3"}}};
    for (const auto &[setter, expected] : CASES) {
        calls.clear();
        refused.clear();
        EXPECT_EQ(observe(setter).out, "");
        EXPECT_EQ(calls, expected);
        // A store that refuses everything changes the reports alone.
        const size_t stores = recorded("set").size();
        for (const std::string &call : calls)
            refused.insert(call.substr(0, call.find('=')));
        calls.clear();
        const Outcome set = observe(setter);
        EXPECT_EQ(set.result, 0);
        EXPECT_EQ(calls, expected);
        EXPECT_THAT(set.out,
                    testing::MatchesRegex("(\\[[a-z_]+_set_config #\\] param_set fail\n){" +
                                          std::to_string(stores) + "}"));
    }
}

TEST_F(FeaturesTest, GettersKeepToDefaultsAndLimits)
{
    using Numbers = std::vector<int>;
    struct Getter {
        std::vector<std::string> keys;
        std::string size;
        std::function<void(Numbers &)> get;
        Numbers unread; // of 99 before
        std::vector<std::pair<std::string, Numbers>> read;
    };
    const std::vector<Getter> GETTERS = {
        {{"led_disable"},
         "256",
         [](Numbers &n) { led_disable_get_config(&n[0]); },
         {0},
         {{"1", {1}}, {"2", {0}}, {"-1", {0}}, {"", {0}}}},
        {{"alert_vclip", "alert_vclip_duration", "alert_vclip_prelude"},
         "256",
         [](Numbers &n) { alert_vclip_get_config(&n[0], &n[1], &n[2]); },
         {0, 7, 99},
         {{"1", {1, 7, 4}},
          {"5", {0, 5, 5}},
          {"4", {0, 7, 4}},
          {"30", {0, 30, 30}},
          {"31", {0, 31, 4}},
          {"720", {0, 720, 4}},
          {"721", {0, 7, 4}},
          {"-1", {0, 7, 4}},
          {"4294967301", {0, 7, 4}}}},
        {{"event_s3_setting", "event_push_setting"},
         "16",
         [](Numbers &n) { event_get_config(&n[0], &n[1]); },
         {0, 0},
         {{"-5", {-5, -5}}, {"x", {0, 0}}}},
        {{"media_server_enable", "media_server_auth", "kurento_max_video_level"},
         "256",
         [](Numbers &n) { media_server_get_config(&n[0], &n[1], &n[2]); },
         {0, 0, 0},
         {{"7", {7, 7, 7}}}}};
    for (const Getter &getter : GETTERS) {
        Numbers numbers(getter.keys.size(), 99);
        store.clear();
        calls.clear();
        const std::string out = observe([&] { return getter.get(numbers), 0; }).out;
        EXPECT_EQ(numbers, getter.unread);
        EXPECT_THAT(out, testing::MatchesRegex("(\\[[a-z_]+_get_config #\\] param_get fail\n){" +
                                               std::to_string(getter.keys.size()) + "}"));
        for (size_t i = 0; i < getter.keys.size(); i++)
            EXPECT_EQ(calls.at(i), "get " + getter.keys[i] + " " + getter.size);
        for (const auto &[text, expected] : getter.read) {
            for (const std::string &key : getter.keys)
                store[key] = text;
            getter.get(numbers);
            EXPECT_EQ(numbers, expected) << getter.keys[0] << " " << text;
        }
    }
}

TEST_F(FeaturesTest, CloudFolderIsReadWithItsStatusFile)
{
    const auto get = [] {
        int enable = 99;
        int status = 99;
        char folder[256] = "was";
        const Outcome outcome =
            observe([&] { return nimbus_get_config(&enable, folder, &status); });
        return std::to_string(enable) + " [" + folder + "] " + std::to_string(status) + outcome.out;
    };
    EXPECT_EQ(get(), "0 [] 0");
    EXPECT_THAT(calls, ElementsAre("get nimbus_enable 16", "get nimbus_folderid 256"));
    store["nimbus_folderid"] = std::string(300, 'f');
    EXPECT_EQ(get(), "0 [" + std::string(255, 'f') + "] 0");
    store["nimbus_folderid"] = "f";
    for (const auto &[text, enable] :
         std::map<std::string, std::string>{{"1", "1"}, {"01", "0"}, {"2", "0"}, {"1 ", "0"}}) {
        store["nimbus_enable"] = text;
        EXPECT_EQ(get(), enable + " [f] 0") << text;
    }
    store.erase("nimbus_enable");
    for (const auto &[text, status] :
         std::map<std::string, std::string>{{"3\r\n4", "3"},
                                            {"", "0"},
                                            {"\n5", "0"},
                                            {"x", "0"},
                                            {std::string(31, '0') + "123", "1"}}) {
        write_file("/tmp/.gdustatus", text);
        EXPECT_EQ(get(), "0 [f] " + status) << text;
    }
}
