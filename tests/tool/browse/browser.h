/// The fixture of tests that look at tables with "zmfb browse".
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "tests/support/database.h"
#include "tests/support/environment.h"
#include "tests/support/process.h"
#include "tests/support/server.h"
#include "tests/support/tmux.h"
#include "zmfbconn/area.h"

namespace zmfb::test {

/// With a table of ten customers.
class Browser : public Database {
  protected:
    Browser() {
        if (on_server()) {
            setenv("ISC_USER", sysdba, 1);
            setenv("ISC_PASSWORD", sysdba_password, 1);
        }
        const Finished done = run({ZMFB_TOOL, "--db", database(), "import", ZMFB_EXAMPLE_DBF});
        EXPECT_EQ(done.status, 0) << done.err;
    }
    /// Shows a table, or what else the words say.
    [[nodiscard]] std::unique_ptr<Tmux> browse(std::vector<std::string> words, int columns = 80,
                                               int rows = 24) const {
        words.insert(words.begin(), {ZMFB_TOOL, "--db", database(), "browse"});
        return std::make_unique<Tmux>(words, columns, rows);
    }
    /// The orders NAME and CREDIT of the customers.
    void make_orders() {
        Area customers(connection(), "CUSTOMERS");
        customers.create_order("NAME", "UPPER(NAME)");
        customers.create_order("CREDIT", "CREDIT");
    }
    /// A table of others, ODD, with a column of each kind, and what is hard to show.
    void make_odd_table() const {
        execute(
            "create table odd (id integer not null primary key, t varchar(60) character set utf8, "
            "memo blob sub_type text character set utf8, bin blob, d date, ts timestamp, r double precision, "
            "n numeric(18,4), f boolean)");
        // Wide characters; an escape sequence and a tab; an accent without a letter and one on a letter.
        execute(
            "insert into odd values (1, _utf8 x'E697A5E69CACE8AA9EE381AEE38386E382ADE382B9E383886162', "
            "'first line' || ascii_char(10) || 'second line', x'00FF', '2020-01-02', "
            "'2020-01-02 03:04:05.678', 1.5e300, 12345678901234.5678, true)");
        execute(
            "insert into odd values (2, ascii_char(27) || '[31mred' || ascii_char(9) || 'tab', '', '', "
            "'0001-01-01', '9999-12-31', -0.1, -0.5, false)");
        execute("insert into odd (id, t) values (3, _utf8 x'CC8165CC81CC81CC81CC81CC8178')");
        execute("insert into odd (id) values (4)");
    }
};

}  // namespace zmfb::test
