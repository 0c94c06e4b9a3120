// DBF files with headers that lie.
#include <random>

#include "dbf_table_testing.h"
#include "tests/support/dbf_builder.h"

namespace zmfb::host {
namespace {

using host_test::CaughtErrors;
using test::DbfBuilder;

class DamagedDbf : public host_test::DbfTest {
  protected:
    static DbfBuilder sound() {
        return DbfBuilder()
            .field("NAME", 'C', 10)
            .field("AGE", 'N', 3)
            .field("BORN", 'D', 8)
            .record({"Ana", "42", "20070301"})
            .record({"Bob", "7", ""});
    }
    // Reads every field of every record; false when the table did not open.
    bool read_all(std::string_view name) {
        Table* const table = open(name);
        if (table == nullptr) return false;
        for (table->go_top(); !table->eof(); table->skip(1)) {
            static_cast<void>(table->deleted());
            for (std::size_t i = 0; i < table->fields().size(); ++i) static_cast<void>(table->get(i));
        }
        close();
        return true;
    }
};

TEST_F(DamagedDbf, ASoundFileOpens) {
    sound().write(path("t.dbf"));
    EXPECT_TRUE(read_all("t.dbf"));
}

struct Damage {
    std::string bytes;
    std::string reason;
};

TEST_F(DamagedDbf, IsRefusedWithTheReason) {
    const std::string header = "a damaged DBF header: ";
    const Damage cases[] = {
        {"", "not a DBF file: it is empty"},
        {"\x03", "not a DBF file"},
        {sound().cut(31).bytes(), "not a DBF file"},
        {sound().type(0).bytes(), "not a DBF file"},
        {sound().type(48).bytes(), "not a DBF file"},
        {sound().type(0x83).bytes(), "a DBF file with memo fields"},
        {sound().header_length(0).bytes(), header + "its size cannot be"},
        {sound().header_length(32).bytes(), header + "its size cannot be"},
        {sound().header_length(65535).bytes(), header + "its size cannot be"},
        {sound().cut(100).bytes(), header + "its size cannot be"},
        {sound().header_length(33).bytes(), "a DBF file without fields"},
        {DbfBuilder().bytes(), "a DBF file without fields"},
        {sound().record_length(0).bytes(), header + "the fields are longer than a record"},
        {sound().record_length(21).bytes(), header + "the fields are longer than a record"},
        {DbfBuilder().field("A", 'C', 0).bytes(), header + "field A: no length"},
        {DbfBuilder().field("A", 'N', 0).bytes(), header + "field A: no length"},
        {DbfBuilder().field("A", 'M', 10).bytes(), header + "field A: unknown type"},
        {DbfBuilder().field("A", '\0', 10).bytes(), header + "field A: unknown type"},
        {DbfBuilder().field("A", 'D', 9).bytes(), header + "field A: a date that is not 8 long"},
        {DbfBuilder().field("A", 'C', 65535).field("B", 'C', 65535).record_length(65535).bytes(),
         header + "the fields are longer than a record"},
    };
    for (const auto& [bytes, reason] : cases) {
        write_file("t.dbf", bytes);
        CaughtErrors caught;
        EXPECT_EQ(open(), nullptr) << reason;
        EXPECT_EQ(caught.take_count(), 1) << reason;
        EXPECT_EQ(caught.number("gencode"), 32) << reason;
        EXPECT_EQ(caught.text("description"), "Open error, " + reason + ": " + path("t.dbf"));
    }
}

TEST_F(DamagedDbf, OnlyRecordsThatAreThereCount) {
    for (const std::uint32_t claimed : {3U, 1000U, 0x7FFFFFFFU, 0xFFFFFFFFU}) {
        sound().record_count(claimed).write(path("t.dbf"));
        ASSERT_NE(open(), nullptr);
        EXPECT_EQ(table_of("T")->record_count(), 2) << claimed;
        close();
    }
    sound().record_count(1).write(path("t.dbf"));
    EXPECT_EQ(open()->record_count(), 1);
    close();
    sound().no_end_mark().cut(129 + 22 + 21).write(path("t.dbf"));
    EXPECT_EQ(open()->record_count(), 1);
}

TEST_F(DamagedDbf, FieldsEndWhereTheHeaderEndsWithoutATerminator) {
    sound().terminator('x').write(path("t.dbf"));
    EXPECT_EQ(open()->fields().size(), 3U);
}

TEST_F(DamagedDbf, BytesBehindTheTerminatorAndBehindTheFieldsAreNothing) {
    // A header with 263 bytes more, and records longer than their fields, as some programs write them.
    std::string bytes = DbfBuilder().field("A", 'C', 3).header_length(65 + 263).record_length(8).bytes();
    bytes.resize(65);
    bytes[4] = 2;
    bytes += std::string(263, 'z') + " oneXXXX" + "*twoYYYY" + "\x1A";
    write_file("t.dbf", bytes);
    Table& table = *open();
    EXPECT_EQ(table.fields().size(), 1U);
    EXPECT_EQ(table.get(0).string(), "one");
    table.put(0, "new");
    table.skip(1);
    EXPECT_EQ(table.get(0).string(), "two");
    EXPECT_TRUE(table.deleted());
    close();
    EXPECT_EQ(content(path("t.dbf")).substr(65 + 263), " newXXXX*twoYYYY\x1A");
}

TEST_F(DamagedDbf, AnyBytesAtAllAreReadOrRefused) {
    std::mt19937 random(20070301);
    const std::string good = sound().bytes();
    const auto up_to = [&](std::size_t limit) {
        return std::uniform_int_distribution<std::size_t>(0, limit)(random);
    };
    CaughtErrors caught;
    int opened = 0;
    for (int round = 0; round < 3000; ++round) {
        std::string bytes = good;
        for (std::size_t changes = up_to(6); changes > 0; --changes) {
            bytes[up_to(std::min<std::size_t>(bytes.size(), 135) - 1)] = static_cast<char>(up_to(255));
        }
        if (up_to(9) == 0) bytes.resize(up_to(bytes.size()));
        write_file("t.dbf", bytes);
        opened += read_all("t.dbf") ? 1 : 0;
    }
    EXPECT_GT(opened, 500);
    EXPECT_EQ(caught.take_count(), 3000 - opened);
}

}  // namespace
}  // namespace zmfb::host
