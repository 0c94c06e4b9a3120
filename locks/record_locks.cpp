#include "host/array.h"
#include "host/number.h"
#include "locks/methods.h"
#include "locks/statement.h"

namespace zmfb::locks {

Value setrecordaslocked(Self& self, Args args) {
    constexpr std::string_view lock_record =
        "INSERT INTO @@TABLE_OF_RLOCKS (@@RCK_COL_TABLENAME, @@RCK_COL_TABLERECNO, @@RCK_COL_AREAID) "
        "VALUES('@@TABLENAME', @@RECNO, '@@AREAID') ";
    const Value &tbl = args[0], &area = args[1], &number = args[2];
    if (ask(self, "isrecordlockedbyanotheruser", tbl, area, number)) return false;
    if (ask(self, "existsanotheruserflock", tbl, area)) return false;
    if (ask(self, "isrecordlockedbyuser", tbl, area, number)) return true;
    return update(self, lock_record,
                  {table_of_rlocks, rck_col_tablename, rck_col_tablerecno, rck_col_areaid, tablename(tbl),
                   recno(number), areaid(area)});
}

Value setrecordasunlocked(Self& self, Args args) {
    constexpr std::string_view unlock_record =
        "DELETE FROM @@TABLE_OF_RLOCKS WHERE @@RCK_COL_TABLENAME = '@@TABLENAME' AND @@RCK_COL_TABLERECNO = "
        "@@RECNO ";
    const Value &tbl = args[0], &area = args[1], &number = args[2];
    if (!ask(self, "isrecordlockedbyuser", tbl, area, number)) return false;
    return update(self, unlock_record,
                  {table_of_rlocks, rck_col_tablename, rck_col_tablerecno, tablename(tbl), recno(number)});
}

Value unlockallrecords(Self& self, Args args) {
    constexpr std::string_view unlock_records_of_area =
        "DELETE FROM @@TABLE_OF_RLOCKS WHERE @@RCK_COL_TABLENAME = '@@TABLENAME' AND @@RCK_COL_AREAID = "
        "'@@AREAID' ";
    const Value &tbl = args[0], &area = args[1];
    if (!ask(self, "existsuserrlocks", tbl, area)) return false;
    return update(self, unlock_records_of_area,
                  {table_of_rlocks, rck_col_tablename, rck_col_areaid, tablename(tbl), areaid(area)});
}

Value getlockedrecords(Self& self, Args args) {
    constexpr std::string_view records_of_area =
        "SELECT @@RCK_COL_TABLERECNO FROM @@TABLE_OF_RLOCKS WHERE @@RCK_COL_TABLENAME = '@@TABLENAME' AND "
        "@@RCK_COL_AREAID = '@@AREAID'";
    const Value &tbl = args[0], &area = args[1];
    const Value result = select(self, records_of_area,
                                {table_of_rlocks, rck_col_tablerecno, rck_col_tablename, rck_col_areaid,
                                 tablename(tbl), areaid(area)});
    Value numbers = Value::array_of_size(0);
    for (const Value& row : host::data_rows(result)) host::aadd(numbers, host::val(row[1]));
    return numbers;
}

}  // namespace zmfb::locks
