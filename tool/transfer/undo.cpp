#include "tool/transfer/undo.h"

#include <fmt/format.h>

#include <chrono>
#include <filesystem>
#include <thread>

#include "tool/catalog.h"
#include "tool/encoding.h"
#include "tool/interrupt.h"
#include "zmfbconn/database.h"
#include "zmfbconn/methods.h"

namespace zmfb::tool {
namespace {

constexpr int attempts = 20;
constexpr auto pause = std::chrono::milliseconds(250);
constexpr std::string_view data_file_prefix = "/tmp/zmrdd";

// A refused question is no answer: it throws Failure.
bool is_table(zmFBConn& connection, const std::string& table) {
    return is_there(connection, ObjectKind::relation, Name(table));
}

// The engine lets go of what a killed process had in use only when it notices its death.
bool drop_table(zmFBConn& connection, const std::string& table) {
    for (int attempt = 1;; ++attempt) {
        static_cast<void>(connection(m::executeupdate, "DROP TABLE " + table));
        const bool in_use = last_engine_message().find("is in use") != std::string::npos;
        if (!is_table(connection, table)) return true;
        if (!in_use || attempt == attempts) return false;
        std::this_thread::sleep_for(pause);
    }
}

/// Takes back, and keeps in words, what was taken back and what was not.
class Undo {
  public:
    explicit Undo(const Begun& begun) : begun_(begun) {}

    void run(const Options& options) {
        if (!begun_.external.empty() || !begun_.replaced.empty()) undo_in_database(options);
        std::error_code ignored;
        if (!begun_.data_file.empty() && std::filesystem::exists(begun_.data_file, ignored)) {
            said_ += fmt::format("data file {} removed\n", begun_.data_file);
        }
        remove_files(begun_);
    }
    /// A line each.
    [[nodiscard]] const std::string& said() const { return said_; }
    [[nodiscard]] bool all_undone() const { return all_undone_; }

  private:
    void undo_in_database(const Options& options) {
        try {
            Session session(options);
            session.show_raised(Raised::silent);
            zmFBConn& connection = session.connection_to_any();
            if (!begun_.external.empty()) drop_objects(connection);
            tell_of_replaced(connection);
        } catch (const Failure& failure) {
            said_ += fmt::format("{}\n{}\n", failure.message, failure.detail);
            if (!external_done_ && !begun_.external.empty()) not_dropped("external table", begun_.external);
            if (!begun_.table.empty()) not_dropped("table", begun_.table);
        }
    }
    void drop_objects(zmFBConn& connection) {
        if (external_file_of(connection, begun_.external) == begun_.data_file) {
            drop(connection, "external table", begun_.external);
        }
        external_done_ = true;
        if (begun_.table.empty()) return;
        if (is_table(connection, begun_.table)) drop(connection, "table", begun_.table);
        for (const char* end : {"_I", "_D"}) {
            const std::string generator = "G_" + begun_.table + end;
            if (is_there(connection, ObjectKind::generator, Name(generator)))
                static_cast<void>(connection(m::executeupdate, "DROP GENERATOR " + generator));
        }
    }
    void tell_of_replaced(zmFBConn& connection) {
        if (begun_.replaced.empty() || is_table(connection, begun_.replaced)) return;
        said_ += fmt::format("the table {} that was there before is gone: it had been dropped already\n",
                             to_utf8(begun_.replaced));
    }
    void drop(zmFBConn& connection, std::string_view kind, const std::string& table) {
        if (drop_table(connection, table)) {
            said_ += fmt::format("{} {} dropped\n", kind, to_utf8(table));
        } else {
            not_dropped(kind, table);
        }
    }
    void not_dropped(std::string_view kind, const std::string& table) {
        all_undone_ = false;
        const std::string command = table == begun_.external
                                        ? fmt::format("zmfb exec \"drop table {}\"", to_utf8(table))
                                        : fmt::format("zmfb call 'droptable(\"{}\")'", to_utf8(table));
        said_ += fmt::format("{} {} could not be dropped; when it is still there, this drops it: {}\n", kind,
                             to_utf8(table), command);
    }

    const Begun& begun_;
    std::string said_;
    bool external_done_ = false;
    bool all_undone_ = true;
};

}  // namespace

std::string external_file_of(zmFBConn& connection, const std::string& table) {
    const auto found = rows_of<std::string>(
        connection,
        fmt::format("select trim(rdb$external_file) from rdb$relations where rdb$external_file is not null "
                    "and rdb$relation_name = {}",
                    any_name),
        table);
    return found.empty() ? "" : std::get<0>(found.front());
}

void remove_files(const Begun& begun) {
    std::error_code ignored;
    if (!begun.data_file.empty()) std::filesystem::remove(begun.data_file, ignored);
    if (!begun.folder.empty()) std::filesystem::remove_all(begun.folder, ignored);
}

bool drop_leftover(zmFBConn& connection, const std::string& external) {
    const std::string file = external_file_of(connection, external);
    if (!file.starts_with(data_file_prefix)) return false;
    static_cast<void>(connection(m::executeupdate, "DROP TABLE " + external));
    if (is_table(connection, external)) return false;
    std::error_code ignored;
    std::filesystem::remove(file, ignored);
    fmt::print(stderr, "note: dropped the external table {} that an earlier run had left\n",
               to_utf8(external));
    return true;
}

Exit undo_and_tell(const Options& options, const Spoken& spoken, const Ended& ended, const Begun& begun) {
    Undo undo(begun);
    undo.run(options);
    if (ending_signal() != 0) {
        const char* const rest = undo.all_undone() ? "and undone" : "and not all of it is undone";
        const std::string nothing = undo.said().empty() ? "Nothing had been made yet." : "";
        print_error(fmt::format("{} was interrupted, {}", spoken.of, rest), undo.said() + nothing);
        return ending_status();
    }
    const Failure& failure = ended.failure;
    std::string detail = failure.detail;
    if (!detail.empty() && !detail.ends_with('\n')) detail += '\n';
    print_error(failure.message.empty() ? spoken.failed : failure.message, detail + undo.said(),
                failure.hint);
    return ended.status;
}

}  // namespace zmfb::tool
