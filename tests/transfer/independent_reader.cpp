#include "tests/transfer/independent_reader.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <sstream>

#include "tests/support/process.h"

namespace zmfb::test {

namespace {

Row split(const std::string& line) {
    Row cells(1);
    for (const char c : line) {
        if (c == '\t') {
            cells.emplace_back();
        } else {
            cells.back() += c;
        }
    }
    return cells;
}

void expect_quiet(const std::vector<std::string>& command) {
    const Finished reader = run(command);
    EXPECT_EQ(reader.status, 0) << command[0] << ": " << reader.err;
    EXPECT_EQ(reader.err, "") << command[0];
}

}  // namespace

DbfContent read_dbf(const std::string& reader, const std::string& path) {
    const Finished script = run({ZMFB_PYTHON, ZMFB_DBF_ROWS, reader, path});
    EXPECT_EQ(script.status, 0) << reader << ": " << script.err;
    DbfContent content;
    std::istringstream lines(script.out);
    std::string line;
    if (std::getline(lines, line)) content.fields = split(line);
    if (std::getline(lines, line)) content.deleted = std::stoi(line);
    while (std::getline(lines, line)) content.records.push_back(split(line));
    return content;
}

void expect_no_complaint(const std::string& path, std::size_t records) {
    expect_quiet({"ogrinfo", "-ro", "-al", path});
    expect_quiet({"dbfdump", path});
    const Finished summary = run({"ogrinfo", "-ro", "-so", "-al", path});
    EXPECT_NE(summary.out.find("Feature Count: " + std::to_string(records) + "\n"), std::string::npos)
        << summary.out;
}

Rows comparable(const DbfContent& content) {
    Rows records = content.records;
    if (content.deleted > 0) std::sort(records.begin(), records.end());
    return records;
}

}  // namespace zmfb::test
