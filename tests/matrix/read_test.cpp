#include "matrix/read.h"

#include <gtest/gtest.h>

#include "host/latin1.h"
#include "tests/matrix/matrix_test.h"

namespace zmfb::test {
namespace {

using host::operator""_l1;
using matrix::Group;
using ReadMatrix = MatrixTest;

const Field nome{"NOME", "C", 40, 0};
const Field preco{"PRECO", "N", 10, 2};

Group read(FakeDatabase& db, const std::vector<std::string>& group) {
    return matrix::read_group(db.self(), make_matrix({group})[1]);
}

TEST_F(ReadMatrix, GroupGivesTheTableAndBothStructures) {
    const Group group = read(db, {"- - - - - Created by ZMRDDFIRE - - - - -", " Tabela: X", "",
                                  " CLIENTES>>001::NOME::C::40::0           => 001::NOME::C::50::0",
                                  " CLIENTES>>002::PRECO::N::10::2          => 002::CUSTO::N::10::3"});
    EXPECT_TRUE(group.damage.is_nil());
    EXPECT_EQ(group.table.text(), "CLIENTES");
    EXPECT_FALSE(group.drop_table);
    EXPECT_EQ(field_texts(group.lefts), (std::vector<std::string>{"NOME C 40 0", "PRECO N 10 2"}));
    EXPECT_EQ(field_texts(group.rights), (std::vector<std::string>{"NOME C 50 0", "CUSTO N 10 3"}));
}

TEST_F(ReadMatrix, NamesAreTrimmedAndUpperCasedTypesUpperCasedOnly) {
    const Group group = read(db, {" t>>001:: nome ::c::40::0=>2::Preco\t::nd:: 10x:: 2y"});
    EXPECT_EQ(group.table.text(), "t");
    EXPECT_EQ(field_texts(group.lefts), std::vector<std::string>{"NOME C 40 0"});
    EXPECT_EQ(field_texts(group.rights), std::vector<std::string>{"PRECO\t ND 10 2"});
}

TEST_F(ReadMatrix, LinesWithoutTheArrowAreSkipped) {
    const Group group =
        read(db, {" CLIENTES>>damaged::", "DROP TABLE", ">>", same("CLIENTES", 1, nome), "= >"});
    EXPECT_TRUE(group.damage.is_nil());
    EXPECT_EQ(field_texts(group.rights), std::vector<std::string>{"NOME C 40 0"});
}

TEST_F(ReadMatrix, WhatFollowsASecondArrowOrASecondTableSignIsIgnored) {
    const Group group = read(db, {" T>>001::A::C::1::0>>junk=>001::B::C::2::0=>003::D::X"});
    EXPECT_TRUE(group.damage.is_nil());
    EXPECT_EQ(field_texts(group.lefts), std::vector<std::string>{"A C 1 0"});
    EXPECT_EQ(field_texts(group.rights), std::vector<std::string>{"B C 2 0"});
}

TEST_F(ReadMatrix, ARightSideMayDropTheField) {
    for (const std::string_view right : {"DROP FIELD", "  please DROP FIELD now", "DROP FIELDS"}) {
        const Group group = read(db, {line("T", descriptor(1, nome), right)});
        EXPECT_TRUE(group.damage.is_nil());
        EXPECT_EQ(field_texts(group.rights), std::vector<std::string>{"DROP FIELD  0 0"}) << right;
    }
}

TEST_F(ReadMatrix, DropTableEndsTheReadingOfItsGroup) {
    const Group group = read(db, {same("T", 1, nome), " T>>DROP TABLE=>", " OTHER>>damaged => ::"});
    EXPECT_TRUE(group.damage.is_nil());
    EXPECT_TRUE(group.drop_table);
    EXPECT_EQ(group.table.text(), "T");
    EXPECT_EQ(field_texts(group.lefts), std::vector<std::string>{"NOME C 40 0"});
    EXPECT_TRUE(read(db, {" T>> so DROP TABLE it => 001::X::C::1::0"}).drop_table);
}

struct DamageCase {
    std::string_view name;
    std::vector<std::string> lines;
    std::string_view message;
};

class Damage : public ReadMatrix, public ::testing::WithParamInterface<DamageCase> {};

TEST_P(Damage, IsTold) {
    const Group group = read(db, GetParam().lines);
    ASSERT_TRUE(group.damage.is(host::Kind::character));
    EXPECT_EQ(group.damage.text(), GetParam().message);
    EXPECT_TRUE(raised().empty());
}

INSTANTIATE_TEST_SUITE_P(
    Matrix, Damage,
    ::testing::Values(
        DamageCase{"LeftSideWithoutTableSign",
                   {" T 001::A::C::1::0 => 001::A::C::1::0"},
                   "Os dados para esta tabela parecem corrompidos;Registro:  T 001::A::C::1::0 "},
        DamageCase{"EmptyLeftSide", {"=>"}, "Os dados para esta tabela parecem corrompidos;Registro: "},
        DamageCase{"TableSignOnlyOnTheRight",
                   {"x=>T>>y"},
                   "Os dados para esta tabela parecem corrompidos;Registro: x"},
        DamageCase{"AnotherTable",
                   {same("T", 1, nome), same("U", 2, preco)},
                   "Os dados para esta tabela parecem corrompidos;Tabela: T"},
        DamageCase{"TheSameTableInOtherLetters",
                   {same("T", 1, nome), same("t", 2, preco)},
                   "Os dados para esta tabela parecem corrompidos;Tabela: T"},
        DamageCase{"ALongerTableName",
                   {same("T", 1, nome), same("TT", 2, preco)},
                   "Os dados para esta tabela parecem corrompidos;Tabela: T"},
        DamageCase{"NoTableAfterATable",
                   {same("T", 1, nome), same("", 2, preco)},
                   "Os dados para esta tabela parecem corrompidos;Tabela: T"},
        DamageCase{"NoTable", {same("", 1, nome)}, "Não foi possível determinar a tabela alvo"_l1},
        DamageCase{"BlankTable", {same("  ", 1, nome)}, "Não foi possível determinar a tabela alvo"_l1},
        DamageCase{"NoTableAheadOfABadField", {"  >>x=>y"}, "Não foi possível determinar a tabela alvo"_l1},
        DamageCase{"LeftTextWithoutPieces",
                   {" T>>x => 001::A::C::1::0"},
                   "Os dados para esta tabela parecem corrompidos;Campo: x ;Tabela: T"},
        DamageCase{"EmptyLeftField",
                   {"T>>=>001::A::C::1::0"},
                   "Os dados para esta tabela parecem corrompidos;Campo: ;Tabela: T"},
        DamageCase{"DropFieldOnTheLeft",
                   {"T>>DROP FIELD=>001::A::C::1::0"},
                   "Os dados para esta tabela parecem corrompidos;Campo: DROP FIELD;Tabela: T"},
        DamageCase{"DropTableInSmallLetters",
                   {"T>>drop table=>"},
                   "Os dados para esta tabela parecem corrompidos;Campo: drop table;Tabela: T"},
        DamageCase{"DropTableBesideADescriptor",
                   {"T>>DROP TABLE::x=>"},
                   "Os dados para esta tabela parecem corrompidos;Campo: DROP TABLE::x;Tabela: T"},
        DamageCase{"LeftPosition",
                   {line("T", "000::A::C::1::0", "001::A::C::1::0")},
                   "Os dados para esta tabela parecem corrompidos;Campo: 000::A::C::1::0  ;Tabela: T"},
        DamageCase{"LeftType",
                   {line("T", "001::A::M::1::0", "001::A::C::1::0")},
                   "Os dados para esta tabela parecem corrompidos;Campo: 001::A::M::1::0  ;Tabela: T"},
        DamageCase{"EmptyRightSide",
                   {"T>>001::A::C::1::0=>"},
                   "Os dados para esta tabela parecem corrompidos;Campo: ;Tabela: T"},
        DamageCase{"RightTextWithoutPieces",
                   {line("T", "001::A::C::1::0", "whatever")},
                   "Os dados para esta tabela parecem corrompidos;Campo:  whatever;Tabela: T"},
        DamageCase{"DropTableOnTheRight",
                   {line("T", "001::A::C::1::0", "DROP TABLE")},
                   "Os dados para esta tabela parecem corrompidos;Campo:  DROP TABLE;Tabela: T"},
        DamageCase{"DropFieldInSmallLetters",
                   {line("T", "001::A::C::1::0", "drop field")},
                   "Os dados para esta tabela parecem corrompidos;Campo:  drop field;Tabela: T"},
        DamageCase{"RightName",
                   {line("T", "001::A::C::1::0", "001::  ::C::1::0")},
                   "Os dados para esta tabela parecem corrompidos;Campo:  001::  ::C::1::0;Tabela: T"},
        DamageCase{"RightTypeWithABlank",
                   {line("T", "001::A::C::1::0", "001::A::C ::1::0")},
                   "Os dados para esta tabela parecem corrompidos;Campo:  001::A::C ::1::0;Tabela: T"},
        DamageCase{"RightLength",
                   {line("T", "001::A::C::1::0", "001::A::D::0::0")},
                   "Os dados para esta tabela parecem corrompidos;Campo:  001::A::D::0::0;Tabela: T"},
        DamageCase{"RightPieces",
                   {line("T", "001::A::C::1::0", "001::A::C::1")},
                   "Os dados para esta tabela parecem corrompidos;Campo:  001::A::C::1;Tabela: T"}),
    [](const auto& info) { return std::string(info.param.name); });

TEST_F(ReadMatrix, ThingsThatAreNoGroupsOfLinesAreDamagedRecords) {
    const std::string message = "Os dados para esta tabela parecem corrompidos;Registro: ";
    const auto damage = [&](const Value& element) {
        const Group group = matrix::read_group(db.self(), element);
        return group.damage.is_nil() ? std::string("none") : std::string(group.damage.text());
    };
    using host::array_of;
    EXPECT_EQ(damage({}), message);
    EXPECT_EQ(damage(5), message);
    EXPECT_EQ(damage("T>>x=>y"), message + "T>>x=>y");
    EXPECT_EQ(damage(array_of()), message);
    EXPECT_EQ(damage(array_of("T>>x=>y")), message);
    EXPECT_EQ(damage(array_of(array_of("T>>x=>y"))), message + "T>>x=>y");
    EXPECT_EQ(damage(array_of(array_of(Value()))), message);
    EXPECT_EQ(damage(array_of(array_of(array_of()))), message);
    EXPECT_EQ(damage(array_of(array_of(array_of(7)))), message);
    EXPECT_EQ(damage(array_of(array_of(array_of(array_of("T>>x=>y"))))), message);
    EXPECT_EQ(damage(array_of(array_of())), "none");
    EXPECT_TRUE(raised().empty());
}

std::vector<std::vector<std::string>> read_groups(FakeDatabase& db, const std::string& path) {
    const Value matrix = matrix::matrix_of(db.self(), path);
    std::vector<std::vector<std::string>> groups;
    for (std::size_t k = 1; k <= matrix.size(); ++k) groups.push_back(group_lines(matrix, k));
    return groups;
}

using Groups = std::vector<std::vector<std::string>>;

TEST_F(ReadMatrix, AFileIsSplitAheadOfEachOpeningLine) {
    const std::string opener = "- - - - - Created by ZMRDDFIRE - - - - -";
    write_file("m.tf",
               "banner\r\n" + opener + "\r\na\r\n\r\n" + opener + "\r\nb\r\n >> Does not exists!\r\n");
    EXPECT_EQ(read_groups(db, file("m.tf")),
              (Groups{{"banner"}, {opener, "a", ""}, {opener, "b", " >> Does not exists!"}}));
}

TEST_F(ReadMatrix, AnOpeningLineMayBeTheFirst) {
    write_file("m.tf", "xCreated by ZMRDDFIREx\r\na\r\n");
    EXPECT_EQ(read_groups(db, file("m.tf")), (Groups{{"xCreated by ZMRDDFIREx", "a"}}));
}

TEST_F(ReadMatrix, LinesEndInLineFeedWithOrWithoutCarriageReturn) {
    write_file("m.tf", "a\nb\r\n\nc\rd\r\n\r\ne");
    EXPECT_EQ(read_groups(db, file("m.tf")), (Groups{{"a", "b", "", "c\rd", "", "e"}}));
}

TEST_F(ReadMatrix, TheLastLineNeedsNoEnd) {
    write_file("m.tf", "a\r\nb\r\n");
    EXPECT_EQ(read_groups(db, file("m.tf")), (Groups{{"a", "b"}}));
    write_file("m.tf", "a\r\nb");
    EXPECT_EQ(read_groups(db, file("m.tf")), (Groups{{"a", "b"}}));
}

TEST_F(ReadMatrix, NoFileAndAnEmptyFileAreAnEmptyMatrix) {
    write_file("empty.tf", "");
    for (const std::string& name :
         {file("empty.tf"), file("missing.tf"), folder().string(), std::string(), std::string("  ")}) {
        EXPECT_EQ(read_groups(db, name), Groups{}) << name;
    }
}

TEST_F(ReadMatrix, ALeftOverFileErrorDoesNotKeepAFileFromBeingRead) {
    write_file("m.tf", "a\n");
    read_groups(db, file("missing.tf"));
    EXPECT_EQ(read_groups(db, file("m.tf")), (Groups{{"a"}}));
    EXPECT_EQ(read_groups(db, file("m.tf")), (Groups{{"a"}}));
}

TEST_F(ReadMatrix, TheFileStaysOpen) {
    write_file("m.tf", "a\n");
    const std::size_t before = open_descriptors();
    read_groups(db, file("m.tf"));
    read_groups(db, file("missing.tf"));
    EXPECT_EQ(open_descriptors(), before + 1);
}

TEST_F(ReadMatrix, OtherKindsAreAnEmptyMatrixAndAnArrayIsItself) {
    for (const Value& other : {Value(), Value(5), Value(true), Value(host::Date{2454161})}) {
        EXPECT_EQ(matrix::matrix_of(db.self(), other).size(), 0U);
    }
    const Value array = make_matrix({{"a"}});
    EXPECT_TRUE(matrix::matrix_of(db.self(), array).same(array));
}

}  // namespace
}  // namespace zmfb::test
