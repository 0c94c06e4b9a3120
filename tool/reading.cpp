#include "tool/reading.h"

#include <fmt/format.h>

#include "tool/encoding.h"
#include "tool/interrupt.h"
#include "tool/session.h"
#include "tool/shell/statement.h"
#include "zmfbconn/cancel.h"
#include "zmfbconn/methods.h"

namespace zmfb::tool {
namespace {

constexpr int query_log_level = 8, error_log_level = 1;

std::string latin1_bytes(std::string_view text) {
    const auto latin1 = to_latin1(text);
    if (!latin1) throw Failure{Exit::usage, "the statement has a character outside " + encoding_name()};
    return *latin1;
}

}  // namespace

// The engine has names in UTF-8, whatever the texts in its tables are.
std::string statement_bytes(std::string_view statement) {
    std::string bytes;
    for (const std::string_view name : quoted_names(statement)) {
        const auto before = static_cast<std::size_t>(name.data() - statement.data());
        bytes += latin1_bytes(statement.substr(0, before));
        bytes += name;
        statement.remove_prefix(before + name.size());
    }
    return bytes + latin1_bytes(statement);
}

void log_query(zmFBConn& connection, std::string_view query) {
    connection(m::writelog, "[QURY] Statement: " + statement_bytes(query), query_log_level);
}

Transaction begin_reading(zmFBConn& connection, std::string_view query) {
    log_query(connection, query);
    set_database_encoding(connection, encoding_name());
    return Transaction(connection, Access::read_only);
}

void throw_failure(zmFBConn& connection, const SqlError& error, std::string_view message) {
    connection(m::writelog, error.method_text(), error_log_level);
    if (interrupted()) throw Cancelled();
    throw Failure{Exit::failed, std::string(message), error.message()};
}

}  // namespace zmfb::tool
