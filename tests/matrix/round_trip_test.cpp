#include "tests/matrix/round_trip.h"

#include <gtest/gtest.h>

#include <regex>

namespace zmfb::test {
namespace {

using Lines = std::vector<std::string>;

const Field nome{"NOME", "C", 10};
const Field preco{"PRECO", "N", 10, 2};
const Field nasc{"NASC", "D", 8};
const Field ok{"OK", "L", 1};

class MatrixRoundTrip : public RoundTrip {
  protected:
    MatrixRoundTrip() {
        create("T", {nome, preco, nasc, ok});
        execute("insert into T (NOME, PRECO, NASC, OK) values ('Ana', 12.50, '2007-03-01', 'T')");
        execute("insert into T (NOME, PRECO, NASC, OK) values ('7', -3, NULL, 'F')");
    }

    // A day has the same text from every engine, unlike a time stamp.
    Rows data(const std::string& columns) {
        return rows("select " + std::regex_replace(columns, std::regex("NASC"), "cast(NASC as date)") +
                    " from T order by RECNO");
    }
    // What T holds when nothing was lost.
    void expect_kept(const std::string& columns = "NOME, PRECO, NASC, OK") {
        EXPECT_EQ(data(columns), (Rows{{"Ana", "12.50", "2007-03-01", "T"}, {"7", "-3.00", "NULL", "F"}}));
    }
};

TEST_F(MatrixRoundTrip, UnchangedDoesNothing) {
    EXPECT_EQ(apply_well(extract({"T"})), Lines{log_header("T")});
    expect_kept();
}

TEST_F(MatrixRoundTrip, LineEndsOfOtherEditorsAreTaken) {
    Editor editor = extract({"T"});
    editor.block().drop("OK");
    EXPECT_TRUE(apply(editor, "\n").ok);
    EXPECT_EQ(user_fields("T"), editor.block().wanted());
}

TEST_F(MatrixRoundTrip, CreatesATable) {
    Editor editor = extract({"T"});
    editor.new_block("NOVA")
        .add({"COD", "N", 6})
        .add({"TXT", "C", 300})
        .add({"DIA", "D", 8})
        .add({"SIM", "L", 1});
    const Lines log = apply_well(editor);
    EXPECT_EQ(log.back(), "[OK] Table created!");
    EXPECT_EQ(user_fields("NOVA"), (Lines{"COD N 6 0", "TXT C 300 0", "DIA D 8 0", "SIM L 1 0"}));
    EXPECT_EQ(columns("NOVA"), (Lines{"COD", "TXT", "DIA", "SIM", "RDD_AREAID", "RECNO"}));
    EXPECT_TRUE(call("iszmrddtable", "NOVA").logical());
    expect_kept();
}

TEST_F(MatrixRoundTrip, CreatesATableFromAnotherDatabasesFile) {
    Editor editor = extract({"T"});
    const Lines wanted = editor.block().wanted();
    call("droptable", "T");
    apply_well(editor);
    EXPECT_EQ(user_fields("T"), wanted);
}

TEST_F(MatrixRoundTrip, DropsATable) {
    Editor editor = extract({"T"});
    editor.block().drop_table();
    EXPECT_EQ(apply_well(editor).back(), "[OK] Table dropped");
    EXPECT_FALSE(call("istable", "T").logical());
    EXPECT_EQ(
        rows("select rdb$generator_name from rdb$generators where rdb$generator_name starting with 'G_T_'"),
        Rows{});
    EXPECT_EQ(apply(editor).log.back(), "[WARN] Table already dropped");
}

TEST_F(MatrixRoundTrip, AddsFieldsInTheirPlaces) {
    Editor editor = extract({"T"});
    editor.block()
        .add({"COD", "N", 6})
        .move("COD", 1)
        .add({"OBS", "C", 20})
        .add({"DIA", "D", 8})
        .add({"SIM", "L", 1});
    editor.block().move("OBS", 3);
    apply_well(editor);
    EXPECT_EQ(user_fields("T"), editor.block().wanted());
    EXPECT_EQ(columns("T"),
              (Lines{"COD", "NOME", "OBS", "PRECO", "NASC", "OK", "DIA", "SIM", "RDD_AREAID", "RECNO"}));
    expect_kept();
    EXPECT_EQ(data("COD, OBS, DIA, SIM"), (Rows{{"0", "", "NULL", "F"}, {"0", "", "NULL", "F"}}));
}

TEST_F(MatrixRoundTrip, DropsFields) {
    Editor editor = extract({"T"});
    editor.block().drop("NOME").drop("NASC");
    EXPECT_EQ(apply_well(editor), (Lines{log_header("T"), "[OK] Drop Field: NOME", "[OK] Drop Field: NASC"}));
    EXPECT_EQ(user_fields("T"), editor.block().wanted());
    EXPECT_EQ(columns("T"), (Lines{"PRECO", "OK", "RDD_AREAID", "RECNO"}));
    EXPECT_EQ(data("PRECO, OK"), (Rows{{"12.50", "T"}, {"-3.00", "F"}}));
    EXPECT_EQ(apply(editor).log[2], "[WARN] Field already dropped: NOME");
}

TEST_F(MatrixRoundTrip, RenamesAField) {
    Editor editor = extract({"T"});
    editor.block().change("PRECO", {"CUSTO", "N", 10, 2});
    apply_well(editor);
    EXPECT_EQ(user_fields("T"), editor.block().wanted());
    expect_kept("NOME, CUSTO, NASC, OK");
}

TEST_F(MatrixRoundTrip, RenamesAndRetypesInOneLine) {
    Editor editor = extract({"T"});
    editor.block().change("PRECO", {"CUSTO", "C", 25});
    apply_well(editor);
    EXPECT_EQ(user_fields("T"), editor.block().wanted());
    expect_kept("NOME, CUSTO, NASC, OK");
}

TEST_F(MatrixRoundTrip, MakesANumberOfAText) {
    execute("update T set NOME = '0012.5' where NOME = 'Ana'");
    Editor editor = extract({"T"});
    editor.block().change("NOME", {"NOME", "N", 12, 3});
    apply_well(editor);
    EXPECT_EQ(user_fields("T"), editor.block().wanted());
    EXPECT_EQ(data("NOME"), (Rows{{"12.500"}, {"7.000"}}));
}

TEST_F(MatrixRoundTrip, ATextThatIsNoNumberKeepsItsFieldAsItWas) {
    Editor editor = extract({"T"});
    editor.block().change("NOME", {"NOME", "N", 12, 3});
    const Applied applied = apply(editor);
    EXPECT_FALSE(applied.ok);
    EXPECT_EQ(applied.log[2], "[ERROR] Alter Field: NOME");
    ASSERT_EQ(raised().size(), 1U);
    EXPECT_TRUE(raised()[0].starts_with("[FBCONN Error];Erro ao popular AuxCampo: RDDAUX_NOME"));
    EXPECT_EQ(columns("T"), (Lines{"NOME", "PRECO", "NASC", "OK", "RDD_AREAID", "RECNO"}));
    expect_kept();
}

TEST_F(MatrixRoundTrip, AnAlteredFieldLosesItsIndexAndKeepsItsData) {
    execute("create index I_T_NOME on T (NOME)");
    Editor editor = extract({"T"});
    editor.block().change("NOME", {"NOME", "C", 11});
    apply_well(editor);
    EXPECT_FALSE(call("isindex", "I_T_NOME").logical());
    expect_kept();
}

TEST_F(MatrixRoundTrip, MakesATextOfANumber) {
    Editor editor = extract({"T"});
    editor.block().change("PRECO", {"PRECO", "C", 15});
    apply_well(editor);
    EXPECT_EQ(user_fields("T"), editor.block().wanted());
    expect_kept();
}

TEST_F(MatrixRoundTrip, WidensTextsAndNumbers) {
    Editor editor = extract({"T"});
    editor.block().change("NOME", {"NOME", "C", 60}).change("PRECO", {"PRECO", "N", 17, 2});
    apply_well(editor);
    EXPECT_EQ(user_fields("T"), editor.block().wanted());
    EXPECT_EQ(columns("T"), (Lines{"NOME", "PRECO", "NASC", "OK", "RDD_AREAID", "RECNO"}));
    expect_kept();
}

TEST_F(MatrixRoundTrip, NarrowsWhatFits) {
    Editor editor = extract({"T"});
    editor.block().change("NOME", {"NOME", "C", 3});
    apply_well(editor);
    EXPECT_EQ(user_fields("T"), editor.block().wanted());
    expect_kept();
}

TEST_F(MatrixRoundTrip, NarrowingThatLosesDataFailsAndKeepsTheField) {
    Editor editor = extract({"T"});
    editor.block().change("NOME", {"NOME", "C", 2}).drop("OK");
    const Applied applied = apply(editor);
    EXPECT_FALSE(applied.ok);
    EXPECT_EQ(applied.log, (Lines{log_header(""), log_header("T"), "[ERROR] Alter Field: NOME",
                                  "[OK] Drop Field: OK", "[OK] Reorder: 001 Field: NOME",
                                  "[OK] Reorder: 002 Field: PRECO", "[OK] Reorder: 003 Field: NASC"}));
    EXPECT_EQ(applied.simulated[2], "[OK] Alter Field: NOME");
    ASSERT_EQ(raised().size(), 1U);
    EXPECT_TRUE(
        raised()[0].starts_with("[FBCONN Error];Erro ao popular AuxCampo: RDDAUX_NOME Tabela: T;FB Error: "));
    EXPECT_EQ(user_fields("T"), (Lines{"NOME C 10 0", "PRECO N 10 2", "NASC D 8 0"}));
    EXPECT_EQ(data("NOME, PRECO"), (Rows{{"Ana", "12.50"}, {"7", "-3.00"}}));
}

TEST_F(MatrixRoundTrip, Reorders) {
    Editor editor = extract({"T"});
    editor.block().move("OK", 1).move("NOME", 4);
    apply_well(editor);
    EXPECT_EQ(user_fields("T"), (Lines{"OK L 1 0", "PRECO N 10 2", "NASC D 8 0", "NOME C 10 0"}));
    EXPECT_EQ(columns("T"), (Lines{"OK", "PRECO", "NASC", "NOME", "RDD_AREAID", "RECNO"}));
    expect_kept();
}

TEST_F(MatrixRoundTrip, AFieldWithoutALineKeepsItsDataAndGetsALimboTwin) {
    Editor editor = extract({"T"});
    editor.block().remove("PRECO");
    const Lines log = apply_well(editor);
    EXPECT_EQ(log[1], "[WARN] Add LimboField: PRECO");
    EXPECT_EQ(user_fields("T"),
              (Lines{"NOME C 10 0", "NASC D 8 0", "OK L 1 0", "RDDLMB_PRECO N 10 2", "PRECO N 10 2"}));
    EXPECT_EQ(columns("T"), (Lines{"NOME", "NASC", "OK", "RDD_AREAID", "RECNO", "RDDLMB_PRECO", "PRECO"}));
    expect_kept();
}

TEST_F(MatrixRoundTrip, AFieldIsTakenBackOutOfLimbo) {
    Editor editor = extract({"T"});
    editor.block().remove("OK");
    apply_well(editor);
    EXPECT_EQ(user_fields("T"),
              (Lines{"NOME C 10 0", "PRECO N 10 2", "NASC D 8 0", "OK L 1 0", "RDDLMB_OK L 1 0"}));
    editor = extract({"T"});
    editor.block().drop("RDDLMB_OK");
    apply_well(editor);
    EXPECT_EQ(user_fields("T"), (Lines{"NOME C 10 0", "PRECO N 10 2", "NASC D 8 0", "OK L 1 0"}));
    expect_kept();
}

TEST_F(MatrixRoundTrip, AppliesSeveralTablesOfOneFile) {
    create("U", {{"COD", "N", 6}, {"TXT", "C", 5}});
    execute("insert into U (COD, TXT) values (5, 'cinco')");
    create("V", {{"A", "C", 1}});
    Editor editor = extract({"T", "U", "V"});
    editor.block("T").move("NASC", 1);
    editor.block("U").change("TXT", {"TEXTO", "C", 50}).add({"NOVO", "L", 1});
    editor.block("V").drop_table();
    editor.new_block("W").add({"X", "C", 1});
    apply_well(editor);
    EXPECT_EQ(user_fields("T"), editor.block("T").wanted());
    EXPECT_EQ(user_fields("U"), editor.block("U").wanted());
    EXPECT_EQ(user_fields("W"), editor.block("W").wanted());
    EXPECT_FALSE(call("istable", "V").logical());
    expect_kept();
    EXPECT_EQ(rows("select COD, TEXTO, NOVO from U"), (Rows{{"5", "cinco", "F"}}));
}

TEST_F(MatrixRoundTrip, DoesAMixtureInOneTable) {
    Editor editor = extract({"T"});
    editor.block()
        .change("PRECO", {"CUSTO", "N", 15, 2})
        .change("NOME", {"NOME", "C", 20})
        .drop("OK")
        .add({"OBS", "C", 5})
        .move("OBS", 1)
        .move("NASC", 2);
    apply_well(editor);
    EXPECT_EQ(user_fields("T"), editor.block().wanted());
    EXPECT_EQ(data("OBS, NASC, NOME, CUSTO"),
              (Rows{{"", "2007-03-01", "Ana", "12.50"}, {"", "NULL", "7", "-3.00"}}));
}

TEST_F(MatrixRoundTrip, ANewRowGetsItsRecordNumberAfterEveryChange) {
    Editor editor = extract({"T"});
    editor.block().change("NOME", {"NOME", "C", 20}).drop("OK").move("NASC", 1);
    apply_well(editor);
    execute("insert into T (NOME) values ('novo')");
    EXPECT_EQ(data("RECNO, NOME").back(), (Row{"3.000000000000000", "novo"}));
    EXPECT_EQ(call("gettablereccount", "T").number(), 3);
}

TEST_F(MatrixRoundTrip, ForeignTablesAreLeftOutAndRefused) {
    execute("create table ALIEN (A char(1))");
    EXPECT_EQ(extract({"ALIEN"}).blocks().size(), 1U);
    Editor editor = extract({"T"});
    editor.new_block("ALIEN").drop_table();
    EXPECT_FALSE(apply(editor).ok);
    EXPECT_EQ(raised().size(), 2U);
    EXPECT_TRUE(call("istable", "ALIEN").logical());
}

TEST_F(MatrixRoundTrip, WithoutADatabaseEveryTableIsNew) {
    zmFBConn nowhere;
    const Value matrix = make_matrix({{same("T", 1, nome)}});
    const Value result = nowhere.call("applymatrix", matrix);
    EXPECT_EQ(lines(result[2]), (Lines{log_header("T"), "[OK] Table created!"}));
}

}  // namespace
}  // namespace zmfb::test
