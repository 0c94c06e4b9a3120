// A table of more than 4 GB by way of a data file of that size.
#include <filesystem>

#include "tests/support/holes.h"
#include "tests/transfer/transfer_fixture.h"

namespace zmfb::test {
namespace {

namespace fs = std::filesystem;

constexpr int fields = 120;
constexpr int length = 254;
constexpr std::uint64_t record = 1 + fields * length;
constexpr std::uint64_t records = 150'000;

// The files lie on a disk: memory may have less room.
class BigFiles : public TransferOfRows {
  protected:
    BigFiles() : on_disk_(made_on_disk()), here_(on_disk_) {
        call("setfullpathdatfile", (on_disk_ / "big.dat").string());
    }
    ~BigFiles() override { fs::remove_all(on_disk_); }

    // A table whose records are holes but for what the first and the last begin with.
    static void make_dbf(const std::string& name) {
        DbfBuilder table = DbfBuilder().record_count(records).no_end_mark();
        for (int i = 0; i < fields; ++i) table.field("F" + std::to_string(i), 'C', length);
        table.write(name);
        const std::uint64_t start = fs::file_size(name);
        put_bytes(name, start, " first");
        put_bytes(name, start + (records - 1) * record, " last");
        fs::resize_file(name, start + records * record);
    }

  private:
    static fs::path made_on_disk() {
        std::string shape = fs::temp_directory_path() / "zmfb-big-XXXXXX";
        if (mkdtemp(shape.data()) == nullptr) throw std::runtime_error("cannot make " + shape);
        fs::permissions(shape, fs::perms(0755));
        return shape;
    }

    fs::path on_disk_;
    CurrentFolder here_;
};

TEST_F(BigFiles, ComeInAndGoOutWhole) {
    make_dbf("big.dbf");
    ASSERT_TRUE(call("bringdbf", "big.dbf").logical());
    EXPECT_EQ(fs::file_size("big.dat"), records * (record - 1));
    EXPECT_EQ(rows("select count(*) from big"), (Rows{{std::to_string(records)}}));
    EXPECT_EQ(rows("select substring(f0 from 1 for 4) from big where f0 starting 'l'"), (Rows{{"last"}}));
    fs::remove("big.dbf");

    ASSERT_TRUE(call("exiletable", "big").logical());
    const std::uint64_t size = fs::file_size("big.dbf");
    EXPECT_EQ(size, 32 + 32 * fields + 1 + records * record + 1);
    EXPECT_EQ(bytes_at("big.dbf", size - 1 - record, 5), " last");
}

}  // namespace
}  // namespace zmfb::test
