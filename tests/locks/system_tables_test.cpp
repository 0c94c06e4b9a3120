// Making the three system tables.
#include "tests/locks/locks_test.h"

namespace zmfb::test {
namespace {

struct SystemTable {
    std::string name;
    std::string method;
    std::string create;
    std::string index;
    std::string index_name;
    Rows index_columns;
};

const SystemTable system_tables[] = {
    {"RDDSYS_OPN",
     "createtableofopn",
     "CREATE TABLE RDDSYS_OPN( OPN_TABLE CHAR(30) DEFAULT '' NOT NULL,OPN_AREAID CHAR(50) DEFAULT '' NOT "
     "NULL,"
     "OPN_APPRECNO NUMERIC(18,0) DEFAULT 0 NOT NULL,OPN_SHARED CHAR(1) DEFAULT '' NOT NULL,"
     "RDD_AREAID VARCHAR(50) DEFAULT NULL,RECNO DOUBLE PRECISION NOT NULL, PRIMARY KEY(RECNO) )",
     "CREATE UNIQUE INDEX I_RDDSYS_OPN ON RDDSYS_OPN (OPN_TABLE, OPN_AREAID)",
     "I_RDDSYS_OPN",
     {{"OPN_TABLE"}, {"OPN_AREAID"}}},
    {"RDDSYS_FLK",
     "createtableofflocks",
     "CREATE TABLE RDDSYS_FLK( FLK_TABLE CHAR(30) DEFAULT '' NOT NULL,FLK_AREAID CHAR(50) DEFAULT '' NOT "
     "NULL,"
     "RDD_AREAID VARCHAR(50) DEFAULT NULL,RECNO DOUBLE PRECISION NOT NULL, PRIMARY KEY(RECNO) )",
     "CREATE UNIQUE INDEX I_RDDSYS_FLK ON RDDSYS_FLK (FLK_TABLE)",
     "I_RDDSYS_FLK",
     {{"FLK_TABLE"}}},
    {"RDDSYS_RLK",
     "createtableofrlocks",
     "CREATE TABLE RDDSYS_RLK( RLK_TABLE CHAR(30) DEFAULT '' NOT NULL,RLK_RECNO NUMERIC(18,0) DEFAULT 0 NOT "
     "NULL,"
     "RLK_AREAID CHAR(50) DEFAULT '' NOT NULL,RDD_AREAID VARCHAR(50) DEFAULT NULL,"
     "RECNO DOUBLE PRECISION NOT NULL, PRIMARY KEY(RECNO) )",
     "CREATE UNIQUE INDEX I_RDDSYS_RLK ON RDDSYS_RLK (RLK_TABLE, RLK_RECNO)",
     "I_RDDSYS_RLK",
     {{"RLK_TABLE"}, {"RLK_RECNO"}}},
};

std::string question(const std::string& table) {
    return "select count(*) from rdb$relations where rdb$relation_name = '" + table + "' ";
}

class SystemTables : public Locks {
  protected:
    void drop_with_generators(const std::string& table) {
        drop(table);
        EXPECT_EQ(call("executeupdate", "DROP GENERATOR G_" + table + "_I").string(), "");
        EXPECT_EQ(call("executeupdate", "DROP GENERATOR G_" + table + "_D").string(), "");
    }
    [[nodiscard]] bool exists(const std::string& table) const {
        return rows("select rdb$relation_name from rdb$relations where rdb$relation_name = '" + table + "'")
                   .size() == 1;
    }
    [[nodiscard]] bool has_index(const std::string& index) const {
        return rows("select rdb$index_name from rdb$indices where rdb$index_name = '" + index + "'").size() ==
               1;
    }
};

TEST_F(SystemTables, AbsentTableIsCreatedAndThenItsIndex) {
    for (const SystemTable& table : system_tables) {
        drop_with_generators(table.name);
        const Statements statements = sent_by(table.method);
        ASSERT_GE(statements.size(), 4u) << table.name;
        EXPECT_EQ(statements[0], question(table.name));
        EXPECT_EQ(statements[1], question(table.name)) << "createtable asks for itself";
        EXPECT_EQ(statements[2], table.create);
        EXPECT_EQ(statements.back(), table.index);
        EXPECT_TRUE(exists(table.name));
    }
}

TEST_F(SystemTables, CreatedTablesAnswerTrueAndHaveTheirUniqueIndexes) {
    for (const SystemTable& table : system_tables) {
        drop_with_generators(table.name);
        EXPECT_TRUE(yes(table.method));
        EXPECT_EQ(rows("select rdb$field_name from rdb$index_segments where rdb$index_name = '" +
                       table.index_name + "' order by rdb$field_position"),
                  table.index_columns);
        EXPECT_EQ(
            rows("select rdb$unique_flag from rdb$indices where rdb$index_name = '" + table.index_name + "'"),
            (Rows{{"1"}}));
        EXPECT_TRUE(yes("iszmrddtable", table.name));
    }
}

TEST_F(SystemTables, ExistingTableIsOnlyAskedFor) {
    for (const SystemTable& table : system_tables) {
        EXPECT_EQ(sent_by(table.method), Statements{question(table.name)});
        EXPECT_TRUE(yes(table.method));
    }
}

TEST_F(SystemTables, ExistingTableOfAnotherShapeIsLeftAsItIs) {
    drop("RDDSYS_RLK");
    execute("CREATE TABLE RDDSYS_RLK (X INTEGER)");
    EXPECT_TRUE(yes("createtableofrlocks"));
    EXPECT_EQ(rows("select rdb$field_name from rdb$relation_fields where rdb$relation_name = 'RDDSYS_RLK'"),
              (Rows{{"X"}}));
    EXPECT_FALSE(has_index("I_RDDSYS_RLK"));
}

TEST_F(SystemTables, FailedCreationAnswersFalseAndMakesNoIndex) {
    for (const SystemTable& table : system_tables) {
        drop(table.name);  // its generators stay, and stand in the way of new ones
        const Statements statements = sent_by(table.method);
        EXPECT_EQ(statements.back(), "CREATE GENERATOR G_" + table.name + "_I");
        EXPECT_FALSE(has_index(table.index_name));
    }
    EXPECT_EQ(raised().size(), std::size(system_tables));

    drop("RDDSYS_OPN");
    EXPECT_FALSE(yes("createtableofopn"));
}

TEST_F(SystemTables, FailedIndexAnswersFalseAndLeavesTheTable) {
    execute("CREATE TABLE OTHER (X INTEGER)");
    for (const SystemTable& table : system_tables) {
        drop_with_generators(table.name);
        execute("CREATE INDEX " + table.index_name + " ON OTHER (X)");
        EXPECT_FALSE(yes(table.method));
        EXPECT_TRUE(exists(table.name));
    }
}

TEST_F(SystemTables, LoserOfARaceToCreateATableAnswersFalse) {
    drop_with_generators("RDDSYS_FLK");
    const RacingClient other(database(), "CREATE TABLE RDDSYS_FLK", "CREATE TABLE RDDSYS_FLK (X INTEGER)");
    EXPECT_FALSE(yes("createtableofflocks"));
    EXPECT_TRUE(other.happened());
    EXPECT_EQ(raised().size(), 1u);
    EXPECT_TRUE(
        raised()[0].starts_with("[FBCONN Error];Error on creating Table; FB Error: [ERROR] SQLCODE="));
}

TEST_F(SystemTables, UnattachedObjectAnswersTrueAndCreatesNothing) {
    zmFBConn unattached;
    for (const SystemTable& table : system_tables) EXPECT_TRUE(unattached.call(table.method).logical());
}

}  // namespace
}  // namespace zmfb::test
