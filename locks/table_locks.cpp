#include "locks/methods.h"
#include "locks/statement.h"

namespace zmfb::locks {

Value settableaslocked(Self& self, Args args) {
    constexpr std::string_view lock_table =
        "INSERT INTO @@TABLE_OF_FLOCKS (@@FCK_COL_TABLENAME, @@FCK_COL_AREAID) VALUES('@@TABLENAME', "
        "'@@AREAID')";
    const Value &tbl = args[0], &area = args[1];
    if (ask(self, "existsanotheruserrlocks", tbl, area)) return false;
    if (ask(self, "existsanotheruserflock", tbl, area)) return false;
    if (ask(self, "istablelockedbyuser", tbl, area)) return true;
    return update(self, lock_table,
                  {table_of_flocks, fck_col_tablename, fck_col_areaid, tablename(tbl), areaid(area)});
}

Value settableasunlocked(Self& self, Args args) {
    constexpr std::string_view unlock_table =
        "DELETE FROM @@TABLE_OF_FLOCKS WHERE @@FCK_COL_TABLENAME = '@@TABLENAME' AND @@FCK_COL_AREAID = "
        "'@@AREAID'";
    const Value &tbl = args[0], &area = args[1];
    if (!ask(self, "istablelockedbyuser", tbl, area)) return false;
    return update(self, unlock_table,
                  {table_of_flocks, fck_col_tablename, fck_col_areaid, tablename(tbl), areaid(area)});
}

Value releaselocks(Self& self, Args args) {
    constexpr std::string_view release_table_lock =
        "DELETE FROM @@TABLE_OF_FLOCKS WHERE @@FCK_COL_TABLENAME = '@@TABLENAME'";
    constexpr std::string_view release_record_locks =
        "DELETE FROM @@TABLE_OF_RLOCKS WHERE @@RCK_COL_TABLENAME = '@@TABLENAME'";
    const Value& tbl = args[0];
    return update(self, release_record_locks, {table_of_rlocks, rck_col_tablename, tablename(tbl)}) &&
           update(self, release_table_lock, {table_of_flocks, fck_col_tablename, tablename(tbl)});
}

Value getlockedtables(Self& self, Args) {
    constexpr std::string_view all_table_locks =
        "SELECT @@FCK_COL_TABLENAME, @@FCK_COL_AREAID FROM @@TABLE_OF_FLOCKS ";
    return host::array_of_rows(
        select(self, all_table_locks, {table_of_flocks, fck_col_tablename, fck_col_areaid}));
}

}  // namespace zmfb::locks
