#include "tests/support/show.h"

#include <fmt/format.h>

#include <ostream>

#include "host/date.h"
#include "host/result.h"

namespace zmfb::test {

using host::Kind;
using host::Value;

namespace {

std::string show_text(std::string_view text) {
    std::string shown = "\"";
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        if (c == '"' || c == '\\') {
            shown += {'\\', c};
        } else if (byte < 0x20 || byte > 0x7E) {
            shown += fmt::format("\\x{:02x}", byte);
        } else {
            shown += c;
        }
    }
    return shown + '"';
}

std::string show_array(const Value& array) {
    std::string shown = "{";
    for (const Value& item : array.items()) {
        if (shown.size() > 1) shown += ", ";
        shown += show(item);
    }
    return shown + '}';
}

std::string show_date(const Value& date) {
    const std::string digits = host::dtos(date).string();
    if (digits.find_first_not_of(' ') == std::string::npos) return "{^}";
    return "{^" + digits.substr(0, 4) + '-' + digits.substr(4, 2) + '-' + digits.substr(6) + '}';
}

}  // namespace

std::string show(const Value& value) {
    switch (value.kind()) {
        case Kind::nil:
            return "NIL";
        case Kind::character:
            return show_text(value.text());
        case Kind::numeric:
            return fmt::format("{}", value.number());
        case Kind::logical:
            return value.logical() ? ".T." : ".F.";
        case Kind::date:
            return show_date(value);
        case Kind::array:
            return show_array(value);
        case Kind::object:
            return fmt::format("<object of {}>", value.object()->class_name());
        case Kind::block:
            return "<block>";
    }
    return "?";
}

std::vector<std::vector<std::string>> row_texts(const Value& result) {
    std::vector<std::vector<std::string>> rows;
    for (const Value& row : host::data_rows(result)) {
        std::vector<std::string>& texts = rows.emplace_back();
        for (const Value& value : row.items()) {
            texts.push_back(value.is(Kind::character) ? std::string(value.text()) : show(value));
        }
    }
    return rows;
}

}  // namespace zmfb::test

namespace zmfb::host {

void PrintTo(const Value& value, std::ostream* out) { *out << test::show(value); }

}  // namespace zmfb::host
