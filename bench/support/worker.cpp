#include "bench/support/worker.h"

#include <ctime>
#include <iostream>
#include <stdexcept>

#include "tests/support/bare_client.h"
#include "tests/support/environment.h"
#include "zmfbconn/database.h"

namespace zmfb::bench {

namespace {

json attach(Worker& worker, const json& request) {
    worker.attach(request.at("database"));
    return json::object();
}

json detach(Worker& worker, const json&) {
    worker.detach();
    return json::object();
}

// Statements, one after the other, each in a transaction of its own.
json execute(Worker&, const json& request) {
    test::BareClient client(request.at("database"));
    for (const json& statement : request.at("statements")) client.execute(statement);
    return json::object();
}

json rows(Worker&, const json& request) {
    return {{"rows", test::BareClient(request.at("database")).rows(request.at("sql"))}};
}

constexpr Command commands[] = {
    {.name = "attach", .run = attach},
    {.name = "detach", .run = detach},
    {.name = "execute", .run = execute},
    {.name = "rows", .run = rows},
};

json answer(Worker& worker, std::span<const std::span<const Command>> tables, const json& request) {
    const std::string name = request.at("do");
    for (const auto& table : tables) {
        for (const Command& command : table) {
            if (command.name == name) return command.run(worker, request);
        }
    }
    throw std::runtime_error("no such request: " + name);
}

}  // namespace

std::span<const Command> common_commands() { return commands; }

void Worker::attach(const std::string& name) {
    detach();
    database = name;
    ours.emplace(name, test::sysdba, test::sysdba_password);
    if (!ours->isconnected()) throw std::runtime_error("not attached: " + last_engine_message());
    bare.emplace(name);
}

void Worker::detach() {
    held = {};
    bare.reset();
    ours.reset();
}

double processor_seconds() {
    std::timespec now{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) / 1e9;
}

int serve(std::span<const std::span<const Command>> commands) {
    Worker worker;
    std::string line;
    while (std::getline(std::cin, line)) {
        json reply;
        try {
            reply = answer(worker, commands, json::parse(line));
        } catch (const std::exception& failure) {
            reply = {{"error", failure.what()}};
        }
        std::cout << reply.dump(-1, ' ', false, json::error_handler_t::replace) << std::endl;
    }
    worker.detach();
    return 0;
}

}  // namespace zmfb::bench
