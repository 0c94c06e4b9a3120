/// What the driver needs, each looked at on its own.
#pragma once

#include <array>
#include <filesystem>
#include <string>
#include <string_view>

#include "tool/session.h"

namespace zmfb::tool {

/// How a check came out: all is well, worth knowing, or to be put right.
enum class State { ok, note, bad };

/// "ok", "note" or "bad".
std::string_view state_name(State state);

/// What a check found (UTF-8).
struct Finding {
    std::string check;
    State state = State::ok;
    std::string text;
    std::string advice = {};  ///< what to do about it
};

using Check = Finding (*)(Session&);

// Of this host.
Finding check_client_library(Session& session);
Finding check_log(Session& session);
/// Attaches. Bad when that fails; the other checks of the database cannot be made then.
Finding check_attach(Session& session);

// Of the engine; these may throw Failure.
Finding check_engine_version(Session& session);
Finding check_functions_declared(Session& session);
Finding check_functions_callable(Session& session);
Finding check_character_set(Session& session);
Finding check_data_file_folder(Session& session);
/// The same of a folder: whether this user can make data files there, and who else may change them.
Finding folder_finding(const std::filesystem::path& folder, bool on_server);
/// Makes an external table over a fresh data file, puts a row into it and reads it; takes both away again. No
/// worse than a note: two methods use such tables, and nothing else.
Finding check_external_tables(Session& session);

// Of the database; these may throw Failure.
Finding check_system_tables(Session& session);
Finding check_dead_processes(Session& session);
Finding check_tables(Session& session);
/// Tables of imports that run, or were cut off.
Finding check_imports(Session& session);
/// The generators that count the records of each table, against the records.
Finding check_record_counts(Session& session);
Finding check_leftovers(Session& session);
/// Generators of the driver's shape whose table is gone.
Finding check_generators(Session& session);
/// What this user may not do with the tables of the driver.
Finding check_rights(Session& session);
Finding check_validity(Session& session);

inline constexpr std::array<Check, 2> checks_before_attaching{check_client_library, check_log};
inline constexpr std::array<Check, 15> checks_of_database{check_engine_version,
                                                          check_functions_declared,
                                                          check_functions_callable,
                                                          check_character_set,
                                                          check_data_file_folder,
                                                          check_external_tables,
                                                          check_system_tables,
                                                          check_dead_processes,
                                                          check_tables,
                                                          check_imports,
                                                          check_record_counts,
                                                          check_leftovers,
                                                          check_generators,
                                                          check_rights,
                                                          check_validity};

}  // namespace zmfb::tool
