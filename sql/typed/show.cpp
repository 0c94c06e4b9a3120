// Values of rows as people write them.
#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <optional>
#include <string>

#include "sql/typed/blob.h"
#include "sql/typed/cursor.h"
#include "sql/typed/text.h"
#include "zmfbconn/rows.h"

namespace zmfb {

namespace {

constexpr std::uint64_t largest_text_blob = std::uint64_t{64} << 20;

template <class Real>
std::string shown_real(Real number) {
    constexpr Real smallest_plain = static_cast<Real>(0.00001), first_with_exponent = static_cast<Real>(1e16);
    const Real size = std::abs(number);
    const bool plain = size == 0 || (size >= smallest_plain && size < first_with_exponent);
    char text[64];
    const auto written = std::to_chars(text, text + sizeof text, number,
                                       plain ? std::chars_format::fixed : std::chars_format::scientific);
    return {text, written.ptr};
}

std::string shown_date(std::chrono::year_month_day date) {
    return fmt::format("{:04}-{:02}-{:02}", static_cast<int>(date.year()),
                       static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()));
}

std::string shown_time(TimeOfDay time) {
    const std::chrono::hh_mm_ss<TimeOfDay> parts(time);
    return fmt::format("{:02}:{:02}:{:02}.{:04}", parts.hours().count(), parts.minutes().count(),
                       parts.seconds().count(), parts.subseconds().count());
}

std::string shown_timestamp(Timestamp moment) {
    const auto day = std::chrono::floor<std::chrono::days>(moment);
    return shown_date(std::chrono::year_month_day(day)) + ' ' +
           shown_time(TimeOfDay(static_cast<std::int32_t>((moment - day).count())));
}

std::string hexadecimal(std::string_view bytes) {
    std::string text;
    for (const char byte : bytes) fmt::format_to(std::back_inserter(text), "{:02X}", byte & 0xFF);
    return text;
}

std::string shown_blob(typed::Cursor& cursor, std::size_t column) {
    const auto blob = typed::open_blob(cursor, column);
    const std::uint64_t size = blob->size();
    if (cursor.slot(column).kind == SqlType::blob || size > largest_text_blob)
        return fmt::format("<blob {} bytes>", size);
    std::string text;
    for (std::string_view piece; !(piece = blob->read(typed::OddByte::is_replaced)).empty();) text += piece;
    return text;
}

}  // namespace

std::optional<std::string> Field::text() const {
    typed::Cursor& cursor = current();
    const typed::Slot& slot = cursor.slot(index_);
    if (cursor.is_null(slot)) return std::nullopt;
    if (typed::is_written_out(slot.type, slot.kind)) return std::string(cursor.bytes(slot));
    switch (slot.kind) {
        case SqlType::text:
            return std::string(
                typed::decoded(cursor, index_, cursor.bytes(slot), typed::OddByte::is_replaced));
        case SqlType::bytes:
            return hexadecimal(cursor.bytes(slot));
        case SqlType::integer:
        case SqlType::decimal:
            return to_string(as<Decimal>());
        case SqlType::real:
            return slot.type == SQL_FLOAT ? shown_real(cursor.load<float>(slot.offset))
                                          : shown_real(as<double>());
        case SqlType::boolean:
            return as<bool>() ? "true" : "false";
        case SqlType::date:
            return shown_date(as<std::chrono::year_month_day>());
        case SqlType::time:
            return shown_time(as<TimeOfDay>());
        case SqlType::timestamp:
            return shown_timestamp(as<Timestamp>());
        case SqlType::text_blob:
        case SqlType::blob:
            return shown_blob(cursor, index_);
        case SqlType::other:
            break;
    }
    return fmt::format("<{}>", column().type_name);
}

}  // namespace zmfb
