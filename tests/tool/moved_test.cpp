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
    /// Runs a program as the tool on a database of this test that is a file, with a new environment.
    Finished run_as_tool(const std::string& program, const std::vector<std::string>& settings,
                         const std::string& command) const {
        std::vector<std::string> words{
            "env", "-u", "FIREBIRD", "-u", "FIREBIRD_LOCK", "XDG_CACHE_HOME=" + file("cache")};
        words.insert(words.end(), settings.begin(), settings.end());
        words.insert(words.end(), {program, "--db", file("moved.fdb"), command});
        return run(words);
    }
};

TEST_F(Moved, AToolWithoutItsModuleSaysHowToNameIt) {
    if (fs::exists(ZMFB_FULL_LIB "/zmfbconn/zmrddudfs.so")) GTEST_SKIP() << "an installed one is found";
    fs::copy_file(ZMFB_TOOL, file("zmfb"));
    const Finished lost = run_as_tool(file("zmfb"), {"ZMFB_UDF_DIR=/nowhere"}, "create");
    EXPECT_EQ(lost.status, 3);
    EXPECT_EQ(lost.err,
              "error: cannot prepare the embedded engine\n"
              "  cannot find zmrddudfs.so, the module of the driver's functions; the environment variable "
              "ZMFB_UDF_DIR names its folder\n");
    EXPECT_FALSE(fs::exists(file("moved.fdb")));
    if (on_server()) return;  // there may be no engine to embed
    const Finished found = run_as_tool(file("zmfb"), {"ZMFB_UDF_DIR=" + udf_folder()}, "create");
    EXPECT_EQ(found.status, 0) << found.err;
}

TEST_F(Moved, TheClientLibraryMayLieAsItsOwnInstallerPutsIt) {
    Dl_info info{};
    ASSERT_NE(dladdr(dlsym(RTLD_DEFAULT, "isc_attach_database"), &info), 0);
    const fs::path library = info.dli_fname;
    fs::create_directories(file("firebird/lib"));
    fs::copy_file(fs::canonical(library), fs::path(file("firebird/lib")) / library.filename());
    const std::vector<std::string> settings{"LD_LIBRARY_PATH=" + file("firebird/lib")};
    const Finished lost = run_as_tool(ZMFB_TOOL, settings, "create");
    EXPECT_EQ(lost.status, 3);
    EXPECT_EQ(lost.err,
              "error: cannot prepare the embedded engine\n"
              "  cannot find the plugin folder of the Firebird client library\n");
    if (on_server()) return;  // there may be no engine to embed
    for (const auto& version : fs::directory_iterator(fs::canonical(library).parent_path() / "firebird"))
        fs::create_directory_symlink(version.path() / "plugins", file("firebird/plugins"));
    const Finished found = run_as_tool(ZMFB_TOOL, settings, "create");
    EXPECT_EQ(found.status, 0) << found.err;
}

}  // namespace
}  // namespace zmfb::test
