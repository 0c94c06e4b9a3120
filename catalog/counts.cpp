#include "catalog/methods.h"
#include "conn/statement.h"
#include "host/text.h"

namespace zmfb::catalog {
namespace {

Value select_about(Self& self, std::string_view statement, const Value& tbl) {
    return select(self, statement, {{"@@TABLENAME", host::upper(tbl)}});
}

}  // namespace

Value counttablerecords(Self& self, Args args) {
    constexpr std::string_view row_count = "SELECT COUNT(*) FROM @@TABLENAME";
    return first_number(select_about(self, row_count, args[0]));
}

Value gettablenumberofinserts(Self& self, Args args) {
    constexpr std::string_view insert_count = "SELECT GEN_ID(G_@@TABLENAME_I, 0) FROM RDB$DATABASE ";
    return first_number(select_about(self, insert_count, args[0]));
}

Value gettablereccount(Self& self, Args args) {
    constexpr std::string_view live_count =
        "SELECT GEN_ID(G_@@TABLENAME_I, 0) - GEN_ID(G_@@TABLENAME_D, 0) FROM RDB$DATABASE ";
    const Value& tbl = args[0];
    const Value result = select_about(self, live_count, tbl);
    if (host::has_row(result)) return first_number(result);
    Value count = call(self, "counttablerecords", tbl);
    call(self, "writelog", "[FORCED] Hard Count. Table: " + tbl, 5);
    return count;
}

}  // namespace zmfb::catalog
