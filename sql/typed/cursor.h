/// The rows of a statement while they are read.
#pragma once

#include <cstdint>
#include <cstring>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "sql/typed/statement.h"

namespace zmfb::typed {

class Cursor final : public Dependent {
  public:
    /// Runs the statement. Throws.
    Cursor(std::shared_ptr<Prepared> statement, std::span<const Parameter> values);
    ~Cursor() override;

    /// Whether there is one more row, which lies in the message then. Throws.
    bool next();
    /// Ends the reading: from now on next() throws `why`.
    void give_up(const char* why) noexcept;
    void transaction_ended() noexcept override;

    [[nodiscard]] const Prepared& statement() const { return *statement_; }
    [[nodiscard]] const Slot& slot(std::size_t column) const { return statement_->rows().slots()[column]; }
    /// The number of the current row. Throws when there is none.
    [[nodiscard]] std::uint64_t row() const;

    [[nodiscard]] bool is_null(const Slot& slot) const { return load<std::int16_t>(slot.null_offset) != 0; }
    /// The value of a fixed size at a place in the row.
    template <class Stored>
    [[nodiscard]] Stored load(unsigned offset) const {
        Stored value;
        std::memcpy(&value, message_.data() + offset, sizeof value);
        return value;
    }
    /// The bytes of a text or of bytes; CHAR without the blanks at its end, those of bytes whole.
    [[nodiscard]] std::string_view bytes(const Slot& slot) const;
    /// Room for a text of a column until the next row.
    std::string& room(std::size_t column) { return room_[column]; }

  private:
    enum class State { more, last, ended, given_up };
    void end(State state) noexcept;

    std::shared_ptr<Prepared> statement_;
    Message message_;
    Firebird::IResultSet* rows_ = nullptr;
    State state_ = State::more;
    const char* why_given_up_ = "";
    bool in_row_ = false;
    std::uint64_t row_ = 0;
    std::vector<std::string> room_;
};

}  // namespace zmfb::typed
