#include "conn/statement.h"

#include "conn/raise.h"
#include "host/array.h"
#include "host/text.h"

namespace zmfb {

Value parameter_array(std::initializer_list<ParameterPair> parameters) {
    Value aparam = host::array_of();
    for (const ParameterPair& parameter : parameters)
        add_parameter(aparam, parameter.placeholder, parameter.value);
    return aparam;
}

void add_parameter(const Value& aparam, std::string_view placeholder, const Value& value) {
    aadd(aparam, host::array_of(placeholder, value));
}

Value select(Self& self, std::string_view sstmt, const Value& aparam) {
    return call(self, "internalselect", call(self, "assemblestatement", sstmt, aparam));
}

bool has_row(const Value& result) { return result.size() >= 2; }

Value update(Self& self, std::string_view sstmt, const Value& aparam) {
    return call(self, "executeupdate", call(self, "assemblestatement", sstmt, aparam));
}

bool update_or_raise(Self& self, std::string_view sstmt, const Value& aparam, const Value& message) {
    const Value saux = update(self, sstmt, aparam);
    if (empty(saux)) return true;
    conn::raiseerror(message + saux);
    return false;
}

}  // namespace zmfb
