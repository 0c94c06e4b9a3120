/// Calls as they travel between a test and its workers.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "host/value.h"
#include "tool/literal.h"

namespace zmfb::test {

/// A call with nothing but literals for arguments.
struct CallOfLiterals {
    std::string method;  ///< lower case
    std::vector<host::Value> arguments;
};

/// Reads one as the tool does. Throws tool::SyntaxError.
inline CallOfLiterals read_call(std::string_view source) {
    tool::Expression read = tool::parse_call(source);
    CallOfLiterals call{.method = read.method, .arguments = {}};
    for (tool::Expression& part : read.parts) call.arguments.push_back(part.value);
    return call;
}

}  // namespace zmfb::test
