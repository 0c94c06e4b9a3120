// Shared and exclusive use of DBF files, between work areas and between processes.
#include <set>

#include "dbf_table_testing.h"
#include "host/file.h"

namespace zmfb::host {
namespace {

using host_test::CaughtErrors;
using host_test::field;
using host_test::in_child;
using host_test::is_same;

class DbfSharing : public host_test::DbfTest {
  protected:
    DbfSharing() {
        create(structure);
        close();
    }
    void expect_refused(CaughtErrors& caught, int gencode) const {
        EXPECT_EQ(caught.take_count(), 1);
        EXPECT_EQ(caught.number("gencode"), gencode);
        EXPECT_EQ(caught.number("oscode"), 32);
        EXPECT_TRUE(is_same(caught.field("candefault"), true));
        EXPECT_EQ(caught.text("filename"), path("t.dbf"));
        EXPECT_TRUE(is_same(neterr(), true));
    }
    const Value structure = array_of(field("WHO", "N", 5), field("N", "N", 8));
};

TEST_F(DbfSharing, SharedUsesGoTogether) {
    EXPECT_NE(open_shared("t.dbf", "T"), nullptr);
    EXPECT_NE(open_shared("t.dbf", "U"), nullptr);
    EXPECT_TRUE(is_same(neterr(), false));
}

TEST_F(DbfSharing, AnExclusiveUseKeepsAllOthersOut) {
    open("t.dbf", "T");
    CaughtErrors caught;
    EXPECT_EQ(open_shared("t.dbf", "U"), nullptr);
    expect_refused(caught, 21);
    EXPECT_EQ(open("t.dbf", "U"), nullptr);
    expect_refused(caught, 21);
    close("T");
    EXPECT_NE(open_shared("t.dbf", "U"), nullptr);
    EXPECT_TRUE(is_same(neterr(), false));
    EXPECT_EQ(caught.take_count(), 0);
}

TEST_F(DbfSharing, ASharedUseKeepsAnExclusiveOneOut) {
    open_shared("t.dbf", "T");
    CaughtErrors caught;
    EXPECT_EQ(open("t.dbf", "U"), nullptr);
    expect_refused(caught, 21);
}

TEST_F(DbfSharing, ReadingOnlyIsAUseLikeAnother) {
    dbusearea(true, "DBFIDX", path("t.dbf"), "T", false, true);
    ASSERT_NE(table_of("T"), nullptr);
    CaughtErrors caught;
    EXPECT_EQ(open_shared("t.dbf", "U"), nullptr);
    expect_refused(caught, 21);
    close("T");
    dbusearea(true, "DBFIDX", path("t.dbf"), "T", true, true);
    EXPECT_NE(open_shared("t.dbf", "U"), nullptr);
    EXPECT_EQ(caught.take_count(), 0);
}

TEST_F(DbfSharing, OtherProcessesAreKeptOutToo) {
    open("t.dbf", "T");
    const auto opens = [&](bool shared) {
        return in_child([&] {
            const CaughtErrors caught;
            return (shared ? open_shared("t.dbf", "U") : open("t.dbf", "U")) == nullptr ? 0 : 1;
        });
    };
    EXPECT_EQ(opens(true), 0);
    EXPECT_EQ(opens(false), 0);
    close("T");
    EXPECT_EQ(opens(true), 1);
    EXPECT_EQ(opens(false), 1);
}

TEST_F(DbfSharing, AFileLockKeepsTablesFromBeingOpened) {
    const Value handle = fopen(path("t.dbf"), 2);
    EXPECT_TRUE(is_same(flockf(handle, 2), 0));
    CaughtErrors caught;
    EXPECT_EQ(open_shared("t.dbf", "T"), nullptr);
    expect_refused(caught, 21);
    fclose(handle);
    EXPECT_NE(open_shared("t.dbf", "T"), nullptr);
}

TEST_F(DbfSharing, ATableInUseIsNotCreatedAnew) {
    add(*open(), array_of(1, 2));
    close();
    const std::string before = content(path("t.dbf"));
    open_shared("t.dbf", "T");
    CaughtErrors caught;
    EXPECT_TRUE(is_same(dbcreate(path("t.dbf"), array_of(field("X", "C", 1)), "DBFIDX"), false));
    expect_refused(caught, 20);
    EXPECT_EQ(content(path("t.dbf")), before);
    close("T");
    EXPECT_TRUE(is_same(dbcreate(path("t.dbf"), array_of(field("X", "C", 1)), "DBFIDX"), true));
    EXPECT_EQ(content(path("t.dbf")).size(), 66U);
}

TEST_F(DbfSharing, WhatOneUseStoresTheOtherReads) {
    Table& first = *open_shared("t.dbf", "T");
    Table& second = *open_shared("t.dbf", "U");
    add(first, array_of(1, 10));
    EXPECT_EQ(second.record_count(), 1) << "a record counts when it is appended";
    first.unlock();
    second.go_top();
    EXPECT_TRUE(is_same(second.get(1), Value(10)));
    second.lock_record(1, {});
    second.put(1, 20);
    second.skip(0);
    first.go_top();
    EXPECT_TRUE(is_same(first.get(1), Value(20)));
}

TEST_F(DbfSharing, RecordsAppendedByManyProcessesAreAllThere) {
    constexpr int processes = 4;
    constexpr int records = 250;
    std::vector<pid_t> children;
    for (int who = 1; who <= processes; ++who) {
        const pid_t child = ::fork();
        if (child != 0) {
            children.push_back(child);
            continue;
        }
        Table* const table = open_shared("t.dbf", "T");
        bool stored = table != nullptr;
        for (int n = 1; n <= records && stored; ++n) stored = add(*table, array_of(who, n));
        ::_exit(stored && table->close() ? 0 : 1);
    }
    for (const pid_t child : children) {
        int status = -1;
        ::waitpid(child, &status, 0);
        EXPECT_EQ(status, 0);
    }
    Table& table = *open();
    EXPECT_EQ(table.record_count(), processes * records);
    std::set<std::pair<double, double>> seen;
    for (; !table.eof(); table.skip(1)) seen.emplace(table.get(0).number(), table.get(1).number());
    EXPECT_EQ(seen.size(), static_cast<std::size_t>(processes * records));
    EXPECT_FALSE(seen.contains({0, 0}));
    EXPECT_EQ(std::filesystem::file_size(path("t.dbf")), 97U + processes * records * 14U + 1U);
}

}  // namespace
}  // namespace zmfb::host
