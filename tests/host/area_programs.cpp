#include "area_programs.h"

#include <gtest/gtest.h>

#include <iostream>
#include <vector>

#include "case_file.h"
#include "expression.h"
#include "host/date.h"
#include "host/error.h"
#include "host/number.h"
#include "host/text.h"
#include "host/workarea.h"
#include "tests/support/show.h"

namespace zmfb::host_test {
namespace {

using host::array_of;
using host::Kind;
using host::Value;

std::string printed_text(const Value& text) {
    const std::string trimmed = host::trim(text).string();
    return trimmed.empty() ? "''" : trimmed;
}

std::string printed(const Value& value) {
    if (value.is(Kind::character)) return printed_text(value);
    if (value.is(Kind::numeric)) return host::alltrim(host::str(value)).string();
    if (value.is(Kind::date)) return printed_text(host::dtos(value));
    if (!value.is(Kind::array)) return test::show(value);
    std::string list = "{";
    for (const Value& item : value.items()) list += (list.size() > 1 ? "," : "") + printed(item);
    return list + "}";
}

// The expressions of a program, without outer blanks. No text in it holds a ";".
std::vector<std::string> statements_of(std::string_view program) {
    std::vector<std::string> statements;
    while (!program.empty()) {
        const std::size_t end = std::min(program.find(';'), program.size());
        statements.push_back(host::alltrim(program.substr(0, end)).string());
        program.remove_prefix(std::min(end + 1, program.size()));
    }
    return statements;
}

void add(std::string& line, const std::string& more) { line += (line.empty() ? "" : " ") + more; }

bool is_for(const Case& the_case, std::string_view driver) {
    const std::size_t colon = the_case.function.find(':');
    return colon == std::string::npos || the_case.function.substr(colon + 1) == driver;
}

}  // namespace

Value staff_structure() {
    return array_of(array_of("NAME", "C", 10, 0), array_of("AGE", "N", 3, 0), array_of("PAY", "N", 10, 2),
                    array_of("BORN", "D", 8, 0), array_of("OK", "L", 1, 0));
}

void append_staff() {
    const Value people = array_of(array_of("Dora", 31, 1200.5, host::stod("19800102"), true),
                                  array_of("Ana", 45, 900, host::stod("19661231"), false),
                                  array_of("Carl", 31, 0, host::stod(""), true),
                                  array_of("Bea", 27, -15.25, host::stod("19840229"), false),
                                  array_of("Emil", 45, 99999.99, host::stod("19660101"), true));
    for (const Value& person : people.items()) {
        host::dbappend();
        for (std::int64_t i = 1; i <= host::fcount(); ++i)
            host::fieldput(i, person[static_cast<std::size_t>(i)]);
    }
    host::dbunlock();
    host::dbgotop();
}

std::string printed_by(std::string_view program) {
    std::string line;
    const host::ScopedErrorBlock errors(Value::block([&](host::Args args) -> Value {
        add(line, "!" + printed(args[0].object()->get("gencode")));
        return {};
    }));
    const auto scope = std::make_shared<Scope>();
    for (const std::string& statement : statements_of(program)) {
        if (!statement.starts_with('?')) {
            compile(statement)(scope);
            continue;
        }
        const Value list = compile("{" + statement.substr(1) + "}")(scope);
        for (const Value& value : list.items()) add(line, printed(value));
    }
    scope->variables.clear();  // a variable may hold a block that holds the scope
    return line;
}

void run_area_programs(std::string_view driver, const std::function<void(std::string_view)>& prepare) {
    const std::filesystem::path file = std::filesystem::path(ZMFB_HOST_TEST_DATA) / "area_programs.tsv";
    std::size_t run = 0;
    for (const Case& the_case : read_cases(file)) {
        if (!is_for(the_case, driver)) continue;
        prepare(the_case.function.substr(0, the_case.function.find(':')));
        ++run;
        std::string line;
        try {
            line = printed_by(the_case.expression);
        } catch (const std::exception& failure) {
            line = failure.what();
        }
        EXPECT_EQ(line, the_case.expected)
            << file.filename().string() << ":" << the_case.line << ": " << the_case.expression;
        const host::ScopedErrorBlock whatever_closing_raises(
            Value::block([](host::Args) { return Value(); }));
        host::dbcloseall();
    }
    EXPECT_GT(run, 0U);
    std::cout << driver << ": " << run << " programs run\n";
}

}  // namespace zmfb::host_test
