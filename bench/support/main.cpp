#include <CLI/CLI.hpp>

#include "bench/conn/commands.h"
#include "bench/locks/commands.h"
#include "bench/matrix/commands.h"
#include "bench/rdd/commands.h"
#include "bench/sql/commands.h"
#include "bench/support/build_type.h"
#include "bench/support/stage.h"
#include "bench/support/worker.h"
#include "bench/transfer/commands.h"

int main(int argc, char** argv) {
    CLI::App app("Does the work that the benchmarks time; bench/run.py drives it");
    bool smoke = false;
    app.add_flag("--smoke", smoke, "Run in a debug build too: nobody is going to look at the times");
    CLI11_PARSE(app, argc, argv);
    using namespace zmfb::bench;
    if (!fit_to_be_timed() && !smoke) return 2;
    const std::span<const Command> tables[] = {
        common_commands(), stage_commands(),  select_commands(),  typed_commands(), object_commands(),
        import_commands(), export_commands(), convert_commands(), lock_commands(),  crowd_commands(),
        matrix_commands(), area_commands(),   browse_commands(),  attach_commands()};
    const int status = serve(tables);
    clear_stage();
    return status;
}
