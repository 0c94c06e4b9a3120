/// Selects whose rows become rows of blocks.
#pragma once

#include <cstddef>
#include <map>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "rdd/block.h"
#include "zmfbconn/transaction.h"

namespace zmfb::rdd {

/// A select that is prepared once.
class Query {
  public:
    /// Throws SqlError.
    Query(Transaction& work, const std::string& sql, TextForm form);

    [[nodiscard]] const std::vector<Column>& columns() const { return statement_.columns(); }
    /// An empty block for its rows.
    [[nodiscard]] Block block() const { return Block(kinds_); }
    /// Runs it. Rows of an earlier run are given up.
    [[nodiscard]] std::shared_ptr<typed::Cursor> run(std::span<const Parameter> values) const;
    /// Adds the next row of a run; .F. when there is none.
    bool read(typed::Cursor& rows, Block& block) const;

  private:
    Statement statement_;
    std::vector<CellKind> kinds_;
    std::vector<typed::Read> reads_;
};

/// Those of one transaction, by their text.
class Queries {
  public:
    const Query& get(Transaction& work, const std::string& sql, TextForm form);
    void clear() { by_text_.clear(); }

  private:
    std::map<std::string, Query> by_text_;
};

}  // namespace zmfb::rdd
