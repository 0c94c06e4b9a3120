// What is seen, in files.
#include "tests/tool/browse/browser.h"

namespace zmfb::test {
namespace {

class BrowseExport : public Browser {
  protected:
    // Exports, waits for what is told of it, and comes back to the screen. What was told of an export before
    // is still there.
    static void expect_exported(const Tmux& shown, const std::string& path, const std::string& told) {
        shown.press({"e"});
        shown.expect("Export to");
        shown.type(path);
        shown.press({"Enter"});
        shown.expect(told);
        shown.press({"Enter"});
        shown.expect("F1 keys");
    }
};

TEST_F(BrowseExport, WritesTheRowsOfTheFilterInTheOrder) {
    make_orders();
    const auto shown = browse({"customers"}, 200, 50);
    shown->expect("row 1 of 10");
    shown->press({"o", "f"});
    shown->type("credit > 1000");
    shown->press({"Enter"});
    shown->expect("row 1 of 3");
    expect_exported(*shown, file("rich.csv"), "CUSTOMERS -> ");
    EXPECT_EQ(read_file(file("rich.csv")),
              "CODE,NAME,CITY,CREDIT,SINCE,ACTIVE\r\n"
              "1,Ana Conceição,São Paulo,1250.50,2001-03-15 00:00:00.0000,T\r\n"
              "4,Renée Dubois,Orléans,99999.99,1988-02-29 00:00:00.0000,T\r\n"
              "9,Zoë Müller,Bern,15000.00,1997-05-06 00:00:00.0000,F\r\n");
    expect_exported(*shown, file("rich.dbf"), "3 records");
    EXPECT_NE(read_file(file("rich.dbf")).find("Ana Concei"), std::string::npos);
}

TEST_F(BrowseExport, ReplacesAFileOnlyWhenToldSo) {
    write_file("kept.csv", "kept");
    const auto shown = browse({"customers"}, 200, 50);
    shown->expect("row 1 of 10");
    shown->press({"e"});
    shown->type(file("kept.csv"));
    shown->press({"Enter"});
    shown->expect("Replace ");
    shown->press({"n", "Enter"});
    shown->expect("F1 keys");
    EXPECT_EQ(read_file(file("kept.csv")), "kept");
    shown->press({"e"});
    shown->type(file("kept.txt"));
    shown->press({"Enter"});
    shown->expect("the name of the file ends in .csv or .dbf");
    expect_exported(*shown, file("no/such/folder.csv"), "error: ");
}

TEST_F(BrowseExport, WritesTheRowsOfAQuery) {
    const auto shown = browse({"--query", "select code from customers where code < 3"}, 200, 50);
    shown->expect("row 1 ");
    expect_exported(*shown, file("two.csv"), " -> ");
    EXPECT_EQ(read_file(file("two.csv")), "CODE\r\n1\r\n2\r\n");
}

}  // namespace
}  // namespace zmfb::test
