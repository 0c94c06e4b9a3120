#include "tool/text_table.h"

#include <gtest/gtest.h>

namespace zmfb::test {
namespace {

using tool::TextTable;

TEST(TextTableShape, ColumnsAreAsWideAsTheirWidestCellCountedInCharacters) {
    TextTable table({{"name"}, {"n", true}});
    table.add({"Conceição", "7"});
    table.add({"x", "12345"});
    EXPECT_EQ(table.text(),
              "name           n\n"
              "---------  -----\n"
              "Conceição      7\n"
              "x          12345\n");
}

TEST(TextTableShape, NothingInACellReachesTheTerminalAsAControl) {
    TextTable table({{"a"}, {"b"}});
    table.add({"x\x1b[2J", "\n\t\r\x7f\xc2\x9b"});
    EXPECT_EQ(table.text(),
              "a         b\n"
              "--------  --------------\n"
              "x\\x1b[2J  \\n\\t\\r\\x7f\\x9b\n");
}

TEST(TextTableShape, NoLineEndsInBlanks) {
    TextTable table({{"a"}, {"b"}});
    table.add({"1", ""});
    EXPECT_EQ(table.text(), "a  b\n-  -\n1\n");
}

}  // namespace
}  // namespace zmfb::test
