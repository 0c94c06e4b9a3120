#include <filesystem>
#include <stdexcept>

#include "bench/transfer/commands.h"

namespace zmfb::bench {

namespace {

// The DBF file is made in the current folder.
bool attach_and_exile(Worker& worker, const json& request, double& seconds) {
    worker.attach(request.at("database"));
    worker.ours->call("setfullpathdatfile", request.at("data_file").get<std::string>());
    std::filesystem::current_path(request.at("folder").get<std::string>());
    const std::string table = request.at("table");
    bool done = false;
    seconds = seconds_of([&] { done = worker.ours->call("exiletable", table).logical(); });
    worker.detach();
    return done;
}

json export_ours(Worker& worker, const json& request) {
    double seconds = 0;
    if (!attach_and_exile(worker, request, seconds)) throw std::runtime_error("exiletable answers .F.");
    return {{"seconds", seconds}};
}

json export_prepare(Worker& worker, const json& request) {
    double seconds = 0;
    return {{"statements", kept_back_by([&] { attach_and_exile(worker, request, seconds); })}};
}

constexpr Command commands[] = {
    {.name = "export.ours", .run = export_ours},
    {.name = "export.prepare", .run = export_prepare},
};

}  // namespace

std::span<const Command> export_commands() { return commands; }

}  // namespace zmfb::bench
