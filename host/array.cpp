#include "host/array.h"

#include <algorithm>
#include <unordered_map>
#include <vector>

#include "host/compare.h"
#include "host/error.h"

namespace zmfb::host {
namespace {

// An array of the first dimension whose elements are arrays of the others.
Value nested(std::span<const Value> dimensions) {
    Value made = Value::array_of_size(static_cast<std::size_t>(dimensions[0].integer()));
    if (dimensions.size() > 1) {
        for (Value& element : made.items()) element = nested(dimensions.subspan(1));
    }
    return made;
}

bool too_large(std::span<const Value> dimensions) {
    double elements = 0;
    double arrays = 1;
    for (const Value& size : dimensions) {
        arrays *= static_cast<double>(size.integer());
        elements += arrays;
    }
    return elements > static_cast<double>(max_array_size);
}

struct Range {
    std::size_t first;
    std::size_t end;
};

// The elements from `start` (1) on, at most `count` (all) of them, counted from 0.
Range range_of(std::size_t size, const Value& start, const Value& count) {
    const std::int64_t from = start.is(Kind::numeric) ? std::max<std::int64_t>(start.integer(), 1) : 1;
    if (static_cast<std::uint64_t>(from) > size) return {size, size};
    const auto first = static_cast<std::size_t>(from - 1);
    if (!count.is(Kind::numeric)) return {first, size};
    const std::int64_t wanted = std::max<std::int64_t>(count.integer(), 0);
    const std::size_t rest = size - first;
    return {first,
            static_cast<std::uint64_t>(wanted) < rest ? first + static_cast<std::size_t>(wanted) : size};
}

bool found_equal(const Value& element, const Value& x) {
    if (element.kind() != x.kind()) return false;
    switch (x.kind()) {
        case Kind::nil:
            return true;
        case Kind::character:
        case Kind::numeric:
        case Kind::logical:
        case Kind::date:
            return equal(element, x);
        default:
            return false;
    }
}

bool found_by(const Value& block, const Value& element) {
    const Value passed = element;  // the block may change the array
    const Value answer = block.eval(Args(passed));
    return answer.is(Kind::logical) && answer.logical();
}

}  // namespace

Value array(const Value& size) { return array(Args(size)); }

Value array(Args dimensions) {
    const auto all = dimensions.all();
    if (all.empty()) return {};
    if (!std::ranges::all_of(all, [](const Value& size) { return size.is(Kind::numeric); })) return {};
    const bool negative = std::ranges::any_of(all, [](const Value& size) { return size.integer() < 0; });
    if (negative || too_large(all)) {
        return runtime_error(GenCode::bound, Subcode::array_dimension, "Bound error: array dimension");
    }
    return nested(all);
}

Value aadd(const Value& a, const Value& x) {
    if (!a.is(Kind::array)) return argument_error(Subcode::aadd, "AADD", {a, x});
    a.push(x);
    return x;
}

Value ascan(const Value& a, const Value& x, const Value& start, const Value& count) {
    if (!a.is(Kind::array)) return 0;
    const Value keep_alive = a;
    const bool by_block = x.is(Kind::block);
    const Range range = range_of(a.size(), start, count);
    for (std::size_t i = range.first; i < range.end && i < keep_alive.size(); ++i) {
        const Value& element = keep_alive.items()[i];
        if (by_block ? found_by(x, element) : found_equal(element, x)) return i + 1;
    }
    return 0;
}

Value acopy(const Value& source, const Value& target, const Value& start, const Value& count,
            const Value& target_start) {
    if (!source.is(Kind::array) || !target.is(Kind::array)) return {};
    const auto from = source.items();
    const auto to = target.items();
    const Range range = range_of(from.size(), start, count);
    if (to.empty() || range.first == range.end) return target;
    const std::int64_t wanted = target_start.is(Kind::numeric) ? target_start.integer() : 1;
    // A place behind the last element means the last one.
    const auto place = static_cast<std::size_t>(
        std::clamp<std::int64_t>(wanted, 1, static_cast<std::int64_t>(to.size())) - 1);
    const std::size_t amount = std::min(range.end - range.first, to.size() - place);
    const auto part = from.subspan(range.first, amount);
    const auto room = to.subspan(place, amount);
    if (source.same(target) && place > range.first) {
        std::copy_backward(part.begin(), part.end(), room.end());
    } else {
        std::copy(part.begin(), part.end(), room.begin());
    }
    return target;
}

// Works through a list instead of calling itself, so that depth costs no stack; an array that was met before
// is not copied again, so that one that holds itself can be cloned.
Value aclone(const Value& a) {
    if (!a.is(Kind::array)) return {};
    struct Pair {
        Value source, copy;
    };
    std::vector<Pair> work;
    std::unordered_map<const Value*, Value> copies;
    const auto copy_of = [&](const Value& source) {
        const auto [place, is_new] = copies.try_emplace(source.items().data());
        if (is_new) {
            place->second = Value::array_of_size(source.size());
            work.push_back({source, place->second});
        }
        return place->second;
    };
    Value made = copy_of(a);
    while (!work.empty()) {
        const Pair now = std::move(work.back());
        work.pop_back();
        const auto from = now.source.items();
        const auto to = now.copy.items();
        for (std::size_t i = 0; i < from.size(); ++i) {
            to[i] = from[i].is(Kind::array) ? copy_of(from[i]) : from[i];
        }
    }
    return made;
}

}  // namespace zmfb::host
