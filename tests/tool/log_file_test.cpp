#include "tool/log_file.h"

#include <gtest/gtest.h>

namespace zmfb::tool {
namespace {

const std::string log_bytes =
    "\t[0] ana Sat Nov 21 06:45:33 2026\n [CONN] one\n"
    "\t[-1] Maria da Silva Sun Nov  1 06:45:33 2026\n two\n  lines\n"
    "\t[10]  Sat Nov 21 06:45:33 2026\n \n";

void expect_three(const std::vector<LogEntry>& entries) {
    ASSERT_EQ(entries.size(), 3U);
    EXPECT_EQ(entries[0].text, "[CONN] one");
    EXPECT_EQ(entries[0].date, "Sat Nov 21 06:45:33 2026");
    EXPECT_EQ(entries[1].level, -1);
    EXPECT_EQ(entries[1].user, "Maria da Silva");
    EXPECT_EQ(entries[1].text, "two\n  lines");
    EXPECT_EQ(entries[2].level, 10);
    EXPECT_EQ(entries[2].user, "");
    EXPECT_EQ(entries[2].text, "");
}

TEST(LogReader, EntriesAreTheSameHoweverTheirBytesAreCut) {
    for (std::size_t cut = 0; cut <= log_bytes.size(); ++cut) {
        LogReader reader;
        std::vector<LogEntry> entries = reader.take(std::string_view(log_bytes).substr(0, cut));
        for (LogEntry& entry : reader.take(std::string_view(log_bytes).substr(cut))) {
            entries.push_back(std::move(entry));
        }
        if (auto last = reader.last()) entries.push_back(std::move(*last));
        expect_three(entries);
    }
}

TEST(LogReader, AnEntryWithoutItsTextWaits) {
    LogReader reader;
    EXPECT_TRUE(reader.take("\t[0] ana Sat Nov 21 06:45:33 2026\n").empty());
    EXPECT_FALSE(reader.last());
    EXPECT_TRUE(reader.take(" ha").empty());
    EXPECT_FALSE(reader.last());
    EXPECT_TRUE(reader.take("lf\n").empty());
    const auto last = reader.last();
    ASSERT_TRUE(last);
    EXPECT_EQ(last->text, "half");
    EXPECT_FALSE(reader.last());
}

TEST(LogReader, ATagIsWhatStandsInBracketsAtTheStart) {
    EXPECT_EQ(tag_of("[ERROR] x"), "ERROR");
    EXPECT_EQ(tag_of("[open"), "");
    EXPECT_EQ(tag_of("x [ERROR]"), "");
    EXPECT_EQ(tag_of(""), "");
}

}  // namespace
}  // namespace zmfb::tool
