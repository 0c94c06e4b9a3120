/// One run of the tool: its options, the object it works through, what was raised, and the exit status.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "host/error.h"
#include "tool/errors.h"
#include "zmfbconn/connection.h"

namespace zmfb::tool {

/// The options that stand before the command.
struct Options {
    std::string database;
    std::string user;
    std::string password;
    std::string role;
    int log_level = 0;
    bool json = false;
    bool password_given = false;  ///< an empty one counts
    bool encoding_given = false;  ///< which goes before the one that the database says
};

/// Whether the engine's message says that the connection to the server is lost.
bool tells_of_a_lost_connection(std::string_view message);

/// Whether it says that a file could not be read or written: that of the database, of which the embedded
/// engine is asked nothing from then on, or one of an external table.
bool tells_of_a_failing_disk(std::string_view message);

/// While it lives, errors raised by methods are printed, and the program goes on.
class Session {
  public:
    explicit Session(Options options);

    [[nodiscard]] const Options& options() const { return options_; }

    /// The attached object; attaches on first use. Throws Failure: usage without a database, not_attached
    /// when the attach fails or the database is not one the driver can use.
    zmFBConn& connection();
    /// The same, but attached to the database as it is: nothing is made in one that the driver cannot use.
    zmFBConn& connection_to_any();
    /// The object, attached when a database is given.
    zmFBConn& connection_or_unattached();
    /// Whether a transaction is open on the object: one that starttransaction() has begun.
    [[nodiscard]] bool in_transaction();
    /// Lets go of the object; the next use attaches anew.
    void let_go() { connection_.reset(); }
    /// Lets go of the object when its connection to the server is lost, or its database cannot be read or
    /// written any more, as the engine said in what failed last or in `detail`, which was told: the next use
    /// attaches anew. Says so, and returns whether it was.
    bool let_go_when_lost(std::string_view detail);
    /// Makes the client library ready for the database of the options, and asks for its password. Throws
    /// Failure.
    void prepare_client();
    /// Asks for the password of a server when none was given and standard input is a terminal. Throws Failure
    /// (usage) when no user was given for one. Attaching does it; who hands the options on to other sessions
    /// does it first.
    void ask_for_missing_password();
    /// Throws Failure (usage) when no database was given.
    void require_database() const;

    /// How many errors were raised so far, and the texts of them (UTF-8).
    [[nodiscard]] const std::vector<std::string>& raised() const { return raised_; }
    /// Lets what was raised so far count no more for the exit status.
    void forget_raised() { raised_.clear(); }
    /// How they are printed from now on; as lines at the start.
    void show_raised(Raised how) { show_raised_ = how; }

  private:
    enum class Demand { any_database, driver_database };
    void attach(Demand demand);

    Options options_;
    Raised show_raised_ = Raised::lines;
    std::vector<std::string> raised_;
    host::ScopedErrorBlock errors_;
    std::optional<zmFBConn> connection_;
    bool prepared_ = false;
};

/// Does the work; prints the error of what it throws. Returns its status, or that of the failure; when a
/// signal ended it, says that, and returns 128 and the number of the signal.
Exit told(const std::function<Exit()>& work);
/// The same with a session of its own. What was raised makes a status of ok a failed one.
Exit told_in_session(const Options& options, const std::function<Exit(Session&)>& work);

}  // namespace zmfb::tool
