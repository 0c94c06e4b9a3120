// Files of more than 2 and 4 GB: positions in them have more digits than a 32-bit machine's own numbers.
#include <gtest/gtest.h>

#include <cstring>

#include "dbf/memo.h"
#include "dbf/new_file.h"
#include "dbf/records.h"
#include "tests/host/folder.h"
#include "tests/support/dbf_builder.h"
#include "tests/support/holes.h"
#include "tests/support/memo_builder.h"

namespace zmfb::dbf {
namespace {

using test::bytes_at;
using test::DbfBuilder;
using test::four_gigabytes;
using test::MemoBuilder;
using test::MemoFormat;
using test::put_bytes;
using test::two_gigabytes;

class DbfBigFiles : public host_test::FolderTest {};

constexpr std::uint64_t records = 100'000;
constexpr std::size_t length = 50'000;

DbfBuilder header_of_all() {
    return DbfBuilder().field("BIG", 'C', length - 1).record_count(records).no_end_mark();
}

// 5 GB of records, each of which begins with its place among them.
class Numbered final : public Source {
  public:
    [[nodiscard]] std::uint64_t size() const override { return header_.size() + records * length; }
    std::size_t read(std::uint64_t position, std::span<char> bytes) const override {
        if (position < header_.size()) {
            const std::string_view there =
                std::string_view(header_).substr(static_cast<std::size_t>(position));
            return there.copy(bytes.data(), bytes.size());
        }
        for (std::size_t at = 0; at < bytes.size(); at += length) {
            const std::uint64_t number = (position + at - header_.size()) / length;
            std::memcpy(bytes.data() + at, &number, sizeof number);
        }
        return bytes.size();
    }

  private:
    std::string header_ = header_of_all().bytes();
};

TEST_F(DbfBigFiles, HaveEachRecordAtItsPlace) {
    const Numbered file;
    const Header header = read_header(file);
    ASSERT_EQ(header.records, records);
    std::uint64_t found = 0;
    for (Records each(file, header); each.next(); ++found) {
        std::uint64_t number = 0;
        std::memcpy(&number, each.bytes().data(), sizeof number);
        ASSERT_EQ(number, found);
    }
    EXPECT_EQ(found, records);
}

TEST_F(DbfBigFiles, AreReadFromTheDiskAtTheirEnd) {
    const std::string file = path("big.dbf");
    header_of_all().record_count(records - 1).write(file);
    const std::uint64_t start = std::filesystem::file_size(file);
    put_bytes(file, start + (records - 1) * length, " the last one");
    std::filesystem::resize_file(file, start + records * length);
    const auto source = open_file(file);
    EXPECT_EQ(source->size(), start + records * length);
    Header header = read_header(*source);
    EXPECT_EQ(header.records, records - 1);
    EXPECT_EQ(header.behind, 1U);
    header.start += header.records * length;
    header.records = 0;
    Records behind(*source, header, true);
    ASSERT_TRUE(behind.next());
    EXPECT_TRUE(behind.bytes().starts_with(" the last one"));
}

TEST_F(DbfBigFiles, OfMemosAreReadBehindTwoAndFourGigabytes) {
    struct Case {
        MemoFormat format;
        std::string ending;
        Dialect dialect;
        std::uint32_t block;
    };
    const Case cases[] = {{MemoFormat::dbase3, ".dbt", Dialect::dbase3, 512},
                          {MemoFormat::dbase4, ".dbt", Dialect::dbase4, 1024},
                          {MemoFormat::foxpro, ".fpt", Dialect::foxpro2, 64},
                          {MemoFormat::six, ".smt", Dialect::six, 512}};
    for (const Case& one : cases) {
        SCOPED_TRACE(one.ending + std::to_string(one.block));
        MemoBuilder memos(one.format, one.block);
        const std::size_t first = memos.add("a text") * std::size_t{one.block};
        const std::string file = path("big" + one.ending);
        std::filesystem::remove(file);
        put_bytes(file, 0, memos.bytes().substr(0, first));
        const std::uint64_t places[] = {two_gigabytes - one.block, two_gigabytes, four_gigabytes - one.block,
                                        four_gigabytes, four_gigabytes + two_gigabytes};
        for (const std::uint64_t place : places) put_bytes(file, place, memos.bytes().substr(first));
        Header header;
        header.dialect = one.dialect;
        const MemoFile opened(file, header);
        for (const std::uint64_t place : places) {
            const Memo memo = opened.read(static_cast<std::uint32_t>(place / one.block));
            EXPECT_EQ(memo.bytes + memo.problem, "a text") << place;
        }
    }
}

TEST_F(DbfBigFiles, AreWrittenBehindFourGigabytes) {
    NewFile file(path("big.dbf"));
    file.write("begins");
    file.write_at(four_gigabytes + 2, "ends");
    file.take_name();
    EXPECT_EQ(std::filesystem::file_size(path("big.dbf")), four_gigabytes + 6);
    EXPECT_EQ(bytes_at(path("big.dbf"), 0, 6), "begins");
    EXPECT_EQ(bytes_at(path("big.dbf"), four_gigabytes + 2, 10), "ends");
}

}  // namespace
}  // namespace zmfb::dbf
