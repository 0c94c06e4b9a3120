/// The rows of a query, read once, as far as somebody has looked.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "tool/browse/numbered_source.h"
#include "tool/rows/row_spool.h"
#include "zmfbconn/transaction.h"

namespace zmfb::tool::browse {

class QuerySource final : public NumberedSource {
  public:
    /// `query` is a SELECT (UTF-8). Throws Failure when it returns no rows.
    QuerySource(zmFBConn& connection, std::string query);
    /// All columns and rows of a table.
    QuerySource(zmFBConn& connection, const Name& table);
    ~QuerySource() override;

    Cell whole(std::int64_t number, std::size_t column) override;
    std::optional<std::int64_t> known_count() const override;
    void filter(const std::string& condition) override;
    void read_anew() override;
    [[nodiscard]] std::optional<Name> table() const override { return table_; }
    [[nodiscard]] std::string query() const override;

  protected:
    bool has(std::int64_t number) override;
    std::int64_t last_number() override;
    std::vector<Cell> cells(std::int64_t number) override;

  private:
    struct Run;
    [[nodiscard]] std::unique_ptr<Run> run(const std::string& query) const;
    void begin(std::unique_ptr<Run> run);
    [[nodiscard]] std::int64_t read_rows() const { return static_cast<std::int64_t>(read_->places.size()); }
    RowSpool& at(std::int64_t number);

    zmFBConn& connection_;
    std::string query_, condition_;
    std::optional<Name> table_;
    std::unique_ptr<Run> run_;  // none when all rows are read
    struct Kept {
        RowSpool rows{"the rows cannot be kept in a temporary file"};
        std::vector<std::uint64_t> places;  // of each
    };
    std::unique_ptr<Kept> read_;
};

}  // namespace zmfb::tool::browse
