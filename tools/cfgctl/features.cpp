// feature: the feature switches.

#include "cfgctl.h"

#include "cfg_set.h"

#include <algorithm>

namespace cfgctl
{

namespace
{

struct Value {
    const char *name;
    const char *key;
    int least;
    int most;
};

struct Feature {
    const char *name;
    std::vector<Value> values; // numbers, as the setter takes them
    bool folder;               // and the cloud's folder id behind them
    Json (*get)();
    void (*set)(const std::vector<int> &numbers, const char *folder);
};

constexpr int LEAST = INT32_MIN;
constexpr int MOST = INT32_MAX;

const std::vector<Feature> FEATURES = {
    {"nimbus",
     {{"enable", "nimbus_enable", LEAST, MOST}},
     true,
     [] {
         int enable = 0;
         int status = 0;
         char folder[256] = "";
         nimbus_get_config(&enable, folder, &status);
         return Json{{"enable", enable}, {"folderid", folder}, {"status", status}};
     },
     [](const std::vector<int> &n, const char *folder) { nimbus_set_config(n[0], folder); }},
    {"led_disable",
     {{"disable", "led_disable", 0, 1}},
     false,
     [] {
         int disable = 0;
         led_disable_get_config(&disable);
         return Json{{"disable", disable}};
     },
     [](const std::vector<int> &n, const char *) { led_disable_set_config(n[0]); }},
    {"alert_vclip",
     {{"enable", "alert_vclip", 0, 1},
      {"duration", "alert_vclip_duration", 5, 720},
      {"prelude", "alert_vclip_prelude", 3, 30}},
     false,
     [] {
         int enable = 0;
         int duration = 0;
         int prelude = 4;
         alert_vclip_get_config(&enable, &duration, &prelude);
         return Json{{"enable", enable}, {"duration", duration}, {"prelude", prelude}};
     },
     [](const std::vector<int> &n, const char *) { alert_vclip_set_config(n[0], n[1], n[2]); }},
    {"event",
     {{"s3_setting", "event_s3_setting", LEAST, MOST},
      {"push_setting", "event_push_setting", LEAST, MOST}},
     false,
     [] {
         int s3 = 0;
         int push = 0;
         event_get_config(&s3, &push);
         return Json{{"s3_setting", s3}, {"push_setting", push}};
     },
     [](const std::vector<int> &n, const char *) { event_set_config(n[0], n[1]); }},
    {"media_server",
     {{"enable", "media_server_enable", LEAST, MOST},
      {"auth", "media_server_auth", LEAST, MOST},
      {"max_video_level", "kurento_max_video_level", LEAST, MOST}},
     false,
     [] {
         int enable = 0;
         int auth = 0;
         int level = 0;
         media_server_get_config(&enable, &auth, &level);
         return Json{{"enable", enable}, {"auth", auth}, {"max_video_level", level}};
     },
     [](const std::vector<int> &n, const char *) { media_server_set_config(n[0], n[1], n[2]); }}};

int print_all(const Call &call)
{
    std::vector<std::vector<std::string>> rows = {{"FEATURE", "FIELD", "VALUE"}};
    Json json;
    for (const Feature &feature : FEATURES) {
        json[feature.name] = feature.get();
        for (const auto &[name, value] : json[feature.name].items())
            rows.push_back({feature.name, name, text_of(value)});
    }
    if (call.json)
        print_json(json);
    else
        print(columns(rows));
    return OK;
}

int set_feature(const Call &call, const Feature &feature)
{
    const size_t wanted = feature.values.size() + (feature.folder ? 1 : 0);
    if (call.arguments.size() != wanted + 1) {
        complain(std::string(feature.name) + " takes " + std::to_string(wanted) + " values");
        return USAGE;
    }
    std::vector<int> numbers;
    for (size_t i = 0; i < feature.values.size(); i++) {
        const Value &value = feature.values[i];
        const auto given = integer(call.arguments[i + 1]);
        if (!given || *given < value.least || *given > value.most) {
            complain(std::string(value.name) + " takes a number from " +
                     std::to_string(value.least) + " to " + std::to_string(value.most) + ", not " +
                     call.arguments[i + 1]);
            return USAGE;
        }
        numbers.push_back(*given);
    }
    const std::string &folder = call.arguments.back();
    if (feature.folder && folder.size() > 255) {
        complain("folderid takes at most 255 characters");
        return USAGE;
    }
    feature.set(numbers, folder.c_str());
    for (size_t i = 0; i < numbers.size(); i++) {
        if (stored(feature.values[i].key) == std::to_string(numbers[i]))
            continue;
        complain(std::string(feature.values[i].key) + " cannot be stored");
        return STORE_FAILED;
    }
    if (feature.folder && stored("nimbus_folderid") != folder) {
        complain("nimbus_folderid cannot be stored");
        return STORE_FAILED;
    }
    return save(call);
}

} // namespace

int feature(const Call &call)
{
    const std::string &name = call.arguments[0];
    if (name == "list" && call.arguments.size() == 1)
        return print_all(call);
    const auto found = std::find_if(FEATURES.begin(), FEATURES.end(),
                                    [&](const Feature &entry) { return name == entry.name; });
    if (found == FEATURES.end()) {
        complain("no feature " + name);
        return USAGE;
    }
    return call.arguments.size() == 1 ? print_object(call, found->get())
                                      : set_feature(call, *found);
}

} // namespace cfgctl
