/// Work that is done while nobody types.
#pragma once

#include <functional>

namespace zmfb::tool::browse {

/// Does work in the database that is given up as soon as a key is pressed. Returns whether it came to its
/// end. Throws what it throws otherwise.
bool do_while_idle(const std::function<void()>& work);

}  // namespace zmfb::tool::browse
