#include <string>

#include "host/error.h"
#include "host/text.h"
#include "sql/methods.h"

namespace zmfb::sql {

namespace {

// STRTRAN alone takes a value that is no text for none, and the statement would go out with a hole in it.
Value filled(const Value& stmt, const Value& placeholder, const Value& value) {
    if (!placeholder.is(host::Kind::character) || value.is(host::Kind::character))
        return host::strtran(stmt, placeholder, value);
    return host::argument_error(host::Subcode::strtran, "STRTRAN of " + std::string(placeholder.text()),
                                {stmt, placeholder, value});
}

}  // namespace

// Pairs are applied in their order, so that a value may hold a placeholder of a later pair.
Value assemblestatement(Self&, Args args) {
    Value stmt = args[0];
    const Value& param = args[1];
    if (host::empty(param)) return stmt;
    for (const Value& pair : param.items()) {
        stmt = filled(stmt, pair[1], pair[2]);
        // Raised: the further pairs have nothing to go into.
        if (!stmt.is(host::Kind::character)) return stmt;
    }
    return stmt;
}

}  // namespace zmfb::sql
