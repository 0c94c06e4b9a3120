#include <fmt/format.h>
#include <gtest/gtest.h>

#include <random>

#include "host/latin1.h"
#include "tests/matrix/matrix_test.h"

namespace zmfb::test {
namespace {

using host::operator""_l1;
using Lines = std::vector<std::string>;

const Field a{"A", "C", 10};
const Field b{"B", "N", 12, 2};

std::string header(std::string_view table) {
    return fmt::format("- - - - - - - - - - - - - - - - - - - - - - - - - [ {} ]", table);
}

// Applies a file to fresh tables, after a simulation that must foretell it.
class BrokenFile : public Runtime {
  protected:
    struct Outcome {
        bool ok = false;
        Lines log;
        Lines raised;
        Lines changes;
    };

    Outcome apply(std::string_view content) {
        const std::string path = write_file("broken.tf", content);
        FakeDatabase db;
        db.add("FIRST", {a, b});
        db.add("SECOND", {a, b});
        db.add("THIRD", {a, b});
        db.call("checkmatrix", path);
        EXPECT_EQ(db.changes, Lines{});
        const Lines foretold = raised();
        forget_raised();
        const Value result = db.call("applymatrix", path);
        Outcome outcome{result[1].logical(), lines(result[2]), raised(), db.changes};
        EXPECT_EQ(foretold, outcome.raised);
        forget_raised();
        return outcome;
    }

    static std::string block(std::string_view table, const std::string& second_line) {
        return fmt::format("- - - - - Created by ZMRDDFIRE - - - - -\r\n Tabela: {}\r\n{}\r\n{}\r\n", table,
                           same(table, 1, a), second_line);
    }
    static std::string dropping_b(std::string_view table) {
        return block(table, line(table, descriptor(2, b), "DROP FIELD"));
    }
};

struct Break {
    std::string_view name;
    std::string second_line;
    std::string_view message;
};

class BrokenGroup : public BrokenFile, public ::testing::WithParamInterface<Break> {};

TEST_P(BrokenGroup, IsToldAndTheOthersAreApplied) {
    const Outcome outcome = apply("banner\r\n" + dropping_b("FIRST") +
                                  block("SECOND", GetParam().second_line) + dropping_b("THIRD"));
    EXPECT_FALSE(outcome.ok);
    EXPECT_EQ(outcome.log, (Lines{header(""), header("FIRST"), "[OK] Drop Field: B", header("THIRD"),
                                  "[OK] Drop Field: B"}));
    EXPECT_EQ(outcome.raised, Lines{"[FBCONN Error];" + std::string(GetParam().message)});
    EXPECT_EQ(outcome.changes, (Lines{"dropfield FIRST B N 12 2", "dropfield THIRD B N 12 2"}));
}

INSTANTIATE_TEST_SUITE_P(
    Matrix, BrokenGroup,
    ::testing::Values(
        Break{"NoTableSign", " SECOND 002 => 002",
              "Os dados para esta tabela parecem corrompidos;Registro:  SECOND 002 "},
        Break{"AnotherTable", same("OTHER", 2, b),
              "Os dados para esta tabela parecem corrompidos;Tabela: SECOND"},
        Break{"LeftSide", " SECOND>>002::B::N::x::2=>",
              "Os dados para esta tabela parecem corrompidos;Campo: 002::B::N::x::2;Tabela: SECOND"},
        Break{"RightSide", " SECOND>>002::B::N::12::2=>DROP",
              "Os dados para esta tabela parecem corrompidos;Campo: DROP;Tabela: SECOND"}),
    [](const auto& info) { return std::string(info.param.name); });

TEST_F(BrokenFile, AGroupWithoutATableNameIsToldAndTheOthersAreApplied) {
    const Outcome outcome = apply(dropping_b("FIRST") + block("", "") + dropping_b("THIRD"));
    EXPECT_FALSE(outcome.ok);
    EXPECT_EQ(outcome.raised,
              Lines{"[FBCONN Error];" + std::string("Não foi possível determinar a tabela alvo"_l1)});
    EXPECT_EQ(outcome.changes, (Lines{"dropfield FIRST B N 12 2", "dropfield THIRD B N 12 2"}));
}

TEST_F(BrokenFile, CutAtEveryByteAppliesTheGroupsAheadOfTheCut) {
    const std::string first = dropping_b("FIRST"), second = dropping_b("SECOND"), third = dropping_b("THIRD");
    const std::string whole = first + second + third;
    for (std::size_t size = 0; size <= whole.size(); ++size) {
        SCOPED_TRACE(fmt::format("cut at {}", size));
        const Outcome outcome = apply(std::string_view(whole).substr(0, size));
        Lines complete;
        if (size >= first.size()) complete.emplace_back("dropfield FIRST B N 12 2");
        if (size >= first.size() + second.size()) complete.emplace_back("dropfield SECOND B N 12 2");
        if (size == whole.size()) complete.emplace_back("dropfield THIRD B N 12 2");
        ASSERT_GE(outcome.changes.size(), complete.size());
        EXPECT_TRUE(std::equal(complete.begin(), complete.end(), outcome.changes.begin()));
        // The group that is cut can at most drop its field, or lose the line of it.
        ASSERT_LE(outcome.changes.size(), complete.size() + 2);
        EXPECT_EQ(outcome.ok, outcome.raised.empty());
    }
}

TEST_F(BrokenFile, ChangedBytesNeverDoHarm) {
    const std::string whole = dropping_b("FIRST") + dropping_b("SECOND") + dropping_b("THIRD");
    std::mt19937 random(4711);
    constexpr std::string_view signs = ":>=\r\n 01-DROPTABLE\0\xFF";
    int failed = 0;
    for (int round = 0; round < 3000; ++round) {
        SCOPED_TRACE(fmt::format("round {}", round));
        std::string damaged = whole;
        for (int i = std::uniform_int_distribution(1, 6)(random); i > 0; --i) {
            const auto at = std::uniform_int_distribution<std::size_t>(0, damaged.size() - 1)(random);
            const auto sign = std::uniform_int_distribution<std::size_t>(0, signs.size() - 1)(random);
            switch (i % 3) {
                case 0:
                    damaged[at] = signs[sign];
                    break;
                case 1:
                    damaged.insert(at, 1, signs[sign]);
                    break;
                default:
                    damaged.erase(at, 1 + sign);
            }
        }
        const Outcome outcome = apply(damaged);
        failed += outcome.ok ? 0 : 1;
        if (HasFailure()) return;
    }
    EXPECT_GT(failed, 300);
}

TEST_F(BrokenFile, RandomBytesAreOneGroupWithoutATable) {
    std::mt19937 random(815);
    for (int round = 0; round < 500; ++round) {
        std::string bytes(std::uniform_int_distribution<std::size_t>(1, 4000)(random), '\0');
        for (char& byte : bytes) byte = static_cast<char>(std::uniform_int_distribution(0, 255)(random));
        const Outcome outcome = apply(bytes);
        EXPECT_EQ(outcome.changes, Lines{});
        EXPECT_TRUE(outcome.log.empty() || outcome.log == Lines{header("")});
    }
}

}  // namespace
}  // namespace zmfb::test
