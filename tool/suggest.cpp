#include "tool/suggest.h"

#include <fmt/format.h>

#include <algorithm>
#include <cctype>
#include <vector>

namespace zmfb::tool {
namespace {

std::string lower(std::string_view text) {
    std::string out(text);
    std::ranges::transform(out, out.begin(),
                           [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return out;
}

}  // namespace

// Row by row through the table of distances of all beginnings; the two rows before are kept.
std::size_t edit_distance(std::string_view one, std::string_view other) {
    std::vector<std::size_t> before_last, last(other.size() + 1), row(other.size() + 1);
    for (std::size_t j = 0; j <= other.size(); ++j) last[j] = j;
    for (std::size_t i = 1; i <= one.size(); ++i) {
        row[0] = i;
        for (std::size_t j = 1; j <= other.size(); ++j) {
            const std::size_t replaced = last[j - 1] + (one[i - 1] == other[j - 1] ? 0 : 1);
            row[j] = std::min({replaced, last[j] + 1, row[j - 1] + 1});
            if (i > 1 && j > 1 && one[i - 1] == other[j - 2] && one[i - 2] == other[j - 1]) {
                row[j] = std::min(row[j], before_last[j - 2] + 1);
            }
        }
        before_last = last;
        last = row;
    }
    return last[other.size()];
}

std::string nearest_name(std::string_view typed, std::span<const std::string> names) {
    const std::string wanted = lower(typed);
    std::size_t nearest = wanted.size() / 3 + 1;  // one more than what is allowed
    std::string found;
    for (const std::string& name : names) {
        const auto [shorter, longer] = std::minmax({name.size(), wanted.size()});
        if (longer - shorter >= nearest) continue;  // each letter more is one put in
        const std::size_t distance = edit_distance(wanted, lower(name));
        if (distance >= nearest) continue;
        nearest = distance;
        found = name;
    }
    return found;
}

std::vector<std::string> completions(std::string_view typed, std::span<const std::string> names) {
    const bool small = !typed.empty() && std::islower(static_cast<unsigned char>(typed.back())) != 0;
    std::vector<std::string> found;
    for (const std::string& name : names) {
        if (lower(name.substr(0, typed.size())) != lower(typed)) continue;
        const std::string rest = name.substr(typed.size());
        found.push_back(std::string(typed) + (small ? lower(rest) : rest));
    }
    return found;
}

std::string did_you_mean(std::string_view typed, std::span<const std::string> names) {
    const std::string name = nearest_name(typed, names);
    return name.empty() ? "" : fmt::format("; did you mean \"{}\"?", name);
}

}  // namespace zmfb::tool
