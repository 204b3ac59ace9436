// The event ring of one process: what loads, what is stored, what is reported.

#include "doubles.h"
#include "events/storage.h"

#include <csignal>
#include <cstring>
#include <sys/resource.h>
#include <sys/sem.h>
#include <sys/shm.h>
#include <unistd.h>

using namespace doubles;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr uint32_t NOW = 1700000000;
constexpr uint32_t FLOOR = 1390000000;

// What is in memory is gone; what is on the card is not.
static void restart()
{
    shmctl(shmget(EVENT_SHM_KEY, 0, 0), IPC_RMID, nullptr);
    semctl(semget(EVENT_SEM_KEY, 0, 0), 0, IPC_RMID);
    calls.clear();
}

class EventQueueTest : public LibraryTest
{
  protected:
    void SetUp() override
    {
        LibraryTest::SetUp();
        run_commands = true;
        clock_now = NOW;
        observe([] { return run_program({"/bin/sh", "-c", "rm -rf /mnt/sdcard/*"}).result; });
        write_file("/mnt/sdcard/video/other", "");
        restart();
        // Without a file there is a report; a ring that is there has none.
        EXPECT_EQ(observe(cfg_isEventQueueEmpty).out,
                  "[getEventQueue #] [/mnt/sdcard/video/.event] not found\n");
        calls.clear();
    }
};

static EventQueue ring()
{
    EventQueue *queue = getEventQueue();
    const EventQueue copy = *queue;
    putEventQueue(queue);
    return copy;
}

static void put_ring(const EventQueue &value)
{
    EventQueue *queue = getEventQueue();
    *queue = value;
    putEventQueue(queue);
}

static std::string bytes(const EventQueue &queue)
{
    return {reinterpret_cast<const char *>(&queue), sizeof queue};
}

static std::string card()
{
    return read_file(EVENT_QUEUE_FILE);
}

static EventQueue indices(uint32_t head, uint32_t tail, uint32_t count)
{
    EventQueue queue{};
    queue.head = head;
    queue.tail = tail;
    queue.count = count;
    return queue;
}

static void enqueue(uint32_t events)
{
    for (uint32_t i = 0; i < events; i++)
        ASSERT_EQ(cfg_enqueueEvent(i % 5), 0);
}

static std::vector<uint32_t> types()
{
    std::vector<uint32_t> found;
    EventQueueEntry event{};
    for (uint32_t i = 0; cfg_getEvent(i, &event) == 0; i++)
        found.push_back(event.type);
    return found;
}

TEST_F(EventQueueTest, FirstCallLoadsTheCardAndLaterOnesTrustTheMemory)
{
    enqueue(2);
    restart();
    clock_now = NOW + 1;
    EXPECT_EQ(observe(cfg_isEventQueueEmpty).out, "");
    EXPECT_THAT(calls, ElementsAre("shmget 20130002 4108 666", "shmget 20130002 4108 1666"));
    EXPECT_THAT(types(), ElementsAre(0, 1));

    write_file(EVENT_QUEUE_FILE, "damaged");
    calls.clear();
    EXPECT_EQ(observe(cfg_isEventQueueEmpty).out, "");
    EXPECT_EQ(card(), "damaged");
    EXPECT_THAT(calls, ElementsAre("shmget 20130002 4108 666"));
}

TEST_F(EventQueueTest, LoaderTakesRingsAndRefusesTheRest)
{
    struct Image {
        EventQueue indices;
        std::vector<std::pair<int, EventQueueEntry>> slots;
        const char *report = "";
        time_t now = NOW;
        size_t length = sizeof(EventQueue);
    };
    const std::string later = std::to_string(NOW);
    const std::vector<Image> images = {
        {indices(0, 0, 0), {}},
        {indices(7, 7, 0), {{511, {4, NOW - 1}}}},
        {indices(7, 7, 512), {}},
        {indices(510, 2, 4), {}},
        {indices(0, 511, 511), {}},
        {indices(5, 4, 511), {}, "", NOW, 5000},
        {indices(0, 0, 0), {{9, {0, UINT32_MAX}}}, "", FLOOR},
        {indices(0, 0, 0), {{9, {0, FLOOR + 1}}}, "", 1},

        {indices(600, 0, 513), {}, "invalid count[513]"},
        {indices(0, 0, UINT32_MAX), {}, "invalid count[4294967295]"},
        {indices(512, 0, 0), {}, "invalid head[512] or tail[0]"},
        {indices(0, UINT32_MAX, 0), {}, "invalid head[0] or tail[4294967295]"},
        {indices(3, 3, 1), {{0, {5, 0}}}, "invalid head[3] tail[3] count[1]"},
        {indices(3, 3, 511), {}, "invalid head[3] tail[3] count[511]"},
        {indices(3, 5, 3), {}, "invalid head[3] tail[5] count[3]"},
        {indices(3, 5, 0), {}, "invalid head[3] tail[5] count[0]"},
        {indices(5, 3, 509), {}, "invalid head[5] tail[3] count[509]"},
        {indices(5, 3, 2), {}, "invalid head[5] tail[3] count[2]"},
        {indices(0, 0, 0), {{511, {5, 0}}}, "invalid type i[511][5]"},
        {indices(0, 0, 0), {{0, {UINT32_MAX, NOW}}}, "invalid type i[0][4294967295]", FLOOR},
        {indices(0, 0, 0),
         {{1, {0, NOW}}, {2, {9, 0}}},
         "invalid time i[1][1700000000] >= now[1700000000]"},
        {indices(0, 0, 0), {{1, {9, NOW}}}, "invalid type i[1][9]"},
        {indices(0, 0, 0),
         {{9, {0, UINT32_MAX}}},
         "invalid time i[9][4294967295] >= now[1390000001]",
         FLOOR + 1},
        {indices(0, 0, 0), {}, nullptr, NOW, 4107},
        {indices(0, 0, 0), {}, nullptr, NOW, 0},
    };
    for (size_t i = 0; i < images.size(); i++) {
        SCOPED_TRACE("image " + std::to_string(i));
        const Image &image = images[i];
        EventQueue loaded = image.indices;
        for (const auto &[slot, entry] : image.slots)
            loaded.slots[slot] = entry;
        std::string file = bytes(loaded);
        file.resize(image.length, 'x');
        write_file(EVENT_QUEUE_FILE, file);
        restart();
        clock_now = image.now;

        std::string reports;
        if (image.report && *image.report)
            reports = std::string("[checkEventQueue #] ") + image.report + "\n";
        const bool is_refused = !image.report || *image.report;
        if (is_refused)
            reports += "[getEventQueue #] load fail\n";
        const Outcome outcome = observe(cfg_isEventQueueEmpty);
        EXPECT_EQ(outcome.out, reports);
        EXPECT_EQ(outcome.result, is_refused || loaded.count == 0);
        EXPECT_EQ(bytes(ring()), bytes(is_refused ? EventQueue{} : loaded));
        if (is_refused) {
            EXPECT_THAT(recorded("system"), ElementsAre("rm -rf /mnt/sdcard/video/.event"));
            EXPECT_NE(access(EVENT_QUEUE_FILE, F_OK), 0);
        } else {
            EXPECT_THAT(recorded("system"), IsEmpty());
            EXPECT_EQ(card(), file);
        }
    }
}

TEST_F(EventQueueTest, EventsAreKeptInOrderRoundTheEndAndOnTheCard)
{
    put_ring(indices(511, 511, 0));
    clock_now = NOW + 5;
    EXPECT_EQ(cfg_enqueueEvent(3), 0);
    clock_now = NOW + 4; // a clock may be set back
    EXPECT_EQ(cfg_enqueueEvent(UINT32_MAX), 0);

    EventQueue expected = indices(511, 1, 2);
    expected.slots[511] = {3, NOW + 5};
    expected.slots[0] = {UINT32_MAX, NOW + 4};
    EXPECT_EQ(bytes(ring()), bytes(expected));
    EXPECT_EQ(card(), bytes(expected));

    EventQueueEntry event = {8, 8};
    EXPECT_EQ(cfg_getEvent(2, &event), -1);
    EXPECT_EQ(cfg_getEvent(UINT32_MAX, &event), -1);
    EXPECT_EQ(event.type + event.time, 16U);
    EXPECT_EQ(cfg_getEvent(1, &event), 0);
    EXPECT_EQ(event.type, UINT32_MAX);
    EXPECT_EQ(event.time, NOW + 4);
    EXPECT_EQ(card(), bytes(expected)) << "peeking changes nothing";

    EXPECT_EQ(cfg_dequeueEvent(1), 0);
    expected.head = 0;
    expected.count = 1;
    EXPECT_EQ(card(), bytes(expected)) << "a dropped slot keeps what it had";
    EXPECT_EQ(bytes(ring()), bytes(expected));
}

TEST_F(EventQueueTest, FullRingRefusesAnotherEvent)
{
    put_ring(indices(100, 100, 0));
    enqueue(512);
    EXPECT_EQ(cfg_isEventQueueEmpty(), 0);
    const std::string full = bytes(ring());
    EXPECT_EQ(ring().head, ring().tail);
    unlink(EVENT_QUEUE_FILE);

    const Outcome outcome = observe([] { return cfg_enqueueEvent(1); });
    EXPECT_EQ(outcome.result, -1);
    EXPECT_EQ(outcome.out, "[cfg_enqueueEvent #] EventQueue is full\n");
    EXPECT_EQ(bytes(ring()), full);
    EXPECT_NE(access(EVENT_QUEUE_FILE, F_OK), 0) << "nothing is written";
    EXPECT_EQ(types().size(), 512U);

    EXPECT_EQ(cfg_dequeueEvent(1), 0);
    EXPECT_EQ(cfg_enqueueEvent(1), 0);
    EXPECT_EQ(ring().head, 101U);
    EXPECT_EQ(ring().tail, 101U);
}

TEST_F(EventQueueTest, DroppingTakesTheOldestAndSavesOnlyAChange)
{
    const auto drop = [](uint32_t count, bool all) {
        unlink(EVENT_QUEUE_FILE);
        const Outcome outcome =
            observe([&] { return all ? cfg_dequeueAllEvent() : cfg_dequeueEvent(count); });
        EXPECT_EQ(outcome.result, 0);
        EXPECT_EQ(outcome.out + outcome.err, "");
        return access(EVENT_QUEUE_FILE, F_OK) == 0;
    };
    EXPECT_FALSE(drop(1, false)) << "an empty ring is not written";
    EXPECT_FALSE(drop(0, true));

    put_ring(indices(509, 509, 0));
    enqueue(5);
    EXPECT_TRUE(drop(0, false)) << "dropping none writes the copy anew";
    EXPECT_EQ(ring().count, 5U);
    EXPECT_TRUE(drop(4, false));
    EXPECT_THAT(types(), ElementsAre(4));
    EXPECT_TRUE(drop(UINT32_MAX, false));
    EXPECT_EQ(ring().head, ring().tail);
    EXPECT_EQ(ring().tail, 2U);
    EXPECT_EQ(cfg_isEventQueueEmpty(), 1);

    enqueue(5);
    EventQueue expected = ring();
    expected.head = expected.tail = expected.count = 0;
    EXPECT_TRUE(drop(0, true));
    EXPECT_EQ(bytes(ring()), bytes(expected)) << "the slots keep what they had";
    EXPECT_EQ(card(), bytes(expected));
}

TEST_F(EventQueueTest, TypeThatTheLoaderRefusesLosesAllAtARestart)
{
    enqueue(3);
    EXPECT_EQ(observe([] { return cfg_enqueueEvent(7); }).out, "");
    restart();
    clock_now = NOW + 1;
    const Outcome outcome = observe(cfg_isEventQueueEmpty);
    EXPECT_EQ(outcome.result, 1);
    EXPECT_EQ(outcome.out,
              "[checkEventQueue #] invalid type i[3][7]\n[getEventQueue #] load fail\n");
}

TEST_F(EventQueueTest, MissingBufferIsReportedWithoutTheLock)
{
    restart();
    const Outcome outcome = observe([] { return cfg_getEvent(0, nullptr); });
    EXPECT_EQ(outcome.result, -1);
    EXPECT_EQ(outcome.out, "[cfg_getEvent #] event buffer is null\n");
    EXPECT_EQ(semget(EVENT_SEM_KEY, 1, 0), -1);
}

TEST_F(EventQueueTest, EveryCallReportsThatItCannotHaveLockOrRing)
{
    EventQueueEntry event{};
    const std::vector<std::tuple<std::string, std::function<int()>, int>> operations = {
        {"cfg_isEventQueueEmpty", cfg_isEventQueueEmpty, 0},
        {"cfg_enqueueEvent", [] { return cfg_enqueueEvent(1); }, -1},
        {"cfg_dequeueEvent", [] { return cfg_dequeueEvent(1); }, -1},
        {"cfg_dequeueAllEvent", cfg_dequeueAllEvent, -1},
        {"cfg_getEvent", [&] { return cfg_getEvent(0, &event); }, -1}};
    struct Failure {
        std::string call;
        int error;
        std::string err;
        std::string out; // with its own name for NAME
    };
    const std::string lock = "[NAME #] sem_get fail iSemId[-1]\n";
    const std::string none = "[NAME #] getEventQueue fail\n";
    const std::vector<Failure> failures = {
        {"semget", ENOSPC, "error creating semaphore.\nsem_get: No space left on device\n", lock},
        {"SETALL", EPERM, "SETALL failed (1)\n", lock},
        {"shmget", EINVAL, "",
         "[getEventQueue #] shmget fail iShmId[-1] errno[22][Invalid argument]\n" + none},
        {"shmat", ENOMEM, "",
         "[getEventQueue #] shmat fail iShmId[ID] errno[12][Cannot allocate memory]\n" + none}};

    for (const Failure &failure : failures)
        for (const auto &[name, run, result] : operations) {
            SCOPED_TRACE(failure.call + " in " + name);
            restart();
            failing = {{failure.call, failure.error}};
            const Outcome outcome = observe(run);
            failing.clear();
            std::string expected = failure.out;
            expected.replace(expected.find("NAME"), 4, name);
            if (const size_t id = expected.find("ID]"); id != std::string::npos)
                expected.replace(id, 2, std::to_string(shmget(EVENT_SHM_KEY, 0, 0)));
            EXPECT_EQ(outcome.result, result);
            EXPECT_EQ(outcome.out, expected);
            EXPECT_EQ(outcome.err, failure.err);
            EXPECT_EQ(card(), "");
            if (expected.find("getEventQueue") != std::string::npos) {
                EXPECT_EQ(semctl(semget(EVENT_SEM_KEY, 0, 0), 0, GETVAL), 1);
            }
        }
}

TEST_F(EventQueueTest, OnlyANullAddressCountsAsAFailureToAttach)
{
    failing = {{"shmat", ENOMEM}};
    failed_address = reinterpret_cast<void *>(-1); // NOLINT(performance-no-int-to-ptr)
    EventQueue *queue = nullptr;
    const Outcome outcome = observe([&] {
        queue = getEventQueue();
        return 0;
    });
    EXPECT_EQ(queue, failed_address);
    EXPECT_EQ(outcome.out, "");
}

TEST_F(EventQueueTest, FailuresAfterTheWorkLeaveTheResult)
{
    EventQueue *queue = getEventQueue();
    failing = {{"shmdt", EINVAL}};
    char expected[128];
    snprintf(expected, sizeof expected,
             "[putEventQueue #] shmdt fail ptQueue[%#x] ret[-1] errno[22][Invalid argument]\n",
             static_cast<unsigned>(reinterpret_cast<uintptr_t>(queue)));
    EXPECT_EQ(observe([&] { return putEventQueue(nullptr), putEventQueue(queue), 0; }).out,
              expected);
    failing.clear();
    putEventQueue(queue);

    failing = {{"unlock", EINVAL}};
    const Outcome outcome = observe(cfg_isEventQueueEmpty);
    EXPECT_EQ(outcome.result, 1);
    EXPECT_EQ(outcome.out, "[cfg_isEventQueueEmpty #] sem_put fail iSemId[" +
                               std::to_string(semget(EVENT_SEM_KEY, 0, 0)) + "]\n");
    EXPECT_EQ(outcome.err, "error releasing semaphore.\n");
}

TEST_F(EventQueueTest, CardThatCannotBeWrittenLeavesTheChangeInMemory)
{
    const auto cannot_open = [](const char *reason) {
        return std::string("[saveEventQueue #] fopen [/mnt/sdcard/video/.event] fail ") + reason;
    };
    struct Card {
        std::string prepare;
        rlim_t largest;
        std::string report;
    };
    const std::vector<Card> cards = {
        {"rm -rf video", RLIM_INFINITY, cannot_open("errno[2][No such file or directory]")},
        {"rm -rf video; ln -s /usr/lib video", RLIM_INFINITY,
         cannot_open("errno[30][Read-only file system]")},
        {"rm -rf video; mkdir -p video/.event", RLIM_INFINITY,
         cannot_open("errno[21][Is a directory]")},
        {"rm -rf video; mkdir video; ln -s /dev/full video/.event", RLIM_INFINITY,
         "[saveEventQueue #] dwWrite[0] != dwSize[4108]"},
        {"rm -rf video; mkdir video", 4096, "[saveEventQueue #] dwWrite[4096] != dwSize[4108]"},
    };
    struct sigaction ignored = {};
    ignored.sa_handler = SIG_IGN;
    sigaction(SIGXFSZ, &ignored, nullptr);
    uint32_t count = 0;
    for (const Card &entry : cards) {
        SCOPED_TRACE(entry.prepare);
        run_program({"/bin/sh", "-c", "cd /mnt/sdcard; " + entry.prepare});
        const rlimit limited = {entry.largest, RLIM_INFINITY};
        setrlimit(RLIMIT_FSIZE, &limited);
        const Outcome outcome = observe([] { return cfg_enqueueEvent(2); });
        EXPECT_EQ(outcome.result, 0);
        EXPECT_EQ(outcome.out, entry.report + "\n[cfg_enqueueEvent #] saveEventQueue fail\n");
        EXPECT_EQ(ring().count, ++count);
        EXPECT_EQ(observe([] { return cfg_dequeueEvent(0); }).out,
                  entry.report + "\n[cfg_dequeueEvent #] saveEventQueue fail\n");
    }
    const rlimit unlimited = {RLIM_INFINITY, RLIM_INFINITY};
    setrlimit(RLIMIT_FSIZE, &unlimited);
    EXPECT_EQ(cfg_dequeueEvent(1), 0);
    EXPECT_EQ(card(), bytes(ring())) << "the next change writes it all";
}

TEST_F(EventQueueTest, SegmentOfAnotherSize)
{
    restart();
    const int segment = shmget(EVENT_SHM_KEY, sizeof(EventQueue) - 1, IPC_CREAT | 0666);
    const Outcome outcome = observe([] { return cfg_enqueueEvent(2); });
    EXPECT_EQ(outcome.result, -1);
    EXPECT_EQ(outcome.out, "[getEventQueue #] shmget fail iShmId[-1] errno[22][Invalid argument]\n"
                           "[cfg_enqueueEvent #] getEventQueue fail\n");
    shmctl(segment, IPC_RMID, nullptr);

    ASSERT_GE(shmget(EVENT_SHM_KEY, sizeof(EventQueue) + 1, IPC_CREAT | 0666), 0);
    EXPECT_EQ(cfg_enqueueEvent(2), 0) << "a larger one serves";
    EXPECT_EQ(card(), bytes(ring()));
}

TEST_F(EventQueueTest, DamagedMemoryIsNotLeft)
{
    constexpr size_t PAGES = 8192; // what is attached for 4108 bytes
    for (const uint32_t index : {512U, 513U, 100000U, 0x20000000U, UINT32_MAX})
        for (const uint32_t count : {0U, 5U, 512U, 513U, UINT32_MAX}) {
            put_ring(indices(index, index - count / 2, count));
            EventQueueEntry event{};
            cfg_enqueueEvent(1);
            cfg_getEvent(0, &event);
            cfg_getEvent(count - 1, &event);
            cfg_dequeueEvent(2);
            cfg_enqueueEvent(2);
            const auto *segment = reinterpret_cast<const char *>(getEventQueue());
            EXPECT_EQ(std::string(segment + sizeof(EventQueue), PAGES - sizeof(EventQueue)),
                      std::string(PAGES - sizeof(EventQueue), '\0'));
            shmdt(segment);
            EXPECT_EQ(cfg_dequeueAllEvent(), 0);
            EXPECT_EQ(cfg_isEventQueueEmpty(), 1);
        }
}
