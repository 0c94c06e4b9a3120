#include "rdd/order_catalog.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstdint>

namespace zmfb::rdd {

namespace {

constexpr std::string_view plain = "Order ", unique = "Unique order ", behind_name = ": ";
constexpr std::string_view own_indexes = "RDDORD_";

constexpr std::string_view indexes_of_table =
    "select RDB$INDEX_NAME, coalesce(RDB$INDEX_INACTIVE, 0), RDB$DESCRIPTION from RDB$INDICES "
    "where RDB$RELATION_NAME = ? and RDB$INDEX_NAME starting with ? order by RDB$INDEX_ID, RDB$INDEX_NAME";

// FNV-1a.
std::uint64_t hash_of(std::string_view text) {
    std::uint64_t hash = 0xCBF29CE484222325;
    for (const char c : text) hash = (hash ^ static_cast<unsigned char>(c)) * 0x100000001B3;
    return hash;
}

std::string digits_of(std::uint64_t number, std::size_t count) {
    constexpr std::string_view digits = "0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZ";
    std::string text;
    for (; count > 0; --count, number /= digits.size())
        text += digits[static_cast<std::size_t>(number % digits.size())];
    return text;
}

// So much of a table's name as is legible in every tool.
std::string legible(std::string_view table) {
    std::string text(table.substr(0, 8));
    std::ranges::replace_if(
        text, [](char c) { return !(c >= 'A' && c <= 'Z') && !(c >= '0' && c <= '9'); }, '_');
    return text;
}

constexpr std::string_view index_of_name = "select RDB$INDEX_NAME from RDB$INDICES where RDB$INDEX_NAME = ?";

}  // namespace

std::string description_of(const OrderNote& note) {
    return fmt::format("{}{}{}{}", note.unique ? unique : plain, note.name, behind_name, note.expression);
}

std::optional<OrderNote> note_in(std::string_view description) {
    OrderNote note;
    note.unique = description.starts_with(unique);
    if (!note.unique && !description.starts_with(plain)) return std::nullopt;
    description.remove_prefix((note.unique ? unique : plain).size());
    const std::size_t end = description.find(behind_name);
    if (end == std::string_view::npos) return std::nullopt;
    note.name = description.substr(0, end);
    note.expression = description.substr(end + behind_name.size());
    return note;
}

std::array<std::string, 2> index_names(std::string_view table, std::string_view order) {
    const std::string both = fmt::format("{}{}_{}", own_indexes, legible(table),
                                         digits_of(hash_of(fmt::format("{} {}", table, order)), 12));
    return {both + "_A", both + "_D"};
}

bool is_there(Transaction& work, std::string_view index) {
    return work.prepare(index_of_name, TextForm::as_kept).maybe_one<std::string>(index).has_value();
}

std::vector<NotedOrder> noted_orders(Transaction& work, std::string_view table) {
    std::vector<NotedOrder> orders;
    auto query = work.prepare(indexes_of_table, TextForm::as_kept);
    for (auto& [index, inactive, description] :
         query.query<std::string, int, std::optional<std::string>>(table, own_indexes)) {
        const std::optional<OrderNote> note = note_in(description.value_or(""));
        if (!note) continue;
        const auto names = index_names(table, note->name);
        if (std::ranges::find(names, index) == names.end()) continue;
        auto order = std::ranges::find(orders, *note, &NotedOrder::note);
        if (order == orders.end()) order = orders.insert(orders.end(), {*note, 0});
        order->in_use += inactive == 0 ? 1 : 0;
    }
    return orders;
}

}  // namespace zmfb::rdd
