#include "tests/support/proxy.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <string_view>
#include <system_error>
#include <vector>

namespace zmfb::test {
namespace {

using namespace std::chrono_literals;

constexpr auto delay = 200ms;
// So much of a throttled way comes in pieces, before that would take too long.
constexpr std::size_t piece = 7, most_pieces = 500;
constexpr auto between_pieces = 200us;

[[noreturn]] void fail(const char* what) { throw std::system_error(errno, std::generic_category(), what); }

sockaddr_in local(int port) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    address.sin_port = htons(static_cast<std::uint16_t>(port));
    return address;
}

int make_socket() {
    const int made = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (made < 0) fail("socket");
    const int on = 1;
    ::setsockopt(made, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
    return made;
}

bool send_all(int to, std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t sent = ::send(to, bytes.data(), bytes.size(), MSG_NOSIGNAL);
        if (sent < 0) return false;
        bytes.remove_prefix(static_cast<std::size_t>(sent));
    }
    return true;
}

// With nothing of what was sent delivered any more.
void reset(int socket) {
    const linger at_once{.l_onoff = 1, .l_linger = 0};
    ::setsockopt(socket, SOL_SOCKET, SO_LINGER, &at_once, sizeof at_once);
}

}  // namespace

struct Proxy::Connection {
    Connection(int client, int server) : sockets{server, client} {}
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;
    ~Connection() {
        for (const int socket : sockets) ::close(socket);
    }
    [[nodiscard]] int to(Way way) const { return sockets[static_cast<std::size_t>(way)]; }
    [[nodiscard]] int from(Way way) const {
        return to(way == Way::to_server ? Way::to_client : Way::to_server);
    }
    [[nodiscard]] bool is_open() const { return open[0] || open[1]; }

    std::array<int, 2> sockets;                 // by the way that leads to each
    std::array<bool, 2> open = {true, true};    // whether more may come that way
    std::array<bool, 2> lost = {false, false};  // whether that is thrown away
    std::array<std::size_t, 2> pieces_left = {0, 0};
};

Proxy::Proxy(int target_port) : target_port_(target_port), listener_(make_socket()) {
    sockaddr_in address = local(0);
    socklen_t size = sizeof address;
    if (::bind(listener_, reinterpret_cast<sockaddr*>(&address), size) != 0) fail("bind");
    if (::getsockname(listener_, reinterpret_cast<sockaddr*>(&address), &size) != 0) fail("getsockname");
    if (::listen(listener_, 16) != 0) fail("listen");
    port_ = ntohs(address.sin_port);
    thread_ = std::thread([this] { run(); });
}

Proxy::~Proxy() {
    ends_ = true;
    thread_.join();
    ::close(listener_);
}

void Proxy::plan(const NetworkPlan& next) {
    const std::lock_guard guard(mutex_);
    plan_ = next;
    happened_ = false;
    counts_[0] = counts_[1] = 0;
}

int Proxy::count(Way way) const {
    const std::lock_guard guard(mutex_);
    return counts_[static_cast<std::size_t>(way)];
}

bool Proxy::happened() const {
    const std::lock_guard guard(mutex_);
    return happened_;
}

NetworkFault Proxy::fault_of_next(Way way) {
    const std::lock_guard guard(mutex_);
    const int number = ++counts_[static_cast<std::size_t>(way)];
    if (way != plan_.way || number != plan_.nth || plan_.fault == NetworkFault::none)
        return NetworkFault::none;
    happened_ = true;
    return plan_.fault;
}

void Proxy::run() {
    while (!ends_) {
        std::vector<pollfd> waiting{{.fd = listener_, .events = POLLIN, .revents = 0}};
        for (const auto& connection : connections_) {
            for (const Way way : {Way::to_server, Way::to_client}) {
                const bool open = connection->open[static_cast<std::size_t>(way)];
                waiting.push_back({.fd = open ? connection->from(way) : -1, .events = POLLIN, .revents = 0});
            }
        }
        if (::poll(waiting.data(), waiting.size(), 20) <= 0) continue;
        for (std::size_t i = 0; 2 * i + 2 < waiting.size(); ++i) {
            if (waiting[2 * i + 1].revents != 0) pass(*connections_[i], Way::to_server);
            if (waiting[2 * i + 2].revents != 0) pass(*connections_[i], Way::to_client);
        }
        if (waiting[0].revents != 0) accept_client();
        std::erase_if(connections_, [](const auto& connection) { return !connection->is_open(); });
    }
}

void Proxy::accept_client() {
    const int client = ::accept4(listener_, nullptr, nullptr, SOCK_CLOEXEC);
    if (client < 0) return;
    const int on = 1;
    ::setsockopt(client, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
    const int server = make_socket();
    const sockaddr_in address = local(target_port_);
    auto connection = std::make_unique<Connection>(client, server);
    if (::connect(server, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0)
        connections_.push_back(std::move(connection));
}

void Proxy::pass(Connection& connection, Way way) {
    const auto side = static_cast<std::size_t>(way);
    if (!connection.open[side]) return;
    std::array<char, 65536> block;
    const ssize_t got = ::recv(connection.from(way), block.data(), block.size(), 0);
    const auto end_way = [&] {
        connection.open[side] = false;
        ::shutdown(connection.to(way), SHUT_WR);
    };
    if (got <= 0) return end_way();
    if (connection.lost[side]) return;
    std::string_view bytes(block.data(), static_cast<std::size_t>(got));
    const NetworkFault fault = fault_of_next(way);
    if (fault == NetworkFault::delayed) std::this_thread::sleep_for(delay);
    if (fault == NetworkFault::throttled) connection.pieces_left[side] = most_pieces;
    if (fault == NetworkFault::cut) {
        for (const int socket : connection.sockets) reset(socket);
        connection.open = {false, false};
        return;
    }
    if (fault == NetworkFault::half_closed) {
        connection.lost[side] = true;
        ::shutdown(connection.to(way), SHUT_WR);
        return;
    }
    for (; connection.pieces_left[side] > 0 && bytes.size() > piece; --connection.pieces_left[side]) {
        send_all(connection.to(way), bytes.substr(0, piece));
        bytes.remove_prefix(piece);
        std::this_thread::sleep_for(between_pieces);
    }
    if (!send_all(connection.to(way), bytes)) end_way();
}

}  // namespace zmfb::test
