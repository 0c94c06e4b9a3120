#include "tool/drop.h"

#include <fmt/format.h>

#include <algorithm>
#include <cctype>
#include <chrono>
#include <thread>

#include "host/text.h"
#include "tool/catalog.h"
#include "tool/interrupt.h"
#include "tool/locks.h"
#include "tool/reading.h"
#include "zmfbconn/cancel.h"
#include "zmfbconn/database.h"
#include "zmfbconn/methods.h"

namespace zmfb::tool {

namespace {

std::string what_was_dropped(zmFBConn& connection, const Name& table, std::vector<Name> objects) {
    objects.push_back(table);
    std::erase_if(objects, [&](const Name& one) { return is_there(connection, ObjectKind::relation, one); });
    return objects.empty() ? "nothing was dropped" : fmt::format("{} dropped by then", joined(objects));
}

bool is_of_a_name(char c) { return std::isalnum(static_cast<unsigned char>(c)) != 0 || c == '_' || c == '$'; }

bool names(const std::string& statement, const std::string& table) {
    const std::string text = " " + host::upper(statement).string() + " ";
    for (std::size_t at = text.find(table); at != std::string::npos; at = text.find(table, at + 1)) {
        if (!is_of_a_name(text[at - 1]) && !is_of_a_name(text[at + table.size()])) return true;
    }
    return false;
}

bool is_named_by_others(zmFBConn& connection, const Name& table) try {
    constexpr std::string_view query =
        "select mon$sql_text from mon$statements where mon$attachment_id <> current_connection and "
        "mon$sql_text is not null";
    Transaction work = begin_reading(connection, query);
    auto statements = work.rows(query);
    return std::ranges::any_of(
        statements, [&](const Row& row) { return names(row[0].text().value_or(""), table.text()); });
} catch (const SqlError& error) {
    throw_failure(connection, error, "cannot read the engine's tables");
}

}  // namespace

// The method drops a view once for each time that it names the table, and gives up at the second.
void drop_with_views(zmFBConn& connection, const Name& table, const std::vector<Name>& views) try {
    const auto dropped = [&](const Name& view) { return connection(m::dropview, view.bytes()); };
    if (std::ranges::all_of(views, dropped) && connection(m::droptable, table.bytes())) return;
    const std::string said = last_engine_message();
    const bool stands = connection(m::istable, table.bytes());
    throw Failure{
        Exit::failed,
        fmt::format("{} was {}", table.shown(), stands ? "not dropped" : "dropped, but not its generators"),
        said};
} catch (const Cancelled&) {
    begin_undoing();
    throw Failure{ending_status(), what_was_dropped(connection, table, views)};
}

std::optional<Failure> use_by_others(zmFBConn& connection, const Name& table) {
    for (const Registration& open : registrations_of(connection)) {
        if (open.table != table.text() || open.owner.alive == Alive::no) continue;
        return Failure{
            Exit::failed, fmt::format("the table {} is open in {}", table.shown(), open.owner.holder.words()),
            "",
            "\"zmfb opens\" lists what is open; \"zmfb clear\" forgets what is left of programs that have "
            "crashed"};
    }
    if (!is_named_by_others(connection, table)) return std::nullopt;
    return Failure{Exit::failed, fmt::format("the table {} is in use by another program", table.shown())};
}

void require_unused_by_others(zmFBConn& connection, const Name& table) {
    for (int attempt = 1;; ++attempt) {
        const std::optional<Failure> use = use_by_others(connection, table);
        if (!use) return;
        if (!wait_for_others(use->message, attempt)) throw *use;
    }
}

bool wait_for_others(std::string_view message, int attempt) {
    constexpr int attempts = 20;
    constexpr auto pause = std::chrono::milliseconds(250);
    const auto says = [&](std::string_view words) { return message.find(words) != std::string_view::npos; };
    if (attempt == attempts || !(says("is in use") || says("concurrent transaction"))) return false;
    std::this_thread::sleep_for(pause);
    return true;
}

}  // namespace zmfb::tool
