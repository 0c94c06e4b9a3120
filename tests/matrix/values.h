/// Short ways to write down and to read the values that matrices are made of.
#pragma once

#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

#include "host/value.h"

namespace zmfb::test {

using host::Value;

/// A field of a table, as a test writes it: {"NOME", "C", 40}.
struct Field {
    std::string name;
    std::string type;
    double length = 0;
    double decimals = 0;
};

Value field(const Field& field);
Value structure(std::initializer_list<Field> fields);
/// An array of texts.
Value texts(std::initializer_list<std::string_view> elements);

/// The array form of a matrix: one group for each list of lines.
Value make_matrix(const std::vector<std::vector<std::string>>& groups);
/// The lines of group `k`, counted from 1.
std::vector<std::string> group_lines(const Value& matrix, std::size_t k);
/// The texts of a list of one-element arrays, such as a log or a group.
std::vector<std::string> lines(const Value& list);
/// The elements of an array of texts.
std::vector<std::string> elements(const Value& array);

/// The descriptor of a field at a position, as it stands in a line: "003::NOME::C::40::0".
std::string descriptor(std::size_t position, const Field& field);
/// A field line whose both sides are given.
std::string line(std::string_view table, std::string_view left, std::string_view right);
/// A field line that asks for no change.
std::string same(std::string_view table, std::size_t position, const Field& field);

/// A field, or every field of a structure, as "NOME C 40 0".
std::string field_text(const Value& field);
std::vector<std::string> field_texts(const Value& structure);

/// How many descriptors this process has open.
std::size_t open_descriptors();

}  // namespace zmfb::test
