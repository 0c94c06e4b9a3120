// What the commands are.
#include <filesystem>

#include "tests/faults/commands.h"

namespace zmfb::test {
namespace {

using Words = std::vector<std::string>;

// An import into a table that is always called the same.
Words import_into(const std::string& table, const std::string& dbf, const Words& more = {}) {
    Words words{"import", dbf, "--table", table, "--yes"};
    words.insert(words.end(), more.begin(), more.end());
    return words;
}

}  // namespace

// Left out are those that use no database (methods, log, generate), and the hidden names, which only
// completion asks and which says nothing when it finds nothing. Browse and locks --watch want a terminal.
void CommandsThatFail::add_commands_that_read() {
    const auto add = [&](const std::string& name, Words words) {
        commands_.push_back({.name = name, .words = std::move(words), .same_output = true});
    };
    add("query", {"query", "--mode", "csv", "select code, name from people order by recno"});
    add("tables", {"tables"});
    add("struct", {"struct", "people"});
    add("locks", {"locks"});
    add("opens", {"opens"});
    add("functions", {"functions"});
    add("call", {"call", "gettablestruct('people')", "counttablerecords('people')"});
    add("matrix check", {"matrix", "check", matrix_of_a_change("PEOPLE")});
    add("matrix extract", {"matrix", "extract", "PEOPLE"});
    commands_.push_back({.name = "doctor", .words = {"doctor"}});
    commands_.push_back(
        {.name = "a query with a scratch file",
         .words = {"query", "select a.code, b.code from people a cross join people b where b.code < 4"},
         .same_output = true,
         .files = "tmpfile",
         .only_on_a_disk = true});
    commands_.push_back(
        {.name = "a new private environment",
         .words = {"tables"},
         .same_output = true,
         .files = "zmfbconn/firebird-",
         .settings = "rm -rf '" + file("fresh") + "'; export XDG_CACHE_HOME='" + file("fresh") + "'",
         .only_on_a_disk = true});
    commands_.push_back({.name = "a log",
                         .words = {"--log-level", "8", "tables"},
                         .same_output = true,
                         .files = ".log",
                         .only_on_a_disk = true,
                         .takes_no_notice = true});
}

void CommandsThatFail::add_imports() {
    const Words few_in_big = import_into("BIG", file("few.dbf"), {"--replace"});
    const Words few_in_bad = import_into("BAD", file("few.dbf"), {"--replace"});
    const auto add = [&](const std::string& name, std::vector<Words> prepare, const Words& more) {
        commands_.push_back({.name = name,
                             .words = import_into("BIG", file("many.dbf"), more),
                             .prepare = std::move(prepare),
                             .looks = {"tables"}});
    };
    add("import", {few_in_big, {"drop", "BIG", "--yes"}}, {});
    add("import --replace", {few_in_big}, {"--replace"});
    add("import --append", {few_in_big}, {"--append"});
    const Words both{"import", file("two"), "--replace", "--yes", "--jobs", "2"};
    commands_.push_back({.name = "import --jobs",
                         .words = both,
                         .prepare = {import_into("ONES", file("few.dbf"), {"--replace"}),
                                     import_into("TWOS", file("few.dbf"), {"--replace"})},
                         .looks = {"tables"},
                         .again = both,
                         .only_over_a_network = true});
    commands_.push_back({.name = "import of a file with memos",
                         .words = import_into("BIG", file("NOTES.dbf"), {"--replace"}),
                         .prepare = {few_in_big},
                         .looks = {"tables"},
                         .files = "NOTES.",
                         .only_on_a_disk = true});
    const Words with_rejects =
        import_into("BAD", file("bad.dbf"),
                    {"--replace", "--on-bad-value", "default", "--rejects", file("out/rejects.csv")});
    commands_.push_back({.name = "import --rejects",
                         .words = with_rejects,
                         .prepare = {few_in_bad},
                         .looks = {"tables"},
                         .kept = file("out/rejects.csv"),
                         .again = with_rejects,
                         .files = "out/",
                         .only_on_a_disk = true});
    const Words setting_aside =
        import_into("BAD", file("bad.dbf"),
                    {"--replace", "--on-bad-value", "set-aside", "--set-aside", file("out/aside.dbf")});
    commands_.push_back({.name = "import --set-aside",
                         .words = setting_aside,
                         .prepare = {few_in_bad},
                         .looks = {"tables"},
                         .kept = file("out/other.dbf"),
                         .again = setting_aside,
                         .files = "out/",
                         .only_on_a_disk = true});
}

void CommandsThatFail::add_commands_that_write() {
    const Words drop_big = {"drop", "BIG", "--yes"};
    const Words lock = {"call", "setrecordaslocked('PEOPLE', 'PEOPLE:A:1:host', '1')"};
    commands_.push_back({.name = "drop",
                         .words = drop_big,
                         .prepare = {import_into("BIG", file("few.dbf"), {"--replace"})},
                         .looks = {"tables"}});
    commands_.push_back({.name = "exec",
                         .words = {"exec", "insert into people (code) values (4711)"},
                         .prepare = {{"exec", "delete from people where code = 4711"}},
                         .looks = {"query", "--mode", "csv", "select count(*) from people where code = 4711"},
                         .same_output = true});
    const Words transaction{"shell", "--stop-on-error",
                            "-c",    "begin",
                            "-c",    "insert into people (code) values (4712)",
                            "-c",    "insert into people (code) values (4712)",
                            "-c",    "commit"};
    commands_.push_back({.name = "a transaction in a shell",
                         .words = transaction,
                         .prepare = {{"exec", "delete from people where code = 4712"}},
                         .looks = {"query", "--mode", "csv", "select count(*) from people where code = 4712"},
                         .again = transaction});
    commands_.push_back({.name = "take a lock",
                         .words = lock,
                         .prepare = {{"clear", "--yes"}},
                         .looks = {"locks"},
                         .same_output = true});
    commands_.push_back(
        {.name = "unlock", .words = {"unlock", "people", "--yes"}, .prepare = {lock}, .looks = {"locks"}});
    commands_.push_back(
        {.name = "clear", .words = {"clear", "--yes"}, .prepare = {lock}, .looks = {"locks"}});
    // Embedded, an ordinary user may not have it looked up who that is; the database is another each time
    // then.
    const std::vector<std::string> revoke{
        "exec",
        "execute block as begin execute statement 'revoke all on all from anna'; when any do begin end end"};
    commands_.push_back({.name = "grant",
                         .words = {"grant", "ANNA", "PEOPLE"},
                         .prepare = {revoke},
                         .looks = {"query", "--mode", "csv",
                                   "select count(*) from rdb$user_privileges where rdb$user = 'ANNA'"},
                         .same_output = true});
}

void CommandsThatFail::add_commands_that_write_files() {
    const auto add = [&](const std::string& name, const std::string& kept, Words words) {
        commands_.push_back(
            {.name = name, .words = std::move(words), .kept = file("out/" + kept), .files = "out/"});
    };
    add("export", "PEOPLE.dbf", {"export", "PEOPLE", "-o", file("out"), "--yes"});
    add("query -o", "rows.csv",
        {"query", "--mode", "csv", "-o", file("out/rows.csv"),
         "select code, name from people order by recno"});
    add("matrix extract -o", "people.tf",
        {"matrix", "extract", "PEOPLE", "-o", file("out/people.tf"), "--yes"});
    const Words with_memos{"export", "NOTES", "-o", file("out"), "--yes"};
    commands_.push_back({.name = "export of a table with memos",
                         .words = with_memos,
                         .kept = file("out/NOTES.dbf"),
                         .again = with_memos,
                         .files = "out/",
                         .only_on_a_disk = true});
    const Words with_manifest{
        "export", "PEOPLE", "-o", file("out"), "--yes", "--manifest", file("out/list.json")};
    commands_.push_back({.name = "export --manifest",
                         .words = with_manifest,
                         .kept = file("out/list.json"),
                         .again = with_manifest,
                         .files = "out/",
                         .only_on_a_disk = true});
    const Words exile{"call", "exiletable('PEOPLE')"};
    for (const char* ending : {".dbf", ".dat"}) {
        commands_.push_back({.name = std::string("exiletable, its file ") + ending,
                             .words = exile,
                             .kept = file("out/PEOPLE.dbf"),
                             .again = exile,
                             .files = ending,
                             .settings = "cd '" + file("out") + "'",
                             .only_on_a_disk = true});
    }
    for (const char* ending : {".dbf", ".dat"}) {
        commands_.push_back({.name = std::string("bringdbf, its file ") + ending,
                             .words = {"call", "bringdbf('" + file("many.dbf") + "')"},
                             .looks = {"tables"},
                             .again = {"call", "droponlytable('EXT_MANY')", "droptable('MANY')",
                                       "bringdbf('" + file("many.dbf") + "')"},
                             .files = ending,
                             .only_on_a_disk = true});
    }
}

void CommandsThatFail::add_commands_on_structures() {
    const Words few_in_changed = import_into("CHANGED", file("few.dbf"), {"--replace"});
    EXPECT_EQ(on(path_, few_in_changed).err, "");
    const Words apply{"matrix", "apply", "--yes", matrix_of_a_change("CHANGED")};
    // Where the fields stand among the driver's own is not looked at: the last steps see to that.
    commands_.push_back(
        {.name = "matrix apply",
         .words = apply,
         .prepare = {few_in_changed},
         .looks = {"shell", "-c", "select code, name from changed", "-c",
                   "select r.rdb$field_name, f.rdb$field_length, cast(r.rdb$description as varchar(60)) from "
                   "rdb$relation_fields r join rdb$fields f on f.rdb$field_name = r.rdb$field_source where "
                   "r.rdb$relation_name = 'CHANGED' order by 1"},
         .again = apply});
    commands_.push_back({.name = "create",
                         .words = {"create"},
                         .looks = {"tables"},
                         .again = {"prepare", "--yes"},
                         .database = "made.fdb",
                         .files = "made.fdb"});
    const auto add = [&](const std::string& name, const Words& words) {
        commands_.push_back(
            {.name = name,
             .words = words,
             .looks = {"query", "--mode", "csv",
                       "select (select count(*) from rdb$functions where rdb$system_flag = 0), (select "
                       "count(*) from rdb$relations where rdb$system_flag = 0) from rdb$database"},
             .again = words,
             .database = "made.fdb",
             .files = "made.fdb"});
    };
    add("prepare", {"prepare", "--yes"});
    add("functions stored", {"functions", "stored"});
}

std::string CommandsThatFail::matrix_of_a_change(const std::string& table) const {
    std::string text = on(path_, {"matrix", "extract", table}).out;
    const std::string from = "=> 002::NAME::C::60::0";
    const std::size_t at = text.find(from);
    EXPECT_NE(at, std::string::npos) << text;
    if (at != std::string::npos) text.replace(at, from.size(), "=> 002::NAME::C::70::0");
    return write_file(table + ".tf", text);
}

}  // namespace zmfb::test
