#include "tests/support/server.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <sys/file.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <memory>
#include <stdexcept>
#include <thread>
#include <utility>

#include "sql/database.h"
#include "tests/support/bare_client.h"
#include "tests/support/environment.h"

namespace zmfb::test {

namespace fs = std::filesystem;
using std::chrono::steady_clock;

namespace {

// Below the ports that the system gives out by itself.
constexpr int first_port = 30600;
constexpr int port_count = 1800;

constexpr auto patience = std::chrono::seconds(20);
constexpr auto grace = std::chrono::seconds(1);
constexpr auto pause = std::chrono::milliseconds(10);

std::unique_ptr<Server>& shared_server() {
    static std::unique_ptr<Server> server;
    return server;
}

sockaddr_in loopback(int port) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(static_cast<std::uint16_t>(port));
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    return address;
}

bool with_socket(int port, int (*act)(int, const sockaddr*, socklen_t)) {
    const int handle = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    const int on = 1;
    setsockopt(handle, SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
    const sockaddr_in address = loopback(port);
    const bool done = act(handle, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
    close(handle);
    return done;
}

// The locked file of a port, -1 when another test program has it. The server itself would not say that its
// port is taken: it waits, and its clients reach the other one.
int try_reserve(int port) {
    const fs::path folder = fs::temp_directory_path() / "zmfb-test-ports";
    std::error_code ignored;
    if (fs::create_directory(folder, ignored)) fs::permissions(folder, fs::perms::all, ignored);
    const int handle = open((folder / std::to_string(port)).c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0666);
    if (handle < 0) return -1;
    if (flock(handle, LOCK_EX | LOCK_NB) == 0 && with_socket(port, ::bind)) return handle;
    close(handle);
    return -1;
}

[[noreturn]] void become_server(const std::string& program, const fs::path& folder,
                                const std::vector<std::string>& environment) {
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    const int output = open((folder / "output").c_str(), O_WRONLY | O_CREAT | O_APPEND, 0666);
    dup2(output, STDOUT_FILENO);
    dup2(output, STDERR_FILENO);
    for (const std::string& setting : environment) {
        const std::size_t end_of_name = setting.find('=');
        setenv(setting.substr(0, end_of_name).c_str(), setting.substr(end_of_name + 1).c_str(), 1);
    }
    unsetenv("ISC_USER");
    unsetenv("ISC_PASSWORD");
    execl(program.c_str(), program.c_str(), static_cast<char*>(nullptr));
    _exit(127);
}

}  // namespace

Server& Server::shared() {
    if (!shared_server()) shared_server() = std::make_unique<Server>();
    return *shared_server();
}

void Server::stop_shared() { shared_server().reset(); }

Server::Server(ServerSetup setup) : setup_(std::move(setup)) {
    static int number = 0;
    folder_ = process_folder() / ("server" + std::to_string(++number));
    reserve_port();
    make_server_folder(folder_, port_, setup_);
    start();
}

Server::~Server() {
    stop();
    close(reservation_);
}

void Server::reserve_port() {
    for (int i = 0; i < port_count && reservation_ < 0; ++i) {
        port_ = first_port + (getpid() * 7 + i) % port_count;
        reservation_ = try_reserve(port_);
    }
    if (reservation_ < 0) throw std::runtime_error("no free port for a server");
}

std::string Server::name_of(const fs::path& file) const {
    return "127.0.0.1/" + std::to_string(port_) + ":" + file.string();
}

// From Firebird 4 on the security database itself is not to be attached from outside.
void Server::create_user(const std::string& name, const std::string& password) const {
    const fs::path any = folder_ / "any.fdb";
    if (!fs::exists(any)) must_succeed(sql::create_database(name_of(any), sysdba, sysdba_password));
    BareClient(name_of(any)).execute("create user " + name + " password '" + password + "'");
}

bool Server::accepts_connections() const { return with_socket(port_, ::connect); }

void Server::start() {
    if (pid_ > 0) return;
    pid_ = fork();
    if (pid_ == 0) become_server(server_program(setup_), folder_, server_environment(folder_, setup_));
    const auto limit = steady_clock::now() + patience;
    while (!accepts_connections()) {
        if (waitpid(pid_, nullptr, WNOHANG) == pid_) {
            pid_ = -1;
            throw std::runtime_error("the server ended at its start, see " + (folder_ / "output").string());
        }
        if (steady_clock::now() > limit) {
            kill();
            throw std::runtime_error("the server accepts no connection");
        }
        std::this_thread::sleep_for(pause);
    }
}

void Server::kill() {
    if (pid_ <= 0) return;
    ::kill(pid_, SIGKILL);
    waitpid(pid_, nullptr, 0);
    pid_ = -1;
}

// A server that has just lost a client may never look at the signal.
void Server::stop() {
    if (pid_ <= 0) return;
    ::kill(pid_, SIGTERM);
    const auto limit = steady_clock::now() + grace;
    while (waitpid(pid_, nullptr, WNOHANG) != pid_) {
        if (steady_clock::now() > limit) return kill();
        std::this_thread::sleep_for(pause);
    }
    pid_ = -1;
}

}  // namespace zmfb::test
