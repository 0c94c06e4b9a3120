/// The fixture of the tests of creating, dropping and altering.
#pragma once

#include <string>
#include <vector>

#include "host/latin1.h"
#include "tests/support/database.h"

namespace zmfb::test {

using host::array_of;
using host::Value;
using Names = std::vector<std::string>;

inline Value field(std::string_view name, std::string_view type, int len = 10, int dec = 0) {
    return array_of(name, type, len, dec);
}

/// NAME, PRICE, BORN and OK: a field of each type.
inline Value client_structure() {
    return array_of(field("NAME", "C", 30), field("PRICE", "N", 10, 2), field("BORN", "D", 8),
                    field("OK", "L", 1));
}

class Schema : public Database {
  protected:
    template <class... Arguments>
    bool yes(std::string_view method, Arguments&&... arguments) {
        const Value answer = call(method, std::forward<Arguments>(arguments)...);
        EXPECT_TRUE(answer.is(host::Kind::logical)) << method << " gave " << show(answer);
        return answer.is(host::Kind::logical) && answer.logical();
    }

    void create_client() { ASSERT_TRUE(yes("createtable", "CLIENT", client_structure())); }

    /// Starts a log of statements and their errors.
    void watch() {
        connection();
        log_at(7);
        clear_log();
        forget_raised();
    }

    /// The statements logged, without the queries.
    [[nodiscard]] Names updates() const {
        Names statements;
        for (const LogEntry& entry : log_lines()) {
            constexpr std::string_view tag = "[UPDT] Statement: ";
            if (entry.text.starts_with(tag)) statements.push_back(entry.text.substr(tag.size()));
        }
        return statements;
    }

    /// The texts of the statements' errors, as the log has them.
    [[nodiscard]] Names errors() const {
        Names texts;
        for (const LogEntry& entry : log_lines()) {
            if (entry.level == 1) texts.push_back(entry.text);
        }
        return texts;
    }

    /// Expects one error of a statement, and that it was raised behind `message`.
    void expect_raised_with_error(std::string_view message) {
        ASSERT_EQ(errors().size(), 1U);
        EXPECT_TRUE(errors()[0].starts_with("[ERROR] SQLCODE=-")) << errors()[0];
        EXPECT_EQ(raised(), Names{"[FBCONN Error];" + std::string(message) + errors()[0]});
    }

    void expect_raised(std::string_view message) {
        EXPECT_EQ(raised(), Names{"[FBCONN Error];" + std::string(message)});
    }

    std::string structure(std::string_view table) { return show(call("gettablestruct", table)); }

    [[nodiscard]] bool exists(const std::string& kind, const std::string& name) const {
        return rows("select rdb$" + kind + "_name from rdb$" + plural(kind) + " where rdb$" + kind +
                    "_name = '" + name + "'")
                   .size() == 1;
    }

  private:
    static std::string plural(const std::string& kind) { return kind == "index" ? "indices" : kind + "s"; }
};

}  // namespace zmfb::test
