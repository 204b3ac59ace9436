// Compares the event ring with a program that makes the same system calls by
// hand, and with other stores that processes can share.

#include "bench/measure.h"
#include "events/storage.h"

#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <fstream>
#include <lmdb.h>
#include <sched.h>
#include <sqlite3.h>
#include <sys/file.h>
#include <sys/mman.h>
#include <sys/sem.h>
#include <sys/shm.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

using namespace cfg_set;

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

// ---- One process.

static void one_process()
{
    constexpr int TIMES = 100;
    const Operation empty = [] { hold(0); };
    const Operation filled = [] { hold(256); };
    compare("event ring", {{"by hand", cost_of(TIMES, enqueue_by_hand, empty)},
                           {"cfg_enqueueEvent", cost_of(TIMES, enqueue, empty)}});
    compare("event ring", {{"by hand", cost_of(TIMES, dequeue_by_hand, filled)},
                           {"cfg_dequeueEvent", cost_of(TIMES, dequeue, filled)}});
    compare("event ring", {{"by hand", cost_of(TIMES, peek_by_hand, filled)},
                           {"cfg_getEvent", cost_of(TIMES, peek, filled)}});
    const auto holding = [=](uint32_t events) {
        return cost_of(
            TIMES,
            [] {
                dequeue();
                enqueue();
            },
            [=] { hold(events); });
    };
    compare("event ring, a dequeue and an enqueue",
            {{"with 1 event held", holding(1)}, {"with 512 events held", holding(512)}});
}

// ---- Many processes, and other stores.

// Opens the store and returns a function that adds one event and drops the oldest.
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

// Processes that wait, then all change the store at the same time.
struct Crowd {
    struct Shared {
        std::atomic<bool> stop;
        std::atomic<int> working;
        std::atomic<long> changes;
    };
    Shared *shared;
    int start[2]; // a pipe: a byte sets one process to work
};

// Two processes that sometimes share a processor would differ by a factor.
static void stay_on_processor(int number)
{
    cpu_set_t set;
    CPU_ZERO(&set);
    CPU_SET(static_cast<size_t>(number % sysconf(_SC_NPROCESSORS_ONLN)), &set);
    sched_setaffinity(0, sizeof set, &set);
}

static Crowd crowd_at(Opener open, int processes)
{
    Crowd crowd = {};
    crowd.shared = static_cast<Crowd::Shared *>(mmap(
        nullptr, sizeof(Crowd::Shared), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0));
    require(pipe(crowd.start) == 0, "pipe");
    for (int i = 0; i < processes; i++) {
        if (fork() != 0)
            continue;
        close(crowd.start[1]); // a reader must see the end when the parent ends
        stay_on_processor(i);
        const Operation change = open();
        for (char go; read(crowd.start[0], &go, 1) == 1;) {
            long changes = 0;
            for (; !crowd.shared->stop; changes += 2)
                change();
            crowd.shared->changes += changes;
            crowd.shared->working--;
        }
        _exit(0);
    }
    return crowd;
}

// Seconds per change, over all processes.
static double cost_at(const Crowd &crowd, int processes)
{
    constexpr useconds_t DURATION = 30000;
    crowd.shared->stop = false;
    crowd.shared->changes = 0;
    crowd.shared->working = processes;
    const auto start = std::chrono::steady_clock::now();
    require(write(crowd.start[1], "12345678", static_cast<size_t>(processes)) == processes,
            "start");
    usleep(DURATION);
    crowd.shared->stop = true;
    while (crowd.shared->working > 0)
        usleep(100);
    const std::chrono::duration<double> taken = std::chrono::steady_clock::now() - start;
    return taken.count() / static_cast<double>(crowd.shared->changes);
}

static void many_processes()
{
    constexpr std::pair<const char *, Opener> PLACES[] = {
        {"the ring", open_ring},
        {"the same calls by hand", open_by_hand},
        {"file, flock, rewritten", open_locked_file},
        {"SQLite, WAL, synchronous off", open_sqlite},
        {"LMDB, NOSYNC", open_lmdb},
    };
    for (const int processes : {1, 2, 4, 8}) {
        hold(0);
        std::vector<Way> ways;
        for (const auto &[name, open] : PLACES)
            ways.push_back({name, [crowd = crowd_at(open, processes), processes] {
                                return cost_at(crowd, processes);
                            }});
        compare("event ring, changes by " + std::to_string(processes) +
                    (processes == 1 ? " process" : " processes"),
                ways);
    }
}

int main(int argc, char **argv)
{
    mkdir("/mnt/sdcard/video", 0755);
    std::ofstream(EVENT_QUEUE_FILE) << std::string(sizeof(EventQueue), '\0');
    cfg_isEventQueueEmpty(); // makes the ring
    hold(0);
    const Calls calls = {
        {"cfg_enqueueEvent", enqueue}, {"cfg_dequeueEvent", dequeue}, {"cfg_getEvent", peek}};
    if (argc > 1) {
        enqueue(); // no operation may find the ring empty
        enqueue();
        perform(calls);
        return 0;
    }
    count_system_calls(argv[0], calls);
    one_process();
    many_processes();
    return 0;
}
