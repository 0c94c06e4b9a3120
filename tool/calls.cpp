#include "tool/calls.h"

#include <fmt/format.h>

#include "tool/shell/names.h"
#include "tool/suggest.h"

namespace zmfb::tool {
namespace {

using Kind = Expression::Kind;

void require_methods(const Expression& expression) {
    for (const Expression& part : expression.parts) {
        if (part.kind == Kind::call && !is_method(part.method)) {
            throw Failure{Exit::usage, fmt::format("there is no method {}{}", part.method,
                                                   did_you_mean(part.method, method_names()))};
        }
        require_methods(part);
    }
}

host::Value call_method(Session& session, const Expression& call, bool is_outermost);

host::Value value_of(Session& session, const Expression& expression) {
    if (expression.kind == Kind::value) return expression.value;
    if (expression.kind == Kind::call) return call_method(session, expression, false);
    const bool joins = expression.kind == Kind::join;
    host::Value made = joins ? host::Value("") : host::Value::array_of_size(0);
    for (const Expression& part : expression.parts) {
        host::Value value = value_of(session, part);
        if (!joins) {
            made.push(std::move(value));
        } else if (value.is(host::Kind::character)) {
            made.append(value.text());
        } else {
            throw Failure{Exit::usage, "only texts can be joined with +"};
        }
    }
    return made;
}

host::Value call_method(Session& session, const Expression& call, bool is_outermost) {
    std::vector<host::Value> arguments;
    for (const Expression& part : call.parts) arguments.push_back(value_of(session, part));
    const std::size_t raised_before = session.raised().size();
    host::Value result = session.connection_or_unattached().call_with(call.method, host::Args(arguments));
    if (!is_outermost && session.raised().size() != raised_before)
        throw Failure{Exit::failed,
                      fmt::format("{} raised, and what it was an argument of was not called", call.method)};
    return result;
}

}  // namespace

host::Value evaluate(Session& session, const Expression& call) {
    require_methods(call);
    return call_method(session, call, true);
}

bool is_failure_text(const host::Value& result) {
    return result.is(host::Kind::character) && result.text().starts_with("[ERROR] SQLCODE=");
}

}  // namespace zmfb::tool
