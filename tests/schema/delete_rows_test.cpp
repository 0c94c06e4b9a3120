#include "tests/schema/schema.h"

namespace zmfb::test {
namespace {

class DeleteRows : public Schema {
  protected:
    void SetUp() override {
        create_client();
        for (const char* name : {"A", "B", "C"}) {
            execute(std::string("insert into CLIENT (NAME) values ('") + name + "')");
        }
    }

    [[nodiscard]] Rows names() const { return rows("select NAME from CLIENT order by RECNO"); }
};

TEST_F(DeleteRows, DeleterecordDeletesTheRowOfThatNumber) {
    watch();
    EXPECT_TRUE(yes("deleterecord", "client", "2"));
    EXPECT_EQ(updates(), Names{"DELETE FROM CLIENT WHERE RECNO = 2"});
    EXPECT_EQ(names(), (Rows{{"A"}, {"C"}}));
}

TEST_F(DeleteRows, ANumberThatDoesNotExistDeletesNothingAndIsASuccess) {
    EXPECT_TRUE(yes("deleterecord", "CLIENT", "99"));
    EXPECT_EQ(names().size(), 3U);
}

TEST_F(DeleteRows, ADeletionThatFailsIsRaised) {
    watch();
    EXPECT_FALSE(yes("deleterecord", "none", "2"));
    expect_raised_with_error("Erro ao deletar registro; Tabela: none Recno: 2;FB Error: ");
    watch();
    EXPECT_FALSE(yes("deleterecord", "client", "two"));
    expect_raised_with_error("Erro ao deletar registro; Tabela: client Recno: two;FB Error: ");
}

TEST_F(DeleteRows, DeleteallrecordsEmptiesTheTableAndRecordNumbersGoOn) {
    watch();
    EXPECT_TRUE(yes("deleteallrecords", "client"));
    EXPECT_EQ(updates(), Names{"DELETE FROM CLIENT"});
    EXPECT_EQ(call("gettablereccount", "CLIENT").number(), 0);
    execute("insert into CLIENT (NAME) values ('D')");
    EXPECT_EQ(rows("select NAME, cast(RECNO as integer) from CLIENT"), (Rows{{"D", "4"}}));
    EXPECT_EQ(call("gettablereccount", "CLIENT").number(), 1);
}

TEST_F(DeleteRows, DeleteallrecordsOfAnEmptyTableIsASuccess) {
    EXPECT_TRUE(yes("deleteallrecords", "CLIENT"));
    EXPECT_TRUE(yes("deleteallrecords", "CLIENT"));
}

TEST_F(DeleteRows, DeleteallrecordsOfWhatDoesNotExistIsRaised) {
    watch();
    EXPECT_FALSE(yes("deleteallrecords", "none"));
    expect_raised_with_error("Erro ao zerar tabela; Tabela: none;FB Error: ");
}

}  // namespace
}  // namespace zmfb::test
