/// DBF files of others, kept outside the sources.
#pragma once

#include <string>
#include <vector>

namespace zmfb::test {

/// The path of the file `name` in the first of the folders that the environment variable ZMFB_SAMPLES names,
/// with
/// ":" between them; "" when none has it or none is named. Throws when one of them is no folder.
std::string sample(const std::string& name);

/// The paths of all files of those folders that end with `ending`, in any letter case, in order.
std::vector<std::string> samples(const std::string& ending);

/// Why a test that wants the sample `name` is skipped.
std::string without_sample(const std::string& name);

}  // namespace zmfb::test
