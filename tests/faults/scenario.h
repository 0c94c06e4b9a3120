/// What the walk over all methods calls, and what it expects of each when a call of the client fails.
#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "zmfbconn/connection.h"

namespace zmfb::test {

class Walk;

/// What is to come of a failure of one statement.
///
/// In all texts "@E" stands for the SQLCODE error text of the failure, "@DB" for the name of the database and
/// "@DIR" for the folder of the test. A text that begins with "~" is a regular expression for the whole.
struct Failure {
    std::string statement;     ///< how the statement or query begins that the failing call belongs to
    std::string result = "=";  ///< the answer; "=" when it is as if nothing had failed
    std::vector<std::string> raised = {};  ///< without "[FBCONN Error];"; "*" for whatever there is
    std::vector<std::string> logged =
        {};                    ///< lines of the levels 0 and 1 besides the failure's own; none: those of a
                               ///< run without failure where the answer is as if, "-": no line at all
    std::string partial = "";  ///< the answer when some rows had been fetched; see Scenario
    bool other_state = false;  ///< the answer is as if, but the database is not
    int nth = 0;               ///< only the nth time that this very statement runs; 0: always
};

enum class Uses {
    nothing,   ///< talks to no database: its count of client calls must be 0
    database,  ///< only asks: the same attachment serves for all failures
    changes,   ///< each failure gets a database of its own
};

/// One way to call a method.
struct Scenario {
    std::string method;
    std::string call;  ///< the call, as the tool takes it
    Uses uses = Uses::database;
    std::string good = "";  ///< the answer when all goes well; "*": any
    std::vector<Failure> failures = {};
    /// How many elements of the answer stand ahead of the rows, when it holds a row in each further one: such
    /// an answer is cut after the rows that were fetched. -1 for any other answer, for which failures of a
    /// query between two rows take Failure::partial.
    int ahead_of_rows = -1;
    bool header_alone = false;             ///< that answer is the header alone ahead of the first row
    bool silent = false;                   ///< a failure is neither logged nor told by the answer
    std::vector<std::string> before = {};  ///< calls that come before, without failures
    std::vector<std::string> after = {};   ///< and after
    std::string variant = "";              ///< which way this is, when a method has several
    std::string database = "walk.fdb";     ///< the database it starts with
    std::function<Value(Walk&)> act = {};  ///< does the call, where the text cannot
};

/// A call that changes something, and answers .T. when all goes well.
inline Scenario changes(std::string call, std::vector<Failure> failures, std::string variant = "") {
    const std::string method = call.substr(0, call.find('('));
    return {.method = method,
            .call = std::move(call),
            .uses = Uses::changes,
            .good = ".T.",
            .failures = std::move(failures),
            .variant = std::move(variant)};
}

std::vector<Scenario> connection_scenarios();
std::vector<Scenario> sql_scenarios();
std::vector<Scenario> catalog_scenarios();
std::vector<Scenario> lock_scenarios();
std::vector<Scenario> schema_scenarios();
std::vector<Scenario> change_scenarios();
std::vector<Scenario> transfer_scenarios();
std::vector<Scenario> matrix_scenarios();
/// Methods that talk to no database.
std::vector<Scenario> quiet_scenarios();

std::vector<Scenario> all_scenarios();

}  // namespace zmfb::test
