#include "tests/schema/schema.h"

namespace zmfb::test {
namespace {

class View : public Schema {
  protected:
    View() { execute("create table CLIENT (NAME char(10), CITY char(10))"); }
};

TEST_F(View, CreateviewFillsInNameColumnsAndSelect) {
    execute("insert into CLIENT values ('Ana', 'Rio')");
    watch();
    EXPECT_TRUE(yes("createview", " v_client ", "WHO,PLACE", "select NAME, CITY from CLIENT"));
    EXPECT_EQ(updates(), Names{"CREATE VIEW V_CLIENT (WHO,PLACE) AS select NAME, CITY from CLIENT"});
    EXPECT_EQ(rows("select WHO, PLACE from V_CLIENT"), (Rows{{"Ana", "Rio"}}));
}

TEST_F(View, AViewThatExistsOrCannotBeIsRaised) {
    execute("create view V_CLIENT (WHO) as select NAME from CLIENT");
    watch();
    EXPECT_FALSE(yes("createview", "v_client", "WHO", "select NAME from CLIENT"));
    expect_raised_with_error("Error on creating VIEW; FB Error: ");
    watch();
    EXPECT_FALSE(yes("createview", "V2", "WHO", "select NAME from NONE"));
    expect_raised_with_error("Error on creating VIEW; FB Error: ");
}

TEST_F(View, GrantaccessGrants) {
    watch();
    EXPECT_TRUE(yes("grantaccess", "SELECT, INSERT", " client ", "PUBLIC"));
    EXPECT_EQ(updates(), Names{"GRANT SELECT, INSERT ON CLIENT TO PUBLIC"});
    EXPECT_EQ(
        rows(
            "select rdb$privilege from rdb$user_privileges where rdb$relation_name = 'CLIENT' and rdb$user = "
            "'PUBLIC' order by 1"),
        (Rows{{"I"}, {"S"}}));
}

TEST_F(View, AGrantThatFailsIsRaisedWithoutTheEnginesError) {
    watch();
    EXPECT_FALSE(yes("grantaccess", "ALL", "none", "PUBLIC"));
    EXPECT_EQ(errors().size(), 1U);
    expect_raised("Error granting Privileges To:PUBLIC Target: none");
}

}  // namespace
}  // namespace zmfb::test
