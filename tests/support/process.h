/// Programs run as processes of their own.
#pragma once

#include <string>
#include <vector>

namespace zmfb::test {

/// What a program that has ended left behind.
struct Finished {
    int status = -1;  ///< its exit status; 128 + the signal when one ended it
    std::string out;
    std::string err;
};

/// Runs a program (looked up in PATH when its name has no "/") with `input` on its standard input and waits
/// for its end. `environment` are further "NAME=value" settings. A program that cannot be started ends with
/// 127.
Finished run(const std::vector<std::string>& command, const std::string& input = "",
             const std::vector<std::string>& environment = {});

}  // namespace zmfb::test
