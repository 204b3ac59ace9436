// The event ring of many processes: order, interrupted waits, and deaths at
// any moment.

#include "events/lock.h"
#include "events/storage.h"
#include "harness.h"

#include <atomic>
#include <csignal>
#include <cstdlib>
#include <map>
#include <random>
#include <set>
#include <sys/mman.h>
#include <sys/sem.h>
#include <sys/shm.h>
#include <sys/wait.h>
#include <unistd.h>

#if defined(__SANITIZE_ADDRESS__)
#define SANITIZED 1
#elif defined(__has_feature)
#define SANITIZED __has_feature(address_sanitizer)
#else
#define SANITIZED 0
#endif

// The kernel steps programs of its own kind; a sanitized one takes too many.
#if defined(__x86_64__) && !SANITIZED
#define CAN_STEP 1
#include <sys/ptrace.h>
#include <sys/syscall.h>
#include <sys/user.h>
#else
#define CAN_STEP 0
#endif

// A store of the emulated program is several of the emulator.
static bool emulated()
{
    return getenv("EMULATOR") != nullptr;
}

static void remove_ring()
{
    shmctl(shmget(EVENT_SHM_KEY, 0, 0), IPC_RMID, nullptr);
}

static void remove_lock()
{
    semctl(semget(EVENT_SEM_KEY, 0, 0), 0, IPC_RMID);
}

class EventProcessTest : public CameraTest
{
  protected:
    void SetUp() override
    {
        CameraTest::SetUp();
        remove_ring();
        remove_lock();
        unlink(EVENT_QUEUE_FILE);
        write_file("/mnt/sdcard/video/other", "");
        observe(cfg_isEventQueueEmpty);
        alarm(50); // a lock that stays taken ends the test
    }
};

// Memory that the processes of a test share, all zero.
template <typename Type> static Type *shared()
{
    return static_cast<Type *>(
        mmap(nullptr, sizeof(Type), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0));
}

static pid_t spawn(const std::function<int()> &code)
{
    const pid_t child = fork();
    if (child == 0)
        _exit(code());
    return child;
}

static int result_of(pid_t child)
{
    int status = -1;
    waitpid(child, &status, 0);
    return status;
}

static bool consistent(const EventQueue &queue)
{
    if (queue.head >= EVENT_QUEUE_SIZE || queue.tail >= EVENT_QUEUE_SIZE)
        return false;
    if (queue.head == queue.tail)
        return queue.count == 0 || queue.count == EVENT_QUEUE_SIZE;
    return queue.count == slot_of(queue.tail - queue.head);
}

// Runs `look` on the ring under its lock.
static bool locked(const std::function<bool(const EventQueue &)> &look)
{
    const int lock = sem_get(EVENT_SEM_KEY);
    EventQueue *queue = getEventQueue();
    const bool result = look(*queue);
    putEventQueue(queue);
    return sem_put(lock) == 0 && result;
}

static std::string bytes(const EventQueue &queue)
{
    return {reinterpret_cast<const char *>(&queue), sizeof queue};
}

static bool whole_and_saved(const EventQueue &queue)
{
    return consistent(queue) && read_file(EVENT_QUEUE_FILE) == bytes(queue);
}

constexpr unsigned PROCESSES = 8;
constexpr uint32_t EVENTS = 20000;
constexpr key_t CONSUMERS_KEY = 0x4321;

struct Market {
    std::atomic<uint32_t> broken;
    uint32_t taken;
    uint32_t events[EVENTS];
};

static bool consume(Market *market)
{
    const int lock = sem_get(CONSUMERS_KEY);
    EventQueueEntry event{};
    const bool found = cfg_getEvent(0, &event) == 0 && cfg_dequeueEvent(1) == 0;
    if (found)
        market->events[market->taken++] = event.type;
    sem_put(lock);
    return found;
}

static int trade(Market *market, uint32_t self, uint32_t events)
{
    std::minstd_rand random(self + 1);
    for (uint32_t made = 0; made < events;) {
        if (random() % 2 == 0)
            made += cfg_enqueueEvent(self << 24 | made) == 0;
        else
            consume(market);
        market->broken += !locked(whole_and_saved);
    }
    while (consume(market)) {
    }
    return 0;
}

TEST_F(EventProcessTest, ProducersAndConsumersLoseNothingAndKeepTheOrder)
{
    const uint32_t each = EVENTS / PROCESSES / (emulated() ? 10 : 1);
    auto *market = shared<Market>();
    sem_put(sem_get(CONSUMERS_KEY));
    cfg_enqueueEvent(PROCESSES << 24); // saved once, so that there is a file to compare
    consume(market);
    market->taken = 0;

    std::vector<pid_t> children;
    for (uint32_t i = 0; i < PROCESSES; i++)
        children.push_back(spawn([=] { return trade(market, i, each); }));
    for (const pid_t child : children)
        EXPECT_EQ(result_of(child), 0);
    EXPECT_EQ(market->broken, 0U);
    EXPECT_EQ(market->taken, each * PROCESSES);
    std::vector<uint32_t> next(PROCESSES);
    for (uint32_t i = 0; i < market->taken; i++)
        ASSERT_EQ(market->events[i] & 0xffffff, next[market->events[i] >> 24]++);
    EXPECT_EQ(cfg_isEventQueueEmpty(), 1);
}

static std::atomic<int> *interruptions;

TEST_F(EventProcessTest, SignalsDoNotEndTheWaitForTheLock)
{
    interruptions = shared<std::atomic<int>>();
    const int lock = sem_get(EVENT_SEM_KEY);
    const Outcome outcome = observe([&] {
        const pid_t child = spawn([] {
            struct sigaction action = {};
            action.sa_handler = [](int) { ++*interruptions; };
            sigaction(SIGUSR1, &action, nullptr);
            return cfg_enqueueEvent(1);
        });
        for (int i = 0; i < 3; i++) {
            while (semctl(lock, 0, GETNCNT) != 1)
                usleep(100);
            kill(child, SIGUSR1);
            while (*interruptions == i)
                usleep(100);
        }
        sem_put(lock);
        return result_of(child);
    });
    EXPECT_EQ(outcome.result, 0);
    EXPECT_EQ(outcome.out, "");
    EXPECT_EQ(outcome.err, "error getting semaphore.\nerror getting semaphore.\n"
                           "error getting semaphore.\n");
    EXPECT_TRUE(locked([](const EventQueue &queue) { return queue.count == 1; }));
}

TEST_F(EventProcessTest, RemovedLockEndsTheWaitAndTheNextCallMakesAnother)
{
    const int lock = sem_get(EVENT_SEM_KEY);
    const Outcome outcome = observe([&] {
        const pid_t child = spawn([] {
            const int result = cfg_enqueueEvent(1);
            fflush(stdout);
            return result == -1;
        });
        while (semctl(lock, 0, GETNCNT) != 1)
            usleep(100);
        remove_lock();
        return WEXITSTATUS(result_of(child));
    });
    EXPECT_EQ(outcome.result, 1);
    EXPECT_EQ(outcome.out, "[cfg_enqueueEvent #] sem_get fail iSemId[-1]\n");
    EXPECT_EQ(outcome.err, "error getting semaphore.\n");
    EXPECT_EQ(sem_put(lock), -1);
    EXPECT_EQ(sem_put(-1), -1);
    EXPECT_EQ(cfg_enqueueEvent(1), 0);
    EXPECT_TRUE(locked(whole_and_saved));
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

TEST_F(EventProcessTest, KilledProcessesGiveBackTheLockAndLeaveWholeEvents)
{
    const int kills = emulated() ? 100 : 1000;
    const auto start = static_cast<uint32_t>(time(nullptr));
    const auto whole = [&](const EventQueue &queue) {
        bool found = consistent(queue);
        for (uint32_t i = 0; i < queue.count; i++) {
            const EventQueueEntry &event = queue.slots[slot_of(queue.head + i)];
            found = found && (event.type & 0xff000000) == MARK && event.time >= start;
        }
        return found;
    };
    std::minstd_rand random(1);
    std::vector<pid_t> workers(4, 0);
    int broken = 0;
    for (int i = 0; i < kills; i++) {
        for (pid_t &worker : workers)
            if (worker == 0)
                worker = spawn([seed = random()] { return work(static_cast<unsigned>(seed)); });
        usleep(static_cast<useconds_t>(random() % 1000));
        pid_t &victim = workers[random() % workers.size()];
        kill(victim, SIGKILL);
        result_of(victim);
        victim = 0;
        broken += !locked([&](const EventQueue &queue) { return emulated() || whole(queue); });
    }
    for (const pid_t worker : workers)
        if (worker != 0) {
            kill(worker, SIGKILL);
            result_of(worker);
        }
    EXPECT_EQ(broken, 0);
    EXPECT_EQ(cfg_dequeueAllEvent(), 0);
    EXPECT_EQ(cfg_enqueueEvent(MARK), 0);
    EXPECT_EQ(cfg_dequeueEvent(0), 0);
    EXPECT_TRUE(locked(whole_and_saved));
    EXPECT_TRUE(locked([](const EventQueue &queue) { return queue.count == 1; }));
}

#if CAN_STEP

// A child that stands before `code` and goes on as it is told.
class Traced
{
  public:
    explicit Traced(const std::function<int()> &code)
        : child_(spawn([&] {
              ptrace(PTRACE_TRACEME, 0, nullptr, nullptr);
              asm volatile("int3");
              const int result = code();
              asm volatile("int3");
              return result;
          }))
    {
        waitpid(child_, nullptr, 0);
    }

    // One instruction, to the next begin or end of a system call, or to a trap.
    void go(__ptrace_request how)
    {
        ptrace(how, child_, nullptr, nullptr);
        waitpid(child_, nullptr, 0);
    }

    user_regs_struct registers()
    {
        user_regs_struct registers = {};
        ptrace(PTRACE_GETREGS, child_, nullptr, &registers);
        return registers;
    }

    long word(unsigned long long address)
    {
        return ptrace(PTRACE_PEEKTEXT, child_, address, nullptr);
    }

    // Goes on until it stands before the instruction at `address` for the
    // first time after `times` times.
    void go_to(unsigned long long address, int times)
    {
        const long code = word(address);
        for (int i = 0; i <= times; i++) {
            ptrace(PTRACE_POKETEXT, child_, address, (code & ~0xffL) | TRAP);
            go(PTRACE_CONT);
            ptrace(PTRACE_POKETEXT, child_, address, code);
            user_regs_struct now = registers();
            ASSERT_EQ(now.rip, address + 1);
            now.rip = address;
            ptrace(PTRACE_SETREGS, child_, nullptr, &now);
            if (i < times)
                go(PTRACE_SINGLESTEP);
        }
    }

    void end()
    {
        kill(child_, SIGKILL);
        waitpid(child_, nullptr, 0);
    }

    static constexpr long TRAP = 0xcc;
    static constexpr long SYSTEM_CALL = 0x050f;

  private:
    pid_t child_;
};

// Kills a child before every instruction of `code` and after the last; `look`
// sees what it leaves and puts things back. The system calls that `code` makes.
static std::vector<unsigned long long> kill_at_every_instruction(const std::function<int()> &code,
                                                                 const std::function<void()> &look)
{
    std::vector<unsigned long long> instructions;
    std::vector<unsigned long long> system_calls;
    Traced whole(code);
    for (long word = 0; (word & 0xff) != Traced::TRAP; whole.go(PTRACE_SINGLESTEP)) {
        const user_regs_struct now = whole.registers();
        instructions.push_back(now.rip);
        word = whole.word(now.rip);
        if ((word & 0xffff) == Traced::SYSTEM_CALL)
            system_calls.push_back(now.rax);
    }
    whole.end();
    look();

    std::map<unsigned long long, int> passed;
    for (const unsigned long long instruction : instructions) {
        Traced child(code);
        child.go_to(instruction, passed[instruction]++);
        child.end();
        look();
    }
    return system_calls;
}

static void put_ring(const EventQueue &ring)
{
    EventQueue *queue = getEventQueue();
    *queue = ring;
    putEventQueue(queue);
}

static EventQueue ring()
{
    EventQueue *queue = getEventQueue();
    const EventQueue copy = *queue;
    putEventQueue(queue);
    return copy;
}

// What ring and card can hold when `code`, one change, was killed.
static std::set<std::string> left_behind(const std::function<int()> &code)
{
    const EventQueue before = ring();
    code();
    const EventQueue after = ring();
    const uint32_t unused = before.tail; // the slot that a new event goes to
    const auto restore = [&] {
        put_ring(before);
        write_file(EVENT_QUEUE_FILE, bytes(before));
    };
    restore();

    std::set<std::string> states;
    const auto look = [&] {
        EventQueue now = ring();
        const std::string file = read_file(EVENT_QUEUE_FILE);
        std::string state = file == bytes(before) ? "card before"
                            : file.empty()        ? "card empty"
                            : file == bytes(now)  ? "card after"
                                                  : "card damaged";
        if (semctl(semget(EVENT_SEM_KEY, 1, 0), 0, GETVAL) != 1)
            state += ", lock taken";
        const bool changed = now.count != before.count;
        if (!changed && bytes(now) != bytes(before)) {
            state += ", unused slot written";
            now.slots[unused] = before.slots[unused];
        }
        now.slots[unused].time = (changed ? after : before).slots[unused].time; // a second passes
        if (bytes(now) == bytes(changed ? after : before))
            states.insert((changed ? "ring after, " : "ring before, ") + state);
        else
            states.insert("ring damaged, " + state);
        restore();
    };
    EXPECT_THAT(kill_at_every_instruction(code, look),
                testing::ElementsAre(SYS_semget, SYS_semtimedop, SYS_shmget, SYS_shmat, SYS_openat,
                                     SYS_write, SYS_close, SYS_shmdt, SYS_semtimedop));
    return states;
}

#endif

TEST_F(EventProcessTest, KilledAtAnyInstructionAChangeIsMadeOrNotMade)
{
#if CAN_STEP
    put_ring({510, 0, 2, {}});
    EXPECT_THAT(left_behind([] { return cfg_enqueueEvent(4); }),
                testing::UnorderedElementsAre(
                    "ring before, card before", "ring before, card before, unused slot written",
                    "ring after, card before", "ring after, card empty", "ring after, card after"));
    put_ring({510, 3, 5, {}});
    EXPECT_THAT(left_behind([] { return cfg_dequeueEvent(3); }),
                testing::UnorderedElementsAre("ring before, card before", "ring after, card before",
                                              "ring after, card empty", "ring after, card after"));
#else
    GTEST_SKIP() << "steps x86-64 programs only";
#endif
}

TEST_F(EventProcessTest, FirstCallKilledAtAnySystemCall)
{
#if CAN_STEP
    EventQueue saved = {510, 3, 5, {}};
    std::set<std::string> states;
    for (bool ended = false; !ended;) {
        static int stops = 0;
        remove_ring();
        remove_lock();
        write_file(EVENT_QUEUE_FILE, bytes(saved));
        Traced child([] { return cfg_enqueueEvent(4); });
        for (int i = 0; i < stops; i++)
            child.go(PTRACE_SYSCALL);
        ended = child.registers().orig_rax == SYS_exit_group;
        stops++;
        child.end();

        const int lock = semget(EVENT_SEM_KEY, 1, 0);
        const bool made = shmget(EVENT_SHM_KEY, 0, 0) >= 0;
        const bool taken = lock >= 0 && semctl(lock, 0, GETVAL) == 0;
        const uint32_t count = made ? ring().count : 0;
        states.insert(std::string(lock < 0 ? "no lock"
                                  : taken  ? "lock taken"
                                           : "lock free") +
                      (made ? ", events " + std::to_string(count) : ", no ring"));
        if (taken)
            remove_lock();
        EXPECT_EQ(observe([] { return cfg_enqueueEvent(4); }).result, 0);
        EXPECT_TRUE(locked(whole_and_saved));
    }
    EXPECT_THAT(states, testing::UnorderedElementsAre(
                            "no lock, no ring", "lock taken, no ring", "lock free, no ring",
                            "lock free, events 0", "lock free, events 5", "lock free, events 6"));
#else
    GTEST_SKIP() << "traces x86-64 programs only";
#endif
}
