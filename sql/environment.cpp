#include <dlfcn.h>
#include <glob.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <optional>
#include <system_error>

#include "zmfbconn/database.h"

namespace zmfb {

namespace fs = std::filesystem;

namespace {

constexpr std::string_view plugin_configuration =
    "# Firebird plugins of a private environment: the defaults\n";

// The folder of Firebird's plugins and character sets: <library folder>/firebird/<version> where a
// distribution installs the client library, the folder above it where Firebird's own installer does.
std::optional<fs::path> firebird_folder() {
    Dl_info info{};
    void* const symbol = dlsym(RTLD_DEFAULT, "isc_attach_database");
    if (symbol == nullptr || dladdr(symbol, &info) == 0) return std::nullopt;
    std::error_code ignored;
    const fs::path library = fs::canonical(info.dli_fname, ignored).parent_path();
    glob_t found{};
    const bool is_there = glob((library / "firebird/*/plugins").c_str(), GLOB_ONLYDIR, nullptr, &found) == 0;
    const fs::path plugins = is_there ? found.gl_pathv[0] : "";
    globfree(&found);
    if (fs::is_directory(plugins, ignored)) return plugins.parent_path();
    if (fs::is_directory(library.parent_path() / "plugins", ignored)) return library.parent_path();
    return std::nullopt;
}

// A path that firebird.conf cannot carry: it separates with ";", comments with "#" and fills in "$(...)".
bool unusable(std::string_view path) {
    return !path.starts_with('/') || path.find_first_of(";#\"\n\r") != std::string_view::npos ||
           path.find("$(") != std::string_view::npos;
}

std::string configuration(const EnvironmentOptions& options) {
    // Processes that release and take one lock at the same moment can deadlock in its index; the engine looks
    // for that after ten seconds by default, and until then both stand still.
    std::string text =
        "# Firebird settings of a private environment\nServerMode = SuperClassic\nDeadlockTimeout = 1\n";
    if (!options.udf_folder.empty()) text += "UdfAccess = Restrict " + options.udf_folder + "\n";
    if (!options.external_file_folders.empty()) {
        text += "ExternalFileAccess = Restrict ";
        for (const std::string& folder : options.external_file_folders) {
            if (&folder != &options.external_file_folders.front()) text += ';';
            text += folder;
        }
        text += '\n';
    }
    for (const std::string& line : options.extra_settings) text += line + "\n";
    return text;
}

// Written under another name first, so that a process that reads the file meanwhile never finds half of it.
Status write_when_different(const fs::path& file, std::string_view content) {
    std::ifstream present(file, std::ios::binary);
    if (present && std::string(std::istreambuf_iterator<char>(present), {}) == content) return {};
    const fs::path fresh = file.string() + "." + std::to_string(getpid());
    std::ofstream out(fresh, std::ios::binary);
    out << content;
    out.close();
    std::error_code error;
    if (out) fs::rename(fresh, file, error);
    return out && !error ? Status() : Status("cannot write " + file.string());
}

Status link_folder(const fs::path& link, const fs::path& target) {
    std::error_code error;
    if (fs::read_symlink(link, error) == target) return {};
    fs::remove(link, error);
    fs::create_directory_symlink(target, link, error);
    // Another process may have made it in between.
    if (error && fs::read_symlink(link, error) != target)
        return Status("cannot make the link " + link.string());
    return {};
}

// The engine takes its character sets from <environment>/intl only, and refuses a module that is reached
// through a link. Where Firebird's own installer puts it, it knows them by their settings, and its messages
// by a file in its folder. A client may have none of these.
constexpr const char* copied_files[] = {"intl/libfbintl.so", "intl/fbintl.conf", "firebird.msg"};

Status copy_when_newer(const fs::path& source, const fs::path& copy) {
    std::error_code error;
    if (!fs::exists(source, error)) return {};
    fs::create_directory(copy.parent_path(), error);
    const auto size = fs::file_size(copy, error);
    if (!error && size == fs::file_size(source, error) &&
        fs::last_write_time(copy, error) >= fs::last_write_time(source, error)) {
        return {};
    }
    const fs::path fresh = copy.string() + "." + std::to_string(getpid());
    fs::copy_file(source, fresh, fs::copy_options::overwrite_existing, error);
    if (!error) fs::rename(fresh, copy, error);
    return error ? Status("cannot copy " + source.string() + ": " + error.message()) : Status();
}

Status take_from_firebird(const fs::path& folder, const std::string& named) {
    const std::optional<fs::path> firebird = named.empty() ? firebird_folder() : fs::path(named);
    if (!firebird) return Status("cannot find the plugin folder of the Firebird client library");
    Status done = link_folder(folder / "plugins", *firebird / "plugins");
    for (const char* file : copied_files) {
        if (done.ok()) done = copy_when_newer(*firebird / file, folder / file);
    }
    return done;
}

}  // namespace

Status make_environment(const EnvironmentOptions& options) {
    if (unusable(options.folder))
        return Status("not usable as the folder of an environment: " + options.folder);
    if (!options.udf_folder.empty() && unusable(options.udf_folder))
        return Status("not usable as a folder of external functions: " + options.udf_folder);
    for (const std::string& folder : options.external_file_folders) {
        if (unusable(folder)) return Status("not usable as a folder of external files: " + folder);
    }
    const fs::path folder = options.folder;
    std::error_code error;
    fs::create_directories(folder / "lock", error);
    if (error) return Status("cannot make the folder " + (folder / "lock").string() + ": " + error.message());
    Status done = write_when_different(folder / "firebird.conf", configuration(options));
    if (done.ok()) done = write_when_different(folder / "plugins.conf", plugin_configuration);
    if (done.ok()) done = take_from_firebird(folder, options.firebird_folder);
    return done;
}

void use_environment(const std::string& folder) {
    setenv("FIREBIRD", folder.c_str(), 1);
    setenv("FIREBIRD_LOCK", (folder + "/lock").c_str(), 1);
}

}  // namespace zmfb
