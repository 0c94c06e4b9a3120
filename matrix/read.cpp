#include "matrix/read.h"

#include <filesystem>
#include <system_error>

#include "host/compare.h"
#include "host/file.h"
#include "host/number.h"
#include "host/text.h"
#include "matrix/format.h"

namespace zmfb::matrix {
namespace {

using host::operator""_l1;

constexpr std::string_view bad_record = "Os dados para esta tabela parecem corrompidos;Registro: ";
constexpr std::string_view bad_table = "Os dados para esta tabela parecem corrompidos;Tabela: ";
constexpr std::string_view bad_field = "Os dados para esta tabela parecem corrompidos;Campo: ";
constexpr std::string_view no_table = "Não foi possível determinar a tabela alvo"_l1;

// The end of the file is a file error like any other.
bool next_line(const Value& handle, Value& line) {
    if (host::ferror().number() != 0) return false;
    line = host::freadtxt(handle);
    return host::ferror().number() == 0;
}

Value read_file(Self& self, const Value& name) {
    Value matrix = Value::array_of_size(0);
    Value group = Value::array_of_size(0);
    // A pipe would be waited for, and a device may have no end.
    std::error_code ignored;
    if (!std::filesystem::is_regular_file(name.string(), ignored)) return matrix;
    const Value handle = call(self, "fopnfile", name);
    for (Value line; next_line(handle, line);) {
        if (host::contained(table_opener, line) && !host::empty(group)) {
            matrix.push(host::array_of(std::exchange(group, Value::array_of_size(0))));
        }
        group.push(host::array_of(std::move(line)));
    }
    if (!host::empty(group)) matrix.push(host::array_of(std::move(group)));
    return matrix;
}

// What an array of one element holds; NIL when `wrapper` is no array or holds another kind.
Value unwrapped(const Value& wrapper, host::Kind kind) {
    if (!wrapper.is(host::Kind::array) || wrapper.size() == 0) return {};
    const Value element = wrapper[1];
    return element.is(kind) ? element : Value();
}

// These answer whether the group is to be read on.
bool stop_damaged(Group& group, Value message) {
    group.damage = std::move(message);
    return false;
}

bool stop_at_record(Group& group, const Value& record) {
    return stop_damaged(group, Value(bad_record) + (record.is(host::Kind::character) ? record : Value("")));
}

bool stop_at_field(Group& group, const Value& text) {
    return stop_damaged(group, Value(bad_field) + text + ";Tabela: " + group.table);
}

// The field that a descriptor's text describes; NIL when it is malformed.
Value field_of(Self& self, const Value& text) {
    const Value pieces = call(self, "toarray", text, between_pieces);
    if (!ask(self, "isvalidfielddescriptor", pieces)) return {};
    return host::array_of(host::alltrim(host::upper(pieces[2])), host::upper(pieces[3]), host::val(pieces[4]),
                          host::val(pieces[5]));
}

bool read_left(Self& self, const Value& text, Group& group) {
    if (!host::contained(between_pieces, text)) {
        group.drop_table = host::contained(drop_table_words, text);
        return group.drop_table ? false : stop_at_field(group, text);
    }
    const Value field = field_of(self, text);
    if (field.is_nil()) return stop_at_field(group, text);
    group.lefts.push(field);
    return true;
}

bool read_right(Self& self, const Value& text, Group& group) {
    Value field;
    if (host::contained(between_pieces, text)) {
        field = field_of(self, text);
    } else if (host::contained(drop_field_words, text)) {
        field = host::array_of(drop_field_words, "", 0, 0);
    }
    if (field.is_nil()) return stop_at_field(group, text);
    group.rights.push(field);
    return true;
}

// A text that contains a separator always splits into two pieces at least.
bool read_line(Self& self, const Value& line, Group& group) {
    if (!host::contained(arrow, line)) return true;
    const Value sides = call(self, "toarray", line, arrow);
    const Value& left = sides[1];
    if (!host::contained(after_table, left)) return stop_at_record(group, left);
    const Value parts = call(self, "toarray", left, after_table);
    const Value table = host::alltrim(parts[1]);
    if (host::empty(group.table)) {
        group.table = table;
    } else if (!host::exactly_equal(table, group.table)) {
        return stop_damaged(group, Value(bad_table) + group.table);
    }
    if (host::empty(group.table)) return stop_damaged(group, no_table);
    return read_left(self, parts[2], group) && read_right(self, sides[2], group);
}

}  // namespace

Value matrix_of(Self& self, const Value& source) {
    if (source.is(host::Kind::character)) return read_file(self, source);
    return source.is(host::Kind::array) ? source : Value::array_of_size(0);
}

Group read_group(Self& self, const Value& element) {
    Group group;
    const Value lines = unwrapped(element, host::Kind::array);
    if (lines.is_nil()) {
        stop_at_record(group, element);
        return group;
    }
    for (std::size_t i = 1; i <= lines.size(); ++i) {
        const Value line = unwrapped(lines[i], host::Kind::character);
        const bool go_on = line.is_nil() ? stop_at_record(group, lines[i]) : read_line(self, line, group);
        if (!go_on) break;
    }
    return group;
}

}  // namespace zmfb::matrix
