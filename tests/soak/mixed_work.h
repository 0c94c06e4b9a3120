/// The work of an application on one connection, call after call.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "tests/transfer/transfer_fixture.h"

namespace zmfb::test {

/// A database with tables to work on, and rounds of calls of every family that leave it as they found it.
class MixedWork : public Transfer {
  protected:
    MixedWork();

    /// What one round does by contract: descriptors that failing imports and the reading of matrix files
    /// leave open, and errors raised.
    static constexpr int left_open_by_a_round = 8;
    static constexpr std::size_t raised_by_a_round = 13;

    /// One round: calls that succeed and calls that fail.
    void round();
    /// Closes the runtime's files that calls have left open since the last time; returns how many they were.
    int close_files_left_open();
    [[nodiscard]] long calls() const { return calls_; }

  private:
    template <class... Arguments>
    Value does(std::string_view method, Arguments&&... arguments) {
        ++calls_;
        return call(method, std::forward<Arguments>(arguments)...);
    }
    /// Calls that answer .T., and those that answer "" where SQL went well.
    template <class... Arguments>
    void yes(std::string_view method, Arguments&&... arguments) {
        EXPECT_TRUE(does(method, std::forward<Arguments>(arguments)...).logical()) << method;
    }
    template <class... Arguments>
    void no(std::string_view method, Arguments&&... arguments) {
        EXPECT_FALSE(does(method, std::forward<Arguments>(arguments)...).logical()) << method;
    }
    void runs(std::string_view statement) { EXPECT_EQ(does("executeupdate", statement).string(), ""); }

    void write_files();
    void query();
    void look_into_the_catalog();
    void fail_queries();
    void update();
    void batch();
    void lock_records();
    void lock_tables();
    void make_and_drop_tables();
    void describe();
    void import_and_export();
    void fail_imports();
    void rebuild_by_matrix();
    void fail_matrices();
    void attach_and_detach();

    CurrentFolder here_;
    double last_handle_ = 0;
    long calls_ = 0;
};

}  // namespace zmfb::test
