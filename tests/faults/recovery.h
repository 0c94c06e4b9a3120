/// The clean-up that docs/recovery.md describes, as the tests of interrupted operations do it.
#pragma once

#include <string>

#include "tests/locks/workers_test.h"
#include "tests/support/validation.h"
#include "zmfbconn/database.h"

namespace zmfb::test {

class Recovery : public Workers {
  protected:
    /// The engine writes as it does where people work.
    Recovery() { write_through(database()); }

    /// The parts of a table in the order in which they are made, "1" for each that is there.
    std::string parts_of(const std::string& table) {
        const auto has = [this](const std::string& from) {
            return rows("select count(*) from " + from)[0][0] == "0" ? "0" : "1";
        };
        const std::string generators = "rdb$generators where rdb$generator_name = 'G_" + table;
        const std::string triggers = "rdb$triggers where rdb$trigger_name = 'T_" + table;
        return std::string(has("rdb$relations where rdb$relation_name = '" + table + "'")) +
               has("rdb$relations where rdb$description is not null and rdb$relation_name = '" + table +
                   "'") +
               has("rdb$indices where rdb$index_name = '" + table + "_RECNO_DESC'") +
               has(generators + "_I'") + has(generators + "_D'") + has(triggers + "_RECNO'") +
               has(triggers + "_DELETES'");
    }
    static constexpr const char* all_parts = "1111111";

    void expect_parts_in_order(const std::string& table) {
        const std::string parts = parts_of(table);
        EXPECT_EQ(parts.find("01"), std::string::npos) << table << ": " << parts;
    }

    /// Drops a table as far as it was made. A part that is missing is complained of.
    void take_away_table(const std::string& table) {
        if (yes("istable", table)) call("droptable", table);
        forget_raised();
        for (const char* end : {"_I", "_D"}) {
            const std::string generator = "G_" + table + end;
            if (rows("select 1 from rdb$generators where rdb$generator_name = '" + generator + "'").empty())
                continue;
            EXPECT_TRUE(yes("dropgenerator", generator));
        }
        EXPECT_EQ(parts_of(table), "0000000");
    }

    /// Drops an external table that was left.
    void drop_external_table(const std::string& table) {
        if (!yes("istable", table)) return;
        EXPECT_TRUE(yes("droponlytable", table));
    }

    /// Does what makes a table. Where the engine refuses every new table with a key, because one died half
    /// made, a table without a key that is made and dropped puts that right, and it is done again.
    template <class Act>
    bool made(const Act& act) {
        if (act()) return true;
        if (last_engine_message().find("cannot create index RDB$PRIMARY") == std::string::npos) return false;
        ++refusals_;
        forget_raised();
        EXPECT_EQ(call("executeupdate", "create table WITHOUT_KEY (A integer)").string(), "");
        EXPECT_EQ(call("executeupdate", "drop table WITHOUT_KEY").string(), "");
        return act();
    }
    [[nodiscard]] int refusals() const { return refusals_; }

  private:
    int refusals_ = 0;
};

}  // namespace zmfb::test
