#include "sql/typed/cursor.h"

#include <ibase.h>

#include <algorithm>
#include <utility>

#include "sql/typed/failure.h"
#include "zmfbconn/rows.h"

namespace zmfb::typed {

using sql::object_client;

namespace {

constexpr ISC_STATUS end_of_rows = 100;

}  // namespace

Cursor::Cursor(std::shared_ptr<Prepared> statement, std::span<const Parameter> values)
    : Dependent(statement->work()),
      statement_(std::move(statement)),
      message_(statement_->rows().size()),
      room_(statement_->rows().slots().size()) {
    if (room_.empty())
        refuse(no_rows_here, "The statement returns no rows: execute() runs such statements",
               statement_->text());
    if (statement_->has_cursor()) {
        rows_ = statement_->open(values, *this);
    } else {
        state_ = statement_->fill(values, message_) ? State::last : State::ended;
    }
}

Cursor::~Cursor() {
    end(State::ended);
    statement_->forget(*this);
}

void Cursor::end(State state) noexcept {
    state_ = state;
    in_row_ = false;
    if (rows_ == nullptr) return;
    Firebird::IResultSet* const rows = std::exchange(rows_, nullptr);
    if (object_client().close(status(), rows) != 0) sql::ObjectClient::let_go(rows);
}

void Cursor::give_up(const char* why) noexcept {
    if (state_ != State::more && state_ != State::last) return;
    why_given_up_ = why;
    end(State::given_up);
}

void Cursor::transaction_ended() noexcept {
    if (rows_ != nullptr) sql::ObjectClient::let_go(std::exchange(rows_, nullptr));
    give_up("The transaction of the rows has ended");
}

bool Cursor::next() {
    ++row_;
    in_row_ = false;
    if (state_ == State::given_up) refuse(not_current, why_given_up_, statement_->text());
    if (state_ == State::ended) return false;
    if (state_ == State::last) {
        state_ = State::ended;
        return in_row_ = true;
    }
    work().session().check_usable(statement_->text());
    const ISC_STATUS code = object_client().fetch(status(), rows_, message_.data());
    if (code == 0) return in_row_ = true;
    if (code == end_of_rows) {
        end(State::ended);
        return false;
    }
    try {
        check(code, statement_->text());
    } catch (...) {
        give_up("Reading the rows has failed before");
        throw;
    }
    return false;
}

std::uint64_t Cursor::row() const {
    if (!in_row_)
        refuse(not_current, state_ == State::given_up ? why_given_up_ : "There is no current row",
               statement_->text());
    return row_;
}

std::string_view Cursor::bytes(const Slot& slot) const {
    const auto* const text = reinterpret_cast<const char*>(message_.data() + slot.offset);
    if (slot.type == SQL_VARYING) {
        return {text + sizeof(std::uint16_t),
                std::min<std::size_t>(load<std::uint16_t>(slot.offset), slot.length)};
    }
    const std::string_view fixed(text, slot.length);
    if (slot.script == Script::octets) return fixed;
    return fixed.substr(0, fixed.find_last_not_of(' ') + 1);
}

std::shared_ptr<Cursor> open(const std::shared_ptr<Prepared>& statement, std::span<const Parameter> values) {
    return std::make_shared<Cursor>(statement, values);
}

const Prepared& statement_of(const Cursor& cursor) { return cursor.statement(); }

bool next_row(Cursor& cursor) { return cursor.next(); }

}  // namespace zmfb::typed
