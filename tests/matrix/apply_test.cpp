#include <gtest/gtest.h>

#include "host/error.h"
#include "host/latin1.h"
#include "tests/matrix/matrix_test.h"

namespace zmfb::test {
namespace {

using host::operator""_l1;
using Lines = std::vector<std::string>;

const std::string dashes = "- - - - - - - - - - - - - - - - - - - - - - - - - ";
std::string header(const std::string& table) { return dashes + "[ " + table + " ]"; }

const Field a{"A", "C", 10, 0};
const Field b{"B", "N", 12, 2};
const Field c{"C", "D", 8, 0};
const Field x{"X", "L", 1, 0};

std::string error(std::string_view text) { return "[FBCONN Error];" + std::string(text); }
const std::string empty_matrix = error("Você deseja que eu processe uma matriz vazia?"_l1);

class ApplyMatrix : public MatrixTest {
  protected:
    ApplyMatrix() { db.add("T", {a, b, c}); }

    struct Result {
        bool ok;
        Lines log;
        bool operator==(const Result&) const = default;
    };

    Result run(std::string_view method, const Value& matrix, const Value& simulate = {}) {
        const Value result = db.call(method, matrix, simulate);
        EXPECT_EQ(result.size(), 2U);
        return {result[1].logical(), lines(result[2])};
    }
    // For real, after a simulation that must have told the same.
    Result apply(const std::vector<std::vector<std::string>>& groups) {
        const Result simulated = run("checkmatrix", make_matrix(groups));
        EXPECT_EQ(db.changes, Lines{});
        Result real = run("applymatrix", make_matrix(groups));
        EXPECT_EQ(real.log, simulated.log);
        EXPECT_EQ(real.ok, simulated.ok);
        return real;
    }
    // One that is to fail where a simulation cannot know it.
    Result apply_failing(const std::vector<std::vector<std::string>>& groups) {
        return run("applymatrix", make_matrix(groups));
    }
};

TEST_F(ApplyMatrix, UnchangedLogsTheHeaderAlone) {
    const Result result = apply({{same("T", 1, a), same("T", 2, b), same("T", 3, c)}});
    EXPECT_TRUE(result.ok);
    EXPECT_EQ(result.log, Lines{header("T")});
    EXPECT_EQ(db.changes, Lines{});
}

TEST_F(ApplyMatrix, AnExtractedFileIsUnchangedAndItsBannerLogsAnEmptyName) {
    db.call("extractmatrix", Value(), file("out"));
    const Result result = run("applymatrix", file("out.tf"));
    EXPECT_TRUE(result.ok);
    EXPECT_EQ(result.log, (Lines{header(""), header("T")}));
    EXPECT_EQ(result.log[0], dashes + "[  ]");
    EXPECT_EQ(db.changes, Lines{});
}

TEST_F(ApplyMatrix, AnExtractedArrayIsUnchanged) {
    const Result result = run("applymatrix", db.call("extractmatrix", Value()));
    EXPECT_TRUE(result.ok);
    EXPECT_EQ(result.log, (Lines{header(""), header("T")}));
    EXPECT_EQ(db.changes, Lines{});
}

TEST_F(ApplyMatrix, ATableWithoutFieldLinesLogsAnEmptyName) {
    db.add("EMPTY", {});
    const Result result =
        run("applymatrix", db.call("extractmatrix", texts({"EMPTY", "NOTHERE", "RDDSYS_OPN"})));
    EXPECT_TRUE(result.ok);
    EXPECT_EQ(result.log, (Lines{header(""), header(""), header(""), header("")}));
}

TEST_F(ApplyMatrix, AddsAFieldAndPutsItInItsPlace) {
    const Result result = apply({{same("T", 1, a), same("T", 2, x), same("T", 3, b), same("T", 4, c)}});
    EXPECT_TRUE(result.ok);
    EXPECT_EQ(result.log, (Lines{header("T"), "[OK] Added Field: X", "[OK] Reorder: 001 Field: A",
                                 "[OK] Reorder: 002 Field: X", "[OK] Reorder: 003 Field: B",
                                 "[OK] Reorder: 004 Field: C"}));
    EXPECT_EQ(db.changes, (Lines{"addfield T X L 1 0", "setfieldposition T A 1", "setfieldposition T X 2",
                                 "setfieldposition T B 3", "setfieldposition T C 4",
                                 "setfieldposition T RDD_AREAID 5", "setfieldposition T RECNO 6"}));
    EXPECT_EQ(db.columns("T"), (Lines{"A", "X", "B", "C", "RDD_AREAID", "RECNO"}));
}

TEST_F(ApplyMatrix, AltersRenamesAndMoves) {
    const Result result = apply({{line("T", descriptor(3, c), descriptor(1, c)),
                                  line("T", descriptor(1, a), descriptor(2, {"NOME", "C", 20})),
                                  line("T", descriptor(2, b), descriptor(3, {"B", "N", 14, 3}))}});
    EXPECT_TRUE(result.ok);
    EXPECT_EQ(result.log,
              (Lines{header("T"), "[OK] Alter Field: A", "[OK] Alter Field: B", "[OK] Reorder: 001 Field: C",
                     "[OK] Reorder: 002 Field: NOME", "[OK] Reorder: 003 Field: B"}));
    EXPECT_EQ(db.changes[0], "alterfield T A C 10 0 -> NOME C 20 0");
    EXPECT_EQ(db.changes[1], "alterfield T B N 12 2 -> B N 14 3");
    EXPECT_EQ(db.user_fields("T"), (Lines{"C D 8 0", "NOME C 20 0", "B N 14 3"}));
    EXPECT_EQ(db.columns("T"), (Lines{"C", "NOME", "B", "RDD_AREAID", "RECNO"}));
}

TEST_F(ApplyMatrix, DropsAFieldAndCountsItsLineInThePositions) {
    const Result result = apply({{same("T", 1, a), line("T", descriptor(2, b), "DROP FIELD"),
                                  line("T", descriptor(3, c), descriptor(3, {"C", "C", 8}))}});
    EXPECT_TRUE(result.ok);
    EXPECT_EQ(result.log, (Lines{header("T"), "[OK] Drop Field: B", "[OK] Alter Field: C",
                                 "[OK] Reorder: 001 Field: A", "[OK] Reorder: 003 Field: C"}));
    EXPECT_EQ(db.changes, (Lines{"dropfield T B N 12 2", "alterfield T C D 8 0 -> C C 8 0",
                                 "setfieldposition T A 1", "setfieldposition T C 3",
                                 "setfieldposition T RDD_AREAID 4", "setfieldposition T RECNO 5"}));
    EXPECT_EQ(db.columns("T"), (Lines{"A", "C", "RDD_AREAID", "RECNO"}));
}

TEST_F(ApplyMatrix, ADropAloneReordersNothing) {
    const Result result =
        apply({{same("T", 1, a), line("T", descriptor(2, b), "DROP FIELD"), same("T", 3, c)}});
    EXPECT_EQ(result.log, (Lines{header("T"), "[OK] Drop Field: B"}));
    EXPECT_EQ(db.changes, Lines{"dropfield T B N 12 2"});
}

TEST_F(ApplyMatrix, ADroppedFieldThatIsGoneIsAWarning) {
    const Result result = apply(
        {{same("T", 1, a), same("T", 2, b), same("T", 3, c), line("T", descriptor(4, x), "DROP FIELD")}});
    EXPECT_TRUE(result.ok);
    EXPECT_EQ(result.log, (Lines{header("T"), "[WARN] Field already dropped: X"}));
    EXPECT_EQ(db.changes, Lines{});
}

TEST_F(ApplyMatrix, FieldsWithoutALineGoIntoLimbo) {
    const Result result = apply({{same("T", 1, a)}});
    EXPECT_TRUE(result.ok);
    EXPECT_EQ(result.log, (Lines{header("T"), "[WARN] Add LimboField: B", "[WARN] Add LimboField: C"}));
    EXPECT_EQ(db.changes, (Lines{"addlimbofield T B N 12 2", "addlimbofield T C D 8 0"}));
    EXPECT_EQ(db.columns("T"), (Lines{"A", "B", "C", "RDD_AREAID", "RECNO", "RDDLMB_B", "RDDLMB_C"}));
}

TEST_F(ApplyMatrix, ALimboFieldWithoutALineStaysAsItIs) {
    db.add("U", {a, {"RDDLMB_B", "N", 12, 2}});
    EXPECT_EQ(apply({{same("U", 1, a)}}).log, Lines{header("U")});
    EXPECT_EQ(db.changes, Lines{});
}

TEST_F(ApplyMatrix, LimboFieldsMoveBehindTheLinesWithTheSystemFields) {
    db.add("U", {a, {"RDDLMB_B", "N", 12, 2}, c});
    const Result result = apply({{same("U", 1, c), same("U", 2, a)}});
    EXPECT_EQ(result.log, (Lines{header("U"), "[OK] Reorder: 001 Field: C", "[OK] Reorder: 002 Field: A"}));
    EXPECT_EQ(db.columns("U"), (Lines{"C", "A", "RDDLMB_B", "RDD_AREAID", "RECNO"}));
}

TEST_F(ApplyMatrix, ATableThatIsNotThereIsCreatedFromTheRightSide) {
    const Result result = apply({{line("new", "007::Q::N::3::1", "001::nome::c::30::0"), same("new", 2, b)}});
    EXPECT_TRUE(result.ok);
    EXPECT_EQ(result.log, (Lines{header("new"), "[OK] Table created!"}));
    EXPECT_EQ(db.changes, Lines{"createtable new NOME C 30 0, B N 12 2"});
}

TEST_F(ApplyMatrix, ADropMarkIsPassedOnToTheCreationOfATable) {
    apply({{same("NEW", 1, a), line("NEW", descriptor(2, b), "DROP FIELD")}});
    EXPECT_EQ(db.changes, Lines{"createtable NEW A C 10 0, DROP FIELD  0 0"});
}

TEST_F(ApplyMatrix, DropsATable) {
    const Result result = apply({{" T>>DROP TABLE=>", "anything => after"}});
    EXPECT_TRUE(result.ok);
    EXPECT_EQ(result.log, (Lines{header("T"), "[OK] Table dropped"}));
    EXPECT_EQ(db.changes, Lines{"droptable T"});
    EXPECT_FALSE(db.tables.contains("T"));
}

TEST_F(ApplyMatrix, DropTableBehindFieldLinesOnlyDrops) {
    const Result result = apply({{same("T", 1, x), " T>>DROP TABLE=>"}});
    EXPECT_EQ(result.log, (Lines{header("T"), "[OK] Table dropped"}));
    EXPECT_EQ(db.changes, Lines{"droptable T"});
}

TEST_F(ApplyMatrix, ADroppedTableThatIsGoneIsAWarning) {
    const Result result = apply({{" GONE>>DROP TABLE=>"}});
    EXPECT_TRUE(result.ok);
    EXPECT_EQ(result.log, (Lines{header("GONE"), "[WARN] Table already dropped"}));
    EXPECT_EQ(db.changes, Lines{});
}

TEST_F(ApplyMatrix, AForeignTableFailsItsGroupAndLogsNothing) {
    db.add_foreign("ALIEN", {a});
    for (const std::string& only : {same("ALIEN", 1, x), std::string(" ALIEN>>DROP TABLE=>")}) {
        forget_raised();
        const Result result = apply({{only}, {same("T", 1, a), same("T", 2, b), same("T", 3, c)}});
        EXPECT_FALSE(result.ok);
        EXPECT_EQ(result.log, Lines{header("T")});
        const std::string message = error("Impossível modificar tabelas alienígenas!!;Tabela: ALIEN"_l1);
        EXPECT_EQ(raised(), (Lines{message, message}));
        EXPECT_EQ(db.changes, Lines{});
    }
}

TEST_F(ApplyMatrix, ADamagedGroupFailsAloneAndTheOthersAreApplied) {
    const Result result =
        apply({{same("U", 1, a), same("V", 2, b)},
               {same("T", 1, a), same("T", 2, b), line("T", descriptor(3, c), "DROP FIELD")},
               {"nonsense=>"}});
    EXPECT_FALSE(result.ok);
    EXPECT_EQ(result.log, (Lines{header("T"), "[OK] Drop Field: C"}));
    const Lines once = {error("Os dados para esta tabela parecem corrompidos;Tabela: U"),
                        error("Os dados para esta tabela parecem corrompidos;Registro: nonsense")};
    EXPECT_EQ(raised(), (Lines{once[0], once[1], once[0], once[1]}));
    EXPECT_EQ(db.changes, Lines{"dropfield T C D 8 0"});
}

TEST_F(ApplyMatrix, AnErrorHandlerThatThrowsOnDamageLeavesEverythingUnchanged) {
    const host::ThrowingErrors thrown;
    EXPECT_THROW(apply_failing({{line("T", descriptor(1, a), "DROP FIELD")}, {"nonsense=>"}}),
                 host::RaisedError);
    EXPECT_EQ(db.changes, Lines{});
}

TEST_F(ApplyMatrix, AnEmptyMatrixIsToldAndFails) {
    for (const Value& none :
         {Value(), Value(5), Value(true), structure({}), Value(""), Value(file("missing.tf"))}) {
        forget_raised();
        const Result result = run("applymatrix", none);
        EXPECT_FALSE(result.ok);
        EXPECT_EQ(result.log, Lines{});
        EXPECT_EQ(raised(), Lines{empty_matrix});
    }
}

TEST_F(ApplyMatrix, SimulatesForEveryValueThatIsNotEmpty) {
    const Value matrix = make_matrix({{" T>>DROP TABLE=>"}});
    for (const Value& yes : {Value(true), Value(1), Value(-0.5), Value("x"), texts({""})}) {
        EXPECT_EQ(run("applymatrix", matrix, yes), (Result{true, {header("T"), "[OK] Table dropped"}}));
        EXPECT_EQ(db.changes, Lines{});
    }
    for (const Value& no : {Value(), Value(false), Value(0), Value(""), Value("  "), structure({})}) {
        db.changes.clear();
        db.add("T", {a});
        run("applymatrix", matrix, no);
        EXPECT_EQ(db.changes, Lines{"droptable T"});
    }
}

struct FailureCase {
    std::string_view name;
    std::string failing;
    std::vector<std::string> group;
    Lines log;
};

class FailedChange : public ApplyMatrix, public ::testing::WithParamInterface<FailureCase> {};

TEST_P(FailedChange, IsLoggedAndTheRestIsDone) {
    db.failing = {GetParam().failing};
    const Result result = apply_failing({GetParam().group});
    EXPECT_FALSE(result.ok);
    EXPECT_EQ(result.log, GetParam().log);
}

const Lines reordered = {"[OK] Reorder: 001 Field: A", "[OK] Reorder: 002 Field: B",
                         "[OK] Reorder: 003 Field: C"};
Lines after(const Lines& first, const Lines& then = {}) {
    Lines all = {header("T")};
    all.insert(all.end(), first.begin(), first.end());
    all.insert(all.end(), then.begin(), then.end());
    return all;
}

INSTANTIATE_TEST_SUITE_P(
    Matrix, FailedChange,
    ::testing::Values(
        FailureCase{"CreateTable", "createtable", {same("N", 1, a)}, {header("N"), "[ERROR] Creating table"}},
        FailureCase{"DropTable", "droptable", {" T>>DROP TABLE=>"}, after({"[ERROR] Dropping table"})},
        FailureCase{"AddField",
                    "addfield",
                    {same("T", 1, a), same("T", 2, b), same("T", 3, c), same("T", 4, x)},
                    after({"[ERROR] Add Field: X"},
                          {reordered[0], reordered[1], reordered[2], "[ERROR] Reorder: 004 Field: X"})},
        FailureCase{
            "AlterField",
            "alterfield",
            {line("T", descriptor(1, a), descriptor(1, {"A", "C", 2})), same("T", 2, b), same("T", 3, c)},
            after({"[ERROR] Alter Field: A"}, reordered)},
        FailureCase{"DropField",
                    "dropfield",
                    {line("T", descriptor(1, a), "DROP FIELD"), same("T", 2, b), same("T", 3, c)},
                    after({"[ERROR] Drop Field: A"})},
        FailureCase{"AddLimboField",
                    "addlimbofield T B N 12 2",
                    {same("T", 1, a)},
                    after({"[ERROR] Add LimboField: B", "[WARN] Add LimboField: C"})},
        FailureCase{"SetFieldPosition",
                    "setfieldposition T A 2",
                    {same("T", 1, b), same("T", 2, a), same("T", 3, c)},
                    after({"[OK] Reorder: 001 Field: B", "[ERROR] Reorder: 002 Field: A",
                           "[OK] Reorder: 003 Field: C"})}),
    [](const auto& info) { return std::string(info.param.name); });

TEST_F(ApplyMatrix, ASystemFieldThatCannotBeMovedLeavesItsPositionToTheNext) {
    db.failing = {"setfieldposition T RDD_AREAID 4"};
    const Result result = apply_failing({{same("T", 1, b), same("T", 2, a), same("T", 3, c)}});
    EXPECT_FALSE(result.ok);
    EXPECT_EQ(result.log.back(), "[ERROR] Reorder SysField: RDD_AREAID At: 004");
    EXPECT_EQ(result.log.size(), 5U);
    EXPECT_EQ(db.changes.back(), "setfieldposition T RECNO 4");
}

TEST_F(ApplyMatrix, TheDecisionsAreThoseOnTheStructureAtTheStart) {
    // Line 2 brings a field that line 1 drops: it is altered nowhere, since it was there.
    const Result result = apply_failing({{line("T", descriptor(1, a), "DROP FIELD"), same("T", 2, b),
                                          same("T", 3, c), line("T", descriptor(4, a), descriptor(4, a))}});
    EXPECT_EQ(result.log[1], "[OK] Drop Field: A");
    EXPECT_EQ(result.log.back(), "[ERROR] Reorder: 004 Field: A");
}

TEST_F(ApplyMatrix, AMatrixOfAnotherShapeIsDamagedRecords) {
    const Value shapes[] = {texts({"T>>x=>y"}), host::array_of(Value()), host::array_of(host::array_of(5)),
                            host::array_of(host::array_of(texts({"a"})))};
    for (const Value& shape : shapes) {
        forget_raised();
        const Result result = run("applymatrix", shape);
        EXPECT_FALSE(result.ok);
        EXPECT_EQ(result.log, Lines{});
        ASSERT_EQ(raised().size(), 1U);
        EXPECT_TRUE(
            raised()[0].starts_with(error("Os dados para esta tabela parecem corrompidos;Registro: ")));
    }
    EXPECT_EQ(db.changes, Lines{});
}

}  // namespace
}  // namespace zmfb::test
