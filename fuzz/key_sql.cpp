#include "fuzz/key_sql.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <vector>

#include "fuzz/fuzz.h"
#include "host/number.h"
#include "host/text.h"

namespace zmfb::fuzz {

namespace {

std::int64_t checked(bool overflowed, std::int64_t made) {
    if (overflowed) throw TooGreat("a number is too great");
    return made;
}

std::int64_t sum(std::int64_t a, std::int64_t b) {
    std::int64_t made = 0;
    const bool overflowed = __builtin_add_overflow(a, b, &made);
    return checked(overflowed, made);
}

// Half away from zero where decimals are lost.
Exact rescaled(Exact number, int scale) {
    for (; number.scale < scale; ++number.scale) {
        const bool overflowed = __builtin_mul_overflow(number.units, 10, &number.units);
        checked(overflowed, number.units);
    }
    std::int64_t unit = 1;
    for (; number.scale > scale; --number.scale) {
        const bool overflowed = __builtin_mul_overflow(unit, 10, &unit);
        checked(overflowed, unit);
    }
    const std::int64_t rest = number.units % unit, half = unit / 2;
    number.units /= unit;
    if (unit > 1 && rest >= half) ++number.units;
    if (unit > 1 && rest <= -half) --number.units;
    return number;
}

double real_of(const SqlValue& value) {
    if (const auto* real = std::get_if<double>(&value)) return *real;
    const auto* exact = std::get_if<Exact>(&value);
    require(exact != nullptr, "what is computed with is a number");
    return static_cast<double>(exact->units) / std::pow(10.0, exact->scale);
}

std::string text_of(const SqlValue& value) {
    if (const auto* text = std::get_if<std::string>(&value)) return *text;
    if (const auto* date = std::get_if<host::Date>(&value)) {
        const auto day = host::calendar_day(*date);
        return fmt::format("{:04}-{:02}-{:02}", day.year, day.month, day.day);
    }
    const auto* number = std::get_if<Exact>(&value);
    require(number != nullptr, "only texts, days and exact numbers are written out");
    const bool negative = number->units < 0;
    const auto size =
        negative ? 0 - static_cast<std::uint64_t>(number->units) : static_cast<std::uint64_t>(number->units);
    std::string digits = fmt::format("{:0{}}", size, number->scale + 1);
    if (number->scale > 0) digits.insert(digits.size() - static_cast<std::size_t>(number->scale), ".");
    return (negative ? "-" : "") + digits;
}

std::string padded(const std::string& text, std::size_t width, const std::string& pad, bool left) {
    if (text.size() >= width) return text.substr(0, width);
    std::string filling;
    while (filling.size() < width - text.size()) filling += pad;
    filling.resize(width - text.size());
    return left ? filling + text : text + filling;
}

std::string as_char(std::string text, std::size_t width, bool fills) {
    const std::size_t end = text.find_last_not_of(' ') + 1;
    require(end <= width, "a text fits into its CHAR");
    if (text.size() > width || fills) text.resize(width, ' ');
    return text;
}

class Computer {
  public:
    Computer(std::string_view sql, const SqlRow& row) : rest_(sql), row_(row) {}

    SqlValue whole() {
        SqlValue value = joined();
        require(rest_.empty(), "the SQL of a key is one expression");
        return value;
    }

  private:
    [[nodiscard]] bool starts_with(std::string_view word) const { return rest_.starts_with(word); }
    bool take(std::string_view word) {
        if (!starts_with(word)) return false;
        rest_.remove_prefix(word.size());
        return true;
    }
    void expect(std::string_view word) { require(take(word), fmt::format("{} is there in {}", word, rest_)); }
    std::string take_until(std::string_view mark) {
        const std::size_t end = rest_.find(mark);
        require(end != std::string_view::npos, "what begins ends");
        std::string taken(rest_.substr(0, end));
        rest_.remove_prefix(end + mark.size());
        return taken;
    }
    std::int64_t whole_number() {
        std::int64_t number = 0;
        const auto read = std::from_chars(rest_.data(), rest_.data() + rest_.size(), number);
        require(read.ec == std::errc(), "a length is a number");
        rest_.remove_prefix(static_cast<std::size_t>(read.ptr - rest_.data()));
        return number;
    }
    std::size_t size() {
        const std::int64_t number = whole_number();
        require(number >= 0 && number <= 65535, "a length is one");
        return static_cast<std::size_t>(number);
    }

    SqlValue joined() {
        SqlValue value = added();
        while (take(" || ")) value = text_of(value) + text_of(added());
        return value;
    }

    SqlValue added() {
        SqlValue value = item();
        for (;;) {
            const bool minus = starts_with(" - ");
            if (!take(" + ") && !take(" - ")) return value;
            value = total(value, item(), minus);
        }
    }

    static SqlValue total(const SqlValue& a, const SqlValue& b, bool minus) {
        const auto *left = std::get_if<Exact>(&a), *right = std::get_if<Exact>(&b);
        if (left == nullptr || right == nullptr) return real_of(a) + (minus ? -real_of(b) : real_of(b));
        const int scale = std::max(left->scale, right->scale);
        const std::int64_t added = rescaled(*right, scale).units;
        return Exact{sum(rescaled(*left, scale).units, minus ? -added : added), scale};
    }

    SqlValue item() {
        if (take("_none x'")) return bytes_of(take_until("'"));
        if (take("'")) return take_until("'");
        if (take("\"")) return column(take_until("\""));
        if (take("cast(")) return cast();
        if (take("coalesce(")) return coalesce();
        if (take("iif(")) return choice();
        if (take("trim(trailing from ")) return trimmed();
        if (take("substring(")) return piece();
        if (take("(")) return inner();
        if (!rest_.empty() &&
            (rest_.front() == '-' || rest_.front() == '.' || (rest_.front() >= '0' && rest_.front() <= '9')))
            return number();
        return called();
    }

    SqlValue column(const std::string& name) const {
        const auto found = row_.find(name);
        require(found != row_.end(), "a column is one of the row");
        return found->second;
    }

    static SqlValue bytes_of(const std::string& hex) {
        require(hex.size() % 2 == 0, "a byte is two digits");
        std::string bytes;
        for (std::size_t i = 0; i < hex.size(); i += 2) {
            unsigned byte = 0;
            const auto read = std::from_chars(&hex[i], &hex[i] + 2, byte, 16);
            require(read.ptr == &hex[i] + 2, "a byte is written in hexadecimal digits");
            bytes += static_cast<char>(byte);
        }
        return bytes;
    }

    SqlValue number() {
        Exact made;
        const bool negative = take("-");
        bool behind_point = false;
        for (; !rest_.empty(); rest_.remove_prefix(1)) {
            const char c = rest_.front();
            if (c == '.' && !behind_point) {
                behind_point = true;
                continue;
            }
            if (c < '0' || c > '9') break;
            const bool overflowed = __builtin_mul_overflow(made.units, 10, &made.units);
            made.units = sum(checked(overflowed, made.units), c - '0');
            if (behind_point) ++made.scale;
        }
        if (negative) made.units = -made.units;
        return made;
    }

    SqlValue inner() {
        SqlValue value = joined();
        expect(")");
        return value;
    }

    SqlValue cast() {
        const SqlValue value = joined();
        expect(" as ");
        SqlValue made;
        if (take("numeric(18, ")) {
            made = numeric(value, static_cast<int>(size()));
            expect(")");
        } else if (take("date")) {
            require(value.index() == 0 || std::holds_alternative<host::Date>(value), "a date is one");
            made = value;
        } else {
            const bool fills = starts_with("char(");
            expect(fills ? "char(" : "varchar(");
            const std::size_t width = size();
            if (value.index() != 0) made = as_char(text_of(value), width, fills);
            expect(") character set none");
        }
        expect(")");
        return made;
    }

    static SqlValue numeric(const SqlValue& value, int scale) {
        if (const auto* exact = std::get_if<Exact>(&value)) return rescaled(*exact, scale);
        const double scaled = std::round(real_of(value) * std::pow(10.0, scale));
        if (!(std::fabs(scaled) < 9e18)) throw TooGreat("a number is too great");
        return Exact{static_cast<std::int64_t>(scaled), scale};
    }

    SqlValue coalesce() {
        SqlValue value = joined();
        expect(", ");
        SqlValue instead = joined();
        expect(")");
        return value.index() == 0 ? instead : value;
    }

    // The engine computes the one that it needs.
    SqlValue choice() {
        const SqlValue left = joined();
        const bool begins = take(" starting with ");
        if (!begins) expect(" > ");
        const SqlValue right = joined();
        const bool chosen = begins ? text_of(left).starts_with(text_of(right))
                                   : std::get<Exact>(left).units > std::get<Exact>(right).units;
        expect(", ");
        const std::string yes = text_of(joined());
        expect(", ");
        const std::string no = text_of(joined());
        expect(")");
        return chosen ? yes : no;
    }

    SqlValue trimmed() {
        std::string text = text_of(joined());
        expect(")");
        text.resize(text.find_last_not_of(' ') + 1);
        return text;
    }

    SqlValue piece() {
        const std::string text = text_of(joined());
        expect(" from ");
        const Exact from = std::get<Exact>(added());
        require(from.scale == 0 && from.units >= 1, "a piece begins in a text");
        const auto start = static_cast<std::size_t>(from.units);
        const std::size_t count = take(" for ") ? size() : text.size();
        expect(")");
        return start > text.size() ? "" : text.substr(start - 1, count);
    }

    // Functions whose arguments are parted by commas.
    SqlValue called() {
        const std::string name = take_until("(");
        std::vector<SqlValue> arguments;
        do arguments.push_back(joined());
        while (take(", "));
        expect(")");
        const auto is_null = [](const SqlValue& value) { return value.index() == 0; };
        if (std::ranges::any_of(arguments, is_null)) return {};
        const auto text = [&](std::size_t i) { return text_of(arguments.at(i)); };
        const auto whole = [&](std::size_t i) { return std::get<Exact>(arguments.at(i)).units; };
        if (name == "upper") return host::upper(Value(text(0))).string();
        if (name == "lower") return host::lower(Value(text(0))).string();
        if (name == "octet_length") return Exact{static_cast<std::int64_t>(text(0).size()), 0};
        if (name == "maxvalue") return Exact{std::max(whole(0), whole(1)), 0};
        if (name == "replace") return host::strtran(Value(text(0)), Value(text(1)), Value(text(2))).string();
        if (name == "lpad" || name == "rpad") {
            return padded(text(0), static_cast<std::size_t>(whole(1)), arguments.size() > 2 ? text(2) : " ",
                          name == "lpad");
        }
        const auto columns = [&](std::size_t i) { return Value(static_cast<double>(whole(i))); };
        const Value shown(real_of(arguments.at(0)));
        if (name == "zmstr") return host::str(shown, columns(1), columns(2)).string();
        require(name == "zmstrzero", fmt::format("{} is a function of keys", name));
        return host::strzero(shown, columns(1), columns(2)).string();
    }

    std::string_view rest_;
    const SqlRow& row_;
};

}  // namespace

SqlValue computed_sql(std::string_view sql, const SqlRow& row) { return Computer(sql, row).whole(); }

}  // namespace zmfb::fuzz
