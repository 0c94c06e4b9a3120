#include "tool/alive.h"

#include <sys/types.h>

#include <cerrno>
#include <charconv>
#include <csignal>

namespace zmfb::tool {
namespace {

constexpr std::size_t longest_area_id = 50;

}  // namespace

std::string_view alive_name(Alive alive) {
    switch (alive) {
        case Alive::yes:
            return "alive";
        case Alive::no:
            return "dead";
        case Alive::unknown:
            break;
    }
    return "unknown";
}

std::optional<long> process_of(const Holder& holder) {
    const std::string& text = holder.process;
    long number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc() || text.empty()) return std::nullopt;
    return number;
}

Alive is_alive(const Holder& holder, std::string_view this_host) {
    const bool cut = holder.id.size() >= longest_area_id;
    const bool here =
        cut ? this_host.starts_with(holder.host) && !holder.host.empty() : holder.host == this_host;
    const std::optional<long> process = process_of(holder);
    if (!process || !here) return Alive::unknown;
    return kill(static_cast<pid_t>(*process), 0) == 0 || errno == EPERM ? Alive::yes : Alive::no;
}

}  // namespace zmfb::tool
