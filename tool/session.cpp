#include "tool/session.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <exception>
#include <new>
#include <system_error>
#include <utility>

#include "tool/database_encoding.h"
#include "tool/encoding.h"
#include "tool/interrupt.h"
#include "tool/output.h"
#include "tool/password.h"
#include "tool/say.h"
#include "zmfbconn/cancel.h"
#include "zmfbconn/database.h"
#include "zmfbconn/methods.h"
#include "zmfbconn/transaction.h"

namespace zmfb::tool {
namespace {

std::string latin1_option(const std::string& text, std::string_view option) {
    auto latin1 = to_latin1(text);
    if (!latin1)
        throw Failure{Exit::usage, fmt::format("{} has a character outside {}", option, encoding_name())};
    return *latin1;
}

}  // namespace

bool tells_of_a_failing_disk(std::string_view message) {
    return message.find("I/O error during") != std::string_view::npos;
}

bool tells_of_a_lost_connection(std::string_view message) {
    constexpr std::array<std::string_view, 4> words{
        "connection lost to database", "Error reading data from the connection",
        "Error writing data to the connection", "connection shutdown"};
    return std::ranges::any_of(
        words, [&](std::string_view word) { return message.find(word) != std::string_view::npos; });
}

namespace {

// Throws where there is no memory to go on, or to say what was wrong.
Exit told_with_memory(const std::function<Exit()>& work) {
    Failure failure;
    try {
        const Exit status = work();
        // Who has undone things, or had a child do so, has said it.
        if (ending_signal() == 0 || status >= ending_status()) return status;
    } catch (const Failure& problem) {
        failure = problem;
    } catch (const Cancelled&) {
        failure = {ending_status(), "", "", ""};
    } catch (const std::system_error& problem) {
        failure = std::ferror(stdout) != 0 ? output_failure(problem.code().value())
                                           : Failure{Exit::failed, problem.what()};
    } catch (const std::bad_alloc&) {
        throw;
    } catch (const std::exception& problem) {
        failure = Failure{Exit::failed, problem.what()};
    }
    if (ending_signal() != 0) {
        print_error(interrupted_message,
                    failure.message == interrupted_message ? failure.detail : failure.message);
        return ending_status();
    }
    print_failure(failure);
    return failure.status;
}

}  // namespace

Exit told(const std::function<Exit()>& work) {
    try {
        return told_with_memory(work);
    } catch (const std::bad_alloc&) {
        print_out_of_memory();
        return ending_signal() != 0 ? ending_status() : Exit::failed;
    }
}

Exit told_in_session(const Options& options, const std::function<Exit(Session&)>& work) {
    return told([&] {
        Session session(options);
        const Exit status = work(session);
        return status == Exit::ok && !session.raised().empty() ? Exit::failed : status;
    });
}

Session::Session(Options options)
    : options_(std::move(options)), errors_(host::Value::block([this](host::Args args) -> host::Value {
          const std::string description = host::error_description(args[0]);
          // What is raised once a signal has ended it, is raised for that.
          if (!interrupted()) print_raised(description, show_raised_);
          raised_.push_back(to_utf8(description));
          return {};
      })) {
    // The embedded engine checks no password, but wants a user; its owner of everything is SYSDBA.
    if (options_.user.empty() && !names_a_server(options_.database)) options_.user = "SYSDBA";
}

void Session::require_database() const {
    if (!options_.database.empty()) return;
    throw Failure{Exit::usage, "no database given",
                  "Name one with --db DATABASE or in the environment variable ZMFB_DB."};
}

void Session::prepare_client() {
    if (std::exchange(prepared_, true)) return;
    if (const Status prepared = zmfb::prepare_client(options_.database); !prepared.ok())
        throw Failure{Exit::not_attached, "cannot prepare the embedded engine", prepared.message()};
    ask_for_missing_password();
}

void Session::ask_for_missing_password() {
    if (!names_a_server(options_.database)) return;
    if (options_.user.empty()) {
        throw Failure{Exit::usage, fmt::format("no user given for {}", options_.database),
                      "Name one with --user NAME or in the environment variable ISC_USER."};
    }
    if (options_.password_given) return;
    if (const auto typed = ask_for_password(options_.user, options_.database)) options_.password = *typed;
    options_.password_given = true;
}

zmFBConn& Session::connection() {
    require_database();
    return connection_or_unattached();
}

zmFBConn& Session::connection_or_unattached() {
    if (!connection_) attach(Demand::driver_database);
    return *connection_;
}

zmFBConn& Session::connection_to_any() {
    require_database();
    if (!connection_) attach(Demand::any_database);
    return *connection_;
}

bool Session::in_transaction() {
    if (!connection_) return false;
    try {
        Transaction::batch(*connection_);
        return true;
    } catch (const SqlError&) {
        return false;
    }
}

bool Session::let_go_when_lost(std::string_view detail) {
    if (!connection_ || !connection_->isconnected()) return false;
    const std::string said = last_engine_message();
    const bool disk_failed = tells_of_a_failing_disk(said);
    if (!disk_failed && !tells_of_a_lost_connection(detail) && !tells_of_a_lost_connection(said))
        return false;
    if (disk_failed && !tells_of_a_failing_disk(detail)) print_error("the database cannot be used", said);
    say("the connection to {} is lost{}; what comes next attaches anew\n", options_.database,
        in_transaction() ? ", and with it the transaction that was open" : "");
    connection_.reset();
    return true;
}

// The log level is set on the object while it is not attached yet, so that the attach itself is logged at
// that level.
void Session::attach(Demand demand) {
    zmFBConn made;
    if (options_.log_level != 0) made(m::setloglevel, options_.log_level);
    if (!options_.database.empty()) {
        prepare_client();
        const std::size_t raised_before = raised_.size();
        const std::string database = latin1_option(options_.database, "the database name");
        const std::string user = latin1_option(options_.user, "the user name");
        const std::string password = latin1_option(options_.password, "the password");
        const std::string role = latin1_option(options_.role, "the role");
        if (demand == Demand::any_database) {
            made = zmFBConn::attached_as_it_is(database, user, password, role);
        } else {
            made(m::init, database, user, password, role);
        }
        if (!made.isconnected()) {
            throw Failure{Exit::not_attached, fmt::format("cannot attach to {}", options_.database),
                          last_engine_message()};
        }
        if (raised_.size() != raised_before) {
            throw Failure{Exit::not_attached,
                          fmt::format("{} is no database the driver can use", options_.database), "",
                          "\"zmfb doctor\" says what it misses, and how to add that"};
        }
    }
    if (!options_.database.empty() && !options_.encoding_given) adopt_encoding(made);
    connection_ = std::move(made);
}

}  // namespace zmfb::tool
