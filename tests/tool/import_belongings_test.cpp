// What belongs to a table that an import replaces: it comes back, or is named before the question, or the
// table stays.
#include "tests/support/dbf_builder.h"
#include "tests/support/environment.h"
#include "tests/tool/first_row.h"
#include "tests/tool/tool.h"

namespace zmfb::test {
namespace {

struct Belonging {
    std::string name;
    std::vector<std::string> made;  // the statements
    std::string again;              // a query that counts it: 1 when it is there
    std::string named;              // how the question names it when it cannot come back; "" when it comes
    std::string refused = {};       // why the table is not replaced; "" when it is
};

std::ostream& operator<<(std::ostream& out, const Belonging& one) { return out << one.name; }

class ImportBelongings : public Tool, public testing::WithParamInterface<Belonging> {
  protected:
    ImportBelongings() : path(database()) {
        DbfBuilder()
            .field("NAME", 'C', 8)
            .field("AGE", 'N', 3)
            .record({"Ana", "1"})
            .write(file("people.dbf"));
        EXPECT_EQ(on(path, {"import", file("people.dbf")}).status, 0);
        DbfBuilder().field("NAME", 'C', 8).record({"Bob"}).record({"Eva"}).write(file("people.dbf"));
    }
    [[nodiscard]] std::string answer(const std::string& question) const {
        return first_row(on(path, {"query", "--mode", "csv", question}));
    }
    std::string path;
};

std::string index_with(const std::string& condition) {
    return "select count(*) from rdb$indices where rdb$relation_name = 'PEOPLE' and rdb$index_name = 'ONE' "
           "and " +
           condition;
}
std::string right_with(const std::string& condition) {
    return "select count(*) from rdb$user_privileges where rdb$user <> rdb$grantor and " + condition;
}

TEST_P(ImportBelongings, ComeBackOrAreNamedOrKeepTheTable) {
    const Belonging& one = GetParam();
    for (const std::string& statement : one.made) exec(path, statement);
    EXPECT_EQ(answer(one.again), "1");
    const std::vector<std::string> words{"import", file("people.dbf"), "--replace"};
    const Finished asked = on(path, words, "y\n");
    if (!one.refused.empty()) {
        EXPECT_EQ(asked.status, 1);
        EXPECT_NE(asked.err.find(one.refused), std::string::npos) << asked.err;
        EXPECT_EQ(answer("select count(*) from people where age = 1"), "1");
        EXPECT_EQ(answer(one.again), "1");
        return;
    }
    ASSERT_EQ(asked.status, 0) << asked.err;
    EXPECT_TRUE(asked.err.starts_with("Drop the table PEOPLE with its 1 record" +
                                      (one.named.empty() ? "" : ", " + one.named) + "? [y/N] "))
        << asked.err;
    EXPECT_EQ(asked.out.find("not made again"), std::string::npos) << asked.out;
    EXPECT_EQ(answer("select count(*) from people"), "2");
    EXPECT_EQ(answer(one.again), one.named.empty() ? "1" : "0");
}

const Belonging all_belongings[] = {
    {"AUniqueIndex", {"create unique index one on people (name)"}, index_with("rdb$unique_flag = 1"), ""},
    {"ADescendingIndex",
     {"create descending index one on people (name)"},
     index_with("rdb$index_type = 1"),
     ""},
    {"AnIndexByAnExpression",
     {"create index one on people computed by (upper(name))"},
     index_with("rdb$expression_source is not null"),
     ""},
    {"AnIndexOfTwoFields",
     {"create index one on people (name, recno)"},
     index_with("rdb$segment_count = 2"),
     ""},
    {"AnIndexOnAFieldThatIsNoMore", {"create index one on people (age)"}, index_with("1 = 1"), "index ONE"},
    {"AnExpressionOfAFieldThatIsNoMore",
     {"create index one on people computed by (age + 1)"},
     index_with("1 = 1"),
     "index ONE"},
    {"AnIndexThatIsNotActive",
     {"create index one on people (name)", "alter index one inactive"},
     index_with("rdb$index_inactive = 1"),
     "index ONE"},
    {"AConstraint",
     {"alter table people add constraint one unique (name)"},
     "select count(*) from rdb$relation_constraints where rdb$constraint_name = 'ONE'",
     "constraint ONE"},
    {"ACheck",
     {"alter table people add constraint one check (age < 100)"},
     "select count(*) from rdb$relation_constraints where rdb$constraint_name = 'ONE'",
     "constraint ONE"},
    {"AForeignKeyOfItsOwn",
     {"create table cities (code integer primary key)", "alter table people add city integer",
      "alter table people add constraint one foreign key (city) references cities (code)"},
     "select count(*) from rdb$relation_constraints where rdb$constraint_name = 'ONE'",
     "constraint ONE"},
    {"AForeignKeyToIt",
     {"create table visits (who double precision references people (recno))"},
     "select count(*) from rdb$relations where rdb$relation_name = 'VISITS'",
     "",
     "the table PEOPLE cannot be replaced: it is in use by table VISITS"},
    {"ATrigger",
     {"create trigger one for people inactive after update position 7 as begin post_event 'it''s'; end"},
     "select count(*) from rdb$triggers where rdb$trigger_name = 'ONE' and rdb$trigger_inactive = 1 and "
     "rdb$trigger_sequence = 7 and rdb$trigger_type = 4",
     ""},
    {"ATriggerOnAFieldThatIsNoMore",
     {"create trigger one for people before update as begin new.age = 1; end"},
     "select count(*) from rdb$triggers where rdb$trigger_name = 'ONE'",
     "trigger ONE"},
    {"AView",
     {"create view one (who) as select name from people where recno > 0 with check option"},
     "select count(*) from rdb$relation_fields where rdb$relation_name = 'ONE' and rdb$field_name = 'WHO'",
     ""},
    {"AViewOfAFieldThatIsNoMore",
     {"create view one as select age from people"},
     "select count(*) from rdb$relations where rdb$relation_name = 'ONE'",
     "view ONE"},
    {"AViewOnAView",
     {"create view one as select name from people", "create view other as select name from one"},
     "select count(*) from rdb$relations where rdb$relation_name = 'ONE'",
     "",
     "the table PEOPLE cannot be replaced: it is in use by view OTHER"},
    {"AProcedure",
     {"create procedure one as declare n integer; begin select count(*) from people into n; end"},
     "select count(*) from rdb$procedures where rdb$procedure_name = 'ONE'",
     "",
     "the table PEOPLE cannot be replaced: it is in use by procedure ONE"},
    {"ARightToPassOn",
     {"grant select on people to anna with grant option"},
     right_with("rdb$user = 'ANNA' and rdb$grant_option = 1"),
     ""},
    {"ARightOfEverybody", {"grant select on people to public"}, right_with("rdb$user = 'PUBLIC'"), ""},
    {"ARightOfARole",
     {"create role clerks", "grant update on people to clerks"},
     right_with("rdb$user = 'CLERKS' and rdb$user_type = 13 and rdb$privilege = 'U'"),
     ""},
    {"ARightOnAField",
     {"grant update (name) on people to otto"},
     right_with("rdb$user = 'OTTO' and rdb$field_name = 'NAME'"),
     ""},
    {"ARightOnAFieldThatIsNoMore",
     {"grant update (age) on people to otto"},
     right_with("rdb$user = 'OTTO'"),
     "a right of OTTO"},
    {"ARightOnAView",
     {"create view one as select name from people", "grant select on one to otto"},
     right_with("rdb$user = 'OTTO' and rdb$relation_name = 'ONE'"),
     ""},
    {"ARightOnItsGenerator",
     {"grant usage on generator G_PEOPLE_I to otto"},
     right_with("rdb$user = 'OTTO' and rdb$object_type = 14"),
     ""},
    {"ARightOfItsTrigger",
     {"grant usage on generator G_PEOPLE_I to trigger T_PEOPLE_RECNO"},
     right_with("rdb$user = 'T_PEOPLE_RECNO'"),
     ""},
};

INSTANTIATE_TEST_SUITE_P(OfAllKinds, ImportBelongings, testing::ValuesIn(all_belongings),
                         [](const auto& info) { return info.param.name; });

}  // namespace
}  // namespace zmfb::test
