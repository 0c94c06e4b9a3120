#include "sql/row_buffer.h"

#include <algorithm>
#include <cstring>

namespace zmfb::sql {

namespace {

constexpr std::size_t indicator_size = sizeof(short);
constexpr std::size_t varying_extra = 3;
// Room for every type of fixed size, whatever length a description claims.
constexpr std::size_t largest_fixed = 16;

constexpr std::size_t even(std::size_t offset) { return (offset + 1) & ~std::size_t{1}; }

std::size_t data_size(const XSQLVAR& column) {
    const std::size_t length = length_of(column);
    switch (type_of(column)) {
        case SQL_TEXT:
            return length;
        case SQL_VARYING:
            return length + varying_extra;
        default:
            return std::max(length, largest_fixed);
    }
}

template <std::size_t Size>
std::string_view name_text(const ISC_SCHAR (&name)[Size], ISC_SHORT length) {
    const std::string_view text(name, static_cast<std::size_t>(std::clamp<int>(length, 0, Size)));
    return text.substr(0, text.find('\0'));
}

}  // namespace

DescriptorArea::DescriptorArea(short columns) {
    const auto size = static_cast<std::size_t>(XSQLDA_LENGTH(std::max<short>(columns, 1)));
    area_.reset(static_cast<XSQLDA*>(::operator new(size)));
    std::memset(static_cast<void*>(area_.get()), 0, size);
    area_->version = SQLDA_VERSION1;
    area_->sqln = columns;
}

std::span<XSQLVAR> DescriptorArea::columns() const {
    const short described = std::clamp<short>(area_->sqld, 0, area_->sqln);
    return {area_->sqlvar, static_cast<std::size_t>(described)};
}

std::string_view field_name(const XSQLVAR& column) {
    return name_text(column.sqlname, column.sqlname_length);
}

std::string_view alias_name(const XSQLVAR& column) {
    return name_text(column.aliasname, column.aliasname_length);
}

RowBuffer::RowBuffer(std::span<XSQLVAR> columns) {
    std::size_t size = 0;
    for (const XSQLVAR& column : columns) size = even(even(size) + data_size(column)) + indicator_size;
    bytes_.resize(size);
    std::size_t offset = 0;
    for (XSQLVAR& column : columns) {
        offset = even(offset);
        column.sqldata = bytes_.data() + offset;
        offset = even(offset + data_size(column));
        column.sqlind = reinterpret_cast<ISC_SHORT*>(bytes_.data() + offset);
        offset += indicator_size;
    }
}

}  // namespace zmfb::sql
