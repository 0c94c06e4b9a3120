#include "tests/schema/schema.h"

namespace zmfb::test {
namespace {

using host::operator""_l1;

class Drop : public Schema {
  protected:
    Drop() {
        execute("create table THING (A char(1))");
        execute("create table OTHER (A char(1))");
        execute("create view V_THING (A) as select A from OTHER");
        execute("create index I_THING on OTHER (A)");
        execute("create trigger T_THING for OTHER active before insert position 0 as begin end");
        execute("create generator G_THING");
    }
};

// One of the single drops.
struct Single {
    std::string method;
    std::string kind;  ///< of the system table
    std::string name;
    std::string statement;
    std::string message;
};

void PrintTo(const Single& single, std::ostream* out) { *out << single.statement; }

const Single singles[] = {
    {"dropgenerator", "generator", "G_THING", "DROP GENERATOR G_THING",
     std::string("Impossível eliminar generator; Generator: "_l1)},
    {"droptrigger", "trigger", "T_THING", "DROP TRIGGER T_THING",
     std::string("Impossível eliminar trigger; Trigger: "_l1)},
    {"dropindex", "index", "I_THING", "DROP INDEX I_THING",
     std::string("Impossível eliminar índice; Índice: "_l1)},
    {"dropview", "relation", "V_THING", "DROP VIEW V_THING", std::string("Impossível eliminar View: "_l1)},
    {"droponlytable", "relation", "THING", "DROP TABLE THING",
     std::string("Impossível eliminar a Tabela: "_l1)},
};

class SingleDrop : public Drop, public ::testing::WithParamInterface<Single> {};

TEST_P(SingleDrop, DropsByTheTrimmedUpperCasedName) {
    const Single& single = GetParam();
    std::string name = " ";
    for (const char c : single.name) name += static_cast<char>(std::tolower(c));
    watch();
    EXPECT_TRUE(yes(single.method, name + "  "));
    EXPECT_EQ(updates(), Names{single.statement});
    EXPECT_FALSE(exists(single.kind, single.name));
}

TEST_P(SingleDrop, WhatDoesNotExistIsRaisedUnderItsUpperCasedName) {
    const Single& single = GetParam();
    watch();
    EXPECT_FALSE(yes(single.method, " none"));
    expect_raised_with_error(single.message + "NONE; FB Error: ");
}

TEST_P(SingleDrop, NoNameIsRefusedWithoutAStatementOrAnError) {
    const Single& single = GetParam();
    watch();
    EXPECT_FALSE(yes(single.method, ""));
    EXPECT_FALSE(yes(single.method, "   "));
    EXPECT_FALSE(yes(single.method));
    EXPECT_TRUE(log_lines().empty());
}

INSTANTIATE_TEST_SUITE_P(Kinds, SingleDrop, ::testing::ValuesIn(singles),
                         [](const auto& info) { return info.param.method; });

TEST_F(Drop, DroponlytableLeavesTheGenerators) {
    create_client();
    watch();
    EXPECT_TRUE(yes("droponlytable", "client"));
    EXPECT_TRUE(exists("generator", "G_CLIENT_I"));
    EXPECT_TRUE(exists("generator", "G_CLIENT_D"));
    EXPECT_FALSE(exists("trigger", "T_CLIENT_RECNO"));
    EXPECT_FALSE(exists("index", "CLIENT_RECNO_DESC"));
}

}  // namespace
}  // namespace zmfb::test
