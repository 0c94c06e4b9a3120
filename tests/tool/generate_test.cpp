#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <set>
#include <stdexcept>

#include "tests/support/dialogue.h"
#include "tests/support/environment.h"
#include "tests/tool/tool.h"

namespace zmfb::test {
namespace {

class Generate : public Tool {
  protected:
    Finished generate(const std::string& kind) const { return zmfb({"generate", kind}); }
    // What bash offers for the last of these words, sorted.
    std::vector<std::string> offered(const std::vector<std::string>& words,
                                     const std::string& database = "") const {
        const std::string script = write_script();
        std::vector<std::string> command{"env",
                                         "-u",
                                         "FIREBIRD",
                                         "-u",
                                         "FIREBIRD_LOCK",
                                         "ZMFB_DB=" + database,
                                         "XDG_CACHE_HOME=" + (process_folder() / "cache").string(),
                                         "bash",
                                         "-c",
                                         "cd \"$1\"; shift; source ./zmfb.bash; COMP_WORDS=(\"$@\"); "
                                         "COMP_CWORD=$(($# - 1)); _zmfb; printf '%s\\n' \"${COMPREPLY[@]}\"",
                                         "bash",
                                         script};
        command.insert(command.end(), words.begin(), words.end());
        const Finished finished = run(command);
        EXPECT_EQ(finished.status, 0);
        EXPECT_EQ(finished.err, "");
        auto found = lines(finished.out);
        std::ranges::sort(found);
        return found;
    }

    // A database with these tables, and a folder with the tool as zmfb.
    std::string with_tables() const {
        const std::string path = database();
        exec(path, "create table customers (a integer)");
        exec(path, "create table cust$old (a integer)");
        exec(path, "create table \"Custom made\" (a integer)");
        std::filesystem::create_directories(file("bin"));
        std::filesystem::create_symlink(ZMFB_TOOL, file("bin/zmfb"));
        return path;
    }
    [[nodiscard]] std::vector<std::string> with_shell(const std::string& path,
                                                      const std::vector<std::string>& shell) const {
        std::vector<std::string> command{"env",
                                         "-u",
                                         "FIREBIRD",
                                         "-u",
                                         "FIREBIRD_LOCK",
                                         "LC_ALL=C.UTF-8",
                                         "ZMFB_DB=" + path,
                                         "HOME=" + file(""),
                                         "PATH=" + file("bin") + ":" + std::getenv("PATH"),
                                         "XDG_CACHE_HOME=" + (process_folder() / "cache").string()};
        command.insert(command.end(), shell.begin(), shell.end());
        return command;
    }

  private:
    std::string write_script() const {
        std::filesystem::create_directories(file("completion"));
        write_file("completion/zmfb.bash", generate("bash").out);
        write_file("completion/some.fdb", "");
        return file("completion");
    }
};

// The words of a text that look like options or like commands in a list of --help.
std::set<std::string> options_in(const std::string& help) {
    std::set<std::string> found;
    for (std::size_t at = help.find("--"); at != std::string::npos; at = help.find("--", at + 2)) {
        const std::size_t end = help.find_first_not_of("abcdefghijklmnopqrstuvwxyz-", at);
        const std::string option = help.substr(at, end - at);
        const bool begins = at > 0 && (help[at - 1] == ' ' || help[at - 1] == ',');
        if (begins && option.size() > 2) found.insert(option);
    }
    return found;
}

const std::vector<std::vector<std::string>> commands{{"create"},
                                                     {"import"},
                                                     {"tables"},
                                                     {"struct"},
                                                     {"drop"},
                                                     {"query"},
                                                     {"exec"},
                                                     {"call"},
                                                     {"methods"},
                                                     {"locks"},
                                                     {"opens"},
                                                     {"unlock"},
                                                     {"clear"},
                                                     {"log"},
                                                     {"doctor"},
                                                     {"generate"},
                                                     {"matrix", "extract"},
                                                     {"matrix", "check"},
                                                     {"matrix", "apply"}};

TEST_F(Generate, EveryCommandAndOptionOfHelpIsInEveryPage) {
    const std::vector<std::pair<std::string, std::string>> pages{
        {"man", "\\-\\-"}, {"bash", "--"}, {"zsh", "--"}, {"fish", "-l "}};
    const std::string all = zmfb({"--help"}).out;
    for (const auto& [kind, dashes] : pages) {
        const Finished page = generate(kind);
        EXPECT_EQ(page.status, 0);
        EXPECT_EQ(page.err, "");
        for (const auto& words : commands) {
            EXPECT_NE(page.out.find(words.back()), std::string::npos) << words.back() << " in " << kind;
            std::vector<std::string> asked = words;
            asked.push_back("--help");
            const std::string help = zmfb(asked).out;
            EXPECT_NE(help.find("Example:\n  zmfb "), std::string::npos) << words.back();
            for (const std::string& option : options_in(help.substr(0, help.find("Example:")))) {
                std::string name = option.substr(2);
                if (kind == "man") {
                    for (std::size_t at = 0; (at = name.find('-', at)) != std::string::npos; at += 2)
                        name.insert(at, "\\");
                }
                EXPECT_NE(page.out.find(dashes + name), std::string::npos) << option << " in " << kind;
            }
        }
    }
    for (const char* head : {"Databases and DBF files:", "Tables:", "Rows and calls:", "Health:",
                             "The tool itself:\n  generate"}) {
        EXPECT_NE(all.find(head), std::string::npos) << head;
    }
}

TEST_F(Generate, TheManualPageHasNoWarnings) {
    if (run({"groff", "--version"}).status != 0) GTEST_SKIP() << "groff is not installed";
    const Finished page =
        run({"groff", "-man", "-ww", "-Tutf8", "-z", write_file("zmfb.1", generate("man").out)});
    EXPECT_EQ(page.status, 0);
    EXPECT_EQ(page.err, "");
}

TEST_F(Generate, BashOffersCommandsOptionsChoicesAndFiles) {
    EXPECT_EQ(offered({"zmfb", "str"}), std::vector<std::string>{"struct"});
    EXPECT_EQ(offered({"zmfb", "--db", "x.fdb", "dro"}), std::vector<std::string>{"drop"});
    EXPECT_EQ(offered({"zmfb", "matrix", ""}), (std::vector<std::string>{"apply", "check", "extract"}));
    EXPECT_EQ(offered({"zmfb", "matrix", "apply", "--y"}), std::vector<std::string>{"--yes"});
    EXPECT_EQ(offered({"zmfb", "struct", "--pass"}),
              (std::vector<std::string>{"--password", "--password-file"}));
    EXPECT_EQ(offered({"zmfb", "query", "--mode", "c"}), std::vector<std::string>{"csv"});
    EXPECT_EQ(offered({"zmfb", "--db", "so"}), std::vector<std::string>{"some.fdb"});
    EXPECT_EQ(offered({"zmfb", "import", "so"}), std::vector<std::string>{"some.fdb"});
    EXPECT_EQ(offered({"zmfb", "--user", ""}), std::vector<std::string>{""});
}

TEST_F(Generate, BashOffersTheTablesOfTheDatabaseOfTheEnvironment) {
    const std::string path = with_tables();
    const std::vector<std::string> both{"cust$old", "customers"}, nothing{""};
    EXPECT_EQ(offered({ZMFB_TOOL, "struct", "cus"}, path), both);
    EXPECT_EQ(offered({ZMFB_TOOL, "export", "x", "CUSTO"}, path), std::vector<std::string>{"CUSTOMERS"});
    EXPECT_EQ(offered({ZMFB_TOOL, "matrix", "extract", "custo"}, path),
              std::vector<std::string>{"customers"});
    EXPECT_EQ(offered({ZMFB_TOOL, "struct", "nosuch"}, path), nothing);
    EXPECT_EQ(offered({ZMFB_TOOL, "struct", "cus"}), nothing);
    EXPECT_EQ(offered({ZMFB_TOOL, "--db", "x.fdb", "struct", "cus"}, path), nothing);
    EXPECT_EQ(offered({ZMFB_TOOL, "struct", "cus"}, file("nosuch.fdb")), nothing);
    EXPECT_EQ(zmfb({"--help"}).out.find("\n  names "), std::string::npos);
}

// It accepts connections, and says nothing.
class SilentServer {
  public:
    SilentServer() : socket_(::socket(AF_INET, SOCK_STREAM, 0)) {
        address_.sin_family = AF_INET;
        address_.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t size = sizeof address_;
        auto* const address = reinterpret_cast<sockaddr*>(&address_);
        if (::bind(socket_, address, size) != 0 || ::listen(socket_, 5) != 0 ||
            ::getsockname(socket_, address, &size) != 0)
            throw std::runtime_error("no port to listen on");
    }
    ~SilentServer() { ::close(socket_); }
    SilentServer(const SilentServer&) = delete;
    SilentServer& operator=(const SilentServer&) = delete;
    [[nodiscard]] std::string database() const {
        return "127.0.0.1/" + std::to_string(ntohs(address_.sin_port)) + ":/nowhere.fdb";
    }

  private:
    int socket_;
    sockaddr_in address_{};
};

TEST_F(Generate, BashOffersNoTablesOfAServerThatDoesNotAnswer) {
    const SilentServer server;
    setenv("ISC_USER", "anna", 1);
    setenv("ISC_PASSWORD", "secret", 1);
    EXPECT_EQ(offered({ZMFB_TOOL, "struct", "cus"}, server.database()), std::vector<std::string>{""});
    unsetenv("ISC_USER");
    unsetenv("ISC_PASSWORD");
}

TEST_F(Generate, FishOffersTheTablesOfTheDatabaseOfTheEnvironment) {
    if (run({"fish", "--version"}).status != 0) GTEST_SKIP() << "fish is not installed";
    const std::string path = with_tables();
    const std::string script = write_file("zmfb.fish", generate("fish").out);
    const auto offers = [&](const std::string& line) {
        const Finished asked = run(with_shell(
            path, {"fish", "--no-config", "-c", "source $argv[1]; complete -C $argv[2]", script, line}));
        EXPECT_EQ(asked.err, "");
        return asked.out;
    };
    EXPECT_EQ(offers("zmfb struct cus"), "cust$old\ncustomers\n");
    EXPECT_EQ(offers("zmfb --db x.fdb struct cus"), "");
    EXPECT_NE(offers("zmfb stru").find("struct\t"), std::string::npos);
}

TEST_F(Generate, ZshOffersTheTablesOfTheDatabaseOfTheEnvironment) {
    if (run({"zsh", "--version"}).status != 0) GTEST_SKIP() << "zsh is not installed";
    const std::string path = with_tables();
    std::filesystem::create_directories(file("functions"));
    write_file("functions/_zmfb", generate("zsh").out);
    Dialogue talk(with_shell(path, {"zsh", "-f"}));
    talk.type("fpath=(" + file("functions") +
              " $fpath); autoload -Uz compinit; compinit -u -D; print rea''dy\n");
    talk.expect("ready\r\n");
    talk.type("zmfb struct CUSTO\t");
    talk.expect("MERS");
    talk.type("\x15zmfb --db x.fdb stru\t");
    talk.expect("ct");
    talk.type(
        "\x15"
        "exit\n");
    talk.end();
}

TEST_F(Generate, BashKnowsTheScriptsSyntax) {
    EXPECT_EQ(run({"bash", "-n", write_file("zmfb.bash", generate("bash").out)}).err, "");
    if (run({"zsh", "--version"}).status == 0) {
        EXPECT_EQ(run({"zsh", "-n", write_file("_zmfb", generate("zsh").out)}).err, "");
    }
    if (run({"fish", "--version"}).status == 0) {
        EXPECT_EQ(run({"fish", "-n", write_file("zmfb.fish", generate("fish").out)}).err, "");
    }
}

TEST_F(Generate, AnUnknownKindIsWrongUsage) {
    EXPECT_EQ(generate("tcsh").status, 2);
    EXPECT_EQ(zmfb({"generate"}).status, 2);
}

}  // namespace
}  // namespace zmfb::test
