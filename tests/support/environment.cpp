#include "tests/support/environment.h"

#include <ibase.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <stdexcept>
#include <string_view>

#include "tests/support/server.h"
#include "zmfbconn/database.h"

namespace zmfb::test {

namespace fs = std::filesystem;

namespace {

// Memory, where there is enough of it: a database that is made and thrown away need not wait for a disk.
fs::path scratch_folder() {
    constexpr std::uintmax_t enough = std::uintmax_t{1} << 30;
    const fs::path memory = "/dev/shm";
    std::error_code error;
    const fs::space_info space = fs::space(memory, error);
    return !error && space.available >= enough && access(memory.c_str(), W_OK) == 0
               ? memory
               : fs::temp_directory_path();
}

}  // namespace

const fs::path& process_folder() {
    static const fs::path folder = [] {
        std::string name = (scratch_folder() / "zmfb-test-XXXXXX").string();
        if (mkdtemp(name.data()) == nullptr) throw std::runtime_error("cannot make " + name);
        return fs::path(name);
    }();
    return folder;
}

std::string udf_folder() { return ZMFB_UDF_FOLDER; }

void must_succeed(const Status& done) {
    if (!done.ok()) throw std::runtime_error(done.message());
}

void set_up_environment() {
    const std::string folder = process_folder() / "environment";
    must_succeed(make_environment({.folder = folder,
                                   .udf_folder = udf_folder(),
                                   .external_file_folders = {process_folder(), "/tmp"},
                                   .extra_settings = {}}));
    use_environment(folder);
    setenv("ZMFB_TEST_LOG", (process_folder() / "zmrddfire.log").c_str(), 0);
}

void tear_down_environment(bool keep) {
    Server::stop_shared();
    fb_shutdown(0, fb_shutrsn_app_stopped);
    if (keep) {
        std::printf("kept: %s\n", process_folder().c_str());
        return;
    }
    std::error_code ignored;
    fs::remove_all(process_folder(), ignored);
}

Functions functions_of_this_run() {
    const char* which = std::getenv("ZMFB_TEST_FUNCTIONS");
    return which != nullptr && std::string_view(which) == "module" ? Functions::module : Functions::by_engine;
}

bool on_server() {
    const char* where = std::getenv("ZMFB_TEST_WHERE");
    return where != nullptr && std::string_view(where).ends_with("server");
}

}  // namespace zmfb::test
