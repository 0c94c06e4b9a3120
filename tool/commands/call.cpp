#include <fmt/format.h>

#include <algorithm>
#include <memory>

#include "tool/calls.h"
#include "tool/commands.h"
#include "tool/interrupt.h"
#include "tool/json.h"
#include "tool/line_input.h"
#include "tool/output.h"
#include "tool/say.h"

namespace zmfb::tool {
namespace {

Exit show_result(Session& session, const Expression& call) {
    const host::Value result = evaluate(session, call);
    const std::string line = session.options().json ? json_line(to_json(result)) : to_literal(result);
    fmt::print("{}\n", line);
    flush_output();
    // What a method answers when a query failed may look like any other answer.
    const bool is_lost = session.let_go_when_lost("");
    return is_lost || is_failure_text(result) ? Exit::failed : Exit::ok;
}

Exit evaluate_lines(Session& session) {
    Exit status = Exit::ok;
    LineInput& input = LineInput::standard();
    int number = 1;
    for (auto line = input.next(); line; line = input.next(), ++number) {
        if (line->find_first_not_of(" \t\r") == std::string::npos) continue;
        try {
            if (show_result(session, parse_call(*line)) != Exit::ok && status == Exit::ok)
                status = Exit::failed;
        } catch (const SyntaxError& problem) {
            print_error(problem.what(), "", "", {.line = number});
            status = Exit::usage;
        } catch (const Failure& failure) {
            if (interrupted()) throw;
            print_error(failure.message, failure.detail, failure.hint, {.line = number});
            status = std::max(status, failure.status);
        }
    }
    return status;
}

Exit call_command(Session& session, const std::vector<std::string>& expressions) {
    session.show_raised(Raised::one_line);
    // Which says what the texts in the expressions become.
    session.connection_or_unattached();
    std::vector<std::optional<Expression>> calls;
    for (const std::string& expression : expressions) {
        if (expression == "-") {
            calls.emplace_back(std::nullopt);
            continue;
        }
        try {
            calls.emplace_back(parse_call(expression));
        } catch (const SyntaxError& problem) {
            throw Failure{Exit::usage, problem.what(), "in " + expression};
        }
    }
    if (session.options().database.empty()) {
        say("note: no database given (--db, ZMFB_DB); the object is not attached\n");
    }
    Exit status = Exit::ok;
    for (const auto& call : calls) {
        const Exit one = call ? show_result(session, *call) : evaluate_lines(session);
        status = std::max(status, one);
    }
    return status;
}

}  // namespace

void add_call(CommandLine& line) {
    const auto calls = std::make_shared<std::vector<std::string>>();
    line.add(line.app(), "call", "Call methods of the object by name",
             "zmfb --db shop.fdb call 'istable(\"CUSTOMERS\")' 'gettablereccount(\"CUSTOMERS\")'",
             [calls](Session& session) { return call_command(session, *calls); })
        .option(
            "EXPR", *calls,
            "Calls, with xBase literals and other calls as arguments; - reads one a line from standard input")
        .required();
}

}  // namespace zmfb::tool
