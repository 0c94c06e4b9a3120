#include "tests/support/worker/worker_process.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <stdexcept>
#include <system_error>
#include <thread>

#include "tests/support/worker/wire.h"

namespace zmfb::test {
namespace {

constexpr std::string_view raised_prefix = "raised: ";
constexpr std::string_view stop_prefix = "at ";

std::array<int, 2> make_pipe() {
    std::array<int, 2> ends{};
    if (::pipe2(ends.data(), O_CLOEXEC) != 0)
        throw std::system_error(errno, std::generic_category(), "pipe2");
    return ends;
}

}  // namespace

WorkerProcess::WorkerProcess(std::vector<std::string> before) {
    const auto to_worker = make_pipe();
    const auto from_worker = make_pipe();
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, to_worker[0], STDIN_FILENO);
    posix_spawn_file_actions_adddup2(&actions, from_worker[1], STDOUT_FILENO);
    before.emplace_back(ZMFB_WORKER);
    std::vector<char*> arguments;
    for (std::string& word : before) arguments.push_back(word.data());
    arguments.push_back(nullptr);
    const int error = ::posix_spawnp(&pid_, arguments.front(), &actions, nullptr, arguments.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    ::close(to_worker[0]);
    ::close(from_worker[1]);
    input_ = to_worker[1];
    output_ = from_worker[0];
    if (error == 0) return;
    close_pipes();
    throw std::system_error(error, std::generic_category(), before.front());
}

WorkerProcess::WorkerProcess(WorkerProcess&& other) noexcept
    : pid_(std::exchange(other.pid_, -1)),
      input_(std::exchange(other.input_, -1)),
      output_(std::exchange(other.output_, -1)),
      unread_(std::move(other.unread_)) {}

WorkerProcess::~WorkerProcess() {
    close_pipes();
    if (pid_ <= 0) return;
    if (const std::optional<int> status = wait_for_end(std::chrono::seconds(10))) {
        if (*status != 0) ADD_FAILURE() << "a worker ended with wait status " << *status;
        return;
    }
    ADD_FAILURE() << "a worker did not end";
    kill();
}

void WorkerProcess::kill() {
    if (pid_ <= 0) return;
    ::kill(pid_, SIGKILL);
    while (::waitpid(pid_, nullptr, 0) < 0 && errno == EINTR) continue;
    pid_ = -1;
}

Value WorkerProcess::finish(std::chrono::seconds limit) {
    const std::string line = read_line(limit);
    if (line.starts_with(raised_prefix)) throw std::runtime_error(line.substr(raised_prefix.size()));
    return read_call("answer(" + line + ")").arguments.at(0);
}

bool WorkerProcess::has_answered() const {
    pollfd waiting{.fd = output_, .events = POLLIN, .revents = 0};
    return unread_.find('\n') != std::string::npos || ::poll(&waiting, 1, 0) == 1;
}

void WorkerProcess::send(std::string_view method, Args args) {
    std::string line(method);
    line += '(';
    for (std::size_t i = 0; i < args.size(); ++i) {
        if (i > 0) line += ", ";
        line += tool::to_literal(args[i]);
    }
    start_line(line + ')');
}

void WorkerProcess::start_line(const std::string& call) {
    const std::string line = call + '\n';
    // A worker that has died must not end the test with SIGPIPE.
    ::signal(SIGPIPE, SIG_IGN);
    if (::write(input_, line.data(), line.size()) != static_cast<ssize_t>(line.size()))
        throw std::runtime_error("the worker does not take calls any more");
}

std::optional<std::string> WorkerProcess::wait_for_stop(std::chrono::milliseconds limit) {
    if (!has_line(limit)) return std::nullopt;
    if (!unread_.starts_with(stop_prefix)) return "";
    return read_line(std::chrono::seconds(0)).substr(stop_prefix.size());
}

std::string WorkerProcess::read_line(std::chrono::seconds limit) {
    if (!has_line(limit)) throw std::runtime_error("the worker does not answer");
    const auto at = unread_.find('\n');
    const std::string line = unread_.substr(0, at);
    unread_.erase(0, at + 1);
    return line;
}

bool WorkerProcess::has_line(std::chrono::milliseconds limit) {
    const auto end = std::chrono::steady_clock::now() + limit;
    while (unread_.find('\n') == std::string::npos) {
        const auto left =
            std::chrono::ceil<std::chrono::milliseconds>(end - std::chrono::steady_clock::now());
        pollfd waiting{.fd = output_, .events = POLLIN, .revents = 0};
        if (::poll(&waiting, 1, std::max(0, static_cast<int>(left.count()))) == 0) return false;
        std::array<char, 4096> block;
        const ssize_t count = ::read(output_, block.data(), block.size());
        if (count == 0) throw std::runtime_error("the worker has ended");
        if (count > 0) unread_.append(block.data(), static_cast<std::size_t>(count));
    }
    return true;
}

void WorkerProcess::close_pipes() {
    for (int* end : {&input_, &output_}) {
        if (*end >= 0) ::close(*end);
        *end = -1;
    }
}

std::optional<int> WorkerProcess::wait_for_end(std::chrono::seconds limit) {
    const auto end = std::chrono::steady_clock::now() + limit;
    while (std::chrono::steady_clock::now() < end) {
        int status = 0;
        if (::waitpid(pid_, &status, WNOHANG) == pid_) {
            pid_ = -1;
            return status;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    return std::nullopt;
}

}  // namespace zmfb::test
