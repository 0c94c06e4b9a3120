#include "tests/support/database.h"

#include <filesystem>
#include <stdexcept>

#include "tests/support/environment.h"
#include "tests/support/server.h"
#include "zmfbconn/database.h"

namespace zmfb::test {

namespace fs = std::filesystem;

namespace {

std::string attachable(const fs::path& file) {
    return on_server() ? Server::shared().name_of(file) : file.string();
}

// Pages go to the disk when the system likes: nothing here has to survive a power cut.
void switch_forced_writes_off(const std::string& database) {
    const char item[] = {isc_dpb_force_write, 1, 0};
    BareClient(database, std::string(item, sizeof item));
}

fs::path make_template() {
    const fs::path file = process_folder() / "template.fdb";
    const std::string name = attachable(file);
    must_succeed(create_database(name, sysdba, sysdba_password, functions_of_this_run()));
    switch_forced_writes_off(name);
    return file;
}

const fs::path& template_file() {
    static const fs::path file = make_template();
    return file;
}

}  // namespace

Database::Database() {
    const fs::path copy = folder() / "database.fdb";
    fs::copy_file(template_file(), copy);
    database_ = attachable(copy);
    forget_raised();
    clear_log();
}

Database::~Database() = default;

zmFBConn& Database::connection() {
    if (!connection_) {
        connection_.emplace(connect());
        forget_raised();
        clear_log();
    }
    return *connection_;
}

void Database::declare_module() const {
    const Status done = install_functions(database_, sysdba, sysdba_password, Functions::module);
    // A server that does not run them has them all the same.
    if (!done.message().starts_with("the driver's functions cannot be called")) must_succeed(done);
}

zmFBConn Database::connect() {
    zmFBConn made(database_, sysdba, sysdba_password);
    if (!made.isconnected()) ADD_FAILURE() << "not attached: " << last_engine_message() << '\n' << log_text();
    return made;
}

}  // namespace zmfb::test
