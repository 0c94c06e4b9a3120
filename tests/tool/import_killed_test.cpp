// Imports that are killed at any moment, and their server: whole or nothing, and the next one of that name
// works.
#include <fmt/format.h>
#include <signal.h>

#include <chrono>
#include <cstdlib>
#include <iterator>
#include <random>
#include <sstream>
#include <thread>

#include "tests/support/dbf_builder.h"
#include "tests/support/environment.h"
#include "tests/support/server.h"
#include "tests/tool/first_row.h"
#include "tests/tool/tool.h"

namespace zmfb::test {
namespace {

using Clock = std::chrono::steady_clock;
using Milliseconds = std::chrono::milliseconds;

constexpr int few = 5;
// So many kills that meet one outcome only show nothing.
constexpr int telling = 20;

// How often an import of each kind is killed: three times, or what the environment variable says for the
// long run.
int rounds() {
    const char* given = std::getenv("ZMFB_KILLED_IMPORTS");
    return given == nullptr ? 3 : std::atoi(given);
}

DbfBuilder records(int count) {
    DbfBuilder dbf = DbfBuilder().field("CODE", 'N', 8).field("NAME", 'C', 60);
    for (int i = 0; i < count; ++i) dbf.record({std::to_string(i), "name"});
    return dbf;
}

enum class Victim { client, server };

class KilledImports : public Tool, public testing::WithParamInterface<std::string> {
  protected:
    KilledImports() : path(database()) {
        records(few).write(file("few.dbf"));
        set_many(20000);
    }
    void set_many(int count) {
        many = count;
        records(many).write(file("big.dbf"));
    }
    // The words of an import of `name` into BIG.
    [[nodiscard]] static std::vector<std::string> words_of(const std::string& name) {
        std::vector<std::string> words{"import", name, "--table", "BIG", "--yes"};
        if (!GetParam().empty()) words.push_back(GetParam());
        return words;
    }
    // BIG as it is before: with few records, or not there.
    void begin() const {
        const bool is_there = has_table(path, "BIG");
        if (GetParam().empty()) {
            if (!is_there) return;
            ASSERT_EQ(on(path, {"drop", "BIG", "--yes"}).status, 0);
            return;
        }
        const Finished run = on(path, {"import", file("few.dbf"), "--table", "BIG", "--yes", "--replace"});
        ASSERT_EQ(run.status, 0) << run.err;
    }
    [[nodiscard]] int before() const { return GetParam().empty() ? 0 : few; }
    [[nodiscard]] int after() const { return GetParam() == "--append" ? few + many : many; }
    [[nodiscard]] std::string answer(const std::string& question) const {
        return first_row(on(path, {"query", "--mode", "csv", question}));
    }

    // An import that comes to its end.
    Finished import_whole() {
        const auto started = Clock::now();
        Finished run = on(path, words_of(file("big.dbf")));
        if (run.status == 0) takes_ = std::chrono::duration_cast<Milliseconds>(Clock::now() - started);
        return run;
    }
    // One that gets a signal before its `at`-th write.
    [[nodiscard]] Finished end_at_write(int at, int signal) const {
        std::vector<std::string> words{"--db", path};
        const std::vector<std::string> rest = words_of(file("big.dbf"));
        words.insert(words.end(), rest.begin(), rest.end());
        return zmfb(words, "",
                    {"LD_PRELOAD=" ZMFB_KILLED_AT_WRITE, "ASAN_OPTIONS=verify_asan_link_order=0",
                     "ZMFB_KILLED_AT=" + std::to_string(at), "ZMFB_KILLED_BY=" + std::to_string(signal)});
    }
    void kill_one(Milliseconds when, Victim victim) const {
        std::vector<std::string> words{"--db", path};
        const std::vector<std::string> rest = words_of(file("big.dbf"));
        words.insert(words.end(), rest.begin(), rest.end());
        const auto tool = start(words);
        std::this_thread::sleep_for(when);
        if (victim == Victim::server) Server::shared().kill();
        if (victim == Victim::client) tool->send(SIGKILL);
        tool->end();
        if (victim == Victim::server) Server::shared().start();
    }
    // Looks at what was left; returns whether the records are in.
    bool look() {
        std::string kind, loaded;
        int told = 0;
        for (const std::string& line : lines(on(path, {"tables"}).out)) {
            const std::vector<std::string> words = words_in(line);
            if (words.size() == 3 && words[0] == "BIG") kind = words[1], told = std::stoi(words[2]);
            if (words.size() == 3 && words[0] == "Z$BIG") loaded = words[1];
        }
        const bool is_being_replaced = kind == "unfinished" && loaded == "loaded";
        EXPECT_TRUE(kind == "driver" || (kind == "unfinished" && (before() == 0 || is_being_replaced)) ||
                    (kind.empty() && before() == 0))
            << kind << " " << loaded;
        // What an unfinished table has is nobody's, and may not be readable.
        const int real = kind == "driver" ? std::stoi(answer("select count(*) from BIG")) : 0;
        EXPECT_EQ(told, real);
        EXPECT_TRUE(kind != "driver" || real == before() || real == after()) << real;
        if (kind == "unfinished" || !loaded.empty()) {
            const std::string doctor = on(path, {"doctor"}).out;
            const std::string named = kind == "unfinished" ? "BIG is an import" : "Z$BIG ";
            EXPECT_NE(doctor.find(named), std::string::npos) << doctor;
            ++left_;
        }
        if (is_being_replaced) ++moved_;
        if (loaded == "loaded" && !is_being_replaced) ++loaded_;
        return real == after() && kind == "driver";
    }
    void expect_the_next_works(bool is_in) {
        const Finished run = import_whole();
        const bool is_refused = GetParam().empty() && is_in;
        EXPECT_EQ(run.status, is_refused ? 1 : 0) << run.err;
        const int wanted = after() + (GetParam() == "--append" && is_in ? many : 0);
        EXPECT_EQ(answer("select count(*), count(distinct RECNO) from BIG"),
                  std::to_string(wanted) + "," + std::to_string(wanted));
        EXPECT_EQ(on(path, {"call", "gettablereccount('BIG')"}).out, std::to_string(wanted) + "\n");
        EXPECT_EQ(answer("select count(*) from rdb$relations where rdb$relation_name starting with 'Z$'"),
                  "0");
        EXPECT_EQ(answer("select count(*) from rdb$generators where rdb$generator_name starting with 'G_Z$'"),
                  "0");
    }
    // Interrupts one import at each `step`-th write likewise. Each leaves what was there before it, unless
    // its records were on their way into the table, which it says.
    int interrupt_at_writes(int step) {
        const std::string undone =
            "error: the import of " + file("big.dbf") + " was interrupted, and undone\n";
        for (int interrupted = 0;; ++interrupted) {
            begin();
            const int at = 1 + interrupted * step;
            SCOPED_TRACE(at);
            const Finished run = end_at_write(at, SIGINT);
            const bool is_in = look();
            EXPECT_EQ(has_table(path, "BIG"), is_in || before() != 0) << run.err;
            if (run.status == 0 || HasFailure()) return interrupted;
            EXPECT_EQ(run.status, 130);
            if (has_table(path, "Z$BIG")) {
                EXPECT_NE(run.err.find("Z$BIG"), std::string::npos) << run.err;
                expect_the_next_works(is_in);
            } else {
                EXPECT_TRUE(run.err == "error: interrupted\n" || (!is_in && run.err == undone)) << run.err;
            }
        }
    }
    // Kills one import at each `step`-th write, from the first on, until one comes to its end before. Returns
    // how many were killed.
    int kill_at_writes(int step) {
        for (int killed = 0;; ++killed) {
            begin();
            const int at = 1 + killed * step;
            SCOPED_TRACE(at);
            const Finished run = end_at_write(at, SIGKILL);
            const bool is_in = look();
            expect_the_next_works(is_in);
            if (run.status == 0 || HasFailure()) return killed;
        }
    }
    void kill_many(Victim victim, int times) {
        begin();
        ASSERT_EQ(import_whole().status, 0);
        std::mt19937 random(1);
        int in = 0;
        for (int i = 1; i <= times && !HasFailure(); ++i) {
            SCOPED_TRACE(i);
            begin();
            kill_one(Milliseconds(random() % static_cast<unsigned>(takes_.count() * 2)), victim);
            const bool is_in = look();
            if (is_in) ++in;
            expect_the_next_works(is_in);
        }
        EXPECT_TRUE(times < telling || (in > 0 && in < times)) << in;
        fmt::print(
            "import {} killed {} times: {} whole, {} nothing; left behind {} times, {} of them loaded, {} "
            "being moved\n",
            GetParam(), times, in, times - in, left_, loaded_, moved_);
    }

    std::string path;
    int many = 0;

  private:
    [[nodiscard]] static std::vector<std::string> words_in(const std::string& line) {
        std::istringstream stream(line);
        return {std::istream_iterator<std::string>(stream), {}};
    }
    Milliseconds takes_{0};  // the last one that came to its end
    int left_ = 0, loaded_ = 0, moved_ = 0;
};

TEST_P(KilledImports, LeaveAWholeTableOrNothing) { kill_many(Victim::client, rounds()); }

TEST_P(KilledImports, LeaveTheSameWhenTheServerIsKilled) {
    if (!on_server()) GTEST_SKIP() << "there is no server to kill";
    kill_many(Victim::server, (rounds() + 3) / 4);
}

TEST_P(KilledImports, LeaveTheSameAtAnyWriteOfTheEngine) {
    if (on_server()) GTEST_SKIP() << "the engine is in another process";
    set_many(400);
    const int step = rounds() >= telling ? 1 : 47;
    const int killed = kill_at_writes(step);
    EXPECT_GT(killed * step, 100);
    fmt::print("import {} killed before {} of its writes, one in {}\n", GetParam(), killed, step);
}

TEST_P(KilledImports, LeaveWhatWasThereWhenInterruptedAtAnyWriteOfTheEngine) {
    if (on_server()) GTEST_SKIP() << "the engine is in another process";
    set_many(400);
    const int step = rounds() >= telling ? 1 : 23;
    const int interrupted = interrupt_at_writes(step);
    EXPECT_GT(interrupted * step, 50);
    fmt::print("import {} interrupted before {} of its writes, one in {}\n", GetParam(), interrupted, step);
}

INSTANTIATE_TEST_SUITE_P(OfAllKinds, KilledImports, testing::Values("", "--replace", "--append"));

}  // namespace
}  // namespace zmfb::test
