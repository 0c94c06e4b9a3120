#include "tests/schema/schema.h"

namespace zmfb::test {
namespace {

using host::operator""_l1;

class DropField : public Schema {
  protected:
    DropField() { execute("create table T (A char(5), B char(5), C char(5))"); }

    [[nodiscard]] Rows columns() const {
        return rows(
            "select rdb$field_name from rdb$relation_fields where rdb$relation_name = 'T' order by "
            "rdb$field_position");
    }
};

const std::string indexes_of_a =
    "SELECT IDX.RDB$INDEX_NAME FROM RDB$INDICES IDX LEFT JOIN RDB$INDEX_SEGMENTS SEG ON (SEG.RDB$INDEX_NAME "
    "= "
    "IDX.RDB$INDEX_NAME) WHERE IDX.RDB$RELATION_NAME = 'T' AND SEG.RDB$FIELD_NAME = 'A'";
const std::string triggers_of_a =
    "SELECT RDB$DEPENDENT_NAME FROM RDB$DEPENDENCIES WHERE RDB$DEPENDED_ON_NAME = 'T' AND RDB$DEPENDENT_TYPE "
    "= 2 AND "
    "RDB$FIELD_NAME = 'A'";
const std::string fields_of_t_one =
    "SELECT RDB$FIELD_NAME FROM RDB$DEPENDENCIES WHERE RDB$DEPENDENT_NAME = 'T_ONE' AND RDB$FIELD_NAME IS "
    "NOT NULL";

TEST_F(DropField, DropsItsIndexesACompositeOneTooAndTriggersThenTheColumn) {
    execute("create index I_A on T (A)");
    execute("create index I_BA on T (B, A)");
    execute("create index I_B on T (B)");
    execute("create trigger T_ONE for T active before insert position 5 as begin new.B = new.A; end");
    execute("create trigger T_TWO for T active before insert position 6 as begin new.B = 'x'; end");
    log_at(8);
    connection();
    EXPECT_TRUE(yes("dropfield", " t ", field("A", "C", 5)));
    EXPECT_EQ(sql_log(), (Names{indexes_of_a, "DROP INDEX I_A", "DROP INDEX I_BA", triggers_of_a,
                                fields_of_t_one, "DROP TRIGGER T_ONE", "ALTER TABLE T DROP A"}));
    EXPECT_EQ(columns(), (Rows{{"B"}, {"C"}}));
    EXPECT_TRUE(exists("index", "I_B"));
    EXPECT_TRUE(exists("trigger", "T_TWO"));
    EXPECT_FALSE(exists("index", "I_BA"));
}

TEST_F(DropField, TheNameGoesIntoTheStatementAsItIs) {
    watch();
    EXPECT_TRUE(yes("dropfield", "T", field("a", "C", 5)));
    EXPECT_EQ(updates(), Names{"ALTER TABLE T DROP a"});
    EXPECT_EQ(columns(), (Rows{{"B"}, {"C"}}));
}

TEST_F(DropField, AColumnThatDoesNotExistIsRaisedUnderTheNamesAsTheyWerePassed) {
    watch();
    EXPECT_FALSE(yes("dropfield", "t", field("none", "C", 5)));
    expect_raised_with_error("Erro ao deletar Campo: none Tabela: t;FB Error: ");
}

TEST_F(DropField, AColumnThatAViewUsesIsRaised) {
    execute("create view V (A) as select A from T");
    watch();
    EXPECT_FALSE(yes("dropfield", "T", field("A", "C", 5)));
    expect_raised_with_error("Erro ao deletar Campo: A Tabela: T;FB Error: ");
    EXPECT_EQ(columns().size(), 3U);
}

TEST_F(DropField, AnIndexThatFailsToDropStopsItThere) {
    execute("alter table T add K integer not null");
    execute("alter table T add constraint PK_T primary key (K)");
    watch();
    EXPECT_FALSE(yes("dropfield", "T", field("K", "N", 5)));
    expect_raised_with_error("Impossível eliminar índice; Índice: PK_T; FB Error: "_l1);
    EXPECT_EQ(updates(), Names{"DROP INDEX PK_T"});
}

TEST_F(DropField, ATriggerThatFailsToDropStopsItThereAndTheIndexesAreGone) {
    execute("create index I_A on T (A)");
    execute("alter table T add constraint CHECK_A check (A <> 'no')");
    watch();
    EXPECT_FALSE(yes("dropfield", "T", field("A", "C", 5)));
    ASSERT_EQ(errors().size(), 1U);
    ASSERT_EQ(updates().size(), 2U);
    EXPECT_EQ(updates()[0], "DROP INDEX I_A");
    const std::string trigger = updates()[1].substr(std::string("DROP TRIGGER ").size());
    expect_raised(std::string("Impossível eliminar trigger; Trigger: "_l1) + trigger +
                  "; FB Error: " + errors()[0]);
    EXPECT_EQ(columns().size(), 3U);
    EXPECT_FALSE(exists("index", "I_A"));
}

TEST_F(DropField, WithoutIndexesAndTriggersThePartsSucceed) {
    log_at(8);
    connection();
    EXPECT_TRUE(yes("dropindexbasedonfield", " t", " a "));
    EXPECT_TRUE(yes("droptriggerbasedonfield", " t", " a "));
    EXPECT_EQ(sql_log(), (Names{indexes_of_a, triggers_of_a}));
}

TEST_F(DropField, ADriverTablesOwnTriggerGoesWithTheAreaColumn) {
    create_client();
    watch();
    EXPECT_TRUE(yes("dropfield", "CLIENT", field("RDD_AREAID", "C", 50)));
    EXPECT_EQ(updates(), (Names{"DROP TRIGGER T_CLIENT_RECNO", "ALTER TABLE CLIENT DROP RDD_AREAID"}));
}

}  // namespace
}  // namespace zmfb::test
