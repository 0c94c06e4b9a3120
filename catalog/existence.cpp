#include "catalog/existence.h"

#include <algorithm>
#include <map>
#include <string>

#include "catalog/methods.h"
#include "conn/statement.h"
#include "host/text.h"

namespace zmfb::catalog {
namespace {

bool counts_some(Self& self, const Value& stmt) {
    return first_number(call(self, "internalselect", stmt)).number() >= 1;
}

constexpr std::string_view udf_module = "zmrddudfs";

struct NeededUdf {
    std::string_view name;
    std::string_view as_stored;  // result and parameters of a stored one, as RDB$FIELDS has type and length
};

constexpr NeededUdf needed_udfs[] = {{"ZMBLOBSUBSTR", "37:4000 261:8 8:4 8:4"},
                                     {"ZMTRIM", "37:4000 37:4000"},
                                     {"ZMLOWER", "37:4000 37:4000"},
                                     {"ZMUPPER", "37:4000 37:4000"},
                                     {"ZMSUBSTR", "37:4000 37:4000 8:4 8:4"},
                                     {"ZMDTOS", "37:8 35:8"},
                                     {"SKIPPAD", "37:4000 37:4000"},
                                     {"ZMSTR", "37:255 27:8 8:4 8:4"},
                                     {"ZMSTRZERO", "37:255 27:8 8:4 8:4"},
                                     {"ZMPADR", "37:4000 37:4000 8:4"},
                                     {"ZMPADL", "37:4000 37:4000 8:4"}};

// An external function has no fields behind its arguments.
bool all_are_stored(Self& self) {
    std::string names;
    for (const NeededUdf& udf : needed_udfs)
        names += (names.empty() ? "'" : ", '") + std::string(udf.name) + "'";
    const Value result =
        call(self, "internalselect",
             "select trim(a.rdb$function_name), f.rdb$field_type || ':' || f.rdb$field_length from "
             "rdb$function_arguments a join rdb$fields f on f.rdb$field_name = a.rdb$field_source where "
             "a.rdb$package_name is null and a.rdb$function_name in (" +
                 names + ") order by a.rdb$function_name, a.rdb$argument_position");
    std::map<std::string, std::string> found;
    for (std::size_t row = 2; row <= result.size(); ++row) {
        std::string& types = found[host::trim(result[row][1]).string()];
        types += (types.empty() ? "" : " ") + host::trim(result[row][2]).string();
    }
    return std::ranges::all_of(needed_udfs, [&found](const NeededUdf& udf) {
        const auto there = found.find(std::string(udf.name));
        return there != found.end() && there->second == udf.as_stored;
    });
}

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
    for (const NeededUdf& udf : needed_udfs) {
        if (!ask(self, "isudf", host::upper(udf.name), udf_module)) return all_are_stored(self);
    }
    return true;
}

}  // namespace zmfb::catalog
