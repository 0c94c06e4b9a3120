#include <algorithm>
#include <set>

#include "tests/tool/tool.h"

namespace zmfb::test {
namespace {

class Generate : public Tool {
  protected:
    Finished generate(const std::string& kind) const { return zmfb({"generate", kind}); }
    // What bash offers for the last of these words, sorted.
    std::vector<std::string> offered(const std::vector<std::string>& words) const {
        const std::string script = write_script();
        std::vector<std::string> command{"bash", "-c",
                                         "cd \"$1\"; shift; source ./zmfb.bash; COMP_WORDS=(\"$@\"); "
                                         "COMP_CWORD=$(($# - 1)); _zmfb; printf '%s\\n' \"${COMPREPLY[@]}\"",
                                         "bash", script};
        command.insert(command.end(), words.begin(), words.end());
        const Finished finished = run(command);
        EXPECT_EQ(finished.status, 0);
        EXPECT_EQ(finished.err, "");
        auto found = lines(finished.out);
        std::ranges::sort(found);
        return found;
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
