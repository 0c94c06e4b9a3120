// DBF tables when the system refuses: full disks, missing rights, a process killed at its work.
#include <fcntl.h>

#include "dbf_table_testing.h"
#include "tests/support/dbf_readers.h"

namespace zmfb::host {
namespace {

using host_test::CaughtErrors;
using host_test::field;
using host_test::in_child;
using host_test::is_same;
using host_test::limit_files_to;

class DbfFailure : public host_test::DbfTest {
  protected:
    const Value structure = array_of(field("TEXT", "C", 99));
    static constexpr std::size_t header_size = 65;
    static constexpr std::size_t record_size = 100;

    // What a reader finds, and the bytes of the file that its header has no room for.
    void expect_whole(std::size_t records) const {
        EXPECT_EQ(counted(path("t.dbf")), records);
        EXPECT_EQ(test::read_with_dbfread(path("t.dbf")).size(), records);
        EXPECT_EQ(content(path("t.dbf")).size(), header_size + records * record_size + 1);
        EXPECT_EQ(content(path("t.dbf")).back(), '\x1A');
    }
};

// Runs as a user without rights, which root has to become first.
int without_rights(const std::function<int()>& body) {
    return in_child([&] {
        constexpr uid_t nobody = 65534;
        if (::geteuid() == 0 && (::setegid(nobody) != 0 || ::seteuid(nobody) != 0)) return 99;
        return body();
    });
}

TEST_F(DbfFailure, AFullDiskTakesBackWhatWasAppendedSinceTheLastCommit) {
    const int outcome = in_child([&] {
        Table& table = create(structure);
        for (int i = 0; i < 10; ++i) add(table, array_of("committed"));
        if (!table.commit()) return 1;
        limit_files_to(500000);
        CaughtErrors caught;
        int stored = 0;
        while (stored < 100000 && table.append()) ++stored;
        if (stored < 4000 || caught.take_count() != 1) return 2;
        if (caught.number("gencode") != 24 || caught.number("oscode") != 29) return 3;
        if (caught.text("description") != "Write error: " + path("t.dbf")) return 4;
        if (table.record_count() != 10 || !table.eof()) return 5;
        table.go_to(10);
        if (!table.get(0).same("committed" + std::string(90, ' '))) return 6;
        if (!add(table, array_of("fits")) || !table.close()) return 7;
        return caught.take_count();
    });
    EXPECT_EQ(outcome, 0);
    expect_whole(11);
}

TEST_F(DbfFailure, ADiskThatIsFullAtTheEndMarkLeavesTheOldRecords) {
    const int outcome = in_child([&] {
        Table& table = create(structure);
        add(table, array_of("committed"));
        table.commit();
        limit_files_to(header_size + 3 * record_size);
        add(table, array_of("second"));
        add(table, array_of("third"));
        CaughtErrors caught;
        const bool closed = table.close();
        return !closed && caught.take_count() == 1 && caught.number("gencode") == 22 &&
                       caught.number("oscode") == 29
                   ? 0
                   : 1;
    });
    EXPECT_EQ(outcome, 0);
    expect_whole(1);
}

TEST_F(DbfFailure, AFullDiskTakesBackASharedRecord) {
    create(structure);
    close();
    const int outcome = in_child([&] {
        Table& table = *open_shared();
        limit_files_to(header_size + record_size + record_size / 2);
        if (!table.append()) return 1;
        CaughtErrors caught;
        const bool refused = !table.append() && caught.number("oscode") == 29;
        return refused && table.record_count() == 1 && table.close() ? 0 : 2;
    });
    EXPECT_EQ(outcome, 0);
    expect_whole(1);
}

TEST_F(DbfFailure, WhatNeverReachesTheDiskIsNoCommit) {
    add(create(structure), array_of("before"));
    close();
    const int outcome = in_child([&] {
        // What is written to this device counts as written, but it has no disk to wait for.
        const int device = ::open("/dev/null", O_RDWR);
        for (const auto shared : {true, false}) {
            Table& table = shared ? *open_shared() : *open();
            const bool stored =
                shared ? table.lock_record(1, {}) && table.put(0, "after") : add(table, array_of("after"));
            if (!stored) return 1;
            for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd")) {
                std::error_code gone;
                if (std::filesystem::read_symlink(entry, gone) == path("t.dbf"))
                    ::dup2(device, std::stoi(entry.path().filename()));
            }
            CaughtErrors caught;
            if (table.commit() || caught.take_count() != 1) return 2;
            if (caught.number("gencode") != 24 || caught.number("oscode") != 29) return 3;
            close();
        }
        return 0;
    });
    EXPECT_EQ(outcome, 0);
    expect_whole(1);
}

TEST_F(DbfFailure, ATableThatCannotBeWrittenIsNotCreated) {
    const int outcome = in_child([&] {
        limit_files_to(40);
        CaughtErrors caught;
        if (!is_same(dbcreate(path("t.dbf"), structure, "DBFIDX"), false)) return 1;
        return caught.number("gencode") == 20 && caught.number("oscode") == 29 ? 0 : 2;
    });
    EXPECT_EQ(outcome, 0);
    EXPECT_FALSE(std::filesystem::exists(path("t.dbf")));
}

TEST_F(DbfFailure, AKilledProcessLeavesTheLastCommit) {
    const int outcome = in_child([&] {
        Table& table = create(structure);
        for (int i = 0; i < 100; ++i) add(table, array_of("committed"));
        table.commit();
        for (int i = 0; i < 10000; ++i) add(table, array_of("lost"));
        ::kill(::getpid(), SIGKILL);
        return 0;
    });
    EXPECT_EQ(outcome, 128 + SIGKILL);
    EXPECT_GT(content(path("t.dbf")).size(), header_size + 5000 * record_size) << "blocks had been written";
    EXPECT_EQ(counted(path("t.dbf")), 100U);
    EXPECT_EQ(test::read_with_dbfdump(path("t.dbf")).size(), 100U);
    add(*open(), array_of("after"));
    close();
    expect_whole(101);
}

TEST_F(DbfFailure, AFolderThatMayNotBeWrittenRefusesANewTable) {
    std::filesystem::permissions(path(""), std::filesystem::perms(0555));
    const int outcome = without_rights([&] {
        CaughtErrors caught;
        if (!is_same(dbcreate(path("t.dbf"), structure, "DBFIDX"), false)) return 1;
        return caught.number("gencode") == 20 && caught.number("oscode") == 5 && is_same(neterr(), false) ? 0
                                                                                                          : 2;
    });
    std::filesystem::permissions(path(""), std::filesystem::perms(0755));
    EXPECT_EQ(outcome, 0);
}

TEST_F(DbfFailure, AFileThatMayNotBeWrittenOpensForReadingOnly) {
    add(create(structure), array_of("text"));
    close();
    std::filesystem::permissions(path(""), std::filesystem::perms(0755));
    std::filesystem::permissions(path("t.dbf"), std::filesystem::perms(0444));
    const int outcome = without_rights([&] {
        CaughtErrors caught;
        if (open() != nullptr || caught.number("gencode") != 21 || caught.number("oscode") != 5) return 1;
        dbusearea(true, "DBFIDX", path("t.dbf"), "T", false, true);
        return table_of("T") != nullptr && table_of("T")->record_count() == 1 ? 0 : 2;
    });
    EXPECT_EQ(outcome, 0);
}

TEST_F(DbfFailure, ATableOpenForReadingOnlyRefusesChanges) {
    add(create(structure), array_of("text"));
    close();
    const std::string before = content(path("t.dbf"));
    dbusearea(true, "DBFIDX", path("t.dbf"), "T", false, true);
    Table& table = *table_of("T");
    CaughtErrors caught;
    EXPECT_FALSE(table.put(0, "x"));
    EXPECT_FALSE(table.put_columns(0, "x"));
    EXPECT_FALSE(table.append());
    EXPECT_FALSE(table.set_deleted(true));
    EXPECT_EQ(caught.take_count(), 4);
    EXPECT_EQ(caught.number("gencode"), 39);
    close();
    EXPECT_EQ(content(path("t.dbf")), before);
}

TEST_F(DbfFailure, WhatIsNotThereOrNoFileDoesNotOpen) {
    std::filesystem::create_directory(path("folder.dbf"));
    ASSERT_EQ(::mkfifo(path("pipe.dbf").c_str(), 0600), 0);
    const std::pair<const char*, int> cases[] = {{"missing.dbf", 2}, {"folder.dbf", 5}, {"pipe.dbf", 5}};
    for (const auto& [name, oscode] : cases) {
        CaughtErrors caught;
        EXPECT_EQ(open(name), nullptr) << name;
        EXPECT_EQ(caught.number("gencode"), 21) << name;
        EXPECT_EQ(caught.number("oscode"), oscode) << name;
        EXPECT_EQ(caught.text("description"), "Open error: " + path(name));
        EXPECT_TRUE(is_same(caught.field("candefault"), false));
        EXPECT_TRUE(is_same(neterr(), false));
    }
    CaughtErrors caught;
    dbcreate(path("pipe.dbf"), structure, "DBFIDX");
    dbcreate(path("folder.dbf"), structure, "DBFIDX");
    EXPECT_EQ(caught.take_count(), 2);
}

TEST_F(DbfFailure, AFileThatBecameShorterIsARaisedReadError) {
    Table& table = create(structure);
    for (int i = 0; i < 10; ++i) add(table, array_of("text"));
    close();
    Table& again = *open();
    std::filesystem::resize_file(path("t.dbf"), header_size + 2 * record_size + 50);
    CaughtErrors caught;
    again.go_to(2);
    EXPECT_EQ(again.get(0).string().substr(0, 4), "text");
    again.go_to(3);
    EXPECT_EQ(again.get(0).string().substr(0, 4), "    ");
    EXPECT_EQ(caught.number("gencode"), 23);
    EXPECT_EQ(caught.number("oscode"), 30);
    EXPECT_FALSE(again.put(0, "x"));
}

}  // namespace
}  // namespace zmfb::host
