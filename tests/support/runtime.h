/// The fixture of every test that meets the runtime: a folder, a log and an error block of the test's own.
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "host/error.h"
#include "host/value.h"
#include "tests/support/show.h"

namespace zmfb::test {

/// One entry of the log.
struct LogEntry {
    int level = 0;
    std::string text;

    bool operator==(const LogEntry&) const = default;
};
void PrintTo(const LogEntry& entry, std::ostream* out);

/// Starts each test with the log level 0, an empty log, and an error block that notes what is raised and
/// returns NIL. A test during which something was raised that it did not ask for with raised() fails.
class Runtime : public ::testing::Test {
  protected:
    Runtime();
    ~Runtime() override;
    void TearDown() override;

    /// A folder of this test's own; removed at the end, kept when the test failed.
    [[nodiscard]] const std::filesystem::path& folder() const { return folder_; }
    /// The path of a file in it.
    [[nodiscard]] std::string file(const std::string& name) const { return folder_ / name; }
    /// Writes a file there and returns its path.
    std::string write_file(const std::string& name, std::string_view content) const;
    static std::string read_file(const std::string& path);

    /// Sets the log level without writing a line.
    static void log_at(int level);
    /// The whole log, byte for byte.
    [[nodiscard]] std::string log_text() const;
    /// Its entries.
    [[nodiscard]] std::vector<LogEntry> log_lines() const;
    void clear_log() const;
    /// The statements and queries logged since the test began or clear_log() was called, in order; needs
    /// log_at(8).
    [[nodiscard]] std::vector<std::string> sql_log() const;

    /// The descriptions of the errors raised so far.
    const std::vector<std::string>& raised();
    void forget_raised() { raised_.clear(); }
    /// What the error block answers with from now on.
    void answer_errors_with(const host::Value& answer) { answer_ = answer; }

  private:
    std::filesystem::path folder_;
    std::vector<std::string> raised_;
    bool raised_was_read_ = false;
    host::Value answer_;
    host::ScopedErrorBlock errors_;
};

}  // namespace zmfb::test
