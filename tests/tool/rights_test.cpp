// The tool for a user who does not own the database.
#include <nlohmann/json.hpp>

#include "tests/support/dbf_builder.h"
#include "tests/support/environment.h"
#include "tests/tool/tool.h"

namespace zmfb::test {
namespace {

constexpr const char* hint =
    "hint: the owner of the database gives rights; docs/rights.md says which are needed\n";

class Rights : public Tool {
  protected:
    void SetUp() override {
        if (on_server()) GTEST_SKIP() << "only the embedded engine takes any user name";
        path = database();
        on(path, {"call", "createtable('CLIENT', {{'NAME', 'C', 10, 0}})"});
        on(path, {"exec", "insert into client (name) values ('Ana')"});
    }
    Finished as_anna(const std::vector<std::string>& words) const {
        std::vector<std::string> all{"--user", "anna"};
        all.insert(all.end(), words.begin(), words.end());
        return on(path, all);
    }
    std::string path;
};

TEST_F(Rights, TablesThatMayNotBeReadHaveNoCount) {
    const Finished refused = as_anna({"tables"});
    EXPECT_EQ(refused.status, 1);
    EXPECT_EQ(refused.out, "");
    EXPECT_EQ(refused.err, std::string("error: cannot read the engine's tables\n"
                                       "  no permission for EXECUTE access to FUNCTION ZMBLOBSUBSTR\n") +
                               hint);
    on(path, {"exec", "grant execute on function zmblobsubstr to public"});
    const Finished listed = as_anna({"tables"});
    EXPECT_EQ(listed.status, 0);
    EXPECT_EQ(listed.out.substr(0, listed.out.find("RDDSYS")),
              "table       kind    records\n"
              "----------  ------  -------\n"
              "CLIENT      driver        ?\n");
    const auto json = nlohmann::json::parse(as_anna({"--json", "tables"}).out);
    EXPECT_EQ(json[0], nlohmann::json::parse(R"({"table": "CLIENT", "kind": "driver", "records": null})"));
}

TEST_F(Rights, AnImportKeepsATableItMayKnowNothingOf) {
    const std::string dbf = file("client.dbf");
    DbfBuilder().field("N", 'N', 4).record({"   1"}).write(dbf);
    const Finished run = as_anna({"import", "--drop-existing", "--yes", dbf});
    EXPECT_EQ(run.status, 1);
    EXPECT_NE(run.err.find("no permission for EXECUTE access to FUNCTION ZMBLOBSUBSTR\n"), std::string::npos);
    EXPECT_EQ(on(path, {"query", "--mode", "csv", "select name from client"}).out, "NAME\r\nAna\r\n");
}

TEST_F(Rights, DoctorSaysWhatAUserMayNotDo) {
    const Finished run = as_anna({"doctor"});
    EXPECT_EQ(run.status, 1);
    EXPECT_NE(run.out.find("failed: no permission for EXECUTE access to FUNCTION "), std::string::npos);
    EXPECT_NE(run.out.find("\n[bad] external tables: unsuccessful metadata update CREATE TABLE EXT_DOCTOR_"),
              std::string::npos);
    EXPECT_NE(run.out.find(" failed There is no privilege for this operation\n       the owner of the "
                           "database gives rights; docs/rights.md says which are needed\n"),
              std::string::npos)
        << run.out;
}

}  // namespace
}  // namespace zmfb::test
