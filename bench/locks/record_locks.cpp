#include <stdexcept>

#include "bench/locks/commands.h"
#include "bench/support/stand_in_client.h"

namespace zmfb::bench {

namespace {

constexpr const char* table = "CUSTOMERS";
constexpr const char* area = "CUSTOMERS:A1:4242:desk";
constexpr const char* record = "3";

void lock_and_unlock(zmFBConn& connection) {
    const bool locked = connection.call("setrecordaslocked", table, area, record).logical();
    const bool unlocked = connection.call("setrecordasunlocked", table, area, record).logical();
    if (!locked || !unlocked) throw std::runtime_error("the record is not locked and unlocked");
}

json lock_ours(Worker& worker, const json& request) {
    const int pairs = request.at("pairs");
    return {{"seconds", seconds_of([&] {
                 for (int i = 0; i < pairs; ++i) lock_and_unlock(*worker.ours);
             })}};
}

json lock_bare(Worker& worker, const json& request) {
    const int pairs = request.at("pairs");
    std::vector<Sent> sent;
    {
        const Recorder recorder;
        lock_and_unlock(*worker.ours);
        sent = recorder.sent();
    }
    worker.bare->send_by(request.value("calls", "plain") == "plain" ? Calls::plain : Calls::as_ours);
    std::uint64_t touched = 0;
    const double seconds = seconds_of([&] {
        for (int i = 0; i < pairs; ++i) touched += replay(*worker.bare, sent);
    });
    return {{"seconds", seconds}, {"statements", sent.size()}, {"touched", touched}};
}

constexpr Command commands[] = {
    {.name = "lock.ours", .run = lock_ours},
    {.name = "lock.bare", .run = lock_bare},
};

}  // namespace

std::span<const Command> lock_commands() { return commands; }

}  // namespace zmfb::bench
