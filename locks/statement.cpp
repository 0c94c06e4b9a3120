#include "locks/statement.h"

#include "host/array.h"
#include "host/number.h"
#include "host/text.h"

namespace zmfb::locks {
namespace {

Value assemble(Self& self, std::string_view sstmt, Parameters parameters) {
    const Value aparam = Value::array_of_size(0);
    for (const Parameter& parameter : parameters) {
        host::aadd(aparam, host::array_of(parameter.placeholder, parameter.value));
    }
    return call(self, "assemblestatement", sstmt, aparam);
}

}  // namespace

Parameter tablename(const Value& tbl) { return {"@@TABLENAME", host::upper(tbl)}; }
Parameter recno(const Value& number) { return {"@@RECNO", number}; }
Parameter areaid(const Value& area) { return {"@@AREAID", area}; }
Parameter shared(bool is_shared) { return {"@@SHARED", is_shared ? "T" : "F"}; }

Value select(Self& self, std::string_view sstmt, Parameters parameters) {
    return call(self, "internalselect", assemble(self, sstmt, parameters));
}

bool update(Self& self, std::string_view sstmt, Parameters parameters) {
    return host::empty(call(self, "executeupdate", assemble(self, sstmt, parameters)));
}

bool has_row(const Value& result) { return result.size() >= 2; }

bool counts_some(const Value& result) { return has_row(result) && host::val(result[2][1]).number() > 0; }

}  // namespace zmfb::locks
