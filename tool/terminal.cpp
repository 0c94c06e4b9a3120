#include "tool/terminal.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <cstdlib>
#include <string_view>

namespace zmfb::tool {

bool output_is_terminal() { return isatty(STDOUT_FILENO) != 0; }

std::size_t terminal_width() {
    constexpr std::size_t usual = 80;
    if (!output_is_terminal()) return 0;
    winsize size{};
    const bool known = ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0;
    return known ? size.ws_col : usual;
}

std::size_t terminal_height() {
    constexpr std::size_t usual = 24;
    winsize size{};
    const bool known = ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_row > 0;
    return known ? size.ws_row : usual;
}

bool output_has_colours() {
    const char* const refused = std::getenv("NO_COLOR");
    if (refused != nullptr && *refused != '\0') return false;
    const char* const kind = std::getenv("TERM");
    return output_is_terminal() && kind != nullptr && std::string_view(kind) != "dumb";
}

}  // namespace zmfb::tool
