#include "sql/template.h"

#include <string>

#include "host/error.h"
#include "host/text.h"
#include "sql/methods.h"

namespace zmfb::sql {

namespace {

// STRTRAN alone takes a value that is no text for none, and the statement would go out with a hole in it.
Value with(const Value& stmt, const Value& placeholder, const Value& value) {
    if (!placeholder.is(host::Kind::character) || value.is(host::Kind::character))
        return host::strtran(stmt, placeholder, value);
    return host::argument_error(host::Subcode::strtran, "STRTRAN of " + std::string(placeholder.text()),
                                {stmt, placeholder, value});
}

}  // namespace

// Pairs are applied in their order, so that a value may hold a placeholder of a later pair.
Value filled(Value stmt, const Value& param) {
    if (host::empty(param)) return stmt;
    for (const Value& pair : param.items()) {
        stmt = with(stmt, pair[1], pair[2]);
        // Raised: the further pairs have nothing to go into.
        if (!stmt.is(host::Kind::character)) return stmt;
    }
    return stmt;
}

Value assemblestatement(Self&, Args args) { return filled(args[0], args[1]); }

}  // namespace zmfb::sql
