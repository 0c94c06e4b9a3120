// The line that shows how far an import is.
#include <cstdlib>

#include "tests/support/dbf_builder.h"
#include "tests/support/environment.h"
#include "tests/support/terminal.h"
#include "tests/tool/tool.h"

namespace zmfb::test {
namespace {

class ImportProgress : public Tool {
  protected:
    ImportProgress() : path(database()) {
        DbfBuilder dbf = DbfBuilder().field("CODE", 'N', 8).field("NAME", 'C', 60);
        for (int i = 0; i < 200000; ++i) dbf.record({std::to_string(i), "name"});
        dbf.write(file("big.dbf"));
    }
    // An import on a terminal.
    Performance performed() const {
        const std::string cache = process_folder() / "cache";
        return perform(24, 200, "xterm", [&](const Stage& stage) {
            unsetenv("FIREBIRD");
            unsetenv("FIREBIRD_LOCK");
            setenv("XDG_CACHE_HOME", cache.c_str(), 1);
            const std::string command =
                "'" ZMFB_TOOL "' --db '" + path + "' import '" + file("big.dbf") + "'";
            stage.report("status " + std::to_string(std::system(command.c_str())));
        });
    }
    std::string path;
};

TEST_F(ImportProgress, ShowsRecordsRateAndTimeLeftOnATerminalAndLeavesOnlyTheSummary) {
    const Performance shown = performed();
    EXPECT_NE(shown.report.find("status 0"), std::string::npos) << shown.report;
    const std::size_t copying = shown.bytes.find("copying    [");
    ASSERT_NE(copying, std::string::npos) << shown.bytes;
    EXPECT_NE(shown.bytes.find(" of 200000 records, ", copying), std::string::npos);
    EXPECT_NE(shown.bytes.find("/s, ", copying), std::string::npos);
    EXPECT_NE(shown.bytes.find(" s left", copying), std::string::npos);
    TerminalScreen screen(24, 200);
    screen.feed(shown.bytes);
    const std::vector<std::string> left = lines(screen.text());
    EXPECT_EQ(left.size(), 1U) << screen.text();
    EXPECT_NE(screen.text().find("BIG: 200000 records, 2 fields, "), std::string::npos) << screen.text();
}

}  // namespace
}  // namespace zmfb::test
