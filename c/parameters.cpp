// The values of statements, on their way in.
#include <zmfbconn/host/date.h>

#include <chrono>
#include <span>
#include <string>

#include "c/statement.h"

using namespace zmfb::c;

namespace {

using Given = zmfb_statement::Given;

// Has `give` give a "?" its value.
template <class Give>
zmfb_status bind(zmfb_statement* handle, size_t index, Give give) noexcept {
    return on_prepared(handle, [=](zmfb_statement& statement) {
        if (index < 1 || index > statement.given.size()) {
            return fail(ZMFB_OUT_OF_RANGE, "there is no parameter " + std::to_string(index) + " of " +
                                               std::to_string(statement.given.size()));
        }
        return give(statement.given[index - 1]);
    });
}

// Gives a "?" a value that is made without a copy of bytes.
template <class Make>
zmfb_status bind_made(zmfb_statement* handle, size_t index, Make make) noexcept {
    return bind(handle, index, [=](Given& given) {
        given.value = zmfb::Parameter(make());
        return ZMFB_OK;
    });
}

// Gives a "?" what `view` makes of a copy of bytes.
template <class View>
zmfb_status bind_copy(zmfb_statement* handle, size_t index, const void* bytes, size_t length,
                      View view) noexcept {
    return bind(handle, index, [=](Given& given) {
        if (bytes == nullptr && length > 0) return fail_null();
        given.bytes.assign(length > 0 ? static_cast<const char*>(bytes) : "", length);
        given.value = zmfb::Parameter(view(given.bytes));
        return ZMFB_OK;
    });
}

// Gives a "?" what `make` makes of a moment whose parts that count are some.
template <class Make>
zmfb_status bind_moment(zmfb_statement* handle, size_t index, const zmfb_moment* moment,
                        zmfb_status (*check)(const zmfb_moment& moment), Make make) noexcept {
    return bind(handle, index, [=](Given& given) {
        if (moment == nullptr) return fail_null();
        const zmfb_status problem = check(*moment);
        if (problem == ZMFB_OK) given.value = zmfb::Parameter(make(*moment));
        return problem;
    });
}

zmfb_status check_day(const zmfb_moment& moment) {
    using namespace zmfb::host;
    const Date date = date_of(CalendarDay{moment.year, moment.month, moment.day});
    return date != Date{} ? ZMFB_OK : fail(ZMFB_OUT_OF_RANGE, "no such day");
}

zmfb_status check_time(const zmfb_moment& moment) {
    const auto within = [](int number, int count) { return number >= 0 && number < count; };
    const bool is_one = within(moment.hour, 24) && within(moment.minute, 60) && within(moment.second, 60) &&
                        within(moment.fraction, zmfb::Tick::den);
    return is_one ? ZMFB_OK : fail(ZMFB_OUT_OF_RANGE, "no such time of day");
}

zmfb_status check_both(const zmfb_moment& moment) {
    const zmfb_status problem = check_day(moment);
    return problem == ZMFB_OK ? check_time(moment) : problem;
}

std::chrono::year_month_day day_of(const zmfb_moment& moment) {
    return std::chrono::year(moment.year) / moment.month / moment.day;
}

zmfb::TimeOfDay time_of(const zmfb_moment& moment) {
    return std::chrono::hours(moment.hour) + std::chrono::minutes(moment.minute) +
           std::chrono::seconds(moment.second) + zmfb::TimeOfDay(moment.fraction);
}

}  // namespace

zmfb_status zmfb_bind_null(zmfb_statement* statement, size_t index) {
    return bind_made(statement, index, [] { return std::nullopt; });
}

zmfb_status zmfb_bind_logical(zmfb_statement* statement, size_t index, int logical) {
    return bind_made(statement, index, [=] { return logical != 0; });
}

zmfb_status zmfb_bind_number(zmfb_statement* statement, size_t index, int64_t unscaled, int decimals) {
    if (decimals == 0) return bind_made(statement, index, [=] { return unscaled; });
    return bind_made(statement, index, [=] { return zmfb::Decimal(unscaled, decimals); });
}

zmfb_status zmfb_bind_double(zmfb_statement* statement, size_t index, double number) {
    return bind_made(statement, index, [=] { return number; });
}

zmfb_status zmfb_bind_text(zmfb_statement* statement, size_t index, const char* text, size_t length) {
    return bind_copy(statement, index, text, length,
                     [](const std::string& copy) { return std::string_view(copy); });
}

zmfb_status zmfb_bind_bytes(zmfb_statement* statement, size_t index, const void* bytes, size_t length) {
    return bind_copy(statement, index, bytes, length,
                     [](const std::string& copy) { return std::as_bytes(std::span(copy)); });
}

zmfb_status zmfb_bind_date(zmfb_statement* statement, size_t index, const zmfb_moment* day) {
    return bind_moment(statement, index, day, check_day, day_of);
}

zmfb_status zmfb_bind_time(zmfb_statement* statement, size_t index, const zmfb_moment* time) {
    return bind_moment(statement, index, time, check_time, time_of);
}

zmfb_status zmfb_bind_timestamp(zmfb_statement* statement, size_t index, const zmfb_moment* moment) {
    return bind_moment(statement, index, moment, check_both, [](const zmfb_moment& given) {
        return zmfb::Timestamp(std::chrono::sys_days(day_of(given)).time_since_epoch() + time_of(given));
    });
}
