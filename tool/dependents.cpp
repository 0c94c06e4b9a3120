#include "tool/dependents.h"

#include <fmt/format.h>

#include <map>
#include <utility>

#include "tool/catalog.h"

namespace zmfb::tool {
namespace {

// RDB$DEPENDENT_TYPE.
constexpr int trigger = 2, computed = 3;

std::string kind_of_dependent(int type) {
    static const std::map<int, std::string> kinds{
        {0, "table"},    {1, "view"},      {trigger, "trigger"},          {computed, "computed field"},
        {4, "domain"},   {5, "procedure"}, {6, "index on an expression"}, {15, "function"},
        {18, "package"}, {19, "package"}};
    const auto found = kinds.find(type);
    return found == kinds.end() ? "object" : found->second;
}

// The driver drops nothing whose name needs quotes.
void take(Dependents& dependents, Dependent one) {
    (one.name.is_plain() ? dependents.taken : dependents.in_the_way).push_back(std::move(one));
}

void add_indexes(zmFBConn& connection, const Name& table, const Name& field, Dependents& dependents) {
    const auto rows = rows_of<std::string, std::optional<std::string>>(
        connection,
        "select i.rdb$index_name, c.rdb$constraint_name from rdb$index_segments s join "
        "rdb$indices i on i.rdb$index_name = s.rdb$index_name left join "
        "rdb$relation_constraints c on c.rdb$index_name = i.rdb$index_name where "
        "i.rdb$relation_name = ? and s.rdb$field_name = ? order by 1",
        table.bytes(), field.bytes());
    for (const auto& [index, constraint] : rows) {
        if (constraint) {
            dependents.in_the_way.push_back({"constraint", Name(*constraint)});
        } else {
            take(dependents, {"index", Name(index)});
        }
    }
}

}  // namespace

Dependents dependents_of_field(zmFBConn& connection, const Name& table, const Name& field) {
    Dependents dependents;
    add_indexes(connection, table, field, dependents);
    const auto rows = rows_of<int, std::string, int>(
        connection,
        fmt::format("select distinct d.rdb$dependent_type, coalesce(c.rdb$constraint_name, "
                    "f.rdb$field_name, d.rdb$dependent_name), iif(c.rdb$constraint_name is null, 0, 1) from "
                    "rdb$dependencies d left join rdb$check_constraints c on d.rdb$dependent_type = {} and "
                    "c.rdb$trigger_name = d.rdb$dependent_name left join rdb$relation_fields f on "
                    "d.rdb$dependent_type = {} and f.rdb$field_source = d.rdb$dependent_name where "
                    "d.rdb$depended_on_name = ? and d.rdb$depended_on_type = 0 and d.rdb$field_name = ? "
                    "order by 1, 2",
                    trigger, computed),
        table.bytes(), field.bytes());
    for (const auto& [type, name, of_constraint] : rows) {
        if (type == trigger && of_constraint == 0) {
            take(dependents, {kind_of_dependent(type), Name(name)});
        } else {
            dependents.in_the_way.push_back(
                {of_constraint != 0 ? "constraint" : kind_of_dependent(type), Name(name)});
        }
    }
    return dependents;
}

Dependents dependents_of_table(zmFBConn& connection, const Name& table) {
    Dependents dependents;
    const std::vector<Name> views = views_on(connection, table);
    for (const Name& view : views) take(dependents, {"view", view});
    std::string dropped = "?";
    for (std::size_t i = 0; i < views.size(); ++i) dropped += ", ?";
    std::vector<Parameter> values;
    for (int twice = 0; twice < 2; ++twice) {
        values.emplace_back(table.bytes());
        for (const Name& view : views) values.emplace_back(view.bytes());
    }
    values.insert(values.end(), 2, table.bytes());
    const auto rows = rows_of<int, std::string>(
        connection,
        fmt::format("select distinct d.rdb$dependent_type, d.rdb$dependent_name from rdb$dependencies d "
                    "left join rdb$triggers t on t.rdb$trigger_name = d.rdb$dependent_name left join "
                    "rdb$indices i on i.rdb$index_name = d.rdb$dependent_name left join "
                    "rdb$relation_fields f on f.rdb$field_source = d.rdb$dependent_name where "
                    "d.rdb$depended_on_name in ({0}) and d.rdb$depended_on_type in (0, 1) and case "
                    "d.rdb$dependent_type when 1 then d.rdb$dependent_name when 2 then t.rdb$relation_name "
                    "when 3 then f.rdb$relation_name when 6 then i.rdb$relation_name else '' end not in "
                    "({0}) union all select 0, c.rdb$relation_name from rdb$ref_constraints r join "
                    "rdb$relation_constraints c on c.rdb$constraint_name = r.rdb$constraint_name join "
                    "rdb$relation_constraints o on o.rdb$constraint_name = r.rdb$const_name_uq where "
                    "o.rdb$relation_name = ? and c.rdb$relation_name <> ? order by 1, 2",
                    dropped),
        values);
    for (const auto& [type, name] : rows)
        dependents.in_the_way.push_back({kind_of_dependent(type), Name(name)});
    return dependents;
}

std::vector<Dependent> dependents_by(zmFBConn& connection, std::string_view query) {
    std::vector<Dependent> dependents;
    for (const auto& [type, name] : rows_of<int, std::string>(connection, query))
        dependents.push_back({kind_of_dependent(type), Name(name)});
    return dependents;
}

std::vector<Name> names_in(const std::vector<Dependent>& dependents) {
    std::vector<Name> names;
    for (const Dependent& one : dependents) names.push_back(one.name);
    return names;
}

std::string in_words(const std::vector<Dependent>& dependents) {
    std::string all;
    for (const Dependent& one : dependents) {
        all += fmt::format("{}{} {}", all.empty() ? "" : ", ", one.kind, one.name.shown());
    }
    return all;
}

}  // namespace zmfb::tool
