#include "tests/support/worker/program.h"

#include <fmt/format.h>

#include <algorithm>
#include <chrono>
#include <random>
#include <string>
#include <thread>

#include "host/text.h"
#include "tests/support/worker/contention.h"

namespace zmfb::test {
namespace {

using Random = std::mt19937;

unsigned below(Random& random, unsigned bound) {
    return std::uniform_int_distribution(0U, bound - 1)(random);
}

void pause_up_to(Random& random, unsigned microseconds) {
    std::this_thread::sleep_for(std::chrono::microseconds(below(random, microseconds)));
}

std::string text_of(const Value& value) { return std::string(value.text()); }

// One lock of a table: a record's, or the table's own.
class Lock {
  public:
    Lock(zmFBConn& connection, const Value& table, const Value& area, unsigned record)
        : connection_(connection),
          table_(table),
          area_(area),
          record_(std::to_string(record)),
          whole_(record == 0) {}

    bool take() {
        return whole_ ? connection_.call("settableaslocked", table_, area_).logical()
                      : connection_.call("setrecordaslocked", table_, area_, record_).logical();
    }

    bool release() {
        return whole_ ? connection_.call("settableasunlocked", table_, area_).logical()
                      : connection_.call("setrecordasunlocked", table_, area_, record_).logical();
    }

    // Whether exactly one row of the system table stands for the lock, and that row is this area's.
    bool has_its_row() {
        const std::string statement =
            whole_
                ? fmt::format("SELECT FLK_AREAID FROM RDDSYS_FLK WHERE FLK_TABLE = '{}'", table_.text())
                : fmt::format("SELECT RLK_AREAID FROM RDDSYS_RLK WHERE RLK_TABLE = '{}' AND RLK_RECNO = {}",
                              table_.text(), record_);
        const Value rows = connection_.call("executequery", statement);
        return rows.size() == 2 && host::trim(rows[2][1]).string() == area_.text();
    }

    [[nodiscard]] bool whole() const { return whole_; }
    [[nodiscard]] std::string name() const { return whole_ ? "table" : record_; }

  private:
    zmFBConn& connection_;
    Value table_;
    Value area_;
    std::string record_;
    bool whole_;
};

constexpr int release_tries = 1000;

// Makes a call; lets `longest` be its time in nanoseconds when it took longer than that.
template <class Call>
bool timed(std::int64_t& longest, const Call& call) {
    const std::int64_t begin = monotonic_now();
    const bool answer = call();
    longest = std::max(longest, monotonic_now() - begin);
    return answer;
}

// How often the release had to be tried again; release_tries when it never went well.
int release_for_sure(Lock& lock, std::int64_t& longest) {
    for (int tried = 0; tried < release_tries; ++tried) {
        if (timed(longest, [&] { return lock.release(); })) return tried;
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return release_tries;
}

}  // namespace

Value contend(zmFBConn& connection, Args args) {
    const Value &table = args[0], &area = args[1];
    const auto attempts = args[2].integer();
    const auto records = static_cast<unsigned>(args[3].integer());
    Random random(static_cast<unsigned>(args[4].integer()));
    const std::string events = text_of(args[5]);
    const bool looks_again = args[6].same(true);

    int grants = 0, table_grants = 0, refusals = 0, wrong_rows = 0, retries = 0, kept = 0, given_back = 0;
    std::int64_t longest = 0;
    const auto release = [&](Lock& lock) {
        const int tried = release_for_sure(lock, longest);
        retries += tried;
        if (tried == release_tries) ++kept;
    };
    for (std::int64_t attempt = 0; attempt < attempts; ++attempt) {
        Lock lock(connection, table, area, below(random, 5) == 0 ? 0 : 1 + below(random, records));
        if (!timed(longest, [&] { return lock.take(); })) {
            ++refusals;
            pause_up_to(random, 1000);
            continue;
        }
        if (looks_again && !timed(longest, [&] { return lock.take(); })) {
            ++given_back;
            release(lock);
            pause_up_to(random, 1000);
            continue;
        }
        Hold hold{.resource = lock.name(), .area = text_of(area), .from = monotonic_now()};
        ++grants;
        if (lock.whole()) ++table_grants;
        if (!lock.has_its_row()) ++wrong_rows;
        pause_up_to(random, 2000);
        hold.until = monotonic_now();
        if (!record_hold(events, hold)) return "the hold could not be recorded";
        release(lock);
    }
    return host::array_of(attempts, grants, table_grants, refusals, wrong_rows, retries, kept, given_back,
                          longest / 1000000);
}

Value takelock(zmFBConn& connection, Args args) {
    Lock lock(connection, args[0], args[1], static_cast<unsigned>(args[2].integer()));
    if (!lock.take()) return false;
    if (lock.take()) return true;
    std::int64_t longest = 0;
    release_for_sure(lock, longest);
    return false;
}

Value appendrows(zmFBConn& connection, Args args) {
    const Value &table = args[0], &area = args[1];
    if (!connection.call("settableusedbyarea", true, table, area, true).logical()) return "not registered";
    const Value numbers = Value::array_of_size(0);
    for (std::int64_t row = 1; row <= args[2].integer(); ++row) {
        const Value failure = connection.call(
            "executeupdate", fmt::format("INSERT INTO {0} (NAME, RDD_AREAID) VALUES ('{1}/{2}', '{1}')",
                                         table.text(), area.text(), row));
        if (!host::empty(failure)) return failure;
        numbers.push(connection.call("getapprecnofromarea", table, area));
    }
    connection.call("settableusedbyarea", false, table, area, true);
    return numbers;
}

void churn(zmFBConn& connection, Args args, void (*answer)(const Value&)) {
    const Value &table = args[0], &area = args[1];
    const auto records = static_cast<unsigned>(args[2].integer());
    Random random(static_cast<unsigned>(args[3].integer()));
    connection.call("settableusedbyarea", true, table, area, true);
    answer(connection.call("setrecordaslocked", table, area, "1"));
    for (;;) {
        Lock lock(connection, table, area, below(random, 4) == 0 ? 0 : 2 + below(random, records - 1));
        if (below(random, 2) == 0) {
            lock.take();
        } else {
            lock.release();
        }
    }
}

}  // namespace zmfb::test
