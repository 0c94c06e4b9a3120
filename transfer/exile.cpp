#include <algorithm>
#include <new>
#include <optional>
#include <string_view>

#include "conn/statement.h"
#include "host/error.h"
#include "host/file.h"
#include "host/sdf.h"
#include "host/settings.h"
#include "host/text.h"
#include "host/workarea.h"
#include "transfer/data_file.h"
#include "transfer/methods.h"

namespace zmfb::transfer {

namespace {

using host::operator""_l1;

constexpr std::string_view native_driver = "DBFIDX";
constexpr std::string_view export_alias = "dbffile";
constexpr int go_top_after_use = 87;

bool create_dbf(const Value& tblname, const Value& structure) {
    // What the runtime raises is kept from the application's error handler: only the result tells.
    const host::ScopedErrorBlock unreported(Value::block([](Args) { return Value(); }));
    return host::dbcreate(tblname + ".dbf", structure, native_driver).logical();
}

bool empty_data_file(const Value& data_file) {
    const Value dat = host::fcreate(data_file, data_file_permissions);
    if (!(dat.number() > 0)) return false;
    host::fclose(dat);
    return true;
}

Value external_columns(const Value& structure) {
    const Value columns = host::array_of();
    for (const Value& field : structure.items()) columns.push(host::array_of(field[1], "C", field[3], 0));
    columns.push(host::array_of("NEWLINE", "C", 1, 0));
    return columns;
}

bool copy_to_external_table(Self& self, const Value& tblname, const Value& ext_table,
                            const Value& structure) {
    constexpr std::string_view copy_rows = "INSERT INTO @@EXTTABLE SELECT @@COLUMNS FROM @@TABLENAME";
    Placeholders placeholders{{"@@TABLENAME", tblname}, {"@@EXTTABLE", ext_table}};
    for (const Value& field : structure.items()) {
        const bool is_date = field[2].text() == "D";
        const Value column = is_date ? "SkipPad('{{D}}'||" + field[1] + ")" : field[1];
        placeholders.add("@@COLUMNS", column + ",@@COLUMNS");
    }
    placeholders.add("@@COLUMNS", "'\n'");
    return update_or_raise(
        self, copy_rows, placeholders,
        "Erro durante a transferência dos dados da tabela oficial para tabela externa; FB Error: "_l1);
}

// The number of records that the DBF file, which is open, has then; none when not all could be stored.
std::optional<std::int64_t> append_to_open_file(const Value& data_file) {
    host::dbsetindex();
    if (!host::empty(host::set(go_top_after_use))) host::dbgotop();
    if (!host::dbappsdf_exactly(data_file).logical() || !host::table_of(export_alias)->commit())
        return std::nullopt;
    return host::table_of(export_alias)->record_count();
}

std::optional<std::int64_t> append_data_file(const Value& tblname, const Value& data_file) {
    host::dbusearea(true, native_driver, tblname, export_alias, Value(), false);
    if (!host::used().logical()) return std::nullopt;
    try {
        const std::optional<std::int64_t> records = append_to_open_file(data_file);
        host::dbclosearea(export_alias);
        return records;
    } catch (const std::bad_alloc&) {
        host::dbclosearea(export_alias);
        throw;
    }
}

std::int64_t count_rows(Self& self, const Value& tblname) {
    return call(self, "counttablerecords", tblname).integer();
}

// Whether the DBF file has a record for every row, of which there were `before` before the copy. Others may
// have the table in use: rows that came or went since then are no loss.
bool has_every_row(Self& self, const Value& tblname, std::int64_t before, std::int64_t records,
                   const Value& data_file) {
    if (records == before) return true;
    const std::int64_t now = count_rows(self, tblname);
    const auto [fewest, most] = std::minmax(before, now);
    // A count that failed is 0.
    if (fewest > 0 && fewest <= records && records <= most) return true;
    return refuse_rows(self, tblname, before, records, data_file);
}

// The rows by way of the external table and the data file into the DBF file.
bool copy(Self& self, const Value& tblname, const Value& ext_table, const Value& structure,
          const Value& data_file) {
    const std::int64_t rows = count_rows(self, tblname);
    if (!copy_to_external_table(self, tblname, ext_table, structure)) return false;
    const std::optional<std::int64_t> records = append_data_file(tblname, data_file);
    return records && has_every_row(self, tblname, rows, *records, data_file);
}

}  // namespace

Value exiletable(Self& self, Args args) {
    const Value& tblname = args[0];
    const Value ext_table = "EXT_" + tblname;
    const Value structure = call(self, "filterrddfields", call(self, "gettablestruct", tblname));
    const Value data_file = data_file_path(self);
    const bool done = !host::empty(structure) && has_single_bytes(self) && create_dbf(tblname, structure) &&
                      empty_data_file(data_file) &&
                      make_external_table(self, ext_table, external_columns(structure), data_file) &&
                      copy(self, tblname, ext_table, structure, data_file);
    if (ask(self, "istable", ext_table)) call(self, "droponlytable", ext_table);
    return done;
}

}  // namespace zmfb::transfer
