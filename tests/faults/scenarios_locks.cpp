// Registrations and locks. Area A holds everything that is held of CUSTOMER.
#include "tests/faults/scenario.h"

namespace zmfb::test {

namespace {

constexpr const char* record_holder = "SELECT RLK_AREAID FROM RDDSYS_RLK";
constexpr const char* table_holder = "SELECT FLK_AREAID FROM RDDSYS_FLK";
constexpr const char* own_record_locks =
    "SELECT COUNT(*) FROM RDDSYS_RLK WHERE RLK_TABLE = 'CUSTOMER' AND RLK_AREAID = ";
constexpr const char* other_record_locks =
    "SELECT COUNT(*) FROM RDDSYS_RLK WHERE RLK_TABLE = 'CUSTOMER' AND RLK_AREAID <> ";
constexpr const char* registrations = "SELECT COUNT(*) FROM RDDSYS_OPN";

Scenario asks(std::string call, std::string statement, std::string good, std::string failed) {
    const std::string method = call.substr(0, call.find('('));
    return {.method = method,
            .call = std::move(call),
            .good = std::move(good),
            .failures = {{.statement = std::move(statement), .result = std::move(failed)}}};
}

std::vector<Scenario> questions() {
    const std::string yes = ".T.", no = ".F.";
    Scenario records = asks("getlockedrecords('customer', 'A')", "SELECT RLK_RECNO", "{1, 2}", "{}");
    records.ahead_of_rows = 0;
    Scenario tables = asks("getlockedtables()", "SELECT FLK_TABLE, FLK_AREAID", "*", "{}");
    tables.ahead_of_rows = 0;
    return {
        asks("getrlockareaid('customer', '1')", record_holder, R"("A")", R"("")"),
        asks("getflockareaid('customer')", table_holder, R"("A")", R"("")"),
        asks("istablelockedbyuser('customer', 'A')", table_holder, yes, no),
        asks("isrecordlocked('customer', 'Z', '1')", record_holder, yes, no),
        asks("isrecordlockedbyuser('customer', 'A', '1')", record_holder, yes, no),
        asks("isrecordlockedbyanotheruser('customer', 'B', '1')", record_holder, yes, no),
        asks("existsanotheruserflock('customer', 'B')", table_holder, yes, no),
        asks("existsuserrlocks('customer', 'A')", own_record_locks, yes, no),
        asks("existsanotheruserrlocks('customer', 'B')", other_record_locks, yes, no),
        records,
        tables,
        asks("istableusedbyarea('customer', 'A')", registrations, yes, no),
        asks("istableinuse('customer')", "SELECT FIRST 1 OPN_TABLE", yes, no),
        asks("istableinexclusivemode('customer')", "SELECT FIRST 1 OPN_TABLE", yes, no),
        asks("getapprecnofromarea('customer', 'A')", "SELECT OPN_APPRECNO", "3", "0"),
    };
}

}  // namespace

std::vector<Scenario> lock_scenarios() {
    std::vector<Scenario> scenarios = questions();
    const auto refuses = [](const char* statement) {
        return Failure{.statement = statement, .result = ".F."};
    };
    // A failed question reads as "nobody holds it": the grant then rests on the unique index.
    const auto grants = [](const char* statement) { return Failure{.statement = statement}; };
    const std::vector<Scenario> operations = {
        changes("setrecordaslocked('customer', 'A', '9')",
                {grants(record_holder), grants(table_holder), refuses("INSERT INTO RDDSYS_RLK")}),
        changes("setrecordasunlocked('customer', 'A', '1')",
                {refuses(record_holder), refuses("DELETE FROM RDDSYS_RLK")}),
        changes("unlockallrecords('customer', 'A')",
                {refuses(own_record_locks), refuses("DELETE FROM RDDSYS_RLK")}),
        changes("settableaslocked('other', 'A')", {grants("SELECT COUNT(*) FROM RDDSYS_RLK"),
                                                   grants(table_holder), refuses("INSERT INTO RDDSYS_FLK")}),
        changes("settableasunlocked('customer', 'A')",
                {refuses(table_holder), refuses("DELETE FROM RDDSYS_FLK")}),
        changes("releaselocks('customer')",
                {refuses("DELETE FROM RDDSYS_RLK"), refuses("DELETE FROM RDDSYS_FLK")}),
        changes("settableusedbyarea(.T., 'customer', 'B', .T.)",
                {grants(registrations), refuses("INSERT INTO RDDSYS_OPN")}, "registers"),
        // Taken for one that is not there, the registration stays; the answer is that of an idle call.
        changes("settableusedbyarea(.F., 'customer', 'A', .T.)",
                {{.statement = registrations, .other_state = true}, refuses("DELETE FROM RDDSYS_OPN")},
                "unregisters"),
        {.method = "clearsystemtables",
         .call = "clearsystemtables()",
         .uses = Uses::changes,
         .good = ".T.",
         .failures = {{.statement = "DELETE FROM RDDSYS_OPN",
                       .result = ".F.",
                       .raised = {"Erro ao zerar tabela; Tabela: RDDSYS_OPN;FB Error: @E"},
                       .logged = {"[0] [ERROR] Failed clearing System Tables. Try again."}},
                      {.statement = "DELETE FROM RDDSYS_FLK",
                       .raised = {"Erro ao zerar tabela; Tabela: RDDSYS_FLK;FB Error: @E"},
                       .other_state = true},
                      {.statement = "DELETE FROM RDDSYS_RLK",
                       .raised = {"Erro ao zerar tabela; Tabela: RDDSYS_RLK;FB Error: @E"},
                       .other_state = true}}},
    };
    scenarios.insert(scenarios.end(), operations.begin(), operations.end());
    return scenarios;
}

}  // namespace zmfb::test
