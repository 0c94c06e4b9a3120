#include "tests/support/worker/area_steps.h"

#include <functional>
#include <map>

#include "host/array.h"

namespace zmfb::test {

using host::Args;
using host::Value;

std::optional<Value> AreaSteps::carry_out(std::string_view step, zmFBConn& connection, Args args) {
    const std::map<std::string_view, std::function<Value()>> steps = {
        {"area_open",
         [&] {
             const OpenMode mode = args[1].logical() ? OpenMode::shared : OpenMode::exclusive;
             area_.emplace(connection, args[0].text(), AreaOptions{.mode = mode});
             return true;
         }},
        {"area_close", [&] { return area_.reset(), true; }},
        {"area_lock",
         [&] {
             if (!area_->go(args[0].integer())) return Value("gone");
             area_->lock_record(args[0].integer());
             return Value(true);
         }},
        {"area_unlock", [&] { return area_->unlock_record(args[0].integer()), true; }},
        {"area_add", [&] { return add(args[0].text(), args[1].integer()); }},
        {"area_delete", [&] { return area_->edit().remove(), true; }},
        {"area_append", [&] { return append(args[0].text(), args[1].integer()); }},
        {"area_sums",
         [&] {
             area_->lock_table();
             const std::int64_t first = sum(args[0].text()), second = sum(args[0].text());
             area_->unlock_table();
             return host::array_of(first, second);
         }},
    };
    const auto found = steps.find(step);
    if (found == steps.end()) return std::nullopt;
    if (!area_ && step != "area_open") return "not open";
    try {
        return found->second();
    } catch (const InUse&) {
        return false;
    } catch (const AreaError& error) {
        if (error.reason() == AreaError::Reason::gone || error.reason() == AreaError::Reason::no_record)
            return "gone";
        if (error.reason() == AreaError::Reason::not_locked) return "not locked";
        throw;
    }
}

std::int64_t AreaSteps::add(std::string_view field, std::int64_t more) {
    Held held = area_->edit();
    const std::int64_t sum = held[field].as<std::int64_t>() + more;
    held[field] = sum;
    held.write();
    return sum;
}

std::int64_t AreaSteps::append(std::string_view field, std::int64_t value) {
    Held added = area_->append();
    added[field] = value;
    added.write();
    return added.recno();
}

std::int64_t AreaSteps::sum(std::string_view field) {
    std::int64_t all = 0;
    for (const Area& at : *area_) all += at[field].as<std::int64_t>();
    return all;
}

}  // namespace zmfb::test
