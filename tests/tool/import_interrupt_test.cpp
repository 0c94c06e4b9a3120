// Ctrl-C in the middle of an import and of an export.
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <thread>

#include "tests/support/dbf_builder.h"
#include "tests/support/environment.h"
#include "tests/tool/tool.h"

namespace zmfb::test {
namespace {

class ImportInterrupt : public Tool {
  protected:
    ImportInterrupt() : path(database()) {
        DbfBuilder dbf = DbfBuilder().field("CODE", 'N', 8).field("NAME", 'C', 60).field("BORN", 'D', 8);
        for (int i = 0; i < 300000; ++i) dbf.record({std::to_string(i), "name", "20070301"});
        dbf.write(file("big.dbf"));
    }
    [[nodiscard]] bool has_table(const std::string& table) const {
        return on(path, {"call", "istable('" + table + "')"}).out == ".T.\n";
    }
    /// Runs the tool with these words of a shell until the table is there, and sends it a signal.
    Finished interrupted(const std::string& words, const std::string& table, int signal) const {
        const std::string pid_file = file("pid");
        Finished finished;
        // The shell writes its own number and becomes the tool.
        std::thread tool([&] {
            finished =
                run({"env", "-u", "FIREBIRD", "-u", "FIREBIRD_LOCK", "-u", "ZMFB_DB",
                     "XDG_CACHE_HOME=" + (process_folder() / "cache").string(), "sh", "-c",
                     "echo $$ > '" + pid_file + "'; exec '" ZMFB_TOOL "' --db '" + path + "' " + words});
        });
        for (int i = 0; i < 600 && !has_table(table); ++i)
            std::this_thread::sleep_for(std::chrono::milliseconds(20));
        EXPECT_TRUE(has_table(table)) << "over before it could be interrupted";
        kill(std::stoi(read_file(pid_file)), signal);
        tool.join();
        return finished;
    }
    std::string path;
};

TEST_F(ImportInterrupt, LeavesNothing) {
    const std::string before = on(path, {"tables"}).out;
    const Finished finished = interrupted("import '" + file("big.dbf") + "'", "BIG", SIGINT);
    EXPECT_EQ(finished.status, 130) << finished.err;
    EXPECT_EQ(finished.out, "");
    EXPECT_EQ(finished.err, "error: the import of " + file("big.dbf") + " was interrupted, and undone\n");
    EXPECT_EQ(on(path, {"tables"}).out, before);
    const std::string left =
        on(path, {"query", "--mode", "csv",
                  "select (select count(*) from rdb$triggers where rdb$trigger_name starting with 'T_BIG'), "
                  "(select count(*) from rdb$generators where rdb$generator_name starting with 'G_BIG') "
                  "from rdb$database"})
            .out;
    EXPECT_NE(left.find("\n0,0\r\n"), std::string::npos) << left;
}

TEST_F(ImportInterrupt, AnExportLeavesTheFileThatWasThereAndTheTable) {
    ASSERT_EQ(on(path, {"import", file("big.dbf")}).status, 0);
    std::filesystem::create_directory(file("out"));
    write_file("out/big.dbf", "something dear");
    const Finished finished = interrupted("export --yes big -o '" + file("out") + "'", "EXT_BIG", SIGTERM);
    EXPECT_EQ(finished.status, 143) << finished.err;
    EXPECT_TRUE(
        finished.err.starts_with("error: the export of big was interrupted, and undone\n"
                                 "  external table EXT_BIG dropped\n"))
        << finished.err;
    EXPECT_EQ(read_file(file("out/big.dbf")), "something dear");
    const std::filesystem::directory_iterator left(file("out"));
    EXPECT_EQ(std::distance(begin(left), end(left)), 1);
    EXPECT_FALSE(has_table("EXT_BIG"));
    EXPECT_EQ(on(path, {"call", "counttablerecords('BIG')"}).out, "300000\n");
}

}  // namespace
}  // namespace zmfb::test
