#include "tool/import/append_plan.h"

#include <fmt/format.h>

#include <algorithm>

#include "tool/column_type.h"
#include "tool/name.h"
#include "tool/reading.h"

namespace zmfb::tool {
namespace {

using Kind = LoadColumn::Kind;

// RDB$FIELD_TYPE, RDB$FIELD_SUB_TYPE of a blob of texts, RDB$CHARACTER_SET_ID of bytes.
constexpr int small_code = 7, integer_code = 8, day_code = 12, fixed_code = 14, big_code = 16,
              double_code = 27, stamp_code = 35, varying_code = 37, blob_code = 261;
constexpr int text_blob = 1, octets = 1;

struct Target {
    Name name;
    StoredType type;
    bool is_bytes;
    bool is_logical;
    bool takes_null;
    bool has_default;
    bool is_computed;

    [[nodiscard]] bool is_text() const {
        return (type.code == fixed_code || type.code == varying_code) && !is_bytes && !is_logical;
    }
    [[nodiscard]] bool is_whole() const {
        return type.code == small_code || type.code == integer_code || type.code == big_code;
    }
    [[nodiscard]] bool is_blob(bool of_text) const {
        return type.code == blob_code && (type.sub_type == text_blob) == of_text;
    }
    [[nodiscard]] std::string type_text() const {
        return type_name(type) + (is_bytes ? " CHARACTER SET OCTETS" : "");
    }
};

// Those that nothing but the engine and the driver fill are left out.
std::vector<Target> targets_of(zmFBConn& connection, const Name& table) {
    const auto rows = rows_of<std::string, int, int, int, int, int, int, int, std::string, int, int, int>(
        connection,
        "select rf.rdb$field_name, f.rdb$field_type, coalesce(f.rdb$field_sub_type, 0), "
        "coalesce(f.rdb$field_length, 0), coalesce(f.rdb$field_scale, 0), coalesce(f.rdb$field_precision, "
        "0), "
        "coalesce(f.rdb$character_length, 0), coalesce(f.rdb$character_set_id, 0), "
        "coalesce(cast(substring(rf.rdb$description from 1 for 20) as varchar(20)), ''), "
        "coalesce(rf.rdb$null_flag, f.rdb$null_flag, 0), "
        "iif(rf.rdb$default_source is null and f.rdb$default_source is null, 0, 1), "
        "iif(f.rdb$computed_source is null, 0, 1) from rdb$relation_fields rf join rdb$fields f on "
        "f.rdb$field_name = rf.rdb$field_source where rf.rdb$relation_name = ? order by "
        "rf.rdb$field_position",
        table.bytes());
    std::vector<Target> targets;
    for (const auto& [name, code, sub_type, bytes, scale, precision, characters, set, description, not_null,
                      has_default, computed] : rows) {
        targets.push_back({.name = Name(name),
                           .type = {.code = code,
                                    .sub_type = sub_type,
                                    .bytes = bytes,
                                    .scale = scale,
                                    .precision = precision,
                                    .characters = characters},
                           .is_bytes = (code == fixed_code || code == varying_code) && set == octets,
                           .is_logical = description == "LOGICAL",
                           .takes_null = not_null == 0,
                           .has_default = has_default != 0,
                           .is_computed = computed != 0});
    }
    return targets;
}

bool takes(const Target& target, dbf::Kind kind) {
    switch (kind) {
        case dbf::Kind::text:
            return target.is_text() || target.is_blob(true);
        case dbf::Kind::bytes:
            return target.is_bytes || target.is_blob(false);
        case dbf::Kind::number:
        case dbf::Kind::integer:
        case dbf::Kind::currency:
            return target.is_whole() || target.type.code == double_code;
        case dbf::Kind::real:
            return target.type.code == double_code;
        case dbf::Kind::date:
            return target.type.code == day_code || target.type.code == stamp_code;
        case dbf::Kind::timestamp:
            return target.type.code == stamp_code;
        case dbf::Kind::logical:
            return target.is_logical;
        case dbf::Kind::memo_text:
            return target.is_blob(true);
        case dbf::Kind::memo_bytes:
            return target.is_blob(false);
    }
    return false;
}

// As many digits as the integer that keeps them is told by.
std::size_t digits_of(const StoredType& type) {
    if (type.precision != 0) return static_cast<std::size_t>(type.precision);
    return type.code == small_code ? 4 : type.code == integer_code ? 9 : 18;
}

void adapt(PlannedColumn& column, const Target& target, dbf::Kind kind) {
    constexpr std::size_t widest_number = 21;
    column.column.definition = target.type_text();
    column.takes_null = target.takes_null && kind != dbf::Kind::number;
    column.may_be_real = false;
    column.longest = static_cast<std::size_t>(target.type.characters);
    if (target.type.code == double_code) {
        column.load.kind = Kind::real;
        column.load.width = real_width;
    } else if (target.is_whole()) {
        column.digits = digits_of(target.type);
        column.decimals = -target.type.scale;
        column.load.kind = column.takes_null ? Kind::nullable : Kind::fixed;
        column.load.width = std::max(column.load.width, widest_number);
    } else if (target.type.code == fixed_code && !target.is_bytes) {
        column.load.kind = Kind::fixed;
        column.load.width = static_cast<std::size_t>(target.type.bytes);
    } else if (target.type.code != day_code && target.type.code != stamp_code) {
        column.load.kind = Kind::varying;
        column.load.type = target.type_text();
    }
}

std::string problem_of(const Target& target, dbf::Kind kind) {
    if (target.is_computed) return "is computed";
    if (takes(target, kind)) return "";
    return fmt::format("is {}, which takes no such field",
                       target.is_logical ? "a logical" : target.type_text());
}

bool is_filled_by_the_driver(const Name& name) {
    return name.bytes() == "RECNO" || name.bytes() == "RDD_AREAID";
}

// What the file says nothing of.
void note_others(const std::vector<Target>& others, ImportPlan& plan) {
    std::vector<Name> names;
    for (const Target& other : others) {
        if (is_filled_by_the_driver(other.name) || other.is_computed) continue;
        names.push_back(other.name);
        if (other.takes_null || other.has_default) continue;
        plan.refusals.push_back(
            fmt::format("the column {} of the table {} has to have a value, and the file has none",
                        other.name.shown(), plan.table));
    }
    if (names.empty()) return;
    plan.notes.push_back(
        fmt::format("the table {} has more columns than the file, which get their defaults: {}", plan.table,
                    joined(names)));
}

}  // namespace

void plan_append(zmFBConn& connection, const dbf::Header& header, ImportPlan& plan) {
    std::vector<Target> targets = targets_of(connection, Name(plan.table));
    for (PlannedColumn& column : plan.columns) {
        const auto target = std::ranges::find(targets, Name(column.column.name), &Target::name);
        if (target == targets.end()) {
            plan.refusals.push_back(
                fmt::format("the table {} has no field {}", plan.table, column.column.name));
            continue;
        }
        const bool is_mark = column.field == PlannedColumn::deletion_mark;
        const dbf::Kind kind = is_mark ? dbf::Kind::logical : header.fields[column.field].kind;
        if (const std::string problem = problem_of(*target, kind); !problem.empty()) {
            plan.refusals.push_back(
                fmt::format("the column {} of the table {} {}{}", column.column.name, plan.table, problem,
                            is_mark ? "" : fmt::format(" of type {}", header.fields[column.field].type)));
        } else {
            adapt(column, *target, kind);
        }
        targets.erase(target);
    }
    note_others(targets, plan);
}

}  // namespace zmfb::tool
