#include "tool/unknown_name.h"

#include <fmt/format.h>

#include <algorithm>
#include <set>

#include "tool/catalog.h"
#include "tool/errors.h"
#include "tool/name.h"
#include "tool/shell/statement.h"
#include "tool/suggest.h"

namespace zmfb::tool {
namespace {

template <class... Values>
std::vector<std::string> plain_names(zmFBConn& connection, std::string_view query,
                                     const Values&... values) try {
    std::vector<std::string> names;
    for (const Name& name : names_of(connection, query, values...)) {
        if (name.is_plain()) names.push_back(name.bytes());
    }
    return names;
} catch (const Failure&) {
    return {};
}

// The line of the message below the one that ends with these words: "Column unknown", and below it
// "C.NAEM".
std::string_view line_below(std::string_view message, std::string_view words) {
    const std::size_t found = message.find(words);
    if (found == std::string_view::npos) return {};
    message.remove_prefix(std::min(message.size(), message.find('\n', found)));
    message.remove_prefix(std::min(message.size(), message.find_first_not_of("\n -")));
    return message.substr(0, message.find('\n'));
}

// What a line of the message has between these words.
std::string_view between(std::string_view message, std::string_view before, std::string_view behind) {
    const std::size_t end = message.find(behind);
    if (end == std::string_view::npos) return {};
    message = message.substr(0, end);
    message.remove_prefix(message.rfind('\n') + 1);
    const std::size_t start = message.find(before);
    return start == std::string_view::npos ? std::string_view() : message.substr(start + before.size());
}

// The last part of "C.NAEM", without quotes.
std::string last_part(std::string_view name) {
    std::string part(name.substr(name.find_last_of('.') + 1));
    std::erase(part, '"');
    return part;
}

}  // namespace

std::vector<std::string> plain_tables(zmFBConn& connection) {
    return plain_names(connection,
                       "select rdb$relation_name from rdb$relations where rdb$system_flag = 0 order by 1");
}

std::vector<std::string> plain_columns(zmFBConn& connection, std::string_view statement,
                                       std::string_view prefix) {
    const std::string of_one =
        fmt::format("select rdb$field_name from rdb$relation_fields where rdb$relation_name = {}", any_name);
    const std::string of_all = fmt::format(
        "select distinct f.rdb$field_name from rdb$relation_fields f join rdb$relations r on "
        "r.rdb$relation_name = f.rdb$relation_name where r.rdb$system_flag = 0 and f.rdb$field_name starting "
        "with {}",
        any_name);
    const std::vector<std::string_view> tables = tables_in(statement);
    if (tables.empty()) return plain_names(connection, of_all, typed_name(std::string(prefix)).bytes());
    std::set<std::string> all;
    for (const std::string_view table : tables) {
        for (std::string& column : plain_names(connection, of_one, typed_name(std::string(table)).bytes()))
            all.insert(std::move(column));
    }
    return {all.begin(), all.end()};
}

std::string meant_instead(zmFBConn& connection, std::string_view statement, std::string_view message) {
    std::string column = last_part(line_below(message, "Column unknown"));
    std::string table = last_part(line_below(message, "Table unknown"));
    if (column.empty()) column = last_part(between(message, "column ", " does not exist in table"));
    if (table.empty()) table = last_part(between(message, "Table ", " does not exist"));
    const std::string nearest = !column.empty()  ? nearest_name(column, plain_columns(connection, statement))
                                : !table.empty() ? nearest_name(table, plain_tables(connection))
                                                 : "";
    // The very name: it is what stands before the point that is wrong.
    if (nearest.empty() || nearest == column) return "";
    return fmt::format("did you mean {}?", nearest);
}

}  // namespace zmfb::tool
