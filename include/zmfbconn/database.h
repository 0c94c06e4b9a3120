/// Databases as files and servers: creating one, the private environment of the embedded engine, what the
/// engine said.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "status.h"

#pragma GCC visibility push(default)

namespace zmfb {

/// What a private environment of the Firebird client is made with. Paths are absolute.
struct EnvironmentOptions {
    std::string folder;      ///< where it is made; created when absent
    std::string udf_folder;  ///< the one folder that external functions are loaded from
    std::vector<std::string> external_file_folders;  ///< where external tables may have their files
    std::vector<std::string> extra_settings;         ///< further lines of firebird.conf
    /// That of Firebird's plugins and character sets, when they are not beside the client library: a server's
    /// environment may be made by a program of another architecture.
    std::string firebird_folder = {};
};

/// Makes the folder of a private environment: firebird.conf, plugins.conf, the link to the client's plugins
/// and a lock folder. Several processes may share one database of the embedded engine in it. An
/// environment that is there already is brought up to date, and left alone when nothing
/// differs.
Status make_environment(const EnvironmentOptions& options);

/// Makes this process use it: sets FIREBIRD and FIREBIRD_LOCK. Must come before the first call of the client
/// library.
void use_environment(const std::string& folder);

/// Opens on /dev/null each of the descriptors 0, 1 and 2 that is closed: they would go to what is opened
/// next, which are files of the engine, and what a program prints would be written into them. Writing to them
/// fails afterwards as it does before.
/// prepare_client() does it first of all; a program that opens something before that does it itself. Returns
/// whether all are open.
bool open_standard_descriptors();

/// Makes this process ready to attach to `database`. Nothing else is done for a server, or where FIREBIRD is
/// set already to an environment that was not made here; else the user's own private environment is made,
/// when it is absent, and used. Its engine loads the module of functions from the folder of the environment
/// variable ZMFB_UDF_DIR, or from where it is installed beside the shared library or the program, and none
/// where there is no module; it lets external tables have their files under /tmp. The engine keeps its locks
/// on all databases in one folder of the user's, so that this user's programs can have one open at once;
/// attaching fails while a process has it open whose engine keeps its locks elsewhere. Must come before the
/// first call of the client library.
Status prepare_client(std::string_view database);

/// Whether a database name has a host part ("server:/path", "server/port:/path") and so means a server.
bool names_a_server(std::string_view database);

/// What the eleven functions are that the driver's statements call in a database.
enum class Functions {
    by_engine,  ///< stored ones from Firebird 3.0 on, the module's before
    stored,     ///< stored functions: they need nothing on the server, but Firebird 3.0
    module,     ///< those of the module zmrddudfs, which the server has to have, and to allow (UdfAccess)
};

/// Creates a database of dialect 3 without a default character set, ready for the driver: it has its
/// functions, and an object has been attached once, which makes the system tables. A local file that exists
/// is refused and left alone. A new one gets its name when all that is done: until then the number of this
/// process stands behind it, and it is removed when anything fails or is thrown.
Status create_database(std::string_view database, std::string_view user, std::string_view password,
                       Functions functions = Functions::by_engine);

/// Runs `script`, statements that each end with ";" at the end of a line, or with what "SET TERM" says, in
/// `database`, each in a transaction of its own, up to the first that fails.
Status run_script(std::string_view database, std::string_view user, std::string_view password,
                  std::string_view script);

/// Puts the driver's functions into `database`, all or none, in the place of those that it has. Stored ones
/// take the place of the module's with views, indexes, columns and rights on them as they are; the way back
/// keeps the rights, and is refused while anything in the database uses a stored one. In the end one is
/// called: a server that does not run the module's lets them be declared, but that fails, and they are there.
Status install_functions(std::string_view database, std::string_view user, std::string_view password,
                         Functions functions = Functions::by_engine);

/// The version of the Firebird client library, such as "LI-V6.3.11.33703 Firebird 3.0".
std::string client_version();

/// The engine's full message, all its lines, of what failed last in the client during the last call that
/// reached it: a method, the attaching of an object, or a function of this header. "" when nothing failed in
/// that call, so that a query which came to its end is told from one that stopped half-way. Calls that do not
/// reach the client, such as isconnected(), leave it as it is; those that an error block makes belong to the
/// call that raised. Texts returned and logged by methods hold only the SQLCODE's own text.
std::string last_engine_message();

}  // namespace zmfb

#pragma GCC visibility pop
