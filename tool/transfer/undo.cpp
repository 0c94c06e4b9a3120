#include "tool/transfer/undo.h"

#include <fmt/format.h>

#include <filesystem>

#include "tool/catalog.h"
#include "tool/drop.h"
#include "tool/encoding.h"
#include "tool/interrupt.h"
#include "tool/say.h"
#include "zmfbconn/database.h"
#include "zmfbconn/methods.h"

namespace zmfb::tool {
namespace {

constexpr std::string_view data_file_prefix = "/tmp/zmrdd";

// A refused question is no answer: it throws Failure.
bool is_table(zmFBConn& connection, const std::string& table) {
    return is_there(connection, ObjectKind::relation, Name(table));
}

bool drop_table(zmFBConn& connection, const std::string& table) {
    for (int attempt = 1;; ++attempt) {
        static_cast<void>(connection(m::executeupdate, "DROP TABLE " + table));
        const std::string said = last_engine_message();
        if (!is_table(connection, table)) return true;
        if (!wait_for_others(said, attempt)) return false;
    }
}

/// Takes back, and keeps in words, what was taken back and what was not.
class Undo {
  public:
    explicit Undo(const Begun& begun) : begun_(begun) {}

    void run(const Options& options) {
        if (!begun_.external.empty()) undo_in_database(options);
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
        const std::string& external = begun_.external;
        try {
            Session session(options);
            session.show_raised(Raised::silent);
            zmFBConn& connection = session.connection_to_any();
            if (external_file_of(connection, external) != begun_.data_file) return;
            if (!drop_table(connection, external)) return not_dropped();
            said_ += fmt::format("external table {} dropped\n", to_utf8(external));
        } catch (const Failure& failure) {
            said_ += fmt::format("{}\n{}\n", failure.message, failure.detail);
            not_dropped();
        }
    }
    void not_dropped() {
        all_undone_ = false;
        said_ += fmt::format(
            "external table {0} could not be dropped; when it is still there, this drops it: zmfb exec "
            "\"drop table {0}\"\n",
            to_utf8(begun_.external));
    }

    const Begun& begun_;
    std::string said_;
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
    say("note: dropped the external table {} that an earlier run had left\n", to_utf8(external));
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
