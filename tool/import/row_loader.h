/// Bringing rows into a table over the client, many with each call.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "zmfbconn/transaction.h"

namespace zmfb::tool {

/// A column as its values travel. The engine converts them as it converts any text.
struct LoadColumn {
    enum class Kind {
        fixed,     ///< a text of up to `width` bytes
        nullable,  ///< the same; blanks only are NULL
        real,      ///< a double as real_text() writes it, or NULL
        varying,   ///< of any length, or NULL
    };

    std::string name;
    Kind kind;
    std::size_t width = 0;  ///< in bytes
    std::string type = {};  ///< of a varying one: "BLOB SUB_TYPE TEXT"
};

/// The bytes of a text of real_text().
inline constexpr std::size_t real_width = 24;
/// A finite number as a whole one and the power of two that it is multiplied with, which lose nothing; the
/// engine's own reading of decimals does.
std::string real_text(double value);

/// Sends rows in pieces, each of two texts that the engine cuts into rows. Rows that it refuses are found by
/// halving the piece; what went in before them, or goes in after, stays.
class RowLoader {
  public:
    /// Takes in the number of a record that was refused, and what the engine said.
    using Refused = std::function<void(std::uint64_t record, const std::string& why)>;

    /// Rows are numbered from 1 on, without a gap, in the column RECNO.
    RowLoader(Transaction& work, std::string table, std::vector<LoadColumn> columns, Refused refused);

    /// Adds the row of a record, and sends what has come together when that is enough. The values are in the
    /// order of the columns, those that are not varying no longer than these; without one, or with blanks, a
    /// column that may be NULL is.
    void add(std::uint64_t record, std::span<const std::optional<std::string>> values);
    /// Sends what is left.
    void flush();

    /// How many rows are in.
    [[nodiscard]] std::uint64_t rows() const { return rows_; }

  private:
    struct Row {
        std::uint64_t record = 0;
        std::size_t begin = 0;  // in the piece
    };
    struct Place {
        std::size_t text = 0;    // which parameter
        std::size_t offset = 0;  // in it
    };

    void place_columns();
    [[nodiscard]] std::string block_of_many() const;
    [[nodiscard]] std::string block_of_one() const;
    [[nodiscard]] std::string insertion() const;
    [[nodiscard]] std::string values() const;
    [[nodiscard]] std::span<const std::byte> text_of(std::size_t begin, std::size_t end) const;
    void send(std::size_t begin, std::size_t end);
    void send_alone(std::uint64_t record, const std::vector<std::string>& fixed,
                    std::span<const std::optional<std::string>> values);

    Transaction& work_;
    std::string table_;
    std::vector<LoadColumn> columns_;
    std::vector<Place> places_;       // of the columns, in their order
    std::vector<std::size_t> sizes_;  // of the parameters: what the fixed part of a row takes in each
    Refused refused_;
    std::optional<Statement> many_, one_;

    std::uint64_t rows_ = 0;
    std::string piece_;
    std::vector<Row> in_piece_;
    // The row that begins its second text, and where that is.
    static constexpr std::size_t none = static_cast<std::size_t>(-1);
    std::size_t second_ = none, second_begin_ = 0;
};

}  // namespace zmfb::tool
