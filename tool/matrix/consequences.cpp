#include "tool/matrix/consequences.h"

#include <fmt/format.h>

#include <algorithm>
#include <set>

#include "host/text.h"
#include "tool/catalog.h"
#include "tool/counted.h"
#include "tool/encoding.h"

namespace zmfb::tool {
namespace {

constexpr std::string_view header_end = " ]", header_name = "[ ";
constexpr std::string_view table_dropped = "[OK] Table dropped";
constexpr std::string_view field_altered = "[OK] Alter Field: ", field_dropped = "[OK] Drop Field: ";

std::string upper_trimmed(std::string_view text) { return host::alltrim(host::upper(text)).string(); }

// Goes along the log of a check.
class Walk {
  public:
    Walk(zmFBConn& connection, const host::Value& matrix)
        : connection_(connection), lines_(field_lines(matrix)) {}

    void take(std::string_view line) {
        if (line.starts_with("- ") && line.ends_with(header_end)) {
            const std::size_t name = line.find(header_name) + header_name.size();
            table_ = upper_trimmed(line.substr(name, line.size() - header_end.size() - name));
            dropped_fields_.clear();
        } else if (line == table_dropped) {
            drop_table();
        } else if (line.starts_with(field_dropped)) {
            const std::string field = upper_trimmed(line.substr(field_dropped.size()));
            add({.table = table_,
                 .field = field,
                 .dependents = dependents_of_field(connection_, Name(table_), Name(field))});
            dropped_fields_.insert(field);
        } else if (line.starts_with(field_altered)) {
            alter(upper_trimmed(line.substr(field_altered.size())));
        }
    }
    std::vector<Consequence> found;

  private:
    // The method drops a view once for each time that it names the table, and gives up at the second.
    void drop_table() {
        Dependents dependents = dependents_of_table(connection_, Name(table_));
        const std::vector<Name> twice =
            names_of(connection_,
                     "select rdb$view_name from rdb$view_relations where rdb$relation_name = ? "
                     "group by 1 having count(*) > 1",
                     table_);
        for (const Name& view : twice) {
            std::erase_if(dependents.taken, [&](const Dependent& one) { return one.name == view; });
            dependents.in_the_way.push_back({"view that names it twice", view});
        }
        add({.table = table_, .dependents = std::move(dependents)});
    }

    void alter(const std::string& field) {
        const auto line = std::ranges::find_if(
            lines_, [&](const FieldLine& one) { return one.table == table_ && one.field == field; });
        if (line == lines_.end()) return;
        add({.table = table_,
             .field = field,
             .wanted = wanted_type(*line),
             .dependents = dependents_of_field(connection_, Name(table_), Name(field)),
             .fit = fit_of(connection_, *line)});
        lines_.erase(line);
    }

    // What goes with one change is not there any more for the next.
    void add(Consequence one) {
        const auto is_gone = [&](const Dependent& dependent) {
            return dependent.kind == computed_field
                       ? dropped_fields_.contains(dependent.name.bytes())
                       : gone_.contains({dependent.kind, dependent.name.bytes()});
        };
        std::erase_if(one.dependents.taken, is_gone);
        std::erase_if(one.dependents.in_the_way, is_gone);
        for (const Dependent& dependent : one.dependents.taken)
            gone_.emplace(dependent.kind, dependent.name.bytes());
        if (!notes_of(one).empty() || !hindrances_of(one).empty()) found.push_back(std::move(one));
    }

    zmFBConn& connection_;
    std::vector<FieldLine> lines_;
    std::string table_;
    std::set<std::string> dropped_fields_;  // of this table
    std::set<std::pair<std::string, std::string>> gone_;
};

std::string shown_name(const Consequence& one) {
    return to_utf8(one.table + (one.field.empty() ? "" : "." + one.field));
}

std::string in_words(const Records& records) {
    const std::uint64_t more = records.count - records.first.size();
    return fmt::format("{} {}{}", records.count == 1 ? "in record" : "in the records",
                       fmt::join(records.first, ", "), more == 0 ? "" : fmt::format(" and {} more", more));
}

Json names(const std::vector<Dependent>& dependents) {
    Json list = Json::array();
    for (const Dependent& one : dependents) list.push_back({{"kind", one.kind}, {"name", one.name.text()}});
    return list;
}

Json counted_json(const Records& records) { return {{"count", records.count}, {"records", records.first}}; }

}  // namespace

std::vector<Consequence> consequences_of(zmFBConn& connection, const host::Value& matrix,
                                         const host::Value& log) {
    Walk walk(connection, matrix);
    for (const host::Value& entry : log.items()) walk.take(entry[1].text());
    return std::move(walk.found);
}

std::vector<std::string> notes_of(const Consequence& one) {
    std::vector<std::string> notes;
    if (!one.dependents.taken.empty()) {
        notes.push_back(fmt::format("{}: goes along and is not made again: {}", shown_name(one),
                                    in_words(one.dependents.taken)));
    }
    if (one.fit.changed.count > 0) {
        notes.push_back(fmt::format("{}: {} rounded to {}, {}", shown_name(one),
                                    counted(one.fit.changed.count, "value is", "values are"), one.wanted,
                                    in_words(one.fit.changed)));
    }
    return notes;
}

std::vector<std::string> hindrances_of(const Consequence& one) {
    std::vector<std::string> hindrances;
    if (!one.dependents.in_the_way.empty()) {
        hindrances.push_back(
            fmt::format("{}: in use by {}", shown_name(one), in_words(one.dependents.in_the_way)));
    }
    if (!one.fit.refusal.empty()) {
        hindrances.push_back(
            fmt::format("{}: cannot become {}: {}", shown_name(one), one.wanted, one.fit.refusal));
    }
    if (one.fit.misfits.count > 0) {
        hindrances.push_back(fmt::format("{}: {} fit {}, {}", shown_name(one),
                                         counted(one.fit.misfits.count, "value does not", "values do not"),
                                         one.wanted, in_words(one.fit.misfits)));
    }
    return hindrances;
}

Json json_of(const Consequence& one) {
    Json json{{"table", to_utf8(one.table)}, {"field", to_utf8(one.field)}, {"wanted", one.wanted}};
    json["goes_along"] = names(one.dependents.taken);
    json["in_the_way"] = names(one.dependents.in_the_way);
    json["refused"] = one.fit.refusal;
    json["do_not_fit"] = counted_json(one.fit.misfits);
    json["rounded"] = counted_json(one.fit.changed);
    return json;
}

}  // namespace zmfb::tool
