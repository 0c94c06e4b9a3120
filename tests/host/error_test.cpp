#include "host/error.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <stdexcept>

#include "errors.h"
#include "host/array.h"
#include "host/class.h"
#include "host/text.h"
#include "values.h"

namespace zmfb::host {
namespace {

using host_test::CaughtErrors;
using host_test::expect_rows;
using host_test::is_same;

Value described(const char* description) {
    const Value error = error_new();
    error.object()->set("description", description);
    return error;
}

TEST(ErrorObject, IsFreshWhenNew) {
    const Value error = error_new();
    Object& fields = *error.object();
    expect_rows({{fields.get("args"), {}},
                 {fields.get("candefault"), false},
                 {fields.get("canretry"), false},
                 {fields.get("cansubstitute"), false},
                 {fields.get("cargo"), {}},
                 {fields.get("description"), ""},
                 {fields.get("filename"), ""},
                 {fields.get("gencode"), 0},
                 {fields.get("operation"), ""},
                 {fields.get("oscode"), 0},
                 {fields.get("severity"), 0},
                 {fields.get("subcode"), 0},
                 {fields.get("subsystem"), ""},
                 {fields.get("tries"), 0}});
    EXPECT_FALSE(error.same(error_new()));
}

TEST(ErrorObject, FieldsAreSettable) {
    const Value error = described("[FBCONN Error];something");
    error.object()->set("gencode", -1);
    error.object()->set("severity", 2);
    expect_rows({{error.object()->get("description"), "[FBCONN Error];something"},
                 {error.object()->get("gencode"), -1},
                 {error.object()->get("severity"), 2}});
}

TEST(ErrorBlock, ReturnsTheOneBefore) {
    const Value first = Value::block([](Args) { return Value(1); });
    const Value second = Value::block([](Args) { return Value(2); });
    const Value original = error_block(first);
    EXPECT_TRUE(original.is(Kind::block));
    EXPECT_TRUE(error_block().same(first));
    EXPECT_TRUE(error_block(second).same(first));
    EXPECT_TRUE(error_block(original).same(second));
    EXPECT_TRUE(error_block().same(original));
}

TEST(ErrorBlock, ReceivesTheErrorAndItsResultIsReturned) {
    CaughtErrors caught("result");
    const Value error = described("A");
    EXPECT_TRUE(is_same(raise(error), "result"));
    EXPECT_TRUE(caught.last().same(error));
}

TEST(ErrorBlock, MayReplaceItselfWhileItRuns) {
    const Value original = error_block();
    error_block(Value::block([&](Args) -> Value {
        error_block(original);
        return "replaced";
    }));
    EXPECT_TRUE(is_same(raise(error_new()), "replaced"));
    EXPECT_TRUE(error_block().same(original));
}

TEST(ScopedErrorBlock, BringsTheOneBeforeBackAlsoAfterAnException) {
    const Value original = error_block();
    const Value inner = Value::block([](Args) -> Value { throw std::runtime_error("thrown"); });
    {
        const ScopedErrorBlock outer(Value::block([](Args) { return Value(1); }));
        EXPECT_THROW(
            {
                const ScopedErrorBlock scope(inner);
                EXPECT_TRUE(error_block().same(inner));
                raise(error_new());
            },
            std::runtime_error);
        EXPECT_TRUE(is_same(raise(error_new()), 1));
    }
    EXPECT_TRUE(error_block().same(original));
}

TEST(ThrowingErrors, ThrowTheObjectWithItsDescriptionInUtf8) {
    const ThrowingErrors thrown;
    const Value error = described("descri\xE7\xE3o");
    try {
        raise(error);
        FAIL() << "nothing was thrown";
    } catch (const RaisedError& raised) {
        EXPECT_STREQ(raised.what(), "descri\u00E7\u00E3o");
        EXPECT_TRUE(raised.error().same(error));
    }
    EXPECT_THROW(raise(7), RaisedError);
}

TEST(ErrorDescription, OfWhatIsNoErrorIsUnknown) {
    EXPECT_EQ(error_description(described("A")), "A");
    EXPECT_EQ(error_description(Value()), "unknown error");
    const Value damaged = error_new();
    damaged.object()->set("description", 7);
    EXPECT_EQ(error_description(damaged), "unknown error");
}

TEST(Raising, AnArgumentErrorFillsItsFields) {
    CaughtErrors caught("substitute");
    EXPECT_TRUE(is_same(argument_error(Subcode::trim, "TRIM", {100, "B"}), "substitute"));
    expect_rows({{caught.field("description"), "Argument error: TRIM"},
                 {caught.field("operation"), "TRIM"},
                 {caught.field("gencode"), 1},
                 {caught.field("subcode"), 1100},
                 {caught.field("severity"), 2},
                 {caught.field("subsystem"), "BASE"},
                 {caught.field("cansubstitute"), true},
                 {caught.field("args"), array_of(100, "B")}});
}

TEST(Raising, ABoundErrorNamesArrayAndIndex) {
    CaughtErrors caught;
    const Value list = array_of(1);
    bound_error(Subcode::array_access, list, 7);
    expect_rows({{caught.field("description"), "Bound error: array access"},
                 {caught.field("gencode"), 2},
                 {caught.field("subcode"), 1132},
                 {caught.field("args"), array_of(list, 7)}});
}

TEST(Raising, OtherErrorsHaveTheirClass) {
    CaughtErrors caught(5);
    EXPECT_TRUE(is_same(runtime_error(GenCode::open, Subcode::file, "Open error"), 5));
    expect_rows({{caught.field("description"), "Open error"},
                 {caught.field("gencode"), 21},
                 {caught.field("subcode"), 2021},
                 {caught.field("subsystem"), "BASE"},
                 {caught.field("severity"), 2}});
    EXPECT_TRUE(is_same(string_overflow("SPACE"), 5));
    expect_rows({{caught.field("description"), "String overflow: SPACE"}, {caught.field("gencode"), 3}});
}

TEST(Raising, AnExceptionOfTheHandlerPassesThroughOperations) {
    const ThrowingErrors thrown;
    const Value list = array_of("a text longer than fourteen", 1);
    const Value trimming = Value::block([](Args args) { return trim(args[0]); });
    EXPECT_THROW(ascan(list, trimming), RaisedError);
    EXPECT_THROW(Value("A") + Value(1), RaisedError);
    EXPECT_THROW(static_cast<void>(list[3]), RaisedError);
    EXPECT_THROW(space(1e300), RaisedError);
    EXPECT_THROW(Value(new Instance(Class("none", {}, {}))).object()->send("nosuch", {}), RaisedError);
    EXPECT_TRUE(is_same(list, array_of("a text longer than fourteen", 1)));
}

TEST(DefaultHandlerDeathTest, PrintsTheLinesAndEndsWithStatusOne) {
    EXPECT_EXIT(raise(described("[FBCONN Error];first line;second line")), testing::ExitedWithCode(1),
                "^\\[FBCONN Error\\]\nfirst line\nsecond line\n$");
}

// Says when it is destroyed, as a lock would be given back.
struct Guard {
    ~Guard() { std::fputs("given back\n", stderr); }
};

TEST(DefaultHandlerDeathTest, RunsNoDestructorOfWhatTheProgramHolds) {
    EXPECT_EXIT(
        {
            const Guard guard;
            raise(described("printed"));
        },
        testing::ExitedWithCode(1), "^printed\n$");
}

TEST(DefaultHandlerDeathTest, ABlockThatThrowsRunsThem) {
    EXPECT_EXIT(
        {
            const ThrowingErrors thrown;
            try {
                const Guard guard;
                raise(described("not printed"));
            } catch (const RaisedError&) {
                std::exit(7);
            }
        },
        testing::ExitedWithCode(7), "^given back\n$");
}

TEST(DefaultHandlerDeathTest, EndsTheProgramOnAnArgumentError) {
    EXPECT_EXIT(trim(100), testing::ExitedWithCode(1), "^Argument error: TRIM\n$");
}

TEST(DefaultHandlerDeathTest, EndsTheProgramOnWhatIsNoErrorObject) {
    EXPECT_EXIT(raise("a text"), testing::ExitedWithCode(1), "^unknown error\n$");
}

TEST(DefaultHandlerDeathTest, NilBringsItBack) {
    EXPECT_EXIT(
        {
            error_block(Value::block([](Args) { return Value(); }));
            raise(described("swallowed"));
            error_block(Value());
            raise(described("printed"));
        },
        testing::ExitedWithCode(1), "^printed\n$");
}

}  // namespace
}  // namespace zmfb::host
