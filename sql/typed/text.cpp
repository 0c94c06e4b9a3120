#include "sql/typed/text.h"

#include <fmt/format.h>

#include "sql/typed/failure.h"

namespace zmfb::typed {

namespace {

constexpr std::string_view no_character_sign = "\xEF\xBF\xBD";  // U+FFFD

const Encoding& encoding_of(const Slot& slot, std::string_view bytes, const Encoding& database) {
    static const std::shared_ptr<const Encoding> utf8 = Encoding::named("UTF-8");
    switch (slot.script) {
        case Script::utf8:
            return *utf8;
        case Script::latin1:
            return *Encoding::latin1();
        case Script::names:
            return holds_utf8(bytes) ? *utf8 : database;
        default:
            return database;
    }
}

}  // namespace

std::string encoded(std::string_view utf8, const Encoding& encoding, std::string_view what,
                    std::string_view statement) {
    if (is_ascii(utf8)) return std::string(utf8);
    std::string bytes;
    const std::string_view missing = encoding.encode(utf8, bytes);
    if (missing.empty()) return bytes;
    if (character_length(missing) == 0) {
        refuse(no_character, fmt::format("In {} the byte 0x{:02X} is no UTF-8", what, missing[0] & 0xFF),
               statement);
    }
    refuse(
        no_character,
        fmt::format("In {} there is '{}', a character that {} does not have", what, missing, encoding.name()),
        statement);
}

void decode(std::string_view bytes, const Encoding& encoding, std::string_view what, OddByte odd,
            std::string& utf8) {
    const std::size_t bad = encoding.decode(bytes, utf8, no_character_sign);
    if (bad == std::string_view::npos || odd == OddByte::is_replaced) return;
    refuse(no_character, fmt::format("The byte 0x{:02X} in {} is no character of {}", bytes[bad] & 0xFF, what,
                                     encoding.name()));
}

std::string_view decoded(Cursor& cursor, std::size_t column, std::string_view bytes, OddByte odd) {
    const Slot& slot = cursor.slot(column);
    if (slot.script == Script::as_kept || is_ascii(bytes)) return bytes;
    if (slot.script == Script::utf8 && odd == OddByte::is_thrown) return bytes;
    std::string& utf8 = cursor.room(column);
    utf8.clear();
    decode(bytes, encoding_of(slot, bytes, cursor.work().session().encoding()),
           "column " + cursor.statement().rows().columns()[column].name, odd, utf8);
    return utf8;
}

}  // namespace zmfb::typed
