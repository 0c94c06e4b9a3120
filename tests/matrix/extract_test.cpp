#include <gtest/gtest.h>

#include <filesystem>
#include <regex>

#include "host/date.h"
#include "host/error.h"
#include "host/latin1.h"
#include "tests/matrix/matrix_test.h"

namespace zmfb::test {
namespace {

using host::operator""_l1;
using Lines = std::vector<std::string>;
using ExtractMatrix = MatrixTest;

const Lines banner = {"  :   :  .::::. .:::::. .:     .: ::::::", " ::: ::.     ::   ::    ::.::: ::    .:'",
                      ":: ::::: .:::::   ::    :::    ::   .:' ", "::  : :: ::  ::.  ::    ::     ::  .:'  ",
                      ":     `: '::::::. `:.   :      :  ::::::"};
constexpr std::string_view opener = "- - - - - Created by ZMRDDFIRE - - - - -";

Lines block_of(FakeDatabase& db, std::string_view table) {
    return lines(db.call("extracmatrixoftable", table));
}

TEST_F(ExtractMatrix, BlockHasSixHeaderLinesAndALineForEachField) {
    db.add("CLIENTES",
           {{"CODIGO", "N", 6}, {"NOME", "C", 40}, {"PRECO", "N", 12, 2}, {"NASC", "D", 8}, {"OK", "L", 1}});
    var(db.self(), Var::sdbname) = "/dados/loja.fdb";
    const Lines block = block_of(db, "clientes");
    ASSERT_EQ(block.size(), 11U);
    EXPECT_EQ(block[0], opener);
    EXPECT_EQ(block[1], "-                 v2.0                 -");
    EXPECT_TRUE(std::regex_match(block[2], std::regex(R"(   Data: \d\d/\d\d/\d\d \d\d:\d\d:\d\d)")))
        << block[2];
    EXPECT_EQ(block[3], "     DB: /dados/loja.fdb");
    EXPECT_EQ(block[4], " Tabela: CLIENTES");
    EXPECT_EQ(block[5], "                                              !!--- Alterar Aqui ---!!");
    EXPECT_EQ(block[6], " CLIENTES>>001::CODIGO::N::6::0            => 001::CODIGO::N::6::0");
    EXPECT_EQ(block[7], " CLIENTES>>002::NOME::C::40::0             => 002::NOME::C::40::0");
    EXPECT_EQ(block[8], " CLIENTES>>003::PRECO::N::12::2            => 003::PRECO::N::12::2");
    EXPECT_EQ(block[9], " CLIENTES>>004::NASC::D::8::0              => 004::NASC::D::8::0");
    EXPECT_EQ(block[10], " CLIENTES>>005::OK::L::1::0                => 005::OK::L::1::0");
    for (std::size_t i = 6; i < block.size(); ++i) EXPECT_EQ(block[i].find("=>"), 43U);
    EXPECT_EQ(block[0].size(), 40U);
    EXPECT_EQ(block[1].size(), 40U);
    EXPECT_EQ(block[5].find("!!"), 46U);
}

TEST_F(ExtractMatrix, DateLineFollowsTheDateFormat) {
    db.add("T", {});
    host::set_date_format("yyyy-mm-dd");
    const std::string line = block_of(db, "T")[2];
    host::set_date_format("mm/dd/yy");
    EXPECT_TRUE(std::regex_match(line, std::regex(R"(   Data: \d{4}-\d\d-\d\d \d\d:\d\d:\d\d)"))) << line;
}

TEST_F(ExtractMatrix, BlockLeavesOutTheDriversFieldsAndKeepsLimboFields) {
    db.add("T", {{"A", "C", 1}, {"RDDIDX_1", "C", 5}, {"IDX_A", "C", 5}, {"RDDLMB_B", "N", 5, 1}});
    const Lines block = block_of(db, "T");
    ASSERT_EQ(block.size(), 8U);
    EXPECT_EQ(block[6], " T>>001::A::C::1::0                        => 001::A::C::1::0");
    EXPECT_EQ(block[7], " T>>002::RDDLMB_B::N::5::1                 => 002::RDDLMB_B::N::5::1");
}

TEST_F(ExtractMatrix, TableWithoutFieldsGivesTheHeaderAlone) {
    db.add("T", {});
    EXPECT_EQ(block_of(db, "T").size(), 6U);
}

TEST_F(ExtractMatrix, LineOfALongNameHasNoBlanksAheadOfTheArrow) {
    // 40 together: the last that lines up.
    db.add("TABLE_OF_FIFTEEN", {{"FIELD_WITH_13", "C", 10}});
    EXPECT_EQ(block_of(db, "TABLE_OF_FIFTEEN")[6],
              " TABLE_OF_FIFTEEN>>001::FIELD_WITH_13::C::10::0=> 001::FIELD_WITH_13::C::10::0");
    db.add("TABLE_WITH_A_NAME_OF_31_LETTERS", {{"FIELD_WITH_A_NAME_OF_31_LETTERS", "C", 10}});
    EXPECT_EQ(block_of(db, "TABLE_WITH_A_NAME_OF_31_LETTERS")[6],
              " TABLE_WITH_A_NAME_OF_31_LETTERS>>001::FIELD_WITH_A_NAME_OF_31_LETTERS::C::10::0=>"
              " 001::FIELD_WITH_A_NAME_OF_31_LETTERS::C::10::0");
}

TEST_F(ExtractMatrix, SystemTablesGiveAnEmptyBlockWhateverTheCase) {
    for (const std::string_view name :
         {"RDDSYS_OPN", "rddsys_opn", "RDDSYS_FLK", "Rddsys_Flk", "RDDSYS_RLK"}) {
        db.add("RDDSYS_OPN", {{"OPN_TABLE", "C", 31}});
        EXPECT_EQ(block_of(db, name), Lines{}) << name;
    }
    EXPECT_EQ(block_of(db, "RDDSYS_OPNX"), Lines{" >> Does not exists!"});
}

TEST_F(ExtractMatrix, AbsentTableGivesOneLineAndAForeignOneNone) {
    db.add_foreign("ALIEN", {{"A", "C", 1}});
    EXPECT_EQ(block_of(db, "NOTHERE"), Lines{" >> Does not exists!"});
    EXPECT_EQ(block_of(db, ""), Lines{" >> Does not exists!"});
    EXPECT_EQ(block_of(db, "alien"), Lines{});
}

TEST_F(ExtractMatrix, MatrixIsTheBannerAndAGroupForEachTable) {
    db.add("A", {{"X", "C", 1}});
    db.add("B", {{"Y", "C", 1}});
    db.add_foreign("ALIEN", {{"Z", "C", 1}});
    const Value matrix = db.call("extractmatrix", texts({"b", "nothere", "Alien", "a"}));
    ASSERT_EQ(matrix.size(), 5U);
    EXPECT_EQ(group_lines(matrix, 1), banner);
    EXPECT_EQ(group_lines(matrix, 2)[6], " B>>001::Y::C::1::0                        => 001::Y::C::1::0");
    EXPECT_EQ(group_lines(matrix, 3), Lines{" >> Does not exists!"});
    EXPECT_EQ(group_lines(matrix, 4), Lines{});
    EXPECT_EQ(group_lines(matrix, 5)[4], " Tabela: A");
}

TEST_F(ExtractMatrix, NoTablesGivenMeansAllTables) {
    db.add("B", {{"Y", "C", 1}});
    db.add("A", {{"X", "C", 1}});
    for (const Value& none : {Value(), structure({}), Value(""), Value("  "), Value(0)}) {
        const Value matrix = db.call("extractmatrix", none);
        ASSERT_EQ(matrix.size(), 3U);
        EXPECT_EQ(group_lines(matrix, 2)[4], " Tabela: A");
        EXPECT_EQ(group_lines(matrix, 3)[4], " Tabela: B");
    }
}

TEST_F(ExtractMatrix, TablesThatAreNoArrayRaiseAndGiveTheBannerAlone) {
    const Value matrix = db.call("extractmatrix", "CLIENTES", file("out"));
    ASSERT_EQ(matrix.size(), 1U);
    EXPECT_EQ(group_lines(matrix, 1), banner);
    EXPECT_EQ(raised(),
              Lines{"[FBCONN Error];Não foi possível extrair a matriz.; Coloque os nomes das tabelas em um "
                    "array unidimensional"_l1.data()});
    EXPECT_FALSE(std::filesystem::exists(file("out.tf")));
}

TEST_F(ExtractMatrix, FileHoldsEveryLineWithCarriageReturnAndLineFeed) {
    db.add("A", {{"X", "C", 1}});
    const std::size_t before = open_descriptors();
    const Value matrix = db.call("extractmatrix", texts({"A", "NOTHERE", "RDDSYS_OPN"}), file("out"));
    EXPECT_EQ(open_descriptors(), before);
    std::string expected;
    for (const std::string& line : banner) expected += line + "\r\n";
    for (const std::string& line : group_lines(matrix, 2)) expected += line + "\r\n";
    expected += " >> Does not exists!\r\n";
    EXPECT_EQ(group_lines(matrix, 2).size(), 7U);
    EXPECT_EQ(read_file(file("out.tf")), expected);
}

TEST_F(ExtractMatrix, FileOfABannerAlone) {
    db.call("extractmatrix", Value(), file("out"));
    EXPECT_EQ(read_file(file("out.tf")),
              "  :   :  .::::. .:::::. .:     .: ::::::\r\n ::: ::.     ::   ::    ::.::: ::    .:'\r\n"
              ":: ::::: .:::::   ::    :::    ::   .:' \r\n::  : :: ::  ::.  ::    ::     ::  .:'  \r\n"
              ":     `: '::::::. `:.   :      :  ::::::\r\n");
}

TEST_F(ExtractMatrix, AccentedNamesStayOneByteForEachLetter) {
    var(db.self(), Var::sdbname) = "/dados/produção.fdb"_l1;
    db.add("A", {{"X", "C", 1}});
    db.call("extractmatrix", Value(), file("out"));
    EXPECT_NE(read_file(file("out.tf")).find("\r\n     DB: /dados/produ\xE7\xE3o.fdb\r\n"),
              std::string::npos);
}

TEST_F(ExtractMatrix, ExtensionIsAlwaysAppended) {
    db.call("extractmatrix", Value(), file("x.tf"));
    EXPECT_TRUE(std::filesystem::exists(file("x.tf.tf")));
    EXPECT_FALSE(std::filesystem::exists(file("x.tf")));
}

TEST_F(ExtractMatrix, OldFileIsReplaced) {
    write_file("out.tf", std::string(100000, 'x'));
    db.call("extractmatrix", Value(), file("out"));
    EXPECT_EQ(read_file(file("out.tf")).size(), 5U * 42);
}

TEST_F(ExtractMatrix, FileThatCannotBeMadeIsPassedOverInSilence) {
    db.add("A", {{"X", "C", 1}});
    const Value matrix = db.call("extractmatrix", Value(), file("missing/out"));
    EXPECT_EQ(matrix.size(), 2U);
    EXPECT_EQ(raised(), Lines{});
}

const std::string write_failed = std::string("[FBCONN Error];Erro na gravação do arquivo matriz"_l1);

TEST_F(ExtractMatrix, WriteThatFailsRaisesOnceAndClosesTheFile) {
    db.add("A", {{"X", "C", 1}});
    std::filesystem::create_symlink("/dev/full", file("full.tf"));
    const std::size_t before = open_descriptors();
    EXPECT_EQ(db.call("extractmatrix", Value(), file("full")).size(), 2U);
    EXPECT_EQ(raised(), Lines{write_failed});
    EXPECT_EQ(open_descriptors(), before);
}

TEST_F(ExtractMatrix, WriteThatFailsClosesTheFileAlsoWhenTheErrorHandlerThrows) {
    std::filesystem::create_symlink("/dev/full", file("full.tf"));
    const std::size_t before = open_descriptors();
    const host::ThrowingErrors thrown;
    EXPECT_THROW(db.call("extractmatrix", Value(), file("full")), host::RaisedError);
    EXPECT_EQ(open_descriptors(), before);
}

TEST_F(ExtractMatrix, TableNamesOfOtherKindsRaiseAndAreNoTables) {
    Value names = texts({"A"});
    names.push(Value());
    names.push(5);
    names.push(structure({}));
    db.add("A", {{"X", "C", 1}});
    const Value matrix = db.call("extractmatrix", names);
    ASSERT_EQ(matrix.size(), 5U);
    EXPECT_EQ(group_lines(matrix, 2).size(), 7U);
    EXPECT_EQ(group_lines(matrix, 3), Lines{" >> Does not exists!"});
    EXPECT_FALSE(raised().empty());
}

}  // namespace
}  // namespace zmfb::test
