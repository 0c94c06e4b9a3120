/// Words to the user, on standard error.
#pragma once

#include <fmt/format.h>

#include <cstdio>
#include <string>
#include <utility>

namespace zmfb::tool {

/// Writes them. Where they cannot be written there is nobody to tell, and the exit status says the rest.
template <class... T>
void say(fmt::format_string<T...> format, T&&... values) {
    const std::string words = fmt::format(format, std::forward<T>(values)...);
    static_cast<void>(std::fwrite(words.data(), 1, words.size(), stderr));
}

}  // namespace zmfb::tool
