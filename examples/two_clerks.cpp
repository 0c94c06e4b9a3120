// Two clerks take orders at once, each in a process of its own, until the stock is sold: tables as work
// areas.
//
//     two_clerks shop.fdb
//
// The database is made, with customers, stock and orders. In the end the orders are held against what is
// left.
#include <sys/wait.h>
#include <unistd.h>
#include <zmfbconn/area.h>
#include <zmfbconn/database.h>
#include <zmfbconn/host/error.h>
#include <zmfbconn/host/text.h>
#include <zmfbconn/methods.h>

#include <array>
#include <chrono>
#include <cstdlib>
#include <iostream>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

namespace m = zmfb::m;
namespace host = zmfb::host;
using namespace std::chrono_literals;

constexpr std::array names = {"Smith", "O'Hara", "Brown"};
constexpr std::array names_as_told = {"SMITH", "o'hara", "bROWN"};
constexpr std::array items = {"bolts", "nails", "screws"};
constexpr int pieces_at_first = 50;

// Goes to the record of that key.
void find(zmfb::Area& area, const host::Value& key) {
    if (!area.seek(key.text())) throw std::runtime_error(key.string() + " is not in " + area.table());
}

// What a clerk works with: the three tables, and the fields that are used often.
class Clerk {
  public:
    Clerk(std::string name, const std::string& database)
        : name_(std::move(name)),
          connection_(database, "SYSDBA"),
          customers_(connection_, "CUSTOMERS"),
          stock_(connection_, "STOCK"),
          orders_(connection_, "ORDERS"),
          onhand_(stock_.field<std::int64_t>("ONHAND")) {
        customers_.order("NAME");
        stock_.order("ITEM");
    }

    // The number of the new order; none when there is not enough of the item.
    std::optional<std::int64_t> take_order(const std::string& name, const std::string& item, int pieces) {
        find(customers_, host::padr(host::upper(name), 20));
        find(stock_, host::padr(item, 10));
        zmfb::Together together(connection_);  // both writes or none
        auto goods = stock_.lock(60s);         // has read the record anew, or throws who has it
        if (goods[onhand_] < pieces) return std::nullopt;
        goods[onhand_] -= pieces;
        goods.write();
        auto order = orders_.append();
        order["CUSTOMER"] = customers_.recno();
        order["ITEM"] = item;
        order["PIECES"] = pieces;
        order["CLERK"] = name_;
        order.write();
        together.commit();
        return order.recno();
    }

    // Sells by threes as long as there is enough of anything.
    void work() {
        std::vector<std::int64_t> numbers;
        for (std::size_t sold = 1; sold > 0;) {
            sold = 0;
            for (std::size_t k = 0; k < items.size(); ++k) {
                const auto number = take_order(names_as_told[k], items[k], 3);
                if (number) numbers.push_back(*number), ++sold;
            }
        }
        for (const std::int64_t number : numbers) {
            if (!orders_.go(number) || orders_["CLERK"].as<std::string>() != name_)
                throw std::runtime_error("order " + std::to_string(number) + " is another's");
        }
    }

  private:
    std::string name_;
    zmfb::zmFBConn connection_;
    zmfb::Area customers_, stock_, orders_;
    zmfb::AreaField<std::int64_t> onhand_;
};

void make_database(const std::string& database) {
    const zmfb::Status made = zmfb::create_database(database, "SYSDBA", "");
    if (!made.ok()) throw std::runtime_error(made.message());
    zmfb::zmFBConn connection(database, "SYSDBA");
    connection(m::createtable, "CUSTOMERS", zmfb::Structure{{"NAME", "C", 20, 0}});
    connection(m::createtable, "STOCK", zmfb::Structure{{"ITEM", "C", 10, 0}, {"ONHAND", "N", 6, 0}});
    connection(
        m::createtable, "ORDERS",
        zmfb::Structure{
            {"CUSTOMER", "N", 10, 0}, {"ITEM", "C", 10, 0}, {"PIECES", "N", 6, 0}, {"CLERK", "C", 10, 0}});
    zmfb::Area customers(connection, "CUSTOMERS"), stock(connection, "STOCK");
    customers.create_order("NAME", "UPPER(NAME)");
    stock.create_order("ITEM", "ITEM");
    for (const char* name : names) {
        auto customer = customers.append();
        customer["NAME"] = name;
        customer.write();
    }
    for (const char* item : items) {
        auto goods = stock.append();
        goods["ITEM"] = item;
        goods["ONHAND"] = pieces_at_first;
        goods.write();
    }
}

// Holds the orders against what is left.
void check(const std::string& database) {
    zmfb::zmFBConn connection(database, "SYSDBA");
    zmfb::Area stock(connection, "STOCK"), orders(connection, "ORDERS");
    std::int64_t left = 0, sold = 0;
    for (const zmfb::Area& goods : stock) left += goods["ONHAND"].as<std::int64_t>();
    for (const zmfb::Area& order : orders) sold += order["PIECES"].as<std::int64_t>();
    const auto first = std::int64_t{pieces_at_first} * std::ssize(items);
    std::cout << orders.count() << " orders of " << sold << " pieces; " << left << " pieces are left of "
              << first << "\nthe sums " << (left + sold == first ? "agree" : "differ") << '\n';
}

// Begins a process that does `work`: the client library must not be taken through a fork.
template <class Work>
pid_t begin(const Work& work) {
    const pid_t child = fork();
    if (child != 0) return child;
    // The default error block would end the process on the spot, and its locks would stay.
    const host::ThrowingErrors thrown;
    try {
        work();
        std::exit(EXIT_SUCCESS);
    } catch (const std::exception& error) {
        std::cerr << error.what() << '\n';
        std::exit(EXIT_FAILURE);
    }
}

bool end(pid_t child) {
    int status = 0;
    return child > 0 && waitpid(child, &status, 0) == child && status == 0;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::cerr << "usage: two_clerks DATABASE\n";
        return 2;
    }
    const std::string database = argv[1];
    if (const zmfb::Status prepared = zmfb::prepare_client(database); !prepared.ok()) {
        std::cerr << prepared.message() << '\n';
        return 1;
    }
    if (!end(begin([&] { make_database(database); }))) return 1;
    const pid_t ann = begin([&] { Clerk("Ann", database).work(); });
    const pid_t bob = begin([&] { Clerk("Bob", database).work(); });
    const bool ann_ended = end(ann), bob_ended = end(bob);
    if (!ann_ended || !bob_ended) return 1;
    return end(begin([&] { check(database); })) ? 0 : 1;
}
