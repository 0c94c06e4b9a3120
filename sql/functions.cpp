// The driver's functions in a database: stored ones, or those of the module.
#include <fmt/format.h>

#include <string>
#include <vector>

#include "conn/public_call.h"
#include "sql/attach.h"
#include "sql/new_types.h"
#include "sql/script.h"
#include "sql/state.h"
#include "sql/transaction.h"
#include "udf_script.h"
#include "zmfbconn/database.h"

namespace zmfb {

namespace {

// Declares a function of the module in the place of another of its name, which nothing may use; who may call
// that one may call this.
constexpr std::string_view in_its_place = R"(EXECUTE BLOCK AS
  DECLARE GRANTS VARCHAR(8000) CHARACTER SET UTF8 = '';
  DECLARE ONE VARCHAR(400) CHARACTER SET UTF8;
BEGIN
  IF (EXISTS(SELECT 1 FROM RDB$FUNCTIONS WHERE RDB$FUNCTION_NAME = '{name}' AND RDB$PACKAGE_NAME IS NULL
             AND RDB$MODULE_NAME = 'zmrddudfs')) THEN EXIT;
  IF (EXISTS(SELECT 1 FROM RDB$FUNCTIONS WHERE RDB$FUNCTION_NAME = '{name}' AND RDB$PACKAGE_NAME IS NULL)) THEN
  BEGIN
    FOR SELECT 'GRANT EXECUTE ON FUNCTION {name} TO ' || DECODE(RDB$USER_TYPE, 1, 'VIEW', 2, 'TRIGGER',
               5, 'PROCEDURE', 13, 'ROLE', 15, 'FUNCTION', 18, 'PACKAGE', 'USER') || ' "' ||
               REPLACE(TRIM(RDB$USER), '"', '""') || '"' || IIF(RDB$GRANT_OPTION = 1, ' WITH GRANT OPTION', '')
        FROM RDB$USER_PRIVILEGES
        WHERE RDB$RELATION_NAME = '{name}' AND RDB$OBJECT_TYPE = 15 AND RDB$PRIVILEGE = 'X' INTO ONE DO
      GRANTS = GRANTS || ONE || ASCII_CHAR(10);
    EXECUTE STATEMENT 'DROP FUNCTION {name}';
  END
  EXECUTE STATEMENT '{declaration}';
  WHILE (GRANTS <> '') DO
  BEGIN
    ONE = SUBSTRING(GRANTS FROM 1 FOR POSITION(ASCII_CHAR(10) IN GRANTS) - 1);
    EXECUTE STATEMENT ONE;
    GRANTS = SUBSTRING(GRANTS FROM POSITION(ASCII_CHAR(10) IN GRANTS) + 1);
  END
END)";

std::string doubled_quotes(std::string_view text) {
    std::string doubled;
    for (const char c : text) doubled.append(c == '\'' ? 2 : 1, c);
    return doubled;
}

std::string in_place(std::string_view declaration) {
    constexpr std::string_view before_name = "DECLARE EXTERNAL FUNCTION ";
    const std::string_view behind = declaration.substr(before_name.size());
    return fmt::format(fmt::runtime(in_its_place), fmt::arg("name", behind.substr(0, behind.find('\n'))),
                       fmt::arg("declaration", doubled_quotes(declaration)));
}

Status choose_statements(Functions functions, isc_db_handle database, std::vector<std::string>& chosen) {
    int structure = 0;
    if (Status asked = sql::ask_structure(database, structure); !asked.ok()) return asked;
    const bool can_be_stored = structure >= sql::structure_of_3;
    if (functions == Functions::stored && !can_be_stored)
        return Status("stored functions need Firebird 3.0 or a later one");
    if (can_be_stored && functions != Functions::module) {
        chosen = sql::statements_of(udf::stored_functions_script);
        return {};
    }
    chosen = sql::statements_of(udf::declaration_script);
    if (can_be_stored) {
        for (std::string& statement : chosen) statement = in_place(statement);
    }
    return {};
}

Status run_together(isc_db_handle database, const std::vector<std::string>& statements) {
    sql::Transaction transaction(database, sql::batch_block);
    Status done = transaction.started();
    for (const std::string& statement : statements) {
        if (done.ok()) done = transaction.execute(statement.c_str());
    }
    return done.ok() ? transaction.commit() : done;
}

// A server that does not run a module lets its functions be declared all the same.
Status call_one(isc_db_handle database) {
    const Status called =
        run_together(database, {"EXECUTE BLOCK AS DECLARE T VARCHAR(4000); BEGIN T = ZMTRIM('x'); END"});
    return called.ok() ? called : Status("the driver's functions cannot be called\n" + called.message());
}

}  // namespace

Status install_functions(std::string_view database, std::string_view user, std::string_view password,
                         Functions functions) {
    const conn::PublicCall under_way;
    return sql::on_attachment(database, user, password, [functions](double handle) {
        const isc_db_handle database = sql::handle_of(handle);
        std::vector<std::string> statements;
        Status done = choose_statements(functions, database, statements);
        if (done.ok()) done = run_together(database, statements);
        return done.ok() ? call_one(database) : done;
    });
}

}  // namespace zmfb
