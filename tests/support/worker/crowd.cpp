#include "tests/support/worker/crowd.h"

#include <fmt/format.h>

#include <array>
#include <chrono>
#include <optional>
#include <random>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "host/array.h"
#include "tests/support/worker/contention.h"
#include "tests/support/worker/ledger.h"
#include "zmfbconn/area.h"

namespace zmfb::test {
namespace {

using namespace std::chrono_literals;

enum Counted { changes, transfers, appends, deletions, walks, table_locks, in_the_way, counters };

class Worker {
  public:
    Worker(zmFBConn& connection, const Value& table, unsigned seed, std::int64_t anchors, std::string ledger,
           std::string holds)
        : connection_(connection),
          area_(connection, table.text()),
          name_(area_.field<std::string>("NAME")),
          amount_(area_.field<std::int64_t>("AMOUNT")),
          random_(seed),
          anchors_(anchors),
          ledger_(std::move(ledger)),
          holds_(std::move(holds)) {}

    void work_until(std::chrono::steady_clock::time_point end) {
        while (std::chrono::steady_clock::now() < end && wrong_.empty()) {
            try {
                work();
            } catch (const InUse&) {
                ++counts_[in_the_way];
            }
        }
    }

    Value answer() const {
        const Value all = Value::array_of_size(0);
        for (const std::int64_t count : counts_) all.push(count);
        all.push(wrong_);
        return all;
    }

  private:
    std::int64_t below(std::int64_t bound) {
        return std::uniform_int_distribution<std::int64_t>(0, bound - 1)(random_);
    }

    void work() {
        const std::int64_t what = below(100);
        if (what < 40) return change();
        if (what < 55) return transfer();
        if (what < 70) return append();
        if (what < 80) return remove();
        if (what < 94) return walk();
        lock_table();
    }

    // To some record that is no anchor; .F. when there is none of the number that was drawn.
    bool go_somewhere() {
        const std::int64_t drawn = anchors_ + 1 + below(60);
        if (area_.go(drawn)) return true;
        return area_.bottom() && area_.skip(-below(10)) && !area_.bof() && area_.recno() > anchors_;
    }

    // Makes a change that the ledger knows of before and after.
    template <class Make>
    void with_ledger(const Change& change, const Make& make) {
        ledger_.begin(change);
        try {
            make();
        } catch (...) {
            ledger_.end(false);
            throw;
        }
        ledger_.end(true);
    }

    // Works on a record while it is locked, and notes the hold. A record that is gone is left.
    template <class Do>
    void locked(const Do& work) {
        try {
            Held held = area_.lock(2s);
            Hold hold{.resource = std::to_string(held.recno()), .area = area_.id(), .from = monotonic_now()};
            removed_at_.reset();
            work(held);
            hold.until = removed_at_.value_or(monotonic_now());
            note(hold);
        } catch (const AreaError& error) {
            if (error.reason() != AreaError::Reason::gone) throw;
        }
    }

    void note(const Hold& hold) {
        if (!record_hold(holds_, hold)) wrong_ = "a hold could not be recorded";
    }

    void change() {
        if (!go_somewhere()) return;
        locked([&](Held& held) {
            const std::int64_t more = below(2001) - 1000;
            held[amount_] = held[amount_] + more;
            if (below(3) == 0) held[name_] = some_name();
            with_ledger({more, 0}, [&] { held.write(); });
            ++counts_[changes];
        });
    }

    // From one record to the next one in the order of their numbers, so that nobody waits in a circle.
    void transfer() {
        area_.order("");
        if (!go_somewhere()) return;
        Together together(connection_);
        locked([&](Held& from) {
            if (!area_.skip()) return;
            locked([&](Held& to) {
                const std::int64_t some = below(500);
                from[amount_] -= some;
                to[amount_] += some;
                from.write();
                to.write();
                if (below(4) == 0) {
                    together.roll_back();
                } else {
                    together.commit();
                }
                ++counts_[transfers];
            });
        });
    }

    void append() {
        Held added = area_.append(2s);
        const std::int64_t amount = below(1000);
        added[name_] = some_name();
        added[amount_] = amount;
        with_ledger({amount, 1}, [&] { added.write(); });
        const Hold hold{std::to_string(added.recno()), area_.id(), monotonic_now(), monotonic_now()};
        note(hold);
        ++counts_[appends];
    }

    void remove() {
        if (!go_somewhere()) return;
        locked([&](Held& held) {
            removed_at_ = monotonic_now();  // its lock goes with the record
            with_ledger({-std::int64_t{held[amount_]}, -1}, [&] { held.remove(); });
            ++counts_[deletions];
        });
    }

    void walk() {
        const bool by_name = below(2) == 0;
        area_.order(by_name ? "NAME" : "");
        const bool back = below(2) == 0;
        std::vector<int> met(static_cast<std::size_t>(anchors_) + 1);
        std::string before;
        std::int64_t recno_before = 0;
        for (bool more = back ? area_.bottom() : area_.top(); more;
             more = area_.skip(back ? -1 : 1) && !area_.bof()) {
            const std::int64_t recno = area_.recno();
            const std::string key = by_name ? area_[name_] : "";
            const bool in_order =
                recno_before == 0 || (back ? std::pair(key, recno) < std::pair(before, recno_before)
                                           : std::pair(key, recno) > std::pair(before, recno_before));
            if (!in_order) return blame(fmt::format("{} {} behind {} {}", key, recno, before, recno_before));
            if (recno <= anchors_) ++met[static_cast<std::size_t>(recno)];
            before = key;
            recno_before = recno;
        }
        for (std::size_t anchor = 1; anchor < met.size(); ++anchor) {
            if (met[anchor] != 1) blame(fmt::format("record {} met {} times", anchor, met[anchor]));
        }
        ++counts_[walks];
    }

    // The table is unlocked before anything is thrown.
    void lock_table() {
        area_.lock_table(2s);
        try {
            Hold hold{.resource = "table", .area = area_.id(), .from = monotonic_now()};
            const Change first = sum();
            std::this_thread::sleep_for(std::chrono::microseconds(below(2000)));
            if (!(sum() == first)) blame("the table changed while it was locked");
            hold.until = monotonic_now();
            note(hold);
        } catch (...) {
            area_.unlock_table();
            throw;
        }
        area_.unlock_table();
        ++counts_[table_locks];
    }

    Change sum() {
        area_.order("");
        Change all;
        for (const Area& at : area_) {
            all.amount += at[amount_];
            ++all.records;
        }
        return all;
    }

    std::string some_name() { return fmt::format("N{:04}", below(2000)); }
    void blame(const std::string& what) {
        if (wrong_.empty()) wrong_ = what;
    }

    zmFBConn& connection_;
    Area area_;
    AreaField<std::string> name_;
    AreaField<std::int64_t> amount_;
    std::mt19937 random_;
    std::int64_t anchors_;
    Ledger ledger_;
    std::string holds_;
    std::array<std::int64_t, counters> counts_{};
    std::string wrong_;
    std::optional<std::int64_t> removed_at_;
};

}  // namespace

Value crowd(zmFBConn& connection, Args args) {
    const auto text = [&](std::size_t i) { return std::string(args[i].text()); };
    const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(args[1].integer());
    Worker worker(connection, args[0], static_cast<unsigned>(args[2].integer()), args[3].integer(), text(4),
                  text(5));
    worker.work_until(end);
    return worker.answer();
}

}  // namespace zmfb::test
