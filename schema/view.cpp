#include "conn/raise.h"
#include "conn/statement.h"
#include "host/text.h"
#include "schema/methods.h"

namespace zmfb::schema {

Value createview(Self& self, Args args) {
    constexpr std::string_view view_statement = "CREATE VIEW @@VIEWNAME (@@FIELDS) AS @@SELECT_EXPR";
    const Value &vwname = args[0], &fldsalias = args[1], &stmt = args[2];
    const Placeholders placeholders{
        {"@@VIEWNAME", host::alltrim(host::upper(vwname))}, {"@@FIELDS", fldsalias}, {"@@SELECT_EXPR", stmt}};
    return update_or_raise(self, view_statement, placeholders, "Error on creating VIEW; FB Error: ");
}

Value grantaccess(Self& self, Args args) {
    constexpr std::string_view grant_statement = "GRANT @@PRIVILEGES ON @@TABLENAME TO @@USER";
    const Value &priv = args[0], &tbl = args[1], &user = args[2];
    const Placeholders placeholders{
        {"@@PRIVILEGES", priv}, {"@@TABLENAME", host::alltrim(host::upper(tbl))}, {"@@USER", user}};
    if (update(self, grant_statement, placeholders)) return true;
    conn::raiseerror("Error granting Privileges To:" + user + " Target: " + tbl);
    return false;
}

}  // namespace zmfb::schema
