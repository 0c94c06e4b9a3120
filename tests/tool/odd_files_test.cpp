// Pipes, sockets, folders and devices where a file is to be: every argument that takes one.
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <filesystem>
#include <memory>

#include "tests/support/dbf_builder.h"
#include "tests/support/dialogue.h"
#include "tests/support/environment.h"
#include "tests/support/memo_builder.h"
#include "tests/tool/tool.h"

namespace zmfb::test {
namespace {

namespace fs = std::filesystem;

// An argument, and some of what is said when it is not a file; "" where it is waited for, or may be given.
struct Argument {
    std::vector<std::string> words;  // with FILE in its place
    std::string pipe, socket, folder, device;
    std::string input = {};  // of a shell
};

const std::vector<Argument> arguments{
    {{"import", "FILE", "--table", "X"}, "is a pipe", "is a socket", "no DBF file is in", "is a device"},
    {{"import", "FILE", "--table", "X", "--dry-run"},
     "is a pipe",
     "is a socket",
     "no DBF file is in",
     "is a device"},
    {{"import", "memo_FILE.dbf"}, "is a pipe", "is a socket", "is a folder", "is a device"},
    {{"import", "page_FILE.dbf"},
     "has a .cpg file that is no file",
     "has a .cpg file that is no file",
     "has a .cpg file that is no file",
     "has a .cpg file that is no file"},
    {{"import", "--manifest", "FILE"}, "it is a pipe", "it is a socket", "it is a folder", "it is a device"},
    {{"import", "bad.dbf", "--rejects", "FILE"}, "", "it is a socket", "Is a directory", "No space left"},
    {{"import", "bad.dbf", "--on-bad-value", "set-aside", "--set-aside", "FILE"},
     "is there already",
     "is there already",
     "is there already",
     "is there already"},
    {{"matrix", "check", "FILE"}, "it is a pipe", "it is a socket", "it is a folder", "it is a device"},
    {{"matrix", "apply", "FILE", "--yes"},
     "it is a pipe",
     "it is a socket",
     "it is a folder",
     "it is a device"},
    {{"matrix", "extract", "-o", "FILE", "--yes"}, "", "it is a socket", "Is a directory", "No space left"},
    {{"query", "select 1 from rdb$database", "-o", "FILE"},
     "",
     "it is a socket",
     "Is a directory",
     "No space left"},
    {{"export", "t", "-o", "FILE/"}, "there is no folder", "there is no folder", "", "there is no folder"},
    {{"export", "--query", "select 1 as n from rdb$database", "--table", "FILE", "--yes"},
     "it is no file",
     "it is no file",
     "Is a directory",
     "it is no file"},
    {{"export", "t", "--yes", "--manifest", "FILE"}, "", "it is a socket", "Is a directory", "No space left"},
    {{"--password-file", "FILE", "tables"},
     "",
     "it is a socket",
     "Is a directory",
     "has a line of more than"},
    {{"shell"}, "", "it is a socket", "Is a directory", "has a line of more than", ".read FILE\n"},
    {{"--db", "./FILE", "tables"}, "is no file", "is no file", "Is a directory", "is no file"},
    {{"--db", "./FILE", "create"}, "exists already", "exists already", "exists already", "exists already"},
    {{"log"}, "it is a pipe", "it is a socket", "it is a folder", "it is a device"},
    {{"call", "bringdbf('FILE')"}, "was not found", "was not found", "was not found", "was not found"},
    {{"call", "applymatrix('FILE')"},
     "the matrix is empty",
     "the matrix is empty",
     "the matrix is empty",
     "the matrix is empty"},
};

class OddFiles : public Tool {
  protected:
    OddFiles() : path(database()), before_(fs::current_path()) {
        if (on_server()) return;
        fs::current_path(folder());
        on(path, {"call", "createtable('T', {{'A', 'N', 4, 0}})"});
        DbfBuilder().field("N", 'N', 4).record({"x"}).write("bad.dbf");
        for (const std::string ending : {"", ".tf", ".dbf"}) make_all(ending);
        for (const std::string of : {"memo_", "page_"}) make_all(of == "memo_" ? ".dbt" : ".cpg", of);
        for (const char* const kind : {"pipe", "socket", "folder", "device"}) {
            DbfBuilder()
                .type(0x83)
                .field("M", 'M', 10)
                .record({"1"})
                .write("memo_" + std::string(kind) + ".dbf");
            DbfBuilder().field("N", 'N', 4).record({"1"}).write("page_" + std::string(kind) + ".dbf");
        }
    }
    ~OddFiles() override { fs::current_path(before_); }
    static void make_all(const std::string& ending, const std::string& of = "") {
        EXPECT_EQ(::mkfifo((of + "pipe" + ending).c_str(), 0600), 0);
        fs::create_directory(of + "folder" + ending);
        fs::create_symlink("/dev/full", of + "device" + ending);
        const int made = ::socket(AF_UNIX, SOCK_STREAM, 0);
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        (of + "socket" + ending).copy(static_cast<char*>(address.sun_path), sizeof address.sun_path - 1);
        EXPECT_EQ(::bind(made, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
        ::close(made);
    }
    static std::string filled(std::string text, const std::string& name) {
        const std::size_t at = text.find("FILE");
        return at == std::string::npos ? text : text.replace(at, 4, name);
    }
    // Another one given behind it goes before --db.
    [[nodiscard]] std::vector<std::string> words(const Argument& argument, const std::string& name) const {
        std::vector<std::string> all;
        if (argument.words[0] != "--db") all = {"--db", path};
        for (const std::string& word : argument.words) all.push_back(filled(word, name));
        return all;
    }
    void expect_refused(const Argument& argument, std::string name, const std::string& reason) const {
        if (reason.empty()) return;
        if (argument.words[0] == "matrix" && argument.words[1] == "extract") name += ".tf";
        write_file("input", filled(argument.input, name));
        // For 20 seconds of a processor at most.
        const Finished run =
            zmfb_after("export ZMFB_TEST_LOG=" + (argument.words[0] == "log" ? name : "/dev/null") +
                           "; ulimit -t 20; exec < input",
                       words(argument, name));
        std::string shown;
        for (const std::string& word : words(argument, name)) shown += word + " ";
        EXPECT_TRUE(run.status > 0 && run.status < 128) << shown << run.status;
        EXPECT_NE(run.err.find(reason), std::string::npos) << shown << "\n" << run.err;
    }
    std::string path;

  private:
    fs::path before_;
};

TEST_F(OddFiles, AreRefusedInWordsByEveryArgumentThatTakesAFile) {
    if (on_server()) GTEST_SKIP() << "files are the tool's, wherever the database is";
    for (const Argument& argument : arguments) {
        expect_refused(argument, "pipe", argument.pipe);
        expect_refused(argument, "socket", argument.socket);
        expect_refused(argument, "folder", argument.folder);
        expect_refused(argument, "device", argument.device);
    }
}

// Lines and rows may come and go through them. That it waits is said after a second, and Ctrl-C ends it.
TEST_F(OddFiles, ThatArePipesAreWaitedForInWordsWhereLinesAreReadOrWritten) {
    if (on_server()) GTEST_SKIP() << "files are the tool's, wherever the database is";
    std::vector<std::unique_ptr<Dialogue>> waiting;
    for (const Argument& argument : arguments) {
        if (!argument.pipe.empty()) continue;
        // The ending is of what writes a matrix.
        const std::string pipe = std::to_string(waiting.size()) + ".tf";
        ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
        waiting.push_back(std::make_unique<Dialogue>(command(words(argument, pipe))));
        if (!argument.input.empty()) waiting.back()->type(filled(argument.input, pipe));
    }
    EXPECT_EQ(waiting.size(), 6U);
    for (const auto& one : waiting) one->expect("waiting for somebody who ");
    for (const auto& one : waiting) one->type("\x03");
    for (const auto& one : waiting) {
        one->type("\x04");
        EXPECT_LT(one->end(), 131);
    }
}

TEST_F(OddFiles, ThatShellsMakeOfOtherProgramsAreReadToTheirEnd) {
    if (on_server()) GTEST_SKIP() << "files are the tool's, wherever the database is";
    ASSERT_EQ(on(path, {"matrix", "extract", "-o", "m.tf"}).status, 0);
    ASSERT_EQ(on(path, {"export", "t", "--manifest", "m.json"}).status, 0);
    const auto in_bash = [&](const std::string& words) {
        std::vector<std::string> all = command({});
        all.pop_back();
        all.insert(all.end(), {"bash", "-c", ZMFB_TOOL " --db " + path + " " + words});
        return run(all);
    };
    for (const std::string words :
         {"matrix check <(sleep 0.2; cat m.tf)", "--password-file <(echo secret) tables",
          "shell -c '.read /dev/fd/3' 3< <(sleep 0.2; echo 'select 1 from rdb$database;')",
          "import --dry-run --replace --yes --manifest <(cat m.json) t.dbf",
          "import - --table n --dry-run < <(cat t.dbf)",
          "query 'select 1 from rdb$database' -o >(cat > /dev/null)"}) {
        const Finished run = in_bash(words);
        EXPECT_EQ(run.status, 0) << words << "\n" << run.err;
    }
}

TEST_F(OddFiles, ThatNeverEndAreRefusedFromStandardInput) {
    const Finished run =
        zmfb_after("ulimit -t 20; exec < /dev/zero", {"--db", path, "import", "-", "--table", "x"});
    EXPECT_EQ(run.status, 1);
    EXPECT_NE(run.err.find("- has more than 268435456 bytes: name the file instead"), std::string::npos)
        << run.err;
}

}  // namespace
}  // namespace zmfb::test
