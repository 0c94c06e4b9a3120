/// Which Firebird the private servers of the tests are, and the folders that they start in.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace zmfb::test {

struct ServerSetup {
    std::string firebird;               ///< the folder of an unpacked Firebird; "" for that of the machine
    bool as_it_comes = false;           ///< with the settings it comes with: no modules, no external files
    std::vector<std::string> settings;  ///< further lines of its firebird.conf
};

/// What the run says by ZMFB_TEST_WHERE: for "given_server" the Firebird that ZMFB_TEST_FIREBIRD names, as it
/// comes; for "bare_server" that of the machine as it comes; else that of the machine, which loads the module
/// of this build and lets external tables have their files in the process folder and in /tmp.
ServerSetup setup_of_this_run();

/// Why this run cannot be: the server that it asks for is not given. "" when it can.
std::string why_no_server();

/// Why no table of this run can be an external one, as those are that bringdbf and exiletable make; "" when
/// they can.
std::string why_no_external_files();
/// Why no function of this run can be the module's; "" when it can.
std::string why_no_module();

/// Fills the folder that a server of this kind starts in, with its settings and its security database.
void make_server_folder(const std::filesystem::path& folder, int port, const ServerSetup& setup);

std::string server_program(const ServerSetup& setup);
/// What the environment of a program of this kind has to have, "NAME=value" each.
std::vector<std::string> server_environment(const std::filesystem::path& folder, const ServerSetup& setup);

}  // namespace zmfb::test
