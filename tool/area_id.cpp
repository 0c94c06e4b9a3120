#include "tool/area_id.h"

#include <sys/types.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <csignal>

namespace zmfb::tool {
namespace {

constexpr std::size_t longest_area_id = 50;

std::optional<long> whole_number(std::string_view text) {
    long number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc() || end != text.data() + text.size() || number <= 0) return std::nullopt;
    return number;
}

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

// An area name may hold colons itself, a table, a process id and a host name do not: so the ends are taken
// off first.
AreaId split_area_id(std::string_view id) {
    const std::size_t first = id.find(':');
    const std::size_t last = id.rfind(':');
    const std::size_t before_last =
        last == 0 || last == std::string_view::npos ? last : id.rfind(':', last - 1);
    if (first == std::string_view::npos)
        return {.table = "", .area = std::string(id), .process = {}, .host = ""};
    const std::string table(id.substr(0, first));
    if (before_last != std::string_view::npos && before_last > first) {
        if (const auto process = whole_number(id.substr(before_last + 1, last - before_last - 1))) {
            return {table, std::string(id.substr(first + 1, before_last - first - 1)), process,
                    std::string(id.substr(last + 1))};
        }
    }
    return {.table = table, .area = std::string(id.substr(first + 1)), .process = {}, .host = ""};
}

Alive is_alive(const AreaId& id, std::string_view id_text, std::string_view this_host) {
    const bool cut = id_text.size() >= longest_area_id;
    const bool here = cut ? this_host.starts_with(id.host) && !id.host.empty() : id.host == this_host;
    if (!id.process || !here) return Alive::unknown;
    return kill(static_cast<pid_t>(*id.process), 0) == 0 || errno == EPERM ? Alive::yes : Alive::no;
}

}  // namespace zmfb::tool
