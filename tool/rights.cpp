#include "tool/rights.h"

#include <fmt/format.h>

#include "tool/functions.h"

namespace zmfb::tool {
namespace {

constexpr std::array<std::string_view, 3> system_tables{"RDDSYS_OPN", "RDDSYS_FLK", "RDDSYS_RLK"};
const Name registrations("RDDSYS_OPN");

// What belongs to a table of the driver, by its name.
Name part_of(const Name& table, std::string_view before, std::string_view behind) {
    return Name(fmt::format("{}{}{}", before, table.bytes(), behind));
}

void add_functions(std::vector<Right>& rights) {
    for (const DriverFunction& function : driver_functions)
        rights.push_back({"EXECUTE", "FUNCTION", Name(function.name), "", Name("PUBLIC")});
}

// Who writes to the table could move its numbers, did not the triggers have these for themselves.
void add_triggers(std::vector<Right>& rights, const Name& table) {
    const Name numbers = part_of(table, "T_", "_RECNO");
    rights.push_back({"USAGE", "GENERATOR", part_of(table, "G_", "_I"), "TRIGGER", numbers});
    rights.push_back({"SELECT, UPDATE", "TABLE", registrations, "TRIGGER", numbers});
    rights.push_back(
        {"USAGE", "GENERATOR", part_of(table, "G_", "_D"), "TRIGGER", part_of(table, "T_", "_DELETES")});
}

}  // namespace

std::string Right::text() const {
    const std::string object =
        object_kind.empty() ? "" : fmt::format(" on {} {}", object_kind, this->object.shown());
    return fmt::format("{}{} to {}{}{}", privileges, object, grantee_kind, grantee_kind.empty() ? "" : " ",
                       grantee.shown());
}

std::string Right::statement() const {
    const std::string object =
        object_kind.empty() ? "" : fmt::format(" ON {} {}", object_kind, this->object.quoted());
    const std::string to =
        grantee_kind.empty() ? grantee.bytes() : fmt::format("{} {}", grantee_kind, grantee.quoted());
    return fmt::format("GRANT {}{} TO {}", privileges, object, to);
}

std::vector<Right> rights_for(Level level, const Name& user, const std::vector<Table>& tables) {
    std::vector<Right> rights;
    const auto give = [&](std::string_view privileges, std::string_view kind, const Name& object) {
        rights.push_back({privileges, kind, object, "USER", user});
    };
    const auto give_any = [&](std::string_view privileges) { give(privileges, "", Name("")); };
    add_functions(rights);
    for (const Table& table : tables)
        give(level == Level::read ? "SELECT" : "SELECT, INSERT, UPDATE, DELETE", "TABLE", table.name);
    if (level == Level::read) return rights;
    for (const Table& table : tables) {
        if (table.kind == TableKind::driver) add_triggers(rights, table.name);
    }
    for (const std::string_view table : system_tables) {
        add_triggers(rights, Name(table));
        give("SELECT, INSERT, DELETE", "TABLE", Name(table));
    }
    if (level == Level::write) return rights;
    // Triggers of a table that this user makes have nothing of their own yet.
    give("UPDATE", "TABLE", registrations);
    give_any("CREATE TABLE");
    give_any("CREATE SEQUENCE");
    if (level == Level::make) return rights;
    for (const std::string_view any : {"ALTER ANY TABLE", "DROP ANY TABLE", "DROP ANY SEQUENCE"})
        give_any(any);
    return rights;
}

}  // namespace zmfb::tool
