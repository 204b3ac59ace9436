// events: the event ring.

#include "cfgctl.h"

#include "cfg_set.h"
#include "events/storage.h"

#include <algorithm>
#include <cerrno>
#include <cstring>

namespace cfgctl
{

constexpr uint32_t TYPE_MAX = 4; // that the loader accepts

static void require(int result, const char *otherwise)
{
    if (result != 0)
        fail(APPLY_FAILED, otherwise);
}

static Json entry(const EventQueueEntry &event)
{
    return {{"time", event.time}, {"type", event.type}};
}

void events_list(Call &call)
{
    EventQueueEntry event = {};
    call.data = Json::array();
    call.fields = {"index", "time", "type"};
    for (uint32_t i = 0; cfg_getEvent(i, &event) == 0; i++)
        call.data.push_back(entry(event));
    // Check again: one may have been added since.
    if (call.data.empty() && cfg_isEventQueueEmpty() != 1 && cfg_getEvent(0, &event) != 0)
        fail(NOT_FOUND, "the events cannot be read");
}

void events_add(Call &call)
{
    const auto type = static_cast<uint32_t>(*number(call.words[0]));
    if (type > TYPE_MAX && !call.has(FORCE))
        fail(USAGE, "with an event of type " + call.words[0] +
                        " a restart will reject all events; --force adds it anyway");
    require(cfg_enqueueEvent(type), "the event was not added");
}

void events_drop(Call &call)
{
    require(cfg_dequeueEvent(static_cast<uint32_t>(*number(call.words[0]))),
            "no event was dropped");
}

void events_clear(Call &)
{
    require(cfg_dequeueAllEvent(), "no event was dropped");
}

void events_dump(Call &call)
{
    const std::string &path = call.words[0];
    cfg_set::EventQueue ring = {};
    FILE *file = std::fopen(path.c_str(), "re");
    if (!file)
        fail(NOT_FOUND, path + ": " + std::strerror(errno));
    const size_t length = std::fread(&ring, 1, sizeof ring, file);
    std::fclose(file);
    if (length != sizeof ring)
        fail(NOT_FOUND, path + " is invalid: it has " + std::to_string(length) + " of " +
                            std::to_string(sizeof ring) + " bytes");

    const bool good = cfg_set::checkEventQueue(&ring) == 0;
    Json list = Json::array();
    for (uint32_t i = 0; i < std::min<uint32_t>(ring.count, EVENT_QUEUE_SIZE); i++)
        list.push_back(entry(ring.slots[cfg_set::slot_of(ring.head + i)]));
    call.text = "head " + std::to_string(ring.head) + ", tail " + std::to_string(ring.tail) +
                ", count " + std::to_string(ring.count) + "\n" +
                table(list, {"index", "time", "type"});
    call.data = {{"valid", good},
                 {"head", ring.head},
                 {"tail", ring.tail},
                 {"count", ring.count},
                 {"events", list}};
    if (good)
        return;
    complain(path + " is invalid, for the reason above");
    call.status = NOT_FOUND;
}

} // namespace cfgctl
