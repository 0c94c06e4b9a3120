#include "tool/line_input.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <string_view>
#include <utility>

#include "tool/interrupt.h"

namespace zmfb::tool {

LineInput& LineInput::standard() {
    static LineInput input(STDIN_FILENO, "standard input");
    return input;
}

LineInput::LineInput(const std::string& path)
    : LineInput(wait_for([&] { return ::open(path.c_str(), O_RDONLY | O_CLOEXEC); }), path) {
    if (descriptor_ < 0) {
        throw Failure{Exit::failed, fmt::format("cannot read {}", name_), std::strerror(errno)};
    }
}

LineInput::~LineInput() {
    if (descriptor_ > STDIN_FILENO) ::close(descriptor_);
}

bool LineInput::is_file() const {
    struct stat status {};
    return ::fstat(descriptor_, &status) == 0 && S_ISREG(status.st_mode);
}

// .F. at the end.
bool LineInput::read_more() {
    read_.erase(0, std::exchange(taken_, 0));
    const std::size_t had = read_.size();
    read_.resize(had + block_);
    const ssize_t got = wait_for([&] { return ::read(descriptor_, read_.data() + had, block_); });
    const int error = errno;
    read_.resize(had + static_cast<std::size_t>(std::max<ssize_t>(got, 0)));
    if (got < 0) throw Failure{Exit::failed, fmt::format("cannot read {}", name_), std::strerror(error)};
    return got > 0;
}

std::optional<std::string> LineInput::next() {
    constexpr std::string_view byte_order_mark = "\xEF\xBB\xBF";
    std::optional<std::string> line = next_of_any();
    if (line && !std::exchange(is_begun_, true) && line->starts_with(byte_order_mark))
        line->erase(0, byte_order_mark.size());
    return line;
}

std::optional<std::string> LineInput::next_of_any() {
    std::size_t looked_at = taken_;
    for (;;) {
        const std::size_t end = read_.find('\n', looked_at);
        if (end != std::string::npos) {
            std::string line = read_.substr(taken_, end - taken_);
            taken_ = end + 1;
            return line;
        }
        looked_at = read_.size() - taken_;
        if (looked_at > longest) {
            throw Failure{Exit::failed, fmt::format("{} has a line of more than {} bytes", name_, longest)};
        }
        if (!read_more()) break;
    }
    if (taken_ == read_.size()) return std::nullopt;
    return std::exchange(read_, {}).substr(std::exchange(taken_, 0));
}

}  // namespace zmfb::tool
