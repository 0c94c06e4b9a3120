// Commands with a limit of their address space (ulimit -v), from one that no program is loaded with up to the
// first with which they go well.
#include <fmt/format.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <regex>

#include "tests/faults/commands.h"
#include "tests/support/validation.h"

namespace zmfb::test {
namespace {

constexpr int not_loaded = 127;  // the loader of programs had no room
constexpr int signals = 128;     // and the number of one
constexpr int not_ending = 124;  // until it was told to end

// By how much the limit grows each time; the environment variable says it for the long run.
int percent() {
    const char* const given = std::getenv("ZMFB_LIMITS_GROW_BY");
    return given == nullptr ? 60 : std::atoi(given);
}

class AddressSpace : public CommandsThatFail {
  protected:
    void SetUp() override {
#ifdef __SANITIZE_ADDRESS__
        GTEST_SKIP() << "AddressSanitizer takes terabytes of address space for itself";
#endif
    }

    // The engine may wait for ever for a thread of its own that got no memory: so it is told to end.
    Finished within(const FaultyCommand& command, const std::string& limit) const {
        std::vector<std::string> words{"--db", database_of(command)};
        words.insert(words.end(), command.words.begin(), command.words.end());
        return start_after(
                   fmt::format("ulimit -t 20; {}{}ulimit -v {}; set -- timeout 10 env LD_PRELOAD='{}' \"$@\"",
                               command.settings, command.settings.empty() ? "" : "; ", limit, ZMFB_WHOSE_END),
                   words)
            ->end();
    }

    void judge(const FaultyCommand& command, Finished ended, const std::string& before,
               const std::string& after) {
        if (ended.status == not_loaded) {
            EXPECT_NE(ended.err.find("error while loading shared libraries"), std::string::npos) << ended.err;
            EXPECT_EQ(state(command), before);
            return;
        }
        // The engine dies of it here and there. At the very end of a process, when all is told, it is not
        // always known whose code it was.
        if (ended.status > signals) {
            static const std::regex of_the_engine("ended in [^\n]*(/plugins/lib|/libfbclient)");
            const bool by_engine = std::regex_search(ended.err, of_the_engine);
            ++(by_engine ? died_ : ended_late_);
            EXPECT_TRUE(by_engine || (ended.err.starts_with("error: ") &&
                                      ended.err.find("ended by a fault") == std::string::npos))
                << ended.status << ": " << ended.err;
            ended.status = killed;
        }
        if (ended.status == not_ending) {
            ++hung_;
            EXPECT_NE(ended.err.find("error: interrupted"), std::string::npos) << ended.err;
            ended.status = 1;
        }
        expect_all_or_nothing(command, ended, before, after);
        if (!command.looks.empty() && std::filesystem::exists(file_of(command))) {
            EXPECT_EQ(damage(database_of(command)), "");
        }
    }

    void walk(const FaultyCommand& command) {
        constexpr long least = 4096, most = 4096L * 1024;  // kilobytes
        prepare(command);
        keep_prepared(command);
        const std::string before = state(command);
        const Finished whole = within(command, "unlimited");
        ASSERT_EQ(whole.status, 0) << command.name << ": " << whole.err;
        const std::string after = state(command);
        int failed = 0;
        long limit = 0;
        for (Finished ended; ended.status != 0 && limit < most;) {
            limit = std::max(least, limit + limit * percent() / 100);
            SCOPED_TRACE(fmt::format("{} within {} kilobytes", command.name, limit));
            begin_again(command);
            ended = within(command, std::to_string(limit));
            failed += ended.status == 0 ? 0 : 1;
            judge(command, ended, before, after);
            EXPECT_TRUE(ended.status != 0 || !command.same_output || same_output(ended, whole)) << ended.out;
        }
        begin_again(command);
        EXPECT_LT(limit, most) << "never enough";
        EXPECT_GT(failed, 0);
        fmt::print("{}: {} limits too small, enough with {} MB\n", command.name, failed, limit / 1024);
        failed_ += failed;
    }

    int failed_ = 0, hung_ = 0, died_ = 0, ended_late_ = 0;
};

TEST_F(AddressSpace, ThatIsTooSmallIsToldAndLeavesNothingHalfDone) {
    const bool all = std::getenv("ZMFB_LIMITS_GROW_BY") != nullptr;
    for (const FaultyCommand& command : commands()) {
        if (all ? !command.only_over_a_network : command.name == "import") walk(command);
    }
    fmt::print("{} limits too small: the engine died {} times and waited for ever {} times, {} died late\n",
               failed_, died_, hung_, ended_late_);
}

}  // namespace
}  // namespace zmfb::test
