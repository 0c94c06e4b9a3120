#include "tests/schema/schema.h"

namespace zmfb::test {
namespace {

class ExternalTable : public Schema {};

TEST_F(ExternalTable, HasTheColumnsOfTheStructureAndNothingElse) {
    watch();
    EXPECT_TRUE(yes("createtableexternal", " ext_client ", client_structure(), file("Client.dat")));
    EXPECT_EQ(updates(),
              Names{"CREATE TABLE EXT_CLIENT EXTERNAL FILE '" + file("Client.dat") +
                    "' ( NAME CHAR(30) DEFAULT '' NOT NULL,PRICE NUMERIC(10,2) DEFAULT 0 NOT NULL,BORN "
                    "TIMESTAMP DEFAULT NULL,OK CHAR(1) DEFAULT 'F' NOT NULL )"});
    EXPECT_EQ(rows("select rdb$external_file from rdb$relations where rdb$relation_name = 'EXT_CLIENT'"),
              (Rows{{file("Client.dat")}}));
    EXPECT_FALSE(yes("iszmrddtable", "EXT_CLIENT"));
    EXPECT_FALSE(exists("generator", "G_EXT_CLIENT_I"));
    EXPECT_EQ(rows("select count(*) from rdb$triggers where rdb$relation_name = 'EXT_CLIENT'"),
              (Rows{{"0"}}));
    EXPECT_EQ(rows("select count(*) from rdb$indices where rdb$relation_name = 'EXT_CLIENT'"), (Rows{{"0"}}));
}

TEST_F(ExternalTable, ARefusalIsRaisedWithItsError) {
    watch();
    EXPECT_FALSE(yes("createtableexternal", "T", array_of(field("A", "N", 19)), file("x.dat")));
    expect_raised_with_error("Error on creating External Table; FB Error: ");
}

TEST_F(ExternalTable, AQuoteInThePathBreaksTheStatement) {
    watch();
    EXPECT_FALSE(yes("createtableexternal", "T", client_structure(), file("o'brien.dat")));
    expect_raised_with_error("Error on creating External Table; FB Error: ");
}

}  // namespace
}  // namespace zmfb::test
