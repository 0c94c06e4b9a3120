#include "tool/import/plan.h"

#include <fmt/format.h>

#include <algorithm>

#include "host/text.h"
#include "tool/catalog.h"
#include "tool/encoding.h"

namespace zmfb::tool {
namespace {

using Kind = LoadColumn::Kind;

constexpr std::size_t largest_precision = 18;
constexpr std::size_t largest_char = 32765;
constexpr std::size_t largest_row = 65535;

std::string change_line(std::string_view what, const NameChange& change) {
    return fmt::format("the {} {} {}: it becomes {}", what, shown_bytes(change.from), change.why, change.to);
}

// Keeps the changes as lines of the report, or as refusals.
class Changes {
  public:
    Changes(ImportPlan& plan, bool strict) : plan_(plan), strict_(strict) {}
    void add(std::string_view what, const NameChange& change) {
        if (change.why.empty()) return;
        if (strict_) {
            plan_.refusals.push_back(fmt::format("the {} {} {}", what, shown_bytes(change.from), change.why));
        } else {
            plan_.changes.push_back(change_line(what, change));
        }
    }

  private:
    ImportPlan& plan_;
    bool strict_;
};

// The name to ask the engine about.
std::string plain_table_name(const std::string& name) { return plain_form(name, "T_"); }

// Which relations there are of the table's name, its own and that of a table beside it, and the generators
// that one which is gone has left to the one that is made.
void look_for_table(zmFBConn& connection, ImportPlan& plan) {
    constexpr int generator = 2;
    const std::string& table = plan.table;
    const std::string beside = table_beside(table);
    const std::string query = fmt::format(
        "select trim(rdb$relation_name), iif(rdb$relation_name = {0}, 0, 1) from rdb$relations where "
        "rdb$relation_name in ({0}, {0}) union all select trim(rdb$generator_name), {1} from rdb$generators "
        "where rdb$generator_name in ({0}, {0}, {0}, {0}) order by 1 desc",
        any_name, generator);
    std::set<std::string> generators;
    for (const auto& [name, what] :
         rows_of<std::string, int>(connection, query, table, table, beside, "G_" + table + "_I",
                                   "G_" + table + "_D", "G_" + beside + "_I", "G_" + beside + "_D")) {
        if (what == generator) {
            generators.insert(name);
        } else {
            (what == 0 ? plan.table_exists : plan.beside_exists) = true;
        }
    }
    if (plan.table_exists && plan.beside_exists) return;
    const std::string& made = plan.table_exists ? beside : table;
    for (const char* end : {"_I", "_D"}) {
        const std::string name = "G_" + made + end;
        if (generators.contains(name))
            plan.changes.push_back(
                fmt::format("the generator {}, of a table that is gone, taken over", name));
    }
}

void name_table(zmFBConn& connection, const std::string& name, bool is_reserved, bool strict,
                std::set<std::string>& taken, ImportPlan& plan) {
    if (taken.contains(name)) {
        plan.table = name;
        plan.refusals.push_back(fmt::format("another file of this run is the table {} already", name));
        return;
    }
    NameChange change;
    plan.table = table_name(name, is_reserved, taken, change);
    Changes(plan, strict).add("table", change);
    look_for_table(connection, plan);
}

std::vector<std::string> names_in_file(const dbf::Header& header, const WantedNames& wanted) {
    std::vector<std::string> names;
    for (const dbf::Field& field : header.fields) names.push_back(host::upper(field.name).string());
    if (wanted.marks_deleted) names.emplace_back("DELETED_");
    return names;
}

void name_columns(FieldNames& fields, const std::vector<std::string>& names, const WantedNames& wanted,
                  ImportPlan& plan) {
    plan.unused_renames = wanted.fields;
    for (const std::string& name : names) plan.unused_renames.erase(name);
    for (const auto& [from, to] : plan.unused_renames) {
        if (!wanted.all_fields) break;
        plan.refusals.push_back(
            fmt::format("there is no field {0}, which --rename {0}={1} names", shown_bytes(from), to));
    }
    for (std::size_t i = 0; i < plan.columns.size(); ++i)
        plan.columns[i].column.name = plan.columns[i].load.name = fields.names()[i];
    Changes changes(plan, wanted.strict);
    for (const NameChange& change : fields.changes()) changes.add("field", change);
}

// A database of UTF-8 takes it, and any of one byte a character the encoding in force.
std::string text_problem(const CharacterSet& set) {
    if (set.name != "UTF8") return width_problem(set);
    return bytes_are_utf8() ? ""
                            : fmt::format("the texts of the database are UTF-8, not {}", encoding_name());
}

std::string type_problem(const dbf::Field& field, std::size_t character) {
    const std::size_t largest = largest_char / character;
    const bool fits = field.kind != dbf::Kind::text || field.length <= largest;
    return fits ? "" : fmt::format("has {} characters; {} are possible", field.length, largest);
}

// There is no column without a length.
std::size_t length_of(const dbf::Field& field) { return std::max<std::size_t>(1, field.length); }

// As the engine counts the bytes of a row, without its few more for NULLs and alignment; a character may take
// so many.
std::size_t row_size(const dbf::Header& header, std::size_t character) {
    std::size_t size = 50 * character + 2 + 8;
    for (const dbf::Field& field : header.fields) {
        const bool is_text = field.kind == dbf::Kind::text;
        size += is_text ? field.length * character : field.kind == dbf::Kind::bytes ? field.length : 8;
    }
    return size;
}

PlannedColumn planned(std::size_t place, std::string definition, Kind kind, std::size_t width,
                      std::string description = {}) {
    return {
        .field = place,
        .column = {.name = "", .definition = std::move(definition), .description = std::move(description)},
        .load = {.name = "", .kind = kind, .width = width}};
}

PlannedColumn planned_varying(std::size_t place, const std::string& type) {
    PlannedColumn column = planned(place, type + " DEFAULT NULL", Kind::varying, 0);
    column.load.type = type;
    return column;
}

// A column that createtable() makes too.
PlannedColumn planned_xbase(std::size_t place, char type, std::size_t length, int decimals, Kind kind,
                            std::size_t width) {
    PlannedColumn column = planned(place, "", kind, width);
    column.column = driver_column("", type, length, decimals);
    if (type != 'N') return column;
    column.digits = length;
    column.decimals = decimals;
    column.takes_null = false;
    return column;
}

PlannedColumn plan_text(const dbf::Field& field, std::size_t place) {
    const std::size_t length = length_of(field);
    PlannedColumn column = field.type == 'V' ? planned_varying(place, fmt::format("VARCHAR({})", length))
                                             : planned_xbase(place, 'C', length, 0, Kind::fixed, length);
    column.longest = length;
    return column;
}

PlannedColumn plan_number(const dbf::Field& field, std::size_t place) {
    if (field.length > largest_precision) {
        PlannedColumn column = planned(place, "", Kind::real, real_width);
        column.is_wide = true;
        column.takes_null = false;
        make_real(column);
        return column;
    }
    const int decimals = std::min(field.decimals, static_cast<int>(field.length));
    PlannedColumn column =
        planned_xbase(place, 'N', length_of(field), decimals, Kind::fixed, length_of(field));
    column.may_be_real = field.type == 'F';
    return column;
}

}  // namespace

std::string table_of_file(const std::string& path) {
    const std::string name = path.substr(path.rfind('/') + 1);
    return upper_bytes(name.substr(0, name.find('.')));
}

void ask_for_table_names(zmFBConn& connection, EngineFacts& engine, const std::vector<std::string>& paths) {
    std::vector<std::string> names;
    for (const std::string& path : paths) names.push_back(plain_table_name(table_of_file(path)));
    engine.reserved(connection, names);
}

void take_table_name(zmFBConn& connection, EngineFacts& engine, const std::string& path,
                     std::set<std::string>& taken) {
    const std::string name = table_of_file(path);
    if (taken.contains(name)) return;
    NameChange change;
    table_name(name, !engine.reserved(connection, {plain_table_name(name)}).empty(), taken, change);
}

PlannedColumn plan_column(const dbf::Field& field, std::size_t place) {
    constexpr std::size_t stamp_width = 23;
    switch (field.kind) {
        case dbf::Kind::text:
            return plan_text(field, place);
        case dbf::Kind::bytes:
            return planned_varying(place, fmt::format("VARCHAR({}) CHARACTER SET OCTETS", length_of(field)));
        case dbf::Kind::number:
            return plan_number(field, place);
        case dbf::Kind::date:
            return planned_xbase(place, 'D', 8, 0, Kind::nullable, 10);
        case dbf::Kind::logical:
            return planned_xbase(place, 'L', 1, 0, Kind::fixed, 1);
        case dbf::Kind::integer:
            return planned(place, "INTEGER DEFAULT NULL", Kind::nullable, 11, "NUMERIC(11,0)");
        case dbf::Kind::currency:
            return planned(place, "NUMERIC(18,4) DEFAULT NULL", Kind::nullable, 21, "NUMERIC(18,4)");
        case dbf::Kind::real:
            return planned(place, "DOUBLE PRECISION DEFAULT NULL", Kind::real, real_width);
        case dbf::Kind::timestamp:
            return planned(place, "TIMESTAMP DEFAULT NULL", Kind::nullable, stamp_width);
        case dbf::Kind::memo_text:
            return planned_varying(place, "BLOB SUB_TYPE TEXT");
        case dbf::Kind::memo_bytes:
            return planned_varying(place, "BLOB SUB_TYPE BINARY");
    }
    throw Failure{Exit::failed, fmt::format("{} is of no known kind", field.name)};
}

void narrow(PlannedColumn& column, const Digits& digits) {
    const std::size_t all = std::max<std::size_t>(1, digits.whole + digits.decimals);
    if (all > largest_precision) return;
    const std::string name = column.column.name;
    column.column = driver_column(name, 'N', all, static_cast<int>(digits.decimals));
    column.digits = all;
    column.decimals = static_cast<int>(digits.decimals);
    column.load.kind = Kind::fixed;
    column.load.width = largest_precision + 2;  // a sign and a point
}

void make_real(PlannedColumn& column) {
    column.column.definition = "DOUBLE PRECISION DEFAULT 0 NOT NULL";
    column.column.description.clear();
    column.load.kind = Kind::real;
    column.load.width = real_width;
}

std::string sql_type_of(const PlannedColumn& column) {
    return column.column.definition.substr(0, column.column.definition.find(" DEFAULT"));
}

ImportPlan plan_import(zmFBConn& connection, EngineFacts& engine, const std::string& path,
                       const dbf::Header& header, const WantedNames& wanted, std::set<std::string>& taken) {
    ImportPlan plan;
    const CharacterSet& set = engine.character_set(connection);
    if (const std::string problem = text_problem(set); !problem.empty()) plan.refusals.push_back(problem);
    const auto character = static_cast<std::size_t>(set.bytes);
    const std::string table = wanted.table.empty() ? table_of_file(path) : upper_bytes(wanted.table);
    const std::vector<std::string> names = names_in_file(header, wanted);
    FieldNames fields(names, wanted.fields);
    std::vector<std::string> asked = fields.wanted();
    asked.push_back(plain_table_name(table));
    const std::set<std::string> reserved = engine.reserved(connection, asked);
    fields.settle(reserved, engine.longest_name(connection));
    name_table(connection, table, reserved.contains(asked.back()), wanted.strict, taken, plan);
    for (std::size_t i = 0; i < header.fields.size(); ++i) {
        const dbf::Field& field = header.fields[i];
        plan.columns.push_back(plan_column(field, i));
        if (field.kind == dbf::Kind::text) plan.columns.back().load.width *= character;
        const std::string problem = type_problem(field, character);
        if (!problem.empty())
            plan.refusals.push_back(fmt::format("the field {} {}", shown_bytes(field.name), problem));
    }
    if (wanted.marks_deleted)
        plan.columns.push_back(planned_xbase(PlannedColumn::deletion_mark, 'L', 1, 0, Kind::fixed, 1));
    name_columns(fields, names, wanted, plan);
    if (row_size(header, character) > largest_row)
        plan.refusals.push_back(fmt::format("a row would take more than {} bytes", largest_row));
    return plan;
}

}  // namespace zmfb::tool
