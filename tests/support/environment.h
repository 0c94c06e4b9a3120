/// What a test process works in: a folder of its own under the temporary folder, with the private Firebird
/// environment in it. It is removed at the end, and kept (and named on standard output) when a test failed.
#pragma once

#include <filesystem>
#include <string>

#include "zmfbconn/database.h"

namespace zmfb::test {

inline constexpr const char* sysdba = "SYSDBA";
inline constexpr const char* sysdba_password = "masterkey";

/// The folder of this process; made at the first call.
const std::filesystem::path& process_folder();

/// The folder that holds the UDF module of this build.
std::string udf_folder();

/// Throws std::runtime_error with the message of what failed.
void must_succeed(const Status& done);

/// Makes the private environment and turns the client library to it. Must come before the library's first
/// call.
void set_up_environment();

/// Removes the folder of this process, or says where it is kept.
void tear_down_environment(bool keep);

/// What the functions are in the databases of the tests: those of the module with ZMFB_TEST_FUNCTIONS=module.
Functions functions_of_this_run();

/// Whether this run has its databases on a private server (ZMFB_TEST_WHERE=server, bare_server or
/// given_server) and not on the embedded engine.
bool on_server();

}  // namespace zmfb::test
