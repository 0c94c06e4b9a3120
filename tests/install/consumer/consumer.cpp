// A program of somebody else: values, an error that it throws through the library, and, with the name of a
// database, an attached object.
#include <zmfbconn/connection.h>
#include <zmfbconn/database.h>
#include <zmfbconn/host/array.h>
#include <zmfbconn/host/class.h>
#include <zmfbconn/host/compare.h>
#include <zmfbconn/host/date.h>
#include <zmfbconn/host/driver.h>
#include <zmfbconn/host/error.h>
#include <zmfbconn/host/file.h>
#include <zmfbconn/host/number.h>
#include <zmfbconn/host/screen.h>
#include <zmfbconn/host/settings.h>
#include <zmfbconn/host/text.h>
#include <zmfbconn/host/workarea.h>
#include <zmfbconn/methods.h>
#include <zmfbconn/transaction.h>
#include <zmfbconn/version.h>

#include <iostream>
#include <stdexcept>
#include <string>

namespace {

int attach(const std::string& database) {
    zmfb::Status done = zmfb::prepare_client(database);
    if (done.ok()) done = zmfb::create_database(database, "SYSDBA", "");
    if (!done.ok()) {
        std::cerr << done.message() << '\n';
        return 1;
    }
    zmfb::zmFBConn connection(database, "SYSDBA");
    const zmfb::Value rows = connection.call("executequery", "select rdb$function_name from rdb$functions");
    std::cout << "attached: " << connection.isconnected() << ", " << rows.size() - 1 << " functions\n";
    if (!connection(zmfb::m::istable, "rdb$functions")) return 1;
    zmfb::Transaction work(connection);
    try {
        work.execute("select nothing");
        return 1;
    } catch (const zmfb::SqlError& error) {
        std::cout << "SQLSTATE " << error.sqlstate() << '\n';
    }
    return work.one<zmfb::Decimal>("select cast(? as numeric(9,2)) from rdb$database", 1) == 1 ? 0 : 1;
}

}  // namespace

int main(int argc, char** argv) {
    zmfb::zmFBConn unattached;
    unattached(zmfb::m::setloglevel, -1);
    unattached.call("setrddactive", "a text");
    try {
        return unattached(zmfb::m::isrddactive) ? 1 : 2;
    } catch (const zmfb::UnexpectedAnswer& error) {
        if (error.answer().text() != "a text") return 1;
    }
    if (zmfb::library_version() != ZMFB_VERSION) return 1;
    std::cout << "zmfbconn " << ZMFB_VERSION << "\ntrimmed: " << zmfb::host::alltrim("  text ").string()
              << '\n';

    const zmfb::host::ThrowingErrors thrown;
    try {
        unattached.call("nosuch");
        return 1;
    } catch (const zmfb::host::RaisedError& error) {
        std::cout << "thrown: " << error.what() << '\n';
    }
    return argc > 1 ? attach(argv[1]) : 0;
}
