// The methods that stand for the client itself.
#include "tests/faults/scenario.h"
#include "tests/faults/walk.h"

namespace zmfb::test {

namespace {

constexpr const char* names_query = "select NAME, AGE from CUSTOMER order by RECNO";

Scenario query(std::string method) {
    return {.method = method,
            .call = method + "('" + names_query + "')",
            .good = "*",
            .failures = {{.statement = "select NAME, AGE", .result = "{}"}},
            .ahead_of_rows = 1,
            .header_alone = true};
}

std::vector<Scenario> batch() {
    return {{.method = "starttransaction",
             .call = "starttransaction()",
             .uses = Uses::changes,
             .good = "NIL",
             .silent = true,
             .after = {"commitchanges()"}},
            {.method = "cachedupdate",
             .call = "cachedupdate('update CUSTOMER set AGE = 1')",
             .uses = Uses::changes,
             .good = R"("")",
             .failures = {{.statement = "update CUSTOMER", .result = R"("@E")"}},
             .before = {"starttransaction()"},
             .after = {"commitchanges()"}},
            {.method = "commitchanges",
             .call = "commitchanges()",
             .uses = Uses::changes,
             .good = "NIL",
             .silent = true,
             .before = {"starttransaction()", "cachedupdate('update CUSTOMER set AGE = 1')"}}};
}

}  // namespace

std::vector<Scenario> sql_scenarios() {
    std::vector<Scenario> scenarios = {
        query("executequery"),
        query("internalselect"),
        {.method = "executeupdate",
         .call = "executeupdate('update CUSTOMER set AGE = 1')",
         .uses = Uses::changes,
         .good = R"("")",
         .failures = {{.statement = "update CUSTOMER", .result = R"("@E")"}}},
        {.method = "getrow",
         .call = "getrow('CUSTOMER', 'AGE > 0', 'RECNO', '', 1)",
         .good = "*",
         .failures = {{.statement = "select first 1 skip 1", .result = "{}"}}},
        {.method = "getfirstrows",
         .call = "getfirstrows('CUSTOMER', 'AGE > 0', 'RECNO', '', 2, 1)",
         .good = "*",
         .failures = {{.statement = "select first 2 skip 1", .result = "{}"}},
         .ahead_of_rows = 1,
         .variant = "two rows"},
        {.method = "executeudfskippad",
         .call = "executeudfskippad('NAME', 'CUSTOMER', '1')",
         .good = "*",
         .failures = {{.statement = "select skippad(NAME)", .result = "{}"}}},
        {.method = "evalmeth",
         .call = "evalmeth('istable', {'customer'})",
         .good = ".T.",
         .failures = {{.statement = "select count(*) from rdb$relations", .result = ".F."}}},
    };
    for (Scenario& scenario : batch()) scenarios.push_back(std::move(scenario));
    return scenarios;
}

}  // namespace zmfb::test
