// What is on the screen, as text.
#include "tests/tool/browse/browser.h"

namespace zmfb::test {
namespace {

class BrowseScreens : public Browser {};

TEST_F(BrowseScreens, ShowATableInTheLeastSize) {
    const auto shown = browse({"customers"}, 60, 15);
    EXPECT_EQ(shown->instead_of(R"( CUSTOMERS
  CODE║NAME                    │CITY            │    CREDIT│
     1║Ana Conceição           │São Paulo       │   1250.50│
     2║Jürgen Weiß             │Köln            │    -80.25│
     3║Siobhán O'Neill         │Cork            │      0.00│
     4║Renée Dubois            │Orléans         │  99999.99│
     5║Björn Ångström          │Luleå           │    310.00│
     6║María Núñez             │Cádiz           │     42.10│
     7║Tom "Tex" Miller        │Austin          │      7.00│
     8║João Araújo             │Belém           │      0.00│
     9║Zoë Müller              │Bern            │  15000.00│
    10║Søren Kjær              │Århus           │      1.05│

 record 1   row 1 of 10   CODE INTEGER
 F1 keys   o order   / seek   f filter   g go to   q ends
)"),
              "");
    shown->press({"End", "Down"});
    EXPECT_EQ(shown->instead_of(R"( CUSTOMERS
  CODE║CITY            │    CREDIT│SINCE     │ACTIVE│
     1║São Paulo       │   1250.50│2001-03-15│T     │
     2║Köln            │    -80.25│1999-07-02│T     │
     3║Cork            │      0.00│2005-01-11│F     │
     4║Orléans         │  99999.99│1988-02-29│T     │
     5║Luleå           │    310.00│NULL      │T     │
     6║Cádiz           │     42.10│2003-12-24│F     │
     7║Austin          │      7.00│2006-10-31│T     │
     8║Belém           │      0.00│2002-09-30│T     │
     9║Bern            │  15000.00│1997-05-06│F     │
    10║Århus           │      1.05│2007-03-01│T     │

 record 2   row 2 of 10   ACTIVE CHAR(1)
 F1 keys   o order   / seek   f filter   g go to   q ends
)"),
              "");
    shown->press({"q"});
    shown->expect(Tmux::ended(0));
}

TEST_F(BrowseScreens, ShowATableInTheUsualSize) {
    const auto shown = browse({"customers"}, 80, 24);
    EXPECT_EQ(shown->instead_of(R"( CUSTOMERS
  CODE║NAME                    │CITY            │    CREDIT│SINCE     │ACTIVE│
     1║Ana Conceição           │São Paulo       │   1250.50│2001-03-15│T     │
     2║Jürgen Weiß             │Köln            │    -80.25│1999-07-02│T     │
     3║Siobhán O'Neill         │Cork            │      0.00│2005-01-11│F     │
     4║Renée Dubois            │Orléans         │  99999.99│1988-02-29│T     │
     5║Björn Ångström          │Luleå           │    310.00│NULL      │T     │
     6║María Núñez             │Cádiz           │     42.10│2003-12-24│F     │
     7║Tom "Tex" Miller        │Austin          │      7.00│2006-10-31│T     │
     8║João Araújo             │Belém           │      0.00│2002-09-30│T     │
     9║Zoë Müller              │Bern            │  15000.00│1997-05-06│F     │
    10║Søren Kjær              │Århus           │      1.05│2007-03-01│T     │










 record 1   row 1 of 10   CODE INTEGER
 F1 keys   o order   / seek   f filter   g go to   q ends
)"),
              "");
}

// Wide characters take two places, accents none; what would steer the terminal is written out.
TEST_F(BrowseScreens, ShowWhatIsHardToShowOnALargeScreen) {
    make_odd_table();
    const auto shown = browse({"odd"}, 200, 50);
    EXPECT_EQ(
        shown->instead_of(
            R"( ODD   read-only
         ID║T                                       │MEMO                │BIN                 │D         │TS                      │                 R│                    N│F    │
          1║日本語のテキストab                      │first line\nsecond …│<blob 2 bytes>      │2020-01-02│2020-01-02 03:04:05.6780│          1.5e+300│  12345678901234.5678│true │
          2║\x1b[31mred\ttab                        │                    │<blob 0 bytes>      │0001-01-01│9999-12-31              │              -0.1│              -0.5000│false│
          3║�e)"
            "\xCC\x81\xCC\x81\xCC\x81"
            R"(x                                     │NULL                │NULL                │NULL      │NULL                    │              NULL│                 NULL│NULL │
          4║NULL                                    │NULL                │NULL                │NULL      │NULL                    │              NULL│                 NULL│NULL │
)" + std::string(42, '\n') +
            R"( row 1 of 4   ID INTEGER
 F1 keys   f filter   g go to   v value   q ends
)"),
        "");
}

TEST_F(BrowseScreens, FollowTheSizeOfTheTerminal) {
    const auto shown = browse({"customers"}, 80, 24);
    shown->expect("of 10");
    const std::string before = shown->screen();
    shown->resize(59, 15);
    EXPECT_EQ(shown->instead_of("59 x 15 is too small:\nmake it 60 x 15" + std::string(14, '\n')), "");
    shown->resize(60, 14);
    shown->expect("60 x 14 is too small:");
    shown->resize(80, 24);
    EXPECT_EQ(shown->instead_of(before), "");
    shown->press({"C-End"});
    shown->expect("record 10");
    shown->resize(60, 15);
    shown->expect("record 10");
    shown->press({"f"});
    shown->type("code > 1");
    shown->expect("Only rows where: code > 1");
    shown->resize(200, 50);
    shown->expect("│ACTIVE│");
    shown->resize(10, 3);
    shown->expect("10 x 3 is");
    shown->resize(80, 24);
    shown->expect("Only rows where: code > 1");
    shown->press({"Enter"});
    shown->expect("row 1 of 9");
}

TEST_F(BrowseScreens, ListTheKeysPageByPage) {
    for (const char* key : {"F1", "?"}) {
        const auto shown = browse({"customers"}, 60, 15);
        shown->expect("of 10");
        shown->press({key});
        const std::string list = shown->expect("lines 1 to");
        EXPECT_NE(list.find("PgUp PgDn"), std::string::npos) << list;
        shown->press({"End"});
        EXPECT_NE(shown->expect("q F10").find("ends"), std::string::npos);
        shown->press({"Escape"});
        shown->expect("row 1 of 10");
        shown->press({"F10"});
        shown->expect(Tmux::ended(0));
    }
}

TEST_F(BrowseScreens, ShowALongTextInAWindowAndAllOfIt) {
    make_odd_table();
    execute("update odd set memo = lpad('', 30000, 'word ') || lpad('', 30000, 'x') || ' end' where id = 4");
    const auto shown = browse({"odd"});
    shown->expect("of 4");
    shown->press({"End", "Home", "Right", "Right", "v"});
    const std::string memo = shown->expect(" MEMO BLOB SUB_TYPE TEXT");
    EXPECT_NE(memo.find("\nfirst line\nsecond line\n"), std::string::npos) << memo;
    shown->press({"Escape"});
    shown->expect("row 1 of 4");
    shown->press({"C-End", "Enter"});
    shown->expect("word word word word word word word word word word word word word word word word\n");
    shown->press({"End"});
    shown->expect("\nend\n");
}

TEST_F(BrowseScreens, HaveColoursWhereTheyAreAllowed) {
    const auto colours_of = [this](const std::string& setting) {
        const Tmux shown({"env", setting, ZMFB_TOOL, "--db", database(), "browse", "customers"}, 80, 24);
        shown.expect("of 10");
        return shown.screen({"-e"}).find("\x1b[44m") != std::string::npos ||
               shown.screen({"-e"}).find(";44m") != std::string::npos;
    };
    EXPECT_TRUE(colours_of("ANY=1"));
    EXPECT_FALSE(colours_of("NO_COLOR=1"));
    EXPECT_FALSE(colours_of("TERM=vt100"));
}

}  // namespace
}  // namespace zmfb::test
