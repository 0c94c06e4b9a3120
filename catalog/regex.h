/// The small regular-expression service of table structures, over texts that end at their first zero byte.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace zmfb::catalog {

/// The text of the last of the consecutive groups that `pattern` (extended POSIX) captures in `str`; "" when
/// it does not match, has no group or is no valid pattern. A pattern that begins with "^" anchors at every
/// line. A group that matched nothing gives all of `str` from its position on. At most nine groups count.
std::string matchregex(std::string_view str, std::string_view pattern);

/// At most `len` bytes of `src` from position `start`, counted from 1; a `len` below 1 means up to the end.
/// "" when `src` is empty or `start` is below 1.
std::string_view substr(std::string_view src, std::int16_t start, std::int16_t len);

}  // namespace zmfb::catalog
