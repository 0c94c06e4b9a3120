#include "host/class.h"

#include <gtest/gtest.h>

#include <array>
#include <stdexcept>
#include <string>
#include <vector>

#include "errors.h"
#include "host/error.h"
#include "values.h"

namespace zmfb::host {
namespace {

using host_test::CaughtErrors;
using host_test::is_same;

// What the routines below noted, cleared by each test.
std::vector<std::string> noted;
Value handed_out;

enum Slot : std::size_t {
    open_slot,
    protected_slot,
    hidden_slot,
    both_property,
    both_slot,
    readable_property,
    readable_slot
};

Value nil() { return {}; }
Value text() { return "default"; }
Value list() { return array_of(); }

constexpr std::array variables{
    Variable{.name = "open", .visibility = Visibility::exported, .initial = text},
    Variable{.name = "guarded", .visibility = Visibility::protected_, .initial = text},
    Variable{.name = "secret", .visibility = Visibility::hidden, .initial = list},
    Variable{.name = "both", .visibility = Visibility::property, .initial = nil},
    Variable{.name = "both", .visibility = Visibility::hidden, .initial = text},
    Variable{.name = "readable", .visibility = Visibility::property, .initial = nil},
    Variable{.name = "readable", .visibility = Visibility::hidden, .initial = text},
};

Value note_end(Instance&, Args) {
    noted.emplace_back("axit");
    return true;
}

Value get_both(Instance& self, Args) { return self.variable(both_slot); }
Value set_both(Instance& self, Args args) { return self.variable(both_slot) = args[0]; }
Value get_readable(Instance& self, Args) { return self.variable(readable_slot); }

Value count_args(Instance&, Args args) {
    EXPECT_TRUE(args[args.size()].is_nil());
    return args.size();
}

Value unknown(Instance&, Args args) {
    noted.emplace_back(args[0].text());
    return "nomethod answered";
}

Value set_secret(Instance& self, Args args) { return self.variable(hidden_slot) = args[0]; }

constexpr Method row(std::string_view name, MethodKind kind, Routine routine) {
    return {.name = name, .parameters = 0, .kind = kind, .routine = routine};
}

constexpr std::array methods{
    row("axit", MethodKind::exported, note_end),       row("both", MethodKind::access, get_both),
    row("both", MethodKind::assign, set_both),         row("count", MethodKind::exported, count_args),
    row("inner", MethodKind::protected_, count_args),  row("nomethod", MethodKind::exported, unknown),
    row("readable", MethodKind::access, get_readable), row("setsecret", MethodKind::protected_, set_secret),
};

const Class thing("thing", variables, methods);

class Things : public testing::Test {
  protected:
    void SetUp() override { noted.clear(); }
    static Value make(const Class& type = thing) { return Value(new Instance(type)); }
};

TEST_F(Things, VariablesBeginWithTheirDefaults) {
    const Value first = make();
    auto& instance = static_cast<Instance&>(*first.object());
    EXPECT_TRUE(is_same(instance.variable(open_slot), "default"));
    EXPECT_TRUE(is_same(instance.variable(hidden_slot), array_of()));
    const Value second = make();
    auto& other = static_cast<Instance&>(*second.object());
    EXPECT_FALSE(instance.variable(hidden_slot).same(other.variable(hidden_slot)));
    EXPECT_EQ(instance.class_name(), "thing");
}

TEST_F(Things, MethodsAreCalledByName) {
    const Value object = make();
    const Value args[] = {1, 2, 3};
    EXPECT_TRUE(is_same(object.object()->send("count", args), 3));
    EXPECT_TRUE(is_same(object.object()->send("count", {}), 0));
}

TEST_F(Things, AMethodIsFoundInAnyCaseOfLetters) {
    const Value args[] = {1, 2};
    for (const char* name : {"Count", "COUNT", "coUnt"}) {
        EXPECT_TRUE(is_same(make().object()->send(name, args), 2)) << name;
    }
}

TEST_F(Things, AProtectedMethodIsNotRefused) { EXPECT_TRUE(is_same(make().object()->send("inner", {}), 0)); }

TEST_F(Things, AnUnknownNameGoesToNomethod) {
    const Value object = make();
    EXPECT_TRUE(is_same(object.object()->send("frobnicate", {}), "nomethod answered"));
    EXPECT_TRUE(is_same(object.object()->send("Frobnicate", {}), "nomethod answered"));
    EXPECT_TRUE(is_same(object.object()->send("", {}), "nomethod answered"));
    EXPECT_EQ(noted, (std::vector<std::string>{"frobnicate", "Frobnicate", ""}));
}

TEST_F(Things, AClassWithoutNomethodRaises) {
    const Class bare("bare", {}, {});
    const Value object = make(bare);
    CaughtErrors caught("substitute");
    EXPECT_TRUE(is_same(object.object()->send("frobnicate", {}), "substitute"));
    EXPECT_EQ(caught.number("gencode"), 13);
    EXPECT_EQ(caught.text("description"), "No exported method: frobnicate");
}

TEST_F(Things, ExportedVariablesAreReadAndAssigned) {
    const Value object = make();
    object.object()->set("open", 5);
    EXPECT_TRUE(is_same(object.object()->get("open"), 5));
}

TEST_F(Things, PropertiesGoThroughTheirMethods) {
    const Value object = make();
    EXPECT_TRUE(is_same(object.object()->get("both"), "default"));
    object.object()->set("both", "assigned");
    EXPECT_TRUE(is_same(object.object()->get("both"), "assigned"));
    auto& instance = static_cast<Instance&>(*object.object());
    EXPECT_TRUE(instance.variable(both_property).is_nil());
    EXPECT_TRUE(is_same(instance.variable(both_slot), "assigned"));
    EXPECT_EQ(thing.find_variable("both"), both_slot);
}

TEST_F(Things, WhatIsNotExportedIsRefused) {
    const Value object = make();
    CaughtErrors caught;
    for (const char* name : {"guarded", "secret", "nosuch"}) {
        EXPECT_TRUE(object.object()->get(name).is_nil());
        object.object()->set(name, 5);
        EXPECT_EQ(caught.take_count(), 2) << name;
        EXPECT_EQ(caught.number("gencode"), 16);
        EXPECT_EQ(caught.text("description"), "No exported variable: " + std::string(name));
    }
    object.object()->set("readable", 5);
    EXPECT_EQ(caught.take_count(), 1);
    EXPECT_TRUE(is_same(object.object()->get("readable"), "default"));
}

TEST_F(Things, TableFindsTheFirstRowOfAName) {
    EXPECT_EQ(thing.find_method("both"), 1U);
    EXPECT_EQ(thing.find_assign("both"), 2U);
    EXPECT_EQ(thing.find_assign("readable"), Class::none);
    EXPECT_EQ(thing.find_method("zzz"), Class::none);
    EXPECT_EQ(thing.find_method(""), Class::none);
    EXPECT_EQ(thing.find_variable("nosuch"), Class::none);
    EXPECT_EQ(kind_name(MethodKind::protected_), "protected");
    EXPECT_EQ(kind_name(MethodKind::access), "access");
}

// What tells names apart in the table is the same for these: the length, and the letters at the beginning, in
// the middle and at the end.
TEST_F(Things, TableFindsNamesThatAreMuchAlike) {
    constexpr std::array rows{
        row("abc_de_f", MethodKind::exported, count_args),
        row("axc_dy_f", MethodKind::exported, count_args),
        row("axx_dy_f", MethodKind::exported, count_args),
    };
    const Class alike("ALIKE", {}, rows);
    for (std::size_t i = 0; i < rows.size(); ++i) EXPECT_EQ(alike.find_method(rows[i].name), i);
    EXPECT_EQ(alike.find_method("ayc_dz_f"), Class::none);
    EXPECT_EQ(alike.find_method(""), Class::none);
    EXPECT_EQ(Class("EMPTY", {}, {}).find_method("abc_de_f"), Class::none);
}

TEST_F(Things, AxitRunsOnceWhenTheLastReferenceGoes) {
    Value object = make();
    Value list = array_of(object, object);
    object = {};
    EXPECT_TRUE(noted.empty());
    list[1] = {};
    EXPECT_TRUE(noted.empty());
    list = {};
    EXPECT_EQ(noted, (std::vector<std::string>{"axit"}));
}

TEST_F(Things, AnObjectLivesThroughACallThatDropsIt) {
    static Value only;
    static constexpr std::array dropping{row("axit", MethodKind::exported, note_end),
                                         row("drop", MethodKind::exported, [](Instance& self, Args) -> Value {
                                             only = {};
                                             EXPECT_TRUE(noted.empty());
                                             return self.variable(open_slot);
                                         })};
    static const Class type("dropping", variables, dropping);
    only = make(type);
    EXPECT_TRUE(is_same(only.object()->send("drop", {}), "default"));
    EXPECT_EQ(noted, (std::vector<std::string>{"axit"}));
}

TEST_F(Things, AxitMayHandOutAReference) {
    static constexpr std::array surviving{
        row("axit", MethodKind::exported, [](Instance& self, Args) -> Value {
            noted.emplace_back("axit");
            if (noted.size() == 1) handed_out = Value(&self);
            return true;
        })};
    static const Class type("surviving", variables, surviving);
    Value object = make(type);
    object.object()->set("open", "a text longer than fourteen");
    object = {};
    ASSERT_TRUE(handed_out.is(Kind::object));
    EXPECT_TRUE(is_same(handed_out.object()->get("open"), "a text longer than fourteen"));
    handed_out = {};
    EXPECT_EQ(noted, (std::vector<std::string>{"axit", "axit"}));
}

TEST_F(Things, AxitMayUseItsObjectAndThrow) {
    static constexpr std::array throwing{row("axit", MethodKind::exported, [](Instance& self, Args) -> Value {
        const Value passing(&self);
        noted.emplace_back(self.send("nosuch", {}).is_nil() ? "raised" : "");
        throw std::runtime_error("stays in here");
    })};
    static const Class type("throwing", variables, throwing);
    const CaughtErrors caught;
    Value object = make(type);
    object = {};
    EXPECT_EQ(noted, (std::vector<std::string>{"raised"}));
}

TEST_F(Things, ObjectsInNestedArraysEndWithThem) {
    Value nested = array_of(make());
    for (int i = 0; i < 1000; ++i) nested = array_of(std::move(nested), make());
    nested = {};
    EXPECT_EQ(noted.size(), 1001U);
}

TEST_F(Things, AnObjectMayHoldTheLastReferenceToAnother) {
    Value outer = make();
    outer.object()->set("open", make());
    outer = {};
    EXPECT_EQ(noted, (std::vector<std::string>{"axit", "axit"}));
}

TEST_F(Things, ANullObjectIsNil) { EXPECT_TRUE(Value(static_cast<Object*>(nullptr)).is_nil()); }

}  // namespace
}  // namespace zmfb::host
