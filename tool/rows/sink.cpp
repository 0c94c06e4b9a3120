#include "tool/rows/sink.h"

#include <fmt/format.h>

#include <cerrno>
#include <cstring>
#include <utility>

#include "tool/session.h"

namespace zmfb::tool {

Sink::~Sink() {
    if (is_file() && file_ != nullptr) std::fclose(file_);
}

void Sink::write(std::string_view text) {
    if (file_ == nullptr) file_ = is_file() ? std::fopen(path_.c_str(), "wb") : stdout;
    if (file_ == nullptr || std::fwrite(text.data(), 1, text.size(), file_) != text.size()) fail();
}

void Sink::close() {
    if (file_ == nullptr) return;
    std::FILE* const file = std::exchange(file_, nullptr);
    if ((is_file() ? std::fclose(file) : std::fflush(file)) != 0) fail();
}

void Sink::fail() const {
    throw Failure{Exit::failed, fmt::format("cannot write {}: {}", is_file() ? path_ : "to standard output",
                                            std::strerror(errno))};
}

}  // namespace zmfb::tool
