// Ctrl-C in the middle of an import: as a signal, and typed at a terminal.
#include <signal.h>

#include "tests/support/dialogue.h"
#include "tests/support/environment.h"
#include "tests/tool/big_table.h"
#include "tests/tool/tool.h"

namespace zmfb::test {
namespace {

class ImportInterrupt : public Tool {
  protected:
    ImportInterrupt() : path(database()), before(objects()) { big_table().write(file("big.dbf")); }
    // The names of the tables, generators and triggers that users made.
    [[nodiscard]] std::string objects() const {
        return on(path, {"query", "--mode", "csv",
                         "select rdb$relation_name from rdb$relations where rdb$system_flag = 0 union "
                         "select rdb$generator_name from rdb$generators where rdb$system_flag = 0 union "
                         "select rdb$trigger_name from rdb$triggers where rdb$system_flag = 0"})
            .out;
    }
    std::string path;
    std::string before;
};

TEST_F(ImportInterrupt, LeavesNothing) {
    const auto tool = start({"--db", path, "import", file("big.dbf")});
    wait_for_table(path, "BIG");
    tool->send(SIGINT);
    const Finished finished = tool->end();
    EXPECT_EQ(finished.status, 130) << finished.err;
    EXPECT_EQ(finished.out, "");
    EXPECT_EQ(finished.err, "error: the import of " + file("big.dbf") + " was interrupted, and undone\n");
    EXPECT_EQ(objects(), before);
}

TEST_F(ImportInterrupt, AtATerminalLeavesNothing) {
    Dialogue talk(command({"--db", path, "import", file("big.dbf")}));
    talk.expect("copying    [#");
    talk.type("\x03");
    talk.expect("error: the import of ");
    talk.expect(" was interrupted, and undone\r\n");
    EXPECT_EQ(talk.end(), 130);
    EXPECT_EQ(objects(), before);
}

}  // namespace
}  // namespace zmfb::test
