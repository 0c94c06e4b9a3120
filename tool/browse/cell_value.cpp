#include "tool/browse/cell_value.h"

namespace zmfb::tool::browse {

CellValue value_of(const FieldValue& field, SqlType type) {
    if (field.is_null()) return std::monostate();
    switch (type) {
        case SqlType::text:
        case SqlType::text_blob:
            return field.as<std::string>();
        case SqlType::bytes:
            return field.as<Bytes>();
        case SqlType::integer:
        case SqlType::decimal:
            return field.as<Decimal>();
        case SqlType::real:
            return field.as<double>();
        case SqlType::boolean:
            return field.as<bool>();
        case SqlType::date:
            return field.as<std::chrono::year_month_day>();
        case SqlType::time:
            return field.as<TimeOfDay>();
        case SqlType::timestamp:
            return field.as<Timestamp>();
        case SqlType::blob:
        case SqlType::other:
            break;
    }
    return std::monostate();
}

void assign(FieldPlace place, const CellValue& value) {
    std::visit(
        [&place](const auto& held) {
            if constexpr (std::same_as<std::remove_cvref_t<decltype(held)>, std::monostate>) {
                place = std::nullopt;
            } else {
                place = held;
            }
        },
        value);
}

}  // namespace zmfb::tool::browse
