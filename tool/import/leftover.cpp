#include "tool/import/leftover.h"

#include <fmt/format.h>

#include "tool/catalog.h"
#include "tool/dependents.h"
#include "tool/import/new_table.h"
#include "tool/import/replacing.h"
#include "tool/say.h"

namespace zmfb::tool {
namespace {

std::optional<TableKind> kind_if_there(zmFBConn& connection, const std::string& table) {
    const Name name(table);
    if (!is_there(connection, ObjectKind::relation, name)) return std::nullopt;
    return kind_of(connection, name);
}

}  // namespace

Leftover leftover_beside(zmFBConn& connection, const std::string& table) {
    const std::string beside = table_beside(table);
    const auto kind = kind_if_there(connection, beside);
    if (!kind) return Leftover::none;
    if (*kind == TableKind::unfinished) return Leftover::dropped;
    if (*kind != TableKind::loaded) return Leftover::foreign;
    if (destination_of(connection, beside).added) return Leftover::dropped;
    const auto there = kind_if_there(connection, table);
    if (there == TableKind::unfinished) return Leftover::brought_in;
    return there == TableKind::driver ? Leftover::dropped : Leftover::homeless;
}

namespace {

std::vector<std::string> drop_beside(zmFBConn& connection, const std::string& table) {
    const std::string beside = table_beside(table);
    if (drop_unfinished_table(connection, beside)) return {};
    const bool added = destination_of(connection, beside).added;
    drop_table(connection, beside);
    std::vector<std::string> said{fmt::format(
        "an earlier import was cut off before its records came into {}: they were dropped", table)};
    if (added && !recount(connection, table)) {
        said.push_back(
            fmt::format("the records of {} are counted wrong; zmfb doctor says what helps when nobody "
                        "else uses the database",
                        table));
    }
    return said;
}

}  // namespace

std::vector<std::string> settle_leftover(zmFBConn& connection, const std::string& table) {
    const std::string beside = table_beside(table);
    switch (leftover_beside(connection, table)) {
        case Leftover::none:
        case Leftover::homeless:
        case Leftover::foreign:
            return {};
        case Leftover::dropped:
            return drop_beside(connection, table);
        case Leftover::brought_in:
            break;
    }
    std::vector<std::string> said{fmt::format(
        "an earlier import was cut off while its records came into {}: they are there now", table)};
    ImportHold hold(connection, beside);
    const Destination destination = destination_of(connection, beside);
    // Made anew: what is there can be the one that was given up, whole or half dropped.
    make_room(connection, table, made_columns_of(connection, beside),
              names_in(dependents_of_table(connection, Name(table)).taken), destination.again);
    for (std::string& refused : move_in(connection, hold, table, destination.again))
        said.push_back(std::move(refused));
    return said;
}

std::string already_there(const std::string& table) {
    return fmt::format("the table {} is there already; --replace replaces it, --append adds to it", table);
}

namespace {

void settle(zmFBConn& connection, ImportPlan& plan, LeftoverWish wish) {
    const std::string& table = plan.table;
    const Leftover leftover = leftover_beside(connection, table);
    if (leftover == Leftover::foreign && plan.table_exists && wish.goes_on) {
        plan.refusals.push_back(
            fmt::format("the table {} is there, whose name the import needs", table_beside(table)));
    } else if (leftover == Leftover::homeless) {
        plan.refusals.push_back(
            fmt::format("the table {0} has the records of an earlier import that was cut off, and {1} is not "
                        "there for them; "
                        "zmfb drop '{0}' drops them",
                        table_beside(table), table));
    } else if (leftover == Leftover::brought_in && wish.dry_run) {
        plan.notes.push_back(
            fmt::format("an earlier import was cut off while its records came into {}: this one would bring "
                        "them in first",
                        table));
        if (!wish.goes_on) plan.refusals.push_back(already_there(table));
    } else if (!wish.dry_run) {
        for (const std::string& said : settle_leftover(connection, table)) say("note: {}\n", said);
        plan.table_exists = is_there(connection, ObjectKind::relation, Name(table));
    }
}

}  // namespace

void plan_leftovers(zmFBConn& connection, ImportPlan& plan, LeftoverWish wish) try {
    if (plan.table.starts_with(table_beside(""))) {
        plan.refusals.push_back(
            fmt::format("tables that begin with {} are those that imports load; --table names another",
                        table_beside("")));
        return;
    }
    if (!plan.table_exists && !plan.beside_exists) return;
    for (const std::string& table : {plan.table, table_beside(plan.table)}) {
        const std::string who = who_fills(connection, table);
        if (!who.empty()) return plan.refusals.push_back(another_import(plan.table, who));
    }
    settle(connection, plan, wish);
} catch (const SqlError& error) {
    const bool is_in_use = error.message().find("is in use") != std::string::npos;
    plan.refusals.push_back(is_in_use ? another_import(plan.table, "") : error.message());
}

}  // namespace zmfb::tool
