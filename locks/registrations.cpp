#include "host/number.h"
#include "host/text.h"
#include "locks/methods.h"
#include "locks/statement.h"

namespace zmfb::locks {

Value istableusedbyarea(Self& self, Args args) {
    constexpr std::string_view registrations_of_area =
        "SELECT COUNT(*) FROM @@TABLE_OF_OPN WHERE @@OPN_COL_TABLENAME = '@@TABLENAME' AND "
        "@@OPN_COL_AREAID = '@@AREAID' ";
    const Value &tbl = args[0], &area = args[1];
    return counts_some(
        select(self, registrations_of_area,
               {table_of_opn, opn_col_tablename, opn_col_areaid, tablename(tbl), areaid(area)}));
}

Value istableinuse(Self& self, Args args) {
    constexpr std::string_view any_registration =
        "SELECT FIRST 1 @@OPN_COL_TABLENAME FROM @@TABLE_OF_OPN WHERE @@OPN_COL_TABLENAME = '@@TABLENAME'";
    return host::has_row(
        select(self, any_registration, {table_of_opn, opn_col_tablename, tablename(args[0])}));
}

Value istableinexclusivemode(Self& self, Args args) {
    constexpr std::string_view any_registration_of_mode =
        "SELECT FIRST 1 @@OPN_COL_TABLENAME FROM @@TABLE_OF_OPN WHERE @@OPN_COL_TABLENAME = '@@TABLENAME' "
        "AND "
        "@@OPN_COL_SHARED = '@@SHARED' ";
    return host::has_row(
        select(self, any_registration_of_mode,
               {table_of_opn, opn_col_tablename, opn_col_shared, tablename(args[0]), shared(false)}));
}

Value settableusedbyarea(Self& self, Args args) {
    constexpr std::string_view remove_registration =
        "DELETE FROM @@TABLE_OF_OPN WHERE @@OPN_COL_TABLENAME = '@@TABLENAME' AND @@OPN_COL_AREAID = "
        "'@@AREAID' ";
    constexpr std::string_view add_registration =
        "INSERT INTO @@TABLE_OF_OPN (@@OPN_COL_TABLENAME, @@OPN_COL_AREAID, @@OPN_COL_SHARED) "
        "VALUES('@@TABLENAME', '@@AREAID', '@@SHARED') ";
    const bool bol = args[0].same(true);
    const Value &tbl = args[1], &area = args[2];
    if (ask(self, "istableusedbyarea", tbl, area) == bol) return true;
    return update(self, bol ? add_registration : remove_registration,
                  {table_of_opn, opn_col_tablename, opn_col_areaid, opn_col_shared, tablename(tbl),
                   areaid(area), shared(args[3].same(true))});
}

Value getapprecnofromarea(Self& self, Args args) {
    constexpr std::string_view last_append =
        "SELECT OPN_APPRECNO FROM @@TABLE_OF_OPN WHERE @@OPN_COL_TABLENAME = '@@TABLENAME' AND "
        "@@OPN_COL_AREAID = '@@AREAID' ";
    const Value &tbl = args[0], &area = args[1];
    const Value result = select(
        self, last_append, {table_of_opn, opn_col_tablename, opn_col_areaid, tablename(tbl), areaid(area)});
    if (!host::has_row(result)) return 0;
    return host::val(host::alltrim(host::str(first_number(result), 20, 0)));
}

}  // namespace zmfb::locks
