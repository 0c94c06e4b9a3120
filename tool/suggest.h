/// What somebody may have meant.
#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace zmfb::tool {

/// How many letters must be put in, taken out, replaced or swapped with their neighbour to make one text of
/// the other.
std::size_t edit_distance(std::string_view one, std::string_view other);

/// The name nearest to what was typed, without regard to case; "" when none is near: at most one letter in
/// three may differ.
std::string nearest_name(std::string_view typed, std::span<const std::string> names);

/// The names that go on from what was typed, without regard to case: the typed letters stay as they are, and
/// the rest is in small letters when the last of them is one.
std::vector<std::string> completions(std::string_view typed, std::span<const std::string> names);

/// "; did you mean \"name\"?" with the nearest name, "" without one.
std::string did_you_mean(std::string_view typed, std::span<const std::string> names);

}  // namespace zmfb::tool
