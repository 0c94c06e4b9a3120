// A million records in and out: the memory of the process does not grow with their number.
#include <cstdio>
#include <fstream>

#include "tests/transfer/transfer_fixture.h"

namespace zmfb::test {
namespace {

// The most memory that this process has ever had, in kB.
long peak_memory() {
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);) {
        if (line.starts_with("VmHWM:")) return std::stol(line.substr(6));
    }
    throw std::runtime_error("no VmHWM");
}

class FlatMemory : public Transfer {
  protected:
    FlatMemory() : here_(folder()) {}

    // Writes a file of that many records without keeping them in memory.
    void write_dbf(const std::string& name, int records) const {
        const DbfBuilder header = DbfBuilder()
                                      .field("CODE", 'N', 10)
                                      .field("NAME", 'C', 30)
                                      .field("SINCE", 'D', 8)
                                      .field("AMOUNT", 'N', 12, 2)
                                      .field("ACTIVE", 'L', 1)
                                      .record_count(static_cast<std::uint32_t>(records))
                                      .no_end_mark();
        header.write(dbf(name));
        std::FILE* const out = std::fopen(dbf(name).c_str(), "ab");
        for (int i = 0; i < records; ++i) {
            std::fprintf(out, " %10d%-30s%04d%02d%02d%12.2f%c", i, "the name of a customer", 1950 + i % 70,
                         1 + i % 12, 1 + i % 28, i / 8.0, i % 2 == 0 ? 'T' : 'F');
        }
        ASSERT_EQ(std::fclose(out), 0);
    }

    // Imports and exports a file of that many records; checks that all of them arrived.
    void bring_and_exile(const std::string& name, int records) {
        write_dbf(name, records);
        ASSERT_TRUE(call("bringdbf", dbf(name)).logical());
        EXPECT_EQ(call("gettablereccount", name).number(), records);
        const std::string exported = name + "_out";
        std::filesystem::create_directory(folder() / exported);
        const CurrentFolder out(folder() / exported);
        ASSERT_TRUE(call("exiletable", name).logical());
        const std::uintmax_t end_mark = 1;
        EXPECT_EQ(std::filesystem::file_size(name + ".dbf"),
                  std::filesystem::file_size(dbf(name)) + end_mark);
    }

  private:
    CurrentFolder here_;
};

TEST_F(FlatMemory, OfAMillionRecordsIsThatOfAHundredThousand) {
    bring_and_exile("few", 100000);
    const long few = peak_memory();
    bring_and_exile("many", 1000000);
    const long many = peak_memory();
    std::printf("peak memory: %ld kB at 100,000 records, %ld kB at 1,000,000\n", few, many);
    EXPECT_LT(many - few, 4096);
}

}  // namespace
}  // namespace zmfb::test
