// How often a row of a result allocates. This program counts what its own code allocates.
#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <new>

#include "sql/convert.h"
#include "sql/row_buffer.h"

namespace {

long allocations = 0;

}  // namespace

extern "C" void* __real_malloc(std::size_t size);
extern "C" void* __wrap_malloc(std::size_t size) {
    ++allocations;
    return __real_malloc(size);
}

void* operator new(std::size_t size) {
    void* const memory = std::malloc(size);
    if (memory == nullptr) throw std::bad_alloc();
    return memory;
}
void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }

namespace zmfb::sql {
namespace {

XSQLVAR column_of(short type, short length) {
    XSQLVAR column{};
    column.sqltype = type;
    column.sqllen = length;
    return column;
}

TEST(RowAllocation, RowWithSeveralLongTextsIsOneAllocation) {
    std::vector<XSQLVAR> columns{column_of(SQL_LONG, 4),   column_of(SQL_VARYING, 30),
                                 column_of(SQL_TEXT, 20),  column_of(SQL_TIMESTAMP, 8),
                                 column_of(SQL_DOUBLE, 8), column_of(SQL_TIMESTAMP, 8),
                                 column_of(SQL_INT64, 8)};
    const RowBuffer buffer(columns);
    std::memset(columns[2].sqldata, 'x', 20);
    RowConverter converter(columns);
    constexpr int rows = 1000;
    const host::Value result = host::Value::array_of_size(rows);
    std::span<host::Value> places = result.items();
    const long before = allocations;
    for (int day = 0; day < rows; ++day) {
        std::memcpy(columns[3].sqldata, &day, sizeof day);
        places[static_cast<std::size_t>(day)] = converter.convert();
    }
    EXPECT_EQ(allocations - before, rows);
    EXPECT_EQ(result[2][4].text(), "1858-11-18 00:00:00.0000");
    EXPECT_EQ(result[2][6].text(), "1858-11-17 00:00:00.0000");
}

}  // namespace
}  // namespace zmfb::sql
