/// Evaluates expressions of the xBase language with the operations of the runtime.
///
/// Known are: literals (texts, numbers, dates as 0dYYYYMMDD or {^YYYY-MM-DD}, .T., .F., NIL), {arrays}, {|a,
/// b| blocks}, the operators
/// + - * / % ^ ** $ = == != <> # < <= > >= .AND. .OR. .NOT. ! and :=, a[index], object:field, IF(), the
/// functions of functions.cpp, and variables. A name never assigned is unknown, except OERR and other names
/// that begin with O: each is an error object of its own.
#pragma once

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <string_view>

#include "host/value.h"
#include "lexer.h"

namespace zmfb::host_test {

/// The variables that an expression sees: its own, then those around it.
struct Scope {
    std::map<std::string, host::Value> variables;
    std::shared_ptr<Scope> outer;
};

/// An expression ready to be evaluated.
using Code = std::function<host::Value(const std::shared_ptr<Scope>&)>;

/// Compiles an expression; throws SyntaxError.
Code compile(std::string_view expression);

/// The value of an expression. Errors that it raises go to the error block in force; throws SyntaxError.
host::Value evaluate(std::string_view expression);

}  // namespace zmfb::host_test
