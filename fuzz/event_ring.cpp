// Any file on the card, read by the first call after a restart. The input is a
// recipe: the clock (4 bytes), the file's length (2), then words to set in a
// file of zeros (2 bytes place, 4 bytes value each).

#include "events/storage.h"

#include "target.h"

#include <algorithm>
#include <cstring>
#include <fstream>
#include <iterator>
#include <sys/shm.h>
#include <unistd.h>

using namespace cfg_set;

static uint32_t now;

// clang-format off
extern "C" time_t time(time_t *) { return now; }
// clang-format on

extern "C" int system(const char *line)
{
    require(std::string(line) == "rm -rf /mnt/sdcard/video/.event");
    return unlink(EVENT_QUEUE_FILE);
}

static std::string on_card()
{
    std::ifstream file(EVENT_QUEUE_FILE, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

static std::string in_memory()
{
    EventQueue *queue = getEventQueue();
    std::string bytes(reinterpret_cast<const char *>(queue), sizeof *queue);
    putEventQueue(queue);
    return bytes;
}

static uint32_t word(const std::string &file, size_t number)
{
    uint32_t value = 0;
    memcpy(&value, file.data() + number * sizeof value, sizeof value);
    return value;
}

// Whether the file is a ring, said another way than the loader says it.
static bool is_ring(const std::string &file)
{
    if (file.size() < sizeof(EventQueue))
        return false;
    const uint32_t head = word(file, 0), tail = word(file, 1), count = word(file, 2);
    if (head > 511 || tail > 511 || count > 512 || (head + count) % 512 != tail)
        return false;
    for (size_t i = 3; i < 3 + 2 * 512; i += 2)
        if (word(file, i) > 4 || (now > 1390000000 && word(file, i + 1) >= now))
            return false;
    return true;
}

void try_input(const std::string &input)
{
    constexpr size_t EDIT = 6, LONGEST = 5000;
    if (input.size() < EDIT)
        return;
    uint16_t length = 0, place = 0;
    memcpy(&now, &input[0], sizeof now);
    memcpy(&length, &input[sizeof now], sizeof length);
    std::string file(LONGEST, '\0');
    for (size_t at = EDIT; at + EDIT <= input.size(); at += EDIT) {
        memcpy(&place, &input[at], sizeof place);
        memcpy(file.data() + place % (LONGEST / 4) * 4, &input[at + sizeof place], 4);
    }
    file.resize(length % (LONGEST + 1));
    put(EVENT_QUEUE_FILE, file);
    shmctl(shmget(EVENT_SHM_KEY, 0, 0), IPC_RMID, nullptr);

    const bool good = is_ring(file);
    const bool empty = cfg_isEventQueueEmpty() == 1;
    const std::string ring =
        (good ? file : std::string(LONGEST, '\0')).substr(0, sizeof(EventQueue));
    const uint32_t count = word(ring, 2);
    require(in_memory() == ring);
    require(empty == (count == 0));
    require(on_card() == (good ? file : ""));

    // What was loaded works.
    EventQueueEntry event = {};
    require((cfg_getEvent(count - 1, &event) == 0) == (count > 0));
    require(cfg_dequeueEvent(1) == 0);
    require(cfg_enqueueEvent(3) == 0);
    require(on_card() == in_memory());
    require(cfg_getEvent(std::max(count, 1U) - 1, &event) == 0);
    require(event.type == 3 && event.time == now);
}
