#include <fmt/format.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>

#include "host/file.h"
#include "host/text.h"
#include "tool/catalog.h"
#include "tool/character_set.h"
#include "tool/doctor/checks.h"
#include "tool/encoding.h"
#include "tool/functions.h"
#include "tool/hints.h"
#include "tool/import/new_table.h"
#include "zmfbconn/database.h"
#include "zmfbconn/methods.h"

namespace zmfb::tool {
namespace {

std::string data_file(zmFBConn& connection) { return connection(m::getfullpathdatfile); }

// A data file and an external table over it; both go with it.
class ExternalTable {
  public:
    explicit ExternalTable(zmFBConn& connection)
        : connection_(connection),
          path_(data_file(connection)),
          name_("EXT_DOCTOR_" + std::to_string(getpid())) {
        const host::Value handle = host::fcreate(path_, 666);
        created_ = handle.integer() >= 0;
        host::fclose(handle);
    }
    ~ExternalTable() {
        if (connection_(m::istable, name_)) connection_(m::droponlytable, name_);
        if (created_) host::ferase(path_);
    }
    ExternalTable(const ExternalTable&) = delete;
    ExternalTable& operator=(const ExternalTable&) = delete;

    // Makes the table, inserts a row and reads it back. Another one goes before it: where a table was being
    // made when the engine was killed, one without pages of its own would do harm.
    Status try_out() {
        if (!created_) return Status(fmt::format("cannot make {}", path_));
        take_harm_away();
        if (!connection_(m::createtableexternal, name_, Structure{{"TEXT", "C", 8, 0}}, path_))
            return Status(last_engine_message());
        const std::string insert = fmt::format("INSERT INTO {} (TEXT) VALUES ('readable')", name_);
        if (!connection_(m::executeupdate, insert).ok()) return Status(last_engine_message());
        const auto rows = rows_of<std::string>(connection_, fmt::format("SELECT TEXT FROM {}", name_));
        if (rows.size() != 1 || std::get<0>(rows[0]) != "readable")
            return Status("the row did not come back");
        std::error_code none;
        if (std::filesystem::file_size(path_, none) == 0)
            return Status(fmt::format("the engine's {} is another file than this program's", path_));
        return {};
    }

  private:
    // Where a table was being made when the engine was killed, an external one, which has no pages of its
    // own, would damage the database: another one goes before it. What keeps that from being made keeps this
    // one too.
    void take_harm_away() try {
        take_number_away(connection_, "DOCTOR_" + std::to_string(getpid()));
    } catch (const SqlError&) {
    }

    zmFBConn& connection_;
    std::string path_;
    std::string name_;
    bool created_ = false;
};

}  // namespace

Finding check_engine_version(Session& session) {
    return {"engine", State::ok, "Firebird " + engine_version(session.connection_to_any())};
}

Finding check_functions_declared(Session& session) {
    zmFBConn& connection = session.connection_to_any();
    if (const std::optional<Functions> functions = functions_of(connection)) {
        return {
            "functions declared", State::ok,
            functions == Functions::stored ? "all eleven, stored ones" : "all eleven, those of the module"};
    }
    return {"functions declared", State::bad, functions_problem(connection), "zmfb functions stored"};
}

Finding check_functions_callable(Session& session) {
    zmFBConn& connection = session.connection_to_any();
    std::string failed;
    std::string said;
    for (const DriverFunction& function : driver_functions) {
        try {
            rows_of<int>(connection,
                         fmt::format("SELECT IIF({} IS NULL, 0, 1) FROM RDB$DATABASE", function.call));
        } catch (const Failure& failure) {
            if (failure.detail.find("Function unknown") != std::string::npos) continue;
            failed += (failed.empty() ? "" : ", ") + std::string(function.name);
            said = failure.detail;
        }
    }
    if (failed.empty()) return {"functions callable", State::ok, "every one that is there"};
    const std::string hint = hint_for(said);
    return {"functions callable", State::bad, fmt::format("{} failed: {}", failed, said),
            hint.empty() ? with_pages("docs/deployment.md says what the functions need") : hint};
}

Finding check_character_set(Session& session) {
    const CharacterSet set = default_character_set(session.connection_to_any());
    const std::string problem = width_problem(set);
    if (problem.empty()) return {"character set", State::ok, set.name + ", a byte for each character"};
    if (set.name == "UTF8") {
        return {"character set", State::note,
                "UTF8: the tool converts the texts of imports and queries; methods want a set of one byte a "
                "character"};
    }
    return {"character set", State::bad, problem,
            "\"zmfb create\" makes a database without a set; isql-fb -x shows the statements that make the "
            "tables of this one"};
}

Finding check_data_file_folder(Session& session) {
    const std::filesystem::path file = data_file(session.connection_to_any());
    return folder_finding(file.parent_path(), names_a_server(session.options().database));
}

Finding check_external_tables(Session& session) {
    const Status tried = ExternalTable(session.connection_to_any()).try_out();
    if (tried.ok()) return {"external tables", State::ok, "a row was written and read"};
    const std::string hint = hint_for(tried.message());
    return {"external tables", State::note, tried.message(),
            fmt::format("only bringdbf and exiletable use them: {}",
                        hint.empty() ? with_pages("docs/deployment.md says what they need") : hint)};
}

}  // namespace zmfb::tool
