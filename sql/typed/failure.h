/// How failures of the typed way become exceptions.
#pragma once

#include <string>
#include <string_view>

#include "sql/object_client.h"
#include "zmfbconn/sql_error.h"
#include "zmfbconn/status.h"

namespace zmfb::typed {

/// The status of all calls of the object interface but those of other threads.
Firebird::IStatus* status();

/// Throws the failure that is in the status, when `code` says that there is one.
void check(ISC_STATUS code, std::string_view statement = {});
/// The same of what was done by handle.
void check(const Status& done, std::string_view statement);

/// Why something is refused without asking the engine: the SQLCODE and SQLSTATE that stand for it.
struct Refusal {
    int sqlcode;
    const char* sqlstate;
};
inline constexpr Refusal cancelled{-901, "HY008"}, given_up{-902, "08006"}, not_attached{-902, "08003"},
    no_interface{-902, "0A000"}, ended{-901, "25000"}, wrong_count{-804, "07001"},
    wrong_columns{-804, "07002"}, no_rows_here{-804, "07005"}, wrong_kind{-303, "07006"},
    no_row{100, "02000"}, more_rows{-811, "21000"}, too_long{-303, "22001"}, is_null{-303, "22002"},
    out_of_range{-303, "22003"}, no_such_day{-413, "22007"}, no_number{-413, "22018"},
    no_character{-303, "22021"}, no_such_set{-303, "22023"}, not_current{-504, "24000"},
    no_column{-206, "42S22"}, not_here{-901, "0A000"};

[[noreturn]] void refuse(Refusal refusal, std::string message, std::string_view statement = {});

}  // namespace zmfb::typed
