#include "tool/database_encoding.h"

#include <fmt/format.h>

#include <optional>

#include "tool/encoding.h"
#include "tool/interrupt.h"
#include "tool/session.h"
#include "zmfbconn/transaction.h"

namespace zmfb::tool {
namespace {

constexpr std::string_view said_with = "Texts for ZMRDDFIRE are ";

// The word behind those.
std::string said_in(const std::string& description) {
    const std::size_t at = description.find(said_with);
    if (at == std::string::npos) return "";
    const std::string rest = description.substr(at + said_with.size());
    return rest.substr(0, rest.find_first_of(" \r\n"));
}

// An older client library has no transactions, and so nothing that would be converted.
std::string encoding_of(zmFBConn& connection) try {
    Transaction work(connection, Access::read_only);
    const auto [set, description] = work.one<std::string, std::optional<std::string>>(
        "select coalesce(rdb$character_set_name, ''), rdb$description from rdb$database");
    const std::string said = said_in(description.value_or(""));
    return said.empty() && set == "UTF8" ? "UTF-8" : said;
} catch (const SqlError& error) {
    if (error.sqlstate() == "0A000") return "";
    require_uninterrupted();
    const Exit status = tells_of_a_lost_connection(error.message()) ? Exit::not_attached : Exit::failed;
    throw Failure{status, "cannot read the description of the database", error.message()};
}

}  // namespace

void keep_encoding(zmFBConn& connection) try {
    Transaction work(connection);
    work.execute(fmt::format("COMMENT ON DATABASE IS '{}{}'", said_with, encoding_name()));
    work.commit();
} catch (const SqlError& error) {
    throw Failure{Exit::failed, "the database cannot keep the encoding of its texts", error.message()};
}

void adopt_encoding(zmFBConn& connection) {
    const std::string name = encoding_of(connection);
    if (name == "UTF-8") return set_utf8();
    if (name.empty() || set_encoding(name)) return;
    throw Failure{
        Exit::not_attached,
        fmt::format("the database says that its texts are in {}, which is no single-byte character set",
                    name),
        "", "--encoding names another"};
}

}  // namespace zmfb::tool
