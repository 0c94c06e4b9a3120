/// Which values may go to the client as statements.
#pragma once

#include <string>

#include "conn/self.h"

namespace zmfb::sql {

/// The bytes of a statement, "" for a value that is no text.
std::string text_of(const Value& stmt);

/// Refuses, with the SQLCODE of an invalid token, a statement that is no text; one that could not reach the
/// engine whole because of a zero byte in it; and CREATE DATABASE, however it is written, which the client
/// library does by itself, in an attachment that nobody could close. 0 for any other.
int refuse_unfit(const Value& stmt);

}  // namespace zmfb::sql
