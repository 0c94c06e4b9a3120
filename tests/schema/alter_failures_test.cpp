#include "tests/schema/refusing.h"
#include "tests/schema/schema.h"
#include "tests/support/faulty_client.h"
#include "zmfbconn/database.h"

namespace zmfb::test {
namespace {

using host::operator""_l1;

// Each step of an alteration that fails, and what it leaves.
class AlterFailures : public Schema {
  protected:
    void SetUp() override {
        create_client();
        execute("insert into CLIENT (NAME, PRICE) values ('Ana Maria', 3.5)");
    }

    bool widen() { return yes("alterfield", "client", field("name", "C", 40), field("NAME", "C", 30)); }

    [[nodiscard]] std::string columns() const {
        std::string list;
        for (const Row& row :
             rows("select rdb$field_name from rdb$relation_fields where rdb$relation_name = 'CLIENT' "
                  "order by rdb$field_position")) {
            list += row[0] + " ";
        }
        return list;
    }
};

constexpr const char* unchanged = "NAME PRICE BORN OK RDD_AREAID RECNO ";

TEST_F(AlterFailures, AddingTheAuxiliaryColumnLeavesTheTableUnchanged) {
    execute("alter table CLIENT add RDDAUX_NAME char(1)");
    watch();
    EXPECT_FALSE(widen());
    expect_raised_with_error("Erro ao adicionar Campo: RDDAUX_NAME Tabela: client;FB Error: ");
    EXPECT_EQ(updates().size(), 1U);
    EXPECT_EQ(columns(), unchanged + std::string("RDDAUX_NAME "));
}

TEST_F(AlterFailures, AnUnknownTypeStopsBeforeAnythingChangesWithoutAMessage) {
    log_at(8);
    clear_log();
    EXPECT_FALSE(yes("alterfield", "CLIENT", field("NAME", "M"), field("NAME", "C", 30)));
    EXPECT_TRUE(log_lines().empty());
}

TEST_F(AlterFailures, DescribingTheAuxiliaryColumnLeavesItWithoutADescription) {
    const Refusing client("COMMENT ON COLUMN");
    watch();
    EXPECT_FALSE(yes("alterfield", "client", field("PRICE", "N", 12, 2), field("PRICE", "N", 10, 2)));
    expect_raised_with_error("Erro na descrição do Campo: RDDAUX_PRICE Tabela: client;FB Error: "_l1);
    EXPECT_EQ(columns(), unchanged + std::string("RDDAUX_PRICE "));
    EXPECT_EQ(updates().size(), 2U);
}

TEST_F(AlterFailures, ACopyThatDoesNotFitRemovesTheAuxiliaryColumn) {
    watch();
    EXPECT_FALSE(yes("alterfield", "client", field("name", "C", 4), field("NAME", "C", 30)));
    expect_raised_with_error("Erro ao popular AuxCampo: RDDAUX_NAME Tabela: client;FB Error: ");
    EXPECT_EQ(columns(), unchanged);
    EXPECT_EQ(updates(),
              (Names{"ALTER TABLE CLIENT ADD RDDAUX_NAME CHAR(4) DEFAULT '' NOT NULL",
                     "UPDATE CLIENT SET RDDAUX_NAME = NAME", "ALTER TABLE CLIENT DROP RDDAUX_NAME"}));
    EXPECT_EQ(rows("select NAME from CLIENT"), (Rows{{"Ana Maria"}}));
}

TEST_F(AlterFailures, ACopyThatDoesNotConvertRemovesTheAuxiliaryColumn) {
    watch();
    EXPECT_FALSE(yes("alterfield", "client", field("AGE", "N", 4), field("NAME", "C", 30)));
    expect_raised_with_error("Erro ao popular AuxCampo: RDDAUX_AGE Tabela: client;FB Error: ");
    EXPECT_EQ(columns(), unchanged);
}

TEST_F(AlterFailures, AnOldColumnThatDoesNotExistFailsInTheCopy) {
    watch();
    EXPECT_FALSE(yes("alterfield", "client", field("X", "C", 4), field("NONE", "C", 30)));
    expect_raised_with_error("Erro ao popular AuxCampo: RDDAUX_X Tabela: client;FB Error: ");
    EXPECT_EQ(columns(), unchanged);
}

TEST_F(AlterFailures, DroppingTheOldColumnLeavesBothAndItsIndexesGone) {
    execute("create index I_NAME on CLIENT (NAME)");
    execute("create view V (NAME) as select NAME from CLIENT");
    watch();
    EXPECT_FALSE(widen());
    expect_raised_with_error("Erro ao deletar Campo: NAME Tabela: client;FB Error: ");
    EXPECT_EQ(columns(), unchanged + std::string("RDDAUX_NAME "));
    EXPECT_EQ(rows("select NAME, RDDAUX_NAME from CLIENT"), (Rows{{"Ana Maria", "Ana Maria"}}));
    EXPECT_FALSE(exists("index", "I_NAME"));
}

TEST_F(AlterFailures, DroppingAnIndexOfTheOldColumnLeavesBoth) {
    execute("alter table CLIENT add constraint UNIQUE_NAME unique (NAME)");
    watch();
    EXPECT_FALSE(widen());
    expect_raised_with_error("Impossível eliminar índice; Índice: UNIQUE_NAME; FB Error: "_l1);
    EXPECT_EQ(columns(), unchanged + std::string("RDDAUX_NAME "));
}

TEST_F(AlterFailures, RenamingTheAuxiliaryColumnLeavesTheDataInIt) {
    watch();
    EXPECT_FALSE(yes("alterfield", "client", field("PRICE", "C", 40), field("NAME", "C", 30)));
    expect_raised_with_error("Erro ao renomear Campo: RDDAUX_PRICE Tabela: client;FB Error: ");
    EXPECT_EQ(columns(), "PRICE BORN OK RDD_AREAID RECNO RDDAUX_PRICE ");
    EXPECT_EQ(rows("select RDDAUX_PRICE from CLIENT"), (Rows{{"Ana Maria"}}));
}

TEST_F(AlterFailures, AFieldDescriptionThatFailsLeavesTheAddedColumn) {
    const Refusing client("COMMENT ON COLUMN");
    watch();
    EXPECT_FALSE(yes("addfield", "client", field("paid", "L")));
    expect_raised_with_error("Erro na descrição do Campo: paid Tabela: client;FB Error: "_l1);
    EXPECT_EQ(columns(), unchanged + std::string("PAID "));
}

// Firebird 3.0 refuses it by itself, in these words; later ones would make a column that methods cannot read.
TEST_F(AlterFailures, ANumberOfMoreThan18DigitsIsRefusedWithoutAskingTheEngine) {
    struct Case {
        std::string method;
        std::string column;
    };
    for (const auto& [method, column] :
         std::vector<Case>{{"addfield", "WIDE"}, {"alterfield", "RDDAUX_WIDE"}}) {
        SCOPED_TRACE(method);
        watch();
        const FaultyClient client;
        const Value wide = field("WIDE", "N", 19, 2);
        EXPECT_FALSE(method == "addfield" ? yes(method, "client", wide)
                                          : yes(method, "client", wide, field("PRICE", "N", 10, 2)));
        EXPECT_EQ(client.count(ClientCall::execute_immediate), 0);
        EXPECT_EQ(updates(), Names{"ALTER TABLE CLIENT ADD " + column + " NUMERIC(19,2) DEFAULT 0 NOT NULL"});
        expect_raised_with_error("Erro ao adicionar Campo: " + column + " Tabela: client;FB Error: ");
        EXPECT_TRUE(raised()[0].ends_with("[ERROR] SQLCODE=-842 (Wrong numeric type)")) << raised()[0];
        EXPECT_TRUE(last_engine_message().ends_with("Precision must be from 1 to 18"))
            << last_engine_message();
    }
    EXPECT_EQ(columns(), unchanged);
}

TEST_F(AlterFailures, AFieldThatTheEngineRefusesIsRaised) {
    const std::string too_long(64, 'A');
    for (const std::string& name : Names{"NAME", "DATE", "TWO WORDS", "O'BRIEN", "A\"B", too_long, ""}) {
        SCOPED_TRACE(name);
        watch();
        EXPECT_FALSE(yes("addfield", "client", field(name, "C", 5)));
        expect_raised_with_error("Erro ao adicionar Campo: " + name + " Tabela: client;FB Error: ");
    }
    EXPECT_EQ(columns(), unchanged);
}

}  // namespace
}  // namespace zmfb::test
