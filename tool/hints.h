/// What a person may do about an error.
#pragma once

#include <string>
#include <string_view>

namespace zmfb::tool {

/// A hint for what the engine said, found by the words in it; empty when none is known. Pages in it are named
/// as with_pages() does.
std::string hint_for(std::string_view message);

/// A text that names a page as "docs/NAME.md", with the page's place where this program is installed with its
/// pages.
std::string with_pages(std::string_view text);

}  // namespace zmfb::tool
