// Attaches to a database and lists its tables.
//
//     hello shop.fdb
#include <zmfbconn/connection.h>
#include <zmfbconn/database.h>
#include <zmfbconn/methods.h>

#include <iostream>
#include <string>

namespace m = zmfb::m;

int main(int argc, char** argv) {
    if (argc != 2) {
        std::cerr << "usage: hello DATABASE\n";
        return 2;
    }
    const std::string database = argv[1];
    if (const zmfb::Status prepared = zmfb::prepare_client(database); !prepared.ok()) {
        std::cerr << prepared.message() << '\n';
        return 1;
    }

    zmfb::zmFBConn connection(database, "SYSDBA");
    if (!connection.isconnected()) {
        std::cerr << zmfb::last_engine_message() << '\n';
        return 1;
    }
    std::cout << connection(m::getdatabasename) << " is attached\n";
    for (const zmfb::TableName& table : connection(m::gettablesname)) {
        std::cout << table.text() << ": " << connection(m::gettablereccount, table) << " records\n";
    }
}
