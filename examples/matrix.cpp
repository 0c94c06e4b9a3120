// Changes the structure of a table that has rows: out as a matrix, edited, looked at, applied.
//
//     matrix shop.fdb
//
// The database is made, and customers.tf beside it.
#include <zmfbconn/connection.h>
#include <zmfbconn/database.h>
#include <zmfbconn/host/result.h>

#include <fstream>
#include <iostream>
#include <sstream>
#include <string>

namespace {

using zmfb::Value;
using zmfb::zmFBConn;
using zmfb::host::array_of;

bool make_table(zmFBConn& connection) {
    const Value structure =
        array_of(array_of("CODE", "N", 6, 0), array_of("NAME", "C", 12, 0), array_of("FAX", "C", 10, 0));
    if (!connection.call("createtable", "customers", structure).logical()) return false;
    connection.call("executeupdate", "insert into customers (code, name, fax) values (1, 'Ana', '123')");
    connection.call("executeupdate", "insert into customers (code, name, fax) values (2, 'Tom', '456')");
    return true;
}

// What a person would do with an editor.
void edit(const std::string& file) {
    std::ifstream in(file, std::ios::binary);
    std::ostringstream all;
    all << in.rdbuf();
    std::string text = all.str();
    const auto replace = [&text](const std::string& what, const std::string& by) {
        text.replace(text.find(what), what.size(), by);
    };
    replace("=> 002::NAME::C::12::0", "=> 002::FULLNAME::C::30::0");
    replace("=> 003::FAX::C::10::0", "=> DROP FIELD");
    text += " CUSTOMERS>>004::SINCE::D::8::0 => 004::SINCE::D::8::0\r\n";
    std::ofstream(file, std::ios::binary) << text;
}

// The log of a matrix is an array of {text}.
void show_log(const char* title, const Value& outcome) {
    std::cout << title << ", ok: " << (outcome[1].logical() ? ".T." : ".F.") << '\n';
    for (const Value& line : outcome[2].items()) std::cout << "  " << line[1].text() << '\n';
}

void show_table(zmFBConn& connection) {
    const Value fields = connection.call("filterrddfields", connection.call("gettablestruct", "customers"));
    for (const Value& field : fields.items()) {
        std::cout << field[1].text() << ' ' << field[2].text() << ' ' << field[3].integer() << ' '
                  << field[4].integer() << '\n';
    }
    const Value rows = connection.call("executequery", "select code, fullname, since from customers");
    for (const Value& row : zmfb::host::data_rows(rows))
        std::cout << row[1].text() << " | " << row[2].text() << " | " << row[3].text() << '\n';
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::cerr << "usage: matrix DATABASE\n";
        return 2;
    }
    const std::string database = argv[1];
    std::string problem = zmfb::prepare_client(database);
    if (problem.empty()) problem = zmfb::create_database(database, "SYSDBA", "");
    if (problem.empty()) problem = zmfb::declare_functions(database, "SYSDBA", "");
    if (!problem.empty()) {
        std::cerr << problem << '\n';
        return 1;
    }
    zmFBConn connection(database, "SYSDBA");
    if (!connection.isconnected() || !make_table(connection)) return 1;

    connection.call("extractmatrix", array_of("customers"), "customers");
    edit("customers.tf");
    show_log("checked", connection.call("checkmatrix", "customers.tf"));
    show_log("applied", connection.call("applymatrix", "customers.tf"));
    show_table(connection);
}
