#include "dbf/memo.h"

#include <gtest/gtest.h>

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
