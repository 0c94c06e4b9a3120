// What "zmfb matrix check" and "apply" say besides the log: what goes along, what the engine will refuse, and
// which values will not be what they were. What they say is held against what applying does.
#include <nlohmann/json.hpp>

#include "tests/tool/tool.h"

namespace zmfb::test {
namespace {

constexpr const char* name_line = "001::NAME::C::10::0";

// A table, what is made on it, one line of its matrix as it is changed, and what is said of that.
struct Case {
    std::string table;
    std::vector<std::string> before;
    std::string left;
    std::string right;
    std::vector<std::string> notes = {};
    std::vector<std::string> hindrances = {};
};

const std::vector<Case>& cases() {
    static const std::vector<Case> all{
        {"LONGER", {}, name_line, "001::FULLNAME::C::20::0"},
        {"INDEXED",
         {"create index by_name on indexed (name, price)", "create index by_since on indexed (since)"},
         name_line,
         "001::NAME::C::20::0",
         {"INDEXED.NAME: goes along and is not made again: index BY_NAME"}},
        {"TRIGGERED",
         {"create trigger reads for longer before update as declare n char(10); begin select first 1 name "
          "from "
          "triggered into n; end"},
         name_line,
         "DROP FIELD",
         {"TRIGGERED.NAME: goes along and is not made again: trigger READS"}},
        {"VIEWED",
         {"create view names as select name from viewed"},
         name_line,
         "001::NAME::C::20::0",
         {},
         {"VIEWED.NAME: in use by view NAMES"}},
        {"CHECKED",
         {"alter table checked add constraint is_named check (name <> '')"},
         name_line,
         "DROP FIELD",
         {},
         {"CHECKED.NAME: in use by constraint IS_NAMED"}},
        {"UNIQUELY",
         {"alter table uniquely add constraint one_each unique (name)"},
         name_line,
         "001::NAME::C::20::0",
         {},
         {"UNIQUELY.NAME: in use by constraint ONE_EACH"}},
        {"COMPUTED",
         {"alter table computed add loud computed by (upper(name))",
          "create index by_upper on computed computed by "
          "(upper(name))"},
         name_line,
         "001::NAME::C::20::0",
         {},
         {"COMPUTED.NAME: in use by computed field LOUD, index on an expression BY_UPPER"}},
        {"ROUTINED",
         {"create procedure first_name returns (n char(10)) as begin select first 1 name from routined into "
          "n; end",
          "create function how_many returns integer as begin return (select count(name) from routined); end"},
         name_line,
         "DROP FIELD",
         {},
         {"ROUTINED.NAME: in use by procedure FIRST_NAME, function HOW_MANY"}},
        {"DROPPED",
         {"create view alone as select name from dropped"},
         "DROP TABLE",
         "",
         {"DROPPED: goes along and is not made again: view ALONE"}},
        {"PAIRED",
         {"create view twin as select a.name as x, b.name as y from paired a, paired b"},
         "DROP TABLE",
         "",
         {},
         {"PAIRED: in use by view that names it twice TWIN"}},
        {"ODDLY",
         {"create view innocent as select 1 as n from rdb$database",
          "create view \"innocent\" as select name from oddly"},
         "DROP TABLE",
         "",
         {},
         {"ODDLY: in use by view \"innocent\""}},
        {"ODDER",
         {"create index \"by\" on odder (name)"},
         name_line,
         "001::NAME::C::20::0",
         {},
         {"ODDER.NAME: in use by index \"by\""}},
        {"STACKED",
         {"create view lower_one as select name from stacked",
          "create view upper_one as select name from lower_one",
          "create procedure of_table returns (n integer) as begin select count(*) from stacked into n; end"},
         "DROP TABLE",
         "",
         {"STACKED: goes along and is not made again: view LOWER_ONE"},
         {"STACKED: in use by view UPPER_ONE, procedure OF_TABLE"}},
        {"REFERRED",
         {"alter table referred add constraint referred_name unique (name)",
          "create table refers (name char(10) references referred (name))"},
         "DROP TABLE",
         "",
         {},
         {"REFERRED: in use by table REFERS"}},
        {"NARROWER",
         {},
         name_line,
         "001::NAME::C::6::0",
         {},
         {"NARROWER.NAME: 1 value does not fit C(6), in record 2"}},
        {"MANY",
         {"insert into many (name) select 'Anabela' from rdb$relations rows 6"},
         name_line,
         "001::NAME::C::6::0",
         {},
         {"MANY.NAME: 7 values do not fit C(6), in the records 2, 3, 4, 5, 6 and 2 more"}},
        {"ROUNDED",
         {},
         "002::PRICE::N::8::2",
         "002::PRICE::N::8::0",
         {"ROUNDED.PRICE: 2 values are rounded to N(8,0), in the records 1, 2"}},
        {"SMALLER",
         {"update smaller set price = 40000 where recno = 2"},
         "002::PRICE::N::8::2",
         "002::PRICE::N::4::2",
         {},
         {"SMALLER.PRICE: 1 value does not fit N(4,2), in record 2"}},
        {"TOO_WIDE",
         {},
         "002::PRICE::N::8::2",
         "002::PRICE::N::20::2",
         {},
         {"TOO_WIDE.PRICE: cannot become N(20,2): a number has at most 18 digits"}},
        {"TYPELESS",
         {},
         name_line,
         "001::NAME::CN::10::0",
         {},
         {"TYPELESS.NAME: cannot become CN: there is no such type"}},
        {"NUMBERS",
         {},
         name_line,
         "001::NAME::N::10::0",
         {},
         {"NUMBERS.NAME: 2 values do not fit N(10,0), in the records 1, 2"}},
        {"DATES",
         {},
         name_line,
         "001::NAME::D::8::0",
         {},
         {"DATES.NAME: 2 values do not fit D, in the records 1, 2"}},
        {"LOGICALS",
         {},
         name_line,
         "001::NAME::L::1::0",
         {},
         {"LOGICALS.NAME: 2 values do not fit L, in the records 1, 2"}},
        {"UNDATED",
         {},
         "003::SINCE::D::8::0",
         "003::SINCE::C::24::0",
         {},
         {"UNDATED.SINCE: 1 value does not fit C(24), in record 1"}},
    };
    return all;
}

std::vector<std::string> gathered(std::vector<std::string> Case::*what) {
    std::vector<std::string> all;
    for (const Case& one : cases()) all.insert(all.end(), (one.*what).begin(), (one.*what).end());
    return all;
}

class MatrixConsequences : public Tool {
  protected:
    MatrixConsequences() : path(database()) {
        std::string script;
        std::string matrix;
        for (const Case& one : cases()) {
            script +=
                "createtable('" + one.table + "', {{'NAME','C',10,0},{'PRICE','N',8,2},{'SINCE','D',8,0}})\n";
            script += "insert into " + one.table + " (name, price, since) values ('Ana', 1.25, null);\n";
            script +=
                "insert into " + one.table + " (name, price, since) values ('Anabela', 2.5, '2007-03-01');\n";
            matrix += "- - - - - Created by ZMRDDFIRE - - - - -\r\n";
            if (one.right.empty()) {
                matrix += " " + one.table + ">>" + one.left + " =>\r\n";
                continue;
            }
            for (const std::string field : {name_line, "002::PRICE::N::8::2", "003::SINCE::D::8::0"}) {
                matrix += " " + one.table + ">>" + field + " => " + (field == one.left ? one.right : field) +
                          "\r\n";
            }
        }
        for (const Case& one : cases()) {
            for (const std::string& statement : one.before) script += statement + ";\n";
        }
        const Finished made = on(path, {"shell"}, script);
        EXPECT_EQ(made.status, 0) << made.err;
        file_name = write_file("m.tf", matrix);
    }
    std::string path;
    std::string file_name;
};

TEST_F(MatrixConsequences, CheckNamesWhatGoesAlongAndWhatTheEngineWillRefuse) {
    const Finished run = on(path, {"matrix", "check", file_name});
    EXPECT_EQ(run.status, 1);
    std::vector<std::string> notes;
    for (const std::string& line : lines(run.out)) {
        if (!line.starts_with("[") && !line.starts_with("- ")) notes.push_back(line);
    }
    EXPECT_EQ(notes, gathered(&Case::notes));
    std::string expected =
        "error: " + std::to_string(gathered(&Case::hindrances).size()) + " changes cannot be made\n";
    for (const std::string& hindrance : gathered(&Case::hindrances)) expected += "  " + hindrance + "\n";
    EXPECT_EQ(
        run.err,
        expected + "hint: drop what is in the way, mend the values, or take the change out of the matrix\n");
}

TEST_F(MatrixConsequences, ApplyingDoesWhatWasSaid) {
    const std::string log = on(path, {"call", "applymatrix('" + file_name + "', .F.)"}).out;
    for (const Case& one : cases()) {
        const std::size_t from = log.find("[ " + one.table + " ]");
        ASSERT_NE(from, std::string::npos) << log;
        const std::string of_table = log.substr(from, log.find("- - -", from) - from);
        EXPECT_EQ(of_table.find("[ERROR]") != std::string::npos, !one.hindrances.empty()) << of_table;
    }
    EXPECT_EQ(
        on(path, {"query", "--mode", "csv",
                  "select trim(rdb$index_name) n from rdb$indices where rdb$index_name starting 'BY_' union "
                  "select trim(rdb$trigger_name) from rdb$triggers where rdb$trigger_name = 'READS' union "
                  "select trim(rdb$relation_name) from rdb$relations where rdb$view_blr is not null "
                  "and rdb$system_flag = 0 order by 1"})
            .out,
        "N\r\nBY_SINCE\r\nBY_UPPER\r\nINNOCENT\r\nLOWER_ONE\r\nNAMES\r\nUPPER_ONE\r\ninnocent\r\n");
    EXPECT_EQ(on(path, {"query", "--mode", "csv", "select price from rounded"}).out, "PRICE\r\n1\r\n3\r\n");
}

TEST_F(MatrixConsequences, WhatGoesWithAnEarlierChangeIsNotInTheWayOfALaterOne) {
    exec(path, "create view pairs as select l.name from longer l join narrower n on n.name = l.name");
    exec(path, "alter table longer add twice computed by (price * 2)");
    const std::string matrix = write_file("both.tf",
                                          " NARROWER>>DROP TABLE =>\n"
                                          "Created by ZMRDDFIRE\n"
                                          " LONGER>>001::TWICE::N::18::2 => DROP FIELD\n"
                                          " LONGER>>002::NAME::C::10::0 => 001::NAME::C::20::0\n"
                                          " LONGER>>003::PRICE::N::8::2 => 002::PRICE::N::10::2\n"
                                          " LONGER>>004::SINCE::D::8::0 => 003::SINCE::D::8::0\n");
    const Finished run = on(path, {"matrix", "apply", "--yes", matrix});
    EXPECT_EQ(run.status, 0) << run.out << run.err;
    EXPECT_TRUE(run.out.starts_with("NARROWER: goes along and is not made again: view PAIRS\n- - "))
        << run.out;
}

TEST_F(MatrixConsequences, ApplyChangesNothingWhenSomethingWillBeRefused) {
    const std::string before = on(path, {"matrix", "extract"}).out;
    for (const std::vector<std::string>& words :
         std::vector<std::vector<std::string>>{{"matrix", "apply", "--yes", file_name},
                                               {"matrix", "apply", file_name},
                                               {"--json", "matrix", "apply", "--yes", file_name}}) {
        const Finished run = on(path, words, "y\n");
        EXPECT_EQ(run.status, 1);
        const bool is_json = words[0] == "--json";
        EXPECT_TRUE(run.err.starts_with(is_json ? "{\"error\":\"nothing was changed: "
                                                : "error: nothing was changed: "))
            << run.err;
        EXPECT_NE(run.err.find(is_json ? "VIEWED.NAME: in use by view NAMES"
                                       : "\n  VIEWED.NAME: in use by view NAMES\n"),
                  std::string::npos)
            << run.err;
    }
    const auto without_dates = [](std::string text) {
        for (std::size_t at = text.find("   Data: "); at != std::string::npos;
             at = text.find("   Data: ", at))
            text.erase(at, 26);
        return text;
    };
    EXPECT_EQ(without_dates(on(path, {"matrix", "extract"}).out), without_dates(before));
}

TEST_F(MatrixConsequences, JsonHasThemTakenApart) {
    const auto json = nlohmann::json::parse(on(path, {"--json", "matrix", "check", file_name}).out);
    EXPECT_EQ(json["ok"], false);
    const auto of_table = [&](const std::string& table) {
        for (const auto& one : json["consequences"]) {
            if (one["table"] == table) return one;
        }
        return nlohmann::json();
    };
    EXPECT_EQ(of_table("MANY"), nlohmann::json::parse(R"json({
        "table": "MANY", "field": "NAME", "wanted": "C(6)", "goes_along": [], "in_the_way": [], "refused": "",
        "do_not_fit": {"count": 7, "records": [2, 3, 4, 5, 6]}, "rounded": {"count": 0, "records": []}
    })json"));
    EXPECT_EQ(of_table("STACKED")["goes_along"],
              nlohmann::json::parse(R"([{"kind": "view", "name": "LOWER_ONE"}])"));
    EXPECT_EQ(of_table("STACKED")["in_the_way"],
              nlohmann::json::parse(
                  R"([{"kind": "view", "name": "UPPER_ONE"}, {"kind": "procedure", "name": "OF_TABLE"}])"));
    EXPECT_EQ(of_table("LONGER"), nlohmann::json());
}

}  // namespace
}  // namespace zmfb::test
