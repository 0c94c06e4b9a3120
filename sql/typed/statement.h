/// Prepared statements.
#pragma once

#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "sql/typed/layout.h"
#include "sql/typed/work.h"
#include "zmfbconn/sql_value.h"

namespace zmfb::typed {

class Cursor;

class Prepared {
  public:
    /// Prepares a statement. Throws.
    Prepared(std::shared_ptr<Work> work, std::string_view text, TextForm form);
    Prepared(const Prepared&) = delete;
    Prepared& operator=(const Prepared&) = delete;
    ~Prepared();

    [[nodiscard]] const std::string& text() const { return text_; }
    [[nodiscard]] const std::shared_ptr<Work>& work() const { return work_; }
    [[nodiscard]] const Layout& rows() const { return *rows_; }
    [[nodiscard]] const Layout& parameters() const { return *parameters_; }

    /// Runs it without rows.
    void run(std::span<const Parameter> values);
    /// How many rows that has changed.
    [[nodiscard]] std::int64_t count_changes() const;
    /// Runs it for a cursor, which gives the client's object of its rows; or, when it has no cursor, for its
    /// one row: whether there is one. Rows that were read of it before are given up.
    Firebird::IResultSet* open(std::span<const Parameter> values, Cursor& cursor);
    bool fill(std::span<const Parameter> values, Message& row);
    [[nodiscard]] bool has_cursor() const { return has_cursor_; }
    /// A cursor that is no longer read from.
    void forget(const Cursor& cursor);

    /// Lets go of it while the attachment goes.
    void free() noexcept;

  private:
    Firebird::IStatement* ready(std::span<const Parameter> values);

    std::shared_ptr<Work> work_;
    std::string text_;
    Firebird::IStatement* statement_ = nullptr;
    unsigned type_ = 0;
    bool has_cursor_ = false;
    std::optional<Layout> parameters_, rows_;
    std::optional<Message> values_;
    Cursor* cursor_ = nullptr;
};

}  // namespace zmfb::typed
