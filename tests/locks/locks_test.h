/// What the tests of locks/ share.
#pragma once

#include <ibase.h>

#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "sql/client.h"
#include "tests/support/database.h"

namespace zmfb::test {

/// A database with the system tables, and two area ids.
class Locks : public Database {
  protected:
    /// The answer of a method that gives .T. or .F..
    template <class... Arguments>
    bool yes(std::string_view method, Arguments&&... arguments) {
        return call(method, std::forward<Arguments>(arguments)...).logical();
    }

    /// The statements that a call sends, in order.
    template <class... Arguments>
    std::vector<std::string> sent_by(std::string_view method, Arguments&&... arguments) {
        connection();
        log_at(8);
        clear_log();
        call(method, std::forward<Arguments>(arguments)...);
        log_at(0);
        return sql_log();
    }

    /// Drops a system table, and with it the triggers of other tables that look into it.
    void drop(const std::string& table) {
        const Rows triggers = rows(
            "select distinct rdb$dependent_name from rdb$dependencies join rdb$triggers on rdb$trigger_name "
            "= "
            "rdb$dependent_name where rdb$depended_on_name = '" +
            table + "' and rdb$relation_name <> '" + table + "'");
        for (const Row& trigger : triggers) {
            EXPECT_EQ(call("executeupdate", "DROP TRIGGER " + trigger[0]).string(), "");
        }
        EXPECT_EQ(call("executeupdate", "DROP TABLE " + table).string(), "");
    }

    [[nodiscard]] Rows record_locks() const {
        return rows("select rlk_table, rlk_recno, rlk_areaid from rddsys_rlk order by 1, 2");
    }
    [[nodiscard]] Rows table_locks() const {
        return rows("select flk_table, flk_areaid from rddsys_flk order by 1");
    }
    [[nodiscard]] Rows registrations() const {
        return rows("select opn_table, opn_areaid, opn_shared from rddsys_opn order by 1, 2");
    }

    const std::string a = "CUSTOMER:1:11:alpha";
    const std::string b = "CUSTOMER:1:22:beta";
};

using Statements = std::vector<std::string>;

/// The client library, with the statement of another program slipped in just before the first statement that
/// begins with a given text: what happens when two processes race. In use while it exists.
class RacingClient : public sql::Client {
  public:
    RacingClient(std::string database, std::string before, std::string statement)
        : database_(std::move(database)),
          before_(std::move(before)),
          statement_(std::move(statement)),
          previous_(sql::set_client(this)) {}
    ~RacingClient() override { sql::set_client(previous_); }

    ISC_STATUS execute_immediate(ISC_STATUS* status, isc_db_handle* database, isc_tr_handle* transaction,
                                 const char* text) override {
        if (!happened_ && std::string_view(text).starts_with(before_)) {
            happened_ = true;
            BareClient(database_).execute(statement_);
        }
        return Client::execute_immediate(status, database, transaction, text);
    }

    [[nodiscard]] bool happened() const { return happened_; }

  private:
    std::string database_;
    std::string before_;
    std::string statement_;
    sql::Client* previous_;
    bool happened_ = false;
};

/// The client library with every query failing when it is prepared. In use while it exists.
class BlindClient : public sql::Client {
  public:
    BlindClient() : previous_(sql::set_client(this)) {}
    ~BlindClient() override { sql::set_client(previous_); }

    ISC_STATUS prepare(ISC_STATUS* status, isc_db_handle* database, isc_tr_handle* transaction,
                       const char* statement, const char*, XSQLDA* output) override {
        return Client::prepare(status, database, transaction, statement,
                               "SELECT NO_SUCH_COLUMN FROM RDB$DATABASE", output);
    }

  private:
    sql::Client* previous_;
};

}  // namespace zmfb::test
