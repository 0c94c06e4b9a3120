#include "catalog/existence.h"

#include "catalog/methods.h"
#include "conn/statement.h"
#include "host/text.h"

namespace zmfb::catalog {
namespace {

bool counts_some(Self& self, const Value& stmt) {
    return first_number(call(self, "internalselect", stmt)).number() >= 1;
}

constexpr std::string_view udf_module = "zmrddudfs";

constexpr std::string_view needed_udfs[] = {"ZMBLOBSUBSTR", "ZMTRIM", "ZMLOWER", "ZMUPPER",
                                            "ZMSUBSTR",     "ZMDTOS", "SKIPPAD", "ZMSTR",
                                            "ZMSTRZERO",    "ZMPADR", "ZMPADL"};

}  // namespace

Value table_question(const Value& tbl) {
    return "select count(*) from rdb$relations where rdb$relation_name = '" + host::upper(tbl) + "' ";
}

Value field_question(const Value& tbl, const Value& fldname) {
    return "SELECT COUNT(*) FROM RDB$RELATION_FIELDS WHERE RDB$FIELD_NAME = '" + host::upper(fldname) +
           "' AND " + "RDB$RELATION_NAME = '" + host::upper(tbl) + "' ";
}

Value index_question(const Value& ind) {
    return "select count(*) from rdb$indices where rdb$index_name = '" + host::upper(ind) + "' ";
}

bool surely_absent(Self& self, const Value& question) {
    const Value result = call(self, "internalselect", question);
    return host::has_row(result) && first_number(result).number() < 1;
}

Value istable(Self& self, Args args) { return counts_some(self, table_question(args[0])); }

Value isview(Self& self, Args args) {
    const Value viewname = host::upper(args[0]);
    return counts_some(self,
                       "SELECT COUNT(*) FROM RDB$VIEW_RELATIONS WHERE RDB$VIEW_NAME = '" + viewname + "' ");
}

Value isfieldoftable(Self& self, Args args) { return counts_some(self, field_question(args[0], args[1])); }

Value isindex(Self& self, Args args) { return counts_some(self, index_question(args[0])); }

Value istrigger(Self& self, Args args) {
    return counts_some(
        self, "select count(*) from rdb$triggers where rdb$trigger_name = '" + host::upper(args[0]) + "' ");
}

Value isindexoftable(Self& self, Args args) {
    const Value &tbl = args[0], &ind = args[1];
    return counts_some(self, "select count(*) from rdb$indices where rdb$relation_name = '" +
                                 host::upper(tbl) + "' and " + "rdb$index_name = '" + host::upper(ind) +
                                 "' ");
}

Value istriggeroftable(Self& self, Args args) {
    const Value &tbl = args[0], &trig = args[1];
    return counts_some(self, "select count(*) from rdb$triggers where rdb$relation_name = '" +
                                 host::upper(tbl) + "' and " + "rdb$trigger_name = '" + host::upper(trig) +
                                 "' ");
}

Value isudf(Self& self, Args args) {
    const Value &udfname = args[0], &modname = args[1];
    return counts_some(self, "select count(*) from rdb$functions where rdb$function_name = '" + udfname +
                                 "' and " + "rdb$module_name = '" + modname + "' ");
}

Value isallneededudfsinstalled(Self& self, Args) {
    for (const Value udfname : needed_udfs) {
        if (!ask(self, "isudf", host::upper(udfname), udf_module)) return false;
    }
    return true;
}

}  // namespace zmfb::catalog
