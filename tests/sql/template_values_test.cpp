// A value that is no text never leaves a hole in a statement: every method that fills a template is called
// with such a value in each place, and what it sends is held against what a call with good values sends.
#include <algorithm>
#include <set>

#include "tests/support/database.h"

namespace zmfb::test {
namespace {

using host::array_of;
using host::Value;

// A call with good values, and the places of those that go into templates.
struct GoodCall {
    std::string method;
    std::vector<Value> arguments;
    std::vector<std::size_t> places;
};

Value field(const char* name) { return array_of(name, "C", 5, 0); }

std::vector<GoodCall> lock_calls() {
    const std::string area = "CLIENT:1:11:alpha";
    return {{"settableusedbyarea", {true, "client", area, true}, {1, 2}},
            {"istableusedbyarea", {"client", area}, {0, 1}},
            {"istableinuse", {"client"}, {0}},
            {"istableinexclusivemode", {"client"}, {0}},
            {"getapprecnofromarea", {"client", area}, {0, 1}},
            {"setrecordaslocked", {"client", area, "1"}, {0, 1, 2}},
            {"getrlockareaid", {"client", "1"}, {0, 1}},
            {"isrecordlocked", {"client", area, "1"}, {0, 2}},
            {"isrecordlockedbyuser", {"client", area, "1"}, {0, 2}},
            {"isrecordlockedbyanotheruser", {"client", area, "1"}, {0, 2}},
            {"existsuserrlocks", {"client", area}, {0, 1}},
            {"existsanotheruserrlocks", {"client", area}, {0, 1}},
            {"getlockedrecords", {"client", area}, {0, 1}},
            {"setrecordasunlocked", {"client", area, "1"}, {0, 2}},
            {"unlockallrecords", {"client", area}, {0, 1}},
            {"settableaslocked", {"client", area}, {0, 1}},
            {"getflockareaid", {"client"}, {0}},
            {"istablelockedbyuser", {"client", area}, {0}},
            {"existsanotheruserflock", {"client", area}, {0}},
            {"settableasunlocked", {"client", area}, {0}},
            {"releaselocks", {"client"}, {0}}};
}

std::vector<GoodCall> question_calls() {
    return {{"counttablerecords", {"client"}, {0}},
            {"gettablenumberofinserts", {"client"}, {0}},
            {"gettablereccount", {"client"}, {0}},
            {"getfieldsontrigger", {"t_client_recno"}, {0}}};
}

// In an order in which each finds what it works on.
std::vector<GoodCall> schema_calls(const std::string& data_file) {
    return {{"createtable", {"made", array_of(field("A"))}, {0}},
            {"createtableexternal", {"outside", array_of(field("A")), data_file}, {0, 2}},
            {"createview", {"v_made", "A", "select A from MADE"}, {0, 1, 2}},
            {"grantaccess", {"select", "made", "public"}, {0, 1, 2}},
            {"addfield", {"made", field("B")}, {0}},
            {"addlimbofield", {"made", array_of(field("C")), 1}, {0}},
            {"renamefield", {"made", "B", "D"}, {0, 1, 2}},
            {"setfieldposition", {"made", field("D"), 1}, {0}},
            {"alterfield", {"made", field("D"), field("D")}, {0}},
            {"dropindexbasedonfield", {"made", "D"}, {0, 1}},
            {"droptriggerbasedonfield", {"made", "D"}, {0, 1}},
            {"dropfield", {"made", field("D")}, {0}},
            {"deleterecord", {"made", "1"}, {0, 1}},
            {"deleteallrecords", {"made"}, {0}},
            {"dropviewsfromtable", {"made"}, {0}},
            {"droponlytable", {"outside"}, {0}},
            {"dropindex", {"made_recno_desc"}, {0}},
            {"droptrigger", {"t_made_deletes"}, {0}},
            {"dropgenerator", {"g_made_d"}, {0}},
            {"createview", {"v_made", "A", "select A from MADE"}, {0, 1, 2}},
            {"dropview", {"v_made"}, {0}},
            {"droptable", {"client"}, {0}}};
}

class TemplateValues : public Database {
  protected:
    TemplateValues() {
        call("createtable", "client", array_of(field("NAME")));
        log_at(8);
    }

    // What the call sends.
    std::vector<std::string> sent(const std::string& method, const std::vector<Value>& arguments) {
        clear_log();
        connection().call_with(method, host::Args(arguments));
        return sql_log();
    }

    // The good call comes last: it is the one that changes something.
    void hold_against_the_good_call(const GoodCall& good) {
        SCOPED_TRACE(good.method);
        std::set<std::string> seen;
        for (const std::size_t place : good.places) {
            for (const Value& wrong : {Value(), Value(7)}) {
                std::vector<Value> arguments = good.arguments;
                arguments[place] = wrong;
                forget_raised();
                const std::vector<std::string> statements = sent(good.method, arguments);
                // An empty array, an empty name: some methods do nothing for what is empty.
                EXPECT_TRUE(!raised().empty() || statements.empty()) << "place " << place;
                seen.insert(statements.begin(), statements.end());
            }
        }
        forget_raised();
        const std::vector<std::string> whole = sent(good.method, good.arguments);
        EXPECT_TRUE(raised().empty());
        EXPECT_FALSE(whole.empty());
        for (const std::string& statement : seen) {
            EXPECT_NE(std::ranges::find(whole, statement), whole.end()) << statement;
        }
    }
};

TEST_F(TemplateValues, AreNamedByThePlaceholderThatTheyAreFor) {
    connection();
    EXPECT_FALSE(call("setrecordaslocked", "client", "CLIENT:1:11:alpha", 7).logical());
    EXPECT_EQ(raised().front(), "Argument error: STRTRAN of @@RECNO");
}

TEST_F(TemplateValues, OfTheLocksAreTextsOrRaised) {
    for (const GoodCall& good : lock_calls()) hold_against_the_good_call(good);
}

TEST_F(TemplateValues, OfQuestionsAreTextsOrRaised) {
    for (const GoodCall& good : question_calls()) hold_against_the_good_call(good);
}

TEST_F(TemplateValues, OfTheSchemaAreTextsOrRaised) {
    for (const GoodCall& good : schema_calls(file("outside.dat"))) hold_against_the_good_call(good);
}

// Every method is called with such a value in each place: those where a template refuses it are held against
// their good calls above.
TEST_F(TemplateValues, OfNoMethodAreLeftOut) {
    std::set<std::string> known;
    for (const auto& calls : {lock_calls(), question_calls(), schema_calls(file("outside.dat"))}) {
        for (const GoodCall& good : calls) known.insert(good.method);
    }
    const std::vector<Value> companions{"CLIENT", "NAME", "1", "1", "1", "1"};
    std::size_t refused = 0;
    for (const MethodRow& row : methods()) {
        if (row.kind == MethodKind::assign || row.name == "disconnect" || row.name == "axit") continue;
        for (std::size_t place = 0; place < row.parameters.size(); ++place) {
            std::vector<Value> arguments = companions;
            arguments[place] = 7;
            forget_raised();
            connection().call_with(row.name, host::Args(arguments));
            const bool by_a_template = std::ranges::any_of(raised(), [](const std::string& text) {
                return text.starts_with("Argument error: STRTRAN of @@");
            });
            refused += by_a_template ? 1 : 0;
            EXPECT_TRUE(!by_a_template || known.contains(std::string(row.name))) << row.name;
        }
        EXPECT_TRUE(call("istable", "CLIENT").logical()) << row.name;
    }
    EXPECT_GT(refused, 0U);
}

}  // namespace
}  // namespace zmfb::test
