// Files of more than 2 and 4 GB, of holes: a table, and what is read and written through a handle.
#include "dbf_table_testing.h"
#include "host/file.h"
#include "tests/support/dbf_builder.h"
#include "tests/support/holes.h"

namespace zmfb::host {
namespace {

using host_test::is_same;
using test::bytes_at;
using test::four_gigabytes;
using test::put_bytes;
using test::two_gigabytes;

class BigFiles : public host_test::DbfTest {
  protected:
    static constexpr std::int64_t records = 100'000;
    static constexpr std::int64_t length = 50'000;

    // A table of 5 GB, all of whose records are holes but the last.
    BigFiles() {
        test::DbfBuilder()
            .field("NAME", 'C', 10)
            .field("REST", 'C', length - 11)
            .record_count(records)
            .no_end_mark()
            .write(file_);
        start_ = std::filesystem::file_size(file_);
        put_bytes(file_, place_of(records), " the last  ");
        std::filesystem::resize_file(file_, start_ + std::uint64_t{records} * length);
    }
    [[nodiscard]] std::uint64_t place_of(std::int64_t record) const {
        return start_ + static_cast<std::uint64_t>((record - 1) * length);
    }

    const std::string file_ = path("t.dbf");
    std::uint64_t start_ = 0;
};

TEST_F(BigFiles, OfATableAreReadAndWrittenAtTheirEnd) {
    Table& table = *open();
    EXPECT_EQ(table.record_count(), records);
    table.go_to(records);
    const Value name = table.get(0);
    EXPECT_TRUE(is_same(name, "the last  "));
    EXPECT_TRUE(table.put(0, "changed"));
    EXPECT_TRUE(add(table, array_of("one more")));
    EXPECT_EQ(table.record_count(), records + 1);
    close();
    EXPECT_EQ(std::filesystem::file_size(file_), place_of(records + 2) + 1);
    EXPECT_EQ(bytes_at(file_, place_of(records), 11), " changed   ");
    EXPECT_EQ(bytes_at(file_, place_of(records + 1), 11), " one more  ");
    EXPECT_EQ(open()->record_count(), records + 1);
}

TEST_F(BigFiles, OfATableInSharedUseAreLockedAndAppendedToAtTheirEnd) {
    Table& table = *open_shared();
    Table& other = *open_shared("t.dbf", "U");
    table.go_to(records);
    other.go_to(records);
    EXPECT_TRUE(table.lock_record(records, {}));
    EXPECT_FALSE(other.lock_record(records, {}));
    EXPECT_TRUE(table.put(0, "changed"));
    EXPECT_TRUE(add(other, array_of("one more")));
    close("U");
    close();
    EXPECT_EQ(bytes_at(file_, place_of(records), 11), " changed   ");
    EXPECT_EQ(bytes_at(file_, place_of(records + 1), 11), " one more  ");
}

TEST_F(BigFiles, AreReadAndWrittenThroughAHandle) {
    const Value handle = fopen(file_, 2);
    for (const std::uint64_t place : {two_gigabytes, four_gigabytes, four_gigabytes + 7}) {
        SCOPED_TRACE(place);
        EXPECT_TRUE(is_same(fseek(handle, place), place));
        EXPECT_TRUE(is_same(fwrite(handle, "text"), 4));
        EXPECT_TRUE(is_same(fseek(handle, -4, 1), place));
        Value buffer = "    ";
        EXPECT_TRUE(is_same(fread(handle, buffer, 4), 4));
        EXPECT_TRUE(is_same(buffer, "text"));
    }
    EXPECT_TRUE(is_same(fseek(handle, 0, 2), place_of(records + 1)));
    EXPECT_TRUE(is_same(fclose(handle), true));
}

}  // namespace
}  // namespace zmfb::host
