/// Ctrl-C, noted instead of ending the program.
#pragma once

#include <csignal>

namespace zmfb::tool {

/// While it lives, the first Ctrl-C is only noted, for whoever asks; a second one ends the program as
/// usual. System calls are not restarted.
class InterruptWatch {
  public:
    InterruptWatch();
    ~InterruptWatch();
    InterruptWatch(const InterruptWatch&) = delete;
    InterruptWatch& operator=(const InterruptWatch&) = delete;

    /// Whether Ctrl-C came since the last watch began.
    static bool interrupted();

  private:
    struct sigaction before_ {};
};

}  // namespace zmfb::tool
