// Creating and dropping.
#include "host/latin1.h"
#include "tests/faults/scenario.h"

namespace zmfb::test {

namespace {

using host::operator""_l1;

std::string l1(std::string_view latin1) { return std::string(latin1); }

Failure raises(std::string statement, std::string message) {
    return {.statement = std::move(statement), .result = ".F.", .raised = {std::move(message)}};
}
// A question that the method can do without.
Failure passes(std::string statement) { return {.statement = std::move(statement)}; }

// The engine of version 3 and later takes descriptions by COMMENT ON only. When its version cannot be asked,
// the older statement is sent, and refused.
constexpr const char* version_question = "select rdb$get_context";
constexpr const char* refused_text = R"r(~"\[ERROR\] SQLCODE=-\d+ \(.*\)")r";
constexpr const char* refused_line = R"(~\[1\] \[ERROR\] SQLCODE=-\d+ \(.*\))";

Scenario describes(std::string call, std::string kind) {
    Scenario scenario = changes(
        std::move(call), {{.statement = version_question, .result = refused_text, .logged = {refused_line}},
                          passes("select count(*)"),
                          passes("SELECT COUNT(*)"),
                          {.statement = "COMMENT ON " + kind, .result = R"("@E")"}});
    scenario.good = R"("")";
    return scenario;
}

Scenario create_table() {
    return changes(
        "createtable('new', {{'NAME', 'C', 10, 0}, {'AGE', 'N', 5, 0}, {'BORN', 'D', 8, 0}, {'OK', 'L', 1, "
        "0}})",
        {passes("select count(*) from rdb$relations"),
         {.statement = version_question,
          .result = ".F.",
          .raised = {l1("Erro na descrição da tabela; Tabela: new"_l1)},
          .logged = {refused_line}},
         passes("SELECT COUNT(*)"),
         raises("CREATE TABLE NEW(", "Error on creating Table; FB Error: @E"),
         raises("COMMENT ON TABLE \"NEW\"", l1("Erro na descrição da tabela; Tabela: new"_l1)),
         // Once a description has failed, every later field says so again.
         {.statement = "COMMENT ON COLUMN \"NEW\".\"AGE\"",
          .result = ".F.",
          .raised = {l1("Erro na descrição do campo; Tabela: new Campo: AGE"_l1),
                     l1("Erro na descrição do campo; Tabela: new Campo: BORN"_l1)}},
         raises("COMMENT ON COLUMN \"NEW\".\"OK\"",
                l1("Erro na descrição do campo; Tabela: new Campo: OK"_l1)),
         raises("CREATE UNIQUE DESC INDEX NEW_RECNO_DESC",
                l1("Erro na criação do índice recno; FB Error: @E"_l1)),
         raises("CREATE GENERATOR G_NEW_I", l1("Erro na criação do generator I; FB Error: @E"_l1)),
         raises("CREATE GENERATOR G_NEW_D", l1("Erro na criação do generator D; FB Error: @E"_l1)),
         raises("CREATE TRIGGER T_NEW_RECNO", l1("Erro na criação da trigger Recno; FB Error: @E"_l1)),
         raises("CREATE TRIGGER T_NEW_DELETES", l1("Erro na criação da trigger Deletes; FB Error: @E"_l1))});
}

// The system tables' own methods, on a database that lacks them.
Scenario create_system_table(std::string method, const std::string& table) {
    Scenario scenario = changes(
        method + "()",
        {passes("select count(*) from rdb$relations"),
         {.statement = version_question, .result = ".F.", .raised = {"*"}, .logged = {refused_line}},
         passes("SELECT COUNT(*)"),
         raises("CREATE TABLE " + table, "Error on creating Table; FB Error: @E"),
         raises("COMMENT ON TABLE", l1("Erro na descrição da tabela; Tabela: "_l1) + table),
         {.statement = "COMMENT ON COLUMN", .result = ".F.", .raised = {"*"}},
         raises("CREATE UNIQUE DESC INDEX", l1("Erro na criação do índice recno; FB Error: @E"_l1)),
         raises("CREATE GENERATOR G_" + table + "_I", l1("Erro na criação do generator I; FB Error: @E"_l1)),
         raises("CREATE GENERATOR G_" + table + "_D", l1("Erro na criação do generator D; FB Error: @E"_l1)),
         raises("CREATE TRIGGER T_" + table + "_RECNO",
                l1("Erro na criação da trigger Recno; FB Error: @E"_l1)),
         raises("CREATE TRIGGER T_" + table + "_DELETES",
                l1("Erro na criação da trigger Deletes; FB Error: @E"_l1)),
         {.statement = "CREATE UNIQUE INDEX I_" + table, .result = ".F."}});
    // Attaching has made the tables. The triggers of the others look into RDDSYS_OPN.
    scenario.database = "bare.fdb";
    scenario.before = {"droptable('" + table + "')"};
    if (table == "RDDSYS_OPN")
        scenario.before = {"droptable('RDDSYS_FLK')", "droptable('RDDSYS_RLK')", "droptable('RDDSYS_OPN')"};
    return scenario;
}

Scenario drop(const std::string& method, const std::string& name, const std::string& what,
              std::string_view message) {
    return changes(method + "('" + name + "')",
                   {raises("DROP " + what + " " + name, l1(message) + name + "; FB Error: @E")});
}

std::vector<Scenario> composite_drops() {
    const std::string generator = l1("Impossível eliminar generator; Generator: "_l1);
    Scenario table =
        changes("droptable('customer')",
                {// Views that are not known of keep the table from going.
                 {.statement = "SELECT RDB$VIEW_NAME",
                  .result = ".F.",
                  .raised = {l1("~Impossível eliminar a Tabela: CUSTOMER; FB Error: .*"_l1)},
                  .logged = {refused_line},
                  .partial = ".F."},
                 raises("DROP VIEW V_CUSTOMER", l1("Impossível eliminar View: V_CUSTOMER; FB Error: @E"_l1)),
                 raises("DROP VIEW V_OTHER", l1("Impossível eliminar View: V_OTHER; FB Error: @E"_l1)),
                 raises("DROP TABLE CUSTOMER", l1("Impossível eliminar a Tabela: CUSTOMER; FB Error: @E"_l1)),
                 {.statement = "DROP GENERATOR G_CUSTOMER_I",
                  .raised = {generator + "G_CUSTOMER_I; FB Error: @E"},
                  .other_state = true},
                 raises("DROP GENERATOR G_CUSTOMER_D", generator + "G_CUSTOMER_D; FB Error: @E")});
    Scenario views =
        changes("dropviewsfromtable('customer')",
                {{.statement = "SELECT RDB$VIEW_NAME", .partial = ".T.", .other_state = true},
                 raises("DROP VIEW V_CUSTOMER", l1("Impossível eliminar View: V_CUSTOMER; FB Error: @E"_l1)),
                 raises("DROP VIEW V_OTHER", l1("Impossível eliminar View: V_OTHER; FB Error: @E"_l1))});
    Scenario indexes = changes(
        "dropindexbasedonfield('customer', 'name')",
        {{.statement = "SELECT IDX.RDB$INDEX_NAME", .partial = ".T.", .other_state = true},
         raises("DROP INDEX I_NAME", l1("Impossível eliminar índice; Índice: I_NAME; FB Error: @E"_l1)),
         raises("DROP INDEX I_TWO", l1("Impossível eliminar índice; Índice: I_TWO; FB Error: @E"_l1))});
    Scenario triggers = changes(
        "droptriggerbasedonfield('customer', 'age')",
        {{.statement = "SELECT RDB$DEPENDENT_NAME", .partial = ".T.", .other_state = true},
         {.statement = "SELECT RDB$FIELD_NAME", .partial = ".T."},
         raises("DROP TRIGGER TR_AGE", l1("Impossível eliminar trigger; Trigger: TR_AGE; FB Error: @E"_l1))});
    return {table, views, indexes, triggers};
}

}  // namespace

std::vector<Scenario> schema_scenarios() {
    std::vector<Scenario> scenarios = {
        describes("settabledescription('customer', 'x')", "TABLE"),
        describes("setindexdescription('i_name', 'x')", "INDEX"),
        describes("setfielddescription('customer', 'name', 'x')", "COLUMN"),
        create_table(),
        create_system_table("createtableofopn", "RDDSYS_OPN"),
        create_system_table("createtableofflocks", "RDDSYS_FLK"),
        create_system_table("createtableofrlocks", "RDDSYS_RLK"),
        changes("createtableexternal('ext', {{'NAME', 'C', 10, 0}}, '@DIR/ext.dat')",
                {passes("select count(*) from rdb$relations"),
                 raises("CREATE TABLE EXT EXTERNAL", "Error on creating External Table; FB Error: @E")}),
        changes("createview('v_new', 'NAME', 'select NAME from CUSTOMER')",
                {raises("CREATE VIEW V_NEW", "Error on creating VIEW; FB Error: @E")}),
        changes("grantaccess('SELECT', 'customer', 'PUBLIC')",
                {raises("GRANT SELECT ON CUSTOMER", "Error granting Privileges To:PUBLIC Target: customer")}),
        changes("deleterecord('customer', '1')",
                {raises("DELETE FROM CUSTOMER WHERE",
                        "Erro ao deletar registro; Tabela: customer Recno: 1;FB Error: @E")}),
        changes("deleteallrecords('customer')",
                {raises("DELETE FROM CUSTOMER", "Erro ao zerar tabela; Tabela: customer;FB Error: @E")}),
        drop("dropgenerator", "G_ALONE", "GENERATOR", "Impossível eliminar generator; Generator: "_l1),
        drop("droptrigger", "TR_AGE", "TRIGGER", "Impossível eliminar trigger; Trigger: "_l1),
        drop("dropindex", "I_NAME", "INDEX", "Impossível eliminar índice; Índice: "_l1),
        drop("droponlytable", "FOREIGN_T", "TABLE", "Impossível eliminar a Tabela: "_l1),
        drop("dropview", "V_CUSTOMER", "VIEW", "Impossível eliminar View: "_l1),
    };
    for (Scenario& scenario : composite_drops()) scenarios.push_back(std::move(scenario));
    return scenarios;
}

}  // namespace zmfb::test
