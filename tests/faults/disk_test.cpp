// Commands on a disk that goes wrong at one call, and one that loses what was not synced when the power goes.
#include <fmt/format.h>

#include <filesystem>

#include "tests/faults/commands.h"
#include "tests/support/environment.h"
#include "tests/support/validation.h"

namespace zmfb::test {
namespace {

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
};
constexpr int some = 3;

class DiskFaults : public CommandsThatFail {
  protected:
    void SetUp() override {
        if (on_server()) GTEST_SKIP() << "the server's disk is not that of the tool";
    }
    // Runs a command on that disk, with so much of a processor's time that it must not spin.
    Finished on_disk(const FaultyCommand& command, const DiskFault& fault, int nth) const {
        std::vector<std::string> words{"--db", path()};
        words.insert(words.end(), command.words.begin(), command.words.end());
        std::filesystem::remove(file("count"));
        const std::string files = command.kept.empty() ? ".fdb" : file("out/");
        return start_after(fmt::format("ulimit -t 20; export LD_PRELOAD='{}' ZMFB_DISK_FILES='{}' "
                                       "ASAN_OPTIONS=verify_asan_link_order=0 ZMFB_DISK_CALL={} "
                                       "ZMFB_DISK_FAULT={} ZMFB_DISK_NTH={} ZMFB_DISK_COUNT='{}' {}",
                                       ZMFB_FAILING_DISK, files, fault.call, fault.fault, nth, file("count"),
                                       fault.stays ? "ZMFB_DISK_STAYS=1" : ""),
                           words)
            ->end();
    }
    int calls() const {
        return std::filesystem::exists(file("count")) ? std::stoi(read_file(file("count"))) : 0;
    }

    void walk(const FaultyCommand& command) {
        using std::filesystem::copy_options;
        prepare(command);
        std::filesystem::copy_file(path(), file("ready"), copy_options::overwrite_existing);
        const std::string before = state(command);
        const Finished whole = on_disk(command, {.call = "none", .fault = "none"}, 0);
        ASSERT_EQ(whole.status, 0) << command.name << ": " << whole.err;
        const std::string after = state(command);
        const auto begin_again = [&] {
            std::filesystem::copy_file(file("ready"), path(), copy_options::overwrite_existing);
            if (!command.kept.empty()) prepare(command);
        };
        int runs = 0, failed = 0, ended_by_power = 0, damaged = 0;
        for (const DiskFault& fault : faults) {
            begin_again();
            on_disk(command, {.call = fault.call, .fault = "none"}, 0);
            for (const int nth : some_of(calls(), some)) {
                SCOPED_TRACE(fmt::format("{}: {} {} {}", command.name, fault.call, nth, fault.fault));
                begin_again();
                const Finished ended = on_disk(command, fault, nth);
                ++runs;
                failed += ended.status != 0 && ended.status != killed ? 1 : 0;
                ended_by_power += ended.status == killed ? 1 : 0;
                EXPECT_TRUE(ended.status == 0 || !fault.harmless) << ended.err;
                EXPECT_TRUE(ended.status != killed || std::string_view(fault.fault) == "power");
                if (const std::string found = damage(path()); !found.empty()) {
                    ++damaged;
                    EXPECT_NE(on(path(), {"doctor"}).status, 0) << "doctor has nothing to say of: " << found;
                    continue;
                }
                expect_all_or_nothing(command, ended, before, after);
            }
        }
        fmt::print(
            "{}: {} faults, {} times it failed, {} times the power went, {} times the database was damaged\n",
            command.name, runs, failed, ended_by_power, damaged);
        EXPECT_GT(failed, 0);
        EXPECT_GT(ended_by_power, 0);
    }
};

TEST_F(DiskFaults, AreToldAndLoseNothingThatWasSaidToBeDone) {
    for (const FaultyCommand& command : commands()) {
        if (command.looks.empty() && command.kept.empty() && command.name != "query") continue;
        walk(command);
    }
}

}  // namespace
}  // namespace zmfb::test
