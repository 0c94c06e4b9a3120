#include "rdd/claims.h"

#include <fmt/format.h>

#include <algorithm>
#include <random>
#include <thread>
#include <utility>

#include "conn/public_call.h"
#include "rdd/desk.h"
#include "zmfbconn/cancel.h"
#include "zmfbconn/database.h"
#include "zmfbconn/methods.h"

namespace zmfb::rdd {

namespace {

using Clock = std::chrono::steady_clock;

std::minstd_rand& random_numbers() {
    static std::minstd_rand numbers{std::random_device()()};
    return numbers;
}

// Longer each time, and of random length: two that get in each other's way do not meet again.
class Pauses {
  public:
    void pause(Clock::time_point not_beyond) {
        std::uniform_int_distribution<std::int64_t> some(most_ / 2, most_);
        std::this_thread::sleep_until(
            std::min(Clock::now() + std::chrono::microseconds(some(random_numbers())), not_beyond));
        most_ = std::min<std::int64_t>(2 * most_, longest);
    }

  private:
    static constexpr std::int64_t longest = 100000;
    std::int64_t most_ = 4000;
};

// So often a lock is lost for nobody's sake before that is an error; an unlock, before it is left to be.
constexpr int most_losses = 8;

template <class Done>
void persist(const Done& done) noexcept {
    const Undisturbed by_cancellations;
    Pauses pauses;
    for (int losses = 0; losses < most_losses; ++losses) {
        try {
            if (done()) return;
        } catch (const SqlError& error) {
            if (error.sqlstate().starts_with("08")) return;  // the connection is lost for good
        } catch (...) {  // an error block broke it off; there is nobody to tell
        }
        pauses.pause(Clock::time_point::max());
    }
}

// What `done` answers; what was written is taken back when it is broken off.
template <class Done, class TakeBack>
auto done_or_taken_back(const Done& done, const TakeBack& take_back) {
    try {
        return done();
    } catch (...) {
        take_back();
        throw;
    }
}

// What is asked for the table and the area.
constexpr const char* exclusive_areas =
    "select first 1 OPN_AREAID from RDDSYS_OPN where OPN_TABLE = ? and OPN_AREAID <> ? and OPN_SHARED = 'F'";
constexpr const char* other_areas =
    "select first 1 OPN_AREAID from RDDSYS_OPN where OPN_TABLE = ? and OPN_AREAID <> ?";
constexpr const char* other_table_locks =
    "select first 1 FLK_AREAID from RDDSYS_FLK where FLK_TABLE = ? and FLK_AREAID <> ?";
constexpr const char* other_record_locks =
    "select first 1 RLK_AREAID from RDDSYS_RLK where RLK_TABLE = ? and RLK_AREAID <> ?";
constexpr const char* own_registration =
    "select first 1 OPN_AREAID from RDDSYS_OPN where OPN_TABLE = ? and OPN_AREAID = ?";
constexpr const char* own_table_lock =
    "select first 1 FLK_AREAID from RDDSYS_FLK where FLK_TABLE = ? and FLK_AREAID = ?";
constexpr const char* own_record_lock =
    "select first 1 RLK_AREAID from RDDSYS_RLK where RLK_TABLE = ? and RLK_AREAID = ? and RLK_RECNO = ?";

}  // namespace

Claims::Claims(const Desk& desk, std::string table, std::string id, OpenMode mode)
    : desk_(desk), table_(std::move(table)), id_(std::move(id)), mode_(mode), looking_(desk.reading()) {
    insist(table_, Wait::zero(),
           [this] { return mode_ == OpenMode::exclusive ? open_exclusive() : open_shared(); });
}

// One that nobody can be blamed for was lost in a deadlock, or the holder has just gone.
void Claims::insist(std::string_view what, Wait wait, const std::function<Refused()>& attempt) const {
    const conn::PublicCall under_way;  // what the engine says is kept to its end
    constexpr Wait longest = std::chrono::hours(24 * 365);
    const Clock::time_point until = Clock::now() + std::min(wait, longest);
    Pauses pauses;
    for (int losses = 0;;) {
        const Refused refused = attempt();
        if (!refused) return;
        const bool in_time = Clock::now() < until;
        if (!refused->empty() && !in_time) throw InUse(what, Holder(*refused));
        if (refused->empty() && ++losses > most_losses && !in_time) {
            throw AreaError(AreaError::Reason::refused,
                            fmt::format("{} was not given: {}", what, last_engine_message()));
        }
        pauses.pause(in_time ? until : Clock::time_point::max());
    }
}

template <class... More>
std::string Claims::find(const char* query, const More&... more) const {
    auto prepared = looks_.find(query);
    if (prepared == looks_.end()) prepared = looks_.emplace(query, looking_.prepare(query)).first;
    return prepared->second.maybe_one<std::string>(table_, id_, more...).value_or("");
}

template <class TakeBack>
Claims::Refused Claims::look(const char* query, const TakeBack& take_back) const {
    std::string holder = done_or_taken_back([&] { return find(query); }, take_back);
    if (holder.empty()) return std::nullopt;
    take_back();
    return holder;
}

// Asking the method first saves work.
Claims::Refused Claims::open_shared() const {
    zmFBConn connection = desk_.connection();
    if (connection(m::istableinexclusivemode, table_)) return find(exclusive_areas);
    const auto take_back = [this] { unregister(); };
    if (done_or_taken_back([&] { return connection(m::settableusedbyarea, true, table_, AreaId(id_), true); },
                           take_back))
        return look(exclusive_areas, take_back);
    take_back();
    return "";
}

// The lock is there before the registration, which keeps others from opening the table, is looked at.
Claims::Refused Claims::open_exclusive() const {
    if (std::string holder = find(other_areas); !holder.empty()) return holder;
    if (Refused refused = lock_table()) return refused;
    const auto take_back = [this] {
        unregister();
        unlock_table();
    };
    if (done_or_taken_back(
            [this] { return desk_.connection()(m::settableusedbyarea, true, table_, AreaId(id_), false); },
            take_back))
        return look(other_areas, take_back);
    take_back();
    return "";
}

bool Claims::covers(std::int64_t recno) const {
    if (mode_ == OpenMode::exclusive || has_table()) return true;
    const auto found = records_.find(recno);
    return found != records_.end() && found->second.users > 0 && found->second.in_database;
}

void Claims::take(std::int64_t recno, Wait wait) {
    const bool lent = mode_ == OpenMode::exclusive || has_table();
    // There first: a lock that could not be noted would stay.
    const auto noted = records_.try_emplace(recno).first;
    Lock& lock = noted->second;
    if (!lent && !lock.in_database) {
        done_or_taken_back(
            [&] {
                insist(fmt::format("Record {} of {}", recno, table_), wait,
                       [&] { return lock_record(recno); });
            },
            [&] {
                if (lock.users == 0) records_.erase(noted);
            });
    }
    ++lock.users;
    lock.in_database = lock.in_database || !lent;
}

Claims::Refused Claims::lock_record(std::int64_t recno) const {
    zmFBConn connection = desk_.connection();
    const AreaId own(id_);
    const auto take_back = [&] { unlock_record(recno); };
    if (!done_or_taken_back(
            [&] { return connection(m::setrecordaslocked, table_, own, RecordNumber(recno)); }, take_back)) {
        AreaId holder = connection(m::getrlockareaid, table_, RecordNumber(recno));
        if (holder.text().empty()) holder = connection(m::getflockareaid, table_);
        return holder == own ? "" : holder.text();
    }
    return look(other_table_locks, take_back);
}

Claims::Refused Claims::lock_table() const {
    zmFBConn connection = desk_.connection();
    const auto take_back = [this] { unlock_table(); };
    if (done_or_taken_back([&] { return connection(m::settableaslocked, table_, AreaId(id_)); }, take_back))
        return look(other_record_locks, take_back);
    const std::string holder = find(other_table_locks);
    return holder.empty() ? find(other_record_locks) : holder;
}

void Claims::give_back(std::int64_t recno) noexcept {
    const auto found = records_.find(recno);
    if (found == records_.end() || --found->second.users > 0 || desk_.joint() != nullptr) return;
    if (found->second.in_database) unlock_record(recno);
    records_.erase(found);
}

void Claims::take_table(Wait wait) {
    if (!has_table_ && mode_ != OpenMode::exclusive) insist(table_, wait, [this] { return lock_table(); });
    has_table_ = wants_table_ = true;
}

void Claims::give_table_back() noexcept {
    wants_table_ = false;
    if (!has_table_ || desk_.joint() != nullptr) return;
    has_table_ = false;
    if (mode_ != OpenMode::exclusive) unlock_table();
}

void Claims::joint_ended() noexcept {
    if (!wants_table_) give_table_back();
    for (auto at = records_.begin(); at != records_.end();) {
        if (at->second.users == 0 && at->second.in_database) unlock_record(at->first);
        at = at->second.users == 0 ? records_.erase(at) : std::next(at);
    }
}

void Claims::leave(bool connected) noexcept {
    const auto records = std::exchange(records_, {});
    if (!connected) return;
    for (const auto& [recno, lock] : records) {
        if (lock.in_database) unlock_record(recno);
    }
    unregister();
    if (mode_ == OpenMode::exclusive || has_table_) unlock_table();
    looks_.clear();
}

// An unlock that was refused may have been one of what was not locked.
void Claims::unlock_record(std::int64_t recno) const noexcept {
    persist([&] {
        return desk_.connection()(m::setrecordasunlocked, table_, AreaId(id_), RecordNumber(recno)) ||
               find(own_record_lock, recno).empty();
    });
}

void Claims::unlock_table() const noexcept {
    persist([&] {
        return desk_.connection()(m::settableasunlocked, table_, AreaId(id_)) || find(own_table_lock).empty();
    });
}

// The method takes a registration that it could not look for as one that is not there.
void Claims::unregister() const noexcept {
    persist([&] {
        return desk_.connection()(m::settableusedbyarea, false, table_, AreaId(id_), true) &&
               find(own_registration).empty();
    });
}

}  // namespace zmfb::rdd
