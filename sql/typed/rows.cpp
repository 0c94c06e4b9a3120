#include "zmfbconn/rows.h"

#include <fmt/format.h>
#include <strings.h>

#include "sql/typed/cursor.h"
#include "sql/typed/failure.h"

namespace zmfb {

namespace {

constexpr std::size_t nowhere = static_cast<std::size_t>(-1);

bool same_but_for_case(const std::string& a, std::string_view b) {
    return a.size() == b.size() && strncasecmp(a.data(), b.data(), b.size()) == 0;
}

// The column that `is_it` picks; nowhere for none, or for several.
template <class Test>
std::size_t find_column(const std::vector<Column>& columns, const Test& is_it) {
    std::size_t found = nowhere;
    for (std::size_t i = 0; i < columns.size(); ++i) {
        if (!is_it(columns[i].name)) continue;
        if (found != nowhere) return nowhere;
        found = i;
    }
    return found;
}

std::string names_of(const std::vector<Column>& columns) {
    std::string names;
    for (const Column& column : columns) names += (names.empty() ? "" : ", ") + column.name;
    return names;
}

}  // namespace

Field Row::operator[](std::string_view name) const {
    const std::vector<Column>& columns = typed::columns_of(cursor_->statement());
    std::size_t found = find_column(columns, [&](const std::string& is) { return is == name; });
    if (found == nowhere)
        found = find_column(columns, [&](const std::string& is) { return same_but_for_case(is, name); });
    if (found == nowhere) {
        typed::refuse(typed::no_column,
                      fmt::format("There is no column {}, or more than one: {}", name, names_of(columns)),
                      cursor_->statement().text());
    }
    return {cursor_, cursor_->row(), found};
}

Field Row::operator[](std::size_t index) const {
    if (index >= size()) {
        typed::refuse(typed::no_column, fmt::format("There is no column {}: there are {}", index, size()),
                      cursor_->statement().text());
    }
    return {cursor_, cursor_->row(), index};
}

std::size_t Row::size() const { return typed::columns_of(cursor_->statement()).size(); }

typed::Cursor& Field::current() const {
    if (cursor_->row() != row_) {
        typed::refuse(typed::not_current, "The field is of an earlier row", cursor_->statement().text());
    }
    return *cursor_;
}

bool Field::is_null() const { return current().is_null(current().slot(index_)); }

const Column& Field::column() const { return typed::columns_of(statement())[index_]; }

}  // namespace zmfb
