// Import and export.
#include <filesystem>

#include "host/latin1.h"
#include "tests/faults/scenario.h"
#include "tests/faults/walk.h"
#include "tests/support/dbf_builder.h"

namespace zmfb::test {

namespace {

using host::operator""_l1;

std::string l1(std::string_view latin1) { return std::string(latin1); }

constexpr const char* refused_line = R"(~\[1\] \[ERROR\] SQLCODE=-\d+ \(.*\))";

Value import(Walk& walk) {
    const std::string path = walk.in_folder("client.dbf");
    DbfBuilder()
        .field("NAME", 'C', 10)
        .field("BORN", 'D', 8)
        .field("AGE", 'N', 5)
        .record({"Ana", "20070301", "31"})
        .record({"Bia", "", "7"})
        .write(path);
    return walk.object().call("bringdbf", path);
}

// The current folder while it lives.
struct InFolder {
    explicit InFolder(const std::filesystem::path& folder) { std::filesystem::current_path(folder); }
    ~InFolder() { std::filesystem::current_path(before); }
    InFolder(const InFolder&) = delete;
    InFolder& operator=(const InFolder&) = delete;
    const std::filesystem::path before = std::filesystem::current_path();
};

// The export writes into the current folder.
Value export_customers(Walk& walk) {
    const InFolder folder(walk.in_folder(""));
    return walk.object().call("exiletable", "CUSTOMER");
}

Failure raises(std::string statement, std::string_view message) {
    return {.statement = std::move(statement), .result = ".F.", .raised = {l1(message)}};
}
Failure passes(std::string statement) { return {.statement = std::move(statement)}; }
// The answer was decided before.
Failure only_raises(std::string statement, std::string_view message) {
    return {.statement = std::move(statement), .raised = {l1(message)}, .other_state = true};
}

Scenario bring() {
    return {
        .method = "bringdbf",
        .call = "",
        .uses = Uses::changes,
        .good = ".T.",
        .failures =
            {passes("SELECT C.RDB$CHARACTER_SET_NAME"),
             passes("select count(*) from rdb$relations"),
             // What cannot be counted differs.
             raises("SELECT COUNT(*) FROM EXT_CLIENT",
                    "Rows and records differ; Table: EXT_CLIENT Rows: 0 Records: 2;Data file: @DIR/data.dat"),
             {.statement = "select rdb$get_context",
              .result = ".F.",
              .raised = {l1("Erro na descrição da tabela; Tabela: CLIENT"_l1)},
              .logged = {refused_line}},
             // Counted row by row then.
             passes("SELECT GEN_ID(G_CLIENT_I, 0) - "),
             passes("SELECT COUNT(*)"),
             raises("CREATE TABLE CLIENT(", "Error on creating Table; FB Error: @E"),
             raises("COMMENT ON TABLE", "Erro na descrição da tabela; Tabela: CLIENT"_l1),
             raises("COMMENT ON COLUMN", "Erro na descrição do campo; Tabela: CLIENT Campo: AGE"_l1),
             raises("CREATE UNIQUE DESC INDEX", "Erro na criação do índice recno; FB Error: @E"_l1),
             raises("CREATE GENERATOR G_CLIENT_I", "Erro na criação do generator I; FB Error: @E"_l1),
             raises("CREATE GENERATOR G_CLIENT_D", "Erro na criação do generator D; FB Error: @E"_l1),
             raises("CREATE TRIGGER T_CLIENT_RECNO", "Erro na criação da trigger Recno; FB Error: @E"_l1),
             raises("CREATE TRIGGER T_CLIENT_DELETES", "Erro na criação da trigger Deletes; FB Error: @E"_l1),
             raises("CREATE TABLE EXT_CLIENT", "Error on creating External Table; FB Error: @E"),
             {.statement = "CREATE TRIGGER T_CLIENT_NULLDATES", .result = ".F."},
             raises(
                 "INSERT INTO CLIENT SELECT",
                 "Erro durante a transferência dos dados da tabela externa para tabela oficial; FB Error: @E"_l1),
             only_raises("DROP TRIGGER T_CLIENT_NULLDATES",
                         "Impossível eliminar trigger; Trigger: T_CLIENT_NULLDATES; FB Error: @E"_l1),
             only_raises("DROP TABLE EXT_CLIENT",
                         "Impossível eliminar a Tabela: EXT_CLIENT; FB Error: @E"_l1)},
        .act = import};
}

Scenario exile() {
    return {
        .method = "exiletable",
        .call = "",
        .uses = Uses::changes,
        .good = ".T.",
        .failures =
            {{.statement = "select rf.rdb$field_name", .result = ".F.", .partial = "?"},
             // A logical field is taken for a text.
             passes("select zmBlobSubstr"),
             passes("SELECT C.RDB$CHARACTER_SET_NAME"),
             raises("SELECT COUNT(*) FROM CUSTOMER",
                    "Rows and records differ; Table: CUSTOMER Rows: 0 Records: 3;Data file: @DIR/data.dat"),
             // When it cannot be told whether the external table is there, it stays.
             {.statement = "select count(*) from rdb$relations where rdb$relation_name = 'EXT_CUSTOMER'",
              .other_state = true,
              .nth = 3},
             passes("select count(*) from rdb$relations"),
             raises("CREATE TABLE EXT_CUSTOMER", "Error on creating External Table; FB Error: @E"),
             raises(
                 "INSERT INTO EXT_CUSTOMER SELECT",
                 "Erro durante a transferência dos dados da tabela oficial para tabela externa; FB Error: @E"_l1),
             only_raises("DROP TABLE EXT_CUSTOMER",
                         "Impossível eliminar a Tabela: EXT_CUSTOMER; FB Error: @E"_l1)},
        .act = export_customers};
}

}  // namespace

std::vector<Scenario> transfer_scenarios() { return {bring(), exile()}; }

}  // namespace zmfb::test
