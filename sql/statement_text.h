/// Which values may go to the client as statements.
#pragma once

#include <string>
#include <string_view>

#include "conn/self.h"
#include "zmfbconn/status.h"

namespace zmfb::sql {

/// The bytes of a statement, "" for a value that is no text.
std::string text_of(const Value& stmt);

/// Refuses, with the SQLCODE of an invalid token, a statement that is no text; one that could not reach the
/// engine whole because of a zero byte in it; and CREATE DATABASE, however it is written, which the client
/// library does by itself, in an attachment that nobody could close. Any other is well.
Status refuse_unfit(const Value& stmt);

/// What executeupdate does with a statement that is not to reach the engine: logs it, and fails with that
/// SQLCODE for that reason; without an attached database it is passed over.
Value refused_update(Self& self, const Value& stmt, int sqlcode, std::string_view reason);

/// Whether the first word of a statement is this one, which is in capitals.
bool begins_with(std::string_view statement, std::string_view word);

/// The first name in double quotes that stands in a statement, with its quotes; "" when there is none.
std::string_view first_quoted_name(std::string_view statement);

}  // namespace zmfb::sql
