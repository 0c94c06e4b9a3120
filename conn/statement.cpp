#include "conn/statement.h"

#include "conn/raise.h"
#include "host/array.h"
#include "host/number.h"
#include "host/text.h"

namespace zmfb {
namespace {

Value filled(Self& self, std::string_view sstmt, const Parameters& parameters) {
    return call(self, "assemblestatement", sstmt, parameters.array());
}

// "" or the SQLCODE error text.
Value run(Self& self, std::string_view sstmt, const Parameters& parameters) {
    return call(self, "executeupdate", filled(self, sstmt, parameters));
}

}  // namespace

void Parameters::add(std::string_view placeholder, const Value& value) {
    array_.push(host::array_of(placeholder, value));
}

Value select(Self& self, std::string_view sstmt, const Parameters& parameters) {
    return call(self, "internalselect", filled(self, sstmt, parameters));
}

Value first_number(const Value& result) {
    return has_row(result) ? host::val(host::data_rows(result)[0][1]) : Value(0);
}

bool update(Self& self, std::string_view sstmt, const Parameters& parameters) {
    return empty(run(self, sstmt, parameters));
}

bool update_or_raise(Self& self, std::string_view sstmt, const Parameters& parameters, const Value& message) {
    const Value saux = run(self, sstmt, parameters);
    if (empty(saux)) return true;
    conn::raiseerror(message + saux);
    return false;
}

}  // namespace zmfb
