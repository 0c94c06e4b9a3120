#include "tool/shell/rest.h"

#include <string>

#include "tool/shell/inputs.h"

namespace zmfb::tool {

Rest count_rest(LineInput& in, const std::string& left) {
    Rest rest;
    Inputs inputs;
    const auto count = [&rest](Input, const std::string&) {
        ++rest.inputs;
        return true;
    };
    inputs.take(left, count);
    for (auto line = in.next(); line; line = in.next()) {
        ++rest.lines;
        inputs.take(*line, count);
    }
    if (!inputs.begun().empty()) ++rest.inputs;  // one that does not end
    return rest;
}

}  // namespace zmfb::tool
