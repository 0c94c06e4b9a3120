/// The fixture of the tests that apply edited matrix files to real tables.
#pragma once

#include <string>
#include <vector>

#include "tests/matrix/editor.h"
#include "tests/matrix/values.h"
#include "tests/support/database.h"

namespace zmfb::test {

class RoundTrip : public Database {
  protected:
    struct Applied {
        bool ok = false;
        std::vector<std::string> log;
        std::vector<std::string> simulated;
    };

    void create(std::string_view table, std::initializer_list<Field> fields) {
        create(table, structure(fields));
    }
    void create(std::string_view table, const Value& structure);
    /// The matrix file of tables, as it comes out of the database.
    Editor extract(std::initializer_list<std::string_view> tables);
    /// Simulates, which must change nothing, and then applies an edited file.
    Applied apply(const Editor& edited, std::string_view line_end = "\r\n");
    /// The same, and all of it must have worked and been foretold.
    std::vector<std::string> apply_well(const Editor& edited);
    /// Extracts all tables and applies that unchanged: only the headers may be logged, nothing may be
    /// changed.
    void expect_nothing_to_do();

    /// The fields of a table but the driver's own, as "NOME C 40 0".
    std::vector<std::string> user_fields(std::string_view table);
    /// The names of all columns of a table in order, as the engine has them.
    std::vector<std::string> columns(const std::string& table);
    /// The column definitions and all rows of every table of the user's.
    std::string everything();
};

/// The header that the log has for a table.
std::string log_header(std::string_view table);

}  // namespace zmfb::test
