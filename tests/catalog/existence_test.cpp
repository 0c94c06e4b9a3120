#include "tests/support/database.h"
#include "tests/support/environment.h"

namespace zmfb::test {
namespace {

class Existence : public Database {
  protected:
    Existence() {
        execute("create table CLIENT (NAME char(10), CITY char(10))");
        execute("create table OTHER (NAME char(10))");
        execute("create view V_CLIENT (NAME) as select NAME from CLIENT");
        execute("create index I_NAME on CLIENT (NAME)");
        execute("create trigger T_CLIENT for CLIENT active before insert position 9 as begin end");
        log_at(8);
    }
};

struct Question {
    std::string method;
    std::string first;
    std::string second;
    bool answer;
    std::string statement;
};

const Question questions[] = {
    {"istable", "client", "", true, "select count(*) from rdb$relations where rdb$relation_name = 'CLIENT' "},
    {"istable", "V_CLIENT", "", true,
     "select count(*) from rdb$relations where rdb$relation_name = 'V_CLIENT' "},
    {"istable", "CLIENTS", "", false,
     "select count(*) from rdb$relations where rdb$relation_name = 'CLIENTS' "},
    {"istable", " client", "", false,
     "select count(*) from rdb$relations where rdb$relation_name = ' CLIENT' "},
    {"istable", "", "", false, "select count(*) from rdb$relations where rdb$relation_name = '' "},
    {"isview", "v_client", "", true,
     "SELECT COUNT(*) FROM RDB$VIEW_RELATIONS WHERE RDB$VIEW_NAME = 'V_CLIENT' "},
    {"isview", "CLIENT", "", false,
     "SELECT COUNT(*) FROM RDB$VIEW_RELATIONS WHERE RDB$VIEW_NAME = 'CLIENT' "},
    {"isfieldoftable", "client", "name", true,
     "SELECT COUNT(*) FROM RDB$RELATION_FIELDS WHERE RDB$FIELD_NAME = 'NAME' AND RDB$RELATION_NAME = "
     "'CLIENT' "},
    {"isfieldoftable", "OTHER", "CITY", false,
     "SELECT COUNT(*) FROM RDB$RELATION_FIELDS WHERE RDB$FIELD_NAME = 'CITY' AND RDB$RELATION_NAME = "
     "'OTHER' "},
    {"isindex", "i_name", "", true, "select count(*) from rdb$indices where rdb$index_name = 'I_NAME' "},
    {"isindex", "I_CITY", "", false, "select count(*) from rdb$indices where rdb$index_name = 'I_CITY' "},
    {"istrigger", "t_client", "", true,
     "select count(*) from rdb$triggers where rdb$trigger_name = 'T_CLIENT' "},
    {"istrigger", "CLIENT", "", false,
     "select count(*) from rdb$triggers where rdb$trigger_name = 'CLIENT' "},
    {"isindexoftable", "client", "i_name", true,
     "select count(*) from rdb$indices where rdb$relation_name = 'CLIENT' and rdb$index_name = 'I_NAME' "},
    {"isindexoftable", "OTHER", "I_NAME", false,
     "select count(*) from rdb$indices where rdb$relation_name = 'OTHER' and rdb$index_name = 'I_NAME' "},
    {"istriggeroftable", "client", "t_client", true,
     "select count(*) from rdb$triggers where rdb$relation_name = 'CLIENT' and rdb$trigger_name = "
     "'T_CLIENT' "},
    {"istriggeroftable", "OTHER", "T_CLIENT", false,
     "select count(*) from rdb$triggers where rdb$relation_name = 'OTHER' and rdb$trigger_name = "
     "'T_CLIENT' "},
    {"isudf", "ZMTRIM", "zmrddudfs", true,
     "select count(*) from rdb$functions where rdb$function_name = 'ZMTRIM' and rdb$module_name = "
     "'zmrddudfs' "},
    {"isudf", "zmtrim", "zmrddudfs", false,
     "select count(*) from rdb$functions where rdb$function_name = 'zmtrim' and rdb$module_name = "
     "'zmrddudfs' "},
    {"isudf", "ZMTRIM", "ZMRDDUDFS", false,
     "select count(*) from rdb$functions where rdb$function_name = 'ZMTRIM' and rdb$module_name = "
     "'ZMRDDUDFS' "},
};

TEST_F(Existence, EachTestAsksTheSystemTablesInItsOwnWords) {
    declare_module();
    connection();
    for (const Question& question : questions) {
        SCOPED_TRACE(question.statement);
        clear_log();
        EXPECT_EQ(show(call(question.method, question.first, question.second)),
                  question.answer ? ".T." : ".F.");
        EXPECT_EQ(sql_log(), std::vector{question.statement});
    }
}

TEST_F(Existence, AQuoteInANameBreaksTheQueryAndReadsAsNo) {
    connection();
    for (const std::string method : {"istable", "isview", "isindex", "istrigger"}) {
        SCOPED_TRACE(method);
        clear_log();
        EXPECT_FALSE(call(method, "O'BRIEN").logical());
        ASSERT_EQ(log_lines().size(), 2U);
        EXPECT_EQ(log_lines()[1].level, 1);
        EXPECT_TRUE(log_lines()[1].text.starts_with("[ERROR] SQLCODE=-104 ("));
    }
    EXPECT_FALSE(call("isfieldoftable", "CLIENT", "O'BRIEN").logical());
    EXPECT_FALSE(call("isudf", "O'BRIEN", "zmrddudfs").logical());
}

TEST_F(Existence, WithoutADatabaseNothingExists) {
    zmFBConn unattached;
    for (const Question& question : questions) {
        EXPECT_FALSE(unattached.call(question.method, question.first, question.second).logical());
    }
    EXPECT_FALSE(unattached.call("isallneededudfsinstalled").logical());
}

std::vector<std::string> udf_queries(std::size_t count) {
    const char* names[] = {"ZMBLOBSUBSTR", "ZMTRIM", "ZMLOWER",   "ZMUPPER", "ZMSUBSTR", "ZMDTOS",
                           "SKIPPAD",      "ZMSTR",  "ZMSTRZERO", "ZMPADR",  "ZMPADL"};
    std::vector<std::string> queries;
    for (std::size_t i = 0; i < count; ++i) {
        queries.push_back(std::string("select count(*) from rdb$functions where rdb$function_name = '") +
                          names[i] + "' and rdb$module_name = 'zmrddudfs' ");
    }
    return queries;
}

const std::string stored_question =
    "select trim(a.rdb$function_name), f.rdb$field_type || ':' || f.rdb$field_length from "
    "rdb$function_arguments a join rdb$fields f on f.rdb$field_name = a.rdb$field_source where "
    "a.rdb$package_name is null and a.rdb$function_name in ('ZMBLOBSUBSTR', 'ZMTRIM', 'ZMLOWER', 'ZMUPPER', "
    "'ZMSUBSTR', 'ZMDTOS', 'SKIPPAD', 'ZMSTR', 'ZMSTRZERO', 'ZMPADR', 'ZMPADL') order by "
    "a.rdb$function_name, "
    "a.rdb$argument_position";

TEST_F(Existence, StoredFunctionsAreAskedForOnceWhenTheModulesAreNotThere) {
    must_succeed(install_functions(database(), sysdba, sysdba_password, Functions::stored));
    connection();
    EXPECT_TRUE(call("isallneededudfsinstalled").logical());
    std::vector<std::string> queries = udf_queries(1);
    queries.push_back(stored_question);
    EXPECT_EQ(sql_log(), queries);
}

TEST_F(Existence, StoredFunctionsCountOnlyWithTheirParametersAndAllOfThem) {
    must_succeed(install_functions(database(), sysdba, sysdba_password, Functions::stored));
    connection();
    const char* changes[] = {
        "create or alter function ZMPADL (T varchar(4000) character set none, N smallint) returns "
        "varchar(4000) "
        "character set none as begin return T; end",
        "create or alter function ZMPADL (T varchar(4000) character set none, N integer, M integer) returns "
        "varchar(4000) character set none as begin return T; end",
        "create or alter function ZMPADL (T varchar(4000) character set none, N integer) returns "
        "varchar(100) "
        "character set none as begin return T; end",
        "drop function ZMPADL"};
    for (const char* change : changes) {
        execute(change);
        EXPECT_FALSE(call("isallneededudfsinstalled").logical()) << change;
    }
    execute(
        "create function ZMPADL (T varchar(4000) character set none, N integer) returns varchar(4000) "
        "character set none as begin return T; end");
    EXPECT_TRUE(call("isallneededudfsinstalled").logical());
}

TEST_F(Existence, AllElevenFunctionsAreAskedForInTheirOrder) {
    declare_module();
    connection();
    EXPECT_TRUE(call("isallneededudfsinstalled").logical());
    EXPECT_EQ(sql_log(), udf_queries(11));
}

TEST_F(Existence, WithoutTheLastFunctionAllElevenAreAskedForAndTheAnswerIsNo) {
    declare_module();
    connection();
    execute("drop function ZMPADL");
    EXPECT_FALSE(call("isallneededudfsinstalled").logical());
    std::vector<std::string> queries = udf_queries(11);
    queries.push_back(stored_question);
    EXPECT_EQ(sql_log(), queries);
}

TEST_F(Existence, WithoutTheFirstFunctionOneIsAskedFor) {
    declare_module();
    connection();
    execute("drop function ZMBLOBSUBSTR");
    EXPECT_FALSE(call("isallneededudfsinstalled").logical());
    std::vector<std::string> queries = udf_queries(1);
    queries.push_back(stored_question);
    EXPECT_EQ(sql_log(), queries);
}

}  // namespace
}  // namespace zmfb::test
