/// What is given where a file is to be.
#pragma once

#include <sys/types.h>

#include <cstddef>
#include <string>
#include <string_view>

namespace zmfb::tool {

/// What a mode of stat(2) says is no ordinary file: "a folder", "a pipe", "a socket", "a device"; "" for one.
std::string_view odd_kind(mode_t mode);
/// The same of what stands at a path, behind links; "" for nothing, too.
std::string_view odd_kind_at(const std::string& path);

/// The bytes of a file that a person has made, which is `kind`: "matrix". A pipe without a name, as shells
/// make one of <(...), is read to its end; what else is no file is refused, and what has more than `most`
/// bytes. Throws Failure.
std::string whole_file(const std::string& path, std::string_view kind, std::size_t most);

}  // namespace zmfb::tool
