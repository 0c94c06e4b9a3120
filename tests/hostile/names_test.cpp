// Names that are SQL, on every kind of object, made by another user. Whatever the tool is told to do with
// them, and whatever a shell makes of its hints, nothing but the addressed object changes: the whole catalog
// and every generator are compared.
#include <algorithm>
#include <cstdio>
#include <map>
#include <set>

#include "tests/support/bare_client.h"
#include "tests/support/dbf_builder.h"
#include "tests/support/environment.h"
#include "tests/support/server.h"
#include "tests/tool/tool.h"

namespace zmfb::test {
namespace {

constexpr const char* other_password = "anna";

// `text` in quotes of SQL.
std::string in_quotes(const std::string& text, char quote) {
    std::string all(1, quote);
    for (const char c : text) all.append(c == quote ? 2 : 1, c);
    return all + quote;
}
std::string quoted(const std::string& name) { return in_quotes(name, '"'); }

// Plain, and as long as names can be.
const std::string long_name = "ABCDEFGHIJKLMNOPQRSTUVWXYZABCDE";

// T and VICTIM are tables of the owner, G_T_I the generator of T.
const std::vector<std::string> hostile_names{
    "T WHERE GEN_ID(G_T_I,9)>0",
    "T_I,9)-GEN_ID(G_T",
    "T' OR GEN_ID(G_T_I,9)>0--",
    "t' or gen_id(g_t_i,9)>0 or '",
    "X INT, B COMPUTED BY (1) --",
    "VICTIM --",
    "VICTIM -- --_NULLDATES",
    "VICTIM /*",
    "VICTIM;",
    "VICTIM\" --",
    "VIC\"\"TIM",
    " VICTIM",
    "victim",
    "Victim",
    "g_t_i",
    "VICTIM\t\x1b[31m\x7f",
    "VICTIM $(touch pwned) `id` !1",
    "'; touch pwned; '",
    "\\",
    "../VICTIM",
    "EXT_VICTIM --",
    "RDDSYS_OPN --",
    "A,B",
    "A)(B",
    "@@TABLENAME",
    "\xC3\x81GUA",
    "\xE6\xB0\xB4",
    "SELECT",
    "USER",
    long_name,
    "T WHERE GEN_ID(G_T_I,999999)>0;",
};

// Typed without quotes they mean another object, which the owner may change.
bool means_another(const std::string& name) {
    static const std::set<std::string> names{" VICTIM", "victim", "Victim", "g_t_i"};
    return names.contains(name);
}

// What the engine's own tables and the tables of the owner have in them, by kind.
using Snapshot = std::map<std::string, Rows>;

const std::vector<std::pair<std::string, std::string>> snapshot_queries{
    {"relations",
     "select rdb$relation_name, rdb$owner_name, rdb$relation_type, rdb$external_file, "
     "cast(substring(rdb$description from 1 for 200) as varchar(200)), iif(rdb$view_blr is null, 0, 1) from "
     "rdb$relations"},
    {"columns",
     "select rdb$relation_name, rdb$field_name, rdb$field_source, rdb$field_position, rdb$null_flag, "
     "cast(substring(rdb$description from 1 for 200) as varchar(200)) from rdb$relation_fields"},
    {"domains",
     "select rdb$field_name, rdb$field_type, rdb$field_length, rdb$field_scale, rdb$owner_name from "
     "rdb$fields"},
    // Those of the engine count what it makes, and what a check makes and drops again.
    {"generators",
     "select rdb$generator_name, rdb$owner_name from rdb$generators where coalesce(rdb$system_flag, 0) = 0"},
    {"triggers",
     "select rdb$trigger_name, rdb$relation_name, rdb$trigger_type, rdb$trigger_inactive, "
     "cast(substring(rdb$trigger_source from 1 for 200) as varchar(200)) from rdb$triggers"},
    {"indexes",
     "select rdb$index_name, rdb$relation_name, rdb$unique_flag, rdb$index_inactive, rdb$index_type from "
     "rdb$indices"},
    {"index segments", "select rdb$index_name, rdb$field_name, rdb$field_position from rdb$index_segments"},
    {"procedures", "select rdb$procedure_name, rdb$owner_name from rdb$procedures"},
    {"functions", "select rdb$function_name, rdb$module_name from rdb$functions"},
    {"exceptions", "select rdb$exception_name, rdb$message from rdb$exceptions"},
    {"roles", "select rdb$role_name, rdb$owner_name from rdb$roles"},
    {"constraints",
     "select rdb$constraint_name, rdb$constraint_type, rdb$relation_name from rdb$relation_constraints"},
    {"checks", "select rdb$constraint_name, rdb$trigger_name from rdb$check_constraints"},
    {"views", "select rdb$view_name, rdb$relation_name, rdb$view_context from rdb$view_relations"},
    {"dependencies",
     "select rdb$dependent_name, rdb$depended_on_name, rdb$field_name, rdb$dependent_type, "
     "rdb$depended_on_type from rdb$dependencies"},
    {"privileges",
     "select rdb$user, rdb$grantor, rdb$privilege, rdb$relation_name, rdb$field_name, rdb$object_type from "
     "rdb$user_privileges where rdb$relation_name not starting with 'RDB$'"},
    {"rows of T", "select name, recno from T"},
    {"rows of VICTIM", "select name, recno from VICTIM"},
    {"rows of the system tables",
     "select 'O', OPN_TABLE, OPN_AREAID from RDDSYS_OPN union all select 'F', FLK_TABLE, FLK_AREAID from "
     "RDDSYS_FLK union all select 'R', RLK_TABLE, RLK_AREAID from RDDSYS_RLK"},
};

class HostileNames : public Tool {
  protected:
    void SetUp() override {
        path = database();
        if (on_server()) make_user();
        for (const char* table : {"T", "VICTIM"}) {
            call("createtable('" + std::string(table) + "', {{'NAME', 'C', 10, 0}})");
            exec(path, "insert into " + std::string(table) + " (name) values ('one')");
            exec(path, "grant select on " + std::string(table) + " to anna");
        }
        exec(path, "create view INNOCENT as select name from VICTIM");
        exec(path, "grant execute on function zmblobsubstr to public");
        for (const char* kind : {"table", "view", "procedure", "sequence", "domain", "exception", "role"}) {
            exec(path, std::string("grant create ") + kind + " to anna");
        }
        make_hostile_objects();
        call("settableaslocked('VICTIM', 'VICTIM:A:1:afar')");
        before = snapshot();
    }

    void call(const std::string& line) const {
        const Finished run = on(path, {"call", line});
        ASSERT_EQ(run.status, 0) << run.err;
    }

    [[nodiscard]] Snapshot snapshot() {
        BareClient client(path);
        Snapshot all;
        for (const auto& [kind, query] : snapshot_queries) {
            all[kind] = client.rows(query + " order by 1, 2");
            compared_ += all[kind].size();
        }
        for (const Row& row : all["generators"]) {
            all["values"].push_back(
                {row[0], client.rows("select gen_id(" + quoted(row[0]) + ", 0) from rdb$database")[0][0]});
        }
        for (auto& [kind, rows] : all) std::ranges::sort(rows);
        return all;
    }

    // Runs the tool as the owner, and expects it to change nothing.
    Finished expect_no_change(const std::vector<std::string>& words, const std::string& input = "") {
        const Finished run = on(path, words, input);
        ++commands_;
        EXPECT_LT(run.status, 4) << run.err;
        EXPECT_EQ((run.out + run.err).find('\x1b'), std::string::npos) << run.out << run.err;
        expect_as_before(words);
        return run;
    }
    // Runs what makes a table of a name of its own, and expects all to be as before when that is dropped.
    void expect_a_table_beside(const std::vector<std::string>& words) {
        const Finished run = on(path, words);
        ++commands_;
        EXPECT_EQ(run.status, 0) << run.err;
        EXPECT_EQ((run.out + run.err).find('\x1b'), std::string::npos) << run.out << run.err;
        const Rows made = missing(snapshot().at("relations"), before.at("relations"));
        ASSERT_EQ(made.size(), 1U) << show(words) << run.out;
        ASSERT_EQ(on(path, {"drop", "--yes", made[0][0]}).status, 0) << made[0][0];
        expect_as_before(words);
    }
    void expect_as_before(const std::vector<std::string>& words) {
        const Snapshot after = snapshot();
        for (const auto& [kind, rows] : before) {
            EXPECT_EQ(missing(rows, after.at(kind)), Rows()) << kind << " gone after zmfb " << show(words);
            EXPECT_EQ(missing(after.at(kind), rows), Rows()) << kind << " new after zmfb " << show(words);
        }
    }

    // Runs the command line of a hint as a shell takes it.
    Finished follow(const std::string& hint) {
        ++hints_;
        return run({"env", "-u", "FIREBIRD", "-u", "FIREBIRD_LOCK", "-C", file(""),
                    "XDG_CACHE_HOME=" + (process_folder() / "cache").string(), "bash", "-c",
                    "tool=$1 db=$2; zmfb() { \"$tool\" --db \"$db\" \"$@\"; }; " + hint, "bash", ZMFB_TOOL,
                    path});
    }

    // The rows of one that the other has not; both are sorted.
    static Rows missing(const Rows& one, const Rows& other) {
        Rows found;
        std::ranges::set_difference(one, other, std::back_inserter(found));
        return found;
    }
    static std::string show(const std::vector<std::string>& words) {
        std::string all;
        for (const std::string& word : words) all += word + " ";
        return all;
    }

    void print_counts() const {
        std::printf("%zu names, %zu commands, %zu hints followed, %zu rows compared\n", hostile_names.size(),
                    commands_, hints_, compared_);
    }

    std::string path;
    Snapshot before;

  private:
    static void make_user() {
        static bool made = false;
        if (!std::exchange(made, true)) Server::shared().create_user("anna", other_password);
    }
    void make_hostile_objects() const;

    std::size_t commands_ = 0;
    std::size_t hints_ = 0;
    std::size_t compared_ = 0;
};

// Every kind of object under every name; tables with all that a half-made table of the driver has, and its
// description.
void HostileNames::make_hostile_objects() const {
    std::string script = "create table COLUMNS (A char(5)";
    for (const std::string& name : hostile_names) script += ", " + quoted(name) + " char(5)";
    script += ", RDD_AREAID varchar(50), RECNO double precision);\n";
    script += "comment on table COLUMNS is 'Created by ZMRDDFIRE';\n";
    for (const std::string& name : hostile_names) {
        const std::string n = quoted(name);
        script += "create table " + n + " (A char(5), RDD_AREAID varchar(50), RECNO double precision);\n";
        if (name != long_name) script += "comment on table " + n + " is 'Created by ZMRDDFIRE';\n";
        script += "insert into " + n + " (A) values ('x');\n";
        script += "create sequence " + n + ";\n";
        script += "create domain " + n + " as char(3);\n";
        script += "create exception " + n + " 'no';\n";
        script += "create role " + n + ";\n";
        script += "create index " + n + " on COLUMNS (A);\n";
        script += "alter table COLUMNS add constraint " + n + " check (A <> 'z');\n";
        // Procedures and tables have their names in common.
        script += "create procedure " + quoted("p" + name.substr(0, 30)) +
                  " as declare C char(10); begin select first 1 NAME from T into :C; end;\n";
        script += "create trigger " + n +
                  " for COLUMNS before update as declare C char(10); begin select first 1 "
                  "NAME from VICTIM into :C; end;\n";
    }
    script += "create view \"innocent\" as select NAME from VICTIM;\n";
    script += "create view SPRUNG as select GEN_ID(G_T_I, 9) as N from rdb$database;\n";
    script += "create sequence G_FORGED_I;\n";
    const std::vector<std::string> environment =
        on_server() ? std::vector<std::string>{"ISC_USER=anna", std::string("ISC_PASSWORD=") + other_password}
                    : std::vector<std::string>{"ISC_USER=anna"};
    const Finished made = zmfb({"--db", path, "shell"}, script, environment);
    ASSERT_EQ(made.status, 0) << made.err;
    // Described as one of the driver's, but with a generator of somebody else's.
    exec(path, "create table FORGED (A char(5), RDD_AREAID varchar(50), RECNO double precision)");
    exec(path, "comment on table FORGED is 'Created by ZMRDDFIRE'");
}

TEST_F(HostileNames, NothingChangesWhateverTheyAreNamedTo) {
    for (const std::vector<std::string>& words : std::vector<std::vector<std::string>>{
             {"tables"},
             {"--json", "tables"},
             {"doctor"},
             {"locks"},
             {"opens"},
             {"struct", "columns"},
             {"--json", "struct", "columns"},
             {"struct", "sprung"},
             {"drop", "-y", "columns"},
             {"drop", "-y", "forged"},
             {"drop", "-y", "victim"},
             {"export", "columns", "--yes", "-o", file("")},
             {"matrix", "extract", "columns"},
             {"matrix", "extract", "-o", file("all.tf")},
             {"matrix", "check", file("all.tf")},
         }) {
        expect_no_change(words);
    }
    for (const std::string& name : hostile_names) {
        for (const std::string& typed : {name, quoted(name)}) {
            if (typed == name && means_another(name)) continue;
            for (const std::vector<std::string>& words : std::vector<std::vector<std::string>>{
                     {"struct", "--", typed},
                     {"drop", "-y", "--", typed},
                     {"export", "--yes", "-o", file(""), "--", typed},
                     {"unlock", "-y", "--", typed},
                     {"matrix", "extract", "--", typed},
                 }) {
                expect_no_change(words);
            }
        }
    }
    EXPECT_FALSE(std::filesystem::exists(file("pwned")));
    print_counts();
}

TEST_F(HostileNames, FilesOfSuchNamesChangeNothingThatWasThere) {
    for (const std::string& name : hostile_names) {
        if (means_another(name)) continue;
        const std::string line = " " + name + ">>001::A::C::5::0 => 001::A::C::9::0\r\n";
        const std::string gone = " " + name + ">>DROP TABLE =>\r\n";
        for (const std::string& field : {line, gone}) {
            write_file("m.tf", "- - Created by ZMRDDFIRE - -\r\n" + field);
            expect_no_change({"matrix", "check", file("m.tf")});
            expect_no_change({"matrix", "apply", "--yes", file("m.tf")});
        }
        if (name.find('/') != std::string::npos) continue;
        const std::string dbf = file(name + ".dbf");
        DbfBuilder().field("NAME", 'C', 5).record({"Ana"}).write(dbf);
        expect_a_table_beside({"import", "--drop-existing", "--yes", "--", dbf});
    }
    write_file("m.tf", "- - Created by ZMRDDFIRE - -\r\n COLUMNS>>001::A::C::5::0 => 001::A::C::9::0\r\n");
    expect_no_change({"matrix", "apply", "--yes", file("m.tf")});
    print_counts();
}

TEST_F(HostileNames, TheShellOffersAndTakesThemAsNames) {
    std::string input = ".tables\n.doctor\n";
    for (const std::string& name : hostile_names) {
        input += ".struct '" + quoted(name) + "'\n.drop --yes '" + quoted(name) + "'\n";
    }
    expect_no_change({"shell"}, input);
    print_counts();
}

// The command in a hint; "" when there is none.
std::string hint_in(const std::string& text) {
    constexpr std::string_view mark = "hint: zmfb ";
    const std::size_t at = text.find(mark);
    if (at == std::string::npos) return "";
    const std::size_t start = at + std::string_view("hint: ").size();
    return text.substr(start, text.find('\n', start) - start);
}

TEST_F(HostileNames, AHintDropsTheTableThatItNamesAndNothingElse) {
    for (const std::string& name : hostile_names) {
        SCOPED_TRACE(name);
        const Finished refused = on(path, {"drop", "-y", "--", quoted(name)});
        const std::string hint = hint_in(refused.err);
        ASSERT_NE(hint, "") << refused.err;
        const Finished done = follow(hint);
        ASSERT_EQ(done.status, 0) << hint << "\n" << done.err;
        const Snapshot after = snapshot();
        std::set<std::string> gone;
        for (const Row& row : before["relations"]) gone.insert(row[0]);
        for (const Row& row : after.at("relations")) gone.erase(row[0]);
        EXPECT_EQ(gone, (std::set<std::string>{name}));
        for (const char* kind :
             {"generators", "values", "triggers", "procedures", "exceptions", "roles", "views", "functions",
              "rows of T", "rows of VICTIM", "indexes", "constraints", "dependencies"}) {
            EXPECT_EQ(after.at(kind), before[kind]) << kind;
        }
        before = after;
    }
    EXPECT_FALSE(std::filesystem::exists(file("pwned")));
    print_counts();
}

}  // namespace
}  // namespace zmfb::test
