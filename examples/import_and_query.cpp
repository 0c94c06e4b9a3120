// Brings a DBF file into a new database and asks for its rows.
//
//     import_and_query customers.fdb customers.dbf
#include <zmfbconn/connection.h>
#include <zmfbconn/database.h>
#include <zmfbconn/exact.h>
#include <zmfbconn/host/utf8.h>
#include <zmfbconn/methods.h>

#include <iostream>
#include <string>

namespace m = zmfb::m;

int main(int argc, char** argv) {
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
    const zmfb::ExactQueries as_stored;  // numbers with one sign, texts without blanks at their end
    const zmfb::Value result =
        connection.call("executequery", "select name, credit from customers order by recno");
    for (std::size_t row = 2; row <= result.size(); ++row) {  // element 1 is the header
        std::cout << zmfb::host::to_utf8(result[row][1].text()) << ' ' << result[row][2].text() << '\n';
    }
}
