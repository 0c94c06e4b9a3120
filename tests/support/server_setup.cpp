#include "tests/support/server_setup.h"

#include <cstdlib>
#include <fstream>
#include <stdexcept>
#include <string_view>

#include "tests/support/environment.h"
#include "tests/support/process.h"
#include "zmfbconn/database.h"

namespace zmfb::test {

namespace fs = std::filesystem;

namespace {

// Where Debian has what belongs to the server of the machine.
constexpr const char* machines_server = "/usr/sbin/firebird";
constexpr const char* machines_isql = "/usr/bin/isql-fb";
constexpr const char* machines_settings = "/etc/firebird/3.0/firebird.conf";
constexpr const char* machines_security_script = "/usr/share/firebird/3.0/security.sql";

constexpr const char* machines_security_database = "security3.fdb";

std::string environment_variable(const char* name) {
    const char* const value = std::getenv(name);
    return value == nullptr ? "" : value;
}

std::vector<std::string> lines_of_settings(int port, const ServerSetup& setup) {
    std::vector<std::string> lines{"RemoteServicePort = " + std::to_string(port),
                                   "RemoteBindAddress = 127.0.0.1"};
    lines.insert(lines.end(), setup.settings.begin(), setup.settings.end());
    return lines;
}

void run_isql(const fs::path& folder, const ServerSetup& setup, const std::string& script) {
    const std::string isql = setup.firebird.empty() ? machines_isql : setup.firebird + "/bin/isql";
    const Finished made = run({isql, "-q", "-b", "-user", sysdba}, script, server_environment(folder, setup));
    if (made.status != 0) throw std::runtime_error("security database: " + made.out + made.err);
}

void add_lines(const fs::path& file, const std::vector<std::string>& lines) {
    std::ofstream out(file, std::ios::app);
    out << '\n';
    for (const std::string& line : lines) out << line << '\n';
    if (!out.flush()) throw std::runtime_error("cannot write " + file.string());
}

void take_from_the_machine(const fs::path& folder, const ServerSetup& setup, std::vector<std::string> lines) {
    lines.push_back("SecurityDatabase = " + (folder / machines_security_database).string());
    EnvironmentOptions options;
    options.folder = folder;
    options.firebird_folder = ZMFB_SERVER_FOLDER;
    if (!setup.as_it_comes) {
        options.udf_folder = ZMFB_SERVER_UDF_FOLDER;
        options.external_file_folders = {process_folder(), "/tmp"};
        options.extra_settings = lines;
    }
    must_succeed(make_environment(options));
    if (setup.as_it_comes) {
        fs::copy_file(machines_settings, folder / "firebird.conf", fs::copy_options::overwrite_existing);
        add_lines(folder / "firebird.conf", lines);
    }
    run_isql(folder, setup,
             "create database '" + (folder / machines_security_database).string() +
                 "' user SYSDBA;\ncommit;\ninput '" + machines_security_script + "';\ncommit;\n");
}

// The engine takes its character sets from no link, and the settings are to be changed: those are copied.
void copy_unpacked(const fs::path& folder, const ServerSetup& setup, std::vector<std::string> lines) {
    if (!setup.as_it_comes) {
        lines.emplace_back("UdfAccess = Restrict " ZMFB_SERVER_UDF_FOLDER);
        lines.push_back("ExternalFileAccess = Restrict " + process_folder().string() + ";/tmp");
    }
    fs::create_directories(folder / "lock");
    for (const auto& entry : fs::directory_iterator(setup.firebird)) {
        const fs::path copy = folder / entry.path().filename();
        if (entry.is_directory() && copy.filename() != "intl") {
            fs::create_directory_symlink(entry.path(), copy);
        } else {
            fs::copy(entry.path(), copy, fs::copy_options::recursive);
        }
    }
    add_lines(folder / "firebird.conf", lines);
}

fs::path security_database(const fs::path& folder) {
    for (const auto& entry : fs::directory_iterator(folder)) {
        const std::string name = entry.path().filename();
        if (name.starts_with("security") && name.ends_with(".fdb")) return entry.path();
    }
    throw std::runtime_error("no security database in " + folder.string());
}

}  // namespace

ServerSetup setup_of_this_run() {
    const std::string where = environment_variable("ZMFB_TEST_WHERE");
    ServerSetup setup;
    setup.as_it_comes = where == "given_server" || where == "bare_server";
    if (where == "given_server") setup.firebird = fs::absolute(environment_variable("ZMFB_TEST_FIREBIRD"));
    return setup;
}

std::string why_no_server() {
    const std::string where = environment_variable("ZMFB_TEST_WHERE");
    if (where == "given_server" && environment_variable("ZMFB_TEST_FIREBIRD").empty())
        return "ZMFB_TEST_FIREBIRD names no folder of an unpacked Firebird";
    if (where == "bare_server" && environment_variable("ZMFB_TEST_BARE").empty())
        return "ZMFB_TEST_BARE does not ask for the machine's server as it was installed";
    return "";
}

std::string why_no_external_files() {
    return setup_of_this_run().as_it_comes ? "needs external files, as bringdbf and exiletable do: the "
                                             "server allows none, as it was installed"
                                           : "";
}

std::string why_no_module() {
    return setup_of_this_run().as_it_comes
               ? "needs functions of the module: the server runs none, as it was installed"
               : "";
}

void make_server_folder(const fs::path& folder, int port, const ServerSetup& setup) {
    const auto make = setup.firebird.empty() ? take_from_the_machine : copy_unpacked;
    make(folder, setup, lines_of_settings(port, setup));
    run_isql(folder, setup,
             "connect '" + security_database(folder).string() + "';\ncreate or alter user " + sysdba +
                 " password '" + sysdba_password + "';\ncommit;\n");
}

std::string server_program(const ServerSetup& setup) {
    return setup.firebird.empty() ? machines_server : setup.firebird + "/bin/firebird";
}

std::vector<std::string> server_environment(const fs::path& folder, const ServerSetup& setup) {
    std::vector<std::string> environment{"FIREBIRD=" + folder.string(),
                                         "FIREBIRD_LOCK=" + (folder / "lock").string()};
    if (!setup.firebird.empty()) environment.push_back("LD_LIBRARY_PATH=" + setup.firebird + "/lib");
    return environment;
}

}  // namespace zmfb::test
