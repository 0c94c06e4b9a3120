#include "tool/output.h"

#include <fmt/format.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>

#include "tool/interrupt.h"

namespace zmfb::tool {
namespace {

bool known = false;

}  // namespace

Failure output_failure(int error) {
    known = true;
    if (error == EPIPE) return {static_cast<Exit>(128 + SIGPIPE), ""};
    return {Exit::failed, fmt::format("cannot write to standard output: {}", std::strerror(error))};
}

void flush_output() {
    if (std::fflush(stdout) != 0) throw output_failure(errno);
}

Exit finish_output(Exit status) {
    const bool failed_before = std::ferror(stdout) != 0;
    const bool written = std::fflush(stdout) == 0;
    if ((written && !failed_before) || known || ending_signal() != 0) return status;
    const Failure failure =
        written ? Failure{Exit::failed, "cannot write to standard output"} : output_failure(errno);
    print_failure(failure);
    return status == Exit::ok ? failure.status : status;
}

}  // namespace zmfb::tool
