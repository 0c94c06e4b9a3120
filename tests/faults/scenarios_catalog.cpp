// Questions put to the catalog.
#include "tests/faults/scenario.h"

namespace zmfb::test {

namespace {

// A question whose failed query reads as the answer `failed`.
Scenario asks(std::string call, std::string statement, std::string good, std::string failed) {
    const std::string method = call.substr(0, call.find('('));
    return {.method = method,
            .call = std::move(call),
            .good = std::move(good),
            .failures = {{.statement = std::move(statement), .result = std::move(failed)}}};
}

// One whose answer holds a row in each element.
Scenario lists(std::string call, std::string statement, std::string good) {
    Scenario scenario = asks(std::move(call), std::move(statement), std::move(good), "{}");
    scenario.ahead_of_rows = 0;
    return scenario;
}

constexpr const char* structure_query = "select rf.rdb$field_name, fd.rdb$field_type";
constexpr const char* description_query =
    "select zmBlobSubstr(rdb$description,1,255) from rdb$relation_fields where rdb$field_name = '";
constexpr const char* structure =
    R"({{"NAME", "C", 10, 0}, {"AGE", "N", 5, 0}, {"BORN", "D", 8, 0}, {"OK", "L", 1, 0}, )"
    R"({"RDD_AREAID", "C", 50, 0}, {"RECNO", "N", 15, 0}})";
constexpr const char* structure_without_logical =
    R"({{"NAME", "C", 10, 0}, {"AGE", "N", 5, 0}, {"BORN", "D", 8, 0}, {"OK", "C", 1, 0}, )"
    R"({"RDD_AREAID", "C", 50, 0}, {"RECNO", "N", 15, 0}})";

Scenario structure_of_table() {
    return {.method = "gettablestruct",
            .call = "gettablestruct('customer')",
            .good = structure,
            .failures = {
                {.statement = structure_query, .result = "{}", .partial = "?"},
                {.statement = std::string(description_query) + "OK'", .result = structure_without_logical},
                {.statement = description_query}}};
}

Scenario record_count() {
    Scenario scenario = asks("gettablereccount('customer')", "SELECT GEN_ID(G_CUSTOMER_I, 0) - ", "3", "=");
    return scenario;
}

Scenario hard_count() {
    return {.method = "gettablereccount",
            .call = "gettablereccount('PROBE')",
            .good = "1",
            .failures = {{.statement = "SELECT COUNT(*) FROM PROBE",
                          .result = "0",
                          .logged = {"[1] [ERROR] SQLCODE=-104 (Invalid token)"}},
                         {.statement = "SELECT GEN_ID(G_PROBE_I, 0) - ", .logged = {"-"}}},
            .variant = "without generators"};
}

}  // namespace

std::vector<Scenario> catalog_scenarios() {
    const std::string yes = ".T.", no = ".F.";
    return {
        asks("istable('customer')", "select count(*) from rdb$relations", yes, no),
        asks("isview('v_customer')", "SELECT COUNT(*) FROM RDB$VIEW_RELATIONS", yes, no),
        asks("isfieldoftable('customer', 'name')", "SELECT COUNT(*) FROM RDB$RELATION_FIELDS", yes, no),
        asks("isindex('i_name')", "select count(*) from rdb$indices", yes, no),
        asks("istrigger('tr_age')", "select count(*) from rdb$triggers", yes, no),
        asks("isindexoftable('customer', 'i_name')", "select count(*) from rdb$indices", yes, no),
        asks("istriggeroftable('customer', 'tr_age')", "select count(*) from rdb$triggers", yes, no),
        asks("isudf('ZMTRIM', 'zmrddudfs')", "select count(*) from rdb$functions", yes, no),
        asks("isallneededudfsinstalled()", "select count(*) from rdb$functions", yes, no),
        asks("iszmrddtable('customer')", "select zmBlobSubstr(rdb$description,1,255) from rdb$relations", yes,
             no),
        asks("counttablerecords('customer')", "SELECT COUNT(*) FROM CUSTOMER", "3", "0"),
        asks("gettablenumberofinserts('customer')", "SELECT GEN_ID(G_CUSTOMER_I, 0) FROM", "3", "0"),
        record_count(),
        hard_count(),
        lists("gettablesname()", "select rdb$relation_name",
              R"({"CUSTOMER", "FOREIGN_T", "PROBE", "RDDSYS_FLK", "RDDSYS_OPN", "RDDSYS_RLK", "V_CUSTOMER", )"
              R"("V_OTHER"})"),
        lists("getindexfields('i_two')", "select rdb$field_name", "*"),
        lists("getfieldsontrigger('tr_age')", "SELECT RDB$FIELD_NAME", "*"),
        lists("getinternaltablestruct('customer')", structure_query, "*"),
        structure_of_table(),
        asks("gettabledescription('customer')", "select zmBlobSubstr", "*", R"({""})"),
        asks("getindexdescription('i_name')", "select zmBlobSubstr", "*", R"({""})"),
        asks("getfielddescription('customer', 'ok')", "select zmBlobSubstr", "*", R"({""})"),
    };
}

}  // namespace zmfb::test
