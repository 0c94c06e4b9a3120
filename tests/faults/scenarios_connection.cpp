// Attaching, detaching, and the methods that talk to no database.
#include "tests/faults/scenario.h"
#include "tests/faults/walk.h"
#include "tests/support/environment.h"

namespace zmfb::test {

namespace {

// Attaches a fresh object, answers whether it is attached, and lets go of it.
Value attach(Walk& walk) {
    zmFBConn object;
    object.call("init", walk.name(), sysdba, sysdba_password, "");
    return object.isconnected();
}

constexpr const char* system_tables_failed = "[0] [FATAL] Error creating system tables.";
constexpr const char* connected = "[0] [CONN] Connected to: @DB Pointer";
constexpr const char* exited = "[0] [EXIT] Disconnected from: @DB";
constexpr const char* gone = "[0] [GONE] Class: zmFBConn no longer exists. DB: @DB";
constexpr const char* fatal = "Fatal error on creating system tables. Better to Abort!";

// Whatever becomes of a system table's part, the other lines of an attachment are there.
std::vector<std::string> lines_with(const char* line) { return {connected, line, gone, exited}; }

Failure attach_failed() { return {.statement = "-", .result = ".F.", .logged = {gone}}; }

Failure functions_in_doubt() {
    return {.statement = "select count(*) from rdb$functions",
            .raised = {"The DataBase:; @DB; Does not have all needed UDFs installed!!"},
            .logged = lines_with("[0] [FATAL] Missing UDFs in Database.")};
}

Failure part_failed(std::string statement, const std::string& message) {
    return {.statement = std::move(statement),
            .raised = {message, fatal},
            .logged = lines_with(system_tables_failed),
            .other_state = true};
}

// The statement for older engines is sent, and refused.
Failure version_in_doubt() {
    return {
        .statement = "select rdb$get_context",
        .raised = {"~Erro na descri..o da tabela; Tabela: RDDSYS_...", fatal},
        .logged = {connected, R"(~\[1\] \[ERROR\] SQLCODE=-\d+ \(.*\))", system_tables_failed, gone, exited},
        .other_state = true};
}

Scenario attach_to_sound_database() {
    const auto in_doubt = [](const std::string& table) {
        return Failure{.statement = "select count(*) from rdb$relations where rdb$relation_name = '" + table,
                       .raised = {"Table already exists!; Tbl: " + table, fatal},
                       .logged = lines_with(system_tables_failed)};
    };
    return {.method = "init",
            .call = "",
            .good = ".T.",
            .failures = {attach_failed(), functions_in_doubt(), in_doubt("RDDSYS_OPN"),
                         in_doubt("RDDSYS_FLK"), in_doubt("RDDSYS_RLK")},
            .act = attach};
}

// The system tables are missing and made. A table whose making fails stops the rest.
Scenario attach_to_new_database() {
    return {.method = "init",
            .call = "",
            .uses = Uses::changes,
            .good = ".T.",
            .failures = {attach_failed(),
                         functions_in_doubt(),
                         version_in_doubt(),
                         {.statement = "select "},
                         part_failed("CREATE TABLE ", "~Error on creating Table; FB Error: .ERROR. .*"),
                         part_failed("COMMENT ON TABLE", "~Erro na descri..o da tabela; Tabela: RDDSYS_..."),
                         {.statement = "SELECT COUNT(*)"},
                         {.statement = "COMMENT ON COLUMN",
                          .raised = {"*"},
                          .logged = lines_with(system_tables_failed),
                          .other_state = true},
                         part_failed("CREATE UNIQUE DESC INDEX",
                                     "~Erro na cria..o do .ndice recno; FB Error: .*"),
                         part_failed("CREATE GENERATOR", "~Erro na cria..o do generator [ID]; FB Error: .*"),
                         part_failed("CREATE TRIGGER",
                                     "~Erro na cria..o da trigger (Recno|Deletes); FB Error: .*"),
                         {.statement = "CREATE UNIQUE INDEX",
                          .raised = {fatal},
                          .logged = lines_with(system_tables_failed),
                          .other_state = true}},
            .variant = "on a database without system tables",
            .database = "bare.fdb",
            .act = attach};
}

Scenario quiet(std::string call) {
    const std::string method = call.substr(0, call.find('('));
    return {.method = method, .call = std::move(call), .uses = Uses::nothing, .good = "*"};
}

// Each file gets a number of its own, and is closed again.
Scenario opens(const char* method, const char* file) {
    return {.method = method,
            .call = "",
            .uses = Uses::nothing,
            .good = ".T.",
            .act = [method, file](Walk& walk) -> Value {
                const Value handle = walk.object().call(method, walk.in_folder(file));
                walk.object().call("fclsfile", handle);
                return handle.number() > 0;
            }};
}

}  // namespace

std::vector<Scenario> connection_scenarios() {
    return {attach_to_sound_database(),
            attach_to_new_database(),
            {.method = "disconnect", .call = "disconnect()", .uses = Uses::changes, .good = "NIL"},
            {.method = "axit", .call = "axit()", .uses = Uses::changes, .good = ".T."}};
}

std::vector<Scenario> quiet_scenarios() {
    const char* const calls[] = {
        "announcealias('X')",
        "assemblestatement('A @@B', {{'@@B', 'C'}})",
        "bconn()",
        "closealltables()",
        "dbhndl()",
        "execregex('NUMERIC(10,2)', '.*\\((.*),.*')",
        "fclsfile(-1)",
        "filternormalfields({{'RECNO', 'N', 15, 0}})",
        "filterrddfields({{'NAME', 'C', 10, 0}})",
        "getdatabasename()",
        "getfilename('/a/b')",
        "getfullpathdatfile()",
        "getglbskipcachesize()",
        "getglbskipmode()",
        "gethostname()",
        "getipaddress()",
        "getloglevel()",
        "getpid()",
        "getuniqueareaid('CUSTOMER', '1')",
        "hasfieldnamechanged({'A', 'C', 1, 0}, {'B', 'C', 1, 0})",
        "hidegreetscr()",
        "isconnected()",
        "iscurseson()",
        "isfielddropped({'A', 'C', 1, 0})",
        "isfieldinstru('A', {{'A', 'C', 1, 0}})",
        "isfieldstructurechanged({'A', 'C', 1, 0}, {{'A', 'C', 2, 0}})",
        "isfieldstructuredifferent({{'A', 'C', 1, 0}}, {{'A', 'C', 2, 0}}, 1)",
        "isfirebirdarea('X')",
        "islimbofield('RDDLMB_A')",
        "isrddactive()",
        "isvalidfielddescriptor({'1', 'A', 'C', '1', '0'})",
        "looptest('CUSTOMER', '', '', '')",
        "nomethod('x')",
        "removealias('X')",
        "removefilenameext('a.b')",
        "removezerobytes('a')",
        "restorepreviousrdd()",
        "samefieldname({{'A', 'C', 1, 0}}, {{'A', 'C', 2, 0}}, 1)",
        "savepreviousrdd()",
        "sdbname()",
        "setfullpathdatfile('@DIR/x.dat')",
        "setglbskipcachesize(5)",
        "setglbskipmode(1)",
        "setibrdd()",
        "setloglevel(0)",
        "setrddactive(.T.)",
        "setrddfields({{'A', 'C', 1, 0}})",
        "showgreetscr()",
        "srolename()",
        "susername()",
        "toarray('a,b', ',')",
        "writelog('x', 1)",
    };
    std::vector<Scenario> scenarios;
    for (const char* call : calls) scenarios.push_back(quiet(call));
    scenarios.push_back(opens("fcrtfile", "made"));
    scenarios.push_back(opens("fopnfile", "walk.fdb"));
    return scenarios;
}

}  // namespace zmfb::test
