#include <zmfbconn/host/array.h>
#include <zmfbconn/host/date.h>

#include <cmath>
#include <limits>
#include <memory>
#include <utility>

#include "c/guard.h"

using namespace zmfb::c;
using zmfb::host::CalendarDay;
using zmfb::host::Date;
using zmfb::host::Picture;

namespace {

// Reads a place that must hold `kind`.
template <class Tell>
zmfb_status read(const zmfb_value* place, Kind kind, Tell tell) noexcept {
    if (place == nullptr) return fail_null();
    if (!place->value.is(kind)) return fail_kind(kind, place->value);
    tell(place->value);
    return ZMFB_OK;
}

// Whether there is an element `index` of the array in a place.
zmfb_status check_element(const zmfb_value* array, std::size_t index) noexcept {
    if (array == nullptr) return fail_null();
    if (!array->value.is(Kind::array)) return fail_kind(Kind::array, array->value);
    if (index < 1 || index > array->value.size()) return fail(ZMFB_OUT_OF_RANGE, "no such element");
    return ZMFB_OK;
}

bool fits_a_byte(int number) { return number >= 0 && number <= std::numeric_limits<std::uint8_t>::max(); }

// A code block of a C program.
class ForeignBody {
  public:
    // Tells `gone` even where there is no memory for the pointer.
    ForeignBody(zmfb_body body, void* context, zmfb_gone gone)
        : body_(body), context_(context, [gone](void* ending) {
              if (gone != nullptr) gone(ending);
          }) {}

    Value operator()(Args args) const {
        std::vector<zmfb_value> places;
        std::vector<const zmfb_value*> arguments;
        places.reserve(args.size());
        arguments.reserve(args.size());
        for (const Value& value : args.all()) arguments.push_back(&places.emplace_back(zmfb_value{value}));
        zmfb_value result;
        const std::shared_ptr<void> keep = context_;
        const zmfb_body body = body_;
        const unsigned long noted = failures();
        const int answer = body(keep.get(), arguments.data(), arguments.size(), &result);
        if (answer == ZMFB_OK) return std::move(result.value);
        const bool known = answer > ZMFB_OK && answer <= ZMFB_RAISED;
        const zmfb_status status = known ? static_cast<zmfb_status>(answer) : ZMFB_FAILED;
        if (failures() == noted) fail(status, "a code block ended the call");
        throw CallEnded{status};
    }

  private:
    zmfb_body body_;
    std::shared_ptr<void> context_;
};

}  // namespace

zmfb_value* zmfb_new(void) { return new (std::nothrow) zmfb_value; }

void zmfb_free(zmfb_value* value) {
    // An object's end may raise errors.
    guard([value] {
        delete value;
        return ZMFB_OK;
    });
}

zmfb_kind zmfb_kind_of(const zmfb_value* value) {
    return value == nullptr ? ZMFB_NIL : static_cast<zmfb_kind>(value->value.kind());
}
static_assert(static_cast<int>(Kind::nil) == ZMFB_NIL && static_cast<int>(Kind::character) == ZMFB_TEXT &&
              static_cast<int>(Kind::numeric) == ZMFB_NUMBER &&
              static_cast<int>(Kind::logical) == ZMFB_LOGICAL && static_cast<int>(Kind::date) == ZMFB_DATE &&
              static_cast<int>(Kind::array) == ZMFB_ARRAY && static_cast<int>(Kind::object) == ZMFB_OBJECT &&
              static_cast<int>(Kind::block) == ZMFB_BLOCK);

zmfb_status zmfb_copy(zmfb_value* to, const zmfb_value* from) {
    if (from == nullptr) return fail_null();
    return fill(to, [from] { return from->value; });
}

zmfb_status zmfb_set_nil(zmfb_value* value) {
    return fill(value, [] { return Value(); });
}

zmfb_status zmfb_set_logical(zmfb_value* value, int logical) {
    return fill(value, [logical] { return Value(logical != 0); });
}

zmfb_status zmfb_set_number(zmfb_value* value, double number, int width, int decimals) {
    if (!std::isfinite(number) || !fits_a_byte(width) || !fits_a_byte(decimals))
        return fail(ZMFB_OUT_OF_RANGE, "not a number, or width or decimals outside 0 to 255");
    const Picture picture{static_cast<std::uint8_t>(width), static_cast<std::uint8_t>(decimals)};
    return fill(value, [=] { return Value(number, picture); });
}

zmfb_status zmfb_set_date(zmfb_value* value, int year, int month, int day) {
    const Date date = zmfb::host::date_of(CalendarDay{year, month, day});
    const bool empty = year == 0 && month == 0 && day == 0;
    if (date == Date{} && !empty) return fail(ZMFB_OUT_OF_RANGE, "no such day");
    return fill(value, [=] { return Value(empty ? Date{} : date); });
}

zmfb_status zmfb_set_text(zmfb_value* value, const char* bytes, size_t length) {
    if (bytes == nullptr && length > 0) return fail_null();
    return fill(value, [=] { return Value(std::string_view(length > 0 ? bytes : "", length)); });
}

zmfb_status zmfb_set_array(zmfb_value* value, size_t size) {
    if (size > zmfb::host::max_array_size) return fail(ZMFB_OUT_OF_RANGE, "too many elements");
    return fill(value, [size] { return Value::array_of_size(size); });
}

zmfb_status zmfb_set_block(zmfb_value* value, zmfb_body body, void* context, zmfb_gone gone) {
    if (value == nullptr || body == nullptr) {
        if (gone != nullptr) gone(context);
        return fail_null();
    }
    return fill(value, [=] { return Value::block(ForeignBody(body, context, gone)); });
}

zmfb_status zmfb_get_logical(const zmfb_value* value, int* logical) {
    if (logical == nullptr) return fail_null();
    return read(value, Kind::logical, [=](const Value& held) { *logical = held.logical() ? 1 : 0; });
}

zmfb_status zmfb_get_number(const zmfb_value* value, double* number, int* width, int* decimals) {
    if (number == nullptr) return fail_null();
    return read(value, Kind::numeric, [=](const Value& held) {
        *number = held.number();
        if (width != nullptr) *width = held.picture().width;
        if (decimals != nullptr) *decimals = held.picture().decimals;
    });
}

zmfb_status zmfb_get_date(const zmfb_value* value, int* year, int* month, int* day) {
    if (year == nullptr || month == nullptr || day == nullptr) return fail_null();
    return read(value, Kind::date, [=](const Value& held) {
        const CalendarDay parts = zmfb::host::calendar_day(held.date());
        *year = parts.year;
        *month = parts.month;
        *day = parts.day;
    });
}

zmfb_status zmfb_get_text(const zmfb_value* value, const char** bytes, size_t* length) {
    if (bytes == nullptr || length == nullptr) return fail_null();
    return read(value, Kind::character, [=](const Value& held) {
        *bytes = held.text().data();
        *length = held.text().size();
    });
}

zmfb_status zmfb_get_size(const zmfb_value* array, size_t* size) {
    if (size == nullptr) return fail_null();
    return read(array, Kind::array, [=](const Value& held) { *size = held.size(); });
}

zmfb_status zmfb_get_element(const zmfb_value* array, size_t index, zmfb_value* element) {
    const zmfb_status problem = check_element(array, index);
    if (problem != ZMFB_OK) return problem;
    return fill(element, [=] { return array->value[index]; });
}

zmfb_status zmfb_set_element(const zmfb_value* array, size_t index, const zmfb_value* element) {
    const zmfb_status problem = check_element(array, index);
    if (problem != ZMFB_OK) return problem;
    if (element == nullptr) return fail_null();
    return guard([=] {
        array->value[index] = element->value;
        return ZMFB_OK;
    });
}

zmfb_status zmfb_append(const zmfb_value* array, const zmfb_value* element) {
    if (array == nullptr || element == nullptr) return fail_null();
    if (!array->value.is(Kind::array)) return fail_kind(Kind::array, array->value);
    if (array->value.size() >= zmfb::host::max_array_size)
        return fail(ZMFB_OUT_OF_RANGE, "too many elements");
    return guard([=] {
        array->value.push(element->value);
        return ZMFB_OK;
    });
}
