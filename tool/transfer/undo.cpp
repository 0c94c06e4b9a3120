#include "tool/transfer/undo.h"

#include <fmt/format.h>

#include <chrono>
#include <filesystem>
#include <functional>
#include <thread>

#include "host/text.h"
#include "tool/encoding.h"

namespace zmfb::tool {
namespace {

constexpr int attempts = 20;
constexpr auto pause = std::chrono::milliseconds(250);
constexpr std::string_view data_file_prefix = "/tmp/zmrdd";

bool is_table(zmFBConn& connection, const std::string& table) {
    return connection.call("istable", table).logical();
}

// The engine lets go of what a killed process had in use only when it notices its death.
bool drop_table(zmFBConn& connection, const std::string& table) {
    for (int attempt = 1; attempt <= attempts && is_table(connection, table); ++attempt) {
        if (attempt > 1) std::this_thread::sleep_for(pause);
        connection.call("executeupdate", "DROP TABLE " + table);
    }
    return !is_table(connection, table);
}

void drop_generator(zmFBConn& connection, const std::string& generator) {
    const Value found = connection.call("executequery",
                                        "select rdb$generator_id from rdb$generators where "
                                        "rdb$generator_name = '" +
                                            generator + "'");
    if (found.size() > 1) connection.call("executeupdate", "DROP GENERATOR " + generator);
}

}  // namespace

std::string external_file_of(zmFBConn& connection, const std::string& table) {
    const Value found =
        connection.call("executequery",
                        "select rdb$external_file from rdb$relations where rdb$external_file is not null and "
                        "rdb$relation_name = '" +
                            host::strtran(table, "'", "''").string() + "'");
    return found.size() < 2 ? "" : host::alltrim(found[2][1]).string();
}

void remove_files(const Begun& begun) {
    std::error_code ignored;
    if (!begun.data_file.empty()) std::filesystem::remove(begun.data_file, ignored);
    if (!begun.folder.empty()) std::filesystem::remove_all(begun.folder, ignored);
}

std::vector<std::string> undo(zmFBConn& connection, const Begun& begun) {
    std::vector<std::string> undone;
    const auto try_drop = [&](std::string_view kind, const std::string& table) {
        const bool gone = drop_table(connection, table);
        undone.push_back(fmt::format("{} {} {}", kind, to_utf8(table),
                                     gone ? "dropped" : "could not be dropped: it is still there"));
    };
    if (!begun.external.empty() && external_file_of(connection, begun.external) == begun.data_file) {
        try_drop("external table", begun.external);
    }
    if (!begun.table.empty()) {
        if (is_table(connection, begun.table)) try_drop("table", begun.table);
        for (const char* end : {"_I", "_D"}) drop_generator(connection, "G_" + begun.table + end);
    }
    if (begun.replaces) {
        undone.push_back(fmt::format(
            "the table {} that was there before is gone: it had been dropped already", to_utf8(begun.table)));
    }
    std::error_code ignored;
    if (!begun.data_file.empty() && std::filesystem::exists(begun.data_file, ignored)) {
        undone.push_back(fmt::format("data file {} removed", begun.data_file));
    }
    remove_files(begun);
    return undone;
}

bool drop_leftover(zmFBConn& connection, const std::string& external) {
    const std::string file = external_file_of(connection, external);
    if (!file.starts_with(data_file_prefix)) return false;
    connection.call("executeupdate", "DROP TABLE " + external);
    if (is_table(connection, external)) return false;
    std::error_code ignored;
    std::filesystem::remove(file, ignored);
    fmt::print(stderr, "note: dropped the external table {} that an earlier run had left\n",
               to_utf8(external));
    return true;
}

Exit undo_interrupted(const Options& options, int signal, std::string_view what, const Begun& begun) {
    std::vector<std::string> undone;
    if (begun.data_file.empty()) {
        remove_files(begun);
    } else {
        Session session(options);
        undone = undo(session.connection(), begun);
    }
    if (undone.empty()) undone.emplace_back("Nothing had been made yet.");
    std::string detail;
    for (const std::string& line : undone) detail += line + "\n";
    print_error(fmt::format("{} was interrupted, and undone", what), detail);
    return static_cast<Exit>(128 + signal);
}

}  // namespace zmfb::tool
