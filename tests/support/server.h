/// A private Firebird server on 127.0.0.1, for what the embedded engine cannot show: passwords, users, a line
/// that breaks.
#pragma once

#include <sys/types.h>

#include <filesystem>
#include <string>

#include "tests/support/server_setup.h"

namespace zmfb::test {

/// Runs a server program as a child of this process, on a port that no other test program uses, in a folder
/// of its own with a security database of its own (SYSDBA with sysdba_password). Whatever fails throws
/// std::runtime_error. The server dies with the process that started it.
class Server {
  public:
    explicit Server(ServerSetup setup = setup_of_this_run());
    Server(const Server&) = delete;
    Server& operator=(const Server&) = delete;
    ~Server();

    /// The server of this process, started at the first call.
    static Server& shared();
    /// Stops it, if it was started.
    static void stop_shared();

    /// The name to attach with for a database file.
    [[nodiscard]] std::string name_of(const std::filesystem::path& file) const;
    [[nodiscard]] int port() const { return port_; }
    [[nodiscard]] pid_t pid() const { return pid_; }

    /// Where its settings lie.
    [[nodiscard]] const std::filesystem::path& folder() const { return folder_; }

    /// Makes a user in the security database.
    void create_user(const std::string& name, const std::string& password) const;

    /// Ends the server at once, in the middle of whatever it does.
    void kill();
    /// Ends it in good order, at once when that takes longer than a second.
    void stop();
    /// Starts it again on the same port.
    void start();

  private:
    void reserve_port();
    [[nodiscard]] bool accepts_connections() const;

    ServerSetup setup_;
    std::filesystem::path folder_;
    int port_ = 0;
    int reservation_ = -1;
    pid_t pid_ = -1;
};

}  // namespace zmfb::test
