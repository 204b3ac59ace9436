// The event ring of one process: what loads, what is stored, what is reported.

#include "doubles.h"
#include "events/lock.h"
#include "events/storage.h"

#include <csignal>
#include <sys/resource.h>
#include <sys/sem.h>
#include <sys/shm.h>
#include <unistd.h>

using namespace cfg_set;
using namespace doubles;

// clang-format off

static const std::string CARD = "/mnt/sdcard/video/.event";
constexpr key_t LOCK = 0x20130001;
constexpr uint32_t NOW = 1700000000, FLOOR = 1390000000, IN_2040 = 2208988800; // beyond 31 bits

static const Calls HELD = {"lock 20130001", "shmget 20130002 4108 666", "unlock 20130001"};
static const Calls MADE = {HELD[0], HELD[1], "shmget 20130002 4108 1666"};
static const Calls LOADED = MADE + Calls{HELD[2]};

class EventQueueTest : public LibraryTest
{
  protected:
    void SetUp() override
    {
        LibraryTest::SetUp();
        clock_now = NOW;
        write_file("/mnt/sdcard/video/other", "");
        quietly([] { return sem_put(sem_get(LOCK)) + cfg_isEventQueueEmpty(); });
    }
};

using Slots = std::map<uint32_t, EventQueueEntry>;

static EventQueue ring(uint32_t head, uint32_t tail, uint32_t count, const Slots &slots = {})
{
    EventQueue queue = {head, tail, count, {}};
    for (const auto &[slot, event] : slots)
        queue.slots[slot] = event;
    return queue;
}

static std::string bytes(const EventQueue &queue)
{
    return {reinterpret_cast<const char *>(&queue), sizeof queue};
}

static Given file(uint32_t head, uint32_t tail, uint32_t count, const Slots &slots = {})
{
    return {{CARD, bytes(ring(head, tail, count, slots))}};
}

// "HEAD TAIL COUNT", then " SLOT=TYPE@TIME" of the slots that are not zero.
static std::string told(const EventQueue &queue)
{
    std::string text = words(queue.head, queue.tail, queue.count);
    for (uint32_t i = 0; i < EVENT_QUEUE_SIZE; i++)
        if (const auto &[type, time] = queue.slots[i]; type != 0 || time != 0)
            text += " " + word(i) + "=" + word(type) + "@" + word(time);
    return text;
}

static int segment()
{
    const int id = shmget(EVENT_SHM_KEY, 0, 0);
    calls.pop_back();
    return id;
}

// The ring, first made `value` if there is one; without a trace among the calls.
static EventQueue memory(const EventQueue *value = nullptr)
{
    const Calls made = calls;
    const std::set<std::string> refusals = std::exchange(refused, {});
    EventQueue *queue = getEventQueue();
    const EventQueue found = value ? *queue = *value : *queue;
    putEventQueue(queue);
    calls = made;
    refused = refusals;
    return found;
}

// The result of a call on this ring, the ring that it leaves, and what is on the card.
template <typename Result, typename... Taken, typename... Given>
static std::string on(const EventQueue &before, Result (*call)(Taken...), Given... given)
{
    memory(&before);
    const std::string card = read_file(CARD);
    std::string text = words(call(static_cast<Taken>(given)...));
    const EventQueue after = memory();
    text += " " + told(after);
    if (const std::string now = read_file(CARD); now != card) {
        text += now == bytes(after) ? " saved" : " saved in part";
        card.empty() ? void(unlink(CARD.c_str())) : write_file(CARD, card);
    }
    refused.clear();
    shmid_ds state = {};
    shmctl(segment(), IPC_STAT, &state);
    semctl(semget(LOCK, 1, 0), 0, SETVAL, 1); // where it could not be given back
    return text + (state.shm_nattch == 0 ? "" : " attached");
}

#define ON(ring, call, ...) CALL_AS(call, on(ring, call, ##__VA_ARGS__))
#define PEEK(ring, index) CALL_AS(cfg_getEvent, on(ring, peek, index))

static std::string peek(uint32_t index)
{
    EventQueueEntry event = {8, 9};
    const int result = cfg_getEvent(index, &event);
    return words(result, event.type, event.time);
}

// The first call after a restart, at this time: its result and what was loaded.
static std::string boot(time_t now = NOW)
{
    shmctl(segment(), IPC_RMID, nullptr);
    semctl(semget(LOCK, 1, 0), 0, IPC_RMID);
    calls.clear();
    clock_now = now;
    const int result = cfg_isEventQueueEmpty();
    return words(result, told(memory()));
}

TEST_F(EventQueueTest, LoaderTakesRingsAndRefusesTheRest)
{
    const Calls drop = MADE + Calls{"system rm -rf " + CARD, HELD[2]};
    const std::string none = "1 0 0 0", fail = "[getEventQueue #] load fail";
    const std::string missing = "[getEventQueue #] [" + CARD + "] not found";
    const auto bad = [&](const std::string &text) { return "[checkEventQueue #] invalid " + text + "\n" + fail; };
    check({
        {CALL(boot()), none, LOADED, missing},
        {{{CARD + "/", ""}}, CALL(boot()), none, LOADED, missing}, // cannot be written
        {file(0, 0, 0), CALL(boot()), none, LOADED},
        {file(7, 7, 0, {{511, {4, NOW - 1}}}), CALL(boot()), "1 7 7 0 511=4@1699999999", LOADED},
        {file(7, 7, 512), CALL(boot()), "0 7 7 512", LOADED},
        {file(510, 2, 4), CALL(boot()), "0 510 2 4", LOADED},
        {file(0, 511, 511), CALL(boot()), "0 0 511 511", LOADED},
        {{{CARD, bytes(ring(5, 4, 511)) + "more"}}, CALL(boot()), "0 5 4 511", LOADED},
        {file(0, 0, 0, {{9, {0, FLOOR}}}), CALL(boot(FLOOR)), "1 0 0 0 9=0@1390000000", LOADED},
        {file(0, 0, 0, {{9, {0, FLOOR + 1}}}), CALL(boot(1)), "1 0 0 0 9=0@1390000001", LOADED},
        {file(0, 0, 0, {{9, {0, IN_2040 - 1}}}), CALL(boot(IN_2040)), "1 0 0 0 9=0@2208988799", LOADED},

        {file(600, 0, 513), CALL(boot()), none, drop, bad("count[513]")},
        {file(0, 0, UINT32_MAX), CALL(boot()), none, drop, bad("count[4294967295]")},
        {file(512, 0, 0), CALL(boot()), none, drop, bad("head[512] or tail[0]")},
        {file(0, 512, 512), CALL(boot()), none, drop, bad("head[0] or tail[512]")},
        {file(3, UINT32_MAX, 0), CALL(boot()), none, drop, bad("head[3] or tail[4294967295]")},
        {file(3, 3, 1, {{0, {5, 0}}}), CALL(boot()), none, drop, bad("head[3] tail[3] count[1]")},
        {file(3, 5, 3), CALL(boot()), none, drop, bad("head[3] tail[5] count[3]")},
        {file(3, 5, 0), CALL(boot()), none, drop, bad("head[3] tail[5] count[0]")},
        {file(5, 3, 2), CALL(boot()), none, drop, bad("head[5] tail[3] count[2]")},
        {file(0, 0, 0, {{511, {5, 0}}}), CALL(boot()), none, drop, bad("type i[511][5]")},
        {file(0, 0, 0, {{0, {UINT32_MAX, NOW}}}), CALL(boot()), none, drop, bad("type i[0][4294967295]")},
        {file(0, 0, 0, {{1, {0, NOW}}, {2, {9, 0}}}), CALL(boot()), none, drop,
            bad("time i[1][1700000000] >= now[1700000000]")},
        {file(0, 0, 0, {{9, {0, UINT32_MAX}}}), CALL(boot(FLOOR + 1)), none, drop,
            bad("time i[9][4294967295] >= now[1390000001]")},
        {file(0, 0, 0, {{9, {0, IN_2040}}}), CALL(boot(IN_2040)), none, drop,
            bad("time i[9][2208988800] >= now[2208988800]")},
        {{{CARD, bytes(ring(0, 0, 0)).erase(4107)}}, CALL(boot()), none, drop, fail},
        {{{CARD, ""}}, CALL(boot()), none, drop, fail},
    });
}

TEST_F(EventQueueTest, ChangesAreMadeInMemoryAndOnTheCard)
{
    record_time = true;
    const Calls stamped = {"time", HELD[0], HELD[1], HELD[2]};
    const EventQueue none = ring(7, 7, 0), full = ring(100, 100, 512);
    const EventQueue two = ring(511, 1, 2, {{511, {3, 5}}, {0, {4, 6}}});
    const std::string same = " 511 1 2 0=4@6 511=3@5";
    check({
        {ON(none, cfg_isEventQueueEmpty), "1 7 7 0", HELD},
        {ON(full, cfg_isEventQueueEmpty), "0 100 100 512", HELD},
        {ON(ring(3, 4, 0), cfg_isEventQueueEmpty), "0 3 4 0", HELD},
        {{{CARD, "trusted no more"}}, ON(none, cfg_isEventQueueEmpty), "1 7 7 0", HELD},

        {ON(ring(511, 511, 0), cfg_enqueueEvent, 3), "0 511 0 1 511=3@1700000000 saved", stamped},
        {{{CARD, bytes(full) + "more"}}, ON(ring(9, 2, 505), cfg_enqueueEvent, UINT32_MAX),
            "0 9 3 506 2=4294967295@1700000000 saved", stamped},
        {ON(full, cfg_enqueueEvent, 1), "-1 100 100 512", stamped, "EventQueue is full"},
        {ON(ring(3, 3, 511), cfg_enqueueEvent, 0), "0 3 4 512 3=0@1700000000 saved", stamped},
        {ON(ring(3, 4, 512), cfg_enqueueEvent, 0), "0 3 5 513 4=0@1700000000 saved", stamped},

        {PEEK(two, 0), "0 3 5" + same, HELD},
        {PEEK(two, 1), "0 4 6" + same, HELD},
        {PEEK(two, 2), "-1 8 9" + same, HELD},
        {PEEK(two, UINT32_MAX), "-1 8 9" + same, HELD},
        {PEEK(none, 0), "-1 8 9 7 7 0", HELD},
        {CALL(cfg_getEvent(0, nullptr)), -1, {}, "event buffer is null"},

        {ON(none, cfg_dequeueEvent, 1), "0 7 7 0", HELD},
        {ON(two, cfg_dequeueEvent, 0), "0" + same + " saved", HELD},
        {ON(two, cfg_dequeueEvent, 1), "0 0 1 1 0=4@6 511=3@5 saved", HELD},
        {ON(full, cfg_dequeueEvent, UINT32_MAX), "0 100 100 0 saved", HELD},
        {ON(none, cfg_dequeueAllEvent), "0 7 7 0", HELD},
        {ON(two, cfg_dequeueAllEvent), "0 0 0 0 0=4@6 511=3@5 saved", HELD},
    });
    clock_now = IN_2040;
    check({{ON(none, cfg_enqueueEvent, 7), "0 7 8 1 7=7@2208988800 saved", stamped}});
}

TEST_F(EventQueueTest, EveryCallReportsWhatFails)
{
    const std::string id = word(segment()), lock = word(semget(LOCK, 1, 0)), get = "[getEventQueue #] ";
    const std::string no_lock = "sem_get fail iSemId[-1]\n! | error ";
    const std::string no_memory = " errno[12][Cannot allocate memory]\ngetEventQueue fail";
    const EventQueue none = ring(7, 7, 0), one = ring(7, 8, 1);
    const auto fails = [&](const Call &call, const Result &failed, const std::string &made, const std::string &saved) {
        check({
            {{}, {"semget"}, call, failed, {},
                no_lock + "creating semaphore.\n! | sem_get: Cannot allocate memory"},
            {{}, {"semop"}, call, failed, {HELD[0]}, no_lock + "getting semaphore."},
            {{}, {"shmget"}, call, failed, LOADED, get + "shmget fail iShmId[-1]" + no_memory},
            {{}, {"shmat"}, call, failed, HELD, get + "shmat fail iShmId[" + id + "]" + no_memory},
            {{}, {"unlock"}, call, made + saved, HELD, "sem_put fail iSemId[" + lock + "]\n! | error releasing semaphore."},
            {{{CARD + "/", ""}}, call, made, HELD, saved.empty() ? "" :
                "[saveEventQueue #] fopen [" + CARD + "] fail errno[21][Is a directory]\nsaveEventQueue fail"},
        });
    };
    fails(ON(none, cfg_isEventQueueEmpty), "0 7 7 0", "1 7 7 0", "");
    fails(ON(one, cfg_enqueueEvent, 0), "-1 7 8 1", "0 7 9 2 8=0@1700000000", " saved");
    fails(ON(one, cfg_dequeueEvent, 1), "-1 7 8 1", "0 8 8 0", " saved");
    fails(ON(one, cfg_dequeueAllEvent), "-1 7 8 1", "0 0 0 0", " saved");
    fails(CALL_AS(cfg_getEvent, on(one, peek, 0).erase(2, 4)), "-1 7 8 1", "0 7 8 1", "");
}

// Takes and gives back a lock, while a signal interrupts the first two of these operations.
static int interrupted(const std::string &operation)
{
    failing = {{operation, EINTR}};
    before_call = [] {
        if (calls.size() == 2)
            failing.clear();
    };
    return sem_put(sem_get(LOCK));
}

// What a new lock is worth when it is taken and when it is given back.
static std::string new_lock()
{
    semctl(semget(0x4321, 1, 0), 0, IPC_RMID);
    const int lock = sem_get(0x4321), taken = semctl(lock, 0, GETVAL), given = sem_put(lock);
    return words(lock >= 0, taken, given, semctl(lock, 0, GETVAL));
}

TEST_F(EventQueueTest, LocksAddressesAndAFullCard)
{
    auto *elsewhere = reinterpret_cast<EventQueue *>(0x1000); // NOLINT(performance-no-int-to-ptr)
    failed_address = reinterpret_cast<void *>(-1); // NOLINT(performance-no-int-to-ptr)
    std::signal(SIGXFSZ, SIG_IGN);
    const std::string &take = HELD[0], &give = HELD[2], again = "! | error getting semaphore.";
    const rlimit limits[] = {{4096, RLIM_INFINITY}, {RLIM_INFINITY, RLIM_INFINITY}};
    setrlimit(RLIMIT_FSIZE, &limits[0]);
    check({
        {CALL(new_lock()), "1 0 0 1", {"lock 4321", "unlock 4321"}},
        {{}, {"SETALL"}, CALL(new_lock()), "0 -1 -1 -1", {}, "! | SETALL failed (12)"},
        {CALL(sem_put(-1)), -1},
        {CALL(interrupted("semop")), 0, {take, take, take, give}, again + "\n" + again},
        {CALL(interrupted("unlock")), 0, {take, give, give}, "! | error releasing semaphore."},
        {{}, {"shmat"}, CALL(getEventQueue() == failed_address), 1, {HELD[1]}}, // only null is none
        {{}, {"shmdt"}, CALL_AS(putEventQueue, (putEventQueue(nullptr), putEventQueue(elsewhere), 0)), 0,
            {}, "shmdt fail ptQueue[0x1000] ret[-1] errno[12][Cannot allocate memory]"},
        {ON(ring(0, 0, 0), cfg_enqueueEvent, 2), "0 0 1 1 0=2@1700000000 saved in part", HELD,
            "[saveEventQueue #] dwWrite[4096] != dwSize[4108]\nsaveEventQueue fail"},
    });
    setrlimit(RLIMIT_FSIZE, &limits[1]);
}

TEST_F(EventQueueTest, DamagedMemoryIsNotLeft)
{
    constexpr size_t PAGES = 8192; // what is attached for 4108 bytes
    for (const uint32_t index : {512U, 513U, 100000U, 0x20000000U, UINT32_MAX})
        for (const uint32_t count : {0U, 5U, 512U, 513U, UINT32_MAX}) {
            const EventQueue damaged = ring(index, index - count / 2, count);
            memory(&damaged);
            quietly([] { return cfg_enqueueEvent(1); });
            peek(0);
            peek(count - 1);
            cfg_dequeueEvent(2);
            quietly([] { return cfg_enqueueEvent(2); });
            EventQueue *queue = getEventQueue();
            const std::string end(reinterpret_cast<const char *>(queue + 1), PAGES - sizeof *queue);
            EXPECT_EQ(end.find_first_not_of('\0'), std::string::npos);
            putEventQueue(queue);
            EXPECT_EQ(cfg_dequeueAllEvent(), 0);
            EXPECT_EQ(cfg_isEventQueueEmpty(), 1);
        }
}
