#include "tool/line_input.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <string_view>
#include <utility>

#include "tool/file_kind.h"
#include "tool/interrupt.h"
#include "tool/rows/shown_text.h"
#include "tool/say.h"

namespace zmfb::tool {

LineInput& LineInput::standard() {
    static LineInput input(STDIN_FILENO, "standard input");
    return input;
}

namespace {

// A pipe may be one that nobody writes to yet.
void wait_for_writer(int pipe, const std::string& path) {
    constexpr int a_second = 1000;
    pollfd waiting{pipe, POLLIN, 0};
    if (wait_for([&] { return ::poll(&waiting, 1, a_second); }) == 0) {
        say("waiting for somebody who writes to {}\n", without_controls(path));
        wait_for([&] { return ::poll(&waiting, 1, -1); });
    }
}

int open_for_lines(const std::string& path) {
    const int opened = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    if (opened < 0) {
        const std::string reason = std::strerror(errno);
        const bool is_socket = odd_kind_at(path) == "a socket";
        throw Failure{Exit::failed, fmt::format("cannot read {}", path),
                      is_socket ? "it is a socket" : reason};
    }
    return opened;
}

}  // namespace

LineInput::LineInput(const std::string& path) : LineInput(open_for_lines(path), path) {
    struct stat status {};
    if (::fstat(descriptor_, &status) == 0 && S_ISFIFO(status.st_mode)) wait_for_writer(descriptor_, path);
    ::fcntl(descriptor_, F_SETFL, 0);
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
