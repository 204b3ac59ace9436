// events, status: the event ring and the device status.

#include "cfgctl.h"

#include "cfg_set.h"
#include "events/storage.h"

#include <algorithm>
#include <ctime>
#include <fstream>

namespace cfgctl
{

namespace
{

constexpr uint32_t TYPE_MAX = 4; // that the loader takes

std::string utc(uint32_t seconds)
{
    const time_t time = seconds;
    tm parts = {};
    gmtime_r(&time, &parts);
    char text[32];
    std::strftime(text, sizeof text, "%Y-%m-%d %H:%M:%S", &parts);
    return text;
}

std::string table(const std::vector<EventQueueEntry> &events)
{
    std::vector<std::vector<std::string>> rows = {{"INDEX", "TIME (UTC)", "TYPE"}};
    for (size_t i = 0; i < events.size(); i++)
        rows.push_back({std::to_string(i), utc(events[i].time), std::to_string(events[i].type)});
    return columns(rows);
}

Json json_list(const std::vector<EventQueueEntry> &events)
{
    Json list = Json::array();
    for (const EventQueueEntry &event : events)
        list.push_back({{"type", event.type}, {"time", event.time}});
    return list;
}

int list(const Call &call)
{
    std::vector<EventQueueEntry> events;
    EventQueueEntry event = {};
    for (uint32_t i = 0; cfg_getEvent(i, &event) == 0; i++)
        events.push_back(event);
    // Asked again: one may have been added since.
    if (events.empty() && cfg_isEventQueueEmpty() != 1 && cfg_getEvent(0, &event) != 0) {
        complain("the events cannot be read");
        return NOT_FOUND;
    }
    if (call.json)
        print_json(json_list(events));
    else
        print(table(events));
    return OK;
}

int add(const std::string &given)
{
    const auto type = number(given);
    if (!type) {
        complain("an event's type is a number, not " + given);
        return USAGE;
    }
    if (*type > TYPE_MAX)
        complain("with an event of type " + given + " a restart will refuse all events");
    if (cfg_enqueueEvent(*type) != 0) {
        complain("the event was not added");
        return APPLY_FAILED;
    }
    return OK;
}

int drop(const std::string &given)
{
    const auto count = number(given);
    if (!count) {
        complain("drop takes a number of events, not " + given);
        return USAGE;
    }
    if (cfg_dequeueEvent(*count) != 0) {
        complain("no event was dropped");
        return APPLY_FAILED;
    }
    return OK;
}

int clear()
{
    if (cfg_dequeueAllEvent() != 0) {
        complain("no event was dropped");
        return APPLY_FAILED;
    }
    return OK;
}

int dump(const Call &call, const std::string &path)
{
    EventQueue ring = {};
    std::ifstream file(path, std::ios::binary);
    if (!file) {
        complain(path + " cannot be opened");
        return NOT_FOUND;
    }
    file.read(reinterpret_cast<char *>(&ring), sizeof ring);
    if (file.gcount() != sizeof ring) {
        complain(path + " is refused: it has " + std::to_string(file.gcount()) + " of " +
                 std::to_string(sizeof ring) + " bytes");
        return NOT_FOUND;
    }

    std::vector<EventQueueEntry> events;
    for (uint32_t i = 0; i < std::min<uint32_t>(ring.count, EVENT_QUEUE_SIZE); i++)
        events.push_back(ring.slots[slot_of(ring.head + i)]);
    const bool good = checkEventQueue(&ring) == 0;
    if (call.json)
        print_json(Json{{"valid", good},
                        {"head", ring.head},
                        {"tail", ring.tail},
                        {"count", ring.count},
                        {"events", json_list(events)}});
    else
        print("head " + std::to_string(ring.head) + ", tail " + std::to_string(ring.tail) +
              ", count " + std::to_string(ring.count) + "\n" + table(events));
    if (!good)
        complain(path + " is refused, for the reason above");
    return good ? OK : NOT_FOUND;
}

} // namespace

int events(const Call &call)
{
    if (call.arguments.empty())
        return list(call);
    const std::string &action = call.arguments[0];
    if (call.arguments.size() == 1 && action == "clear")
        return clear();
    if (call.arguments.size() == 2 && action == "add")
        return add(call.arguments[1]);
    if (call.arguments.size() == 2 && action == "drop")
        return drop(call.arguments[1]);
    if (call.arguments.size() == 2 && action == "dump")
        return dump(call, call.arguments[1]);
    complain("events takes nothing, add TYPE, drop N, clear or dump FILE");
    return USAGE;
}

int status(const Call &call)
{
    if (!call.arguments.empty()) {
        const auto value = number(call.arguments[0]);
        if (!value || *value > UINT8_MAX) {
            complain("the status is a number from 0 to 255, not " + call.arguments[0]);
            return USAGE;
        }
        if (cfg_setDeviceStatus(static_cast<uint8_t>(*value)) != 0) {
            complain("the status was not stored");
            return APPLY_FAILED;
        }
        return OK;
    }
    const int value = cfg_getDeviceStatus();
    if (call.json)
        print_json(Json{{"status", value}});
    else
        print(std::to_string(value) + "\n");
    if (value == UINT8_MAX) {
        complain("no status is stored, or 255 is");
        return NOT_FOUND;
    }
    return OK;
}

} // namespace cfgctl
