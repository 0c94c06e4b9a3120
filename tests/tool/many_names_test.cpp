// Patterns, and folders with more files than anybody looks at.
#include <signal.h>

#include <filesystem>
#include <fstream>

#include "tests/support/dbf_builder.h"
#include "tests/tool/tool.h"

namespace zmfb::test {
namespace {

namespace fs = std::filesystem;

// In a run of its own (ZMFB_NAMES) a million.
int names() {
    const char* const given = std::getenv("ZMFB_NAMES");
    return given == nullptr ? 20000 : std::stoi(given);
}

class ManyNames : public Tool {
  protected:
    ManyNames() : path(database()) { fs::create_directory(file("many")); }
    // Empty files, which are refused as soon as they are opened.
    void make_files() const {
        for (int i = 0; i < names(); ++i) std::ofstream(file("many/" + std::to_string(i) + ".x"));
    }
    [[nodiscard]] std::vector<std::string> import(const std::string& pattern) const {
        return {"--db", path, "import", "--dry-run", pattern};
    }
    std::string path;
};

// Twenty seconds of a processor are more than enough for as many as these, unless they grow as the square.
TEST_F(ManyNames, ThatAPatternOrAFolderMeansAreReadOnce) {
    make_files();
    const std::string limit = "ulimit -t " + std::to_string(20 + names() / 10000);
    EXPECT_EQ(zmfb_after(limit, import(file("many/*[!x]"))).err,
              "error: no file fits " + file("many/*[!x]") + "\n");
    EXPECT_EQ(zmfb_after(limit, import(file("many"))).err, "error: no DBF file is in " + file("many") + "\n");
    DbfBuilder().field("N", 'N', 4).record({"1"}).write(file("many/a.dbf"));
    EXPECT_EQ(zmfb_after(limit, import(file("many"))).status, 0);
    EXPECT_EQ(zmfb_after(limit, import(file("many/*.dbf"))).status, 0);
}

TEST_F(ManyNames, ThatFitAPatternOfManyStarsAreComparedInNoTime) {
    write_file("many/" + std::string(250, 'a'), "");
    const auto many = [](const std::string& piece) {
        std::string all;
        for (int i = 0; i < 60; ++i) all += piece;
        return all;
    };
    for (const std::string piece : {"*", "*a", "*?", "*[a-b]", "?*?"}) {
        const std::string pattern = file("many/" + many(piece) + "x");
        EXPECT_EQ(zmfb_after("ulimit -t 20", import(pattern)).err, "error: no file fits " + pattern + "\n");
        const Finished exported =
            zmfb_after("ulimit -t 20", {"--db", path, "export", many(piece) + "x", "-o", file("")});
        EXPECT_EQ(exported.status, 1) << exported.err;
    }
}

// Folders that lead into themselves have more names than anybody can wait for.
TEST_F(ManyNames, ThatAPatternIsHeldAgainstDoNotKeepAToolThatIsToEnd) {
    for (int i = 0; i < 20; ++i) fs::create_directory_symlink(".", file("many/" + std::to_string(i)));
    const auto tool = start(import(file("many/*/*/*/*/*/*/*.dbf")));
    tool->settle();
    tool->send(SIGTERM);
    const Finished run = tool->end();
    EXPECT_EQ(run.status, 143);
    EXPECT_EQ(run.err, "error: interrupted\n");
}

}  // namespace
}  // namespace zmfb::test
