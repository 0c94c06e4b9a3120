// Commands on a disk that goes wrong at one call, and one that loses what was not synced when the power goes.
#include <fmt/format.h>

#include <algorithm>
#include <filesystem>
#include <map>
#include <sstream>

#include "tests/faults/commands.h"
#include "tests/support/environment.h"
#include "tests/support/validation.h"

namespace zmfb::test {
namespace {

namespace fs = std::filesystem;

struct DiskFault {
    const char* call;
    const char* fault;
    bool stays = false;     // and all after it
    bool harmless = false;  // nothing fails of it
};
constexpr DiskFault faults[] = {
    {.call = "write", .fault = "ENOSPC", .stays = true},
    {.call = "write", .fault = "EIO"},
    {.call = "write", .fault = "short", .harmless = true},
    {.call = "write", .fault = "late", .harmless = true},
    {.call = "write", .fault = "power"},
    {.call = "sync", .fault = "EIO"},
    {.call = "sync", .fault = "power"},
    {.call = "truncate", .fault = "EIO"},
    {.call = "open", .fault = "EIO"},
    {.call = "read", .fault = "EIO"},
    {.call = "read", .fault = "short", .harmless = true},
    {.call = "read", .fault = "late", .harmless = true},
    {.call = "rename", .fault = "EIO"},
    {.call = "rename", .fault = "power"},
    {.call = "close", .fault = "EIO"},
};

constexpr const DiskFault& full = faults[0];

class DiskFaults : public CommandsThatFail {
  protected:
    void SetUp() override {
        if (on_server()) GTEST_SKIP() << "the server's disk is not that of the tool";
    }
    // Runs a command on that disk, with so much of a processor's time that it must not spin.
    Finished on_disk(const FaultyCommand& command, const DiskFault& fault, int nth) const {
        std::vector<std::string> words{"--db", database_of(command)};
        words.insert(words.end(), command.words.begin(), command.words.end());
        fs::remove(file("count"));
        return start_after(fmt::format("ulimit -t 20; {}{}export LD_PRELOAD='{}' ZMFB_DISK_FILES='{}' "
                                       "ASAN_OPTIONS=verify_asan_link_order=0 ZMFB_DISK_CALL={} "
                                       "ZMFB_DISK_FAULT={} ZMFB_DISK_NTH={} ZMFB_DISK_COUNT='{}' {}",
                                       command.settings, command.settings.empty() ? "" : "; ",
                                       ZMFB_FAILING_DISK, command.files, fault.call, fault.fault, nth,
                                       file("count"), fault.stays ? "ZMFB_DISK_STAYS=1" : ""),
                           words)
            ->end();
    }
    // How often the last command made each call, in that of its processes that made the most.
    [[nodiscard]] std::map<std::string, int> counts() const {
        std::map<std::string, int> all;
        std::istringstream lines(read_file(file("count")));
        std::string call;
        for (int count = 0; lines >> call >> count;) all[call] = std::max(all[call], count);
        return all;
    }

    void walk(const FaultyCommand& command) {
        prepare(command);
        keep_prepared(command);
        const std::string before = state(command);
        const Finished whole = on_disk(command, {.call = "none", .fault = "none"}, 0);
        ASSERT_EQ(whole.status, 0) << command.name << ": " << whole.err;
        const std::map<std::string, int> calls = counts();
        const std::string after = state(command);
        int runs = 0, failed = 0, ended_by_power = 0, damaged = 0;
        for (const DiskFault& fault : faults) {
            for (const int nth : some_of(calls.at(fault.call), ++turn_)) {
                SCOPED_TRACE(fmt::format("{}: {} {} {}", command.name, fault.call, nth, fault.fault));
                begin_again(command);
                const Finished ended = on_disk(command, fault, nth);
                ++runs;
                failed += ended.status != 0 && ended.status != killed ? 1 : 0;
                ended_by_power += ended.status == killed ? 1 : 0;
                EXPECT_TRUE(ended.status == 0 || !fault.harmless) << ended.err;
                EXPECT_TRUE(ended.status != killed || std::string_view(fault.fault) == "power");
                EXPECT_TRUE(ended.status != 0 || !command.same_output || same_output(ended, whole))
                    << ended.out;
                EXPECT_TRUE(ended.status == 0 || ended.status == killed || !command.takes_no_notice)
                    << ended.err;
                if (const std::string found = damage_in(command); !found.empty()) {
                    ++damaged;
                    EXPECT_NE(on(database_of(command), {"doctor"}).status, 0)
                        << "doctor has nothing to say of: " << found;
                    EXPECT_STRNE(fault.call, "rename") << "it had its name before it was on the disk";
                    continue;
                }
                expect_all_or_nothing(command, ended, before, after);
            }
        }
        begin_again(command);
        fmt::print(
            "{}: {} faults, {} times it failed, {} times the power went, {} times the database was damaged\n",
            command.name, runs, failed, ended_by_power, damaged);
        failed_ += failed;
        ended_by_power_ += ended_by_power;
        runs_ += runs;
    }

    int runs_ = 0, failed_ = 0, ended_by_power_ = 0;

  private:
    // Of a database whose files went wrong.
    [[nodiscard]] std::string damage_in(const FaultyCommand& command) const {
        const bool concerned = command.files.ends_with(".fdb") && fs::exists(file_of(command));
        return concerned ? damage(database_of(command)) : "";
    }

    int turn_ = 0;
};

TEST_F(DiskFaults, AreToldAndLoseNothingThatWasSaidToBeDone) {
    long walked = 0;
    for (const FaultyCommand& command : commands()) {
        if (command.only_over_a_network) continue;
        walk(command);
        ++walked;
    }
    fmt::print("{} commands: {} faults, {} times one failed, {} times the power went\n", walked, runs_,
               failed_, ended_by_power_);
    EXPECT_GT(failed_, runs_ / 10);
    EXPECT_GT(ended_by_power_, 0);
}

TEST_F(DiskFaults, AreToldWhereRecordsAreCounted) {
    const FaultyCommand& tables = the("tables");
    ASSERT_EQ(on_disk(tables, {.call = "none", .fault = "none"}, 0).status, 0);
    const int writes = counts().at("write");
    for (const int nth : {writes * 3 / 4, writes - 1}) {
        SCOPED_TRACE(nth);
        begin_again(tables);
        const Finished ended = on_disk(tables, full, nth);
        EXPECT_EQ(ended.status, 1) << ended.out;
        EXPECT_NE(ended.err.find("I/O error during"), std::string::npos) << ended.err;
    }
}

// It throws out of a destructor of its own then.
TEST_F(DiskFaults, AreToldWhereTheEngineCannotGoOn) {
    const FaultyCommand& functions = the("functions stored");
    prepare(functions);
    keep_prepared(functions);
    for (int nth = 8; nth < 18; ++nth) {
        SCOPED_TRACE(nth);
        begin_again(functions);
        expect_words(functions, on_disk(functions, full, nth));
    }
}

}  // namespace
}  // namespace zmfb::test
