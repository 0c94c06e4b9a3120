#include "tests/schema/schema.h"

namespace zmfb::test {
namespace {

using host::operator""_l1;

class DropTable : public Schema {};

const std::string views_of_client =
    "SELECT RDB$VIEW_NAME FROM RDB$VIEW_RELATIONS WHERE RDB$RELATION_NAME = 'CLIENT' ";

TEST_F(DropTable, DropsItsTwoViewsTheTableAndBothGenerators) {
    create_client();
    execute("create view V_ONE (NAME) as select NAME from CLIENT");
    execute("create view V_TWO (NAME) as select NAME from CLIENT");
    execute("create view V_OTHER (A) as select OPN_TABLE from RDDSYS_OPN");
    log_at(8);
    clear_log();
    EXPECT_TRUE(yes("droptable", " client "));
    EXPECT_EQ(sql_log(), (Names{views_of_client, "DROP VIEW V_ONE", "DROP VIEW V_TWO", "DROP TABLE CLIENT",
                                "DROP GENERATOR G_CLIENT_I", "DROP GENERATOR G_CLIENT_D"}));
    EXPECT_FALSE(exists("relation", "CLIENT"));
    EXPECT_FALSE(exists("generator", "G_CLIENT_I"));
    EXPECT_FALSE(exists("generator", "G_CLIENT_D"));
    EXPECT_TRUE(exists("relation", "V_OTHER"));
}

TEST_F(DropTable, AMissingInsertGeneratorIsRaisedAndTheDeleteGeneratorDecides) {
    create_client();
    execute("drop trigger T_CLIENT_RECNO");
    execute("drop generator G_CLIENT_I");
    disconnect();
    watch();
    EXPECT_TRUE(yes("droptable", "CLIENT"));
    expect_raised_with_error("Impossível eliminar generator; Generator: G_CLIENT_I; FB Error: "_l1);
    EXPECT_FALSE(exists("generator", "G_CLIENT_D"));
}

TEST_F(DropTable, AMissingDeleteGeneratorIsRaisedAndTheAnswerIsNo) {
    create_client();
    execute("drop trigger T_CLIENT_DELETES");
    execute("drop generator G_CLIENT_D");
    disconnect();
    watch();
    EXPECT_FALSE(yes("droptable", "CLIENT"));
    expect_raised_with_error("Impossível eliminar generator; Generator: G_CLIENT_D; FB Error: "_l1);
    EXPECT_FALSE(exists("relation", "CLIENT"));
    EXPECT_FALSE(exists("generator", "G_CLIENT_I"));
}

TEST_F(DropTable, AViewThatFailsToDropStopsItBeforeTheTable) {
    create_client();
    execute("create view V_ONE (NAME) as select NAME from CLIENT");
    execute("create view V_ON_VIEW (NAME) as select NAME from V_ONE");
    watch();
    EXPECT_FALSE(yes("droptable", "CLIENT"));
    expect_raised_with_error("Impossível eliminar View: V_ONE; FB Error: "_l1);
    EXPECT_EQ(updates(), Names{"DROP VIEW V_ONE"});
    EXPECT_TRUE(exists("relation", "CLIENT"));
}

TEST_F(DropTable, AViewThatNamesTheTableTwiceStopsTheFirstCallAndNotTheSecond) {
    create_client();
    execute("create view PAIRS (A, B) as select X.NAME, Y.NAME from CLIENT X, CLIENT Y");
    watch();
    EXPECT_FALSE(yes("droptable", "CLIENT"));
    expect_raised_with_error("Impossível eliminar View: PAIRS; FB Error: "_l1);
    EXPECT_EQ(updates(), (Names{"DROP VIEW PAIRS", "DROP VIEW PAIRS"}));
    EXPECT_FALSE(exists("relation", "PAIRS"));
    EXPECT_TRUE(exists("relation", "CLIENT"));
    EXPECT_TRUE(yes("droptable", "CLIENT"));
    EXPECT_FALSE(exists("relation", "CLIENT"));
}

TEST_F(DropTable, ATableThatFailsToDropKeepsItsGenerators) {
    create_client();
    execute("create procedure P as declare N char(30); begin select first 1 NAME from CLIENT into :N; end");
    watch();
    EXPECT_FALSE(yes("droptable", "CLIENT"));
    expect_raised_with_error("Impossível eliminar a Tabela: CLIENT; FB Error: "_l1);
    EXPECT_TRUE(exists("generator", "G_CLIENT_I"));
    EXPECT_TRUE(exists("generator", "G_CLIENT_D"));
}

TEST_F(DropTable, NoNameIsRefusedWithoutAStatement) {
    log_at(8);
    connection();
    EXPECT_FALSE(yes("droptable", ""));
    EXPECT_FALSE(yes("droptable"));
    EXPECT_FALSE(yes("dropviewsfromtable", " "));
    EXPECT_TRUE(log_lines().empty());
}

TEST_F(DropTable, DropviewsfromtableStopsAtTheFirstViewThatFails) {
    execute("create table PLAIN (A char(1))");
    execute("create view V_A (A) as select A from PLAIN");
    execute("create view V_B (A) as select A from PLAIN");
    execute("create view V_C (A) as select A from PLAIN");
    execute("create view V_ON_B (A) as select A from V_B");
    watch();
    EXPECT_FALSE(yes("dropviewsfromtable", "plain"));
    expect_raised_with_error("Impossível eliminar View: V_B; FB Error: "_l1);
    EXPECT_EQ(updates(), (Names{"DROP VIEW V_A", "DROP VIEW V_B"}));
    EXPECT_TRUE(exists("relation", "V_C"));
}

TEST_F(DropTable, ATableWithoutViewsIsASuccess) {
    watch();
    EXPECT_TRUE(yes("dropviewsfromtable", "RDDSYS_OPN"));
    EXPECT_TRUE(yes("dropviewsfromtable", "NONE"));
    EXPECT_TRUE(updates().empty());
}

TEST_F(DropTable, WithoutADatabaseAllDropsCountAsDone) {
    zmFBConn unattached;
    EXPECT_TRUE(unattached.call("droptable", "CLIENT").logical());
    EXPECT_TRUE(unattached.call("dropfield", "CLIENT", field("NAME", "C")).logical());
}

}  // namespace
}  // namespace zmfb::test
