#include <fmt/format.h>

#include <stdexcept>

#include "bench/transfer/commands.h"
#include "tests/support/dbf_builder.h"

namespace zmfb::bench {

namespace {

// Some numbers and dates are missing, as they are everywhere.
json make_dbf(Worker&, const json& request) {
    test::DbfBuilder dbf;
    dbf.field("ID", 'N', 8)
        .field("NAME", 'C', 30)
        .field("CITY", 'C', 12)
        .field("CREDIT", 'N', 10, 2)
        .field("BORN", 'D', 8);
    constexpr std::string_view cities[] = {"Lisboa", "Porto", "Santarem", "Vila Nova"};
    const int records = request.at("records");
    for (int i = 1; i <= records; ++i) {
        const std::string_view city = cities[i % 4];
        const int credit = i % 1000000 * 37 % 1000000;
        dbf.raw_record(fmt::format(" {:8}{:<30}{:<12}{:7}.{:02}{:04}{:02}{:02}", i,
                                   fmt::format("Name {} of {}", i % 100003 * 7, i), city, credit / 100,
                                   credit % 100, 1930 + i % 90, 1 + i % 12, 1 + i % 28));
    }
    dbf.write(request.at("file"));
    return json::object();
}

json import_ours(Worker& worker, const json& request) {
    worker.attach(request.at("database"));
    worker.ours->call("setfullpathdatfile", request.at("data_file").get<std::string>());
    const std::string dbf = request.at("dbf");
    bool done = false;
    const double seconds = seconds_of([&] { done = worker.ours->call("bringdbf", dbf).logical(); });
    worker.detach();
    if (!done) throw std::runtime_error("bringdbf answers .F.");
    return {{"seconds", seconds}};
}

json import_prepare(Worker& worker, const json& request) {
    worker.attach(request.at("database"));
    worker.ours->call("setfullpathdatfile", request.at("data_file").get<std::string>());
    const std::string dbf = request.at("dbf");
    const std::vector<std::string> statements = kept_back_by([&] { worker.ours->call("bringdbf", dbf); });
    worker.detach();
    return {{"statements", statements}};
}

constexpr Command commands[] = {
    {.name = "make_dbf", .run = make_dbf},
    {.name = "import.ours", .run = import_ours},
    {.name = "import.prepare", .run = import_prepare},
};

}  // namespace

std::span<const Command> import_commands() { return commands; }

}  // namespace zmfb::bench
