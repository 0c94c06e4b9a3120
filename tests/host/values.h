/// The comparison of values that tests mean, and tables of them.
#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <initializer_list>
#include <source_location>
#include <string_view>
#include <utility>

#include "host/error.h"
#include "host/value.h"
#include "tests/support/show.h"

namespace zmfb::host_test {

/// Whether two values are of one kind and the same, arrays element by element.
bool same_value(const host::Value& a, const host::Value& b);

/// For EXPECT_TRUE: same_value(), with both values in the message.
testing::AssertionResult is_same(const host::Value& actual, const host::Value& expected);

/// One row of a table: what an operation gave and what it should.
struct Row {
    Row(host::Value actual_value, host::Value expected_value,
        std::source_location place = std::source_location::current())
        : actual(std::move(actual_value)), expected(std::move(expected_value)), where(place) {}
    host::Value actual;
    host::Value expected;
    std::source_location where;
};

/// Fails, at the row's line, for every row that differs.
void expect_rows(std::initializer_list<Row> rows);

/// Expects that `call` raises one argument error of that subcode and operation, and answers with what the
/// error handler returned.
void expect_argument_error(host::Subcode subcode, std::string_view operation,
                           const std::function<host::Value()>& call,
                           std::source_location where = std::source_location::current());

}  // namespace zmfb::host_test
