// Several files loaded at once.
#include <fmt/format.h>
#include <signal.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <regex>
#include <thread>

#include "tests/support/dbf_builder.h"
#include "tests/support/environment.h"
#include "tests/support/terminal.h"
#include "tests/tool/big_table.h"
#include "tests/tool/tool.h"

namespace zmfb::test {
namespace {

class ImportJobs : public Tool {
  protected:
    ImportJobs() : path(database()) {
        for (const char* folder : {"data", "more"}) std::filesystem::create_directory(file(folder));
    }
    std::string made(const std::string& name, const DbfBuilder& dbf) const {
        dbf.write(file(name));
        return file(name);
    }
    // The numbers of the processes that import for this one.
    static std::vector<pid_t> children_of(pid_t process) {
        std::ifstream list(fmt::format("/proc/{0}/task/{0}/children", process));
        std::vector<pid_t> children;
        for (pid_t child = 0; list >> child;) children.push_back(child);
        return children;
    }
    std::string path;
};

DbfBuilder prices() { return DbfBuilder().field("CODE", 'N', 4).field("PRICE", 'N', 8, 2); }

std::string without_times(const std::string& text) {
    return std::regex_replace(text, std::regex(R"(\d+\.\d\d s\b|"seconds":[0-9.e-]+)"), "TIME");
}

TEST_F(ImportJobs, TellTheSameAsOneAfterAnother) {
    for (int i = 0; i < 12; ++i)
        made(fmt::format("data/t{:02}.dbf", i), prices().record({std::to_string(i), "1.5"}));
    made("data/a b.dbf", prices());
    made("data/a-b.dbf", prices());
    made("data/date.dbf", prices().record({"1", "2"}));
    made("data/t03.dbf", prices().record({"x", "1"}).record({"1", "y"}));
    made("data/t05.dbf", prices().record({"z", "1"}));
    made("data/t07.dbf", DbfBuilder());
    made("more/t01.dbf", prices());
    made("more/t07.dbf", prices());
    const std::string one = as_database("one.fdb");
    ASSERT_EQ(zmfb({"--db", one, "create"}).status, 0);
    for (const std::vector<std::string>& options :
         {std::vector<std::string>{"--dry-run"}, {}, {"--replace", "--yes", "--on-bad-value", "default"}}) {
        for (const char* json : {"", "--json"}) {
            const std::string rejects = file("rejects.csv");
            const auto imported = [&](const std::string& where, const std::string& jobs) {
                std::filesystem::remove(rejects);
                std::vector<std::string> words{"--db", where};
                if (*json != '\0') words.emplace_back(json);
                words.insert(words.end(),
                             {"import", file("data"), file("more"), "--jobs", jobs, "--rejects", rejects});
                words.insert(words.end(), options.begin(), options.end());
                return zmfb(words);
            };
            const Finished expected = imported(one, "1");
            const std::string expected_rejects = read_file(rejects);
            const Finished run = imported(path, "3");
            EXPECT_EQ(run.status, expected.status);
            EXPECT_EQ(run.status, 1);
            EXPECT_EQ(run.err, expected.err);
            EXPECT_EQ(without_times(run.out), without_times(expected.out));
            EXPECT_EQ(read_file(rejects), expected_rejects);
            EXPECT_EQ(lines(expected_rejects).size(), 4U);
        }
    }
    EXPECT_EQ(on(path, {"tables"}).out, on(one, {"tables"}).out);
    EXPECT_NE(on(path, {"tables"}).out.find("A_B_2"), std::string::npos);
}

TEST_F(ImportJobs, ARenameThatNoFileOfAnyProcessNeedsIsSaid) {
    const std::string a = made("a.dbf", prices()), b = made("b.dbf", DbfBuilder().field("NAME", 'C', 4));
    const Finished used =
        on(path, {"import", a, b, "--jobs", "2", "--rename", "CODE=C", "--rename", "NAME=N"});
    EXPECT_EQ(used.status, 0) << used.err;
    const Finished run = on(path, {"import", a, b, "--jobs", "2", "--replace", "--yes", "--rename", "CODE=C",
                                   "--rename", "NONE=N"});
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.err, "error: no file has a field NONE, which --rename NONE=N names\n");
}

TEST_F(ImportJobs, ControlCUndoesAllThatAreAtWork) {
    const std::string before = on(path, {"tables"}).out;
    for (const char* name : {"a.dbf", "b.dbf", "c.dbf"}) big_table().write(file(name));
    const auto tool =
        start({"--db", path, "import", file("a.dbf"), file("b.dbf"), file("c.dbf"), "--jobs", "2"});
    wait_for_table(path, "A");
    wait_for_table(path, "B");
    tool->send(SIGINT);
    const Finished finished = tool->end();
    EXPECT_EQ(finished.status, 130);
    EXPECT_EQ(finished.out, "");
    EXPECT_EQ(finished.err, "error: the import of " + file("a.dbf") +
                                " was interrupted, and undone\nerror: the import of " + file("b.dbf") +
                                " was interrupted, and undone\n");
    EXPECT_EQ(on(path, {"tables"}).out, before);
}

TEST_F(ImportJobs, AProcessThatIsKilledLosesItsFileOnly) {
    big_table().write(file("a.dbf"));
    const std::string b = made("b.dbf", prices().record({"1", "1"})), c = made("c.dbf", prices());
    const auto tool = start({"--db", path, "import", file("a.dbf"), b, c, "--jobs", "2"});
    wait_for_table(path, "A");
    // The one that has more to do than its own end.
    std::vector<pid_t> children = children_of(tool->pid());
    for (int i = 0; i < 600 && children.size() > 1; ++i) {
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
        children = children_of(tool->pid());
    }
    ASSERT_EQ(children.size(), 1U);
    kill(children[0], SIGKILL);
    const Finished finished = tool->end();
    EXPECT_EQ(finished.status, 1);
    EXPECT_EQ(finished.err, "error: " + file("a.dbf") +
                                " was not imported\n  its process was ended by signal 9 (Killed)\n"
                                "hint: \"zmfb doctor\" says what was left, if anything was\n");
    EXPECT_NE(finished.out.find(b + " -> B: 1 record"), std::string::npos) << finished.out;
    EXPECT_NE(finished.out.find(c + " -> C: 0 records"), std::string::npos) << finished.out;
    const Finished again = on(path, {"import", file("a.dbf")});
    EXPECT_EQ(again.status, 0) << again.err;
}

TEST_F(ImportJobs, EndWithTheProcessThatBeganThem) {
    const std::string before = on(path, {"tables"}).out;
    for (const char* name : {"a.dbf", "b.dbf"}) big_table().write(file(name));
    const auto tool = start({"--db", path, "import", file("a.dbf"), file("b.dbf"), "--jobs", "2"});
    wait_for_table(path, "A");
    wait_for_table(path, "B");
    const std::vector<pid_t> children = children_of(tool->pid());
    ASSERT_EQ(children.size(), 2U);
    tool->send(SIGKILL);
    tool->end();
    const auto is_gone = [](pid_t child) { return kill(child, 0) != 0; };
    for (int i = 0; i < 600 && !std::ranges::all_of(children, is_gone); ++i)
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    EXPECT_EQ(on(path, {"tables"}).out, before);
}

TEST_F(ImportJobs, EachShowsHowFarItIsOnATerminal) {
    for (const char* name : {"a.dbf", "b.dbf"}) big_table().write(file(name));
    const std::string cache = process_folder() / "cache";
    const Performance shown = perform(24, 200, "xterm", [&](const Stage& stage) {
        unsetenv("FIREBIRD");
        unsetenv("FIREBIRD_LOCK");
        setenv("XDG_CACHE_HOME", cache.c_str(), 1);
        const std::string command = "'" ZMFB_TOOL "' --db '" + path + "' import --jobs 2 '" + file("a.dbf") +
                                    "' '" + file("b.dbf") + "'";
        stage.report("status " + std::to_string(std::system(command.c_str())));
    });
    EXPECT_NE(shown.report.find("status 0"), std::string::npos) << shown.report;
    for (const char* name : {"a.dbf", "b.dbf"}) {
        const std::size_t copying = shown.bytes.find(file(name) + ": copying    [");
        ASSERT_NE(copying, std::string::npos) << shown.bytes;
        EXPECT_NE(shown.bytes.find("/s, ", copying), std::string::npos);
        EXPECT_NE(shown.bytes.find(" s left", copying), std::string::npos);
    }
    TerminalScreen screen(24, 200);
    screen.feed(shown.bytes);
    EXPECT_EQ(lines(screen.text()).size(), 7U) << screen.text();
    EXPECT_EQ(screen.text().find("copying"), std::string::npos) << screen.text();
}

TEST_F(ImportJobs, ThatCannotBeAreRefused) {
    const std::string dbf = made("a.dbf", prices());
    EXPECT_EQ(on(path, {"import", dbf, "--jobs", "0"}).status, 2);
    EXPECT_EQ(on(path, {"import", dbf, "--jobs", "2", "--replace"}).err,
              "error: --jobs asks nothing: with --replace it needs --yes\n");
    const Finished unwritable =
        on(path, {"import", dbf, dbf, "--jobs", "2", "--rejects", file("nowhere/rejects.csv")});
    EXPECT_EQ(unwritable.status, 1);
    EXPECT_NE(unwritable.err.find("cannot write " + file("nowhere/rejects.csv")), std::string::npos)
        << unwritable.err;
    EXPECT_FALSE(has_table(path, "A"));
}

}  // namespace
}  // namespace zmfb::test
