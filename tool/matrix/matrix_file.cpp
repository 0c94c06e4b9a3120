#include "tool/matrix/matrix_file.h"

#include <fmt/format.h>

#include <algorithm>
#include <optional>

#include "host/array.h"
#include "host/number.h"
#include "host/text.h"
#include "tool/file_kind.h"
#include "tool/session.h"

namespace zmfb::tool {
namespace {

constexpr std::size_t largest_file = 64U << 20;
constexpr std::string_view block_opener = "Created by ZMRDDFIRE";

using Sides = std::pair<std::string_view, std::string_view>;

std::optional<Sides> split(std::string_view text, std::string_view separator) {
    const std::size_t at = text.find(separator);
    if (at == std::string_view::npos) return std::nullopt;
    return Sides{text.substr(0, at), text.substr(at + separator.size())};
}

// Why bytes are no text in ISO-8859-1; "" when they may be one.
std::string_view no_latin1_text(std::string_view content) {
    if (content.starts_with("\xFF\xFE") || content.starts_with("\xFE\xFF")) return "it is written in UTF-16";
    if (content.starts_with("\xEF\xBB\xBF")) return "it begins with the byte order mark of UTF-8";
    return content.find('\0') == std::string_view::npos ? "" : "it has zero bytes in it";
}

bool belongs_to_a_table(std::string_view line) {
    const auto sides = split(line, "=>");
    return line.find(block_opener) != std::string_view::npos || (sides && split(sides->first, ">>"));
}

struct Descriptor {
    std::string name;
    std::string type;
    int length = 0;
    int decimals = 0;
};

std::optional<Descriptor> descriptor(std::string_view text) {
    std::vector<std::string_view> pieces;
    for (auto rest = split(text, "::"); rest; rest = split(text, "::")) {
        pieces.push_back(rest->first);
        text = rest->second;
    }
    pieces.push_back(text);
    if (pieces.size() < 5) return std::nullopt;
    const auto number = [](std::string_view digits) { return static_cast<int>(host::val(digits).integer()); };
    return Descriptor{host::alltrim(host::upper(pieces[1])).string(), host::upper(pieces[2]).string(),
                      number(pieces[3]), number(pieces[4])};
}

std::optional<FieldLine> field_line(std::string_view line) {
    const auto sides = split(line, "=>");
    const auto left = sides ? split(sides->first, ">>") : std::nullopt;
    const auto before = left ? descriptor(left->second) : std::nullopt;
    const auto wanted = left ? descriptor(sides->second) : std::nullopt;
    if (!before || !wanted) return std::nullopt;
    return FieldLine{host::alltrim(host::upper(left->first)).string(), before->name, wanted->type,
                     wanted->length, wanted->decimals};
}

}  // namespace

host::Value read_matrix(const std::string& file) {
    const std::string content = whole_file(file, "matrix", largest_file);
    if (const std::string_view reason = no_latin1_text(content); !reason.empty()) {
        throw Failure{Exit::failed, fmt::format("{} is no matrix: {}", file, reason), "",
                      "a matrix is a text in ISO-8859-1; zmfb matrix extract writes one"};
    }
    host::Value matrix = host::Value::array_of_size(0);
    host::Value group = host::Value::array_of_size(0);
    bool names_a_table = false;
    for (std::string_view rest = content; !rest.empty();) {
        std::string_view line = rest.substr(0, rest.find('\n'));
        rest.remove_prefix(std::min(rest.size(), line.size() + 1));
        if (line.ends_with('\r')) line.remove_suffix(1);
        names_a_table = names_a_table || belongs_to_a_table(line);
        if (line.find(block_opener) != std::string_view::npos && group.size() > 0) {
            matrix.push(host::array_of(std::exchange(group, host::Value::array_of_size(0))));
        }
        group.push(host::array_of(line));
    }
    if (!names_a_table) {
        throw Failure{Exit::failed, fmt::format("{} is no matrix: no line of it names a table", file), "",
                      "zmfb matrix extract writes one"};
    }
    matrix.push(host::array_of(group));
    return matrix;
}

std::vector<Name> tables_in(const host::Value& matrix) {
    std::vector<Name> tables;
    for (const host::Value& group : matrix.items()) {
        const host::Value lines = group[1];
        for (const host::Value& line : lines.items()) {
            const auto sides = split(line[1].text(), "=>");
            const auto left = sides ? split(sides->first, ">>") : std::nullopt;
            if (!left) continue;
            const Name name(host::alltrim(host::upper(left->first)).string());
            if (!tables.empty() && tables.back() == name) continue;
            if (std::ranges::find(tables, name) == tables.end()) tables.push_back(name);
        }
    }
    return tables;
}

std::vector<FieldLine> field_lines(const host::Value& matrix) {
    std::vector<FieldLine> found;
    for (const host::Value& group : matrix.items()) {
        const host::Value lines = group[1];
        for (const host::Value& line : lines.items()) {
            if (auto field = field_line(line[1].text())) found.push_back(std::move(*field));
        }
    }
    return found;
}

}  // namespace zmfb::tool
