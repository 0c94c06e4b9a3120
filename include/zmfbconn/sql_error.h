/// What failures of transactions, statements and rows are thrown as.
#pragma once

#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>

#pragma GCC visibility push(default)

namespace zmfb {

/// A failure of the database, or a call that cannot be: every one of them is of this class.
///
/// The SQLSTATE says what kind it is, and so what to do. The engine's own come as they are; what is refused
/// before anything is sent has the one that the standard gives it:
///
/// - 40001: another transaction was in the way; roll back and do the work again.
/// - 23000: a key that is there already, a missing parent, NULL in a column that may not have it.
/// - HY008: cancelled. 08006: the database file could not be read or written before; attach anew.
/// - 07001, 07002: another number of parameters, of columns. 07006: a value or column of another kind.
/// - 21000: more than one row. 02000: no row.
/// - 22001: a text that is too long. 22003: a number that does not fit. 22007: no such day or time. 22021: a
///   character that the database does not have.
/// - 22002: NULL where std::optional was not asked for.
/// - 24000: rows that can no longer be read. 25000: a transaction that has ended. 08003: an object that is
///   not attached.
class SqlError : public std::runtime_error {
  public:
    /// What is known of one failure.
    struct Details {
        int sqlcode = 0;             ///< negative
        std::string sqlstate;        ///< five characters
        std::string message;         ///< all that the engine said, a line each; or why nothing was sent
        std::string statement = {};  ///< in UTF-8; "" when it was none
    };

    /// One that tells all of it.
    explicit SqlError(Details details);
    /// @{
    /// Copies share the details.
    SqlError(const SqlError&) noexcept = default;
    SqlError& operator=(const SqlError&) noexcept = default;
    /// @}
    ~SqlError() override;

    /// @{
    /// See Details; what() has all of them in one text.
    [[nodiscard]] int sqlcode() const noexcept { return details_->sqlcode; }
    [[nodiscard]] const std::string& sqlstate() const noexcept { return details_->sqlstate; }
    [[nodiscard]] const std::string& message() const noexcept { return details_->message; }
    [[nodiscard]] const std::string& statement() const noexcept { return details_->statement; }
    /// @}
    /// What a method gives and logs of such a failure: "[ERROR] SQLCODE=-204 (Table unknown)".
    [[nodiscard]] std::string method_text() const;

  private:
    std::shared_ptr<const Details> details_;
};

}  // namespace zmfb

#pragma GCC visibility pop
