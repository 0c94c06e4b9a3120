#include "locks/statement.h"

#include "host/array.h"
#include "host/number.h"
#include "host/text.h"

namespace zmfb::locks {
namespace {

Value array_of_pairs(Parameters parameters) {
    Value aparam = host::array_of();
    for (const Parameter& parameter : parameters) {
        add_parameter(aparam, parameter.placeholder, parameter.value);
    }
    return aparam;
}

}  // namespace

Parameter tablename(const Value& tbl) { return {"@@TABLENAME", host::upper(tbl)}; }
Parameter recno(const Value& number) { return {"@@RECNO", number}; }
Parameter areaid(const Value& area) { return {"@@AREAID", area}; }
Parameter shared(bool is_shared) { return {"@@SHARED", is_shared ? "T" : "F"}; }

Value select(Self& self, std::string_view sstmt, Parameters parameters) {
    return zmfb::select(self, sstmt, array_of_pairs(parameters));
}

bool update(Self& self, std::string_view sstmt, Parameters parameters) {
    return host::empty(zmfb::update(self, sstmt, array_of_pairs(parameters)));
}

bool counts_some(const Value& result) { return has_row(result) && host::val(result[2][1]).number() > 0; }

}  // namespace zmfb::locks
