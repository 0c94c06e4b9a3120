// Databases that go from one version of Firebird to another, as docs/deployment.md says.
#include <cstdlib>

#include "tests/support/environment.h"
#include "tests/support/server.h"
#include "tests/tool/tool.h"

namespace zmfb::test {
namespace {

class Versions : public Tool {
  protected:
    void SetUp() override {
        const char* const named = std::getenv("ZMFB_TEST_FIREBIRD");
        if (named == nullptr) GTEST_SKIP() << "ZMFB_TEST_FIREBIRD names no folder of an unpacked Firebird";
        if (on_server()) GTEST_SKIP() << "the databases of this run are not files of this machine's Firebird";
        given_ = named;
    }
    // A gbak that is expected to succeed.
    static void gbak(std::vector<std::string> words, const std::vector<std::string>& environment = {}) {
        words.insert(words.begin() + 1, {"-user", sysdba, "-pas", sysdba_password});
        const Finished done = run(words, "", environment);
        EXPECT_EQ(done.status, 0) << done.out << done.err;
    }
    [[nodiscard]] Finished on_later(const Server& server, const std::string& name,
                                    const std::string& command) const {
        return zmfb({"--db", server.name_of(file(name)), "--user", sysdba, command}, "",
                    {std::string("ISC_PASSWORD=") + sysdba_password});
    }
    std::string given_;
};

TEST_F(Versions, ADatabaseGoesToALaterFirebirdAndBackByGbak) {
    const std::string path = database();
    ASSERT_EQ(on(path, {"import", ZMFB_EXAMPLE_DBF}).status, 0);
    exec(path, "create view V as select zmupper(NAME) N from CUSTOMERS");
    const std::string tables = on(path, {"tables"}).out;
    const Server later({.firebird = given_, .as_it_comes = true, .settings = {}});

    const Finished refused = on_later(later, "test.fdb", "tables");
    EXPECT_EQ(refused.status, 3);
    EXPECT_NE(refused.err.find("hint: another version of Firebird made the file; gbak "), std::string::npos)
        << refused.err;

    gbak({"gbak", "-b", path, file("old.fbk")});
    gbak({given_ + "/bin/gbak", "-c", file("old.fbk"), later.name_of(file("new.fdb"))},
         {"FIREBIRD=" + given_, "LD_LIBRARY_PATH=" + given_ + "/lib"});
    EXPECT_EQ(on_later(later, "new.fdb", "tables").out, tables);
    EXPECT_NE(
        on(file("new.fdb"), {"tables"}).err.find("hint: another version of Firebird made the file; gbak "),
        std::string::npos);

    gbak({"gbak", "-b", later.name_of(file("new.fdb")), file("back.fbk")});
    gbak({"gbak", "-c", file("back.fbk"), file("back.fdb")});
    EXPECT_EQ(on(file("back.fdb"), {"tables"}).out, tables);
    EXPECT_EQ(
        on(file("back.fdb"), {"query", "select first 1 N from V where N starting 'Z'", "--mode", "csv"}).err,
        "");
}

}  // namespace
}  // namespace zmfb::test
