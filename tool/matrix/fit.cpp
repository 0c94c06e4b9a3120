#include "tool/matrix/fit.h"

#include <fmt/format.h>

#include <algorithm>

#include "tool/catalog.h"
#include "tool/session.h"

namespace zmfb::tool {
namespace {

constexpr int named_records = 5;
constexpr int most_digits = 18;

// The type of a variable that takes what the changed column takes.
std::string sql_type(const FieldLine& line) {
    if (line.type == "N") return fmt::format("numeric({}, {}) not null = 0", line.length, line.decimals);
    if (line.type == "D") return "timestamp";
    return fmt::format("char({}) not null = ''", line.type == "L" ? 1 : line.length);
}

// Kind 1 are misfits, kind 2 changed values. A row {kind, record} for each record that is named, and at the
// end {kind, NULL, how many there are} of both.
constexpr std::string_view conversion = R"(execute block
returns (KIND smallint, RECORD numeric(18, 0), TOTAL bigint) as
declare FORMER type of column {table}.{field};
declare WANTED {type};
declare MISFITS bigint = 0;
declare CHANGED bigint = 0;
begin
  for select RECNO, {field} from {table} into :RECORD, :FORMER do
  begin
    WANTED = FORMER;
    if (WANTED is distinct from FORMER) then
    begin
      CHANGED = CHANGED + 1;
      KIND = 2;
      if (CHANGED <= {named}) then suspend;
    end
    when any do
    begin
      MISFITS = MISFITS + 1;
      KIND = 1;
      if (MISFITS <= {named}) then suspend;
    end
  end
  RECORD = null;
  KIND = 1;
  TOTAL = MISFITS;
  suspend;
  KIND = 2;
  TOTAL = CHANGED;
  suspend;
end)";

}  // namespace

std::string wanted_type(const FieldLine& line) {
    if (line.type == "N") return fmt::format("N({},{})", line.length, line.decimals);
    return line.type == "C" ? fmt::format("C({})", line.length) : line.type;
}

Fit fit_of(zmFBConn& connection, const FieldLine& line) {
    Fit fit;
    if (line.type.size() != 1) {
        fit.refusal = "there is no such type";
        return fit;
    }
    // Later engines than Firebird 3.0 have such a type, which the driver does not make.
    if (line.type == "N" && line.length > most_digits) {
        fit.refusal = fmt::format("a number has at most {} digits", most_digits);
        return fit;
    }
    using Whole = std::optional<std::int64_t>;
    const std::string query = fmt::format(conversion, fmt::arg("table", Name(line.table).quoted()),
                                          fmt::arg("field", Name(line.field).quoted()),
                                          fmt::arg("type", sql_type(line)), fmt::arg("named", named_records));
    try {
        for (const auto& [kind, record, total] : rows_of<int, Whole, Whole>(connection, query)) {
            Records& records = kind == 1 ? fit.misfits : fit.changed;
            if (record) {
                records.first.push_back(*record);
            } else {
                records.count = static_cast<std::uint64_t>(total.value_or(0));
            }
        }
    } catch (const Failure& failure) {
        fit.refusal = failure.detail;
        std::ranges::replace(fit.refusal, '\n', ' ');
    }
    return fit;
}

}  // namespace zmfb::tool
