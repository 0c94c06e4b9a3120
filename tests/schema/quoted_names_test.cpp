// Views, indexes and triggers whose names need quotes. Anybody who may make one chooses its name, and what
// the unquoted name means is another object, perhaps of somebody else, or none.
#include "tests/schema/schema.h"

namespace zmfb::test {
namespace {

using host::operator""_l1;

class QuotedNames : public Schema {
  protected:
    QuotedNames() {
        execute("create table T (A char(5))");
        execute("create table VICTIM (A char(5))");
        // What the odd names would mean without their quotes.
        execute("create view INNOCENT (A) as select A from VICTIM");
        execute("create index I_INNOCENT on VICTIM (A)");
        execute("create trigger T_INNOCENT for VICTIM before insert as begin end");
    }

    // Expects that the method drops nothing once the statement has made something named `name`.
    void expect_refusal(const std::string& made, const std::string& name, std::string_view method) {
        SCOPED_TRACE(std::string(method) + " and " + name);
        disconnect();
        execute(made);
        const Rows before = objects();
        watch();
        EXPECT_FALSE(method == "droptable" ? yes(method, "T") : yes(method, "T", "A"));
        expect_raised(std::string("Impossível eliminar dependente: "_l1) + name + ";O nome exige aspas");
        EXPECT_EQ(updates(), Names{});
        EXPECT_EQ(objects(), before);
    }

  private:
    [[nodiscard]] Rows objects() const {
        return rows(
            "select rdb$relation_name from rdb$relations union all select rdb$index_name from rdb$indices "
            "union "
            "all select rdb$trigger_name from rdb$triggers union all select rdb$generator_name from "
            "rdb$generators order by 1");
    }
};

struct OddName {
    std::string quoted;
    std::string bytes;
};

const std::vector<OddName> odd_names{{"\"innocent\"", "innocent"},       {"\"INNOCENT --\"", "INNOCENT --"},
                                     {"\" INNOCENT\"", " INNOCENT"},     {"\"INNOCENT;\"", "INNOCENT;"},
                                     {"\"IN\"\"NOCENT\"", "IN\"NOCENT"}, {"\"I' OR ''='\"", "I' OR ''='"},
                                     {"\"_INNOCENT\"", "_INNOCENT"},     {"\"9\"", "9"},
                                     {"\"\xC3\x81GUA\"", "\xC3\x81GUA"}, {"\"IN\tNOCENT\"", "IN\tNOCENT"}};

TEST_F(QuotedNames, AViewOfSuchANameKeepsTheTable) {
    execute("create view V_A (A) as select A from T");  // comes first, and stays
    for (const OddName& odd : odd_names) {
        expect_refusal("create view " + odd.quoted + " (A) as select A from T", odd.bytes, "droptable");
        disconnect();
        execute("drop view " + odd.quoted);
    }
    EXPECT_TRUE(yes("dropviewsfromtable", "T"));
    EXPECT_FALSE(exists("relation", "V_A"));
    EXPECT_TRUE(exists("relation", "INNOCENT"));
}

TEST_F(QuotedNames, EveryOtherCharacterNeedsNone) {
    const char* const plain[] = {"AZ_$09", "Z"};
    for (const char* name : plain) execute(std::string("create view ") + name + " (A) as select A from T");
    EXPECT_TRUE(yes("dropviewsfromtable", "T"));
    for (const char* name : plain) EXPECT_FALSE(exists("relation", name)) << name;
}

TEST_F(QuotedNames, AnIndexOfSuchANameKeepsTheOthers) {
    execute("create index I_A on T (A)");
    for (const OddName& odd : odd_names) {
        expect_refusal("create index " + odd.quoted + " on T (A)", odd.bytes, "dropindexbasedonfield");
        disconnect();
        execute("drop index " + odd.quoted);
    }
    EXPECT_TRUE(yes("dropindexbasedonfield", "T", "A"));
    EXPECT_FALSE(exists("index", "I_A"));
}

TEST_F(QuotedNames, ATriggerOfSuchANameKeepsTheOthersAndIsAskedNothing) {
    execute("create trigger T_A for T before insert as begin new.A = ''; end");
    execute("create generator MOVED");
    for (const OddName& odd : odd_names) {
        expect_refusal("create trigger " + odd.quoted + " for T before update as begin new.A = ''; end",
                       odd.bytes, "droptriggerbasedonfield");
        disconnect();
        execute("drop trigger " + odd.quoted);
    }
    expect_refusal("create trigger \"' OR GEN_ID(MOVED,1)>0--\" for T before update as begin new.A = ''; end",
                   "' OR GEN_ID(MOVED,1)>0--", "droptriggerbasedonfield");
    EXPECT_EQ(rows("select gen_id(MOVED, 0) from rdb$database"), (Rows{{"0"}}));
}

}  // namespace
}  // namespace zmfb::test
