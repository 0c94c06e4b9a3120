#include <fmt/format.h>
#include <unistd.h>

#include <filesystem>

#include "tool/doctor/checks.h"
#include "tool/encoding.h"
#include "tool/hints.h"
#include "zmfbconn/database.h"

namespace zmfb::tool {

std::string_view state_name(State state) {
    constexpr std::array<std::string_view, 3> names{"ok", "note", "bad"};
    return names.at(static_cast<std::size_t>(state));
}

// The client library reads its settings at the first call: they come first.
Finding check_client_library(Session& session) {
    session.prepare_client();
    return {"client library", State::ok, client_version()};
}

Finding check_log(Session&) {
    const std::string path(log_file_path());
    const std::filesystem::path folder = std::filesystem::path(path).parent_path();
    const bool there = access(path.c_str(), F_OK) == 0;
    if (there && access(path.c_str(), W_OK) == 0) return {"log", State::ok, path + " can be written"};
    if (!there && access(folder.c_str(), W_OK) == 0) {
        return {"log", State::ok, path + " will be made by the first entry"};
    }
    return {"log", State::note,
            fmt::format("{} {}; nothing is logged", path,
                        there ? "cannot be written" : "is not there and cannot be made"),
            fmt::format("as root: touch {0}; chmod 666 {0}", path)};
}

Finding check_attach(Session& session) {
    constexpr std::string_view name = "attach";
    try {
        zmFBConn& connection = session.connection_to_any();
        return {std::string(name), State::ok,
                fmt::format("{} as {}", session.options().database,
                            to_utf8(connection.get("susername").string()))};
    } catch (const Failure& failure) {
        const std::string text = failure.message + (failure.detail.empty() ? "" : ": ") + failure.detail;
        return {std::string(name), State::bad, text,
                failure.hint.empty() ? hint_for(failure.detail) : failure.hint};
    }
}

}  // namespace zmfb::tool
