#include "tool/matrix/known_structures.h"

#include <fmt/format.h>

#include <algorithm>

#include "host/class.h"
#include "host/text.h"
#include "tool/catalog.h"
#include "tool/reading.h"

namespace zmfb::tool {
namespace {

const KnownStructures* known = nullptr;  // the one that lives

Value text_of(const std::optional<std::string>& text) { return Value(text.value_or("NULL")); }
Value text_of(const std::optional<int>& number) { return Value(number ? std::to_string(*number) : "NULL"); }

// These answer what the methods of their names answer.

Value istable(host::Instance&, Args args) { return known->find(args[0]) != nullptr; }

Value gettabledescription(host::Instance&, Args args) {
    const KnownStructures::Table* table = known->find(args[0]);
    return host::array_of(table == nullptr ? Value("") : text_of(table->description));
}

Value getinternaltablestruct(host::Instance&, Args args) {
    const Value rows = Value::array_of_size(0);
    const KnownStructures::Table* table = known->find(args[0]);
    if (table == nullptr) return rows;
    for (const KnownStructures::Column& column : table->columns) {
        rows.push(host::array_of(column.name, text_of(column.type), "NULL", text_of(column.length),
                                 text_of(column.scale), "NULL", text_of(column.precision), "NULL"));
    }
    return rows;
}

Value getfielddescription(host::Instance&, Args args) {
    const KnownStructures::Table* table = known->find(args[0]);
    if (table == nullptr) return host::array_of("");
    const auto column = std::ranges::find(table->columns, args[1].text(), &KnownStructures::Column::name);
    return host::array_of(column == table->columns.end() ? Value("") : text_of(column->description));
}

// The attachment is that of the other object.
Value axit(host::Instance&, Args) { return {}; }

constexpr std::pair<std::string_view, host::Routine> answered_here[] = {
    {"axit", axit},
    {"getfielddescription", getfielddescription},
    {"getinternaltablestruct", getinternaltablestruct},
    {"gettabledescription", gettabledescription},
    {"istable", istable}};

// The class of connection objects, some of whose methods ask what is known.
const host::Class& knowing_class(const host::Class& type) {
    static const std::vector<host::Method> methods = [&type] {
        std::vector<host::Method> all(type.methods().begin(), type.methods().end());
        for (const auto& [name, routine] : answered_here) all[type.find_method(name)].routine = routine;
        return all;
    }();
    static const host::Class knowing(type.name(), type.variables(), methods);
    return knowing;
}

zmFBConn knowing_object(zmFBConn& connection) {
    auto& object = static_cast<host::Instance&>(*connection.value().object());
    auto* knowing = new host::Instance(knowing_class(object.type()));
    for (std::size_t row = 0; row < object.type().variables().size(); ++row)
        knowing->variable(row) = object.variable(row);
    return zmFBConn::of(Value(knowing));
}

}  // namespace

KnownStructures::KnownStructures(zmFBConn& connection, std::span<const Name> tables)
    : object_(knowing_object(connection)) {
    constexpr std::size_t few = 10;
    if (tables.size() > few) {
        read(connection, "1 = 1");
    } else {
        const std::string condition = fmt::format("r.rdb$relation_name = {}", any_name);
        for (const Name& table : tables) read(connection, condition, table.bytes());
    }
    known = this;
}

KnownStructures::~KnownStructures() { known = nullptr; }

template <class... Values>
void KnownStructures::read(zmFBConn& connection, std::string_view condition, const Values&... values) {
    using Text = std::optional<std::string>;
    using Number = std::optional<int>;
    for (auto& [table, description] : rows_of<std::string, Text>(
             connection,
             fmt::format("select r.rdb$relation_name, {} from rdb$relations r where {}", description_of("r"),
                         condition),
             values...))
        tables_[Name(table).bytes()].description = std::move(description);
    for (auto& [table, name, type, length, scale, precision, description] :
         rows_of<std::string, std::string, Number, Number, Number, Number, Text>(
             connection,
             fmt::format(
                 "select r.rdb$relation_name, r.rdb$field_name, f.rdb$field_type, f.rdb$field_length, "
                 "f.rdb$field_scale, f.rdb$field_precision, {} from rdb$relation_fields r join "
                 "rdb$fields f on f.rdb$field_name = r.rdb$field_source where {} "
                 "order by r.rdb$relation_name, r.rdb$field_position",
                 description_of("r"), condition),
             values...))
        tables_[Name(table).bytes()].columns.push_back(
            {Name(name).bytes(), type, length, scale, precision, std::move(description)});
}

const KnownStructures::Table* KnownStructures::find(const Value& name) const {
    const auto found = tables_.find(host::trim(host::upper(name)).string());
    return found == tables_.end() ? nullptr : &found->second;
}

bool KnownStructures::is_nameable(const Name& table) const {
    const auto found = tables_.find(table.bytes());
    return table.is_plain() &&
           (found == tables_.end() || std::ranges::all_of(found->second.columns, [](const Column& column) {
                return Name(column.name).is_plain();
            }));
}

}  // namespace zmfb::tool
