#include <fmt/format.h>

#include <chrono>
#include <thread>

#include "tests/support/worker/program.h"

namespace zmfb::test {
namespace {

bool ask(zmFBConn& connection, std::string_view method, const Value& table) {
    return connection.call(method, table).logical();
}

bool register_open(zmFBConn& connection, const Value& table, const Value& area, bool shared) {
    return connection.call("settableusedbyarea", true, table, area, shared).logical();
}

// Whether no other area has the table registered.
bool alone(zmFBConn& connection, const Value& table, const Value& area) {
    const Value rows = connection.call(
        "executequery",
        fmt::format("SELECT OPN_AREAID FROM RDDSYS_OPN WHERE OPN_TABLE = '{}' AND OPN_AREAID <> '{}'",
                    table.text(), area.text()));
    return rows.size() == 1;  // its header
}

bool open_exclusive(zmFBConn& connection, const Value& table, const Value& area) {
    if (!connection.call("settableaslocked", table, area).logical()) return false;
    return register_open(connection, table, area, false) && alone(connection, table, area);
}

bool open_shared(zmFBConn& connection, const Value& table, const Value& area) {
    return register_open(connection, table, area, true) && !ask(connection, "istableinexclusivemode", table);
}

bool open_after_asking(zmFBConn& connection, const Value& table, const Value& area, bool shared) {
    if (ask(connection, shared ? "istableinexclusivemode" : "istableinuse", table)) return false;
    return register_open(connection, table, area, shared);
}

}  // namespace

Value opentable(zmFBConn& connection, Args args) {
    const Value &table = args[0], &area = args[1];
    const bool shared = args[2].logical();
    if (!args[3].logical()) return open_after_asking(connection, table, area, shared);
    const bool opened =
        shared ? open_shared(connection, table, area) : open_exclusive(connection, table, area);
    if (!opened) closetable(connection, args);
    return opened;
}

Value closetable(zmFBConn& connection, Args args) {
    const Value &table = args[0], &area = args[1];
    // Either can be refused for a moment by the engine.
    const auto repeat = [](const auto& call) {
        while (!call()) std::this_thread::sleep_for(std::chrono::milliseconds(1));
    };
    repeat([&] { return connection.call("settableusedbyarea", false, table, area, true).logical(); });
    repeat([&] {
        return !connection.call("istablelockedbyuser", table, area).logical() ||
               connection.call("settableasunlocked", table, area).logical();
    });
    return true;
}

}  // namespace zmfb::test
