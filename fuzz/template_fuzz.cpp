// The statement templates: filled with any values, and in every method that sends one, over an engine whose
// answers are made up.
#include <algorithm>
#include <string>
#include <vector>

#include "conn/class.h"
#include "conn/self.h"
#include "fuzz/fuzz.h"
#include "host/class.h"
#include "host/text.h"

namespace zmfb::fuzz {
namespace {

using host::Kind;

constexpr std::size_t most_pairs = 5;
constexpr std::size_t most_statements = 400;

// Those that fill templates; none of them meets a file or a screen.
constexpr std::string_view methods[] = {
    "addfield",
    "addlimbofield",
    "alterfield",
    "clearsystemtables",
    "counttablerecords",
    "createtable",
    "createtableexternal",
    "createtableofflocks",
    "createtableofopn",
    "createtableofrlocks",
    "createview",
    "deleteallrecords",
    "deleterecord",
    "dropfield",
    "dropgenerator",
    "dropindex",
    "dropindexbasedonfield",
    "droponlytable",
    "droptable",
    "droptrigger",
    "droptriggerbasedonfield",
    "dropview",
    "dropviewsfromtable",
    "execregex",
    "executeudfskippad",
    "existsanotheruserflock",
    "existsanotheruserrlocks",
    "existsuserrlocks",
    "extracmatrixoftable",
    "filternormalfields",
    "filterrddfields",
    "getapprecnofromarea",
    "getfielddescription",
    "getfieldsontrigger",
    "getfirstrows",
    "getflockareaid",
    "getindexdescription",
    "getindexfields",
    "getinternaltablestruct",
    "getlockedrecords",
    "getlockedtables",
    "getrlockareaid",
    "getrow",
    "gettabledescription",
    "gettablenumberofinserts",
    "gettablereccount",
    "gettablesname",
    "gettablestruct",
    "getuniqueareaid",
    "grantaccess",
    "isfieldinstru",
    "isfieldoftable",
    "isindex",
    "isindexoftable",
    "islimbofield",
    "isrecordlocked",
    "isrecordlockedbyanotheruser",
    "isrecordlockedbyuser",
    "istable",
    "istableinexclusivemode",
    "istableinuse",
    "istablelockedbyuser",
    "istableusedbyarea",
    "istrigger",
    "istriggeroftable",
    "isudf",
    "isview",
    "iszmrddtable",
    "releaselocks",
    "renamefield",
    "setfielddescription",
    "setfieldposition",
    "setindexdescription",
    "setrecordaslocked",
    "setrecordasunlocked",
    "settableaslocked",
    "settableasunlocked",
    "settabledescription",
    "settableusedbyarea",
    "unlockallrecords",
};

std::vector<std::string> statements;
std::size_t raised_before = 0;
Input* answers = nullptr;

void note(const Value& statement) {
    require(statement.is(Kind::character) || raised() > raised_before, "what is no text was refused");
    if (statement.is(Kind::character)) statements.emplace_back(statement.text());
    require(statements.size() < most_statements, "a call comes to its end");
}

Value invented_rows(Self&, Args args) {
    note(args[0]);
    Value result = Value::array_of_size(0);
    const std::size_t rows = answers->below(4);
    for (std::size_t row = 0; row < rows; ++row) {
        constexpr std::size_t columns = 12;  // more than any statement asks for
        Value made = Value::array_of_size(0);
        for (std::size_t i = 0; i < columns; ++i) {
            made.push(row == 0 ? host::array_of(answers->text(), "C", 10, 0) : Value(answers->text()));
        }
        result.push(made);
    }
    return result;
}

Value invented_outcome(Self&, Args args) {
    note(args[0]);
    return answers->below(4) == 0 ? Value("[ERROR] SQLCODE=-902 (no)") : Value("");
}

const host::Class& inventing_class() {
    static const auto table = [] {
        const auto real = conn::zmfbconn_class().methods();
        std::vector<host::Method> made(real.begin(), real.end());
        std::ranges::find(made, "internalselect", &host::Method::name)->routine = invented_rows;
        std::ranges::find(made, "executeupdate", &host::Method::name)->routine = invented_outcome;
        std::ranges::find(made, "cachedupdate", &host::Method::name)->routine = invented_outcome;
        return made;
    }();
    static const host::Class the_class("ZMFBCONN", conn::zmfbconn_class().variables(), table);
    return the_class;
}

std::string replaced(const std::string& text, const std::string& search, const std::string& with) {
    if (search.empty()) return text;
    std::string made;
    std::size_t from = 0;
    for (std::size_t at = 0; (at = text.find(search, from)) != std::string::npos; from = at + search.size()) {
        made += text.substr(from, at - from) + with;
    }
    return made + text.substr(from);
}

void check_assembly(Self& self, Input& input) {
    const std::string text(input.text());
    std::string expected = text;
    Value pairs = Value::array_of_size(0);
    for (std::size_t left = input.below(most_pairs); left > 0; --left) {
        const std::string search(input.bytes(input.below(4))), with(input.bytes(input.below(12)));
        pairs.push(host::array_of(search, with));
        expected = replaced(expected, search, with);
    }
    const Value made = call(self, "assemblestatement", text, pairs);
    require(made.is(Kind::character) && made.text() == expected, "pairs are filled in one after another");
    call(self, "assemblestatement", value_of(input, 1), value_of(input, 3));
}

// Texts only, without the sign of placeholders, leave no placeholder in a statement.
void check_method(const Value& object, std::string_view method, Input& input, bool plain) {
    constexpr std::size_t most_parameters = 6;
    Value args[most_parameters];
    for (Value& value : args) {
        value = input.below(3) == 0 ? value_of(input, 3) : Value(input.text());
        plain = plain && value.is(Kind::character) && value.text().find('@') == std::string_view::npos;
    }
    object.object()->send(method, host::Args(args));
    for (const std::string& statement : statements) {
        require(!plain || statement.find("@@") == std::string::npos, "every placeholder is filled");
    }
}

}  // namespace
}  // namespace zmfb::fuzz

void zmfb::fuzz::try_input(Input& input) {
    const std::string_view invented = input.bytes(input.byte() * std::size_t{2});
    Input rows(reinterpret_cast<const std::uint8_t*>(invented.data()), invented.size());
    answers = &rows;
    statements.clear();
    raised_before = raised();
    const Value object(new host::Instance(inventing_class()));
    const std::size_t which = input.below(std::size(methods) + 8);
    if (which < std::size(methods)) {
        check_method(object, methods[which], input, invented.find('@') == invented.npos);
    } else {
        check_assembly(static_cast<Self&>(*object.object()), input);
    }
}
