// Commands an allocation of which fails, or all from one on.
#include <fmt/format.h>

#include <cstring>

#include "tests/faults/commands.h"
#include "tests/support/failing_memory.h"

namespace zmfb::test {
namespace {

class CommandMemory : public CommandsThatFail {
  protected:
    Finished with_fault(const FaultyCommand& command, MemoryFault fault) const {
        std::vector<std::string> words{"--db", database_of(command)};
        words.insert(words.end(), command.words.begin(), command.words.end());
        return start_after(
                   fmt::format("ulimit -t 20; {}{}export ZMFB_MEMORY_COUNT='{}' ZMFB_MEMORY_NTH={} {}",
                               command.settings, command.settings.empty() ? "" : "; ", file("count"),
                               fault.nth, fault.stays ? "ZMFB_MEMORY_STAYS=1" : ""),
                   words)
            ->end();
    }
    // One that reads the command line, and nothing else.
    static FaultyCommand reading_only() {
        return {.name = "methods", .words = {"methods"}, .same_output = true};
    }
    int allocations() const {
        long count = 0;
        const std::string bytes = read_file(file("count"));
        if (bytes.size() == sizeof count) std::memcpy(&count, bytes.data(), sizeof count);
        return static_cast<int>(count);
    }
    // Makes allocations fail, but for the first `passed_over`: at each of them alone, and at it and all after
    // it.
    void walk(const FaultyCommand& command, int passed_over, int some) {
        prepare(command);
        keep_prepared(command);
        const std::string before = state(command);
        const Finished whole = with_fault(command, {});
        ASSERT_EQ(whole.status, 0) << command.name << ": " << whole.err;
        const int count = allocations() - passed_over;
        const std::string after = state(command);
        int runs = 0, failed = 0;
        for (const bool stays : {false, true}) {
            for (const int chosen : some_of(count, stays ? 1 : some)) {
                const int nth = passed_over + chosen;
                SCOPED_TRACE(fmt::format("{}: allocation {}{}", command.name, nth, stays ? " and on" : ""));
                begin_again(command);
                const Finished ended = with_fault(command, {.nth = nth, .stays = stays});
                ++runs;
                failed += ended.status != 0 ? 1 : 0;
                EXPECT_LE(ended.status, 1) << ended.err;
                EXPECT_TRUE(ended.status == 0 || ended.err.find("out of memory") != std::string::npos)
                    << ended.out << ended.err;
                EXPECT_TRUE(ended.status != 0 || !command.same_output || same_output(ended, whole))
                    << ended.out;
                expect_all_or_nothing(command, ended, before, after);
            }
        }
        begin_again(command);
        fmt::print("{}: {} allocations, {} faults, {} times it failed\n", command.name, count, runs, failed);
        EXPECT_GT(failed, 0);
    }
};

TEST_F(CommandMemory, ThatFailsWhereTheCommandLineIsReadIsTold) { walk(reading_only(), 0, 20); }

// What every command asks for before it begins is passed over.
TEST_F(CommandMemory, ThatFailsIsToldAndLeavesNothingHalfDone) {
    with_fault(reading_only(), {});
    const int before_each = allocations();
    for (const FaultyCommand& command : commands()) walk(command, before_each, 2);
}

}  // namespace
}  // namespace zmfb::test
