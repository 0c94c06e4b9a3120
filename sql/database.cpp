#include "sql/database.h"

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>

#include "sql/attachments.h"
#include "sql/client.h"
#include "sql/driver_setup.h"
#include "sql/lock_folder.h"
#include "sql/parameter_block.h"
#include "sql/state.h"
#include "zmfbconn/database.h"

namespace zmfb {

namespace {

constexpr char dialect_item[] = {isc_dpb_sql_dialect, 1, SQL_DIALECT_V6};

// A name without a folder may be one of the engine's aliases.
bool names_a_file(std::string_view database) {
    return !names_a_server(database) &&
           (sql::in_private_environment() || database.find('/') != std::string_view::npos);
}

// Gives a file its name, unless there is a file of that name.
bool give_name(const std::string& file, const std::string& name) {
    if (renameat2(AT_FDCWD, file.c_str(), AT_FDCWD, name.c_str(), RENAME_NOREPLACE) == 0) return true;
    // Not every file system can do that, and not every one has links.
    return errno == EINVAL && link(file.c_str(), name.c_str()) == 0 && unlink(file.c_str()) == 0;
}

// The engine leaves a new file to the system's own time.
bool bring_to_the_disk(const std::string& file) {
    const int descriptor = open(file.c_str(), O_RDONLY | O_CLOEXEC);
    const bool done = descriptor >= 0 && fsync(descriptor) == 0;
    if (descriptor >= 0) close(descriptor);
    return done;
}

using Fill = std::function<Status(const std::string&)>;

Status create(const std::string& database, std::string_view user, std::string_view password,
              const Fill& fill) {
    sql::require_not_cancelled();
    const sql::ParameterBlock block(user, password, "");
    std::string items = block.bytes();
    items.append(dialect_item, sizeof dialect_item);
    isc_db_handle handle{};
    ISC_STATUS* const status = sql::state().status;
    sql::client().create_database(status, database.c_str(), &handle, static_cast<short>(items.size()),
                                  items.data());
    Status done = sql::outcome();
    if (!done.ok()) return done;
    sql::client().detach_database(status, &handle);
    done = sql::outcome();
    return done.ok() && fill ? fill(database) : done;
}

// A file of this process that goes unless it got another name.
struct Unnamed {
    const std::string& name;
    ~Unnamed() { unlink(name.c_str()); }
};

// Nobody finds the file under its name before it is whole.
Status create_file(const std::string& file, std::string_view user, std::string_view password,
                   const Fill& fill) {
    namespace fs = std::filesystem;
    std::error_code error;
    const fs::path folder = fs::absolute(file, error).parent_path();
    if (faccessat(AT_FDCWD, (folder / ".").c_str(), W_OK | X_OK, AT_EACCESS) != 0)
        return Status("cannot create a database in " + folder.string() + ": " + std::strerror(errno));
    const std::string fresh = file + "." + std::to_string(getpid());
    for (const std::string& name : {file, fresh}) {
        if (fs::exists(fs::symlink_status(name, error))) return Status(name + ": File exists");
    }
    if (Status room = sql::LockFolder::of_this_process().look_for_room(); !room.ok()) return room;
    const Unnamed unnamed{fresh};
    Status done = create(fresh, user, password, fill);
    if (done.ok() && !bring_to_the_disk(fresh))
        return Status("the new database cannot be written: " + std::string(std::strerror(errno)));
    if (done.ok() && !give_name(fresh, file))
        done = Status("the new database cannot be called " + file + ": " + std::strerror(errno));
    return done;
}

}  // namespace

bool names_a_server(std::string_view database) {
    const std::size_t colon = database.find(':');
    return colon != std::string_view::npos && colon > 0 && colon + 1 < database.size();
}

Status sql::create_database(std::string_view database, std::string_view user, std::string_view password,
                            const std::function<Status(const std::string& name)>& fill) {
    if (const char* reason = sql::objection_to(database, user, password, "")) return Status(reason);
    const std::string name = sql::name_without_blanks(database);
    return (names_a_file(name) ? create_file : create)(name, user, password, fill);
}

std::string client_version() {
    std::array<char, 256> text{};
    sql::client().version(text.data());
    return text.data();
}

}  // namespace zmfb
