#include "conn/statement.h"

#include "conn/raise.h"
#include "host/array.h"
#include "host/number.h"
#include "host/text.h"
#include "sql/statement_text.h"
#include "sql/template.h"

namespace zmfb {
namespace {

Value assembled(Self& self, std::string_view statement, const Placeholders& placeholders) {
    return call(self, "assemblestatement", statement, placeholders.array());
}

// "" or the SQLCODE error text.
Value run(Self& self, std::string_view statement, const Placeholders& placeholders) {
    return call(self, "executeupdate", assembled(self, statement, placeholders));
}

}  // namespace

void Placeholders::add(std::string_view placeholder, const Value& value) {
    array_.push(
        value.is(host::Kind::character)
            ? Value::array_of_texts(std::initializer_list<std::string_view>{placeholder, value.text()})
            : host::array_of(placeholder, value));
}

std::string filled(std::string_view statement, const Placeholders& placeholders) {
    return sql::filled(statement, placeholders.array()).string();
}

Value select(Self& self, std::string_view statement, const Placeholders& placeholders) {
    return call(self, "internalselect", assembled(self, statement, placeholders));
}

Value first_number(const Value& result) {
    return host::has_row(result) ? host::val(host::data_rows(result)[0][1]) : Value(0);
}

bool update(Self& self, std::string_view statement, const Placeholders& placeholders) {
    return host::empty(run(self, statement, placeholders));
}

bool update_or_raise(Self& self, std::string_view statement, const Placeholders& placeholders,
                     const Value& message, const std::optional<Objection>& objection) {
    const Value failure = objection
                              ? Value(sql::refused_update(self, assembled(self, statement, placeholders),
                                                          objection->sqlcode, objection->reason))
                              : run(self, statement, placeholders);
    if (host::empty(failure)) return true;
    conn::raiseerror(message + failure);
    return false;
}

}  // namespace zmfb
