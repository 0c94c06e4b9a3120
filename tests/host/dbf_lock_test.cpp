// Locks on the records of DBF files, between processes.
#include "dbf_table_testing.h"
#include "host/sdf.h"

namespace zmfb::host {
namespace {

using namespace std::chrono_literals;
using host_test::CaughtErrors;
using host_test::field;
using host_test::in_child;
using host_test::is_same;

class DbfLock : public host_test::DbfTest {
  protected:
    DbfLock() {
        add(create(structure), array_of(0));
        close();
    }
    // Runs `body` in that many processes and expects 0 of each.
    static void in_children(int count, const std::function<int()>& body) {
        std::vector<pid_t> children;
        for (int i = 0; i < count; ++i) {
            children.push_back(::fork());
            if (children.back() == 0) ::_exit(body());
        }
        for (const pid_t child : children) {
            int status = -1;
            ::waitpid(child, &status, 0);
            EXPECT_EQ(status, 0);
        }
    }
    // Adds 1 to record 1 under a lock, that many times.
    int count_up(int times, bool whole_table) {
        if (open_shared() == nullptr) return 1;
        for (int i = 0; i < times; ++i) {
            if (!(whole_table ? flock(1min) : rlock(1min))) return 2;
            if (fieldput(1, fieldget(1).number() + 1).is_nil()) return 3;
            dbunlock();
        }
        return 0;
    }
    const Value structure = array_of(field("N", "N", 8));
};

TEST_F(DbfLock, NoChangeOfManyProcessesIsLost) {
    in_children(4, [&] { return count_up(200, ::getpid() % 2 == 0); });
    open();
    EXPECT_TRUE(is_same(fieldget(1), 800));
}

TEST_F(DbfLock, ALockIsWaitedForNoLongerThanAsked) {
    open_shared("t.dbf", "T");
    rlock();
    open_shared("t.dbf", "U");
    const auto begin = std::chrono::steady_clock::now();
    EXPECT_FALSE(rlock(50ms));
    EXPECT_FALSE(flock(50ms));
    EXPECT_FALSE(dbrlock(1, 50ms));
    EXPECT_GE(std::chrono::steady_clock::now() - begin, 150ms);
    EXPECT_TRUE(is_same(neterrholder(), "")) << "the system does not tell who has a lock of a file";
}

TEST_F(DbfLock, ATableOfOnesOwnIsLockedAndUnlockedWithoutDoingAnything) {
    open();
    Table& table = *table_of();
    EXPECT_TRUE(table.lock_table({}) && table.lock_record(1, {}) && table.unlock_record(1) && table.unlock());
}

TEST_F(DbfLock, TheLocksOfAProcessEndWithIt) {
    EXPECT_EQ(in_child([&] {
                  open_shared();
                  return rlock() ? 0 : 1;
              }),
              0);
    open_shared();
    EXPECT_TRUE(flock());
}

TEST_F(DbfLock, AProgramWithoutAnErrorBlockGoesOnWhenAnotherUseIsInTheWay) {
    open();
    EXPECT_EQ(in_child([&] {
                  const bool refused = open_shared("t.dbf", "U") == nullptr && neterr().logical();
                  return refused ? 0 : 1;
              }),
              0);
    close();
    open_shared();
    flock();
    EXPECT_EQ(in_child([&] {
                  open_shared("t.dbf", "U");
                  return !dbappend() && neterr().logical() ? 0 : 1;
              }),
              0);
}

TEST_F(DbfLock, LinesOfATextFileAreAppendedWithoutLeavingLocks) {
    Table& table = *open_shared();
    rlock();
    EXPECT_TRUE(is_same(dbappsdf(write_file("lines.txt", "       7\n       8\n")), true));
    EXPECT_EQ(table.record_count(), 3);
    EXPECT_TRUE(is_same(dbrlocklist()[1], 1));
    EXPECT_EQ(dbrlocklist().size(), 1U);
}

TEST_F(DbfLock, ADriverWithoutLocksSaysSo) {
    class NoLocks final : public Table {
        [[nodiscard]] std::span<const Field> fields() const override { return {}; }
        std::int64_t record_count() override { return 1; }
        [[nodiscard]] std::int64_t record_number() const override { return 1; }
        [[nodiscard]] bool bof() const override { return false; }
        [[nodiscard]] bool eof() const override { return false; }
        bool go_top() override { return true; }
        bool go_to(std::int64_t) override { return true; }
        bool skip(std::int64_t) override { return true; }
        bool deleted() override { return false; }
        bool set_deleted(bool) override { return true; }
        Value get(std::size_t) override { return {}; }
        bool put(std::size_t, const Value&) override { return true; }
        bool append() override { return true; }
        bool commit() override { return true; }
        bool close() override { return true; }
    };
    NoLocks bare;
    Table& table = bare;
    CaughtErrors caught;
    const auto refuses = [&](bool done) {
        return !done && caught.take_count() == 1 && caught.number("gencode") == 30;
    };
    EXPECT_TRUE(refuses(table.lock_record(1, {})));
    EXPECT_TRUE(refuses(table.lock_table({})));
    EXPECT_TRUE(refuses(table.zap()));
    EXPECT_TRUE(refuses(table.pack()));
    EXPECT_TRUE(refuses(table.set_filter("N > 1")));
    EXPECT_TRUE(refuses(table.set_order(1)));
    EXPECT_TRUE(refuses(table.create_order("N", "N", false)));
    EXPECT_TRUE(refuses(table.destroy_order(1)));
    EXPECT_TRUE(refuses(table.rebuild_orders()));
    EXPECT_TRUE(refuses(table.seek(1, {})));
    EXPECT_TRUE(table.set_filter("") && table.set_order(0) && table.unlock() && table.unlock_record(1));
    EXPECT_EQ(caught.take_count(), 0);
}

}  // namespace
}  // namespace zmfb::host
