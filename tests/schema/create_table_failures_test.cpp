#include "tests/schema/refusing.h"
#include "tests/schema/schema.h"
#include "tests/support/faulty_client.h"
#include "zmfbconn/database.h"

namespace zmfb::test {
namespace {

using host::operator""_l1;

class CreateTableFailures : public Schema {};

TEST_F(CreateTableFailures, AnExistingTableIsRaisedAndLeftAlone) {
    create_client();
    const std::string before = structure("CLIENT");
    watch();
    EXPECT_FALSE(yes("createtable", "client", array_of(field("OTHER", "C"))));
    expect_raised("Table already exists!; Tbl: client");
    EXPECT_TRUE(updates().empty());
    EXPECT_EQ(structure("CLIENT"), before);
}

TEST_F(CreateTableFailures, AnExistingTableIsRaisedInPortugueseForAnExternalOne) {
    create_client();
    watch();
    EXPECT_FALSE(yes("createtableexternal", "Client", client_structure(), "/tmp/x"));
    expect_raised("A tabela já existe; Tabela: Client"_l1);
    EXPECT_TRUE(updates().empty());
}

TEST_F(CreateTableFailures, AViewOfTheNameCountsAsATable) {
    execute("create view V (A) as select rdb$relation_id from rdb$database");
    EXPECT_FALSE(yes("createtable", "v", client_structure()));
    expect_raised("Table already exists!; Tbl: v");
}

TEST_F(CreateTableFailures, EveryFieldOfAnUnsupportedTypeIsLoggedAndRaisedAndNothingIsCreated) {
    const Value fields =
        array_of(field("NAME", "C"), field(" notes", "memo"), field("KIND", ""), field("BLOB", "X"));
    for (const std::string method : {"createtable", "createtableexternal"}) {
        SCOPED_TRACE(method);
        watch();
        EXPECT_FALSE(yes(method, "client", fields, "/tmp/x"));
        EXPECT_EQ(
            log_lines(),
            (std::vector<LogEntry>{
                {0, "[ERROR] FieldType not supported on table creation. Table CLIENT Field: NOTES Type M"},
                {0, "[ERROR] FieldType not supported on table creation. Table CLIENT Field: KIND Type "},
                {0, "[ERROR] FieldType not supported on table creation. Table CLIENT Field: BLOB Type X"}}));
        EXPECT_EQ(raised(), (Names{"[FBCONN Error];FieldType not supported; Field: NOTES Type: M",
                                   "[FBCONN Error];FieldType not supported; Field: KIND Type: ",
                                   "[FBCONN Error];FieldType not supported; Field: BLOB Type: X"}));
    }
    EXPECT_FALSE(yes("istable", "CLIENT"));
}

struct Refused {
    std::string table;
    Value structure;
};

TEST_F(CreateTableFailures, WhatTheEngineRefusesIsRaisedWithItsErrorAndNothingIsCreated) {
    const Refused refused[] = {
        {"T", array_of(field("DATE", "C"))},
        {"T", array_of(field("TWO WORDS", "C"))},
        {"T", array_of(field("O'BRIEN", "C"))},
        {"T", array_of(field("A\"B", "C"))},
        {"T", array_of(field("", "C"))},
        {"T", array_of(field("A", "C"), field("a ", "N"))},
        {"T", array_of(field("RECNO", "N"))},
        {"T", array_of(field("A", "N", 19, 2))},
        {"T", array_of(field("A", "N", 5, 6))},
        {"T", array_of(field("A", "C", -1))},
        {"T", array_of(field("A", "C", 40000))},
        {"T", array_of(field(std::string(64, 'A'), "C"))},
        {"A23456789012345678901234567890123", array_of(field("A", "C"))},
        {"TABLE", array_of(field("A", "C"))},
        {"O'BRIEN", array_of(field("A", "C"))},
        {"A; DROP TABLE RDDSYS_OPN", array_of(field("A", "C"))},
    };
    for (const Refused& attempt : refused) {
        SCOPED_TRACE(attempt.table + " " + show(attempt.structure));
        watch();
        EXPECT_FALSE(yes("createtable", attempt.table, attempt.structure));
        ASSERT_FALSE(errors().empty());
        EXPECT_EQ(raised(), Names{"[FBCONN Error];Error on creating Table; FB Error: " + errors().back()});
        EXPECT_EQ(updates().size(), 1U);
    }
    EXPECT_EQ(call("gettablesname").size(), 3U);
}

// One part of the layout that is taken, and what its failure raises and leaves.
struct Taken {
    std::string name;
    std::string blocker;
    std::string message;
    std::size_t statements;  ///< sent until then, the failing one included
};

void PrintTo(const Taken& taken, std::ostream* out) { *out << taken.blocker; }

const Taken taken_parts[] = {
    {"Index", "create index CLIENT_RECNO_DESC on OTHER (A)",
     std::string("Erro na criação do índice recno; FB Error: "_l1), 5},
    {"InsertGenerator", "create generator G_CLIENT_I",
     std::string("Erro na criação do generator I; FB Error: "_l1), 6},
    {"DeleteGenerator", "create generator G_CLIENT_D",
     std::string("Erro na criação do generator D; FB Error: "_l1), 7},
    {"InsertTrigger", "create trigger T_CLIENT_RECNO for OTHER active before insert position 0 as begin end",
     std::string("Erro na criação da trigger Recno; FB Error: "_l1), 8},
    {"DeleteTrigger",
     "create trigger T_CLIENT_DELETES for OTHER active before insert position 0 as begin end",
     std::string("Erro na criação da trigger Deletes; FB Error: "_l1), 9},
};

class APartThatIsTaken : public Schema, public ::testing::WithParamInterface<Taken> {};

TEST_P(APartThatIsTaken, IsRaisedAndStopsTheCreationThereAndWhatIsDoneStays) {
    execute("create table OTHER (A double precision)");
    execute(GetParam().blocker);
    watch();
    EXPECT_FALSE(yes("createtable", "CLIENT", client_structure()));
    expect_raised_with_error(GetParam().message);
    EXPECT_EQ(updates().size(), GetParam().statements);
    EXPECT_TRUE(yes("iszmrddtable", "CLIENT"));
    EXPECT_EQ(exists("generator", "G_CLIENT_I"), GetParam().statements >= 6);
    EXPECT_EQ(exists("generator", "G_CLIENT_D"),
              GetParam().statements >= 7 || GetParam().name == "DeleteGenerator");
    EXPECT_EQ(rows("select rdb$trigger_name from rdb$triggers where rdb$relation_name = 'CLIENT'").size(),
              GetParam().statements == 9 ? 1U : 0U);
}

INSTANTIATE_TEST_SUITE_P(Parts, APartThatIsTaken, ::testing::ValuesIn(taken_parts),
                         [](const auto& info) { return info.param.name; });

TEST_F(CreateTableFailures, ATableDescriptionThatFailsStopsTheCreationThere) {
    const Refusing client("COMMENT ON TABLE");
    watch();
    EXPECT_FALSE(yes("createtable", "client", client_structure()));
    expect_raised("Erro na descrição da tabela; Tabela: client"_l1);
    EXPECT_EQ(updates().size(), 2U);
    EXPECT_TRUE(yes("istable", "CLIENT"));
}

TEST_F(CreateTableFailures, AFailedColumnDescriptionIsRaisedAgainForTheFieldsBehindThatHaveNone) {
    const Refusing client("COMMENT ON COLUMN \"CLIENT\".\"PRICE\"");
    watch();
    const Value fields = array_of(field("NAME", "C"), field("PRICE", "N", 10, 2), field("CITY", "C"),
                                  field("BORN", "D"), field("OK", "L"), field("LAST", "C"));
    EXPECT_FALSE(yes("createtable", "client", fields));
    const std::string message("[FBCONN Error];Erro na descrição do campo; Tabela: client Campo: "_l1);
    EXPECT_EQ(raised(), (Names{message + "PRICE", message + "CITY", message + "BORN"}));
    EXPECT_EQ(updates().size(), 4U) << "the index must not be created";
    EXPECT_EQ(updates()[3], R"(COMMENT ON COLUMN "CLIENT"."OK" IS 'LOGICAL')");
}

TEST_F(CreateTableFailures, ABrokenDescriptorIsRaisedByTheRuntimeAndDoesNoHarm) {
    watch();
    EXPECT_FALSE(yes("createtable", "T", array_of("NAME")));
    EXPECT_FALSE(raised().empty());
    EXPECT_FALSE(yes("createtable", "T", array_of(array_of())));
    EXPECT_FALSE(yes("createtable", "T", array_of(array_of("NAME", "C"))));
    EXPECT_FALSE(yes("istable", "T"));
}

struct NotSent {
    std::string method;
    std::string name;
    int digits;
    std::string statement;
    std::string failure;
    std::string reason;
};

const std::string long_name = "T123456789012345678901234567890";

const NotSent not_sent[] = {
    {"createtable", "wide", 19,
     "CREATE TABLE WIDE( A NUMERIC(19,2) DEFAULT 0 NOT NULL,RDD_AREAID VARCHAR(50) DEFAULT NULL,RECNO DOUBLE "
     "PRECISION NOT NULL, PRIMARY KEY(RECNO) )",
     "[ERROR] SQLCODE=-842 (Wrong numeric type)", "Precision must be from 1 to 18"},
    {"createtableexternal", "wide", 38,
     "CREATE TABLE WIDE EXTERNAL FILE '/nowhere/x.dat' ( A NUMERIC(38,2) DEFAULT 0 NOT NULL )",
     "[ERROR] SQLCODE=-842 (Wrong numeric type)", "Precision must be from 1 to 18"},
    {"createtable", long_name, 18,
     "CREATE TABLE " + long_name +
         "( A NUMERIC(18,2) DEFAULT 0 NOT NULL,RDD_AREAID VARCHAR(50) DEFAULT NULL,RECNO DOUBLE PRECISION "
         "NOT "
         "NULL, PRIMARY KEY(RECNO) )",
     "[ERROR] SQLCODE=-104 (Invalid token)", "The name of a table of the driver has at most 30 characters"},
};

// Firebird 3.0 refuses the first two by itself, in these words.
TEST_F(CreateTableFailures, WhatLaterEnginesWouldMakeIsRefusedWithoutAskingOne) {
    watch();
    for (const NotSent& one : not_sent) {
        SCOPED_TRACE(one.statement);
        clear_log();
        forget_raised();
        const Value structure = host::array_of(host::array_of("A", "N", one.digits, 2));
        FaultyClient client;
        const Value done = one.method == "createtable"
                               ? call(one.method, one.name, structure)
                               : call(one.method, one.name, structure, "/nowhere/x.dat");
        EXPECT_FALSE(done.logical());
        EXPECT_EQ(client.count(ClientCall::execute_immediate), 0);
        EXPECT_EQ(updates(), Names{one.statement});
        EXPECT_EQ(errors(), Names{one.failure});
        ASSERT_EQ(raised().size(), 1U);
        EXPECT_TRUE(raised()[0].ends_with("; FB Error: " + one.failure)) << raised()[0];
        EXPECT_TRUE(last_engine_message().ends_with(one.reason)) << last_engine_message();
    }
}

TEST_F(CreateTableFailures, WithoutADatabaseNothingIsRefused) {
    zmFBConn unattached;
    EXPECT_TRUE(
        unattached.call("createtable", long_name, host::array_of(host::array_of("A", "N", 19, 2))).logical());
}

}  // namespace
}  // namespace zmfb::test
