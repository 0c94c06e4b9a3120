// Tables of more than 4 GB in and out. ZMFB_ROWS is how many rows of 58 KB they have, 10 unless it is given.
#include <fmt/format.h>

#include <cstdlib>
#include <filesystem>

#include "tests/support/dbf_builder.h"
#include "tests/support/holes.h"
#include "tests/support/memo_builder.h"
#include "tests/tool/tool.h"

namespace zmfb::test {
namespace {

namespace fs = std::filesystem;

constexpr int fields = 230;
constexpr int length = 254;
constexpr std::uint64_t record = 1 + fields * length;

// The files lie on a disk: memory may have less room.
class BigFiles : public Tool {
  protected:
    BigFiles() : path(database()) {
        const char* const given = std::getenv("ZMFB_ROWS");
        if (given != nullptr) rows = std::strtoull(given, nullptr, 10);
        std::string shape = fs::temp_directory_path() / "zmfb-big-XXXXXX";
        if (mkdtemp(shape.data()) == nullptr) throw std::runtime_error("cannot make " + shape);
        on_disk = shape;
    }
    ~BigFiles() override { fs::remove_all(on_disk); }

    // A table whose records are holes but for their marks, and what the first and the last begin with.
    [[nodiscard]] std::string make_dbf() const {
        DbfBuilder table = DbfBuilder().record_count(static_cast<std::uint32_t>(rows)).no_end_mark();
        for (int i = 0; i < fields; ++i) table.field(fmt::format("F{}", i), 'C', length);
        std::string name = on_disk / "big.dbf";
        table.write(name);
        const std::uint64_t start = fs::file_size(name);
        for (std::uint64_t i = 0; i < rows; ++i) put_bytes(name, start + i * record, " ");
        put_bytes(name, start, " first");
        put_bytes(name, start + (rows - 1) * record, " last");
        fs::resize_file(name, start + rows * record);
        return name;
    }
    [[nodiscard]] std::string answer(const std::string& query) const {
        const Finished run = on(path, {"query", "--mode", "csv", query});
        EXPECT_EQ(run.status, 0) << run.err;
        return run.out.substr(run.out.find('\n') + 1);
    }

    std::string path;
    fs::path on_disk;
    std::uint64_t rows = 10;
};

TEST_F(BigFiles, ComeInAndGoOutWhole) {
    const std::string dbf = make_dbf();
    const Finished in = on(path, {"import", dbf});
    ASSERT_EQ(in.status, 0) << in.err;
    EXPECT_EQ(answer("select count(*), sum(char_length(trim(f0))) from big"), fmt::format("{},9\r\n", rows));
    EXPECT_EQ(answer("select trim(f0) from big where f0 starting 'l'"), "last\r\n");
    fs::remove(dbf);

    const Finished out = on(path, {"export", "big", "--yes", "-o", on_disk});
    ASSERT_EQ(out.status, 0) << out.err;
    const std::uint64_t size = fs::file_size(dbf);
    EXPECT_EQ(size, 32 + 32 * fields + 1 + rows * record + 1);
    EXPECT_EQ(bytes_at(dbf, size - 1 - record, 8), " last   ");
    EXPECT_EQ(bytes_at(dbf, size - 2, 9), " \x1A");
    fs::remove(dbf);

    // A text of the engine has up to 32 KB.
    const std::string text = on_disk / "big.csv";
    std::string columns;
    for (int i = 0; i < fields; ++i)
        columns += fmt::format("f{} || {}", i, i == fields / 2 - 1 ? "'.' as one, " : "");
    const Finished written =
        on(path, {"query", "--mode", "csv", "-o", text, "select " + columns + "'.' as two from big"});
    ASSERT_EQ(written.status, 0) << written.err;
    const std::uint64_t header = std::string_view("ONE,TWO\r\n").size();
    const std::uint64_t line = fields * length + std::string_view(".,.\r\n").size();
    EXPECT_EQ(fs::file_size(text), header + rows * line);
    EXPECT_EQ(bytes_at(text, header + (rows - 1) * line, 6), "last  ");
    EXPECT_EQ(bytes_at(text, header + rows * line - 4, 10), " .\r\n");
}

TEST_F(BigFiles, OfMemosAreReadBehindFourGigabytes) {
    constexpr std::uint32_t block = 64;
    MemoBuilder memos(MemoFormat::foxpro, block);
    const std::size_t first = memos.add("the memo") * std::size_t{block};
    DbfBuilder table = DbfBuilder().type(0xF5).field("NOTE", 'M', 10);
    const std::string memo_file = on_disk / "notes.fpt";
    put_bytes(memo_file, 0, memos.bytes().substr(0, first));
    for (const std::uint64_t place : {two_gigabytes, four_gigabytes, four_gigabytes + two_gigabytes}) {
        put_bytes(memo_file, place, memos.bytes().substr(first));
        table.record({fmt::format("{:10}", place / block)});
    }
    table.write(on_disk / "notes.dbf");
    const Finished in = on(path, {"import", on_disk / "notes.dbf"});
    ASSERT_EQ(in.status, 0) << in.err;
    EXPECT_EQ(answer("select count(*) from notes where note = 'the memo'"), "3\r\n");
}

}  // namespace
}  // namespace zmfb::test
