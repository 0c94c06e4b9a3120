#include <algorithm>

#include "conn/public_call.h"
#include "host/error.h"
#include "host/utf8.h"
#include "sql/database.h"
#include "zmfbconn/connection.h"
#include "zmfbconn/database.h"

namespace zmfb {
namespace {

// The first attach makes the system tables. What it raises is why the database is not ready.
Status attach_once(const std::string& database, std::string_view user, std::string_view password) {
    std::string raised;
    const host::ScopedErrorBlock block(Value::block([&raised](Args args) {
        raised += host::to_utf8(host::error_description(args[0])) + '\n';
        return Value();
    }));
    zmFBConn connection(database, user, password);
    std::ranges::replace(raised, ';', '\n');
    const bool ready = connection.isconnected() && raised.empty();
    return ready ? Status() : Status(raised + last_engine_message());
}

}  // namespace

Status create_database(std::string_view database, std::string_view user, std::string_view password,
                       Functions functions) {
    const conn::PublicCall under_way;
    return sql::create_database(database, user, password, [=](const std::string& name) {
        Status installed = install_functions(name, user, password, functions);
        return installed.ok() ? attach_once(name, user, password) : installed;
    });
}

}  // namespace zmfb
