// Ctrl-C in the middle of an import.
#include <signal.h>

#include "tests/tool/big_table.h"
#include "tests/tool/tool.h"

namespace zmfb::test {
namespace {

class ImportInterrupt : public Tool {
  protected:
    ImportInterrupt() : path(database()) { big_table().write(file("big.dbf")); }
    // Runs the tool with these words until the table is there, and sends it a signal.
    Finished interrupted(std::vector<std::string> words, const std::string& table, int signal) const {
        words.insert(words.begin(), {"--db", path});
        const auto tool = start(words);
        wait_for_table(path, table);
        tool->send(signal);
        return tool->end();
    }
    std::string path;
};

TEST_F(ImportInterrupt, LeavesNothing) {
    const std::string before = on(path, {"tables"}).out;
    const Finished finished = interrupted({"import", file("big.dbf")}, "BIG", SIGINT);
    EXPECT_EQ(finished.status, 130) << finished.err;
    EXPECT_EQ(finished.out, "");
    EXPECT_EQ(finished.err, "error: the import of " + file("big.dbf") + " was interrupted, and undone\n");
    EXPECT_EQ(on(path, {"tables"}).out, before);
    const std::string left =
        on(path, {"query", "--mode", "csv",
                  "select (select count(*) from rdb$triggers where rdb$trigger_name starting with 'T_BIG'), "
                  "(select count(*) from rdb$generators where rdb$generator_name starting with 'G_BIG') "
                  "from rdb$database"})
            .out;
    EXPECT_NE(left.find("\n0,0\r\n"), std::string::npos) << left;
}

}  // namespace
}  // namespace zmfb::test
