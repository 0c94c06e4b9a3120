// The tool and the client library in other places than usual.
#include <dlfcn.h>

#include <filesystem>

#include "tests/support/environment.h"
#include "tests/tool/tool.h"

namespace zmfb::test {
namespace {

namespace fs = std::filesystem;

class Moved : public Tool {
  protected:
    // Runs a program as the tool on a database of this test that is a file, with a new environment.
    Finished run_as_tool(const std::string& program, const std::vector<std::string>& settings,
                         const std::vector<std::string>& command) const {
        std::vector<std::string> words{
            "env", "-u", "FIREBIRD", "-u", "FIREBIRD_LOCK", "XDG_CACHE_HOME=" + file("cache")};
        words.insert(words.end(), settings.begin(), settings.end());
        words.insert(words.end(), {program, "--db", file("moved.fdb")});
        words.insert(words.end(), command.begin(), command.end());
        return run(words);
    }
};

TEST_F(Moved, AToolWithoutTheModuleMakesStoredFunctionsAndRefusesTheModules) {
    if (fs::exists(ZMFB_FULL_LIB "/zmfbconn/zmrddudfs.so")) GTEST_SKIP() << "an installed one is found";
    if (on_server()) GTEST_SKIP() << "there may be no engine to embed";
    fs::copy_file(ZMFB_TOOL, file("zmfb"));
    const std::vector<std::string> without{"ZMFB_UDF_DIR=/nowhere"};
    const Finished lost = run_as_tool(file("zmfb"), without, {"create", "--functions", "module"});
    EXPECT_EQ(lost.status, 1);
    EXPECT_TRUE(lost.err.starts_with("error: cannot create " + file("moved.fdb") +
                                     "\n  the driver's functions cannot be called\n"))
        << lost.err;
    EXPECT_NE(lost.err.find("hint: \"zmfb functions stored\" makes functions that need no module; "),
              std::string::npos)
        << lost.err;
    EXPECT_FALSE(fs::exists(file("moved.fdb")));
    EXPECT_EQ(run_as_tool(file("zmfb"), without, {"create"}).err, "");
    // What is refused changes nothing.
    const Finished kept = run_as_tool(file("zmfb"), without, {"functions", "module"});
    EXPECT_EQ(kept.status, 1);
    EXPECT_TRUE(
        kept.err.starts_with("error: the functions stay stored ones\n  the driver's functions cannot be "
                             "called\n"))
        << kept.err;
    EXPECT_EQ(run_as_tool(file("zmfb"), without, {"functions"}).out,
              "stored: the eleven functions are stored ones, which need nothing on the server\n");
    const std::vector<std::string> with{"ZMFB_UDF_DIR=" + udf_folder()};
    EXPECT_EQ(run_as_tool(file("zmfb"), with, {"functions", "module"}).err, "");
    EXPECT_EQ(run_as_tool(file("zmfb"), with, {"query", "select zmtrim(' x ') from rdb$database"}).err, "");
}

TEST_F(Moved, TheClientLibraryMayLieAsItsOwnInstallerPutsIt) {
    Dl_info info{};
    ASSERT_NE(dladdr(dlsym(RTLD_DEFAULT, "isc_attach_database"), &info), 0);
    const fs::path library = info.dli_fname;
    fs::create_directories(file("firebird/lib"));
    fs::copy_file(fs::canonical(library), fs::path(file("firebird/lib")) / library.filename());
    const std::vector<std::string> settings{"LD_LIBRARY_PATH=" + file("firebird/lib")};
    const Finished lost = run_as_tool(ZMFB_TOOL, settings, {"create"});
    EXPECT_EQ(lost.status, 3);
    EXPECT_EQ(lost.err,
              "error: cannot prepare the embedded engine\n"
              "  cannot find the plugin folder of the Firebird client library\n");
    if (on_server()) return;  // there may be no engine to embed
    for (const auto& version : fs::directory_iterator(fs::canonical(library).parent_path() / "firebird"))
        fs::create_directory_symlink(version.path() / "plugins", file("firebird/plugins"));
    const Finished found = run_as_tool(ZMFB_TOOL, settings, {"create"});
    EXPECT_EQ(found.status, 0) << found.err;
}

TEST_F(Moved, TheEngineMayBeThatOfAnUnpackedFirebird) {
    const char* const given = std::getenv("ZMFB_TEST_FIREBIRD");
    if (given == nullptr) GTEST_SKIP() << "ZMFB_TEST_FIREBIRD names no folder of an unpacked Firebird";
    const std::vector<std::string> settings{"LD_LIBRARY_PATH=" + std::string(given) + "/lib"};
    EXPECT_EQ(run_as_tool(ZMFB_TOOL, settings, {"create"}).err, "");
    EXPECT_EQ(run_as_tool(ZMFB_TOOL, settings,
                          {"query", "--mode", "csv",
                           "select zmupper(cast('a' as char(1) character set iso8859_1)) "
                           "from rdb$database"})
                  .err,
              "");
    const Finished unknown = run_as_tool(ZMFB_TOOL, settings, {"exec", "drop table NOSUCH"});
    EXPECT_NE(unknown.err.find("\n  Table NOSUCH does not exist\n"), std::string::npos) << unknown.err;
}

}  // namespace
}  // namespace zmfb::test
