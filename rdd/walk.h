/// Where an area stands among the records of its table, and how it moves.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "rdd/key_range.h"
#include "rdd/order.h"
#include "rdd/query.h"
#include "rdd/record.h"
#include "zmfbconn/host/driver.h"

namespace zmfb::rdd {

using host::SeekOptions;

class Desk;

/// Rows are read ahead in blocks, as the connection's skip mode and cache size say, and skips go by key: the
/// rows behind the one that it stands on.
class Walk {
  public:
    Walk(Desk& desk, TextForm form, std::string table);

    [[nodiscard]] const std::shared_ptr<const Columns>& columns() const { return columns_; }
    [[nodiscard]] TextForm form() const { return form_; }
    [[nodiscard]] const Order& order() const { return order_; }

    bool top();
    bool bottom();
    bool skip(std::int64_t count);
    bool go(std::int64_t recno);
    /// Reads the record anew; .F. when it is gone. What was read ahead is given up.
    bool refresh();
    /// Reads the record anew in one query with those behind it; stands on the next one when it is gone.
    /// Returns how many it has read.
    std::size_t read_on();
    [[nodiscard]] bool eof() const { return !record_ && pending_ == 0; }
    [[nodiscard]] bool bof() const { return bof_; }
    /// Throws AreaError when there is no record.
    [[nodiscard]] std::int64_t recno() const;
    /// The same.
    const Record& record();
    /// A record by its number, read anew; none when there is none. It stays where it stands.
    [[nodiscard]] std::optional<Record> look(std::int64_t recno);

    /// Takes another order or filter, and stands where it stood. Throws SqlError, and nothing is changed.
    void set_order(Order order);
    /// To the first or last record with one of the keys, or a softly sought one, as Area::seek().
    bool seek(const KeyRange& keys, SeekOptions options);
    /// Whether the record has one of the keys.
    [[nodiscard]] bool is_in(const KeyRange& keys);
    /// Its place in the order, counted from 1. Throws AreaError when there is no record.
    [[nodiscard]] std::int64_t place();
    /// The bytes that the database keeps a text as.
    [[nodiscard]] std::string kept(std::string_view text);
    /// Gives its statements up, and the indexes that they use.
    void release();
    void set_filter(std::string filter);
    [[nodiscard]] std::int64_t count();

    /// Stands on a record that is there, without reading it yet.
    void stand_on(std::int64_t recno);
    /// Gives up what was read ahead of the record.
    void drop();
    /// The record may have changed: it is read anew before it is looked at.
    void doubt();
    /// Reading goes on in another transaction.
    void change_transaction();

  private:
    enum class From { end, record, position };  // with the record, behind it
    /// The transaction that reads now, and its statements.
    Transaction& work();
    const Query& query(const std::string& sql);
    Statement counting(const std::string& where);
    /// Of the records under the filter, which stands there by itself.
    Statement counting_under_filter();
    [[nodiscard]] std::string select(std::string_view first, std::vector<std::string> conditions) const;
    /// Rows under the filter, beyond a position or all, as the order sorts them.
    const Query& in_order(std::string_view first, Direction direction, const std::string& beyond = "");
    bool go_to_end(Direction direction);
    bool read(Direction direction, From from);
    bool read_one(Direction direction, const std::string& from);
    void stand_on(Block block, Direction direction);
    bool read_number(std::int64_t recno);
    bool step(Direction direction);
    void settle();
    void grow(const Block& block, std::size_t least);
    void leave();
    [[nodiscard]] bool is_natural() const;
    [[nodiscard]] std::string_view key_text() const { return record_->block().text(record_->row(), 1); }
    [[nodiscard]] Parameter key() const;

    Desk& desk_;
    TextForm form_;
    Transaction own_;
    Queries own_queries_, joint_queries_;
    std::shared_ptr<const Columns> columns_;
    Order order_ = natural_order();
    std::string filter_;

    std::optional<Record> record_;  // none at the end, and while the record is pending
    std::int64_t pending_ = 0;      // number of a record that was not read yet
    bool doubted_ = false;
    bool bof_ = false;
    Direction direction_ = Direction::forward;  // that the block was read in
    std::size_t ahead_ = 0;                     // rows of the next block; 0 to begin anew
    std::shared_ptr<typed::Cursor> rows_;       // more of them, while one cursor serves the whole order
    const Query* rows_of_ = nullptr;
};

}  // namespace zmfb::rdd
