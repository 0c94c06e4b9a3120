// Matrices written out and applied.
#include "tests/faults/scenario.h"

namespace zmfb::test {

namespace {

constexpr const char* any_line = "*";

// AGE gets wider, BORN goes, EMAIL comes, OK is not mentioned; NEW is a new table, FOREIGN_T is not ours.
constexpr const char* matrix =
    R"({ {{ {"- Created by ZMRDDFIRE -"},)"
    R"( {" CUSTOMER>>001::NAME::C::10::0 => 001::NAME::C::10::0"},)"
    R"( {" CUSTOMER>>002::AGE::N::5::0 => 002::AGE::N::9::0"},)"
    R"( {" CUSTOMER>>003::BORN::D::8::0 => DROP FIELD"},)"
    R"( {" CUSTOMER>>004::EMAIL::C::30::0 => 004::EMAIL::C::30::0"} }},)"
    R"( {{ {"- Created by ZMRDDFIRE -"}, {" NEW>>001::CODE::C::5::0 => 001::CODE::C::5::0"} }} })";

constexpr const char* drop_matrix =
    R"({ {{ {"- Created by ZMRDDFIRE -"}, {" CUSTOMER>>DROP TABLE => 001::NAME::C::10::0"} }} })";

Failure fails(std::string statement) {
    return {.statement = std::move(statement),
            .result = R"(~\{\.F\., .*\[ERROR\] .*\})",
            .raised = {any_line},
            .logged = {any_line}};
}
// What the questions of one change come to is each method's own business.
Failure any_answer(std::string statement) {
    return {.statement = std::move(statement),
            .result = "?",
            .raised = {any_line},
            .logged = {any_line},
            .partial = "?"};
}

Scenario applies(const char* what, std::vector<Failure> failures, std::string variant) {
    return {.method = "applymatrix",
            .call = std::string("applymatrix(") + what + ")",
            .uses = Uses::changes,
            .good = "*",
            .failures = std::move(failures),
            .variant = std::move(variant)};
}

std::vector<Failure> every_change_fails() {
    return {any_answer("select "),
            any_answer("SELECT "),
            fails("CREATE "),
            fails("COMMENT "),
            fails("ALTER "),
            fails("UPDATE "),
            // Whether a table was dropped is told by its second generator.
            {.statement = "DROP GENERATOR G_CUSTOMER_I", .raised = {any_line}, .other_state = true},
            fails("DROP ")};
}

}  // namespace

std::vector<Scenario> matrix_scenarios() {
    return {
        applies(matrix, every_change_fails(), "changes two tables"),
        applies(drop_matrix, every_change_fails(), "drops a table"),
        {.method = "checkmatrix",
         .call = std::string("checkmatrix(") + matrix + ")",
         .good = "*",
         .failures = {any_answer("select "), any_answer("SELECT ")}},
        {.method = "extracmatrixoftable",
         .call = "extracmatrixoftable('customer')",
         .good = "*",
         .failures = {{.statement = "select count(*)", .result = R"({{" >> Does not exists!"}})"},
                      {.statement = "select zmBlobSubstr(rdb$description,1,255) from rdb$relations ",
                       .result = "{}"},
                      any_answer("select ")}},
        {.method = "extractmatrix",
         .call = "extractmatrix(NIL, '')",
         .good = "*",
         .failures = {any_answer("select ")}},
    };
}

std::vector<Scenario> all_scenarios() {
    std::vector<Scenario> all;
    for (const auto& part :
         {connection_scenarios(), sql_scenarios(), catalog_scenarios(), lock_scenarios(), schema_scenarios(),
          change_scenarios(), transfer_scenarios(), matrix_scenarios(), quiet_scenarios()}) {
        all.insert(all.end(), part.begin(), part.end());
    }
    return all;
}

}  // namespace zmfb::test
