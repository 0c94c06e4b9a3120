#include "tool/rights.h"

#include <fmt/format.h>

#include <algorithm>

#include "tool/doctor/checks.h"
#include "tool/hints.h"
#include "zmfbconn/transaction.h"

namespace zmfb::tool {
namespace {

bool is_of_rights(const SqlError& error) {
    return hint_for(error.message()) == hint_for("no permission for SELECT access to TABLE T");
}

// "SELECT access to TABLE CUSTOMERS", as the engine calls what is not permitted.
std::string missing_right(const std::string& message) {
    constexpr std::string_view before = "no permission for ";
    const std::size_t found = message.find(before);
    const std::size_t start = found == std::string::npos ? 0 : found + before.size();
    return message.substr(start, message.find('\n', start) - start);
}

// What the engine does not permit this user, by trying what changes nothing.
class Trial {
  public:
    explicit Trial(zmFBConn& connection) : connection_(connection) {}

    // Preparing it is enough: rights are looked at then.
    void prepare(const std::string& statement) {
        note([&](Transaction& work) { work.prepare(statement); }, "");
    }
    void run_and_undo(const std::string& what, const std::string& statement) {
        note([&](Transaction& work) { work.execute(statement); }, what);
    }
    [[nodiscard]] const std::string& missing() const { return missing_; }

  private:
    template <class Work>
    void note(const Work& what_to_do, const std::string& what) {
        try {
            Transaction work(connection_);
            what_to_do(work);
        } catch (const SqlError& error) {
            if (!is_of_rights(error)) return;  // other checks look at the rest
            const std::string right = what.empty() ? missing_right(error.message()) : what;
            if (missing_.find(right) == std::string::npos) missing_ += (missing_.empty() ? "" : ", ") + right;
        }
    }

    zmFBConn& connection_;
    std::string missing_;
};

std::string missing_for_reading(zmFBConn& connection, const std::vector<Name>& tables) {
    Trial trial(connection);
    for (const Name& table : tables) trial.prepare("SELECT * FROM " + table.quoted());
    return trial.missing();
}

std::string missing_for_writing(zmFBConn& connection, const std::vector<Name>& tables) {
    Trial trial(connection);
    for (const Name& table : tables) {
        trial.prepare(fmt::format("INSERT INTO {} DEFAULT VALUES", table.quoted()));
        trial.prepare(fmt::format("UPDATE {} SET RDD_AREAID = NULL", table.quoted()));
        trial.prepare(fmt::format("DELETE FROM {}", table.quoted()));
    }
    for (const std::string_view table : {"RDDSYS_OPN", "RDDSYS_FLK", "RDDSYS_RLK"}) {
        trial.prepare(fmt::format("SELECT * FROM {}", table));
        trial.prepare(fmt::format("INSERT INTO {} DEFAULT VALUES", table));
        trial.prepare(fmt::format("DELETE FROM {}", table));
    }
    return trial.missing();
}

std::string missing_for_making(zmFBConn& connection) {
    Trial trial(connection);
    trial.run_and_undo("CREATE TABLE", "CREATE TABLE RDDSYS_TRY (A INTEGER)");
    trial.run_and_undo("CREATE SEQUENCE", "CREATE SEQUENCE G_RDDSYS_TRY_I");
    return trial.missing();
}

}  // namespace

Finding check_rights(Session& session) {
    zmFBConn& connection = session.connection_to_any();
    const auto [user, owns] = rows_of<std::string, bool>(
        connection,
        "SELECT CURRENT_USER, CURRENT_USER IN ('SYSDBA', RDB$OWNER_NAME) FROM RDB$RELATIONS WHERE "
        "RDB$RELATION_NAME = 'RDB$DATABASE'")[0];
    if (owns) return {"rights", State::ok, fmt::format("{} may do everything here", Name(user).shown())};
    std::vector<Name> tables;
    for (const Table& table : tables_of(connection)) {
        if (table.kind == TableKind::driver) tables.push_back(table.name);
    }
    const std::string reading = missing_for_reading(connection, tables);
    const std::string writing = missing_for_writing(connection, tables);
    const std::string making = missing_for_making(connection);
    std::string text;
    const auto add = [&text](std::string_view what, const std::string& missing) {
        if (!missing.empty()) text += fmt::format("{}to {} {}", text.empty() ? "" : "; ", what, missing);
    };
    add("read", reading);
    add("write and lock", writing);
    add("make tables", making);
    if (text.empty())
        return {"rights", State::ok, fmt::format("{} reads, writes and makes tables", Name(user).shown())};
    const std::string_view level = !making.empty() ? "make" : !writing.empty() ? "write" : "read";
    return {"rights", reading.empty() ? State::note : State::bad,
            fmt::format("{} lacks {}", Name(user).shown(), text),
            fmt::format("the owner gives them as far as they are wanted: zmfb grant {} --level {}",
                        shell_word(Name(user).shown()), level)};
}

}  // namespace zmfb::tool
