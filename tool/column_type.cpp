#include "tool/column_type.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <string_view>

namespace zmfb::tool {
namespace {

struct NamedCode {
    int code;
    std::string_view name;
};

constexpr std::array named_codes{
    NamedCode{7, "SMALLINT"},
    NamedCode{8, "INTEGER"},
    NamedCode{10, "FLOAT"},
    NamedCode{12, "DATE"},
    NamedCode{13, "TIME"},
    NamedCode{14, "CHAR"},
    NamedCode{16, "BIGINT"},
    NamedCode{23, "BOOLEAN"},
    NamedCode{24, "DECFLOAT(16)"},
    NamedCode{25, "DECFLOAT(34)"},
    NamedCode{26, "INT128"},
    NamedCode{27, "DOUBLE PRECISION"},
    NamedCode{28, "TIME WITH TIME ZONE"},
    NamedCode{29, "TIMESTAMP WITH TIME ZONE"},
    NamedCode{35, "TIMESTAMP"},
    NamedCode{37, "VARCHAR"},
    NamedCode{40, "CSTRING"},
    NamedCode{261, "BLOB"},
};

bool holds_whole_numbers(int code) { return code == 7 || code == 8 || code == 16 || code == 26; }
bool holds_text(int code) { return code == 14 || code == 37 || code == 40; }

// What a precision is when the column was not made with one.
int widest_precision(int code) { return code == 7 ? 4 : code == 8 ? 9 : code == 26 ? 38 : 18; }

std::string blob_name(int sub_type) {
    if (sub_type == 0) return "BLOB SUB_TYPE BINARY";
    return sub_type == 1 ? "BLOB SUB_TYPE TEXT" : fmt::format("BLOB SUB_TYPE {}", sub_type);
}

}  // namespace

std::string type_name(const StoredType& type) {
    const auto found = std::ranges::find(named_codes, type.code, &NamedCode::code);
    if (found == named_codes.end()) return fmt::format("type {}", type.code);
    if (type.code == 261) return blob_name(type.sub_type);
    if (holds_text(type.code)) {
        return fmt::format("{}({})", found->name, type.characters != 0 ? type.characters : type.bytes);
    }
    if (holds_whole_numbers(type.code) && (type.sub_type != 0 || type.scale != 0)) {
        const int precision = type.precision != 0 ? type.precision : widest_precision(type.code);
        return fmt::format("{}({},{})", type.sub_type == 2 ? "DECIMAL" : "NUMERIC", precision, -type.scale);
    }
    return std::string(found->name);
}

}  // namespace zmfb::tool
