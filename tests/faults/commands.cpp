#include "tests/faults/commands.h"

#include <cstdlib>
#include <filesystem>

#include "tests/support/dbf_builder.h"

namespace zmfb::test {
namespace {

DbfBuilder people(int count) {
    DbfBuilder dbf = DbfBuilder().field("CODE", 'N', 8).field("NAME", 'C', 60);
    for (int i = 0; i < count; ++i) dbf.record({std::to_string(i), "name " + std::to_string(i)});
    return dbf;
}

}  // namespace

std::vector<int> some_of(int count, int some) {
    if (const char* given = std::getenv("ZMFB_FAULTS_OF_A_KIND")) some = std::atoi(given);
    std::vector<int> chosen;
    for (int i = 0; i < std::min(count, some); ++i)
        chosen.push_back(count <= some ? i + 1 : 1 + i * (count - 1) / std::max(1, some - 1));
    return chosen;
}

CommandsThatFail::CommandsThatFail() {
    people(3).write(file("few.dbf"));
    people(300).write(file("many.dbf"));
    people(300).write(file("people.dbf"));
    EXPECT_EQ(on(path_, {"import", file("people.dbf")}).err, "");
    EXPECT_EQ(on(path_, {"export", "PEOPLE", "-o", file(""), "--yes"}).err, "");
    add_commands_that_read();
    add_commands_that_write();
}

void CommandsThatFail::add_commands_that_read() {
    const auto add = [&](const std::string& name, std::vector<std::string> words) {
        commands_.push_back({.name = name, .words = std::move(words), .same_output = true});
    };
    add("query", {"query", "--mode", "csv", "select code, name from people order by recno"});
    add("tables", {"tables"});
    add("struct", {"struct", "people"});
    add("locks", {"locks"});
    add("opens", {"opens"});
    add("call", {"call", "gettablestruct('people')", "counttablerecords('people')"});
    add("matrix check", {"matrix", "check", matrix_of_a_change()});
    commands_.push_back({.name = "doctor", .words = {"doctor"}});
}

void CommandsThatFail::add_commands_that_write() {
    const std::vector<std::string> drop_big = {"drop", "BIG", "--yes"};
    const std::vector<std::string> few_in_big = {"import", file("few.dbf"), "--table",
                                                 "BIG",    "--replace",     "--yes"};
    const std::vector<std::string> rows_of_big = {"tables"};
    const auto import = [&](std::vector<std::string> more) {
        std::vector<std::string> words{"import", file("many.dbf"), "--table", "BIG", "--yes"};
        words.insert(words.end(), more.begin(), more.end());
        return words;
    };
    commands_.push_back(
        {.name = "import", .words = import({}), .prepare = {few_in_big, drop_big}, .looks = rows_of_big});
    commands_.push_back({.name = "import --replace",
                         .words = import({"--replace"}),
                         .prepare = {few_in_big},
                         .looks = rows_of_big});
    commands_.push_back({.name = "import --append",
                         .words = import({"--append"}),
                         .prepare = {few_in_big},
                         .looks = rows_of_big});
    commands_.push_back({.name = "drop", .words = drop_big, .prepare = {few_in_big}, .looks = rows_of_big});
    commands_.push_back({.name = "export",
                         .words = {"export", "PEOPLE", "-o", file("out"), "--yes"},
                         .kept = file("out/PEOPLE.dbf")});
    commands_.push_back({.name = "exec",
                         .words = {"exec", "insert into people (code) values (4711)"},
                         .prepare = {{"exec", "delete from people where code = 4711"}},
                         .looks = {"query", "--mode", "csv", "select count(*) from people where code = 4711"},
                         .same_output = true});
    commands_.push_back({.name = "take a lock",
                         .words = {"call", "setrecordaslocked('PEOPLE', 'PEOPLE:A:1:host', '1')"},
                         .prepare = {{"clear", "--yes"}},
                         .looks = {"locks"},
                         .same_output = true});
    commands_.push_back({.name = "unlock",
                         .words = {"unlock", "people", "--yes"},
                         .prepare = {{"call", "setrecordaslocked('PEOPLE', 'PEOPLE:A:1:host', '1')"}},
                         .looks = {"locks"}});
    commands_.push_back({.name = "clear",
                         .words = {"clear", "--yes"},
                         .prepare = {{"call", "setrecordaslocked('PEOPLE', 'PEOPLE:A:1:host', '1')"}},
                         .looks = {"locks"}});
    std::filesystem::create_directory(file("out"));
}

std::string CommandsThatFail::matrix_of_a_change() const {
    std::string text = on(path_, {"matrix", "extract", "PEOPLE"}).out;
    const std::string from = "=> 002::NAME::C::60::0";
    const std::size_t at = text.find(from);
    EXPECT_NE(at, std::string::npos) << text;
    if (at != std::string::npos) text.replace(at, from.size(), "=> 002::NAME::C::70::0");
    return write_file("people.tf", text);
}

void CommandsThatFail::prepare(const FaultyCommand& command) const {
    for (const std::vector<std::string>& words : command.prepare) {
        const Finished run = on(path_, words);
        ASSERT_EQ(run.status, 0) << command.name << ": " << run.err;
    }
    if (!command.kept.empty())
        std::filesystem::copy_file(file("few.dbf"), command.kept,
                                   std::filesystem::copy_options::overwrite_existing);
}

std::string CommandsThatFail::state(const FaultyCommand& command, bool was_killed) const {
    if (!command.kept.empty()) {
        std::string files;
        for (const auto& entry : std::filesystem::directory_iterator(file("out"))) {
            const std::string name = entry.path().filename();
            if (!was_killed || !name.starts_with(".zmfb-")) files += name + " ";
        }
        // Behind the date of the change.
        return files + read_file(command.kept).substr(4);
    }
    if (command.looks.empty()) return "";
    const Finished run = on(path_, command.looks);
    EXPECT_EQ(run.status, 0) << run.err;
    return run.out;
}

void CommandsThatFail::expect_words(const FaultyCommand& command, const Finished& ended) {
    EXPECT_LT(ended.status, 4) << command.name << " was ended: " << ended.err;
    if (ended.status == 0) return;
    EXPECT_TRUE(
        ended.err.find("error: ") != std::string::npos || ended.err.find("raised: ") != std::string::npos ||
        ended.err.find(" is lost; ") != std::string::npos || (command.name == "doctor" && !ended.out.empty()))
        << command.name << " failed with " << ended.status << " without words: " << ended.out << ended.err;
}

void CommandsThatFail::expect_all_or_nothing(const FaultyCommand& command, const Finished& ended,
                                             const std::string& before, const std::string& after) const {
    const bool was_killed = ended.status == killed;
    if (!was_killed) expect_words(command, ended);
    const std::string now = state(command, was_killed);
    const bool is_left =
        now.find(" unfinished ") != std::string::npos || now.find(" loaded ") != std::string::npos;
    const bool was_refused = ended.out == ".F.\n";  // what a method answers that could not do it
    const bool went_well = !was_refused && (ended.status == 0 || (was_killed && !ended.out.empty()));
    if (went_well && is_left) {
        EXPECT_TRUE(was_killed || ended.err.find("note: ") != std::string::npos)
            << now << " is left without a word";
    } else if (went_well) {
        EXPECT_EQ(now, after) << command.name << " said that it went well: " << ended.out << ended.err;
    } else {
        EXPECT_TRUE(now == before || now == after || is_left) << command.name << ": " << ended.err << "left\n"
                                                              << now << "\nwhere there was\n"
                                                              << before;
    }
}

}  // namespace zmfb::test
