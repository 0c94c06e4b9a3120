#include "matrix/methods.h"

namespace zmfb::matrix {

Value toarray(Self&, Args args) {
    Value pieces = Value::array_of_size(0);
    if (!args[0].is(host::Kind::character) || !args[1].is(host::Kind::character)) return pieces;
    std::string_view line = args[0].text();
    const std::string_view separator = args[1].text();
    const bool ends_in_separator = line.ends_with(separator);
    // An empty separator is never found, yet every text ends in it.
    while (!separator.empty()) {
        const std::size_t found = line.find(separator);
        if (found == std::string_view::npos) break;
        pieces.push(line.substr(0, found));
        line.remove_prefix(found + separator.size());
    }
    if (!line.empty()) pieces.push(line);
    if (ends_in_separator) pieces.push("");
    return pieces;
}

}  // namespace zmfb::matrix
