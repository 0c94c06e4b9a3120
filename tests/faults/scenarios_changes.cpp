// Fields added, changed, moved and dropped.
#include "host/latin1.h"
#include "tests/faults/scenario.h"

namespace zmfb::test {

namespace {

using host::operator""_l1;

std::string l1(std::string_view latin1) { return std::string(latin1); }

constexpr const char* refused_line = R"(~\[1\] \[ERROR\] SQLCODE=-\d+ \(.*\))";

Failure raises(std::string statement, std::string message) {
    return {.statement = std::move(statement), .result = ".F.", .raised = {std::move(message)}};
}
Failure passes(std::string statement) { return {.statement = std::move(statement)}; }

Failure added(const std::string& field) {
    return raises("ALTER TABLE CUSTOMER ADD " + field,
                  "Erro ao adicionar Campo: " + field + " Tabela: customer;FB Error: @E");
}
std::string description_message(const std::string& field) {
    return l1("Erro na descrição do Campo: "_l1) + field + " Tabela: customer;FB Error: ";
}
// The description of a new numeric or logical field.
std::vector<Failure> described(const std::string& field) {
    return {
        {.statement = "select rdb$get_context",
         .result = ".F.",
         .raised = {"~" + l1("Erro na descri..o do Campo: "_l1) + field + " Tabela: customer;FB Error: .*"},
         .logged = {refused_line}},
        passes("SELECT COUNT(*) FROM RDB$RELATION_FIELDS"),
        raises("COMMENT ON COLUMN", description_message(field) + "@E")};
}

// A column in use that the failed question did not name: the engine refuses to drop it.
Failure still_used(std::string statement) {
    return {.statement = std::move(statement),
            .result = ".F.",
            .raised = {"~Erro ao deletar Campo: AGE Tabela: customer;FB Error: .*"},
            .logged = {refused_line},
            .partial = "?"};
}

Scenario alter_field() {
    std::vector<Failure> failures = {added("RDDAUX_AGE")};
    for (Failure& failure : described("RDDAUX_AGE")) failures.push_back(std::move(failure));
    const std::vector<Failure> rest = {
        raises("UPDATE CUSTOMER SET", "Erro ao popular AuxCampo: RDDAUX_AGE Tabela: customer;FB Error: @E"),
        still_used("SELECT IDX.RDB$INDEX_NAME"),
        still_used("SELECT RDB$DEPENDENT_NAME"),
        passes("SELECT RDB$FIELD_NAME"),
        raises("DROP INDEX I_TWO", l1("Impossível eliminar índice; Índice: I_TWO; FB Error: @E"_l1)),
        raises("DROP TRIGGER TR_AGE", l1("Impossível eliminar trigger; Trigger: TR_AGE; FB Error: @E"_l1)),
        raises("ALTER TABLE CUSTOMER DROP AGE", "Erro ao deletar Campo: AGE Tabela: customer;FB Error: @E"),
        raises("ALTER TABLE CUSTOMER ALTER RDDAUX_AGE TO",
               "Erro ao renomear Campo: RDDAUX_AGE Tabela: customer;FB Error: @E")};
    failures.insert(failures.end(), rest.begin(), rest.end());
    return changes("alterfield('customer', {'AGE', 'N', 9, 0}, {'AGE', 'N', 5, 0})", failures);
}

Scenario drop_field() {
    return changes(
        "dropfield('customer', {'AGE', 'N', 5, 0})",
        {still_used("SELECT IDX.RDB$INDEX_NAME"), still_used("SELECT RDB$DEPENDENT_NAME"),
         passes("SELECT RDB$FIELD_NAME"),
         raises("DROP INDEX I_TWO", l1("Impossível eliminar índice; Índice: I_TWO; FB Error: @E"_l1)),
         raises("DROP TRIGGER TR_AGE", l1("Impossível eliminar trigger; Trigger: TR_AGE; FB Error: @E"_l1)),
         raises("ALTER TABLE CUSTOMER DROP AGE",
                "Erro ao deletar Campo: AGE Tabela: customer;FB Error: @E")});
}

}  // namespace

std::vector<Scenario> change_scenarios() {
    std::vector<Failure> numeric = {added("SIZE")};
    for (Failure& failure : described("SIZE")) numeric.push_back(std::move(failure));
    return {
        changes("addfield('customer', {'EMAIL', 'C', 30, 0})", {added("EMAIL")}, "a text"),
        changes("addfield('customer', {'SIZE', 'N', 5, 1})", numeric, "a number"),
        changes("addlimbofield('customer', {{'NAME', 'C', 10, 0}}, 1)", {added("RDDLMB_NAME")}),
        changes("renamefield('customer', 'born', 'birth')",
                {raises("ALTER TABLE CUSTOMER ALTER BORN TO BIRTH",
                        "Erro ao renomear Campo: born Tabela: customer;FB Error: @E")}),
        changes("setfieldposition('customer', {'OK', 'L', 1, 0}, 1)",
                {raises("ALTER TABLE CUSTOMER ALTER OK POSITION 001",
                        "Erro ao reposicionar Campo: OK Tabela: customer;FB Error: @E")}),
        alter_field(),
        drop_field(),
    };
}

}  // namespace zmfb::test
