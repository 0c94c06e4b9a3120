// PACK and ZAP of DBF files.
#include <set>
#include <thread>

#include "dbf_table_testing.h"

namespace zmfb::host {
namespace {

using host_test::field;

class DbfPack : public host_test::DbfTest {
  protected:
    // The table of records 1, 2, ... in the field N; those whose number 7 does not divide are deleted.
    Table& fill(int records) {
        create(array_of(field("N", "N", 8)));
        Table& table = *table_of("T");
        for (int n = 1; n <= records; ++n) {
            add(table, array_of(n));
            table.set_deleted(n % 7 != 0);
        }
        return table;
    }
};

TEST_F(DbfPack, PackMovesRecordsUpOverMoreThanABlock) {
    constexpr int records = 70000;  // of 9 bytes: three blocks
    fill(records);
    EXPECT_TRUE(dbpack());
    close();
    open();
    EXPECT_EQ(lastrec(), records / 7);
    std::int64_t wrong = 0;
    dbeval(Value::block([&](Args) {
        if (fieldget(1).integer() != 7 * recno() || deleted()) ++wrong;
        return Value();
    }));
    EXPECT_EQ(wrong, 0);
    EXPECT_EQ(counted(path("t.dbf")), records / 7);
    EXPECT_EQ(std::filesystem::file_size(path("t.dbf")), 65U + records / 7 * 9U + 1U);
}

TEST_F(DbfPack, ZapLeavesAFileOfNoRecords) {
    fill(20);
    EXPECT_TRUE(dbzap());
    close();
    EXPECT_EQ(counted(path("t.dbf")), 0U);
    EXPECT_EQ(content(path("t.dbf")).substr(65), "\x1A");
}

TEST_F(DbfPack, OneThatIsKilledLosesNoRecord) {
    constexpr int records = 210000;
    fill(records);
    close();
    std::filesystem::copy_file(path("t.dbf"), path("before.dbf"));
    int cut_off = 0;
    for (int round = 0; round < 20; ++round) {
        std::filesystem::copy_file(path("before.dbf"), path("t.dbf"),
                                   std::filesystem::copy_options::overwrite_existing);
        const pid_t child = ::fork();
        if (child == 0) {
            open();
            ::_exit(dbpack() ? 0 : 1);
        }
        std::this_thread::sleep_for(std::chrono::microseconds(500 * round));
        ::kill(child, SIGKILL);
        int status = 0;
        ::waitpid(child, &status, 0);
        if (WIFSIGNALED(status)) ++cut_off;
        open();
        std::set<std::int64_t> left;
        Table& table = *table_of("T");
        for (; !table.eof(); table.skip(1)) {
            if (!table.deleted()) left.insert(table.get(0).integer());
        }
        close();
        EXPECT_EQ(left.size(), static_cast<std::size_t>(records / 7)) << "round " << round;
    }
    EXPECT_GT(cut_off, 0);
}

}  // namespace
}  // namespace zmfb::host
