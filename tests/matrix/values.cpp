#include "tests/matrix/values.h"

#include <fmt/format.h>

#include <filesystem>
#include <iterator>

namespace zmfb::test {

using host::array_of;

Value field(const Field& field) { return array_of(field.name, field.type, field.length, field.decimals); }

Value structure(std::initializer_list<Field> fields) {
    Value made = Value::array_of_size(0);
    for (const Field& one : fields) made.push(field(one));
    return made;
}

Value texts(std::initializer_list<std::string_view> elements) {
    Value made = Value::array_of_size(0);
    for (const std::string_view text : elements) made.push(text);
    return made;
}

Value make_matrix(const std::vector<std::vector<std::string>>& groups) {
    Value made = Value::array_of_size(0);
    for (const auto& group : groups) {
        Value list = Value::array_of_size(0);
        for (const std::string& text : group) list.push(array_of(text));
        made.push(array_of(list));
    }
    return made;
}

std::vector<std::string> group_lines(const Value& matrix, std::size_t k) { return lines(matrix[k][1]); }

std::vector<std::string> lines(const Value& list) {
    std::vector<std::string> all;
    for (const Value& element : list.items()) all.emplace_back(element[1].text());
    return all;
}

std::vector<std::string> elements(const Value& array) {
    std::vector<std::string> all;
    for (const Value& element : array.items()) all.emplace_back(element.text());
    return all;
}

std::string descriptor(std::size_t position, const Field& field) {
    return fmt::format("{:03}::{}::{}::{}::{}", position, field.name, field.type, field.length,
                       field.decimals);
}

std::string line(std::string_view table, std::string_view left, std::string_view right) {
    return fmt::format(" {}>>{}  => {}", table, left, right);
}

std::string same(std::string_view table, std::size_t position, const Field& field) {
    return line(table, descriptor(position, field), descriptor(position, field));
}

std::string field_text(const Value& field) {
    return fmt::format("{} {} {} {}", field[1].text(), field[2].text(), field[3].number(), field[4].number());
}

std::vector<std::string> field_texts(const Value& structure) {
    std::vector<std::string> all;
    for (const Value& field : structure.items()) all.push_back(field_text(field));
    return all;
}

std::size_t open_descriptors() {
    return static_cast<std::size_t>(std::distance(std::filesystem::directory_iterator("/proc/self/fd"),
                                                  std::filesystem::directory_iterator()));
}

}  // namespace zmfb::test
