#include "bench/support/stage.h"

#include "tests/support/bare_client.h"
#include "tests/support/environment.h"
#include "tests/support/server.h"
#include "zmfbconn/database.h"

namespace zmfb::bench {

namespace {

bool is_set = false;

// Pages go to the disk when the system likes.
std::string make_empty_database() {
    const std::string file = test::process_folder() / "empty.fdb";
    test::must_succeed(create_database(file, test::sysdba, test::sysdba_password));
    const char no_forced_writes[] = {isc_dpb_force_write, 1, 0};
    test::BareClient(file, std::string(no_forced_writes, sizeof no_forced_writes));
    return file;
}

json stage(Worker&, const json& request) {
    test::set_up_environment();
    is_set = true;
    json made = {{"folder", test::process_folder()},
                 {"environment", test::process_folder() / "environment"},
                 {"empty", make_empty_database()},
                 {"client", client_version()}};
    if (request.at("server")) {
        made["host"] = test::Server::shared().name_of("");
        made["server_process"] = test::Server::shared().pid();
    }
    return made;
}

constexpr Command commands[] = {{.name = "stage", .run = stage}};

}  // namespace

std::span<const Command> stage_commands() { return commands; }

void clear_stage() {
    if (is_set) test::tear_down_environment(false);
}

}  // namespace zmfb::bench
