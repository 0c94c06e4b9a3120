/// Conversion of DBF records into the fixed-length records of the data file that an external table reads.
///
/// A DBF record is a deletion flag and the fields at their full width. The data file has the same fields
/// without the flag and without anything between or behind them: a date takes ten characters, a blank number
/// reads 0.
#pragma once

#include <cstddef>
#include <span>
#include <vector>

#include "dbf/header.h"

namespace zmfb::transfer {

/// What stands in the data file for a date that is none.
inline constexpr std::string_view no_date = "0001-01-01";

/// The width of a field in the data file.
std::size_t dat_width(const dbf::Field& field);

/// The way from the records of one DBF file to those of its data file.
///
///  - D: YYYY-MM-DD when its eight characters are a calendar day, else 0001-01-01.
///  - N: as it stands; zero bytes at its end, with which some programs fill a field up, become blanks; blanks
///  only
///    become "0" and blanks.
///  - any other type: the bytes as they stand.
///
/// Of a field that reaches beyond the record the missing bytes count as blanks. Bytes of a record behind the
/// last field go nowhere.
class RecordConversion {
  public:
    RecordConversion(std::span<const dbf::Field> fields, std::size_t record_length);

    /// Length of a DBF record, deletion flag included, and of a record of the data file.
    [[nodiscard]] std::size_t record_length() const { return record_length_; }
    [[nodiscard]] std::size_t dat_length() const { return dat_length_; }

    /// Converts `count` records that follow one another at `records` to `dat`, which has room for count *
    /// dat_length().
    void convert(const char* records, std::size_t count, char* dat) const;

  private:
    struct Piece {
        std::size_t from;
        std::size_t to;
        std::size_t length;
    };

    void place(const dbf::Field& field, std::size_t from);
    void copy(std::size_t from, std::size_t length);
    void convert_one(const char* record, char* dat) const;

    std::size_t record_length_;
    std::size_t dat_length_ = 0;
    std::vector<Piece> copies_;   // bytes as they stand, neighbours joined
    std::vector<Piece> blanks_;   // bytes that the record does not have; `from` unused
    std::vector<Piece> numbers_;  // where they stand in the data file's record; `from` unused
    std::vector<Piece> dates_;    // length 0: no eight characters to look at
};

}  // namespace zmfb::transfer
