// zmfb_worker: one process with one connection object, driven by a test.
//
// Reads a call a line from standard input, written as the tool's `call` takes them, and answers each with a
// line on standard output: the result as a literal, or "raised: " and a description. attach(db, user,
// password, role) makes the object; prepare(db) calls prepare_client(), engine() answers with the engine's
// last message, shell(command) runs a command as a child and answers with its status. stepwise(on) begins or
// ends stopping at every step, as stepping.h says. The calls of program.h, crowd.h and area_steps.h are
// carried out here, all others by the object. Ends at end of input.
#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <optional>
#include <stdexcept>
#include <string>

#include "host/error.h"
#include "tests/support/worker/area_steps.h"
#include "tests/support/worker/crowd.h"
#include "tests/support/worker/program.h"
#include "tests/support/worker/stepping.h"
#include "tests/support/worker/wire.h"
#include "tool/literal.h"
#include "zmfbconn/database.h"

namespace zmfb::test {
namespace {

void answer(const Value& value) { std::cout << tool::to_literal(value) << std::endl; }

// In the order in which they end: backwards.
struct Program {
    std::optional<zmFBConn> connection;
    AreaSteps area;
    std::optional<SteppingClient> stepping;
};

void carry_out(Program& program, const CallOfLiterals& call) {
    const Args args(call.arguments);
    std::optional<zmFBConn>& connection = program.connection;
    if (call.method == "attach") {
        connection.emplace(args[0], args[1], args[2], args[3]);
        return answer(connection->isconnected());
    }
    if (call.method == "prepare") return answer(prepare_client(args[0].text()).message());
    if (call.method == "engine") return answer(last_engine_message());
    if (call.method == "shell") return answer(std::system(std::string(args[0].text()).c_str()));
    if (call.method == "stepwise") {
        program.stepping.reset();
        if (args[0].logical()) program.stepping.emplace();
        return answer(true);
    }
    if (!connection) throw std::runtime_error("not attached");
    if (const std::optional<Value> given = program.area.carry_out(call.method, *connection, args))
        return answer(*given);
    if (call.method == "contend") return answer(contend(*connection, args));
    if (call.method == "takelock") return answer(takelock(*connection, args));
    if (call.method == "opentable") return answer(opentable(*connection, args));
    if (call.method == "closetable") return answer(closetable(*connection, args));
    if (call.method == "appendrows") return answer(appendrows(*connection, args));
    if (call.method == "crowd") return answer(crowd(*connection, args));
    if (call.method == "churn") churn(*connection, args, answer);
    if (call.method == "makeorder") return answer(makeorder(*connection, args));
    if (call.method == "dropanyorder") return answer(dropanyorder(*connection, args));
    if (call.method == "churnorders") churnorders(*connection, args, answer);
    answer(connection->call_with(call.method, args));
}

void run() {
    const host::ThrowingErrors thrown;
    Program program;
    for (std::string line; std::getline(std::cin, line);) {
        try {
            carry_out(program, read_call(line));
        } catch (const std::runtime_error& error) {
            std::cout << "raised: " << error.what() << std::endl;
        }
    }
}

}  // namespace
}  // namespace zmfb::test

int main() { zmfb::test::run(); }
