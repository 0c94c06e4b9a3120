#include "tests/faults/commands.h"

#include <cstdlib>
#include <filesystem>
#include <map>
#include <regex>

#include "sql/database.h"
#include "tests/support/bare_client.h"
#include "tests/support/dbf_builder.h"
#include "tests/support/environment.h"

namespace zmfb::test {
namespace {

namespace fs = std::filesystem;

DbfBuilder people(int count) {
    DbfBuilder dbf = DbfBuilder().field("CODE", 'N', 8).field("NAME", 'C', 60);
    for (int i = 0; i < count; ++i) dbf.record({std::to_string(i), "name " + std::to_string(i)});
    return dbf;
}

// Without the time at which a matrix was made, and without the numbers of the engine's own indexes.
std::string steady(const std::string& text) {
    static const std::regex changing("   Data: [^\n]*|RDB\\$PRIMARY\\d+");
    return std::regex_replace(text, changing, "");
}

// How many tables say of themselves that they are not done.
std::ptrdiff_t unfinished_in(const std::string& listed) {
    static const std::regex kind(" (unfinished|loaded) ");
    return std::distance(std::sregex_iterator(listed.begin(), listed.end(), kind), {});
}

}  // namespace

std::vector<int> some_of(int count, int turn) {
    constexpr int thirds = 3;
    const char* const given = std::getenv("ZMFB_FAULTS_OF_A_KIND");
    if (given == nullptr)
        return count == 0 ? std::vector<int>()
                          : std::vector<int>{1 + (count - 1) * (turn % (thirds + 1)) / thirds};
    const int some = std::atoi(given);
    std::vector<int> chosen;
    for (int i = 0; i < std::min(count, some); ++i)
        chosen.push_back(count <= some ? i + 1 : 1 + i * (count - 1) / std::max(1, some - 1));
    return chosen;
}

CommandsThatFail::CommandsThatFail() {
    for (const char* folder : {"out", "two"}) fs::create_directory(file(folder));
    for (const char* name : {"few.dbf", "two/ones.dbf"}) people(3).write(file(name));
    for (const char* name : {"many.dbf", "people.dbf", "two/twos.dbf"}) people(300).write(file(name));
    people(300).record({"x", "no number"}).write(file("bad.dbf"));
    EXPECT_EQ(on(path_, {"import", file("people.dbf")}).err, "");
    exec(path_, "create table notes (code integer not null primary key, note blob sub_type text not null)");
    exec(
        path_,
        "execute block as declare i integer = 0; begin while (i < 40) do begin insert into notes values (:i, "
        "rpad('note ' || :i, 1000, '.')); i = i + 1; end end");
    EXPECT_EQ(on(path_, {"export", "NOTES", "-o", file(""), "--yes"}).err, "");
    must_succeed(sql::create_database(as_database("plain.fdb"), sysdba, sysdba_password));
    add_commands_that_read();
    add_imports();
    add_commands_that_write();
    add_commands_that_write_files();
    add_commands_on_structures();
}

std::string CommandsThatFail::database_of(const FaultyCommand& command) const {
    return command.database.empty() ? path_ : as_database(command.database);
}

std::string CommandsThatFail::file_of(const FaultyCommand& command) const {
    return file(command.database.empty() ? "test.fdb" : command.database);
}

void CommandsThatFail::prepare(const FaultyCommand& command) const {
    if (!command.database.empty()) {
        // A new file each time: the old one may still be in use.
        for (const std::string& name : names_that_begin_with(command.database)) fs::remove(file(name));
        if (command.name != "create") fs::copy_file(file("plain.fdb"), file_of(command));
    }
    for (const std::vector<std::string>& words : command.prepare) {
        const Finished run = on(database_of(command), words);
        ASSERT_EQ(run.status, 0) << command.name << ": " << run.err;
    }
    if (command.kept.empty()) return;
    fs::remove_all(file("out"));
    fs::create_directory(file("out"));
    fs::copy_file(file("few.dbf"), command.kept);
}

void CommandsThatFail::keep_prepared(const FaultyCommand& command) const {
    fs::remove(file("ready"));
    if (fs::exists(file_of(command))) fs::copy_file(file_of(command), file("ready"));
}

void CommandsThatFail::begin_again(const FaultyCommand& command) const {
    const bool had_database = fs::exists(file("ready"));
    if (!command.kept.empty() || !had_database) prepare(command);
    if (had_database) fs::copy_file(file("ready"), file_of(command), fs::copy_options::overwrite_existing);
}

std::vector<std::string> CommandsThatFail::names_that_begin_with(const std::string& beginning) const {
    std::vector<std::string> names;
    for (const auto& entry : fs::directory_iterator(folder())) {
        if (std::string name = entry.path().filename(); name.starts_with(beginning)) names.push_back(name);
    }
    return names;
}

// The names and contents of all files, without the dates of changes.
std::string CommandsThatFail::files_beside(const FaultyCommand& command, bool was_killed) const {
    std::map<std::string, std::string> files;
    for (const auto& entry : fs::directory_iterator(fs::path(command.kept).parent_path())) {
        const std::string name = entry.path().filename();
        if (was_killed && name.starts_with(".zmfb-")) continue;
        const std::string content = read_file(entry.path());
        const std::size_t date = name.ends_with(".dbf") ? std::min<std::size_t>(4, content.size()) : 0;
        files[name] = steady(content.substr(date));
    }
    std::string text;
    for (const auto& [name, content] : files) text += name + " " + content + "\n";
    return text;
}

std::string CommandsThatFail::state(const FaultyCommand& command, bool was_killed) const {
    std::string text;
    if (!command.kept.empty()) text = files_beside(command, was_killed);
    if (command.looks.empty()) return text;
    if (!command.database.empty() && !was_killed) {
        for (const std::string& name : names_that_begin_with(command.database + ".")) text += name + "\n";
    }
    if (!fs::exists(file_of(command))) return text + "no database\n";
    const Finished run = on(database_of(command), command.looks);
    EXPECT_TRUE(run.status == 0 || !command.again.empty()) << run.err;
    return text + steady(run.out) + (run.status == 0 ? "" : run.err);
}

// Some need a second time: the first takes away what is left.
bool CommandsThatFail::comes_to_its_end(const FaultyCommand& command, const std::string& after,
                                        bool was_killed) const {
    const std::string database = database_of(command);
    if (fs::exists(file_of(command)) && on(database, {"doctor"}).status != 0) return true;
    constexpr int times = 2;
    for (int i = 0; i < times; ++i) {
        std::vector<std::string> words{"--db", database};
        words.insert(words.end(), command.again.begin(), command.again.end());
        zmfb_after(command.settings.empty() ? ":" : command.settings, words);
        if (state(command, was_killed) == after) return true;
    }
    return false;
}

bool CommandsThatFail::same_output(const Finished& one, const Finished& other) {
    return steady(one.out) == steady(other.out);
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
    const bool is_left = unfinished_in(now) > unfinished_in(before);
    const bool was_refused = ended.out == ".F.\n";  // what a method answers that could not do it
    // What is done in steps prints on the way.
    const bool said_so = was_killed && command.again.empty() && !ended.out.empty();
    const bool went_well = !was_refused && (ended.status == 0 || said_so);
    if (went_well && is_left) {
        EXPECT_TRUE(was_killed || ended.err.find("note: ") != std::string::npos)
            << now << " is left without a word";
    } else if (went_well) {
        EXPECT_EQ(now, after) << command.name << " said that it went well: " << ended.out << ended.err;
    } else if (now != before && now != after && !is_left && !command.again.empty()) {
        EXPECT_TRUE(comes_to_its_end(command, after, was_killed))
            << command.name << ": " << ended.err << "left\n"
            << now << "\nthat nobody names, and that it does not bring to an end";
    } else {
        EXPECT_TRUE(now == before || now == after || is_left) << command.name << ": " << ended.err << "left\n"
                                                              << now << "\nwhere there was\n"
                                                              << before;
    }
}

}  // namespace zmfb::test
