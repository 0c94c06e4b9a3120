#include "catalog/methods.h"
#include "conn/statement.h"
#include "host/text.h"

namespace zmfb::catalog {

Value gettablesname(Self& self, Args) {
    constexpr std::string_view user_tables =
        "select rdb$relation_name from rdb$relations where rdb$system_flag = 0 order by rdb$relation_name";
    Value names = host::array_of_rows(call(self, "internalselect", user_tables));
    for (Value& row : names.items()) row = host::alltrim(row[1]);
    return names;
}

Value getindexfields(Self& self, Args args) {
    const Value& ind = args[0];
    return host::array_of_rows(call(self, "internalselect",
                                    "select rdb$field_name from rdb$index_segments where rdb$index_name = '" +
                                        host::upper(ind) + "' " + "order by rdb$field_position"));
}

Value getfieldsontrigger(Self& self, Args args) {
    constexpr std::string_view trigger_fields =
        "SELECT RDB$FIELD_NAME FROM RDB$DEPENDENCIES WHERE RDB$DEPENDENT_NAME = '@@TRIGGERNAME' AND "
        "RDB$FIELD_NAME IS NOT NULL";
    const Value& trigname = args[0];
    return host::array_of_rows(
        select(self, trigger_fields, {{"@@TRIGGERNAME", host::alltrim(host::upper(trigname))}}));
}

}  // namespace zmfb::catalog
