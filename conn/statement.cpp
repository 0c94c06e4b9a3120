#include "conn/statement.h"

#include "conn/raise.h"
#include "host/array.h"
#include "host/number.h"
#include "host/text.h"
#include "sql/template.h"

namespace zmfb {
namespace {

Value assembled(Self& self, std::string_view statement, const Parameters& parameters) {
    return call(self, "assemblestatement", statement, parameters.array());
}

// "" or the SQLCODE error text.
Value run(Self& self, std::string_view statement, const Parameters& parameters) {
    return call(self, "executeupdate", assembled(self, statement, parameters));
}

}  // namespace

void Parameters::add(std::string_view placeholder, const Value& value) {
    array_.push(host::array_of(placeholder, value));
}

std::string filled(std::string_view statement, const Parameters& parameters) {
    return sql::filled(statement, parameters.array()).string();
}

Value select(Self& self, std::string_view statement, const Parameters& parameters) {
    return call(self, "internalselect", assembled(self, statement, parameters));
}

Value first_number(const Value& result) {
    return host::has_row(result) ? host::val(host::data_rows(result)[0][1]) : Value(0);
}

bool update(Self& self, std::string_view statement, const Parameters& parameters) {
    return host::empty(run(self, statement, parameters));
}

bool update_or_raise(Self& self, std::string_view statement, const Parameters& parameters,
                     const Value& message) {
    const Value failure = run(self, statement, parameters);
    if (host::empty(failure)) return true;
    conn::raiseerror(message + failure);
    return false;
}

}  // namespace zmfb
