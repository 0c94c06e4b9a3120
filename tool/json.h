/// Values as JSON: NIL null, dates "2007-03-01" (the empty date ""), texts in UTF-8, whole numbers without a
/// point.
#pragma once

#include <nlohmann/json.hpp>
#include <string>

#include "host/value.h"

namespace zmfb::tool {

using Json = nlohmann::ordered_json;

/// Objects and blocks, which JSON has nothing for, become their kind's name in angle brackets.
Json to_json(const host::Value& value);

/// One line of text, or many indented by two. Bytes that are no UTF-8, such as those of a path, become
/// U+FFFD.
std::string json_line(const Json& json);
std::string json_lines(const Json& json);

}  // namespace zmfb::tool
