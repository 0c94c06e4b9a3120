#include "transfer/record_conversion.h"

#include <algorithm>
#include <cstring>

#include "dbf/value.h"

namespace zmfb::transfer {

namespace {

constexpr std::size_t date_digits = 8;

void convert_date(const char* eight, char* ten) {
    if (!dbf::read_date({eight, date_digits}).ok()) {
        std::memcpy(ten, no_date.data(), no_date.size());
        return;
    }
    std::memcpy(ten, eight, 4);
    ten[4] = '-';
    std::memcpy(ten + 5, eight + 4, 2);
    ten[7] = '-';
    std::memcpy(ten + 8, eight + 6, 2);
}

// Most numbers stand at the right end of their field, so that the first look settles them.
void convert_number(char* number, std::size_t length) {
    std::size_t end = length;
    while (end > 0 && (number[end - 1] == ' ' || number[end - 1] == '\0')) number[--end] = ' ';
    if (end == 0) number[0] = '0';
}

}  // namespace

std::size_t dat_width(const dbf::Field& field) { return field.type == 'D' ? no_date.size() : field.length; }

RecordConversion::RecordConversion(std::span<const dbf::Field> fields, std::size_t record_length)
    : record_length_(record_length) {
    std::size_t from = 1;
    for (const dbf::Field& field : fields) {
        place(field, from);
        from += field.length;
        dat_length_ += dat_width(field);
    }
}

void RecordConversion::place(const dbf::Field& field, std::size_t from) {
    const std::size_t there = std::min(field.length, record_length_ - std::min(from, record_length_));
    const std::size_t missing = field.length - there;
    if (field.type == 'D') {
        const bool readable = field.length == date_digits && missing == 0;
        dates_.push_back({from, dat_length_, readable ? date_digits : 0});
        return;
    }
    if (there > 0) copy(from, there);
    if (missing > 0) blanks_.push_back({0, dat_length_ + there, missing});
    if (field.type == 'N' && field.length > 0) numbers_.push_back({0, dat_length_, field.length});
}

void RecordConversion::copy(std::size_t from, std::size_t length) {
    if (!copies_.empty()) {
        Piece& last = copies_.back();
        if (last.from + last.length == from && last.to + last.length == dat_length_) {
            last.length += length;
            return;
        }
    }
    copies_.push_back({from, dat_length_, length});
}

void RecordConversion::convert_one(const char* record, char* dat) const {
    for (const Piece& piece : copies_) std::memcpy(dat + piece.to, record + piece.from, piece.length);
    for (const Piece& piece : blanks_) std::memset(dat + piece.to, ' ', piece.length);
    for (const Piece& piece : numbers_) convert_number(dat + piece.to, piece.length);
    for (const Piece& piece : dates_) {
        if (piece.length == 0) {
            std::memcpy(dat + piece.to, no_date.data(), no_date.size());
        } else {
            convert_date(record + piece.from, dat + piece.to);
        }
    }
}

void RecordConversion::convert(const char* records, std::size_t count, char* dat) const {
    for (std::size_t i = 0; i < count; ++i) convert_one(records + i * record_length_, dat + i * dat_length_);
}

}  // namespace zmfb::transfer
