/// The process that does the work which is timed: it reads requests, one JSON object a line, from standard
/// input and answers each with one line on standard output.
///
///     {"do": "attach", "database": "127.0.0.1/30601:/folder/a.fdb"}     {}
///     {"do": "select.ours", "sql": "select ..."}                        {"seconds": 1.31, "rows": 500000,
///     ...}
///
/// A request that fails is answered with {"error": "..."}. The peers' programs speak the same language.
#pragma once

#include <chrono>
#include <nlohmann/json.hpp>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "bench/support/bare_session.h"
#include "zmfbconn/connection.h"

namespace zmfb::bench {

using nlohmann::json;

/// What a worker keeps between two requests.
struct Worker {
    std::string database;
    std::optional<zmFBConn> ours;
    std::optional<BareSession> bare;
    Value held;

    /// Attaches both to a database. Throws when that fails.
    void attach(const std::string& name);
    void detach();
};

/// One kind of request.
struct Command {
    std::string_view name;
    json (*run)(Worker& worker, const json& request);
};

/// Commands that every worker has: attach, detach, execute, rows.
std::span<const Command> common_commands();

/// Answers requests until standard input ends. Returns the exit status.
int serve(std::span<const std::span<const Command>> commands);

/// The seconds that `work` takes.
template <class Work>
double seconds_of(const Work& work) {
    const auto start = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

/// The processor time that this process has used so far, in seconds: unlike the clock's, it leaves out what
/// other processes take.
double processor_seconds();

}  // namespace zmfb::bench
