#include "tool/import/belongings.h"

#include <fmt/format.h>

#include <algorithm>
#include <map>

#include "tool/catalog.h"

namespace zmfb::tool {
namespace {

// They are kept in the description of the table beside, which is a text of up to 65,535 bytes.
constexpr std::size_t longest_again = 60000;

// RDB$DEPENDENT_TYPE.
constexpr int view_type = 1, trigger_type = 2, index_type = 6;

class Gatherer {
  public:
    Gatherer(zmFBConn& connection, const Name& table, const std::vector<std::string>& columns)
        : connection_(connection), table_(table), columns_(columns) {}

    void add_indexes();
    void add_constraints();
    void add_triggers(const Name& relation);
    void add_view(const Name& view);
    void add_rights();
    void add_owner();
    [[nodiscard]] Belongings all() && { return std::move(all_); }

  private:
    [[nodiscard]] bool has(std::string_view column) const {
        return column == "RECNO" || column == "RDD_AREAID" ||
               std::ranges::find(columns_, column) != columns_.end();
    }
    [[nodiscard]] bool can_depend(int type, const Name& dependent) const;
    bool add(const std::string& words, std::string statement);

    zmFBConn& connection_;
    const Name& table_;
    const std::vector<std::string>& columns_;
    std::vector<Name> objects_{table_};  // that are there again: the table and views
    Belongings all_;
    std::size_t size_ = 0;
};

// Whether the table will have all its columns that are used.
bool Gatherer::can_depend(int type, const Name& dependent) const {
    const auto used = rows_of<std::string>(
        connection_,
        "select distinct trim(rdb$field_name) from rdb$dependencies where rdb$dependent_name = ? and "
        "rdb$dependent_type = ? and rdb$depended_on_name = ? and rdb$field_name is not null",
        dependent.bytes(), type, table_.bytes());
    return std::ranges::all_of(used, [&](const auto& column) { return has(std::get<0>(column)); });
}

bool Gatherer::add(const std::string& words, std::string statement) {
    size_ += statement.size();
    const bool fits = size_ <= longest_again;
    (fits ? all_.again : all_.lost).push_back(fits ? std::move(statement) : words);
    return fits;
}

// One that is not active could not be made: its rows may be what it cannot have.
void Gatherer::add_indexes() {
    for (const Index& index : indexes_of(connection_, table_)) {
        if (!index.constraint.empty() || index.name.bytes() == table_.bytes() + "_RECNO_DESC") continue;
        std::string key;
        for (const Name& field : index.fields) key += (key.empty() ? "(" : ", ") + field.quoted();
        key += ")";
        const bool is_possible =
            std::ranges::all_of(index.fields, [&](const Name& one) { return has(one.bytes()); });
        if (index.fields.empty()) {
            const auto [source] =
                rows_of<std::string>(connection_,
                                     "select rdb$expression_source from rdb$indices where rdb$index_name = ?",
                                     index.name.bytes())
                    .at(0);
            key = "COMPUTED BY " + source;
        }
        const std::string words = "index " + index.name.shown();
        const auto made_on = [&](const std::string& name, const std::string& table) {
            return fmt::format("CREATE {}{}INDEX {} ON {} {}", index.unique ? "UNIQUE " : "",
                               index.descending ? "DESCENDING " : "", name, table, key);
        };
        if (!is_possible || !index.active || !can_depend(index_type, index.name)) {
            all_.lost.push_back(words);
        } else if (add(words, made_on(index.name.quoted(), table_.quoted()))) {
            const std::string beside = table_beside(table_.bytes());
            const std::string name = fmt::format("{}_{}", beside, all_.tried.size());
            all_.tried.push_back({made_on(name, beside), name, index.name.bytes()});
        }
    }
}

void Gatherer::add_constraints() {
    for (const Name& name :
         names_of(connection_,
                  "select rdb$constraint_name from rdb$relation_constraints where "
                  "rdb$relation_name = ? and rdb$constraint_type in ('UNIQUE', 'FOREIGN KEY', "
                  "'CHECK') order by 1",
                  table_.bytes())) {
        all_.lost.push_back("constraint " + name.shown());
    }
}

void Gatherer::add_triggers(const Name& relation) {
    for (const Trigger& trigger : triggers_of(connection_, relation)) {
        const std::string& name = trigger.name.bytes();
        if (name == "T_" + table_.bytes() + "_RECNO" || name == "T_" + table_.bytes() + "_DELETES") continue;
        const std::string words = "trigger " + trigger.name.shown();
        const auto [source, position] =
            rows_of<std::optional<std::string>, int>(
                connection_,
                "select rdb$trigger_source, coalesce(rdb$trigger_sequence, 0) from rdb$triggers where "
                "rdb$trigger_name = ?",
                name)
                .at(0);
        if (!source || !can_depend(trigger_type, trigger.name)) {
            all_.lost.push_back(words);
            continue;
        }
        add(words, fmt::format("CREATE TRIGGER {} FOR {} {} {} POSITION {} {}", trigger.name.quoted(),
                               relation.quoted(), trigger.active ? "ACTIVE" : "INACTIVE", trigger.moment,
                               position, *source));
    }
}

void Gatherer::add_view(const Name& view) {
    const std::string words = "view " + view.shown();
    const auto [source] =
        rows_of<std::optional<std::string>>(
            connection_, "select rdb$view_source from rdb$relations where rdb$relation_name = ?",
            view.bytes())
            .at(0);
    std::string names;
    for (const Name& column : column_names_of(connection_, view))
        names += (names.empty() ? "" : ", ") + column.quoted();
    const bool is_possible = source && can_depend(view_type, view);
    if (!is_possible) all_.lost.push_back(words);
    if (!is_possible || !add(words, fmt::format("CREATE VIEW {} ({}) AS {}", view.quoted(), names, *source)))
        return;
    objects_.push_back(view);
    add_triggers(view);
}

constexpr int generator_object = 14;

// Rights on the table, on the views that are there again and on the generators; and those of the table's own
// triggers.
void Gatherer::add_rights() {
    static const std::map<std::string, std::string> privileges{{"S", "SELECT"},     {"I", "INSERT"},
                                                               {"U", "UPDATE"},     {"D", "DELETE"},
                                                               {"R", "REFERENCES"}, {"G", "USAGE"}};
    static const std::map<int, std::string> grantees{
        {view_type, "VIEW"}, {trigger_type, "TRIGGER"}, {5, "PROCEDURE"}, {8, "USER"},
        {13, "ROLE"},        {15, "FUNCTION"},          {18, "PACKAGE"}};
    const std::string generator = "G_" + table_.bytes(), trigger = "T_" + table_.bytes();
    const auto rows =
        rows_of<std::string, std::string, int, int, std::optional<std::string>, std::string, int>(
            connection_,
            "select p.rdb$user, trim(p.rdb$privilege), p.rdb$user_type, coalesce(p.rdb$grant_option, 0), "
            "trim(p.rdb$field_name), trim(p.rdb$relation_name), p.rdb$object_type from rdb$user_privileges p "
            "where "
            "p.rdb$user <> p.rdb$grantor and p.rdb$object_type in (0, 1, 14) order by p.rdb$user, "
            "p.rdb$relation_name, "
            "p.rdb$privilege, p.rdb$field_name");
    for (const auto& [user, privilege, user_type, option, field, object, object_type] : rows) {
        const bool is_of_trigger = user_type == trigger_type && (Name(user).bytes() == trigger + "_RECNO" ||
                                                                 Name(user).bytes() == trigger + "_DELETES");
        const bool is_on_own = object_type == generator_object
                                   ? object == generator + "_I" || object == generator + "_D"
                                   : std::ranges::find(objects_, Name(object)) != objects_.end();
        if (!is_of_trigger && !is_on_own) continue;
        const std::string words = "a right of " + Name(user).shown();
        const auto word = privileges.find(privilege);
        const auto grantee = grantees.find(user_type);
        const bool lacks_column = field && object == table_.bytes() && !has(*field);
        if (word == privileges.end() || grantee == grantees.end() || lacks_column) {
            all_.lost.push_back(words);
            continue;
        }
        add(words,
            fmt::format("GRANT {}{} ON {}{} TO {} {}{}", word->second,
                        field ? fmt::format(" ({})", Name(*field).quoted()) : "",
                        object_type == generator_object ? "GENERATOR " : "", Name(object).quoted(),
                        grantee->second, Name(user).quoted(), option == 1 ? " WITH GRANT OPTION" : ""));
    }
}

// Who makes a table owns it.
void Gatherer::add_owner() {
    const auto [owner, is_other] =
        rows_of<std::string, bool>(
            connection_,
            "select rdb$owner_name, rdb$owner_name <> current_user from rdb$relations where "
            "rdb$relation_name = ?",
            table_.bytes())
            .at(0);
    if (is_other) all_.lost.push_back(fmt::format("the ownership of {}", Name(owner).shown()));
}

}  // namespace

Belongings belongings_of(zmFBConn& connection, const Name& table, const std::vector<std::string>& columns,
                         const std::vector<Name>& views) {
    Gatherer gatherer(connection, table, columns);
    gatherer.add_indexes();
    gatherer.add_constraints();
    gatherer.add_triggers(table);
    for (const Name& view : views) gatherer.add_view(view);
    gatherer.add_rights();
    gatherer.add_owner();
    return std::move(gatherer).all();
}

std::string in_words_of_table(const Belongings& belongings, std::string message) {
    for (const TriedIndex& index : belongings.tried) {
        const std::size_t at = message.find('"' + index.tried_name + '"');
        if (at != std::string::npos) message.replace(at + 1, index.tried_name.size(), index.name);
    }
    return message;
}

}  // namespace zmfb::tool
