#include <algorithm>
#include <cstring>
#include <string_view>

#include "host/date.h"
#include "host/error.h"
#include "host/number.h"
#include "host/text.h"

namespace zmfb::host {
namespace {

enum class Side { left, right };

// The text that a value is padded as; NIL when its kind has none.
Value padded_text(const Value& value) {
    switch (value.kind()) {
        case Kind::character:
            return value;
        case Kind::numeric:
            return ltrim(str(value));
        case Kind::date:
            return dtoc(value);
        default:
            return {};
    }
}

Value pad(Side side, std::string_view operation, const Value& value, const Value& length, const Value& fill) {
    if (!length.is(Kind::numeric) || length.number() < 1) return "";
    Value source = padded_text(value);
    if (!source.is(Kind::character)) return "";
    const std::string_view text = source.text();
    if (length.number() > static_cast<double>(max_filled_size)) return string_overflow(operation);
    const auto size = static_cast<std::size_t>(length.integer());
    if (text.size() == size) return source;
    if (text.size() > size) return text.substr(0, size);

    char filler = ' ';
    if (fill.is(Kind::character)) filler = fill.text().empty() ? '\0' : fill.text().front();
    Value made = Value::text_of_size(size);
    const auto bytes = made.writable_text();
    const std::size_t missing = size - text.size();
    const std::size_t text_at = side == Side::left ? missing : 0;
    std::fill_n(bytes.begin() + static_cast<std::ptrdiff_t>(side == Side::left ? 0 : text.size()), missing,
                filler);
    if (!text.empty()) std::memcpy(bytes.data() + text_at, text.data(), text.size());
    return made;
}

}  // namespace

Value padr(const Value& value, const Value& length, const Value& fill) {
    return pad(Side::right, "PADR", value, length, fill);
}

Value padl(const Value& value, const Value& length, const Value& fill) {
    return pad(Side::left, "PADL", value, length, fill);
}

Value space(const Value& n) {
    if (!n.is(Kind::numeric)) return argument_error(Subcode::space, "SPACE", {n});
    const std::int64_t size = n.integer();
    if (size <= 0) return "";
    if (static_cast<std::uint64_t>(size) > max_filled_size) return string_overflow("SPACE");
    Value made = Value::text_of_size(static_cast<std::size_t>(size));
    std::ranges::fill(made.writable_text(), ' ');
    return made;
}

Value replicate(const Value& s, const Value& n) {
    if (!s.is(Kind::character) || !n.is(Kind::numeric)) {
        return argument_error(Subcode::replicate, "REPLICATE", {s, n});
    }
    const std::string_view text = s.text();
    const std::int64_t times = n.integer();
    if (times <= 0 || text.empty()) return "";
    if (static_cast<std::uint64_t>(times) > max_filled_size / text.size())
        return string_overflow("REPLICATE");
    Value made = Value::text_of_size(text.size() * static_cast<std::size_t>(times));
    const auto bytes = made.writable_text();
    // Each round doubles what is there.
    std::memcpy(bytes.data(), text.data(), text.size());
    for (std::size_t done = text.size(); done < bytes.size();) {
        const std::size_t more = std::min(done, bytes.size() - done);
        std::memcpy(bytes.data() + done, bytes.data(), more);
        done += more;
    }
    return made;
}

}  // namespace zmfb::host
