// Values of rows as people write them.
#include <fmt/format.h>

#include <algorithm>
#include <optional>
#include <string>

#include "conn/shown_value.h"
#include "sql/typed/blob.h"
#include "sql/typed/cursor.h"
#include "sql/typed/text.h"
#include "zmfbconn/rows.h"

namespace zmfb {

namespace {

constexpr std::uint64_t largest_text_blob = std::uint64_t{64} << 20;

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
            return conn::hexadecimal(cursor.bytes(slot));
        case SqlType::integer:
        case SqlType::decimal:
            return to_string(as<Decimal>());
        case SqlType::real:
            return slot.type == SQL_FLOAT ? conn::shown_real(cursor.load<float>(slot.offset))
                                          : conn::shown_real(as<double>());
        case SqlType::boolean:
            return as<bool>() ? "true" : "false";
        case SqlType::date:
            return conn::shown_day(as<std::chrono::year_month_day>());
        case SqlType::time:
            return conn::shown_time(as<TimeOfDay>());
        case SqlType::timestamp:
            return conn::shown_moment(as<Timestamp>());
        case SqlType::text_blob:
        case SqlType::blob:
            return shown_blob(cursor, index_);
        case SqlType::other:
            break;
    }
    return fmt::format("<{}>", column().type_name);
}

}  // namespace zmfb
