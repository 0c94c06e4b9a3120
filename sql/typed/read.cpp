// Values of rows as C++ types.
#include <fmt/format.h>

#include <algorithm>
#include <cstdlib>
#include <string>

#include "sql/typed/blob.h"
#include "sql/typed/calendar.h"
#include "sql/typed/cursor.h"
#include "sql/typed/failure.h"
#include "sql/typed/text.h"
#include "zmfbconn/rows.h"

namespace zmfb::typed {

namespace {

const std::string& name_of(const Cursor& cursor, std::size_t column) {
    return columns_of(cursor.statement())[column].name;
}

// Where a value is, and what it goes to.
struct Place {
    Cursor& cursor;
    std::size_t column;
    const Slot& slot;
    void* value;

    template <class Stored>
    [[nodiscard]] Stored stored() const {
        return cursor.load<Stored>(slot.offset);
    }
    template <class Value>
    [[nodiscard]] Value& as() const {
        return *static_cast<Value*>(value);
    }
};

// Leaves NULL to the caller.
template <void (*Get)(const Place& place)>
bool read(Cursor& cursor, std::size_t column, void* value) {
    const Slot& slot = cursor.slot(column);
    if (cursor.is_null(slot)) return false;
    Get({cursor, column, slot, value});
    return true;
}

template <class Stored>
void get_whole(const Place& place) {
    place.as<std::int64_t>() = place.stored<Stored>();
}

template <class Stored>
void get_decimal(const Place& place) {
    place.as<Decimal>() = Decimal(std::int64_t{place.stored<Stored>()}, place.slot.decimals);
}

template <class Stored>
void get_real(const Place& place) {
    place.as<double>() = place.stored<Stored>();
}

// Written out by the engine.
Decimal parsed_decimal(const Place& place) {
    try {
        return Decimal(place.cursor.bytes(place.slot));
    } catch (const SqlError& error) {
        refuse(out_of_range,
               fmt::format("Column {}: {}", name_of(place.cursor, place.column), error.message()),
               place.cursor.statement().text());
    }
}
void get_parsed_decimal(const Place& place) { place.as<Decimal>() = parsed_decimal(place); }
void get_parsed_whole(const Place& place) {
    place.as<std::int64_t>() = parsed_decimal(place).rescaled(0).unscaled();
}
void get_parsed_real(const Place& place) {
    place.as<double>() = std::strtod(std::string(place.cursor.bytes(place.slot)).c_str(), nullptr);
}

void get_boolean(const Place& place) { place.as<bool>() = place.stored<char>() != 0; }

// As the driver keeps it.
void get_logical(const Place& place) {
    const std::string_view letter = place.cursor.bytes(place.slot);
    if (letter != "T" && letter != "F") {
        refuse(no_number, fmt::format("Column {} is neither T nor F", name_of(place.cursor, place.column)),
               place.cursor.statement().text());
    }
    place.as<bool>() = letter == "T";
}

std::string_view text_at(const Place& place) {
    return decoded(place.cursor, place.column, place.cursor.bytes(place.slot));
}

void get_text(const Place& place) { place.as<std::string>() = text_at(place); }
void get_view(const Place& place) { place.as<std::string_view>() = text_at(place); }

void get_bytes(const Place& place) {
    const auto bytes = std::as_bytes(std::span(place.cursor.bytes(place.slot)));
    place.as<Bytes>().assign(bytes.begin(), bytes.end());
}

void get_date(const Place& place) {
    place.as<std::chrono::year_month_day>() = day_of(place.stored<ISC_DATE>());
}

// As the driver keeps days.
void get_midnight(const Place& place) {
    const auto stamp = place.stored<ISC_TIMESTAMP>();
    if (stamp.timestamp_time != 0) {
        refuse(wrong_kind,
               fmt::format("Column {} has a time of day, which a day would lose: Timestamp keeps it",
                           name_of(place.cursor, place.column)),
               place.cursor.statement().text());
    }
    place.as<std::chrono::year_month_day>() = day_of(stamp.timestamp_date);
}

void get_time(const Place& place) { place.as<TimeOfDay>() = time_of(place.stored<ISC_TIME>()); }

void get_timestamp(const Place& place) {
    place.as<Timestamp>() = timestamp_of(place.stored<ISC_TIMESTAMP>());
}

void get_blob(const Place& place) {
    place.as<BlobReader>() = BlobReader(open_blob(place.cursor, place.column));
}

std::string_view whole_blob(const Place& place) {
    std::string& content = place.cursor.room(place.column);
    content.clear();
    const auto blob = open_blob(place.cursor, place.column);
    for (std::string_view piece; !(piece = blob->read()).empty();) content += piece;
    return content;
}

void get_blob_text(const Place& place) { place.as<std::string>() = whole_blob(place); }
void get_blob_view(const Place& place) { place.as<std::string_view>() = whole_blob(place); }

void get_blob_bytes(const Place& place) {
    const auto bytes = std::as_bytes(std::span(whole_blob(place)));
    place.as<Bytes>().assign(bytes.begin(), bytes.end());
}

// Which columns can be read as what. A type of 0 is every one of the kind.
struct Reading {
    SqlType from;
    unsigned type;
    Kind to;
    Read read;
};

constexpr Reading readings[] = {
    {SqlType::text, 0, Kind::text, read<get_text>},
    {SqlType::text, 0, Kind::view, read<get_view>},
    {SqlType::text, 0, Kind::boolean, read<get_logical>},
    {SqlType::bytes, 0, Kind::bytes, read<get_bytes>},
    {SqlType::integer, SQL_SHORT, Kind::integer, read<get_whole<std::int16_t>>},
    {SqlType::integer, SQL_LONG, Kind::integer, read<get_whole<std::int32_t>>},
    {SqlType::integer, SQL_INT64, Kind::integer, read<get_whole<std::int64_t>>},
    {SqlType::integer, SQL_SHORT, Kind::decimal, read<get_decimal<std::int16_t>>},
    {SqlType::integer, SQL_LONG, Kind::decimal, read<get_decimal<std::int32_t>>},
    {SqlType::integer, SQL_INT64, Kind::decimal, read<get_decimal<std::int64_t>>},
    {SqlType::decimal, SQL_SHORT, Kind::decimal, read<get_decimal<std::int16_t>>},
    {SqlType::decimal, SQL_LONG, Kind::decimal, read<get_decimal<std::int32_t>>},
    {SqlType::decimal, SQL_INT64, Kind::decimal, read<get_decimal<std::int64_t>>},
    {SqlType::decimal, SQL_VARYING, Kind::decimal, read<get_parsed_decimal>},
    {SqlType::decimal, SQL_VARYING, Kind::integer, read<get_parsed_whole>},
    {SqlType::decimal, SQL_VARYING, Kind::text, read<get_text>},
    {SqlType::real, SQL_VARYING, Kind::real, read<get_parsed_real>},
    {SqlType::real, SQL_VARYING, Kind::text, read<get_text>},
    {SqlType::other, SQL_VARYING, Kind::text, read<get_text>},
    {SqlType::real, SQL_FLOAT, Kind::real, read<get_real<float>>},
    {SqlType::real, SQL_DOUBLE, Kind::real, read<get_real<double>>},
    {SqlType::real, SQL_D_FLOAT, Kind::real, read<get_real<double>>},
    {SqlType::boolean, 0, Kind::boolean, read<get_boolean>},
    {SqlType::date, 0, Kind::date, read<get_date>},
    {SqlType::time, 0, Kind::time, read<get_time>},
    {SqlType::timestamp, 0, Kind::timestamp, read<get_timestamp>},
    {SqlType::timestamp, 0, Kind::date, read<get_midnight>},
    {SqlType::text_blob, 0, Kind::text, read<get_blob_text>},
    {SqlType::text_blob, 0, Kind::view, read<get_blob_view>},
    {SqlType::text_blob, 0, Kind::blob, read<get_blob>},
    {SqlType::blob, 0, Kind::bytes, read<get_blob_bytes>},
    {SqlType::blob, 0, Kind::blob, read<get_blob>},
};

// The types, in the order of Kind.
constexpr std::string_view kind_names[] = {"nothing",
                                           "bool",
                                           "std::int64_t",
                                           "zmfb::Decimal",
                                           "double",
                                           "std::string",
                                           "std::string_view",
                                           "zmfb::Bytes",
                                           "std::chrono::year_month_day",
                                           "zmfb::TimeOfDay",
                                           "zmfb::Timestamp",
                                           "zmfb::BlobReader"};

std::string_view kind_name(Kind kind) { return kind_names[static_cast<std::size_t>(kind)]; }

bool suits(const Reading& reading, const Slot& slot) {
    if (reading.from != slot.kind || (reading.type != 0 && reading.type != slot.type)) return false;
    const unsigned one_letter = slot.character_set == utf8_character_set ? 4 : 1;
    return reading.read != read<get_logical> || slot.length == one_letter;
}

[[noreturn]] void throw_kind(const Prepared& statement, std::size_t column, Kind kind) {
    const Slot& slot = statement.rows().slots()[column];
    std::string possible;
    for (const Reading& reading : readings) {
        if (suits(reading, slot))
            possible += fmt::format("{}{}", possible.empty() ? "" : ", ", kind_name(reading.to));
    }
    const Column& is = columns_of(statement)[column];
    refuse(wrong_kind,
           fmt::format("Column {} is {}, which cannot be read as {}, but as {}", is.name, is.type_name,
                       kind_name(kind), possible.empty() ? "Field::text() only" : possible),
           statement.text());
}

}  // namespace

Read reader_of(const Prepared& statement, std::size_t column, Kind kind) {
    const Slot& slot = statement.rows().slots()[column];
    for (const Reading& reading : readings) {
        if (reading.to == kind && suits(reading, slot)) return reading.read;
    }
    throw_kind(statement, column, kind);
}

void check_column_count(const Prepared& statement, std::size_t wanted) {
    const std::size_t count = columns_of(statement).size();
    if (count == wanted) return;
    if (count == 0)
        refuse(no_rows_here, "The statement returns no rows: execute() runs such statements",
               statement.text());
    refuse(wrong_columns, fmt::format("The statement returns {} columns, not {}", count, wanted),
           statement.text());
}

void throw_null(const Cursor& cursor, std::size_t column) {
    refuse(is_null, fmt::format("Column {} is NULL, which std::optional holds", name_of(cursor, column)),
           cursor.statement().text());
}

void throw_range(const Cursor& cursor, std::size_t column, std::int64_t value) {
    refuse(out_of_range,
           fmt::format("Column {} has {}, which the type it is read as does not hold",
                       name_of(cursor, column), value),
           cursor.statement().text());
}

void throw_row_count(const Cursor& cursor, bool none) {
    if (none) refuse(no_row, "The statement returns no row", cursor.statement().text());
    refuse(more_rows, "The statement returns more than one row", cursor.statement().text());
}

void throw_begun(const Cursor& cursor) {
    refuse(not_current, "The rows are being read already: they can be gone through once",
           cursor.statement().text());
}

}  // namespace zmfb::typed
