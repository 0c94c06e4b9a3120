#include "tests/tool/tool.h"

#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <stdexcept>
#include <thread>

#include "tests/support/environment.h"
#include "tests/support/server.h"

namespace zmfb::test {

namespace {

std::vector<std::string> clean_environment() {
    std::vector<std::string> command{"env", "-u", "FIREBIRD", "-u", "FIREBIRD_LOCK", "-u", "ZMFB_DB"};
    if (!on_server()) command.insert(command.end(), {"-u", "ISC_USER", "-u", "ISC_PASSWORD"});
    return command;
}

}  // namespace

Tool::Tool() {
    if (!on_server()) return;
    Server::shared();
    setenv("ISC_USER", sysdba, 1);
    setenv("ISC_PASSWORD", sysdba_password, 1);
}

std::vector<std::string> Tool::as_user(int user) {
    const std::string id = std::to_string(user);
    return {"setpriv", "--reuid=" + id, "--regid=" + id, "--clear-groups"};
}

std::string Tool::why_no_other_user() {
    if (::geteuid() != 0) return "only root can be another user";
    // The way to the files of this test.
    ::chmod(process_folder().c_str(), 0711);
    std::vector<std::string> command = as_user(4711);
    command.insert(command.end(), {"test", "-x", ZMFB_TOOL});
    return run(command).status == 0 ? "" : "other users cannot enter the build folder";
}

std::string Tool::as_database(const std::string& name) const {
    return on_server() ? Server::shared().name_of(file(name)) : file(name);
}

std::vector<std::string> Tool::command(const std::vector<std::string>& words,
                                       const std::vector<std::string>& settings) const {
    std::vector<std::string> all = clean_environment();
    all.push_back("XDG_CACHE_HOME=" + (process_folder() / "cache").string());
    all.push_back("XDG_STATE_HOME=" + file("state"));
    all.insert(all.end(), settings.begin(), settings.end());
    all.push_back(ZMFB_TOOL);
    all.insert(all.end(), words.begin(), words.end());
    return all;
}

Finished Tool::zmfb(std::vector<std::string> words, const std::string& input,
                    const std::vector<std::string>& environment) const {
    return run(command(words, environment), input);
}

std::unique_ptr<Started> Tool::start(const std::vector<std::string>& words, const std::string& input) const {
    return std::make_unique<Started>(command(words), input);
}

Finished Tool::zmfb_in(const std::string& folder, std::vector<std::string> words) const {
    std::vector<std::string> command = clean_environment();
    command.insert(command.end(), {"-C", folder, ZMFB_TOOL});
    command.insert(command.end(), words.begin(), words.end());
    return run(command, "", {"XDG_CACHE_HOME=" + (process_folder() / "cache").string()});
}

std::vector<std::string> Tool::command_after(const std::string& preparation,
                                             const std::vector<std::string>& words) const {
    std::vector<std::string> command = clean_environment();
    command.insert(command.end(),
                   {"XDG_CACHE_HOME=" + (process_folder() / "cache").string(), "TMPDIR=" + file(""), "sh",
                    "-c", preparation + "; exec \"$@\"", "sh", ZMFB_TOOL});
    command.insert(command.end(), words.begin(), words.end());
    return command;
}

Finished Tool::zmfb_after(const std::string& preparation, const std::vector<std::string>& words) const {
    return run(command_after(preparation, words));
}

std::unique_ptr<Started> Tool::start_after(const std::string& preparation,
                                           const std::vector<std::string>& words) const {
    return std::make_unique<Started>(command_after(preparation, words));
}

std::string Tool::database() const {
    const Finished made = zmfb({"--db", new_database(), "create"});
    if (made.status != 0) {
        // Which of the signals it was, where somebody has ended it.
        throw std::runtime_error("zmfb create ended with status " + std::to_string(made.status) + ": " +
                                 made.err);
    }
    return new_database();
}

Finished Tool::on(const std::string& database, const std::vector<std::string>& words,
                  const std::string& input) const {
    std::vector<std::string> all{"--db", database};
    all.insert(all.end(), words.begin(), words.end());
    return zmfb(all, input);
}

void Tool::exec(const std::string& database, const std::string& statement) const {
    const Finished run = on(database, {"exec", statement});
    EXPECT_EQ(run.status, 0) << run.err;
}

bool Tool::has_table(const std::string& database, const std::string& table) const {
    return on(database, {"call", "istable('" + table + "')"}).out == ".T.\n";
}

void Tool::wait_for_table(const std::string& database, const std::string& table) const {
    for (int i = 0; i < 600 && !has_table(database, table); ++i)
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    ASSERT_TRUE(has_table(database, table)) << "over before anything could happen to it";
}

std::string Tool::endless_query(const std::string& table) {
    return "select count(*) from " + table +
           " a right join rdb$fields b on 1 = 1, rdb$fields c, rdb$fields d, rdb$fields e";
}

Finished Tool::while_another(const std::string& database, std::vector<std::string> words,
                             const std::function<Finished()>& work) const {
    words.insert(words.begin(), {"--db", database});
    const auto another = start(words);
    another->settle();
    Finished finished = work();
    another->send(SIGKILL);
    another->end();
    return finished;
}

void Tool::forbid(const std::string& database, const std::string& change, const std::string& letters) const {
    exec(database, "create exception forbidden 'not in this database'");
    exec(database, "create trigger forbids before " + change +
                       " as begin if (rdb$get_context('DDL_TRIGGER', 'OBJECT_NAME') containing '" + letters +
                       "') then exception forbidden; end");
}

std::vector<std::string> lines(const std::string& text) {
    std::vector<std::string> found;
    for (std::size_t start = 0; start < text.size();) {
        const std::size_t end = std::min(text.find('\n', start), text.size());
        found.push_back(text.substr(start, end - start));
        start = end + 1;
    }
    return found;
}

}  // namespace zmfb::test
