// Cells as values of programs, and values of programs as cells.
#include <fmt/format.h>

#include <cmath>

#include "conn/shown_value.h"
#include "host/date.h"
#include "rdd/record.h"
#include "zmfbconn/area.h"

namespace zmfb::rdd {

namespace {

using Reason = AreaError::Reason;
using std::chrono::floor;
using std::chrono::sys_days;
using std::chrono::year_month_day;

[[noreturn]] void throw_type(const Column& column, std::string_view what) {
    throw AreaError(Reason::wrong_type,
                    fmt::format("Field {} is {} and {}", column.name, column.type_name, what));
}

year_month_day day_of(std::int64_t days) { return sys_days(std::chrono::days(days)); }
Timestamp moment_of(std::int64_t ticks) { return Timestamp(Timestamp::duration(ticks)); }
sys_days midnight(Timestamp moment) { return sys_days(floor<std::chrono::days>(moment).time_since_epoch()); }

host::Date runtime_date(sys_days day) {
    const year_month_day parts(day);
    return host::date_of({.year = static_cast<int>(parts.year()),
                          .month = static_cast<int>(static_cast<unsigned>(parts.month())),
                          .day = static_cast<int>(static_cast<unsigned>(parts.day()))});
}

// What kinds of values a column can be read as.
bool reads_as(const Column& column, typed::Kind kind) {
    using typed::Kind;
    switch (cell_kind(column)) {
        case CellKind::whole:
            return kind == Kind::integer || kind == Kind::decimal || kind == Kind::real;
        case CellKind::decimal:
            return kind == Kind::decimal || kind == Kind::real;
        case CellKind::real:
            return kind == Kind::real;
        case CellKind::boolean:
            return kind == Kind::boolean;
        case CellKind::text:
            return kind == Kind::text || kind == Kind::view ||
                   (kind == Kind::boolean && column.type == SqlType::text);
        case CellKind::bytes:
            return kind == Kind::bytes;
        case CellKind::day:
            return kind == Kind::date;
        case CellKind::time:
            return kind == Kind::time;
        case CellKind::moment:
            return kind == Kind::timestamp || kind == Kind::date;
        case CellKind::none:
            break;
    }
    return false;
}

Decimal decimal_at(const Record& record, std::size_t field) {
    return {record.whole(field), record.column(field).decimals};
}

double real_at(const Record& record, std::size_t field) {
    return record.kind(field) == CellKind::real ? record.real(field) : decimal_at(record, field).to_double();
}

bool logical_at(const Record& record, std::size_t field) {
    if (record.kind(field) == CellKind::boolean) return record.whole(field) != 0;
    const std::string_view letter = record.text(field);
    if (letter != "T" && letter != "F") throw_type(record.column(field), "holds neither T nor F");
    return letter == "T";
}

year_month_day day_at(const Record& record, std::size_t field) {
    if (record.kind(field) == CellKind::day) return day_of(record.whole(field));
    const Timestamp moment = moment_of(record.whole(field));
    const sys_days day = midnight(moment);
    if (moment.time_since_epoch() != day.time_since_epoch())
        throw_type(record.column(field), "holds a time of day, which a day would lose: Timestamp keeps it");
    return day;
}

template <class T>
void give(void* value, T&& given) {
    *static_cast<std::remove_cvref_t<T>*>(value) = std::forward<T>(given);
}

// Puts a value into a cell, by what the value is.
class Assigning {
  public:
    Assigning(Record& record, std::size_t field)
        : record_(record), field_(field), column_(record.column(field)), kind_(record.kind(field)) {}

    void operator()(std::monostate) { record_.assign_null(field_); }
    void operator()(bool value) {
        if (kind_ == CellKind::boolean) return record_.assign(field_, std::int64_t{value});
        if (column_.type != SqlType::text) refuse("a logical");
        record_.assign(field_, std::string_view(value ? "T" : "F"));
    }
    void operator()(std::int64_t value) { (*this)(Decimal(value)); }
    void operator()(const Decimal& value) {
        if (kind_ == CellKind::real) return record_.assign(field_, value.to_double());
        if (kind_ != CellKind::whole && kind_ != CellKind::decimal) refuse("a number");
        try {
            record_.assign(field_, value.rescaled(column_.decimals).unscaled());
        } catch (const SqlError&) {
            throw_type(column_, fmt::format("does not hold {}", to_string(value)));
        }
    }
    // As xBase does: what the field has no decimals for is rounded.
    void operator()(double value) {
        if (kind_ == CellKind::real) return record_.assign(field_, value);
        if (kind_ != CellKind::whole && kind_ != CellKind::decimal) refuse("a number");
        constexpr double beyond = 1e19;
        if (!(std::fabs(value) < beyond)) throw_type(column_, fmt::format("does not hold {}", value));
        try {
            record_.assign(field_, Decimal(fmt::format("{:.{}f}", value, column_.decimals))
                                       .rescaled(column_.decimals)
                                       .unscaled());
        } catch (const SqlError&) {
            throw_type(column_, fmt::format("does not hold {}", value));
        }
    }
    void operator()(std::string_view value) {
        if (kind_ != CellKind::text) refuse("a text");
        record_.assign(field_, value);
    }
    void operator()(std::span<const std::byte> value) {
        if (kind_ != CellKind::bytes) refuse("bytes");
        record_.assign(field_, std::string_view(reinterpret_cast<const char*>(value.data()), value.size()));
    }
    void operator()(year_month_day value) {
        if (!value.ok()) refuse("a day that is none");
        const sys_days day(value);
        if (kind_ == CellKind::day)
            return record_.assign(field_, std::int64_t{day.time_since_epoch().count()});
        (*this)(Timestamp(day.time_since_epoch()));
    }
    void operator()(TimeOfDay value) {
        if (kind_ != CellKind::time) refuse("a time of day");
        record_.assign(field_, std::int64_t{value.count()});
    }
    void operator()(Timestamp value) {
        if (kind_ != CellKind::moment) refuse("a day or a time stamp");
        record_.assign(field_, value.time_since_epoch().count());
    }
    void operator()(const typed::WrittenBlob&) { refuse("a blob that is written piece by piece"); }

  private:
    [[noreturn]] void refuse(std::string_view given) const {
        throw_type(column_, fmt::format("does not take {}", given));
    }

    Record& record_;
    std::size_t field_;
    const Column& column_;
    CellKind kind_;
};

}  // namespace

void check_kind(const Column& column, typed::Kind kind) {
    if (!reads_as(column, kind)) throw_type(column, "is not read as that type");
}

bool read_field(const Record& record, std::size_t field, typed::Kind kind, void* value) {
    using typed::Kind;
    check_kind(record.column(field), kind);
    if (record.is_null(field)) return false;
    switch (kind) {
        case Kind::boolean:
            give(value, logical_at(record, field));
            break;
        case Kind::integer:
            give(value, record.whole(field));
            break;
        case Kind::decimal:
            give(value, decimal_at(record, field));
            break;
        case Kind::real:
            give(value, real_at(record, field));
            break;
        case Kind::text:
            give(value, std::string(record.text(field)));
            break;
        case Kind::view:
            give(value, record.text(field));
            break;
        case Kind::bytes:
            give(value, Bytes(bytes_of(record.text(field)).begin(), bytes_of(record.text(field)).end()));
            break;
        case Kind::date:
            give(value, day_at(record, field));
            break;
        case Kind::time:
            give(value, TimeOfDay(static_cast<std::int32_t>(record.whole(field))));
            break;
        case Kind::timestamp:
            give(value, moment_of(record.whole(field)));
            break;
        case Kind::blob:
        case Kind::none:
            break;
    }
    return true;
}

void assign_field(Record& record, std::size_t field, const Parameter& value) {
    std::visit(Assigning(record, field), value.content());
}

std::size_t find_field(const Record& record, std::string_view name) { return record.columns().find(name); }

void check_field(const Record& record, const Columns* columns, std::size_t field) {
    if (columns == &record.columns() && field < columns->fields().size()) return;
    throw AreaError(Reason::no_field, "The field is none of " + record.columns().table());
}

void throw_null(const Record& record, std::size_t field) {
    throw AreaError(Reason::is_null,
                    fmt::format("Field {} is NULL, which std::optional holds", record.column(field).name));
}

void throw_range(const Record& record, std::size_t field, std::int64_t value) {
    throw_type(record.column(field),
               fmt::format("has {}, which the type it is read as does not hold", value));
}

Parameter parameter_of(const Record& record, std::size_t field) {
    if (record.is_null(field)) return std::nullopt;
    switch (record.kind(field)) {
        case CellKind::whole:
            return record.whole(field);
        case CellKind::decimal:
            return decimal_at(record, field);
        case CellKind::real:
            return record.real(field);
        case CellKind::boolean:
            return record.whole(field) != 0;
        case CellKind::text:
            return record.text(field);
        case CellKind::bytes:
            return bytes_of(record.text(field));
        case CellKind::day:
            return day_of(record.whole(field));
        case CellKind::time:
            return TimeOfDay(static_cast<std::int32_t>(record.whole(field)));
        case CellKind::moment:
            return moment_of(record.whole(field));
        case CellKind::none:
            break;
    }
    return std::nullopt;
}

std::optional<Parameter> parameter_of(const host::Value& value) {
    switch (value.kind()) {
        case host::Kind::character:
            return Parameter(value.text());
        case host::Kind::numeric:
            return Parameter(value.number());
        case host::Kind::logical:
            return Parameter(value.logical());
        case host::Kind::date: {
            const auto [year, month, day] = host::calendar_day(value.date());
            if (year == 0) return Parameter(std::nullopt);
            return Parameter(std::chrono::year(year) / month / day);
        }
        default:
            return std::nullopt;
    }
}

}  // namespace zmfb::rdd

namespace zmfb {

using rdd::CellKind;

bool FieldValue::is_null() const { return record_.is_null(index_); }

host::Value FieldValue::value() const {
    const CellKind kind = record_.kind(index_);
    const bool is_day = kind == CellKind::day || kind == CellKind::moment;
    if (is_null()) return is_day ? host::Value(host::Date()) : host::Value();
    switch (kind) {
        case CellKind::boolean:
            return record_.whole(index_) != 0;
        case CellKind::text:
        case CellKind::bytes:
            return record_.text(index_);
        case CellKind::time:
            return record_.whole(index_);
        case CellKind::day:
            return rdd::runtime_date(std::chrono::sys_days(std::chrono::days(record_.whole(index_))));
        case CellKind::moment:
            return rdd::runtime_date(rdd::midnight(rdd::moment_of(record_.whole(index_))));
        default:
            return rdd::real_at(record_, index_);
    }
}

std::optional<std::string> FieldValue::text() const {
    if (is_null()) return std::nullopt;
    const Column& column = record_.column(index_);
    switch (record_.kind(index_)) {
        case CellKind::whole:
        case CellKind::decimal:
            return to_string(rdd::decimal_at(record_, index_));
        case CellKind::real:
            return column.length == sizeof(float) ? conn::shown_real(static_cast<float>(record_.real(index_)))
                                                  : conn::shown_real(record_.real(index_));
        case CellKind::boolean:
            return record_.whole(index_) != 0 ? "true" : "false";
        case CellKind::text:
            return std::string(record_.text(index_));
        case CellKind::bytes:
            return conn::hexadecimal(record_.text(index_));
        case CellKind::day:
            return conn::shown_day(rdd::day_of(record_.whole(index_)));
        case CellKind::time:
            return conn::shown_time(TimeOfDay(static_cast<std::int32_t>(record_.whole(index_))));
        case CellKind::moment:
            return conn::shown_moment(rdd::moment_of(record_.whole(index_)));
        case CellKind::none:
            break;
    }
    return std::nullopt;
}

FieldPlace& FieldPlace::assign(const host::Value& value) {
    if (value.is_nil()) return *this = std::nullopt;
    const std::optional<Parameter> given = rdd::parameter_of(value);
    if (!given) {
        throw AreaError(AreaError::Reason::wrong_type, "Arrays, objects and blocks are not kept in fields");
    }
    rdd::assign_field(to_, index(), *given);
    return *this;
}

}  // namespace zmfb
