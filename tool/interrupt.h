/// Ctrl-C, noted instead of ending the program.
#pragma once

#include <csignal>

namespace zmfb::tool {

/// While it lives, Ctrl-C is only noted, for whoever asks. System calls are not restarted.
class InterruptWatch {
  public:
    /// What becomes of one more Ctrl-C.
    enum class Second { ends_the_program, is_noted };

    explicit InterruptWatch(Second second = Second::ends_the_program);
    ~InterruptWatch();
    InterruptWatch(const InterruptWatch&) = delete;
    InterruptWatch& operator=(const InterruptWatch&) = delete;

    /// Whether Ctrl-C came since the last watch began.
    static bool interrupted();
    /// A descriptor that has something to read from then on, for those who wait for other things as well.
    static int descriptor();

  private:
    struct sigaction before_ {};
};

}  // namespace zmfb::tool
