// Changes the structure of a table that has rows: out as a matrix, edited, looked at, applied.
//
//     matrix shop.fdb
//
// The database is made, and customers.tf beside it.
#include <zmfbconn/connection.h>
#include <zmfbconn/database.h>
#include <zmfbconn/host/result.h>
#include <zmfbconn/methods.h>

#include <fstream>
#include <iostream>
#include <sstream>
#include <string>

namespace {

namespace m = zmfb::m;
using zmfb::Value;
using zmfb::zmFBConn;

bool make_table(zmFBConn& connection) {
    const zmfb::Structure structure{{"CODE", "N", 6, 0}, {"NAME", "C", 12, 0}, {"FAX", "C", 10, 0}};
    return connection(m::createtable, "customers", structure) &&
           connection(m::executeupdate, "insert into customers (code, name, fax) values (1, 'Ana', '123')")
               .ok() &&
           connection(m::executeupdate, "insert into customers (code, name, fax) values (2, 'Tom', '456')")
               .ok();
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

void show_log(const char* title, const zmfb::MatrixLog& log) {
    std::cout << title << ", ok: " << (log.ok ? ".T." : ".F.") << '\n';
    for (const std::string& line : log.lines) std::cout << "  " << line << '\n';
}

void show_table(zmFBConn& connection) {
    const zmfb::Structure all = connection(m::gettablestruct, "customers");
    for (const zmfb::FieldDescriptor& field : connection(m::filterrddfields, all)) {
        std::cout << field.name << ' ' << field.type << ' ' << field.length << ' ' << field.decimals << '\n';
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
    zmfb::Status done = zmfb::prepare_client(database);
    if (done.ok()) done = zmfb::create_database(database, "SYSDBA", "");
    if (!done.ok()) {
        std::cerr << done.message() << '\n';
        return 1;
    }
    zmFBConn connection(database, "SYSDBA");
    if (!connection.isconnected() || !make_table(connection)) return 1;

    connection(m::extractmatrix, zmfb::TableNames{"customers"}, "customers");
    edit("customers.tf");
    show_log("checked", connection(m::checkmatrix, "customers.tf"));
    show_log("applied", connection(m::applymatrix, "customers.tf"));
    show_table(connection);
}
