// Commands over a network that goes wrong at each message in turn.
#include <fmt/format.h>

#include <stdexcept>
#include <string_view>
#include <utility>

#include "tests/faults/commands.h"
#include "tests/support/dialogue.h"
#include "tests/support/environment.h"
#include "tests/support/proxy.h"
#include "tests/support/server.h"
#include "tests/support/validation.h"

namespace zmfb::test {
namespace {

struct FaultKind {
    NetworkFault fault;
    const char* name;
    bool harmless;  // only slow
};
constexpr FaultKind kinds[] = {{NetworkFault::delayed, "delayed", true},
                               {NetworkFault::throttled, "throttled", true},
                               {NetworkFault::cut, "cut", false},
                               {NetworkFault::half_closed, "half closed", false}};

class NetworkFaults : public CommandsThatFail {
  protected:
    NetworkFaults() { far_ = over_the_proxy(path()); }
    // What names a database of the server there.
    [[nodiscard]] std::string over_the_proxy(std::string name) const {
        const std::string port = fmt::format("/{}:", Server::shared().port());
        return name.replace(name.find(port), port.size(), fmt::format("/{}:", proxy_.port()));
    }

    // Runs a command over the proxy; throws when it takes two minutes.
    Finished over(const FaultyCommand& command, const NetworkPlan& plan) {
        std::vector<std::string> words{"--db", over_the_proxy(database_of(command))};
        words.insert(words.end(), command.words.begin(), command.words.end());
        proxy_.plan(plan);
        return start_after("ulimit -t 20", words)->end();
    }

    void walk(const FaultyCommand& command) {
        prepare(command);
        const std::string before = state(command);
        const Finished whole = over(command, {});
        ASSERT_EQ(whole.status, 0) << command.name << ": " << whole.err;
        const std::string after = state(command);
        const int counts[] = {proxy_.count(Way::to_server), proxy_.count(Way::to_client)};
        int runs = 0, failed = 0;
        for (const FaultKind& kind : kinds) {
            for (const Way way : {Way::to_server, Way::to_client}) {
                for (const int nth : some_of(counts[static_cast<std::size_t>(way)], ++turn_)) {
                    SCOPED_TRACE(fmt::format("{}: message {} {} is {}", command.name, nth,
                                             way == Way::to_server ? "to the server" : "back", kind.name));
                    prepare(command);
                    const Finished ended = over(command, {kind.fault, way, nth});
                    ++runs;
                    failed += ended.status == 0 ? 0 : 1;
                    EXPECT_TRUE(ended.status == 0 || !kind.harmless) << ended.err;
                    expect_all_or_nothing(command, ended, before, after);
                    EXPECT_TRUE(ended.status != 0 || !command.same_output || same_output(ended, whole))
                        << ended.out;
                }
            }
        }
        fmt::print("{}: {} messages to the server and {} back, {} faults, {} times it failed\n", command.name,
                   counts[0], counts[1], runs, failed);
        EXPECT_GT(failed, 0);
        runs_ += runs;
        failed_ += failed;
    }

    Proxy proxy_{Server::shared().port()};
    std::string far_;
    int runs_ = 0, failed_ = 0, turn_ = 0;
};

TEST_F(NetworkFaults, AreToldAndNothingIsHalfDone) {
    long walked = 0;
    for (const FaultyCommand& command : commands()) {
        if (command.only_on_a_disk) continue;
        walk(command);
        ++walked;
    }
    fmt::print("{} commands: {} faults, {} times one failed\n", walked, runs_, failed_);
    expect_sound(path());
}

// A server to which nothing comes through takes the attachment for one at work, which has its table in use.
TEST_F(NetworkFaults, LeaveNoImportWaitingForTheConnectionThatIsLost) {
    const FaultyCommand& import = the("import");
    prepare(import);
    const std::string before = state(import);
    ASSERT_EQ(over(import, {}).status, 0);
    const std::string after = state(import);
    const int messages = proxy_.count(Way::to_client);
    for (const int percent : {75, 80}) {
        SCOPED_TRACE(percent);
        prepare(import);
        const Finished ended =
            over(import, {NetworkFault::half_closed, Way::to_client, messages * percent / 100});
        EXPECT_EQ(ended.status, 1);
        expect_all_or_nothing(import, ended, before, after);
    }
}

// What is looked at on a terminal, and the keys that end it once its first screen is there.
struct OnATerminal {
    const char* name;
    std::vector<std::string> words;
    const char* first;
    const char* keys;
};

class NetworkFaultsOnATerminal : public NetworkFaults {
  protected:
    // The status, and whether it said an error.
    std::pair<int, bool> over(const OnATerminal& shown, const NetworkPlan& plan) {
        std::vector<std::string> words{"--db", far_};
        words.insert(words.end(), shown.words.begin(), shown.words.end());
        std::vector<std::string> limited{"sh", "-c", "ulimit -t 20; exec \"$@\"", "sh"};
        const std::vector<std::string> tool = command(words);
        limited.insert(limited.end(), tool.begin(), tool.end());
        proxy_.plan(plan);
        Dialogue talk(limited);
        if (says(talk, shown.first)) talk.type(shown.keys);
        const bool error = says(talk, "error: ");
        return {talk.end(), error};
    }

    void walk(const OnATerminal& shown) {
        ASSERT_EQ(over(shown, {}), std::pair(0, false)) << shown.name;
        const int counts[] = {proxy_.count(Way::to_server), proxy_.count(Way::to_client)};
        int runs = 0, failed = 0;
        for (const FaultKind& kind : kinds) {
            for (const Way way : {Way::to_server, Way::to_client}) {
                for (const int nth : some_of(counts[static_cast<std::size_t>(way)], ++turn_)) {
                    SCOPED_TRACE(fmt::format("{}: message {} {} is {}", shown.name, nth,
                                             way == Way::to_server ? "to the server" : "back", kind.name));
                    const auto [status, error] = over(shown, {kind.fault, way, nth});
                    ++runs;
                    failed += status == 0 ? 0 : 1;
                    EXPECT_LT(status, 4);
                    EXPECT_EQ(status != 0, error) << status;
                    EXPECT_TRUE(status == 0 || !kind.harmless);
                }
            }
        }
        fmt::print("{}: {} messages to the server and {} back, {} faults, {} times it failed\n", shown.name,
                   counts[0], counts[1], runs, failed);
        EXPECT_GT(failed, 0);
    }

  private:
    // False when it ended before that.
    static bool says(Dialogue& talk, const char* text) try {
        talk.expect(text);
        return true;
    } catch (const std::runtime_error&) {
        return false;
    }
};

TEST_F(NetworkFaultsOnATerminal, AreToldWhenTheScreenIsGivenBack) {
    walk({"browse", {"browse", "people"}, "of 300", "\033[6~\033[1;5Ffcode > 5\n\033OC\nz\nq"});
    walk({"the list of browse", {"browse"}, "PEOPLE", "\033OBq"});
    // What a browse whose connection was cut had locked may be there.
    walk({"locks --watch", {"locks", "--watch", "--refresh", "1"}, "Locks ", "q"});
}

// At most the statement that was under way is missing; without any attachment there is nothing.
TEST_F(NetworkFaults, EndNoShellWhichAttachesAnew) {
    constexpr int statements = 4;
    std::string input;
    for (int i = 1; i <= statements; ++i)
        input += fmt::format("select 'answer {}' as said from rdb$database;\n", i);
    const std::string reads = "ulimit -t 20; exec < '" + write_file("lines", input) + "'";
    const auto over = [&](const NetworkPlan& plan) {
        proxy_.plan(plan);
        return start_after(reads, {"--db", far_, "shell"})->end();
    };
    ASSERT_EQ(over({}).status, 0);
    const int messages = proxy_.count(Way::to_server);
    int attached_anew = 0;
    for (const NetworkFault fault : {NetworkFault::cut, NetworkFault::half_closed}) {
        for (int nth = 1; nth <= messages; ++nth) {
            SCOPED_TRACE(
                fmt::format("message {} is {}", nth, fault == NetworkFault::cut ? "cut" : "half closed"));
            const Finished ended = over({fault, Way::to_server, nth});
            int answers = 0;
            for (int i = 1; i <= statements; ++i)
                answers += ended.out.find(fmt::format("answer {}", i)) == std::string::npos ? 0 : 1;
            EXPECT_GE(answers, ended.status == 3 ? 0 : statements - 1) << ended.out << ended.err;
            EXPECT_TRUE(answers == statements || ended.status != 0) << ended.out << ended.err;
            EXPECT_TRUE(ended.status == 0 || !ended.err.empty());
            if (ended.err.find("is lost; what comes next attaches anew") != std::string::npos)
                ++attached_anew;
        }
    }
    EXPECT_GT(attached_anew, 0);
}

}  // namespace
}  // namespace zmfb::test
