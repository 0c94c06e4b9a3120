/// Names that the engine does not know.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "zmfbconn/connection.h"

namespace zmfb::tool {

// What is asked of the database here to help somebody is no error when it fails: then there are no names.

/// The tables and views of the users, and the columns of those that `statement` names; when it names none, of
/// all of them, as far as they begin with `prefix`. Only those that can be typed without quotes.
std::vector<std::string> plain_tables(zmFBConn& connection);
std::vector<std::string> plain_columns(zmFBConn& connection, std::string_view statement,
                                       std::string_view prefix = {});

/// Which table or column may have been meant, as a question, when `message` of the engine says that it does
/// not know one that stands in `statement`; "" otherwise.
std::string meant_instead(zmFBConn& connection, std::string_view statement, std::string_view message);

}  // namespace zmfb::tool
