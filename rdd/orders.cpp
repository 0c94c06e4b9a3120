#include "rdd/orders.h"

#include <fmt/format.h>

#include <algorithm>
#include <chrono>
#include <thread>

#include "host/text.h"
#include "rdd/key_expression.h"
#include "rdd/order_catalog.h"
#include "zmfbconn/transaction.h"

namespace zmfb::rdd {

namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::seconds patience(5);
constexpr std::chrono::milliseconds pause(50);
// What can be read of a description (getindexdescription).
constexpr std::size_t longest_description = 255;

// A transaction that is refused at once what others are using, and does not wait for them without end: so the
// engine serves one while another that may write is open in this process.
class Refusable {
  public:
    explicit Refusable(zmFBConn& connection) : beside_(connection), work_(connection) {}
    Transaction& work() { return work_; }

  private:
    Transaction beside_, work_;
};

// Made by somebody else at the same moment, or still in use.
bool may_pass(const SqlError& error) {
    return error.sqlstate() == "40001" || error.sqlstate() == "42S11" || error.sqlstate() == "23000";
}

bool says(const SqlError& error, std::string_view words) {
    return error.message().find(words) != std::string::npos;
}

// Does something with the order in one transaction; again and again while others are in the way.
template <class Change>
void with_patience(zmFBConn& connection, std::string_view what, const Change& change) {
    for (const auto end = Clock::now() + patience;;) {
        try {
            Refusable refusable(connection);
            change(refusable.work());
            return refusable.work().commit();
        } catch (const SqlError& error) {
            if (says(error, "key size exceeds"))
                throw OrderError(fmt::format("{}: its key is too long", what));
            const bool again = may_pass(error);
            if (!again && !says(error, "is in use")) throw;
            if (!again || Clock::now() > end)
                throw OrderError(fmt::format("{}: it is in use\n{}", what, error.message()));
        }
        std::this_thread::sleep_for(pause);
    }
}

void drop_indexes(Transaction& work, std::string_view table, std::string_view order) {
    for (const std::string& index : index_names(table, order)) {
        if (is_there(work, index)) work.execute(fmt::format("drop index {}", index));
    }
}

void create_indexes(Transaction& work, std::string_view table, const Order& order, const OrderNote& note) {
    const auto names = index_names(table, order.name);
    for (const std::string& index : names) {
        const std::string_view way = index == names.back() ? "descending " : "";
        work.prepare(
                fmt::format("create {}index {} on \"{}\" computed by ({})", way, index, table, order.key),
                TextForm::as_kept)
            .execute();
        std::string description = description_of(note);
        for (std::size_t at = 0; (at = description.find('\'', at)) != std::string::npos; at += 2)
            description.insert(at, "'");
        work.prepare(fmt::format("comment on index {} is '{}'", index, description), TextForm::as_kept)
            .execute();
    }
}

void check_name(std::string_view name) {
    const bool is_fine = !name.empty() && name.size() <= 31 && std::ranges::all_of(name, [](char c) {
        return (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_';
    });
    if (!is_fine)
        throw OrderError(
            fmt::format("\"{}\" is no name of an order: 1 to 31 letters, digits and _ are", name));
}

void check_description(std::string_view description, std::string_view order) {
    if (description.size() > longest_description)
        throw OrderError(fmt::format("The expression of the order {} is {} characters too long", order,
                                     description.size() - longest_description));
    if (std::ranges::any_of(description, [](unsigned char c) { return c > 127; }))
        throw OrderError(
            fmt::format("The expression of the order {} has letters in it that are not of ASCII", order));
}

const NotedOrder* find(const std::vector<NotedOrder>& orders, std::string_view name) {
    const auto found =
        std::ranges::find(orders, name, [](const NotedOrder& order) { return order.note.name; });
    return found == orders.end() ? nullptr : &*found;
}

NotedOrder existing(Transaction& work, std::string_view table, std::string_view name) {
    const auto orders = noted_orders(work, table);
    if (const NotedOrder* found = find(orders, name)) return *found;
    throw OrderError(fmt::format("{} has no order {}", table, name));
}

}  // namespace

std::vector<KeptOrder> orders_of(zmFBConn& connection, std::string_view table, const Structure& fields) {
    std::vector<NotedOrder> noted;
    {
        Transaction work(connection, Access::read_only);
        noted = noted_orders(work, table);
    }
    std::vector<KeptOrder> orders;
    for (const auto& [note, in_use] : noted) {
        try {
            orders.push_back(
                {order_of(table, note.name, note.expression, note.unique, {fields}), in_use == 2});
        } catch (const OrderError&) {
            // Its description was changed by hand; the others are as good as before.
        }
    }
    return orders;
}

void create_order(zmFBConn& connection, std::string_view table, const Structure& fields,
                  const OrderRequest& wanted) {
    const std::string name = host::upper(wanted.name).string();
    check_name(name);
    const OrderNote note{name, wanted.expression, wanted.unique};
    check_description(description_of(note), name);  // before it is read: it may nest without end
    const Order order = order_of(table, name, wanted.expression, wanted.unique, {fields, wanted.aliases});
    with_patience(
        connection, fmt::format("The order {} of {} cannot be made", name, table), [&](Transaction& work) {
            const auto orders = noted_orders(work, table);
            const NotedOrder* const found = find(orders, name);
            if (found != nullptr && found->note != note)
                throw OrderError(
                    fmt::format("{} has another order {} already: {}", table, name, found->note.expression));
            if (found != nullptr && found->in_use == 2) return;
            drop_indexes(work, table, name);
            create_indexes(work, table, order, note);
        });
}

void drop_order(zmFBConn& connection, std::string_view table, std::string_view name) {
    const std::string upper = host::upper(name).string();
    with_patience(connection, fmt::format("The order {} of {} cannot be dropped", upper, table),
                  [&](Transaction& work) {
                      (void)existing(work, table, upper);
                      drop_indexes(work, table, upper);
                  });
}

void rebuild_order(zmFBConn& connection, std::string_view table, const Structure& fields,
                   std::string_view name) {
    const std::string upper = host::upper(name).string();
    with_patience(connection, fmt::format("The order {} of {} cannot be rebuilt", upper, table),
                  [&](Transaction& work) {
                      const OrderNote note = existing(work, table, upper).note;
                      drop_indexes(work, table, upper);
                      create_indexes(work, table,
                                     order_of(table, upper, note.expression, note.unique, {fields}), note);
                  });
}

}  // namespace zmfb::rdd
