// The event ring of many processes: deaths at any moment.

#include "events/lock.h"
#include "events/storage.h"
#include "harness.h"

#include <csignal>
#include <cstdlib>
#include <random>
#include <set>
#include <sys/sem.h>
#include <sys/wait.h>
#include <unistd.h>
#ifdef __x86_64__ // the kernel steps programs of its own kind
#include <sys/ptrace.h>
#endif

using namespace cfg_set;

constexpr time_t NOW = 1700000000;

extern "C" time_t time(time_t *)
{
    return NOW;
}

// In programs with the sanitizer, which take too many steps.
// NOLINTNEXTLINE(bugprone-reserved-identifier)
extern "C" void __asan_init() __attribute__((weak));

static EventQueue *memory;

class EventProcessTest : public CameraTest
{
  protected:
    void SetUp() override
    {
        CameraTest::SetUp();
        write_file("/mnt/sdcard/video/other", "");
        quietly(cfg_isEventQueueEmpty);
        memory = getEventQueue();
        alarm(50); // a lock that stays taken ends the test
    }
};

static pid_t spawn(const std::function<int()> &code)
{
    const pid_t child = fork();
    if (child == 0)
        _exit(code());
    return child;
}

static void end(pid_t child)
{
    kill(child, SIGKILL);
    waitpid(child, nullptr, 0);
}

static std::string bytes(const EventQueue &queue)
{
    return {reinterpret_cast<const char *>(&queue), sizeof queue};
}

constexpr uint32_t MARK = 0xa5000000; // of the types that the workers add

static int work(unsigned seed)
{
    std::minstd_rand random(seed);
    EventQueueEntry event{};
    for (;;) {
        const auto draw = static_cast<uint32_t>(random());
        if (draw % 100 == 0)
            cfg_dequeueAllEvent();
        else if (draw % 3 == 0)
            cfg_dequeueEvent(draw % 5);
        else if (draw % 3 == 1)
            cfg_getEvent(draw % EVENT_QUEUE_SIZE, &event);
        else
            cfg_enqueueEvent(MARK | draw % 4096);
    }
}

// Whether the ring is one, of the workers' events; under its lock.
static bool whole()
{
    const int lock = sem_get(EVENT_SEM_KEY);
    bool whole = memory->head < EVENT_QUEUE_SIZE && memory->count <= EVENT_QUEUE_SIZE &&
                 memory->tail == (memory->head + memory->count) % EVENT_QUEUE_SIZE;
    for (uint32_t i = 0; whole && i < memory->count; i++) {
        const auto &[type, time] = memory->slots[(memory->head + i) % EVENT_QUEUE_SIZE];
        whole = (type & 0xff000000) == MARK && time == NOW;
    }
    return sem_put(lock) == 0 && whole;
}

TEST_F(EventProcessTest, KilledProcessesGiveBackTheLockAndLeaveWholeEvents)
{
    // A store of the emulated program is several of the emulator.
    const bool emulated = getenv("EMULATOR") != nullptr;
    std::minstd_rand random(1);
    const auto worker = [&] { return spawn([seed = unsigned(random())] { return work(seed); }); };
    pid_t workers[] = {worker(), worker(), worker(), worker()};
    int broken = 0;
    for (int kills = sizeof(long) == 4 ? 50 : 1000; kills > 0; kills--) {
        usleep(static_cast<useconds_t>(random() % 1000));
        pid_t &victim = workers[random() % 4];
        end(victim);
        broken += !whole() && !emulated;
        victim = worker();
    }
    for (const pid_t each : workers)
        end(each);
    EXPECT_EQ(broken, 0);
    EXPECT_EQ(cfg_dequeueAllEvent(), 0);
    EXPECT_EQ(cfg_enqueueEvent(MARK), 0);
    EXPECT_TRUE(whole() && memory->count == 1 && read_file(EVENT_QUEUE_FILE) == bytes(*memory));
}

#ifdef __x86_64__

// Lets a traced child go on: whether it has stopped again and not ended.
static bool goes_on(pid_t child, __ptrace_request how)
{
    int status = 0;
    ptrace(how, child, nullptr, nullptr);
    waitpid(child, &status, 0);
    return WIFSTOPPED(status);
}

// Memory and card as `code`, one change of this ring, has them before each of
// its instructions, and as it leaves them when killed at any system call.
static std::set<std::string> left_behind(const EventQueue &before, const std::function<int()> &code)
{
    *memory = before;
    code();
    const EventQueue after = *memory;
    const auto start = [&] {
        *memory = before;
        write_file(EVENT_QUEUE_FILE, bytes(before));
        const pid_t child = spawn([&] {
            ptrace(PTRACE_TRACEME, 0, nullptr, nullptr);
            raise(SIGSTOP);
            return code();
        });
        waitpid(child, nullptr, 0);
        return child;
    };
    // What is none of these is damaged and has no name.
    std::map<std::string, std::string> names = {
        {bytes(before), "before"}, {bytes(after), "after"}, {"", "empty"}};
    const auto state = [&] {
        EventQueue seen = *memory;
        seen.slots[before.tail] = before.slots[before.tail]; // counts for nothing yet
        seen = bytes(seen) == bytes(before) ? before : *memory;
        return "memory " + names[bytes(seen)] + ", card " + names[read_file(EVENT_QUEUE_FILE)];
    };
    std::set<std::string> states;
    const pid_t stepped = start();
    do
        states.insert(state());
    while (goes_on(stepped, PTRACE_SINGLESTEP));

    bool runs = true;
    for (int stops = 0; runs; stops++) {
        const pid_t killed = start();
        for (int i = 0; i < stops && runs; i++)
            runs = goes_on(killed, PTRACE_SYSCALL);
        if (runs)
            end(killed);
        states.insert(state() +
                      (semctl(semget(EVENT_SEM_KEY, 1, 0), 0, GETVAL) == 1 ? "" : ", lock taken"));
    }
    return states;
}

#endif

TEST_F(EventProcessTest, KilledAtAnyInstructionAChangeIsMadeOrNotMade)
{
#ifdef __x86_64__
    if (__asan_init)
        GTEST_SKIP() << "too many steps with the sanitizer";
    const auto states =
        testing::ElementsAre("memory after, card after", "memory after, card before",
                             "memory after, card empty", "memory before, card before");
    EXPECT_THAT(left_behind({510, 0, 2, {}}, [] { return cfg_enqueueEvent(4); }), states);
    EXPECT_THAT(left_behind({510, 3, 5, {}}, [] { return cfg_dequeueEvent(3); }), states);
#else
    GTEST_SKIP() << "steps x86-64 programs only";
#endif
}
