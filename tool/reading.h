/// Queries: what is between the tool and the transactions of the library.
#pragma once

#include <string>
#include <string_view>
#include <tuple>
#include <utility>
#include <vector>

#include "zmfbconn/transaction.h"

namespace zmfb::tool {

/// The bytes of a statement (UTF-8) for a method. Throws Failure (usage) for one with a character that the
/// texts of the database do not have.
std::string statement_bytes(std::string_view statement);

/// Logs a query (UTF-8) as methods log theirs.
void log_query(zmFBConn& connection, std::string_view query);

/// Begins a transaction to run a query in, which is logged.
Transaction begin_reading(zmFBConn& connection, std::string_view query);

/// Logs what a query has thrown as methods log it, and throws Failure with that message and what the engine
/// said; Cancelled, when what runs is to end.
[[noreturn]] void throw_failure(zmFBConn& connection, const SqlError& error, std::string_view message);

/// All rows of a query. Throws Failure.
template <class... T, class... Values>
std::vector<std::tuple<T...>> rows_of(zmFBConn& connection, std::string_view query, const Values&... values) {
    try {
        Transaction work = begin_reading(connection, query);
        std::vector<std::tuple<T...>> rows;
        for (auto& row : work.query<T...>(query, values...)) rows.push_back(std::move(row));
        work.commit();
        return rows;
    } catch (const SqlError& error) {
        throw_failure(connection, error, "cannot read the engine's tables");
    }
}

}  // namespace zmfb::tool
