// What of the arguments of each method becomes SQL. Every argument is given a text with a quote in it, the
// others are as usual, and the statements in the log show where it went; the pages of the methods have to say
// the same.
#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <functional>
#include <map>
#include <set>

#include "tests/support/database.h"
#include "tests/support/dbf_builder.h"

namespace zmfb::test {
namespace {

using host::array_of;
using host::Value;

// How far a text reaches into a statement.
enum class Reach { nowhere, doubled, quoted, sql };

// What stands in a place usually, and with the text in it.
struct Argument {
    Value usual;
    std::function<Value(const std::string&)> with = [](const std::string& text) { return Value(text); };
};

Value field(const std::string& name) { return array_of(name, "C", 5, 0); }

Value matrix(const std::string& table, const std::string& name) {
    const std::string line = " " + table + ">>001::" + name + "::C::5::0 => 001::" + name + "::C::5::0";
    return array_of(array_of(array_of(array_of("- - Created by ZMRDDFIRE - -"), array_of(line))));
}

// By the names that the pages give the arguments.
const std::map<std::string, Argument>& arguments() {
    const auto descriptor = [](const std::string& text) { return field(text); };
    const auto structure = [](const std::string& text) { return array_of(field(text)); };
    static const std::map<std::string, Argument> all{
        {"tblname", {"FRESH"}},
        {"areaid", {"CLIENT:A:1:here"}},
        {"fldname", {"NAME"}},
        {"oldnm", {"NAME"}},
        {"bol", {true}},
        {"shared", {true}},
        {"simulate", {false}},
        {"recno", {"1"}},
        {"rec", {"1"}},
        {"sk", {0}},
        {"qti", {1}},
        {"pos", {1}},
        {"fldpos", {1}},
        {"cond", {"RECNO > 0"}},
        {"order", {"RECNO"}},
        {"plan", {""}},
        {"stmt", {"select NAME from CLIENT @@A"}},
        {"priv", {"SELECT"}},
        {"struct", {array_of(field("NAME")), structure}},
        {"tblstru", {array_of(field("NAME")), structure}},
        {"fldstru", {field("NAME"), descriptor}},
        {"fstru", {field("NAME"), descriptor}},
        {"fstru_r", {field("NAME"), descriptor}},
        {"fstru_l", {field("NAME"), descriptor}},
        {"tables", {array_of("CLIENT"), [](const std::string& text) { return array_of(text); }}},
        {"matrix", {matrix("FRESH", "NAME"), [](const std::string& text) { return matrix(text, text); }}},
        {"param",
         {array_of(array_of("@@A", "B")),
          [](const std::string& text) { return array_of(array_of("@@A", text)); }}},
        {"dbfname", {"people.dbf", [](const std::string& text) { return Value(text + ".dbf"); }}},
    };
    return all;
}

const Argument& argument(const std::string& name) {
    static const Argument other{"CLIENT"};
    const auto found = arguments().find(name);
    return found == arguments().end() ? other : found->second;
}

// What an entry of a page says becomes SQL, by the names of the arguments.
using Said = std::map<std::string, Reach>;

std::vector<std::string> words_in_backticks(std::string_view text) {
    std::vector<std::string> words;
    for (std::size_t at = 0; (at = text.find('`', at)) != std::string_view::npos;) {
        const std::size_t end = text.find('`', at + 1);
        words.emplace_back(text.substr(at + 1, end - at - 1));
        at = end + 1;
    }
    return words;
}

// "- **SQL:** `tbl`; in quotes: `areaid`."
void take_sql(const std::string& line, Said& said) {
    constexpr std::string_view mark = "in quotes: ";
    const std::size_t parting = std::min(line.find(mark), line.size());
    for (const std::string& name : words_in_backticks(line.substr(0, parting))) said[name] = Reach::sql;
    for (const std::string& name : words_in_backticks(line.substr(parting))) said[name] = Reach::quoted;
}

const std::map<std::string, Said>& pages() {
    static const std::map<std::string, Said> entries = [] {
        std::map<std::string, Said> found;
        for (const auto& page : std::filesystem::directory_iterator(ZMFB_METHOD_PAGES)) {
            std::ifstream in(page.path());
            std::string method;
            for (std::string line; std::getline(in, line);) {
                if (line.starts_with("### ")) found.try_emplace(method = line.substr(4));
                if (line.starts_with("- **SQL:** ")) take_sql(line, found.at(method));
            }
        }
        return found;
    }();
    return entries;
}

bool is_in_quotes(std::string_view statement, std::size_t position) {
    bool inside = false;
    for (const char c : statement.substr(0, position)) inside = inside != (c == '\'');
    return inside;
}

std::string doubled(const std::string& text) {
    std::string all;
    for (const char c : text) all.append(c == '\'' ? 2 : 1, c);
    return all;
}

Reach reach_in(const std::string& statement, const std::string& text) {
    Reach reach = Reach::nowhere;
    if (doubled(text) != text && statement.find(doubled(text)) != std::string::npos) reach = Reach::doubled;
    for (std::size_t at = 0; (at = statement.find(text, at)) != std::string::npos; ++at) {
        reach = std::max(reach, is_in_quotes(statement, at) ? Reach::quoted : Reach::sql);
    }
    return reach;
}

// What has to be there for an argument to get as far as it can.
struct Preparation {
    std::string text;
    std::string statement;
};
const std::map<std::string, Preparation> preparations{
    // It has to hold the lock that is given back.
    {"settableasunlocked.areaid",
     {"ZQ'ZQ", "insert into RDDSYS_FLK (FLK_TABLE, FLK_AREAID) values ('CLIENT', 'ZQ''ZQ')"}},
    // A table that is not found is not exported.
    {"exiletable.tblname", {"ZQ ZQ", "create table \"ZQ ZQ\" (NAME char(5))"}},
};

class SqlArguments : public Database {
  protected:
    SqlArguments() : before_(std::filesystem::current_path()) {
        std::filesystem::current_path(folder());
        DbfBuilder().field("NAME", 'C', 5).record({"Ana"}).write(file("ZQ'ZQ.dbf"));
        call("createtable", "CLIENT", array_of(field("NAME")));
    }
    ~SqlArguments() override { std::filesystem::current_path(before_); }

    // How far argument `place` of a method reaches.
    Reach reach_of(const MethodRow& method, std::size_t place) {
        const auto prepared =
            preparations.find(std::string(method.name) + "." + std::string(method.parameters[place].name));
        const std::string text = prepared == preparations.end() ? "ZQ'ZQ" : prepared->second.text;
        if (prepared != preparations.end()) prepare(prepared->second.statement);
        std::vector<Value> args;
        for (std::size_t i = 0; i < method.parameters.size(); ++i) {
            const Argument& one = argument(std::string(method.parameters[i].name));
            args.push_back(i == place ? one.with(text) : one.usual);
        }
        call("setfullpathdatfile", file("data.dat"));
        log_at(8);
        clear_log();
        const Value result = connection().call_with(method.name, host::Args(args));
        Reach reach = Reach::nowhere;
        for (const std::string& statement : sql_log()) reach = std::max(reach, reach_in(statement, text));
        // What it makes is a statement, though it sends none.
        if (method.name == "assemblestatement") reach = reach_in(result.string(), text);
        return reach;
    }

    // Runs statements, parted by semicolons, while no object is attached.
    void prepare(std::string_view statements) {
        disconnect();
        while (!statements.empty()) {
            const std::size_t end = std::min(statements.find(';'), statements.size());
            execute(std::string(statements.substr(0, end)));
            statements.remove_prefix(std::min(end + 1, statements.size()));
        }
    }

  private:
    std::filesystem::path before_;
};

// Methods that attach, detach or change the log are not among them.
bool is_asked(const MethodRow& row) {
    static const std::set<std::string_view> left_out{"init", "disconnect", "axit", "setloglevel"};
    return row.kind != MethodKind::assign && !row.parameters.empty() && !left_out.contains(row.name);
}

TEST_F(SqlArguments, ArePutIntoStatementsAsThePagesSay) {
    int reaching = 0, asked = 0;
    for (const MethodRow& row : methods()) {
        if (!is_asked(row)) continue;
        const Said& page = pages().at(std::string(row.name));
        for (std::size_t place = 0; place < row.parameters.size(); ++place) {
            const std::string name(row.parameters[place].name);
            const Reach reach = reach_of(row, place);
            const bool is_sql = reach == Reach::sql || reach == Reach::quoted;
            const auto said = page.find(name);
            const Reach expected = said == page.end() ? Reach::nowhere : said->second;
            EXPECT_EQ(static_cast<int>(is_sql ? reach : Reach::nowhere), static_cast<int>(expected))
                << row.name << "." << name << " (0 nowhere, 2 in quotes, 3 SQL)";
            reaching += is_sql ? 1 : 0;
            ++asked;
        }
        for (const auto& [name, said] : page) {
            EXPECT_NE(std::ranges::find(row.parameters, name, &ParameterRow::name), row.parameters.end())
                << row.name << " has no " << name;
        }
    }
    std::printf("%d arguments, %d of them become SQL\n", asked, reaching);
    EXPECT_GT(reaching, 100);
    forget_raised();
}

TEST_F(SqlArguments, ReachBeyondTheirPlace) {
    const std::vector<std::pair<std::string, std::string>> emptying{
        {"CLIENT", "1 or 1 = 1"}, {"CLIENT --", "1"}, {"CLIENT /*", "*/"}, {"CLIENT", "1 or '' = ''"}};
    for (const auto& [table, record] : emptying) {
        for (int i = 0; i < 3; ++i) call("executeupdate", "insert into CLIENT (NAME) values ('x')");
        EXPECT_TRUE(call("deleterecord", table, record).logical()) << table << " " << record;
        EXPECT_EQ(rows("select count(*) from CLIENT"), (Rows{{"0"}})) << table << " " << record;
    }
    EXPECT_TRUE(call("istable", "NONE' or '1' = '1").logical());
}

// How far what is no argument reaches in a call, once the statement has made something of that name.
struct FromElsewhere {
    std::string made;
    std::string method;
    std::vector<Value> arguments;
    Reach reach;
};

TEST_F(SqlArguments, AreNotAllThatComesIntoStatements) {
    const std::string odd_column = "create table ODD (\"ZQ'ZQ\" char(5))";
    const std::string described = odd_column + ";comment on table ODD is 'Created by ZMRDDFIRE'";
    DbfBuilder().field("ZQ'ZQ", 'C', 5).record({"Ana"}).write(file("people.dbf"));
    const FromElsewhere cases[] = {
        {odd_column, "gettablestruct", {"ODD"}, Reach::quoted},
        {odd_column, "exiletable", {"ODD"}, Reach::sql},
        {described, "applymatrix", {matrix("ODD", "NAME"), false}, Reach::sql},
        {"create table \"ZQ'ZQ\" (A char(5))", "extractmatrix", {array_of(), ""}, Reach::quoted},
        {"", "bringdbf", {"people.dbf"}, Reach::sql},
    };
    for (const FromElsewhere& one : cases) {
        SCOPED_TRACE(one.method + " " + one.made);
        prepare(one.made);
        call("setfullpathdatfile", file("data.dat"));
        log_at(8);
        clear_log();
        connection().call_with(one.method, host::Args(one.arguments));
        Reach reach = Reach::nowhere;
        for (const std::string& statement : sql_log()) reach = std::max(reach, reach_in(statement, "ZQ'ZQ"));
        EXPECT_EQ(static_cast<int>(reach), static_cast<int>(one.reach));
        prepare(one.made.starts_with("create table ODD") ? "drop table ODD" : "");
    }
    forget_raised();
}

}  // namespace
}  // namespace zmfb::test
