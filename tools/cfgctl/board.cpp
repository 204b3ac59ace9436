// board: what the board says of itself.

#include "cfgctl.h"

#include "cfg_set.h"

namespace cfgctl
{

int board(const Call &call)
{
    constexpr struct {
        const char *name;
        unsigned long index;
    } QUERIES[] = {
        {"boardid", BOARD_INFO_BOARDID}, {"sn", BOARD_INFO_SN}, {"hwver", BOARD_INFO_HWVER}};

    int result = OK;
    std::vector<std::vector<std::string>> rows;
    Json json = Json::object();
    for (const auto &query : QUERIES) {
        char text[256] = "";
        const bool answered = cfg_getBoardInfo(query.index, text, sizeof text) == 0;
        if (!answered) {
            complain(std::string("the board does not tell its ") + query.name);
            result = NOT_FOUND;
        }
        rows.push_back({query.name, answered ? text : "-"});
        json[query.name] = answered ? Json(text) : Json();
    }

    const struct {
        const char *name;
        int has;
    } FEATURES[] = {{"slip_ring", cfg_is_slip_ring_model()},
                    {"ethernet", cfg_check_eth_support_by_hwver()},
                    {"differential_audio", cfg_is_audio_differential()},
                    {"wled", cfg_isWLEDVersion()},
                    {"rlamp", cfg_isRlampVersion()}};
    for (const auto &feature : FEATURES) {
        rows.push_back({feature.name, std::to_string(feature.has)});
        json[feature.name] = feature.has != 0;
    }
    if (call.json)
        print_json(json);
    else
        print(columns(rows));
    return result;
}

} // namespace cfgctl
