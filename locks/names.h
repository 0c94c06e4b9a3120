/// Names of the system tables and of their columns, each with the placeholder that stands for it in a
/// statement.
#pragma once

#include <string_view>

#include "conn/statement.h"

namespace zmfb::locks {

/// A placeholder of statement templates and the name that it stands for.
struct SystemName {
    std::string_view placeholder;
    std::string_view name;

    operator Placeholder() const { return {placeholder, name}; }  // NOLINT: it stands among other pairs
};

/// Widths that table names and area ids must fit.
inline constexpr int table_name_width = 30;
inline constexpr int area_id_width = 50;
/// Digits of a record number.
inline constexpr int record_number_width = 18;

/// Open registrations: which work area has which table open, and how.
inline constexpr SystemName table_of_opn{"@@TABLE_OF_OPN", "RDDSYS_OPN"};
inline constexpr SystemName opn_col_tablename{"@@OPN_COL_TABLENAME", "OPN_TABLE"};
inline constexpr SystemName opn_col_areaid{"@@OPN_COL_AREAID", "OPN_AREAID"};
inline constexpr SystemName opn_col_shared{"@@OPN_COL_SHARED", "OPN_SHARED"};
/// Record number of the last append. Statements and the insert triggers of tables name it as it is.
inline constexpr std::string_view opn_col_apprecno = "OPN_APPRECNO";

/// Table locks.
inline constexpr SystemName table_of_flocks{"@@TABLE_OF_FLOCKS", "RDDSYS_FLK"};
inline constexpr SystemName fck_col_tablename{"@@FCK_COL_TABLENAME", "FLK_TABLE"};
inline constexpr SystemName fck_col_areaid{"@@FCK_COL_AREAID", "FLK_AREAID"};

/// Record locks.
inline constexpr SystemName table_of_rlocks{"@@TABLE_OF_RLOCKS", "RDDSYS_RLK"};
inline constexpr SystemName rck_col_tablename{"@@RCK_COL_TABLENAME", "RLK_TABLE"};
inline constexpr SystemName rck_col_tablerecno{"@@RCK_COL_TABLERECNO", "RLK_RECNO"};
inline constexpr SystemName rck_col_areaid{"@@RCK_COL_AREAID", "RLK_AREAID"};

}  // namespace zmfb::locks
