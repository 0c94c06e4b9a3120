/// Programs over work areas, which every driver runs alike.
///
/// They are lines of data/area_programs.tsv in the form of a case file: the table, a program, and what it
/// prints. The table is "staff", open with its five records, "empty", open without any, or "closed", there
/// but not open; behind it may stand ":" and the one driver that the program is for. A program is a list of
/// expressions with
/// ";" between them. One that begins with "?" prints what follows it as a list: numbers without blanks, texts
/// without those at their end, dates as YYYYMMDD, and those that are empty as ''. An error prints "!" and its
/// gencode, and the program goes on.
#pragma once

#include <functional>
#include <string>
#include <string_view>

#include "host/value.h"

namespace zmfb::host_test {

/// The structure of the table STAFF.
host::Value staff_structure();
/// Appends the five records of STAFF to the table in the current area.
void append_staff();

/// What a program prints; throws SyntaxError.
std::string printed_by(std::string_view program);

/// Runs those of the programs that `driver` runs, and fails for each that prints anything else than expected.
/// `prepare` is called with the name of the table before each of them, and makes it as it is to be.
void run_area_programs(std::string_view driver, const std::function<void(std::string_view table)>& prepare);

}  // namespace zmfb::host_test
