// Attaches to a database and lists its tables.
//
//     hello shop.fdb
#include <zmfbconn/connection.h>
#include <zmfbconn/database.h>

#include <iostream>
#include <string>

int main(int argc, char** argv) {
    if (argc != 2) {
        std::cerr << "usage: hello DATABASE\n";
        return 2;
    }
    const std::string database = argv[1];
    const std::string problem = zmfb::prepare_client(database);
    if (!problem.empty()) {
        std::cerr << problem << '\n';
        return 1;
    }

    zmfb::zmFBConn connection(database, "SYSDBA");
    if (!connection.isconnected()) {
        std::cerr << zmfb::last_engine_message() << '\n';
        return 1;
    }
    std::cout << connection.call("getdatabasename").string() << " is attached\n";
    const zmfb::Value tables = connection.call("gettablesname");
    for (const zmfb::Value& table : tables.items()) {
        std::cout << table.text() << ": " << connection.call("gettablereccount", table).integer()
                  << " records\n";
    }
}
