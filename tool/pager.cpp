#include "tool/pager.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <utility>
#include <vector>

namespace zmfb::tool {
namespace {

bool is_program(std::string_view name) {
    const char* const path = std::getenv("PATH");
    std::string_view folders = path == nullptr ? "" : path;
    while (!folders.empty()) {
        const std::string_view folder = folders.substr(0, folders.find(':'));
        folders.remove_prefix(std::min(folders.size(), folder.size() + 1));
        if (::access(fmt::format("{}/{}", folder, name).c_str(), X_OK) == 0) return true;
    }
    return false;
}

// less ends by itself where all fits, shows colours, and leaves on the terminal what it has shown.
std::vector<char*> environment_of_pager() {
    static std::string of_less = "LESS=FRX";
    std::vector<char*> all;
    for (char** one = environ; *one != nullptr; ++one) all.push_back(*one);
    if (std::getenv("LESS") == nullptr) all.push_back(of_less.data());
    all.push_back(nullptr);
    return all;
}

// A process with the signals as programs expect them, the end of the pipe as standard input, and no other
// file of this process. 0, or what was wrong.
int spawn(const std::string& command, int input, pid_t& process) {
    posix_spawnattr_t attributes;
    posix_spawn_file_actions_t files;
    posix_spawnattr_init(&attributes);
    posix_spawn_file_actions_init(&files);
    sigset_t none, all;
    sigemptyset(&none);
    sigfillset(&all);
    posix_spawnattr_setsigmask(&attributes, &none);
    posix_spawnattr_setsigdefault(&attributes, &all);
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
    posix_spawn_file_actions_adddup2(&files, input, STDIN_FILENO);
    posix_spawn_file_actions_addclosefrom_np(&files, STDERR_FILENO + 1);
    std::string shell = "sh", option = "-c", words = command;
    std::array<char*, 4> arguments{shell.data(), option.data(), words.data(), nullptr};
    const int error =
        posix_spawnp(&process, "sh", &files, &attributes, arguments.data(), environment_of_pager().data());
    posix_spawn_file_actions_destroy(&files);
    posix_spawnattr_destroy(&attributes);
    return error;
}

}  // namespace

std::string Pager::command() {
    const char* const wanted = std::getenv("PAGER");
    if (wanted != nullptr) return std::string_view(wanted) == "cat" ? "" : wanted;
    for (const char* const usual : {"less", "more"}) {
        if (is_program(usual)) return usual;
    }
    return "";
}

Pager::Pager(std::string command) : command_(std::move(command)) {
    std::fflush(stdout);
    std::array<int, 2> ends{};
    if (::pipe2(ends.data(), O_CLOEXEC) != 0)
        throw Failure{Exit::failed, fmt::format("cannot make a pipe: {}", std::strerror(errno))};
    pipe_ = ends[1];
    const int error = spawn(command_, ends[0], process_);
    ::close(ends[0]);
    if (error == 0) return;
    ::close(pipe_);
    throw Failure{Exit::failed, fmt::format("cannot run the pager {}: {}", command_, std::strerror(error))};
}

Pager::~Pager() {
    if (process_ > 0) wait();
}

// A full pipe waits for the person, whom nothing but an ending signal hurries.
void Pager::write(std::string_view text) {
    const Waiting waiting;
    while (pipe_ >= 0 && !text.empty()) {
        const ssize_t written = ::write(pipe_, text.data(), text.size());
        if (written >= 0) {
            text.remove_prefix(static_cast<std::size_t>(written));
        } else if (errno != EINTR || ending_signal() != 0) {
            ::close(std::exchange(pipe_, -1));
        }
    }
}

void Pager::close() {
    constexpr int cannot_run = 126, not_found = 127;
    const int status = wait();
    if (WIFSIGNALED(status) && WTERMSIG(status) == SIGINT) throw Failure{static_cast<Exit>(128 + SIGINT), ""};
    if (!WIFEXITED(status) || (WEXITSTATUS(status) != cannot_run && WEXITSTATUS(status) != not_found)) return;
    throw Failure{Exit::failed, fmt::format("the pager {} cannot be run", command_), "",
                  "PAGER names it; --no-pager does without"};
}

int Pager::wait() {
    if (pipe_ >= 0) ::close(std::exchange(pipe_, -1));
    int status = 0;
    const Waiting waiting;
    while (::waitpid(process_, &status, 0) < 0 && errno == EINTR) {
        if (ending_signal() != 0) ::kill(process_, SIGTERM);
    }
    process_ = -1;
    return status;
}

}  // namespace zmfb::tool
