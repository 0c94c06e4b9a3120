#include "values.h"

#include <string>

#include "errors.h"

namespace zmfb::host_test {

bool same_value(const host::Value& a, const host::Value& b) {
    if (!a.is(host::Kind::array) || !b.is(host::Kind::array)) return a.same(b);
    if (a.size() != b.size()) return false;
    for (std::size_t i = 1; i <= a.size(); ++i) {
        if (!same_value(a[i], b[i])) return false;
    }
    return true;
}

testing::AssertionResult is_same(const host::Value& actual, const host::Value& expected) {
    if (same_value(actual, expected)) return testing::AssertionSuccess();
    return testing::AssertionFailure()
           << "is " << test::show(actual) << ", expected " << test::show(expected);
}

void expect_rows(std::initializer_list<Row> rows) {
    for (const Row& row : rows) {
        if (same_value(row.actual, row.expected)) continue;
        ADD_FAILURE_AT(row.where.file_name(), static_cast<int>(row.where.line()))
            << "is " << test::show(row.actual) << ", expected " << test::show(row.expected);
    }
}

void expect_argument_error(host::Subcode subcode, std::string_view operation,
                           const std::function<host::Value()>& call, std::source_location where) {
    const testing::ScopedTrace trace(where.file_name(), static_cast<int>(where.line()),
                                     std::string(operation));
    CaughtErrors caught("what the handler returned");
    const host::Value answer = call();
    EXPECT_EQ(caught.take_count(), 1);
    EXPECT_EQ(caught.number("gencode"), static_cast<int>(host::GenCode::argument));
    EXPECT_EQ(caught.number("subcode"), static_cast<int>(subcode));
    EXPECT_EQ(caught.text("operation"), operation);
    EXPECT_TRUE(is_same(answer, "what the handler returned"));
}

}  // namespace zmfb::host_test
