#include "tool/rows/sink.h"

#include <fmt/format.h>

#include <cerrno>
#include <cstdio>
#include <cstring>

#include "tool/session.h"

namespace zmfb::tool {
namespace {

[[noreturn]] void fail() {
    throw Failure{Exit::failed, fmt::format("cannot write to standard output: {}", std::strerror(errno))};
}

}  // namespace

void Sink::write(std::string_view text) {
    if (is_file()) {
        if (!file_) file_.emplace(path_);
        file_->write(text);
    } else if (std::fwrite(text.data(), 1, text.size(), stdout) != text.size()) {
        fail();
    }
}

void Sink::close(bool complete) {
    if (file_) {
        complete ? file_->close() : file_->give_up();
    } else if (!is_file() && std::fflush(stdout) != 0) {
        fail();
    }
}

}  // namespace zmfb::tool
