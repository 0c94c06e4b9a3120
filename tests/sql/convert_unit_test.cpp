// Conversion without an engine: against printf, and with descriptions that no sound engine gives.
#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <limits>
#include <random>
#include <vector>

#include "sql/convert.h"
#include "sql/row_buffer.h"
#include "tests/support/show.h"

namespace zmfb::sql {
namespace {

using test::show;

XSQLVAR column_of(short type, short length, short scale = 0) {
    XSQLVAR column{};
    column.sqltype = type;
    column.sqllen = length;
    column.sqlscale = scale;
    return column;
}

// The text of one value whose bytes are `data`.
std::string convert_one(XSQLVAR column, const void* data, std::size_t size, short indicator = 0) {
    std::vector<XSQLVAR> columns{column};
    const RowBuffer buffer(columns);
    std::memcpy(columns[0].sqldata, data, size);
    *columns[0].sqlind = indicator;
    RowConverter converter(columns);
    return converter.convert()[1].string();
}

template <class T>
std::string convert_value(short type, T value, short scale = 0) {
    return convert_one(column_of(type, sizeof value, scale), &value, sizeof value);
}

template <class... Arguments>
std::string printed(const char* format, Arguments... arguments) {
    char text[512];
    std::snprintf(text, sizeof text, format, arguments...);
    return text;
}

constexpr int random_rounds = 20000;

TEST(ConvertReal, DoubleReadsAsPrintfPrintsIt) {
    std::mt19937_64 random(20070301);
    for (int i = 0; i < random_rounds; ++i) {
        const auto value = std::bit_cast<double>(random());
        ASSERT_EQ(convert_value(SQL_DOUBLE, value), printed("%f", value));
    }
    for (int i = 0; i < random_rounds; ++i) {
        const double value =
            static_cast<double>(static_cast<std::int64_t>(random())) / std::pow(10, random() % 16);
        ASSERT_EQ(convert_value(SQL_DOUBLE, value), printed("%f", value));
    }
}

// n / 128 has seven decimals and ends in a 5: the sixth is rounded to even.
TEST(ConvertReal, DoubleHalfwayBetweenTwoTextsReadsAsPrintfPrintsIt) {
    std::mt19937_64 random(20070301);
    for (int i = 0; i < random_rounds; ++i) {
        const double value = static_cast<double>(static_cast<std::int32_t>(random())) / 128;
        ASSERT_EQ(convert_value(SQL_DOUBLE, value), printed("%f", value));
        ASSERT_EQ(convert_value(SQL_DOUBLE, std::nextafter(value, 1e9)),
                  printed("%f", std::nextafter(value, 1e9)));
        ASSERT_EQ(convert_value(SQL_DOUBLE, std::nextafter(value, -1e9)),
                  printed("%f", std::nextafter(value, -1e9)));
    }
}

TEST(ConvertReal, DoubleThatRoundsUpToTheNextWholeReadsAsPrintfPrintsIt) {
    std::mt19937_64 random(20070301);
    for (int i = 0; i < random_rounds; ++i) {
        const double value =
            static_cast<double>(random() % 1000000) + 1 - std::ldexp(static_cast<double>(random() % 64), -24);
        ASSERT_EQ(convert_value(SQL_DOUBLE, value), printed("%f", value));
        ASSERT_EQ(convert_value(SQL_DOUBLE, -value), printed("%f", -value));
    }
}

TEST(ConvertReal, DoubleOfEverySizeReadsAsPrintfPrintsIt) {
    std::mt19937_64 random(20070301);
    for (int exponent = -120; exponent < 120; ++exponent) {
        for (int i = 0; i < 200; ++i) {
            const double value = std::ldexp(static_cast<double>(random()), exponent - 64);
            ASSERT_EQ(convert_value(SQL_DOUBLE, value), printed("%f", value));
        }
    }
}

TEST(ConvertReal, FloatReadsAsPrintfPrintsIt) {
    std::mt19937 random(20070301);
    for (int i = 0; i < random_rounds; ++i) {
        const auto value = std::bit_cast<float>(static_cast<std::uint32_t>(random()));
        ASSERT_EQ(convert_value(SQL_FLOAT, value), printed("%g", static_cast<double>(value)));
    }
    for (int i = 0; i < random_rounds; ++i) {
        const float value = static_cast<float>(static_cast<std::int32_t>(random())) / 1000.0F;
        ASSERT_EQ(convert_value(SQL_FLOAT, value), printed("%g", static_cast<double>(value)));
    }
}

TEST(ConvertReal, LimitsReadAsPrintfPrintsThem) {
    using Double = std::numeric_limits<double>;
    using Float = std::numeric_limits<float>;
    for (const double value :
         {0.0, -0.0, Double::max(), Double::lowest(), Double::min(), Double::denorm_min(), Double::infinity(),
          -Double::infinity(), Double::quiet_NaN(), -Double::quiet_NaN(), 0.5e-6, 1.5e-6, 2.5e-6, 0.0000005,
          999999.9999995}) {
        EXPECT_EQ(convert_value(SQL_DOUBLE, value), printed("%f", value));
    }
    for (const float value :
         {0.0F, -0.0F, Float::max(), Float::lowest(), Float::min(), Float::denorm_min(), Float::infinity(),
          -Float::infinity(), Float::quiet_NaN(), 999999.5F, 1e-4F, 9.99e-5F}) {
        EXPECT_EQ(convert_value(SQL_FLOAT, value), printed("%g", static_cast<double>(value)));
    }
}

TEST(ConvertScaled, ReadsAsPrintfPrintsQuotientAndRemainder) {
    std::mt19937 random(20070301);
    for (int i = 0; i < random_rounds; ++i) {
        const auto value = static_cast<std::int32_t>(random() >> (random() % 32));
        const int decimals = 1 + static_cast<int>(random() % 18);
        long long tens = 1;
        for (int k = 0; k < decimals; ++k) tens *= 10;
        const std::string expected = printed("%lld.%0*lld", value / tens, decimals, value % tens);
        ASSERT_EQ(convert_value(SQL_LONG, value, static_cast<short>(-decimals)), expected);
        ASSERT_EQ(convert_value(SQL_INT64, std::int64_t{value}, static_cast<short>(-decimals)), expected);
    }
}

TEST(ConvertScaled, SmallestInteger) {
    constexpr auto smallest = std::numeric_limits<std::int32_t>::min();
    EXPECT_EQ(convert_value(SQL_LONG, smallest), "-2147483648");
    EXPECT_EQ(convert_value(SQL_LONG, smallest, -2), "-21474836.-48");
    EXPECT_EQ(convert_value(SQL_LONG, smallest, -18), "0.-00000002147483648");
}

TEST(ConvertScaled, PositiveScaleIsNoScale) { EXPECT_EQ(convert_value(SQL_LONG, 7, 3), "7"); }

TEST(ConvertScaled, ScaleBeyondAnyEngineIsHeldAtEighteen) {
    EXPECT_EQ(convert_value(SQL_LONG, 7, -19), "0.000000000000000007");
    EXPECT_EQ(convert_value(SQL_INT64, std::int64_t{7}, -32768), "0.000000000000000007");
}

TEST(ConvertNull, NeedsTheFlagAndANegativeIndicator) {
    const std::int32_t five = 5;
    EXPECT_EQ(convert_one(column_of(SQL_LONG | 1, 4), &five, 4, -1), "NULL");
    EXPECT_EQ(convert_one(column_of(SQL_LONG | 1, 4), &five, 4, -32768), "NULL");
    EXPECT_EQ(convert_one(column_of(SQL_LONG | 1, 4), &five, 4, 0), "5");
    EXPECT_EQ(convert_one(column_of(SQL_LONG | 1, 4), &five, 4, 1), "5");
    EXPECT_EQ(convert_one(column_of(SQL_LONG, 4), &five, 4, -1), "5");
}

struct Varying {
    std::uint16_t length;
    char text[6];
};

TEST(ConvertHostile, VaryingLongerThanDeclaredIsHeldAtItsLength) {
    const Varying value{60000, {'a', 'b', 'c', 'd', 'e', 'f'}};
    EXPECT_EQ(convert_one(column_of(SQL_VARYING, 4), &value, 6), "abcd");
}

TEST(ConvertHostile, TextsWithoutLengthAreEmpty) {
    const Varying value{3, {'a', 'b', 'c'}};
    EXPECT_EQ(convert_one(column_of(SQL_VARYING, 0), &value, 2), "");
    EXPECT_EQ(convert_one(column_of(SQL_TEXT, 0), &value, 0), "");
    EXPECT_EQ(convert_one(column_of(SQL_VARYING, -5), &value, 2), "");
    EXPECT_EQ(convert_one(column_of(SQL_TEXT, -5), &value, 0), "");
}

TEST(ConvertHostile, NumbersDescribedTooShortHaveRoomAllTheSame) {
    const double one = 1;
    EXPECT_EQ(convert_one(column_of(SQL_DOUBLE, 0), &one, sizeof one), "1.000000");
    EXPECT_EQ(convert_one(column_of(SQL_DOUBLE, -1), &one, sizeof one), "1.000000");
    const ISC_TIMESTAMP stamp{54160, 507091234};
    EXPECT_EQ(convert_one(column_of(SQL_TIMESTAMP, 1), &stamp, sizeof stamp), "2007-03-01 14:05:09.1234");
}

TEST(ConvertHostile, TimestampsOutOfEveryRangeStayWithinTheirText) {
    std::mt19937 random(20070301);
    for (int i = 0; i < 1000; ++i) {
        const ISC_TIMESTAMP stamp{static_cast<ISC_DATE>(random()), static_cast<ISC_TIME>(random())};
        EXPECT_LT(convert_one(column_of(SQL_TIMESTAMP, 8), &stamp, sizeof stamp).size(), 100u);
    }
}

TEST(ConvertHostile, AnyTypeAndLengthStaysInsideTheBuffer) {
    std::mt19937 random(20070301);
    const std::vector<char> noise = [&random] {
        std::vector<char> bytes(40000);
        for (char& byte : bytes) byte = static_cast<char>(random());
        return bytes;
    }();
    constexpr short types[] = {SQL_TEXT,      SQL_VARYING,   SQL_SHORT, SQL_LONG,  SQL_FLOAT,
                               SQL_DOUBLE,    SQL_TIMESTAMP, SQL_BLOB,  SQL_ARRAY, SQL_TYPE_TIME,
                               SQL_TYPE_DATE, SQL_INT64,     0,         32766};
    for (int round = 0; round < 2000; ++round) {
        std::vector<XSQLVAR> columns(1 + random() % 5);
        for (XSQLVAR& column : columns) {
            column.sqltype = static_cast<short>(types[random() % std::size(types)] | (random() & 1));
            column.sqllen = static_cast<short>(random() % 4 == 0 ? random() : random() % 40);
            column.sqlscale = static_cast<short>(random() % 8 == 0 ? random() : -(random() % 4));
        }
        const RowBuffer buffer(columns);
        for (const XSQLVAR& column : columns) {
            const std::size_t size =
                std::max<std::size_t>(length_of(column), type_of(column) == SQL_TEXT ? 0 : 2);
            std::memcpy(column.sqldata, noise.data() + random() % 1000, size);
            *column.sqlind = static_cast<short>(random() % 3 == 0 ? -1 : 0);
        }
        RowConverter converter(columns);
        const host::Value row = converter.convert();
        ASSERT_EQ(row.size(), columns.size());
        for (const host::Value& value : row.items())
            ASSERT_TRUE(value.is(host::Kind::character)) << show(value);
    }
}

TEST(RowBufferLayout, DataAndIndicatorsStandAtEvenOffsetsWithoutOverlap) {
    std::vector<XSQLVAR> columns{column_of(SQL_TEXT, 3), column_of(SQL_VARYING, 4), column_of(SQL_TEXT, 1)};
    const RowBuffer buffer(columns);
    const char* const base = columns[0].sqldata;
    EXPECT_EQ(reinterpret_cast<const char*>(columns[0].sqlind) - base, 4);
    EXPECT_EQ(columns[1].sqldata - base, 6);
    EXPECT_EQ(reinterpret_cast<const char*>(columns[1].sqlind) - base, 14);
    EXPECT_EQ(columns[2].sqldata - base, 16);
    EXPECT_EQ(reinterpret_cast<const char*>(columns[2].sqlind) - base, 18);
}

TEST(TranslateType, GivesTheLetterOfEachType) {
    for (const int type : {SQL_VARYING, SQL_TEXT}) EXPECT_EQ(translate_type(type), "C");
    for (const int type : {SQL_DOUBLE, SQL_FLOAT, SQL_LONG, SQL_SHORT, SQL_INT64})
        EXPECT_EQ(translate_type(type), "N");
    EXPECT_EQ(translate_type(SQL_TIMESTAMP), "D");
    for (const int type : {SQL_TYPE_DATE, SQL_TYPE_TIME, SQL_BLOB, SQL_ARRAY, SQL_QUAD, SQL_BOOLEAN, 0, -2}) {
        EXPECT_EQ(translate_type(type), " ");
    }
}

}  // namespace
}  // namespace zmfb::sql
