#include <stdexcept>

#include "bench/conn/commands.h"
#include "tests/support/environment.h"

namespace zmfb::bench {

namespace {

json attach_ours(Worker&, const json& request) {
    const std::string database = request.at("database");
    const int times = request.at("times");
    return {{"seconds", seconds_of([&] {
                 for (int i = 0; i < times; ++i) {
                     zmFBConn connection(database, test::sysdba, test::sysdba_password);
                     if (!connection.isconnected()) throw std::runtime_error("not attached");
                 }
             })}};
}

json attach_bare(Worker&, const json& request) {
    const std::string database = request.at("database");
    const int times = request.at("times");
    return {{"seconds", seconds_of([&] {
                 for (int i = 0; i < times; ++i) BareSession attached(database);
             })}};
}

constexpr Command commands[] = {
    {.name = "attach.ours", .run = attach_ours},
    {.name = "attach.bare", .run = attach_bare},
};

}  // namespace

std::span<const Command> attach_commands() { return commands; }

}  // namespace zmfb::bench
