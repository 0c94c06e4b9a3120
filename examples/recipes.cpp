// What programs do every day, each thing in a few lines: docs/recipes.md tells about them.
//
//     recipes customers.fdb customers.dbf
#include <zmfbconn/area.h>
#include <zmfbconn/connection.h>
#include <zmfbconn/database.h>
#include <zmfbconn/host/error.h>
#include <zmfbconn/methods.h>
#include <zmfbconn/transaction.h>

#include <chrono>
#include <cstdint>
#include <iostream>
#include <stdexcept>
#include <string>

namespace {

namespace m = zmfb::m;
using namespace std::chrono_literals;
using zmfb::zmFBConn;

void find_ignoring_case(zmFBConn& connection, const std::string& wanted) {
    zmfb::Transaction work(connection);
    for (const auto& [code, name] : work.query<int, std::string>(
             "select code, name from customers where zmupper(name) = zmupper(?)", wanted)) {
        std::cout << code << ' ' << name << '\n';
    }
}

void move_customer(zmFBConn& connection, std::int64_t recno, const std::string& city) {
    zmfb::Area customers(connection, "CUSTOMERS");
    if (!customers.go(recno)) throw std::runtime_error("no such customer");
    auto held = customers.lock(5s);  // has read the record anew; throws zmfb::InUse, which names who has it
    held["CITY"] = city;
    held.write();
}  // unlocked and closed here, whatever was thrown

std::int64_t add_customer(zmFBConn& connection, int code, const std::string& name) {
    zmfb::Area customers(connection, "CUSTOMERS");
    auto added = customers.append();
    added["CODE"] = code;
    added["NAME"] = name;
    added.write();
    return added.recno();
}

bool forgive(zmFBConn& connection, int code) {
    zmfb::Transaction work(connection);
    const std::int64_t rows = work.execute("update customers set credit = 0 where code = ?", code);
    work.commit();
    return rows == 1;
}

std::string why_not_locked(zmFBConn& connection, const zmfb::AreaId& area, std::int64_t recno) {
    if (connection(m::setrecordaslocked, "CUSTOMERS", area, zmfb::RecordNumber(recno))) return "";
    const std::string said = zmfb::last_engine_message();  // of that call: the next one begins anew
    if (!connection(m::getrlockareaid, "CUSTOMERS", zmfb::RecordNumber(recno)).text().empty())
        return "another has the record";
    if (!connection(m::getflockareaid, "CUSTOMERS").text().empty()) return "another has the table";
    return said.empty() ? "it was given back meanwhile" : said;
}

void run(const std::string& database, const std::string& dbf) {
    zmFBConn connection(database, "SYSDBA");
    if (!connection.isconnected()) throw std::runtime_error(zmfb::last_engine_message());
    connection(m::bringdbf, dbf);

    find_ignoring_case(connection, "MARÍA NÚÑEZ");
    move_customer(connection, 3, "Cork");
    std::cout << "record " << add_customer(connection, 11, "Ana") << '\n';
    std::cout << forgive(connection, 11) << forgive(connection, 99) << '\n';

    const zmfb::AreaId desk = connection(m::getuniqueareaid, "CUSTOMERS", "DESK");
    const zmfb::AreaId till = connection(m::getuniqueareaid, "CUSTOMERS", "TILL");
    std::cout << why_not_locked(connection, desk, 3) << '\n' << why_not_locked(connection, till, 3) << '\n';
    connection(m::unlockallrecords, "CUSTOMERS", desk);
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 3) {
        std::cerr << "usage: recipes DATABASE DBF\n";
        return 2;
    }
    const zmfb::host::ThrowingErrors thrown;  // the default error block would end the program on the spot
    try {
        zmfb::Status done = zmfb::prepare_client(argv[1]);
        if (done.ok()) done = zmfb::create_database(argv[1], "SYSDBA", "");
        if (!done.ok()) throw std::runtime_error(done.message());
        run(argv[1], argv[2]);
    } catch (const std::exception& error) {
        std::cerr << error.what() << '\n';
        return 1;
    }
}
