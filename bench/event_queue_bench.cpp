// The event ring beside a program that makes the same system calls by hand,
// and beside what else could keep events for many processes. Ratios hold from
// run to run; absolute numbers are of this machine.

#include "events/storage.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <fstream>
#include <functional>
#include <string>
#include <sys/file.h>
#include <sys/mman.h>
#include <sys/sem.h>
#include <sys/shm.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>
#ifdef HAVE_SQLITE3
#include <sqlite3.h>
#endif
#ifdef HAVE_LMDB
#include <lmdb.h>
#endif

using Operation = std::function<void()>;

static void require(bool condition, const char *what)
{
    if (condition)
        return;
    std::fprintf(stderr, "event_queue_bench: %s failed\n", what);
    std::exit(1);
}

// ---- The same calls by hand.

template <typename Work> static void by_hand(bool save, Work work)
{
    const int lock = semget(EVENT_SEM_KEY, 1, 0);
    sembuf take = {0, -1, SEM_UNDO};
    sembuf give = {0, 1, SEM_UNDO};
    require(semop(lock, &take, 1) == 0, "semop");
    const int segment = shmget(EVENT_SHM_KEY, sizeof(EventQueue), 0666);
    auto *queue = static_cast<EventQueue *>(shmat(segment, nullptr, 0));
    work(*queue);
    if (save) {
        const int file = open(EVENT_QUEUE_FILE, O_RDWR | O_CREAT | O_TRUNC, 0666);
        require(write(file, queue, sizeof *queue) == sizeof *queue, "write");
        close(file);
    }
    shmdt(queue);
    require(semop(lock, &give, 1) == 0, "semop");
}

static void enqueue_by_hand()
{
    const auto now = static_cast<uint32_t>(time(nullptr));
    by_hand(true, [&](EventQueue &queue) {
        queue.slots[queue.tail] = {1, now};
        queue.tail = slot_of(queue.tail + 1);
        queue.count++;
    });
}

static void dequeue_by_hand()
{
    by_hand(true, [](EventQueue &queue) {
        queue.head = slot_of(queue.head + 1);
        queue.count--;
    });
}

static void peek_by_hand()
{
    EventQueueEntry event = {};
    by_hand(false, [&](EventQueue &queue) { event = queue.slots[queue.head]; });
    require(event.type == 1, "peek by hand");
}

// ---- The library.

static void enqueue()
{
    require(cfg_enqueueEvent(1) == 0, "cfg_enqueueEvent");
}

static void dequeue()
{
    require(cfg_dequeueEvent(1) == 0, "cfg_dequeueEvent");
}

static void peek()
{
    EventQueueEntry event = {};
    require(cfg_getEvent(0, &event) == 0, "cfg_getEvent");
}

// Leaves the ring with `events` events.
static void hold(uint32_t events)
{
    by_hand(true, [&](EventQueue &queue) {
        queue = {0, slot_of(events), events, {}};
        for (EventQueueEntry &slot : queue.slots)
            slot.type = 1;
    });
}

// ---- Measuring.

struct Run {
    Operation prepare;
    Operation operation;
};

// Processor time, which is the same while others use the machine.
static double cost(const Run &run)
{
    constexpr int TIMES = 50;
    run.prepare();
    timespec start = {};
    timespec end = {};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &start);
    for (int i = 0; i < TIMES; i++)
        run.operation();
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &end);
    return static_cast<double>(end.tv_sec - start.tv_sec) +
           static_cast<double>(end.tv_nsec - start.tv_nsec) * 1e-9;
}

// How many times as fast as `other` `one` is: the median of many turns.
static double speed(const Run &one, const Run &other)
{
    constexpr size_t ROUNDS = 401;
    std::vector<double> ratios;
    while (ratios.size() < ROUNDS) {
        const bool first = ratios.size() % 2 == 0;
        const double early = cost(first ? one : other);
        const double late = cost(first ? other : one);
        ratios.push_back(first ? late / early : early / late);
    }
    std::nth_element(ratios.begin(), ratios.begin() + ROUNDS / 2, ratios.end());
    return ratios[ROUNDS / 2];
}

// ---- System calls, counted by strace.

static const std::pair<const char *, Operation> OPERATIONS[] = {
    {"enqueue", enqueue}, {"dequeue", dequeue}, {"peek", peek}};

// Each operation between two calls of getppid, which nothing else makes.
static void operations_to_count()
{
    for (const auto &[name, operation] : OPERATIONS) {
        enqueue();
        getppid();
        operation();
        getppid();
    }
}

static void count_calls(const std::string &self)
{
    const std::string strace = self.substr(0, self.rfind('/')) + "/strace";
    if (access(strace.c_str(), X_OK) != 0) {
        std::puts("System calls: not counted, strace is not there.");
        return;
    }
    const std::string line = strace + " -o /tmp/calls " + self + " --operations";
    require(std::system(line.c_str()) == 0, "strace");
    std::puts("System calls:");
    std::ifstream calls("/tmp/calls");
    const auto next = [&] {
        std::string call;
        require(static_cast<bool>(std::getline(calls, call)), "counting");
        return call.substr(0, call.find('('));
    };
    for (const auto &[name, operation] : OPERATIONS) {
        while (next() != "getppid") {
        }
        int count = 0;
        std::string names;
        for (std::string call = next(); call != "getppid"; call = next()) {
            names += " " + call;
            count++;
        }
        std::printf("  %-8s %d:%s\n", name, count, names.c_str());
    }
}

// ---- One process.

static void beside_hand()
{
    const Operation empty = [] { hold(0); };
    const Operation filled = [] { hold(256); };
    std::puts("\nTimes as fast as the same calls by hand (0.97 is wanted):");
    std::printf("  enqueue  %.3f\n", speed({empty, enqueue}, {empty, enqueue_by_hand}));
    std::printf("  dequeue  %.3f\n", speed({filled, dequeue}, {filled, dequeue_by_hand}));
    std::printf("  peek     %.3f\n", speed({filled, peek}, {filled, peek_by_hand}));
}

// A change that leaves the number of events.
static void drop_and_add()
{
    dequeue();
    enqueue();
}

static void by_events_held()
{
    std::puts("\nTimes as fast as with 1 event held:\n             256    512");
    for (const auto &[name, operation] :
         {std::pair<const char *, Operation>{"change", drop_and_add}, {"peek", peek}}) {
        std::printf("  %-8s", name);
        for (const uint32_t events : {256U, 512U})
            std::printf("  %.3f",
                        speed({[=] { hold(events); }, operation}, {[] { hold(1); }, operation}));
        std::puts("");
    }
}

// ---- Many processes, and other places to keep events in.

// Opens the place and gives what adds one event and drops the oldest.
using Opener = Operation (*)();

static Operation open_ring()
{
    return [] {
        enqueue();
        dequeue();
    };
}

static Operation open_by_hand()
{
    return [] {
        enqueue_by_hand();
        dequeue_by_hand();
    };
}

template <typename Work> static void in_locked_file(Work work)
{
    EventQueue queue = {};
    const int file = open("/mnt/sdcard/locked", O_RDWR | O_CREAT, 0666);
    require(flock(file, LOCK_EX) == 0, "flock");
    require(read(file, &queue, sizeof queue) >= 0, "read");
    work(queue);
    require(pwrite(file, &queue, sizeof queue, 0) == sizeof queue, "pwrite");
    close(file);
}

static Operation open_locked_file()
{
    return [] {
        in_locked_file([](EventQueue &queue) {
            queue.slots[queue.tail] = {1, static_cast<uint32_t>(time(nullptr))};
            queue.tail = slot_of(queue.tail + 1);
            queue.count++;
        });
        in_locked_file([](EventQueue &queue) {
            queue.head = slot_of(queue.head + 1);
            queue.count--;
        });
    };
}

#ifdef HAVE_SQLITE3
static Operation open_sqlite()
{
    sqlite3 *database = nullptr;
    require(sqlite3_open("/mnt/sdcard/sqlite", &database) == SQLITE_OK, "sqlite3_open");
    sqlite3_busy_timeout(database, 10000);
    require(sqlite3_exec(database,
                         "PRAGMA journal_mode = WAL; PRAGMA synchronous = OFF;"
                         "CREATE TABLE IF NOT EXISTS events"
                         " (id INTEGER PRIMARY KEY, type INTEGER, time INTEGER)",
                         nullptr, nullptr, nullptr) == SQLITE_OK,
            "sqlite3_exec");
    const auto statement = [=](const char *text) {
        sqlite3_stmt *prepared = nullptr;
        require(sqlite3_prepare_v2(database, text, -1, &prepared, nullptr) == SQLITE_OK,
                "sqlite3_prepare");
        return [=] {
            while (sqlite3_step(prepared) != SQLITE_DONE)
                sqlite3_reset(prepared);
            sqlite3_reset(prepared);
        };
    };
    const auto insert = statement("INSERT INTO events (type, time)"
                                  " VALUES (1, CAST(strftime('%s') AS INTEGER))");
    const auto remove = statement("DELETE FROM events WHERE id = (SELECT min(id) FROM events)");
    return [=] {
        insert();
        remove();
    };
}
#endif

#ifdef HAVE_LMDB
template <typename Work> static void in_transaction(MDB_env *environment, MDB_dbi events, Work work)
{
    MDB_txn *transaction = nullptr;
    MDB_cursor *cursor = nullptr;
    require(mdb_txn_begin(environment, nullptr, 0, &transaction) == 0, "mdb_txn_begin");
    require(mdb_cursor_open(transaction, events, &cursor) == 0, "mdb_cursor_open");
    work(cursor);
    mdb_cursor_close(cursor);
    require(mdb_txn_commit(transaction) == 0, "mdb_txn_commit");
}

static Operation open_lmdb()
{
    MDB_env *environment = nullptr;
    mdb_env_create(&environment);
    mkdir("/mnt/sdcard/lmdb", 0755);
    require(mdb_env_open(environment, "/mnt/sdcard/lmdb", MDB_NOSYNC, 0644) == 0, "mdb_env_open");
    MDB_txn *transaction = nullptr;
    MDB_dbi events = 0;
    mdb_txn_begin(environment, nullptr, 0, &transaction);
    require(mdb_dbi_open(transaction, nullptr, MDB_INTEGERKEY, &events) == 0, "mdb_dbi_open");
    mdb_txn_commit(transaction);
    return [=] {
        in_transaction(environment, events, [](MDB_cursor *cursor) {
            EventQueueEntry event = {1, static_cast<uint32_t>(time(nullptr))};
            size_t number = 0;
            MDB_val key = {};
            MDB_val value = {};
            if (mdb_cursor_get(cursor, &key, &value, MDB_LAST) == 0)
                std::memcpy(&number, key.mv_data, sizeof number);
            number++;
            key = {sizeof number, &number};
            value = {sizeof event, &event};
            require(mdb_cursor_put(cursor, &key, &value, 0) == 0, "mdb_cursor_put");
        });
        in_transaction(environment, events, [](MDB_cursor *cursor) {
            MDB_val key = {};
            MDB_val value = {};
            require(mdb_cursor_get(cursor, &key, &value, MDB_FIRST) == 0, "mdb_cursor_get");
            require(mdb_cursor_del(cursor, 0) == 0, "mdb_cursor_del");
        });
    };
}
#endif

// Changes in a second that `processes` make together.
static double changes(Opener open, int processes)
{
    constexpr useconds_t DURATION = 400000;
    struct Shared {
        std::atomic<bool> stop;
        std::atomic<int> ready;
        std::atomic<long> pairs;
    };
    auto *shared = static_cast<Shared *>(
        mmap(nullptr, sizeof(Shared), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0));
    const auto trade = [&] {
        const Operation operation = open();
        shared->ready++;
        long pairs = 0;
        for (; !shared->stop; pairs++)
            operation();
        shared->pairs += pairs;
    };
    for (int i = 0; i < processes; i++)
        if (fork() == 0) {
            trade();
            _exit(0);
        }
    while (shared->ready < processes)
        usleep(1000);
    const auto start = std::chrono::steady_clock::now();
    usleep(DURATION);
    shared->stop = true;
    const std::chrono::duration<double> taken = std::chrono::steady_clock::now() - start;
    for (int i = 0; i < processes; i++) {
        int status = -1;
        require(wait(&status) > 0 && status == 0, "a process");
    }
    const double result = 2.0 * static_cast<double>(shared->pairs) / taken.count();
    munmap(shared, sizeof(Shared));
    return result;
}

static void by_processes()
{
    const std::pair<const char *, Opener> places[] = {
        {"the ring", open_ring},
        {"the same calls by hand", open_by_hand},
        {"file, flock, rewritten", open_locked_file},
#ifdef HAVE_SQLITE3
        {"SQLite, WAL, synchronous off", open_sqlite},
#endif
#ifdef HAVE_LMDB
        {"LMDB, NOSYNC", open_lmdb},
#endif
    };
    std::puts("\nThousand changes a second of all processes together (times the ring's):\n"
              "  processes                                 1               2               4"
              "               8");
    std::vector<double> ring;
    for (const auto &[name, open] : places) {
        hold(0);
        std::printf("  %-29s", name);
        std::vector<double> row;
        for (const int processes : {1, 2, 4, 8})
            row.push_back(changes(open, processes));
        if (ring.empty())
            ring = row;
        for (size_t i = 0; i < row.size(); i++)
            std::printf(" %7.1f (%5.2f)", row[i] / 1000, row[i] / ring[i]);
        std::puts("");
    }
}

int main(int argc, char **argv)
{
    mkdir("/mnt/sdcard/video", 0755);
    std::ofstream(EVENT_QUEUE_FILE) << std::string(sizeof(EventQueue), '\0');
    cfg_isEventQueueEmpty(); // makes the ring
    if (argc > 1) {
        operations_to_count();
        return 0;
    }
    count_calls(argv[0]);
    beside_hand();
    by_events_held();
    by_processes();
    return 0;
}
