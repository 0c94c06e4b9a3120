// What one of many programs on one server does over and over: it locks a record of its own, changes and
// unlocks it.
#include <fmt/format.h>

#include <stdexcept>

#include "bench/locks/commands.h"
#include "bench/support/stand_in_client.h"

namespace zmfb::bench {

namespace {

constexpr const char* table = "CUSTOMERS";

json make(Worker& worker, const json& request) {
    const Value structure =
        host::array_of(host::array_of("NAME", "C", 30, 0), host::array_of("VISITS", "N", 9, 0));
    if (!worker.ours->call("createtable", table, structure).logical())
        throw std::runtime_error("the table is not made");
    const Value failure = worker.ours->call(
        "executeupdate",
        fmt::format("execute block as declare I integer = 0; begin while (I < {}) do begin I = I + 1; "
                    "insert into CUSTOMERS (NAME, VISITS) values ('Name ' || :I, 0); end end",
                    request.at("records").get<int>()));
    if (!failure.text().empty()) throw std::runtime_error("the records are not made");
    return json::object();
}

void visit(zmFBConn& connection, const std::string& record) {
    const std::string area = "CUSTOMERS:A" + record + ":4242:desk";
    const bool locked = connection.call("setrecordaslocked", table, area, record).logical();
    const Value failure =
        connection.call("executeupdate", "UPDATE CUSTOMERS SET VISITS = VISITS + 1 WHERE RECNO = " + record);
    const bool unlocked = connection.call("setrecordasunlocked", table, area, record).logical();
    if (!locked || !failure.text().empty() || !unlocked)
        throw std::runtime_error("the record is not locked, changed and unlocked");
}

// The statements of a visit to the record of this process.
std::vector<Sent> statements;

json learn(Worker& worker, const json& request) {
    const Recorder recorder;
    visit(*worker.ours, request.at("record"));
    statements = recorder.sent();
    return {{"statements", statements.size()}};
}

json visit_ours(Worker& worker, const json& request) {
    for (int i = request.at("visits"); i > 0; --i) visit(*worker.ours, request.at("record"));
    return json::object();
}

json visit_bare(Worker& worker, const json& request) {
    std::uint64_t touched = 0;
    for (int i = request.at("visits"); i > 0; --i) touched += replay(*worker.bare, statements);
    return {{"touched", touched}};
}

constexpr Command commands[] = {
    {.name = "crowd.make", .run = make},
    {.name = "crowd.learn", .run = learn},
    {.name = "crowd.ours", .run = visit_ours},
    {.name = "crowd.bare", .run = visit_bare},
};

}  // namespace

std::span<const Command> crowd_commands() { return commands; }

}  // namespace zmfb::bench
