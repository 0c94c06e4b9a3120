#include "sql/driver_setup.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <fts.h>
#include <link.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <memory>
#include <system_error>

#include "zmfbconn/database.h"

namespace zmfb {

namespace fs = std::filesystem;

namespace {

constexpr std::string_view module_file = "zmrddudfs.so";
constexpr std::string_view external_file_folder = "/tmp";
constexpr std::string_view private_name = "zmfbconn";
constexpr std::string_view environment_prefix = "firebird-";

std::string environment_variable(const char* name) {
    const char* value = std::getenv(name);
    return value == nullptr ? "" : value;
}

// The folder of the file that this code was loaded from: the shared library, or a program.
fs::path own_folder() {
    Dl_info info{};
    void* map = nullptr;
    if (dladdr1(reinterpret_cast<const void*>(&environment_variable), &info, &map, RTLD_DL_LINKMAP) == 0)
        return {};
    // A program's own name in there is how it was called, wherever that was.
    const char* const library = static_cast<const link_map*>(map)->l_name;
    std::error_code error;
    const fs::path file = fs::canonical(*library == '\0' ? "/proc/self/exe" : library, error);
    return error ? fs::path() : file.parent_path();
}

// Where the module lies: where the user says; beside the shared library, or where it is from a program that
// is installed with it, so that an installation can be moved; where it was to be installed. "" when it is
// nowhere: databases whose functions are stored ones need none.
std::string udf_folder() {
    constexpr std::string_view folder_name = "zmfbconn";
    const fs::path own = own_folder();
    std::error_code ignored;
    for (const fs::path& folder :
         {fs::path(environment_variable("ZMFB_UDF_DIR")), own.empty() ? own : own / folder_name,
          own.empty() ? own : own / ZMFB_LIB_FROM_BIN / folder_name, fs::path(ZMFB_FULL_LIB) / folder_name}) {
        if (!folder.empty() && fs::exists(folder / module_file, ignored))
            return fs::canonical(folder, ignored).string();
    }
    return "";
}

// Makes a folder that nobody else can look into or write to, or makes one of this user so: the engine loads
// code from where the settings in it say. One that is somebody else's, or reached through a link, is none.
bool make_own_folder(const fs::path& folder) {
    mkdir(folder.c_str(), S_IRWXU);
    struct stat status {};
    if (lstat(folder.c_str(), &status) != 0 || !S_ISDIR(status.st_mode) || status.st_uid != geteuid())
        return false;
    if ((status.st_mode & (S_IRWXG | S_IRWXO)) == 0) return access(folder.c_str(), W_OK) == 0;
    return chmod(folder.c_str(), S_IRWXU) == 0;
}

// One that others could enter may have something of theirs in it: it is left as it is, and not used.
bool make_private_folder(const fs::path& folder) {
    struct stat status {};
    std::error_code error;
    const bool is_open = lstat(folder.c_str(), &status) == 0 && (status.st_mode & (S_IRWXG | S_IRWXO)) != 0;
    if (is_open && !fs::is_empty(folder, error)) return false;
    return make_own_folder(folder);
}

// What all that this user keeps private is in.
fs::path private_folder() {
    fs::path base = environment_variable("XDG_CACHE_HOME");
    if (base.empty() && !environment_variable("HOME").empty())
        base = fs::path(environment_variable("HOME")) / ".cache";
    std::error_code error;
    if (base.is_absolute()) {
        fs::create_directories(base, error);
        if (make_private_folder(base / private_name)) return base / private_name;
    }
    // A user without a home of its own.
    const fs::path own =
        fs::temp_directory_path(error) / (std::string(private_name) + "-" + std::to_string(geteuid()));
    return make_private_folder(own) ? own : fs::path();
}

// Makes the folders in the private one, or looks whether they are this user's with all that is in them.
Status make_own_folders(const fs::path& environment, const fs::path& locks) {
    for (const fs::path& folder : {environment, locks}) {
        if (!make_own_folder(folder))
            return Status(folder.string() + " is no folder of this user's own; remove it");
    }
    std::string path = environment.string();
    char* paths[] = {path.data(), nullptr};
    const std::unique_ptr<FTS, int (*)(FTS*)> walk(::fts_open(paths, FTS_PHYSICAL | FTS_NOCHDIR, nullptr),
                                                   ::fts_close);
    while (const FTSENT* const at = walk ? ::fts_read(walk.get()) : nullptr) {
        if (at->fts_info == FTS_DNR || at->fts_info == FTS_ERR)
            return Status("cannot look into " + path + ": " + std::generic_category().message(at->fts_errno));
        if (at->fts_info != FTS_NS && at->fts_statp->st_uid != geteuid())
            return Status(std::string(at->fts_path) + " belongs to another user; remove it");
    }
    return errno == 0 ? Status()
                      : Status("cannot look into " + path + ": " + std::generic_category().message(errno));
}

}  // namespace

bool sql::in_private_environment() {
    const fs::path environment = environment_variable("FIREBIRD");
    return environment.filename().string().starts_with(environment_prefix) &&
           environment.parent_path().filename().string().starts_with(private_name);
}

bool open_standard_descriptors() {
    for (const int descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        // The lowest that is free is taken. Who writes is told that nothing is written, as it would be.
        if (fcntl(descriptor, F_GETFD) < 0 && open("/dev/null", O_RDONLY) != descriptor) return false;
    }
    return true;
}

Status prepare_client(std::string_view database) {
    if (!open_standard_descriptors())
        return Status("cannot open /dev/null in the place of a closed descriptor");
    const bool other = std::getenv("FIREBIRD") != nullptr && !sql::in_private_environment();
    if (other || names_a_server(database)) return {};
    const std::string functions = udf_folder();
    const fs::path base = private_folder();
    if (base.empty()) return Status("there is no folder to make a private Firebird environment in");
    // One for each folder of functions, so that two installations do not rewrite each other's settings; but
    // their engines have to see each other's locks.
    const fs::path folder =
        base / (std::string(environment_prefix) + std::to_string(std::hash<std::string>()(functions)));
    const fs::path locks = base / "lock";
    Status done = make_own_folders(folder, locks);
    if (!done.ok()) return done;
    done = make_environment({.folder = folder.string(),
                             .udf_folder = functions,
                             .external_file_folders = {std::string(external_file_folder)},
                             .extra_settings = {}});
    if (!done.ok()) return done;
    setenv("FIREBIRD", folder.c_str(), 1);
    setenv("FIREBIRD_LOCK", locks.c_str(), 1);
    return done;
}

}  // namespace zmfb
