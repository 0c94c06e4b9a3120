/// The header of a DBF file, of every dialect.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "source.h"

#pragma GCC visibility push(default)

namespace zmfb::dbf {

/// Who wrote the file, as far as the layout of headers, values and memo files depends on it.
enum class Dialect : std::uint8_t { dbase2, dbase3, dbase4, dbase7, foxpro2, visual_foxpro, six };

/// What the values of a field are.
enum class Kind : std::uint8_t {
    text,       ///< C, V
    bytes,      ///< Q
    number,     ///< N, F: digits
    date,       ///< D
    logical,    ///< L
    integer,    ///< I, +
    currency,   ///< Y
    real,       ///< O, and B of 8 bytes
    timestamp,  ///< T, @
    memo_text,  ///< M
    memo_bytes  ///< G, P, W, M with the flag for bytes, and B of 4 or 10 bytes
};

/// A field of the table.
struct Field {
    std::string name;               ///< as the file has it, up to a zero byte, without blanks around it
    char type = 'C';                ///< the letter, in upper case
    Kind kind = Kind::text;         ///< what it holds
    std::size_t length = 0;         ///< in bytes
    int decimals = 0;               ///< of those of a number behind the point
    std::size_t offset = 0;         ///< in the record, whose first byte is the deletion mark
    std::uint8_t flags = 0;         ///< Visual FoxPro's
    std::optional<int> null_bit;    ///< of a field that may be NULL: among the NULL flags
    std::optional<int> length_bit;  ///< of V and Q; set when the last byte is the value's length

    /// Whether the texts are bytes that no code page belongs to.
    [[nodiscard]] bool binary() const { return (flags & 0x04) != 0; }
};

/// A header, and how many records the file holds.
struct Header {
    std::uint8_t first_byte = 0;            ///< which says the dialect
    Dialect dialect = Dialect::dbase3;      ///< by the first byte, or by the descriptions where they differ
    std::uint8_t language = 0;              ///< the language byte; 0 says nothing
    std::vector<Field> fields;              ///< in the order of the file, without the NULL flags
    std::uint64_t start = 0;                ///< where the first record begins
    std::size_t record_size = 0;            ///< with the deletion mark
    std::optional<std::size_t> null_flags;  ///< where in a record the NULL flags begin
    std::size_t null_flags_size = 0;        ///< in bytes

    std::uint64_t counted = 0;  ///< records, as the header has it
    std::uint64_t records = 0;  ///< of these, as many as are whole in the file
    std::uint64_t behind = 0;   ///< whole records behind those, which the header does not count
    std::size_t cut_off = 0;    ///< bytes of a counted record that the file ends inside of; 0: it does not

    /// A line for each thing in which the header contradicts itself or the file, and how it was read.
    std::vector<std::string> notes;

    /// Whether a field's values are in a memo file.
    [[nodiscard]] bool has_memo() const;
};

/// Why a file cannot be read.
class Refused : public std::runtime_error {
  public:
    /// what() has all the reasons, "; " between them.
    explicit Refused(std::vector<std::string> reasons);
    ~Refused() override;
    Refused(const Refused&) = default;             ///< with its reasons
    Refused& operator=(const Refused&) = default;  ///< with its reasons

    /// Each in words that follow the file's name: "is empty".
    [[nodiscard]] const std::vector<std::string>& reasons() const noexcept { return reasons_; }

  private:
    std::vector<std::string> reasons_;
};

/// Reads the header of the file. One that contradicts itself is read in the way in which the file's length
/// and the first bytes of the records fit, and says so in its notes. Throws Refused, with all that is wrong,
/// for what is no DBF file or one whose records cannot be told apart.
Header read_header(const Source& file);

}  // namespace zmfb::dbf

#pragma GCC visibility pop
