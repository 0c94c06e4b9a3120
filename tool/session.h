/// One run of the tool: its options, the object it works through, what was raised, and the exit status.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "zmfbconn/connection.h"

namespace zmfb::tool {

/// What the process ends with.
enum class Exit : int { ok = 0, failed = 1, usage = 2, not_attached = 3 };

/// The options that stand before the command.
struct Options {
    std::string database;
    std::string user;
    std::string password;
    std::string role;
    int log_level = 0;
    bool json = false;
};

/// Ends a command early with a status and, on standard error, "error: " and a message (UTF-8). `detail` is
/// printed below it, a line for each of its lines.
struct Failure {
    Exit status;
    std::string message;
    std::string detail = {};
};

/// While it lives, errors raised by methods are printed to standard error as "raised: " and their
/// description, lines parted at ";", and the program goes on.
class Session {
  public:
    explicit Session(Options options);
    ~Session();
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;

    [[nodiscard]] const Options& options() const { return options_; }

    /// The attached object; attaches on first use. Throws Failure: usage without a database, not_attached
    /// when the attach fails or the database is not one the driver can use.
    zmFBConn& connection();
    /// The object, attached when a database is given.
    zmFBConn& connection_or_unattached();
    /// Makes the client library ready for the database of the options. Throws Failure.
    void prepare_client();
    /// Throws Failure (usage) when no database was given.
    void require_database() const;

    /// How many errors were raised so far, and the texts of them (UTF-8).
    [[nodiscard]] const std::vector<std::string>& raised() const { return raised_; }
    /// Lets what was raised so far count no more for the exit status.
    void forget_raised() { raised_.clear(); }

  private:
    void attach();

    Options options_;
    std::vector<std::string> raised_;
    std::optional<zmFBConn> connection_;
    host::Value previous_handler_;
    bool prepared_ = false;
};

/// "error: message", and the detail below it, on standard error.
void print_error(std::string_view message, std::string_view detail = {});

}  // namespace zmfb::tool
