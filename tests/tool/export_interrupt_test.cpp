// Exports that are ended half-way.
#include <signal.h>

#include <chrono>
#include <filesystem>
#include <thread>

#include "tests/support/dbf_builder.h"
#include "tests/tool/export_folder.h"

namespace zmfb::test {
namespace {

namespace fs = std::filesystem;

class ExportInterrupt : public ExportFolder {
  protected:
    ExportInterrupt() {
        // Cross joined, more rows than an export can write before it is ended.
        exec("create table big (name char(200) not null)");
        exec("insert into big select first 2000 f.rdb$field_name from rdb$fields f cross join rdb$types");
        write_file("out/big.dbf", "something dear");
        write_file("out/big.cpg", "CP437");
    }
    // An export that goes on for long, as soon as it writes.
    [[nodiscard]] std::unique_ptr<Started> begun() const {
        auto tool = start({"--db", path, "export", "--query", "select a.name from big a cross join big b",
                           "--table", "big", "--yes", "-o", folder_out});
        for (int i = 0; i < 600 && written_bytes() < 1'000'000; ++i)
            std::this_thread::sleep_for(std::chrono::milliseconds(20));
        EXPECT_GE(written_bytes(), 1'000'000U) << "it never wrote";
        return tool;
    }
    [[nodiscard]] std::uintmax_t written_bytes() const {
        std::uintmax_t bytes = 0;
        for (const auto& entry : fs::directory_iterator(folder_out)) bytes += entry.file_size();
        return bytes;
    }
    void expect_old_files() const {
        EXPECT_EQ(read_file(folder_out + "/big.dbf"), "something dear");
        EXPECT_EQ(read_file(folder_out + "/big.cpg"), "CP437");
    }
};

TEST_F(ExportInterrupt, BySignalsLeavesWhatWasThereAndNothingElse) {
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
        const auto tool = begun();
        tool->send(signal);
        const Finished finished = tool->end();
        EXPECT_EQ(finished.status, 128 + signal) << finished.err;
        EXPECT_EQ(finished.out, "");
        EXPECT_EQ(finished.err, "error: the export of big was interrupted, and undone\n");
        expect_old_files();
        EXPECT_EQ(written(), (std::vector<std::string>{"big.cpg", "big.dbf"}));
    }
}

TEST_F(ExportInterrupt, ByAKillLeavesWhatWasThere) {
    const auto tool = begun();
    tool->send(SIGKILL);
    EXPECT_EQ(tool->end().status, 128 + SIGKILL);
    expect_old_files();
    EXPECT_EQ(dbf_files(), std::vector<std::string>{"big.dbf"});
}

}  // namespace
}  // namespace zmfb::test
