#include "tool/transfer/import_plan.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstdlib>
#include <set>

#include "host/text.h"
#include "tool/catalog.h"
#include "tool/character_set.h"
#include "tool/transfer/dbf_check.h"

namespace zmfb::tool {
namespace {

constexpr std::size_t largest_precision = 18;
constexpr std::size_t largest_char = 32767;
constexpr std::size_t largest_row = 65535;

bool is_reserved(zmFBConn& connection, const std::string& name) {
    const Name one(name);
    return !reserved_among(connection, std::span(&one, 1)).empty();
}

// Engines before 4 have names of 31 bytes.
std::size_t longest_name(zmFBConn& connection) {
    const Value version = connection.call(
        "executequery", "select rdb$get_context('SYSTEM', 'ENGINE_VERSION') as v from rdb$database");
    const int major = version.size() < 2 ? 0 : std::atoi(std::string(version[2][1].text()).c_str());
    return major >= 4 ? 63 : 31;
}

void check_table(zmFBConn& connection, const DbfFile& file, ImportPlan& plan) {
    const std::string shown = shown_bytes(plan.table);
    if (!Name(plan.table).is_plain()) {
        plan.refusals.push_back(fmt::format(
            "the table's name would be \"{}\": a name starts with a letter and has letters, digits, _ and $",
            shown));
        return;
    }
    const bool dates =
        std::any_of(file.fields.begin(), file.fields.end(), [](const DbfField& f) { return f.type == 'D'; });
    const std::string_view longest = dates ? "T__NULLDATES" : "_RECNO_DESC";
    const std::size_t most = longest_name(connection) - longest.size();
    if (plan.table.size() > most) {
        plan.refusals.push_back(fmt::format(
            "the table's name would be {}, of {} characters: {} are possible, for its indexes and "
            "triggers are named after it",
            shown, plan.table.size(), most));
    } else if (is_reserved(connection, plan.table)) {
        plan.refusals.push_back(fmt::format("the table's name would be {}, a reserved word", shown));
    }
}

// Those that a table left when it was dropped without them, or that are somebody's own: a table cannot be
// made beside them.
void check_generators(zmFBConn& connection, ImportPlan& plan) {
    for (const Name& one : generator_names_of(connection, Name(plan.table))) {
        plan.refusals.push_back(
            fmt::format("the generator {0} is there already, without a table; unless a program "
                        "of your own uses it: zmfb call 'dropgenerator(\"{0}\")'",
                        one.bytes()));
    }
}

std::string name_problem(zmFBConn& connection, const DbfField& field, std::set<std::string>& taken) {
    if (!Name(field.name).is_plain()) return "is no valid name";
    if (!taken.insert(field.name).second) {
        const bool own = field.name == "RECNO" || field.name == "RDD_AREAID";
        return own ? "is the name of a column of the driver's own" : "is there twice";
    }
    return is_reserved(connection, field.name) ? "is a reserved word" : "";
}

std::string type_problem(const DbfField& field) {
    if (sql_type_of(field).empty()) {
        return fmt::format("has the type {}; C, N, D and L can be imported",
                           shown_bytes(std::string_view(&field.type, 1)));
    }
    if (field.length == 0) return "has no length";
    if (field.type == 'C' && field.length > largest_char) {
        return fmt::format("has {} characters; {} are possible", field.length, largest_char);
    }
    if (field.type == 'D' && field.length != 8) return "is a date that is not 8 long";
    if (field.type != 'N') return {};
    if (field.length > largest_precision) {
        return fmt::format("has {} digits; {} are possible", field.length, largest_precision);
    }
    if (static_cast<std::size_t>(field.decimals) > field.length) return "has more decimals than digits";
    return {};
}

// As the engine counts the bytes of a row, without its few more for NULLs and alignment.
std::size_t row_size(const DbfFile& file) {
    std::size_t size = 50 + 2 + 8;
    for (const DbfField& field : file.fields) size += field.type == 'C' ? field.length : 8;
    return size;
}

}  // namespace

std::string table_of_file(const std::string& path) {
    const std::string name = path.substr(path.rfind('/') + 1);
    return host::upper(name.substr(0, name.find('.'))).string();
}

std::string sql_type_of(const DbfField& field) {
    switch (field.type) {
        case 'C':
            return fmt::format("CHAR({})", field.length);
        case 'N':
            return fmt::format("NUMERIC({},{})", field.length, field.decimals);
        case 'D':
            return "TIMESTAMP";
        case 'L':
            return "CHAR(1)";
        default:
            return {};
    }
}

ImportPlan plan_import(zmFBConn& connection, const DbfFile& file) {
    ImportPlan plan;
    plan.table = table_of_file(file.path);
    const std::string width = width_problem(default_character_set(connection));
    if (!width.empty()) plan.refusals.push_back(width);
    check_table(connection, file, plan);
    if (plan.refusals.empty()) plan.table_exists = connection.call("istable", plan.table).logical();
    if (plan.refusals.empty() && !plan.table_exists) check_generators(connection, plan);
    std::set<std::string> taken{"RECNO", "RDD_AREAID"};
    for (const DbfField& field : file.fields) {
        const std::string name = shown_bytes(field.name);
        plan.columns.push_back({name, sql_type_of(field)});
        for (const std::string& problem : {name_problem(connection, field, taken), type_problem(field)}) {
            if (!problem.empty()) plan.refusals.push_back(fmt::format("the field {} {}", name, problem));
        }
    }
    if (row_size(file) > largest_row) {
        plan.refusals.push_back(fmt::format("a row would take more than {} bytes", largest_row));
    }
    return plan;
}

}  // namespace zmfb::tool
