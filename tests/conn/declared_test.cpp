#include <functional>
#include <map>

#include "tests/support/database.h"
#include "tests/transfer/open_files.h"
#include "zmfbconn/methods.h"

namespace zmfb::test {
namespace {

using host::array_of;
using host::Kind;

const Structure client_structure{{"NAME", "C", 10, 0}, {"CREDIT", "N", 9, 2}};

// Calls by declaration on a database with a table CLIENT of one record.
class Declared : public Database {
  protected:
    Declared() {
        EXPECT_TRUE(connection()(m::createtable, "client", client_structure));
        execute("insert into CLIENT (NAME, CREDIT) values ('Ana', 1.5)");
    }
    template <class... T>
    auto ask(const T&... arguments) {
        return connection()(arguments...);
    }

  private:
    CurrentFolder here_{folder()};
};

TEST_F(Declared, AnswersAreTypesOfTheProgram) {
    EXPECT_TRUE(ask(m::istable, "client"));
    EXPECT_FALSE(ask(m::istable, std::string("nobody")));
    EXPECT_EQ(ask(m::gettablereccount, "client"), 1);
    EXPECT_EQ(ask(m::getdatabasename), database());
    EXPECT_EQ(ask(m::getrow, "CLIENT", "1 = 1", "RECNO", "", 0)[0], "Ana       ");
    EXPECT_EQ(ask(m::toarray, "a::b", "::"), (Texts{"a", "b"}));
    const TextRows segments = ask(m::getindexfields, "CLIENT_RECNO_DESC");
    ASSERT_EQ(segments.size(), 1U);
    EXPECT_EQ(segments[0][0].substr(0, 6), "RECNO ");
    EXPECT_EQ(ask(m::executequery, "select NAME from CLIENT").value()[2][1].text(), "Ana       ");
    EXPECT_EQ(ask(m::evalmeth, "getloglevel").number(), 0);
    EXPECT_EQ(ask(m::evalmeth, "istable", Array(array_of("CLIENT"))).logical(), true);
    const TableNames tables = ask(m::gettablesname);
    EXPECT_EQ(tables.front(), TableName("CLIENT"));
    EXPECT_TRUE(ask(m::istable, tables.front()));
}

TEST_F(Declared, StructuresGoInAndComeOut) {
    EXPECT_EQ(ask(m::filterrddfields, ask(m::gettablestruct, "client")), client_structure);
    EXPECT_TRUE(ask(m::isfieldinstru, "credit", client_structure));
    EXPECT_FALSE(ask(m::hasfieldnamechanged, client_structure[0], client_structure[0]));
    EXPECT_EQ(ask(m::setrddfields, client_structure).value()[1][1].size(), 5U);
    EXPECT_EQ(client_structure[0], (FieldDescriptor{"NAME", "C", 10, 0}));
}

TEST_F(Declared, LocksAreOfAreasAndRecordNumbers) {
    const AreaId area = ask(m::getuniqueareaid, "CLIENT", "1");
    EXPECT_TRUE(ask(m::settableusedbyarea, true, "CLIENT", area, true));
    EXPECT_EQ(ask(m::getapprecnofromarea, "CLIENT", area), RecordNumber(0));
    for (const int number : {17, 4}) {
        EXPECT_TRUE(ask(m::setrecordaslocked, "CLIENT", area, RecordNumber(number)));
    }
    RecordNumbers locked = ask(m::getlockedrecords, "CLIENT", area);
    std::ranges::sort(locked);
    EXPECT_EQ(locked, (RecordNumbers{RecordNumber(4), RecordNumber(17)}));
    EXPECT_EQ(ask(m::getrlockareaid, "CLIENT", locked[1]), area);
    EXPECT_EQ(ask(m::getrlockareaid, "CLIENT", RecordNumber(5)).text(), "");
    EXPECT_TRUE(ask(m::unlockallrecords, "CLIENT", area));
}

TEST_F(Declared, RecordNumberGoesIntoTheStatementAsItsDigits) {
    log_at(8);
    const AreaId area("CLIENT:1:2:host");
    EXPECT_FALSE(ask(m::isrecordlocked, "CLIENT", area, RecordNumber(std::int64_t{1} << 52)));
    call("isrecordlocked", "CLIENT", "CLIENT:1:2:host", "4503599627370496");
    const std::vector<std::string> sent = sql_log();
    ASSERT_EQ(sent.size(), 2U);
    EXPECT_EQ(sent[0], sent[1]);
}

TEST_F(Declared, WhatBecameOfAStatementIsAStatus) {
    const Status done = ask(m::executeupdate, "update CLIENT set NAME = 'Eva'");
    EXPECT_TRUE(done.ok());
    EXPECT_EQ(done.message(), "");
    const Status refused = ask(m::executeupdate, "update NOBODY set NAME = 'Eva'");
    EXPECT_FALSE(refused.ok());
    EXPECT_EQ(refused.message().substr(0, 22), "[ERROR] SQLCODE=-204 (");
    EXPECT_TRUE(ask(m::settabledescription, "CLIENT", "Created by ZMRDDFIRE").ok());
    EXPECT_EQ(ask(m::gettabledescription, "CLIENT")[0].substr(0, 22), "Created by ZMRDDFIRE  ");
}

TEST_F(Declared, AMatrixIsTheNameOfAFileOrWhatWasExtracted) {
    const Array matrix = ask(m::extractmatrix, TableNames{"CLIENT"}, "client");
    for (const MatrixLog& log : {ask(m::checkmatrix, matrix), ask(m::checkmatrix, "client.tf"),
                                 ask(m::applymatrix, matrix), ask(m::applymatrix, "client.tf", true)}) {
        EXPECT_TRUE(log.ok);
        EXPECT_TRUE(std::ranges::any_of(log.lines, [](const std::string& line) {
            return line.find("CLIENT") != std::string::npos;
        })) << ::testing::PrintToString(log.lines);
    }
}

TEST_F(Declared, WhatIsLeftOutArrivesAsNil) {
    EXPECT_EQ(ask(m::setfullpathdatfile, "here.dat"), "here.dat");
    EXPECT_TRUE(ask(m::setfullpathdatfile).starts_with("/tmp/zmrdd"));
    EXPECT_TRUE(ask(m::setfullpathdatfile, std::nullopt).starts_with("/tmp/zmrdd"));
    EXPECT_EQ(ask(m::setfullpathdatfile, std::optional<std::string>("there.dat")), "there.dat");
    EXPECT_TRUE(ask(m::setfullpathdatfile, std::optional<std::string>()).starts_with("/tmp/zmrdd"));
    EXPECT_EQ(ask(m::extractmatrix).value().size(), call("extractmatrix").size());
}

TEST_F(Declared, PropertiesAreReadAndAssigned) {
    EXPECT_EQ(ask(m::sdbname), database());
    EXPECT_TRUE(ask(m::bconn));
    const std::int64_t handle = ask(m::dbhndl);
    EXPECT_NE(handle, 0);
    EXPECT_EQ(ask(m::assign_dbhndl, 0).number(), 0);
    EXPECT_FALSE(ask(m::istable, "CLIENT")) << "no handle, no database";
    ask(m::assign_dbhndl, handle);
    EXPECT_TRUE(ask(m::istable, "CLIENT"));
}

TEST_F(Declared, AnswersOfAnotherKindAreThrown) {
    call("setrddactive", "perhaps");
    call("setglbskipcachesize", 2.5);
    try {
        ask(m::isrddactive);
        FAIL() << "nothing was thrown";
    } catch (const UnexpectedAnswer& error) {
        EXPECT_STREQ(error.what(), "isrddactive answered a text, and is declared to answer: logical");
        EXPECT_EQ(error.answer().text(), "perhaps");
    }
    EXPECT_THROW(ask(m::getglbskipcachesize), UnexpectedAnswer) << "2.5 is no whole number";
    EXPECT_THROW(Array("CLIENT"), std::invalid_argument);
}

TEST_F(Declared, AFieldHasAllFourPartsOfTheirKinds) {
    const auto fits = declared::Carrier<FieldDescriptor>::fits;
    EXPECT_TRUE(fits(host::array_of("CODE", "C", 5, 0)));
    EXPECT_FALSE(fits(host::array_of("CODE", "C", 5)));
    EXPECT_FALSE(fits(host::array_of("CODE", "C", 5, "0")));
    EXPECT_FALSE(fits("CODE"));
}

TEST_F(Declared, AnswersAreThePrograms) {
    Structure structure;
    Value rows;
    {
        zmFBConn other = connect();
        structure = other(m::gettablestruct, "CLIENT");
        rows = other(m::executequery, "select NAME from CLIENT").value();
    }
    EXPECT_EQ(structure[0], client_structure[0]);
    EXPECT_EQ(rows[2][1].text(), "Ana       ");
}

// An argument of each kind.
Value argument(std::string_view kind) {
    const Value field = array_of("NAME", "C", 10, 0);
    const std::map<std::string_view, Value> arguments{
        {"table", "CLIENT"},
        {"area", "CLIENT:1:2:host"},
        {"record", "1"},
        {"text", "NAME"},
        {"number", 1},
        {"logical", true},
        {"any", 1},
        {"array", array_of()},
        {"field", field},
        {"structure", array_of(field)},
        {"tables", array_of("CLIENT")},
        {"rows", array_of()},
        {"matrix", "CLIENT.tf"},
        {"texts", array_of("1", "NAME", "C", "10", "0")},
    };
    return arguments.at(kind);
}

bool is_array_of(const Value& value, bool (*fits)(const Value&)) {
    return value.is(Kind::array) && std::ranges::all_of(value.items(), fits);
}
template <Kind kind>
bool is(const Value& value) {
    return value.is(kind);
}
template <Kind kind>
bool is_row_of(const Value& value) {
    return is_array_of(value, is<kind>);
}

// Whether a value is of a kind of results.
bool is_of(const Value& value, std::string_view kind) {
    const std::map<std::string_view, std::function<bool()>> rules{
        {"NIL", [&] { return value.is_nil(); }},
        {"any", [] { return true; }},
        {"logical", [&] { return value.is(Kind::logical); }},
        {"number", [&] { return value.is(Kind::numeric); }},
        {"record", [&] { return value.is(Kind::numeric); }},
        {"text", [&] { return value.is(Kind::character); }},
        {"area", [&] { return value.is(Kind::character); }},
        {"status", [&] { return value.is(Kind::character); }},
        {"array", [&] { return value.is(Kind::array); }},
        {"texts", [&] { return is_row_of<Kind::character>(value); }},
        {"tables", [&] { return is_row_of<Kind::character>(value); }},
        {"records", [&] { return is_row_of<Kind::numeric>(value); }},
        {"rows", [&] { return is_array_of(value, is_row_of<Kind::character>); }},
        {"structure", [&] { return is_array_of(value, is<Kind::array>); }},
        {"{ok, log}", [&] { return value.size() == 2 && value[1].is(Kind::logical); }},
    };
    return rules.at(kind)();
}

TEST_F(Declared, EveryMethodAnswersTheKindThatItIsDeclaredWith) {
    for (const MethodRow& row : methods()) {
        if (row.kind == MethodKind::assign || row.name == "disconnect" || row.name == "axit") continue;
        std::vector<Value> arguments;
        for (const ParameterRow& one : row.parameters) arguments.push_back(argument(one.kind));
        if (row.name == "init") arguments = {database(), "SYSDBA", "masterkey", ""};
        if (!call("istable", "CLIENT").logical()) ask(m::createtable, "CLIENT", client_structure);
        const Value answer = connection().call_with(row.name, host::Args(arguments));
        EXPECT_TRUE(is_of(answer, row.result)) << row.name << " answers " << show(answer);
    }
    forget_raised();
}

}  // namespace
}  // namespace zmfb::test
