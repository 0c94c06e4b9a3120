// The values of the current row.
#include <chrono>
#include <string_view>

#include "c/statement.h"

using namespace zmfb::c;
using zmfb::SqlType;

namespace {

using Room = zmfb_statement::Room;

// Has `tell` tell of a field of the current row into places that must not be NULL, with room for what has to
// live until the next row.
template <class Tell, class... Places>
zmfb_status on_field(zmfb_statement* handle, size_t index, Tell tell, Places*... places) noexcept {
    return on_prepared(handle, [=](zmfb_statement& statement) {
        if (((places == nullptr) || ...)) return fail_null();
        if (!statement.rows) return fail_no_rows();
        if (index < 1 || index > statement.rooms.size()) return fail_no_column();
        tell((*RowReader(&*statement.rows))[index - 1], statement.rooms[index - 1]);
        return ZMFB_OK;
    });
}

// The same of a field that is not NULL.
template <class Tell, class... Places>
zmfb_status on_value(zmfb_statement* handle, size_t index, Tell tell, Places*... places) {
    const auto checked = [=](const zmfb::Field& field, Room& room) {
        if (field.is_null()) {
            throw zmfb::SqlError({.sqlcode = -303,
                                  .sqlstate = "22002",
                                  .message = "Column " + field.column().name + " is NULL"});
        }
        tell(field, room);
    };
    return on_field(handle, index, checked, places...);
}

void set_day(zmfb_moment& moment, std::chrono::year_month_day day) {
    moment.year = static_cast<int>(day.year());
    moment.month = static_cast<int>(static_cast<unsigned>(day.month()));
    moment.day = static_cast<int>(static_cast<unsigned>(day.day()));
}

void set_time(zmfb_moment& moment, zmfb::TimeOfDay time) {
    // In a wider type: of a time that is none the smallest has no opposite.
    const std::chrono::hh_mm_ss parts(std::chrono::duration<std::int64_t, zmfb::Tick>{time});
    moment.hour = static_cast<int>(parts.hours().count());
    moment.minute = static_cast<int>(parts.minutes().count());
    moment.second = static_cast<int>(parts.seconds().count());
    moment.fraction = static_cast<int>(parts.subseconds().count());
}

zmfb_moment moment_of(const zmfb::Field& field) {
    zmfb_moment moment = {};
    if (field.column().type == SqlType::date) {
        set_day(moment, field.as<std::chrono::year_month_day>());
    } else if (field.column().type == SqlType::time) {
        set_time(moment, field.as<zmfb::TimeOfDay>());
    } else {
        const auto stamp = field.as<zmfb::Timestamp>();
        const auto day = std::chrono::floor<std::chrono::days>(stamp);
        set_day(moment, std::chrono::year_month_day(day));
        set_time(moment, std::chrono::duration_cast<zmfb::TimeOfDay>(stamp - day));
    }
    return moment;
}

std::string_view text_of(const zmfb::Field& field, Room& room) {
    const SqlType type = field.column().type;
    if (type == SqlType::text || type == SqlType::text_blob) return field.as<std::string_view>();
    return room.text = *field.text();
}

}  // namespace

zmfb_status zmfb_field_is_null(zmfb_statement* statement, size_t index, int* is_null) {
    return on_field(
        statement, index, [=](const zmfb::Field& field, Room&) { *is_null = field.is_null() ? 1 : 0; },
        is_null);
}

zmfb_status zmfb_field_logical(zmfb_statement* statement, size_t index, int* logical) {
    return on_value(
        statement, index, [=](const zmfb::Field& field, Room&) { *logical = field.as<bool>() ? 1 : 0; },
        logical);
}

zmfb_status zmfb_field_number(zmfb_statement* statement, size_t index, int64_t* unscaled, int* decimals) {
    const auto tell = [=](const zmfb::Field& field, Room&) {
        const auto number = field.as<zmfb::Decimal>();
        *unscaled = number.unscaled();
        *decimals = number.decimals();
    };
    return on_value(statement, index, tell, unscaled, decimals);
}

zmfb_status zmfb_field_double(zmfb_statement* statement, size_t index, double* number) {
    return on_value(
        statement, index, [=](const zmfb::Field& field, Room&) { *number = field.as<double>(); }, number);
}

zmfb_status zmfb_field_text(zmfb_statement* statement, size_t index, const char** text, size_t* length) {
    const auto tell = [=](const zmfb::Field& field, Room& room) {
        const std::string_view told = text_of(field, room);
        *text = told.empty() ? "" : told.data();
        *length = told.size();
    };
    return on_value(statement, index, tell, text, length);
}

zmfb_status zmfb_field_bytes(zmfb_statement* statement, size_t index, const void** bytes, size_t* length) {
    const auto tell = [=](const zmfb::Field& field, Room& room) {
        room.bytes = field.as<zmfb::Bytes>();
        *bytes = room.bytes.empty() ? static_cast<const void*>("") : room.bytes.data();
        *length = room.bytes.size();
    };
    return on_value(statement, index, tell, bytes, length);
}

zmfb_status zmfb_field_moment(zmfb_statement* statement, size_t index, zmfb_moment* moment) {
    return on_value(
        statement, index, [=](const zmfb::Field& field, Room&) { *moment = moment_of(field); }, moment);
}
