#include "dbf/memo.h"

#include <fmt/format.h>
#include <gtest/gtest.h>

#include <algorithm>

#include "tests/support/memo_builder.h"

namespace zmfb::dbf {
namespace {

using test::MemoBuilder;
using test::MemoFormat;

struct Kind {
    std::string name;
    MemoFormat format;
    std::string ending;
    Dialect dialect;
};

const Kind kinds[] = {
    {"dBASE III", MemoFormat::dbase3, ".dbt", Dialect::dbase3},
    {"dBASE IV", MemoFormat::dbase4, ".DBT", Dialect::dbase4},
    {"dBASE 7", MemoFormat::dbase4, ".dbt", Dialect::dbase7},
    {"blocks of dBASE IV in a file of dBASE III", MemoFormat::dbase4, ".dbt", Dialect::dbase3},
    {"FoxPro", MemoFormat::foxpro, ".FPT", Dialect::foxpro2},
    {"Visual FoxPro", MemoFormat::foxpro, ".fpt", Dialect::visual_foxpro},
    {"FoxPro's memos beside a table of dBASE III", MemoFormat::foxpro, ".fpt", Dialect::dbase3},
    {"SIx", MemoFormat::six, ".smt", Dialect::six},
};

MemoFile open(const std::string& bytes, const Kind& kind) {
    Header header;
    header.dialect = kind.dialect;
    return {in_memory(bytes), kind.ending, header};
}

TEST(DbfMemo, OfEveryLengthComesBackWhole) {
    for (const Kind& kind : kinds) {
        SCOPED_TRACE(kind.name);
        MemoBuilder builder(kind.format);
        std::vector<std::pair<std::uint32_t, std::string>> memos;
        for (const std::size_t length : {0, 1, 503, 504, 505, 511, 512, 513, 8191, 8192, 100000}) {
            const std::string memo(length, static_cast<char>('a' + length % 26));
            memos.emplace_back(builder.add(memo), memo);
        }
        const MemoFile file = open(builder.bytes(), kind);
        for (const auto& [block, memo] : memos) {
            const Memo found = file.read(block);
            EXPECT_EQ(found.problem, "");
            EXPECT_EQ(found.bytes, memo) << memo.size();
        }
    }
}

TEST(DbfMemo, BlocksHaveTheLengthThatTheHeaderSays) {
    for (const Kind& kind : kinds) {
        if (kind.dialect == Dialect::dbase3 && kind.format != MemoFormat::foxpro) continue;
        for (const std::uint32_t size : {64U, 1024U}) {
            MemoBuilder builder(kind.format, size);
            builder.add("first");
            const auto second = builder.add("second");
            EXPECT_EQ(open(builder.bytes(), kind).read(second).bytes, "second") << kind.name << size;
        }
    }
}

TEST(DbfMemo, FoxProsBlocksOfNoLengthAreOfOneByte) {
    MemoBuilder builder(MemoFormat::foxpro, 1);
    std::string bytes = builder.bytes() + std::string("\0\0\0\1\0\0\0\4text", 12);
    bytes.replace(6, 2, std::string(2, '\0'));
    EXPECT_EQ(open(bytes, kinds[5]).read(512).bytes, "text");
}

TEST(DbfMemo, BytesMayBeAnyButInDbase3) {
    const std::string any("\x1A\x00\xFF\x1F ", 5);
    for (const Kind& kind : kinds) {
        if (kind.format == MemoFormat::dbase3) continue;
        MemoBuilder builder(kind.format);
        const auto block = builder.add(any);
        EXPECT_EQ(open(builder.bytes(), kind).read(block).bytes, any) << kind.name;
    }
}

TEST(DbfMemo, ThatIsNotThereIsAProblemAndNeverLongerThanTheFile) {
    for (const Kind& kind : kinds) {
        SCOPED_TRACE(kind.name);
        MemoBuilder builder(kind.format);
        const auto block = builder.add(std::string(1000, 'x'));
        const MemoFile whole = open(builder.bytes(), kind);
        EXPECT_EQ(whole.read(999).problem, "block 999 is behind the end of the memo file");
        EXPECT_EQ(whole.read(0xFFFFFFFF).problem, "block 4294967295 is behind the end of the memo file");
        const Memo cut = open(builder.bytes().substr(0, 600), kind).read(block);
        EXPECT_EQ(cut.problem, kind.format == MemoFormat::dbase3
                                   ? "the memo file ends before the memo does"
                                   : "a memo of 1000 bytes goes beyond the end of the memo file");
        EXPECT_EQ(cut.bytes, "");
    }
}

TEST(DbfMemo, OneOfDbase3ThatEndsWithTheFileWithoutItsMarkIsCutOff) {
    for (const std::size_t length : {11, 512, 8192}) {
        MemoBuilder builder(MemoFormat::dbase3);
        const auto block = builder.add_raw(std::string(length, 'x'));
        const Memo cut = open(builder.bytes(), kinds[0]).read(block);
        EXPECT_EQ(cut.problem, "the memo file ends before the memo does") << length;
        EXPECT_EQ(cut.bytes, "") << length;
    }
}

TEST(DbfMemo, ABlockWithinTheHeaderIsNone) {
    for (const Kind& kind : kinds) {
        SCOPED_TRACE(kind.name);
        MemoBuilder builder(kind.format);
        builder.add("a text");
        EXPECT_EQ(open(builder.bytes(), kind).read(0).problem,
                  "block 0 is within the header of the memo file");
    }
    MemoBuilder builder(MemoFormat::foxpro, 64);
    builder.add("a text");
    EXPECT_EQ(open(builder.bytes(), kinds[4]).read(7).problem,
              "block 7 is within the header of the memo file");
    EXPECT_EQ(open(builder.bytes(), kinds[4]).read(8).bytes, "a text");
}

TEST(DbfMemo, ABlockOfDbase4WithoutItsMarkOrShorterThanItsHeaderIsNone) {
    for (const std::string& bytes :
         {std::string("\xFF\xFF\x08\x00\x07\x00\x00\x00", 8), std::string("a text\x1A, no block")}) {
        MemoBuilder builder(MemoFormat::dbase4);
        const auto block = builder.add_raw(bytes);
        EXPECT_EQ(open(builder.bytes(), kinds[1]).read(block).problem, "block 1 is no memo");
    }
}

TEST(DbfMemo, AFileOfDbase3BesideATableOfDbase4IsReadAsOne) {
    MemoBuilder builder(MemoFormat::dbase3);
    const auto block = builder.add("a text");
    EXPECT_EQ(open(builder.bytes(), kinds[1]).read(block).bytes, "a text");
}

// Three gigabytes of which most are a hole; counts what is read of them.
class Sparse final : public Source {
  public:
    explicit Sparse(std::string beginning, std::uint64_t& read_so_far)
        : beginning_(std::move(beginning)), read_(read_so_far) {}
    [[nodiscard]] std::uint64_t size() const override { return std::uint64_t{3} << 30; }
    std::size_t read(std::uint64_t position, std::span<char> bytes) const override {
        std::ranges::fill(bytes, '\0');
        if (position < beginning_.size())
            beginning_.copy(bytes.data(), bytes.size(), static_cast<std::size_t>(position));
        read_ += bytes.size();
        return bytes.size();
    }

  private:
    std::string beginning_;
    std::uint64_t& read_;
};

TEST(DbfMemo, ALengthOfGigabytesInAFileOfHolesIsTooLongAndNotRead) {
    for (const Kind& kind : kinds) {
        if (kind.format == MemoFormat::dbase3) continue;
        SCOPED_TRACE(kind.name);
        for (const bool fits : {true, false}) {
            MemoBuilder builder(kind.format);
            const auto block = builder.add("x");
            std::string bytes = builder.bytes();
            const bool low_first = kind.format != MemoFormat::foxpro;
            bytes.replace(512 + 4, 4,
                          low_first ? std::string(3, '\0') + (fits ? "\x80" : "\xFF")
                                    : (fits ? "\x80" : "\xFF") + std::string(3, '\0'));
            std::uint64_t read = 0;
            Header header;
            header.dialect = kind.dialect;
            const MemoFile file(std::make_unique<Sparse>(bytes, read), kind.ending, header);
            const std::uint64_t length =
                (fits ? 0x80000000U : 0xFF000000U) - (kind.format == MemoFormat::dbase4 ? 8 : 0);
            EXPECT_EQ(
                file.read(block).problem,
                fits ? fmt::format("a memo of {} bytes is longer than the 67108864 that are read", length)
                     : fmt::format("a memo of {} bytes goes beyond the end of the memo file", length));
            EXPECT_LT(read, 1000U);
        }
    }
}

TEST(DbfMemo, ATextOfDbase3WithoutAnEndIsLookedThroughOnceHoweverManyBeginInIt) {
    std::uint64_t read = 0;
    const MemoFile file(std::make_unique<Sparse>(MemoBuilder(MemoFormat::dbase3).bytes(), read), ".dbt",
                        Header());
    for (std::uint32_t block = 1; block <= 10000; ++block) {
        const Memo memo = file.read(block);
        ASSERT_EQ(memo.problem, "the memo has no end in the 67108864 bytes that are read");
        ASSERT_TRUE(memo.bytes.empty());
    }
    EXPECT_LT(read, 4 * MemoFile::longest);
}

TEST(DbfMemo, OneOfDbase3AsLongAsMayBeComesBackWholeAndALongerOneNot) {
    MemoBuilder builder(MemoFormat::dbase3);
    const std::string longest(MemoFile::longest, 'x');
    const auto fits = builder.add(longest);
    const auto too_long = builder.add(longest + std::string(16 * 512, 'y'));
    const auto behind = builder.add("z");
    const MemoFile file = open(builder.bytes(), kinds[0]);
    EXPECT_TRUE(file.read(fits).bytes == longest);
    EXPECT_NE(file.read(too_long).problem, "");
    EXPECT_EQ(file.read(behind).bytes, "z");
    EXPECT_TRUE(file.read(fits).bytes == longest);
}

TEST(DbfMemo, ABlockThatIsCutOffInItsHeaderIsAProblem) {
    MemoBuilder builder(MemoFormat::foxpro);
    const auto block = builder.add_raw(std::string("\0\0\0\1", 4));
    EXPECT_EQ(open(builder.bytes(), kinds[4]).read(block).problem, "block 1 is cut off");
}

TEST(DbfMemo, AFileShorterThanItsHeaderIsRefused) {
    for (const Kind& kind : kinds) EXPECT_THROW(open("short", kind), Refused) << kind.name;
}

}  // namespace
}  // namespace zmfb::dbf
