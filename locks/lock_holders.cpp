#include "host/compare.h"
#include "host/text.h"
#include "locks/methods.h"
#include "locks/statement.h"

namespace zmfb::locks {
namespace {

// The id in the first data row without the blanks that its CHAR column adds; "" without a row.
Value holder_in(const Value& result) {
    return host::has_row(result) ? host::trim(host::data_rows(result)[0][1]) : "";
}

// Held, and by an area other than `area`. The comparison follows SET EXACT.
bool held_by_another(const Value& holder, const Value& area) {
    return !host::empty(holder) && host::unequal(holder, area);
}

}  // namespace

Value getrlockareaid(Self& self, Args args) {
    constexpr std::string_view holder_of_record =
        "SELECT @@RCK_COL_AREAID FROM @@TABLE_OF_RLOCKS WHERE @@RCK_COL_TABLENAME = '@@TABLENAME' AND "
        "@@RCK_COL_TABLERECNO = @@RECNO";
    const Value &tbl = args[0], &number = args[1];
    return holder_in(select(self, holder_of_record,
                            {table_of_rlocks, rck_col_tablename, rck_col_tablerecno, rck_col_areaid,
                             tablename(tbl), recno(number)}));
}

Value getflockareaid(Self& self, Args args) {
    constexpr std::string_view holder_of_table =
        "SELECT @@FCK_COL_AREAID FROM @@TABLE_OF_FLOCKS WHERE @@FCK_COL_TABLENAME = '@@TABLENAME' ";
    return holder_in(select(self, holder_of_table,
                            {table_of_flocks, fck_col_tablename, fck_col_areaid, tablename(args[0])}));
}

Value istablelockedbyuser(Self& self, Args args) {
    const Value &tbl = args[0], &area = args[1];
    return host::exactly_equal(call(self, "getflockareaid", tbl), area);
}

Value isrecordlocked(Self& self, Args args) {
    const Value &tbl = args[0], &number = args[2];
    return !host::empty(call(self, "getrlockareaid", tbl, number));
}

Value isrecordlockedbyuser(Self& self, Args args) {
    const Value &tbl = args[0], &area = args[1], &number = args[2];
    return host::exactly_equal(call(self, "getrlockareaid", tbl, number), area);
}

Value isrecordlockedbyanotheruser(Self& self, Args args) {
    const Value &tbl = args[0], &area = args[1], &number = args[2];
    return held_by_another(call(self, "getrlockareaid", tbl, number), area);
}

Value existsanotheruserflock(Self& self, Args args) {
    const Value &tbl = args[0], &area = args[1];
    return held_by_another(call(self, "getflockareaid", tbl), area);
}

namespace {

bool counts_record_locks(Self& self, std::string_view statement, const Value& tbl, const Value& area) {
    return counts_some(select(
        self, statement, {table_of_rlocks, rck_col_tablename, rck_col_areaid, tablename(tbl), areaid(area)}));
}

}  // namespace

Value existsuserrlocks(Self& self, Args args) {
    constexpr std::string_view record_locks_of_area =
        "SELECT COUNT(*) FROM @@TABLE_OF_RLOCKS WHERE @@RCK_COL_TABLENAME = '@@TABLENAME' AND "
        "@@RCK_COL_AREAID = '@@AREAID' ";
    return counts_record_locks(self, record_locks_of_area, args[0], args[1]);
}

Value existsanotheruserrlocks(Self& self, Args args) {
    constexpr std::string_view record_locks_of_others =
        "SELECT COUNT(*) FROM @@TABLE_OF_RLOCKS WHERE @@RCK_COL_TABLENAME = '@@TABLENAME' AND "
        "@@RCK_COL_AREAID <> '' AND @@RCK_COL_AREAID <> '@@AREAID' ";
    return counts_record_locks(self, record_locks_of_others, args[0], args[1]);
}

}  // namespace zmfb::locks
