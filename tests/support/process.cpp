#include "tests/support/process.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <fstream>
#include <stdexcept>
#include <utility>

namespace zmfb::test {
namespace {

struct Pipe {
    int read_end = -1;
    int write_end = -1;
    Pipe() {
        std::array<int, 2> ends{};
        if (pipe2(ends.data(), O_CLOEXEC) == 0) {
            read_end = ends[0];
            write_end = ends[1];
        }
    }
    ~Pipe() {
        close_end(read_end);
        close_end(write_end);
    }
    Pipe(const Pipe&) = delete;
    Pipe& operator=(const Pipe&) = delete;
    static void close_end(int& end) {
        if (end >= 0) close(end);
        end = -1;
    }
};

[[noreturn]] void become(const std::vector<std::string>& command, const std::vector<std::string>& environment,
                         Pipe& in, Pipe& out, Pipe& err) {
    dup2(in.read_end, STDIN_FILENO);
    dup2(out.write_end, STDOUT_FILENO);
    dup2(err.write_end, STDERR_FILENO);
    std::signal(SIGINT, SIG_DFL);  // which is ignored in the background of a plain shell
    for (const std::string& setting : environment) putenv(const_cast<char*>(setting.c_str()));
    std::vector<char*> arguments;
    for (const std::string& word : command) arguments.push_back(const_cast<char*>(word.c_str()));
    arguments.push_back(nullptr);
    execvp(arguments[0], arguments.data());
    _exit(127);
}

// Appends what there is to read; closes the end at its end.
void drain(int& end, std::string& text) {
    std::array<char, 65536> buffer;
    const ssize_t got = read(end, buffer.data(), buffer.size());
    if (got > 0) {
        text.append(buffer.data(), static_cast<std::size_t>(got));
    } else {
        Pipe::close_end(end);
    }
}

void feed(int& end, const std::string& input, std::size_t& sent) {
    const ssize_t put = sent < input.size() ? write(end, input.data() + sent, input.size() - sent) : -1;
    if (put > 0) sent += static_cast<std::size_t>(put);
    if (put <= 0 || sent == input.size()) Pipe::close_end(end);
}

}  // namespace

Started::Started(const std::vector<std::string>& command, const std::string& input,
                 const std::vector<std::string>& environment) {
    Pipe in;
    Pipe out;
    Pipe err;
    child_ = fork();
    if (child_ == 0) become(command, environment, in, out, err);
    if (write(in.write_end, input.data(), input.size()) != static_cast<ssize_t>(input.size()))
        throw std::runtime_error("more input than a pipe holds");
    in_ = std::exchange(in.write_end, -1);
    out_ = std::exchange(out.read_end, -1);
    err_ = std::exchange(err.read_end, -1);
}

Started::~Started() {
    for (int* end : {&in_, &out_, &err_}) Pipe::close_end(*end);
    if (child_ <= 0) return;
    kill(child_, SIGKILL);
    waitpid(child_, nullptr, 0);
}

void Started::send(int signal) const { kill(child_, signal); }

namespace {

// The seconds of a processor that a process has used.
double processor_seconds(pid_t process) {
    std::ifstream file("/proc/" + std::to_string(process) + "/stat");
    std::string word;
    std::getline(file, word, ')');
    double user = 0;
    double system = 0;
    for (int i = 3; i < 14; ++i) file >> word;
    file >> user >> system;
    return (user + system) / static_cast<double>(sysconf(_SC_CLK_TCK));
}

}  // namespace

void Started::settle() const {
    constexpr int quiet_rounds = 5;
    constexpr double hard_work = 0.8;
    double before = -1;
    for (int quiet = 0; quiet < quiet_rounds;) {
        poll(nullptr, 0, 100);
        const double used = processor_seconds(child_);
        quiet = used == before ? quiet + 1 : 0;
        before = used;
        if (used > hard_work) return;
    }
}

Finished Started::end() {
    using Clock = std::chrono::steady_clock;
    const auto until = Clock::now() + std::chrono::minutes(2);
    Finished finished;
    while (out_ >= 0 || err_ >= 0) {
        std::array<pollfd, 2> waits{{{out_, POLLIN, 0}, {err_, POLLIN, 0}}};
        poll(waits.data(), waits.size(), 100);
        if (waits[0].revents != 0) drain(out_, finished.out);
        if (waits[1].revents != 0) drain(err_, finished.err);
        if (Clock::now() > until) throw std::runtime_error("the program does not end: " + finished.err);
    }
    int status = 0;
    waitpid(std::exchange(child_, -1), &status, 0);
    finished.status = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    return finished;
}

Finished run(const std::vector<std::string>& command, const std::string& input,
             const std::vector<std::string>& environment) {
    std::signal(SIGPIPE, SIG_IGN);
    Pipe in;
    Pipe out;
    Pipe err;
    const pid_t child = fork();
    if (child == 0) become(command, environment, in, out, err);
    Pipe::close_end(in.read_end);
    Pipe::close_end(out.write_end);
    Pipe::close_end(err.write_end);
    Finished finished;
    std::size_t sent = 0;
    if (input.empty()) Pipe::close_end(in.write_end);
    while (out.read_end >= 0 || err.read_end >= 0 || in.write_end >= 0) {
        std::array<pollfd, 3> waits{
            {{out.read_end, POLLIN, 0}, {err.read_end, POLLIN, 0}, {in.write_end, POLLOUT, 0}}};
        poll(waits.data(), waits.size(), -1);
        if (waits[0].revents != 0) drain(out.read_end, finished.out);
        if (waits[1].revents != 0) drain(err.read_end, finished.err);
        if (waits[2].revents != 0) feed(in.write_end, input, sent);
    }
    int status = 0;
    waitpid(child, &status, 0);
    finished.status = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    return finished;
}

}  // namespace zmfb::test
