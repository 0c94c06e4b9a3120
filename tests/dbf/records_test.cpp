#include "dbf/records.h"

#include <gtest/gtest.h>

#include <system_error>

#include "tests/support/dbf_builder.h"

namespace zmfb::dbf {
namespace {

using test::DbfBuilder;

std::vector<std::string> records_of(const DbfBuilder& file, bool behind = false) {
    const auto source = in_memory(file.bytes());
    const Header header = read_header(*source);
    std::vector<std::string> found;
    for (Records records(*source, header, behind); records.next();) {
        EXPECT_EQ(records.number(), found.size() + 1);
        found.emplace_back(records.bytes());
        if (records.deleted()) found.back() += " deleted";
    }
    return found;
}

using Lines = std::vector<std::string>;

DbfBuilder letters() {
    return DbfBuilder().field("A", 'C', 3).record({"aaa"}).record({"bbb"}, '*').record({"ccc"});
}

TEST(DbfRecords, ComeInOrderWithTheirDeletionMarks) {
    EXPECT_EQ(records_of(letters()), (Lines{" aaa", "*bbb deleted", " ccc"}));
}

TEST(DbfRecords, AFileWithoutRecordsHasNone) {
    EXPECT_EQ(records_of(DbfBuilder().field("A", 'C', 3)), Lines{});
}

TEST(DbfRecords, ThoseBehindTheCountComeWhenAskedFor) {
    EXPECT_EQ(records_of(letters().record_count(1)), Lines{" aaa"});
    EXPECT_EQ(records_of(letters().record_count(1), true), (Lines{" aaa", "*bbb deleted", " ccc"}));
}

TEST(DbfRecords, AreReadBlockByBlock) {
    for (const int length : {1, 1000, 200000}) {
        DbfBuilder file = DbfBuilder();
        for (int left = length; left > 0; left -= 60000)
            file.field("F" + std::to_string(left), 'C', std::min(left, 60000));
        const int records = 1000000 / length;
        SCOPED_TRACE(length);
        std::string expected;
        for (int i = 0; i < records; ++i) {
            const char letter = static_cast<char>('a' + i % 26);
            file.raw_record(" " + std::string(static_cast<std::size_t>(length), letter));
            expected += letter;
        }
        if (length > 65534) file.record_length(0);
        const auto source = in_memory(file.bytes());
        const Header header = read_header(*source);
        std::string found;
        for (Records each(*source, header); each.next();) {
            found += each.bytes().back();
            ASSERT_EQ(each.bytes().size(), static_cast<std::size_t>(length) + 1);
        }
        EXPECT_EQ(found, expected);
    }
}

TEST(DbfRecords, AFileThatHasBecomeShorterThrows) {
    const std::string bytes = letters().bytes();
    const Header header = read_header(*in_memory(bytes));
    const auto shorter = in_memory(bytes.substr(0, bytes.size() - 6));
    Records records(*shorter, header);
    EXPECT_THROW(records.next(), std::system_error);
}

}  // namespace
}  // namespace zmfb::dbf
