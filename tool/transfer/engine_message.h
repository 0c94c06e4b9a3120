/// What the engine said about a failure.
#pragma once

#include <string>

#include "zmfbconn/database.h"

namespace zmfb::tool {

/// Tells the engine's message of a failure from one that was there before this was made.
class EngineMessage {
  public:
    EngineMessage() : before_(last_engine_message()) {}
    /// The message of the last failure since; "" when the engine has reported none.
    [[nodiscard]] std::string since() const {
        const std::string now = last_engine_message();
        return now == before_ ? "" : now;
    }

  private:
    std::string before_;
};

}  // namespace zmfb::tool
