/// What a column takes, and whether what is typed may still become that.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "tool/browse/cell_value.h"
#include "zmfbconn/method_types.h"

namespace zmfb::tool::browse {

struct CellRule {
    enum class Kind : std::uint8_t {
        none,     ///< is not typed
        text,     ///< of so many characters
        number,   ///< of so many characters, the sign and the point among them
        real,     ///< a number of any size
        logical,  ///< T or F
        day,      ///< 2026-11-22
        time,     ///< 09:30, 09:30:15, 09:30:15.1250
        moment,   ///< a day, or a day and a time
    };
    Kind kind = Kind::none;
    std::size_t width = 0;  ///< characters at most; of a text 0 for any number of them
    int decimals = 0;
    bool nullable = true;
};

/// That of a column; `field` is what the driver knows it as, where it knows more than the type, else nullptr.
CellRule rule_of(const Column& column, const FieldDescriptor* field);

/// Why a text (UTF-8) cannot become a value by typing on; "" when it may. Nothing may become anything.
std::string why_not(const CellRule& rule, std::string_view begun);
/// The value that was typed: of nothing NULL, of a text the empty one. Throws Failure when it is none.
CellValue typed_value(const CellRule& rule, std::string_view text);

}  // namespace zmfb::tool::browse
