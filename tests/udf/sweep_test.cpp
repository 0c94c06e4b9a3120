// Stored functions beside those of the module, byte by byte.
#include "tests/udf/sweep.h"

#include <fmt/format.h>

#include <cmath>
#include <cstdlib>
#include <limits>
#include <string_view>

#include "tests/support/database.h"
#include "tests/support/environment.h"
#include "tests/support/server.h"
#include "udf_script.h"
#include "zmfbconn/transaction.h"

namespace zmfb::test {
namespace {

struct Comparison {
    std::string_view function;
    std::string_view arguments;
    std::string_view from;
};

constexpr Comparison comparisons[] = {
    {"TRIM", "T.V", "T"},
    {"LOWER", "T.V", "T"},
    {"UPPER", "T.V", "T"},
    {"SKIPPAD", "T.V", "T"},
    {"PADR", "T.V, I.V", "T, I"},
    {"PADL", "T.V, I.V", "T, I"},
    {"SUBSTR", "T.V, I.V, J.V", "T, I, I J"},
    {"STR", "X.V, I.V, J.V", "X, I, I J"},
    {"STRZERO", "X.V, I.V, J.V", "X, I, I J"},
    {"DTOS", "D.V", "D"},
    {"BLOBSUBSTR", "B.V, I.V, J.V", "B, I, I J"},
};

// The module's functions under other names, so that one database has both.
std::string module_beside() {
    std::string script(udf::declaration_script);
    for (const std::string_view name : {"FUNCTION ZM", "FUNCTION SKIPPAD"}) {
        for (std::size_t at = 0; (at = script.find(name, at)) != std::string::npos; ++at)
            script.replace(at, std::string_view("FUNCTION ZM").size(),
                           name.ends_with("ZM") ? "FUNCTION CM" : "FUNCTION CMSK");
    }
    return script;
}

class StoredFunctions : public Database {
  protected:
    static bool whole() { return std::getenv("ZMFB_UDF_SWEEP") != nullptr; }

    static void prepare(const std::string& database) {
        must_succeed(install_functions(database, sysdba, sysdba_password, Functions::stored));
        must_succeed(run_script(database, sysdba, sysdba_password, module_beside()));
        must_succeed(run_script(database, sysdba, sysdba_password,
                                "create table T (V varchar(4000) character set none);\n"
                                "create table X (V double precision);\n"
                                "create table I (V integer);\n"
                                "create table D (V timestamp);\n"
                                "create table B (V blob sub_type text character set none);\n"));
        const Inputs all = inputs(whole());
        BareClient client(database);
        const auto insert = [&client](std::string_view table, const std::vector<std::string>& values) {
            for (const std::string& value : values)
                client.execute(fmt::format("insert into {} values ({})", table, value));
        };
        insert("T", all.texts);
        insert("X", all.numbers);
        insert("I", all.counts);
        insert("D", all.moments);
        client.execute("insert into B select V from T");
        client.execute("insert into B select list(V, '-') from T where octet_length(V) > 200");
    }

    static void compare(const std::string& database) {
        BareClient client(database);
        long calls = 0;
        for (const Comparison& one : comparisons) {
            const bool prefixed = one.function != "SKIPPAD";
            const auto result = [&](std::string_view prefix) {
                return fmt::format("coalesce({}{}({}) || '|', 'null')", prefix, one.function, one.arguments);
            };
            const std::string ours = result(prefixed ? "ZM" : ""), modules = result("CM");
            const std::string from =
                fmt::format(" from {} where {} is distinct from {}", one.from, ours, modules);
            calls += std::stol(client.rows(fmt::format("select count(*) from {}", one.from))[0][0]);
            EXPECT_EQ(client.rows("select count(*)" + from), (Rows{{"0"}}))
                << one.function << ": "
                << ::testing::PrintToString(client.rows(
                       fmt::format("select first 5 {}, cast({} as varchar(99)), cast({} as varchar(99)){}",
                                   one.arguments, ours, modules, from)));
        }
        EXPECT_GT(calls, whole() ? 1'700'000 : 40'000);
    }
};

TEST_F(StoredFunctions, AnswerAsTheModulesDoByteByByte) {
    prepare(database());
    compare(database());
}

TEST_F(StoredFunctions, AnswerAsTheModulesDoOnAGivenFirebird) {
    const char* const given = std::getenv("ZMFB_TEST_FIREBIRD");
    if (given == nullptr) GTEST_SKIP() << "ZMFB_TEST_FIREBIRD names no folder of an unpacked Firebird";
    const Server server({.firebird = given, .as_it_comes = false, .settings = {}});
    const std::string name = server.name_of(file("given.fdb"));
    must_succeed(create_database(name, sysdba, sysdba_password));
    prepare(name);
    compare(name);
}

TEST_F(StoredFunctions, NumbersThatAreNoneBecomeAsterisksAsOfTheModules) {
    prepare(database());
    {
        Transaction work(connection());
        const double infinite = std::numeric_limits<double>::infinity();
        work.execute("delete from X");
        for (const double number : {infinite, -infinite, std::nan("")})
            work.execute("insert into X values (?)", number);
        work.commit();
    }
    EXPECT_EQ(rows("select ZMSTR(V, 5, 2), CMSTR(V, 5, 2), ZMSTRZERO(V, 3, 0) from X"),
              (Rows{{"*****", "*****", "***"}, {"*****", "*****", "***"}, {"*****", "*****", "***"}}));
}

}  // namespace
}  // namespace zmfb::test
