// Brings a DBF file into a new database and asks for its rows.
//
//     import_and_query customers.fdb customers.dbf
#include <zmfbconn/connection.h>
#include <zmfbconn/database.h>
#include <zmfbconn/methods.h>
#include <zmfbconn/transaction.h>

#include <iostream>
#include <string>

namespace m = zmfb::m;

int main(int argc, char** argv) try {
    if (argc != 3) {
        std::cerr << "usage: import_and_query DATABASE DBF\n";
        return 2;
    }
    const std::string database = argv[1];
    zmfb::Status done = zmfb::prepare_client(database);
    if (done.ok()) done = zmfb::create_database(database, "SYSDBA", "");
    if (!done.ok()) {
        std::cerr << done.message() << '\n';
        return 1;
    }

    zmfb::zmFBConn connection(database, "SYSDBA");
    if (!connection.isconnected() || !connection(m::bringdbf, argv[2])) return 1;

    for (const zmfb::TableName& table : connection(m::gettablesname)) {
        std::cout << table.text() << ": " << connection(m::gettablereccount, table) << " records\n";
    }
    zmfb::Transaction work(connection);
    for (const auto& [name, credit] :
         work.query<std::string, zmfb::Decimal>("select name, credit from customers order by recno")) {
        std::cout << name << ' ' << credit << '\n';
    }
} catch (const zmfb::SqlError& error) {
    std::cerr << error.what() << '\n';
    return 1;
}
