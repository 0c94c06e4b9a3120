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
    // An export that goes on for long, as soon as it writes: the `number`th.
    [[nodiscard]] std::unique_ptr<Started> begun(std::size_t number = 1) const {
        auto tool = start({"--db", path, "export", "--query", "select a.name from big a cross join big b",
                           "--table", "big", "--yes", "-o", folder_out});
        const auto writes = [&] { return unfinished() >= number && written_bytes() >= 1'000'000; };
        for (int i = 0; i < 600 && !writes(); ++i) std::this_thread::sleep_for(std::chrono::milliseconds(20));
        EXPECT_TRUE(writes());
        return tool;
    }
    [[nodiscard]] std::size_t unfinished() const {
        const auto names = written();
        return static_cast<std::size_t>(
            std::ranges::count_if(names, [](const std::string& name) { return name.starts_with(".zmfb-"); }));
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

TEST_F(ExportInterrupt, WhatAKilledOneLeftGoesWithTheNextIntoTheFolderAndWhatOthersWriteStays) {
    call("createtable('SHOP', {{'NAME', 'C', 10, 0}})");
    const auto running = begun();
    const auto killed = begun(2);
    killed->send(SIGKILL);
    killed->end();
    write_file("out/.zmfb-somebodys", "not of this system");
    const Finished next = export_to_folder({"shop"});
    EXPECT_EQ(next.status, 0);
    EXPECT_EQ(next.err, "1 unfinished file removed from " + folder_out +
                            ", which a process that was killed has left\n");
    EXPECT_EQ(unfinished(), 2U) << "that of the export that runs, and somebody's";
    running->send(SIGINT);
    EXPECT_EQ(running->end().err, "error: the export of big was interrupted, and undone\n");
    EXPECT_EQ(export_to_folder({"shop", "--yes"}).err, "");
    EXPECT_TRUE(fs::exists(folder_out + "/.zmfb-somebodys"));
}

}  // namespace
}  // namespace zmfb::test
