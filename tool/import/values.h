/// The values of records as they travel into columns, and those that cannot.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tool/import/dbf_source.h"
#include "tool/import/plan.h"
#include "zmfbconn/dbf/code_page.h"
#include "zmfbconn/dbf/value.h"

namespace zmfb::tool {

/// A value that is none, or that its column does not hold.
struct BadValue {
    std::uint64_t record;  ///< from 1 on
    const dbf::Field& field;
    std::string_view bytes;
    std::string reason;
};

/// What became of values on their way.
struct ValueCounts {
    std::uint64_t lost_dates = 0;     ///< neither blank nor zeros, but none: NULL
    std::uint64_t odd_logicals = 0;   ///< neither yes nor no: blank
    std::uint64_t rounded = 0;        ///< numbers with more digits than their column keeps; see Digits
    std::uint64_t lost_nulls = 0;     ///< NULL where the column has none: blank, or 0
    std::uint64_t zero_texts = 0;     ///< texts with a zero byte in them, which stays
    std::uint64_t unknown_texts = 0;  ///< texts beyond ASCII of no known code page, brought in as bytes
};

/// Reads the values of records as texts for a RowLoader.
class ValueReader {
  public:
    /// Takes in each bad value; the column's default stands in its place.
    using OnBad = std::function<void(const BadValue&)>;

    /// `columns` are those of the source's fields. Both have to live as long.
    ValueReader(const DbfSource& source, const std::vector<PlannedColumn>& columns,
                dbf::ValueOptions options);

    /// Reads a record. Returns its values in the order of the columns, for as long as nothing else is read;
    /// one without a value is NULL, or blanks where its column is not varying.
    const std::vector<std::optional<std::string>>& read(std::uint64_t number, std::string_view record,
                                                        const OnBad& on_bad);

    /// Of each column, what its numbers need.
    [[nodiscard]] const std::vector<Digits>& digits() const { return digits_; }
    [[nodiscard]] const ValueCounts& counts() const { return counts_; }
    /// Whether a text had a character that the database's set does not have.
    [[nodiscard]] bool lacked_characters() const { return lacked_characters_; }

  private:
    struct ToText;

    std::string text_for(std::string_view bytes, bool is_text, std::string& problem);

    const DbfSource& source_;
    const std::vector<PlannedColumn>& columns_;
    dbf::ValueOptions options_;
    std::unique_ptr<dbf::ToUtf8> to_utf8_;  // null when texts stay as they are
    std::vector<std::optional<std::string>> values_;
    std::vector<Digits> digits_;
    ValueCounts counts_;
    bool lacked_characters_ = false;
};

}  // namespace zmfb::tool
