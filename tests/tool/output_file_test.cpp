// All that the tool writes into files: whole or not at all, and never through a link of somebody else.
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <functional>
#include <thread>

#include "tests/support/dbf_builder.h"
#include "tests/tool/tool.h"

namespace zmfb::test {
namespace {

namespace fs = std::filesystem;

constexpr uid_t somebody_else = 12345;
constexpr const char* precious = "precious";

// A command that writes a file, and how that begins.
struct Writer {
    std::string name;
    std::vector<std::string> words;
    std::string beginning;
    int status = 0;
};

class OutputFiles : public Tool {
  protected:
    OutputFiles() : path(database()) {
        fs::create_directory(file("out"));
        exec(path, "create table plain (a integer)");
        EXPECT_EQ(on(path, {"call", "createtable('SHOP', {{'NAME', 'C', 10, 0}})"}).status, 0);
        DbfBuilder().field("N", 'N', 4).record({"x"}).write(file("bad.dbf"));
    }
    // Each way to write out/shop.*.
    [[nodiscard]] std::vector<Writer> writers() const {
        return {{"shop.csv",
                 {"query", "--mode", "csv", "select 7 as n from rdb$database", "-o", out("csv")},
                 "N\r\n7"},
                {"shop.rejects", {"import", file("bad.dbf"), "--rejects", out("rejects")}, "file,record", 1},
                {"shop.tf", {"matrix", "extract", "shop", "--yes", "-o", out("tf")}, "  :   :"},
                {"shop.dbf", {"export", "shop", "--yes", "-o", file("out")}, "\x03"}};
    }
    [[nodiscard]] std::string out(const std::string& ending) const { return file("out/shop." + ending); }
    [[nodiscard]] std::vector<std::string> files_out() const {
        std::vector<std::string> names;
        for (const auto& entry : fs::directory_iterator(file("out")))
            names.push_back(entry.path().filename());
        return names;
    }

    std::string path;
};

TEST_F(OutputFiles, AreReplacedByWholeOnesThatKeepTheirPermissions) {
    for (const Writer& writer : writers()) {
        SCOPED_TRACE(writer.name);
        const std::string target = write_file("out/" + writer.name, precious);
        fs::permissions(target, fs::perms(0640));
        const Finished run = on(path, writer.words);
        EXPECT_EQ(run.status, writer.status) << run.err;
        EXPECT_TRUE(read_file(target).starts_with(writer.beginning)) << read_file(target);
        EXPECT_EQ(files_out(), std::vector<std::string>{writer.name});
        EXPECT_EQ(fs::status(target).permissions(), fs::perms(0640));
        fs::remove(target);
    }
}

TEST_F(OutputFiles, AreNotWrittenThroughALinkOfAnotherUser) {
    if (::geteuid() != 0) GTEST_SKIP() << "only root can make a link of another user";
    for (const Writer& writer : writers()) {
        SCOPED_TRACE(writer.name);
        const std::string target = write_file("target", precious), link = file("out/" + writer.name);
        fs::create_symlink(target, link);
        ASSERT_EQ(::lchown(link.c_str(), somebody_else, somebody_else), 0);
        const Finished run = on(path, writer.words);
        EXPECT_EQ(run.status, 1);
        EXPECT_EQ(run.out.find("shop."), std::string::npos) << run.out;
        EXPECT_NE(run.err.find("error: cannot write " + link + ": it is a symbolic link of another user\n"),
                  std::string::npos)
            << run.err;
        EXPECT_EQ(read_file(target), precious);
        EXPECT_TRUE(fs::is_symlink(link));
        EXPECT_EQ(files_out(), std::vector<std::string>{writer.name});
        fs::remove(link);
    }
}

TEST_F(OutputFiles, AreWrittenBehindALinkOfTheUserAndTheLinkStays) {
    fs::create_directory(file("elsewhere"));
    for (const Writer& writer : writers()) {
        SCOPED_TRACE(writer.name);
        const std::string target = write_file("elsewhere/target", precious),
                          link = file("out/" + writer.name);
        fs::create_symlink("../elsewhere/target", link);
        const Finished run = on(path, writer.words);
        EXPECT_EQ(run.status, writer.status) << run.err;
        EXPECT_TRUE(fs::is_symlink(link));
        EXPECT_TRUE(read_file(target).starts_with(writer.beginning)) << read_file(target);
        EXPECT_EQ(std::distance(fs::directory_iterator(file("elsewhere")), {}), 1);
        fs::remove(link);
    }
}

TEST_F(OutputFiles, ADatabaseIsNotMadeThroughALinkOfAnotherUser) {
    if (::geteuid() != 0) GTEST_SKIP() << "only root can make a link of another user";
    const std::string link = file("new.fdb");
    fs::create_symlink(file("led.fdb"), link);
    ASSERT_EQ(::lchown(link.c_str(), somebody_else, somebody_else), 0);
    const Finished run = zmfb({"--db", link, "create"});
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.err, "error: cannot write " + link + ": it is a symbolic link of another user\n");
    EXPECT_FALSE(fs::exists(file("led.fdb")));
}

TEST_F(OutputFiles, StayWhatTheyWereWhenAQueryFailsOnItsWay) {
    const std::string target = write_file("out/rows.csv", precious);
    const Finished run =
        on(path, {"query", "--mode", "csv", "-o", target,
                  "select 1 as n from rdb$database union all select 1 / (n - 1) from (select 1 "
                  "as n from rdb$database)"});
    EXPECT_EQ(run.status, 1);
    EXPECT_NE(run.err.find("Integer divide by zero"), std::string::npos) << run.err;
    EXPECT_EQ(read_file(target), precious);
    EXPECT_EQ(files_out(), std::vector<std::string>{"rows.csv"});
}

TEST_F(OutputFiles, ThatMayNotBeWrittenStay) {
    if (::geteuid() == 0) GTEST_SKIP() << "root may write everything";
    const std::string target = write_file("out/shop.csv", precious);
    fs::permissions(target, fs::perms(0444));
    const Finished run = on(path, writers().front().words);
    EXPECT_EQ(run.err, "error: cannot write " + target + ": Permission denied\n");
    EXPECT_EQ(read_file(target), precious);
}

TEST_F(OutputFiles, ThatAreStreamsGetTheRowsAsTheyCome) {
    const std::vector<std::string> query{"query", "--mode", "csv", "select 7 as n from rdb$database", "-o"};
    const auto to = [&](const std::string& name) {
        std::vector<std::string> words = query;
        words.push_back(name);
        return on(path, words);
    };
    EXPECT_EQ(to("/dev/stdout").out, "N\r\n7\r\n");
    EXPECT_EQ(to("/dev/fd/2").err, "N\r\n7\r\n");
    EXPECT_EQ(to("/dev/null").status, 0);
    fs::create_symlink("/dev/null", file("out/nothing"));
    EXPECT_EQ(to(file("out/nothing")).status, 0);
    EXPECT_TRUE(fs::is_symlink(file("out/nothing")));

    // One that nobody reads yet is waited for.
    const std::string pipe = file("out/pipe");
    ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
    std::string read;
    std::thread reader([&] {
        std::this_thread::sleep_for(std::chrono::milliseconds(300));
        read = read_file(pipe);
    });
    const Finished run = to(pipe);
    reader.join();
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_EQ(read, "N\r\n7\r\n");
    EXPECT_TRUE(fs::is_fifo(pipe));
}

// What stands in a log already is not written over.
TEST_F(OutputFiles, BehindStandardOutputAreAddedTo) {
    const std::string log = write_file("log", "before\n");
    const Finished run = zmfb_after(
        "exec >>" + log,
        {"--db", path, "query", "--mode", "csv", "select 7 as n from rdb$database", "-o", "/dev/stdout"});
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_EQ(read_file(log), "before\nN\r\n7\r\n");
}

}  // namespace
}  // namespace zmfb::test
