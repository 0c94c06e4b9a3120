// Changes the structure of a table that has rows: out as a matrix, edited, looked at, applied.
//
//     matrix shop.fdb
//
// The database is made, and customers.tf beside it.
#include <zmfbconn/connection.h>
#include <zmfbconn/database.h>
#include <zmfbconn/methods.h>
#include <zmfbconn/transaction.h>

#include <fstream>
#include <iostream>
#include <sstream>
#include <string>

namespace {

namespace m = zmfb::m;
using zmfb::zmFBConn;

bool make_table(zmFBConn& connection) {
    const zmfb::Structure structure{{"CODE", "N", 6, 0}, {"NAME", "C", 12, 0}, {"FAX", "C", 10, 0}};
    if (!connection(m::createtable, "customers", structure)) return false;
    zmfb::Transaction work(connection);
    auto insert = work.prepare("insert into customers (code, name, fax) values (?, ?, ?)");
    insert.execute(1, "Ana", "123");
    insert.execute(2, "Tom", "456");
    work.commit();
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

void show_log(const char* title, const zmfb::MatrixLog& log) {
    std::cout << title << ", ok: " << (log.ok ? ".T." : ".F.") << '\n';
    for (const std::string& line : log.lines) std::cout << "  " << line << '\n';
}

void show_table(zmFBConn& connection) {
    const zmfb::Structure all = connection(m::gettablestruct, "customers");
    for (const zmfb::FieldDescriptor& field : connection(m::filterrddfields, all)) {
        std::cout << field.name << ' ' << field.type << ' ' << field.length << ' ' << field.decimals << '\n';
    }
    zmfb::Transaction work(connection);
    for (const zmfb::Row& row : work.rows("select code, fullname, since from customers")) {
        std::cout << row["code"].as<int>() << " | " << row["fullname"].as<std::string>() << " | "
                  << row["since"].text().value_or("NULL") << '\n';
    }
}

}  // namespace

int main(int argc, char** argv) try {
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
} catch (const zmfb::SqlError& error) {
    std::cerr << error.what() << '\n';
    return 1;
}
