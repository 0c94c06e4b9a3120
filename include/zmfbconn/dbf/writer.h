/// Writing DBF files.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "value.h"

#pragma GCC visibility push(default)

namespace zmfb::dbf {

/// What a file is written as.
enum class Format : std::uint8_t {
    dbase3,        ///< C, N, D, L, M; memos in a .dbt file
    foxpro,        ///< FoxPro 2: also F, and G and P for bytes; memos in an .fpt file
    visual_foxpro  ///< also I, B, Y, T, V, and Q for bytes; fields that may be NULL
};

/// A field of a file to be.
struct NewField {
    std::string name{};      ///< in UTF-8; in the file at most 10 bytes
    char type = 'C';         ///< one of those that the format has
    std::size_t length = 0;  ///< in bytes, of C, V, Q, N and F; the others have a length of their own
    int decimals = 0;        ///< of N and F
    bool nullable = false;   ///< whether it may be NULL
    bool binary = false;     ///< of C, V and M: bytes that no code page belongs to
};

/// How a file is written.
struct WriteOptions {
    Format format = Format::dbase3;  ///< which decides on the types of fields
    /// What texts become that are given in UTF-8, by its name for iconv. "": they are bytes, and stay so.
    std::string code_page{};
    /// Whether the file says its code page: in its language byte, or else, when a text or a name has other
    /// characters than those of ASCII, in a .cpg file beside it.
    bool names_code_page = true;
    /// Whether values that a field cannot keep are converted and counted; else they are refused.
    bool lossy = false;
    /// The day of the last change in the header; that of today unless it is given.
    Date changed{};
};

/// What of a value a field does not keep. In words when it is refused; and what becomes of it otherwise.
enum class Loss : std::uint8_t {
    none,          ///< all of it is kept
    null,          ///< there is no NULL in the field: nothing, in I, B and Y zero, in L "?"
    too_wide,      ///< a number has more digits than there is room for: nothing, in I and Y zero
    rounded,       ///< a number has more decimals: rounded, half away from zero
    not_a_number,  ///< infinite, or the result of 0/0: as one that is too wide
    too_long,      ///< a text or bytes are longer than the field, a memo than MemoFile::longest: cut
    characters,    ///< a text has characters that the code page does not have, or is no UTF-8: "?"
    end_mark,      ///< 1A, which ends a memo of dBASE III, or FF FF 08 00, which begins others: "?"
    time_of_day,   ///< a D field has no time, a T field none below a millisecond: left out
    no_day         ///< a day is none of the years 1 to 9999: nothing
};

/// In words that follow a value: "is wider than the field".
std::string_view words_for(Loss loss);

/// A value that a field does not keep whole, and so was refused.
class Unfit : public std::runtime_error {
  public:
    /// what() says all of it in a line.
    Unfit(Loss loss, std::size_t field, const std::string& name, std::uint64_t record, std::string value);
    ~Unfit() override;
    Unfit(const Unfit&) = default;             ///< with its value
    Unfit& operator=(const Unfit&) = default;  ///< with its value

    /// What would have been lost.
    [[nodiscard]] Loss loss() const noexcept { return loss_; }
    /// Which field, from 0 on.
    [[nodiscard]] std::size_t field() const noexcept { return field_; }
    /// Which record, from 1 on.
    [[nodiscard]] std::uint64_t record() const noexcept { return record_; }
    /// For a person; the beginning of a long one.
    [[nodiscard]] const std::string& value() const noexcept { return value_; }

  private:
    Loss loss_;
    std::size_t field_;
    std::uint64_t record_;
    std::string value_;
};

/// Values that were converted.
struct Converted {
    std::size_t field = 0;    ///< from 0 on
    Loss loss = Loss::none;   ///< what they lost
    std::uint64_t count = 0;  ///< how many
};

/// What is wrong with fields for a format, each in words that follow a file's name: "would have two fields
/// NAME". A Writer refuses what any of this is said of. `code_page` is that of WriteOptions.
std::vector<std::string> field_problems(Format format, std::span<const NewField> fields,
                                        const std::string& code_page = {});

/// Writes the records of a file one after another, in blocks, and its memos beside it.
///
///     Writer writer("shop.dbf", fields, {.code_page = "CP850"});
///     for (const Customer& one : customers) {
///         writer.text(0, one.name);
///         writer.number(1, one.cents, 2);
///         writer.append();
///     }
///     writer.finish();
///
/// Everything is written under other names in the same folder, and takes its name in finish(): what was there
/// before stays as it is until then, and so it does when anything fails.
///
/// The functions throw std::filesystem::filesystem_error, which names the file, when the system refuses.
class Writer {
  public:
    /// Begins a file. Throws Refused, with all that is wrong, for fields that the format does not have.
    Writer(const std::string& path, std::vector<NewField> fields, WriteOptions options = {});
    /// What was not finished goes.
    ~Writer();
    Writer(const Writer&) = delete;
    Writer& operator=(const Writer&) = delete;

    /// @{
    /// Sets the value of a field, counted from 0, of the record to come. Throws Unfit when the field does not
    /// keep it whole and losses are not accepted; the field then has no value. Throws std::invalid_argument
    /// when there is no such field, or its type has no such values.
    ///
    /// A text: C, V, M; the letters T, F, Y, N, "?", blank and nothing also L. Blanks at the end of one that
    /// is too long for a C are no loss.
    void text(std::size_t field, std::string_view text);
    /// Bytes: Q, G, P and what is binary.
    void bytes(std::size_t field, std::string_view bytes);
    /// `unscaled` in units of the last of `decimals` decimals: N, F, I, Y; B, up to 15 digits.
    void number(std::size_t field, std::int64_t unscaled, int decimals = 0);
    /// B; N, F, I and Y with the fewest digits that mean the same double.
    void real(std::size_t field, double value);
    /// L.
    void logical(std::size_t field, bool value);
    /// D, T.
    void date(std::size_t field, Date day);
    /// T; D at midnight.
    void timestamp(std::size_t field, std::chrono::local_time<std::chrono::microseconds> time);
    /// A field that may be NULL, and D, T and the memos, which have a sign for "nothing".
    void null(std::size_t field);
    /// @}

    /// Ends the record. Fields that were not set are blank, which is zero in I, B and Y.
    void append();
    /// Those that were ended.
    [[nodiscard]] std::uint64_t records() const;

    /// What was converted, by field and kind.
    [[nodiscard]] std::vector<Converted> converted() const;

    /// Everything is on the disk and in its place when it returns. A table with memos is not there for a
    /// moment, so that none is ever beside the memos of another; a .cpg file of a table that was replaced
    /// goes. Nothing more can be written then.
    void finish();

  private:
    struct [[gnu::visibility("hidden")]] State;
    std::unique_ptr<State> state_;
};

}  // namespace zmfb::dbf

#pragma GCC visibility pop
