#pragma once

#include <cstdlib>
#include <optional>
#include <ostream>
#include <string>

#include "zmrddudfs.h"

namespace zmfb::test {

/** What a function of the module gave: a text, or nothing for SQL NULL. */
using result = std::optional<std::string>;

inline const result sql_null = std::nullopt;
inline const std::string blank_date(8, ' ');

/** Takes over a returned text; outside the engine ib_util_malloc is malloc. */
inline result take(char* text) {
    if (!text) return std::nullopt;
    result taken = text;
    std::free(text);
    return taken;
}

/** An integer argument: a number, or std::nullopt to pass a null pointer. */
using integer = std::optional<ISC_LONG>;

inline const ISC_LONG* pointer(const integer& number) { return number ? &*number : nullptr; }

}  // namespace zmfb::test
