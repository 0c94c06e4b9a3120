/// A network that goes wrong between a client and a server.
#pragma once

#include <atomic>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace zmfb::test {

/// What happens to a message.
enum class NetworkFault {
    none,
    delayed,      ///< it comes a fifth of a second later
    throttled,    ///< it and what follows comes in pieces of a few bytes, for a while
    cut,          ///< it is lost, and with it the connection: both sides are told so at once
    half_closed,  ///< it is lost, and who waits for it is told that nothing more comes
};

/// Where a message goes.
enum class Way { to_server, to_client };

/// What is to happen: to message `nth`, counted from 1, of all connections together.
struct NetworkPlan {
    NetworkFault fault = NetworkFault::none;
    Way way = Way::to_server;
    int nth = 0;
};

/// Passes on what clients send to its port to a port of this machine, and what comes back. A message is what
/// comes in one piece. Runs in a thread of its own.
class Proxy {
  public:
    explicit Proxy(int target_port);
    Proxy(const Proxy&) = delete;
    Proxy& operator=(const Proxy&) = delete;
    ~Proxy();

    /// The port that clients connect to.
    [[nodiscard]] int port() const { return port_; }
    /// Sets what is to happen once from here on; messages are counted anew.
    void plan(const NetworkPlan& next);
    /// The messages that went that way since.
    [[nodiscard]] int count(Way way) const;
    /// Whether what was planned has happened.
    [[nodiscard]] bool happened() const;

  private:
    struct Connection;

    void run();
    void accept_client();
    void pass(Connection& connection, Way way);
    NetworkFault fault_of_next(Way way);

    int target_port_;
    int listener_ = -1;
    int port_ = 0;
    std::atomic<bool> ends_ = false;
    mutable std::mutex mutex_;
    NetworkPlan plan_;
    int counts_[2] = {0, 0};
    bool happened_ = false;
    std::vector<std::unique_ptr<Connection>> connections_;
    std::thread thread_;
};

}  // namespace zmfb::test
