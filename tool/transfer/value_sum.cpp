#include "tool/transfer/value_sum.h"

#include <fmt/format.h>

#include <charconv>
#include <cstdlib>

namespace zmfb::tool {
namespace {

using dbf::Kind;

constexpr std::size_t block = 65536;

// As long as no text is.
constexpr std::uint32_t null_length = 0xFFFFFFFF;

std::string_view without_blanks(std::string_view text) {
    return text.substr(0, text.find_last_not_of(' ') + 1);
}

std::string without_zeros(std::string text) {
    if (text.find('.') == std::string::npos) return text;
    text.erase(text.find_last_not_of('0') + 1);
    if (text.ends_with('.')) text.pop_back();
    return text == "-0" ? "0" : text;
}

// All digits, without an exponent.
std::string shown_real(double number) {
    constexpr std::size_t longest = 400;
    std::string text(longest, '\0');
    const auto written = std::to_chars(text.data(), text.data() + text.size(), number == 0 ? 0 : number,
                                       std::chars_format::fixed);
    text.resize(static_cast<std::size_t>(written.ptr - text.data()));
    return text;
}

// Digits are written with the fewest that mean the same FLOAT.
std::string number_text(const Field& value, Kind kind) {
    const Column& column = value.column();
    if (column.type != SqlType::real) return without_zeros(to_string(value.as<Decimal>()));
    if (kind == Kind::number && column.type_name == "FLOAT")
        return shown_real(std::strtod(value.text().value_or("").c_str(), nullptr));
    return shown_real(value.as<double>());
}

// As imports bring them in.
std::string_view logical_text(std::string_view letter) {
    if (letter.size() != 1) return "";
    if (std::string_view("TtYy").find(letter[0]) != std::string_view::npos) return "T";
    return std::string_view("FfNn").find(letter[0]) != std::string_view::npos ? "F" : "";
}

std::string day_text(const Field& value) {
    const auto day =
        value.column().type == SqlType::timestamp
            ? std::chrono::year_month_day(std::chrono::floor<std::chrono::days>(value.as<Timestamp>()))
            : value.as<std::chrono::year_month_day>();
    return std::to_string(std::chrono::sys_days(day).time_since_epoch().count());
}

std::string time_text(const Field& value) {
    const auto time = std::chrono::floor<std::chrono::milliseconds>(value.as<Timestamp>());
    return std::to_string(time.time_since_epoch().count());
}

}  // namespace

void ValueSum::add_text(std::string_view text) {
    const auto length = static_cast<std::uint32_t>(text.size());
    for (unsigned shift = 0; shift < 32; shift += 8) pending_ += static_cast<char>(length >> shift & 0xFF);
    pending_ += text;
    if (pending_.size() < block) return;
    sum_.add(pending_);
    pending_.clear();
}

void ValueSum::add_null(Kind kind) {
    if (kind == Kind::text || kind == Kind::logical) return add_text("");
    if (kind == Kind::number) return add_text("0");
    for (unsigned shift = 0; shift < 32; shift += 8)
        pending_ += static_cast<char>(null_length >> shift & 0xFF);
}

void ValueSum::add(const Field& value, Kind kind) {
    if (value.is_null()) return add_null(kind);
    const SqlType type = value.column().type;
    switch (kind) {
        case Kind::text:
        case Kind::memo_text:
            if (type != SqlType::text && type != SqlType::text_blob) return add_text(*value.text());
            return add_text(without_blanks(value.as<std::string_view>()));
        case Kind::logical:
            if (type == SqlType::boolean) return add_text(value.as<bool>() ? "T" : "F");
            return add_text(logical_text(value.as<std::string_view>()));
        case Kind::number:
        case Kind::integer:
        case Kind::currency:
        case Kind::real:
            return add_text(number_text(value, kind));
        case Kind::date:
            return add_text(day_text(value));
        case Kind::timestamp:
            return add_text(time_text(value));
        case Kind::bytes:
        case Kind::memo_bytes:
            break;
    }
    const Bytes bytes = value.as<Bytes>();
    add_text({reinterpret_cast<const char*>(bytes.data()), bytes.size()});
}

std::string ValueSum::digits() {
    sum_.add(pending_);
    return sum_.digits();
}

}  // namespace zmfb::tool
