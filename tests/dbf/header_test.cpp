#include "dbf/header.h"

#include <gtest/gtest.h>

#include "tests/support/dbf_builder.h"

namespace zmfb::dbf {
namespace {

using test::DbfBuilder;

Header header_of(const std::string& bytes) { return read_header(*in_memory(bytes)); }
Header header_of(const DbfBuilder& file) { return header_of(file.bytes()); }

std::vector<std::string> refusals_of(const std::string& bytes) {
    try {
        header_of(bytes);
    } catch (const Refused& refused) {
        return refused.reasons();
    }
    return {};
}

using Lines = std::vector<std::string>;

DbfBuilder people() {
    return DbfBuilder()
        .field("NAME", 'C', 10)
        .field("PRICE", 'N', 8, 2)
        .field("BORN", 'D', 8)
        .record({"Ana", "1.50", "20070301"})
        .record({"Bob", "2", "20070302"}, '*');
}

TEST(DbfHeader, ASoundOneIsReadAsItStands) {
    const Header header = header_of(people().language(3));
    EXPECT_EQ(header.first_byte, 3);
    EXPECT_EQ(header.language, 3);
    EXPECT_EQ(header.start, 32U + 3 * 32 + 1);
    EXPECT_EQ(header.record_size, 27U);
    EXPECT_EQ(header.counted, 2U);
    EXPECT_EQ(header.records, 2U);
    EXPECT_EQ(header.behind, 0U);
    EXPECT_EQ(header.cut_off, 0U);
    EXPECT_EQ(header.notes, Lines{});
    ASSERT_EQ(header.fields.size(), 3U);
    EXPECT_EQ(header.fields[1].name, "PRICE");
    EXPECT_EQ(header.fields[1].type, 'N');
    EXPECT_EQ(header.fields[1].length, 8U);
    EXPECT_EQ(header.fields[1].decimals, 2);
    EXPECT_EQ(header.fields[1].offset, 11U);
    EXPECT_EQ(header.fields[2].offset, 19U);
}

TEST(DbfHeader, EveryFirstByteHasItsDialect) {
    struct Case {
        int first_byte;
        Dialect dialect;
    };
    for (const Case& c : {Case{0x02, Dialect::dbase2},
                          {0x03, Dialect::dbase3},
                          {0x04, Dialect::dbase7},
                          {0x05, Dialect::dbase3},
                          {0x30, Dialect::visual_foxpro},
                          {0x31, Dialect::visual_foxpro},
                          {0x32, Dialect::visual_foxpro},
                          {0x43, Dialect::dbase4},
                          {0x63, Dialect::dbase4},
                          {0x7B, Dialect::dbase4},
                          {0x83, Dialect::dbase3},
                          {0x8B, Dialect::dbase4},
                          {0x8C, Dialect::dbase7},
                          {0xCB, Dialect::dbase4},
                          {0xE5, Dialect::six},
                          {0xF5, Dialect::foxpro2},
                          {0xFB, Dialect::dbase3}}) {
        const Header header = header_of(people().type(c.first_byte));
        EXPECT_EQ(header.dialect, c.dialect) << c.first_byte;
        EXPECT_EQ(header.records, 2U) << c.first_byte;
        EXPECT_EQ(header.notes, Lines{}) << c.first_byte;
        ASSERT_EQ(header.fields.size(), 3U) << c.first_byte;
        EXPECT_EQ(header.fields[2].name, "BORN") << c.first_byte;
        EXPECT_EQ(header.fields[2].offset, 19U) << c.first_byte;
    }
}

TEST(DbfHeader, NamesOfDbase7HaveUpTo32Letters) {
    const std::string name = "A_NAME_OF_EXACTLY_THIRTY_TWO_LET";
    EXPECT_EQ(header_of(DbfBuilder().type(4).field(name, 'C', 5).record({"x"})).fields[0].name, name);
}

TEST(DbfHeader, ANameEndsAtItsZeroByteWhateverStandsBehind) {
    const DbfBuilder file = DbfBuilder().field(std::string("ID\0RUBBISH", 10), 'C', 5).record({"x"});
    EXPECT_EQ(header_of(file).fields[0].name, "ID");
}

TEST(DbfHeader, ElevenLettersOfANameAreRead) {
    EXPECT_EQ(header_of(DbfBuilder().field("ELEVENBYTES", 'C', 5).record({"x"})).fields[0].name,
              "ELEVENBYTES");
}

TEST(DbfHeader, ALongTextHasTheHighByteOfItsLengthInItsDecimals) {
    const Header header = header_of(DbfBuilder().field("NOTE", 'C', 300).record({"x"}));
    EXPECT_EQ(header.fields[0].length, 300U);
    EXPECT_EQ(header.fields[0].decimals, 0);
    EXPECT_EQ(header.notes, Lines{});
}

TEST(DbfHeader, EveryTypeHasItsKind) {
    struct Case {
        char type;
        int length;
        int flags;
        Kind kind;
    };
    for (const Case& c :
         {Case{'C', 5, 0, Kind::text},    {'c', 5, 0, Kind::text},       {'V', 5, 0, Kind::text},
          {'Q', 5, 0, Kind::bytes},       {'N', 5, 0, Kind::number},     {'F', 5, 0, Kind::number},
          {'D', 8, 0, Kind::date},        {'D', 10, 0, Kind::date},      {'L', 1, 0, Kind::logical},
          {'M', 10, 0, Kind::memo_text},  {'M', 4, 0, Kind::memo_text},  {'M', 4, 4, Kind::memo_bytes},
          {'G', 10, 0, Kind::memo_bytes}, {'P', 4, 0, Kind::memo_bytes}, {'W', 4, 0, Kind::memo_bytes},
          {'I', 4, 0, Kind::integer},     {'+', 4, 0, Kind::integer},    {'B', 8, 0, Kind::real},
          {'B', 10, 0, Kind::memo_bytes}, {'O', 8, 0, Kind::real},       {'Y', 8, 0, Kind::currency},
          {'T', 8, 0, Kind::timestamp},   {'@', 8, 0, Kind::timestamp}}) {
        const Header header = header_of(DbfBuilder().type(0x30).field("F", c.type, c.length, 0, c.flags));
        EXPECT_EQ(header.fields[0].kind, c.kind) << c.type << c.length;
        EXPECT_EQ(header.has_memo(), c.kind == Kind::memo_text || c.kind == Kind::memo_bytes) << c.type;
    }
}

TEST(DbfHeader, NullFlagsAreNoFieldAndTheirBitsAreInTheOrderOfTheFields) {
    const Header header = header_of(DbfBuilder()
                                        .type(0x32)
                                        .field("A", 'C', 5)
                                        .field("B", 'V', 9, 0, 2)
                                        .field("C", 'N', 5, 0, 2)
                                        .field("D", 'Q', 9)
                                        .field("_NullFlags", '0', 1, 0, 5));
    ASSERT_EQ(header.fields.size(), 4U);
    EXPECT_FALSE(header.fields[0].null_bit);
    EXPECT_FALSE(header.fields[0].length_bit);
    EXPECT_EQ(header.fields[1].length_bit, 0);
    EXPECT_EQ(header.fields[1].null_bit, 1);
    EXPECT_EQ(header.fields[2].null_bit, 2);
    EXPECT_EQ(header.fields[3].length_bit, 3);
    EXPECT_EQ(header.null_flags, 1U + 5 + 9 + 5 + 9);
    EXPECT_EQ(header.null_flags_size, 1U);
}

// ---- Headers that lie

struct Lie {
    std::string name;
    DbfBuilder file;
    std::uint64_t start;
    std::size_t record_size;
    std::size_t fields;
    Lines notes;
};

DbfBuilder two() { return DbfBuilder().field("A", 'C', 4).field("B", 'N', 3); }
DbfBuilder two_records() { return two().record({"aaaa", "111"}).record({"bbbb", "222"}); }

std::vector<Lie> lies() {
    DbfBuilder decimals = DbfBuilder().field("A", 'C', 4 + 2 * 256).field("B", 'N', 3);
    decimals.record_length(8).raw_record(" aaaa111").raw_record("*bbbb222");
    return {
        {"nothing ends the fields",
         two_records().no_terminator(),
         96,
         8,
         2,
         {"nothing ends the fields in its header: 2 read"}},
        {"nothing ends the fields of Visual FoxPro",
         two_records().type(0x30).terminator('\0'),
         360,
         8,
         2,
         {"nothing ends the fields in its header: 2 read"}},
        {"a header of no length",
         two_records().header_length(0),
         97,
         8,
         2,
         {"its header says that records begin at 0: read from 97 on"}},
        {"a header that is said to be longer",
         two_records().header_length(98),
         97,
         8,
         2,
         {"its header says that records begin at 98: read from 97 on"}},
        {"a header that is said to end at the byte that ends the fields",
         two_records().header_length(96),
         97,
         8,
         2,
         {"its header says that records begin at 96: read from 97 on"}},
        {"a header that is said to be longer, in a file that is filled up",
         two_records().header_length(100).raw_record(std::string(100, '\x1A')).record_count(2),
         97,
         8,
         2,
         {"its header says that records begin at 100: read from 97 on"}},
        {"a header that is said to end before its fields do",
         two_records().header_length(65),
         97,
         8,
         2,
         {"its header says that records begin at 65: read from 97 on"}},
        {"records said to be shorter",
         two_records().record_length(7),
         97,
         8,
         2,
         {"its header says records of 7 bytes, its fields make 8: read as 8, which fits the file"}},
        {"records said to be longer",
         two_records().record_length(9),
         97,
         8,
         2,
         {"its header says records of 9 bytes, its fields make 8: read as 8, which fits the file"}},
        {"records of no length",
         two_records().record_length(0),
         97,
         8,
         2,
         {"its header says records of 0 bytes, its fields make 8: read as 8, which fits the file"}},
        {"records with bytes behind their fields",
         two().record_length(10).raw_record(" aaaa111xx").raw_record(" bbbb222xx"),
         97,
         10,
         2,
         {"its records have 10 bytes, its fields 8: the rest of each is not read"}},
        {"decimals of texts that mean nothing",
         decimals,
         97,
         8,
         2,
         {"decimals of text fields mean nothing: their lengths fit without them"}},
        {"more records counted than there are",
         two_records().record_count(5),
         97,
         8,
         2,
         {"its header counts 5 records, the file has 2"}},
        {"fewer records counted than there are",
         two_records().record_count(1),
         97,
         8,
         2,
         {"its header counts 1 record, the file has 1 more"}},
    };
}

TEST(DbfHeader, OneThatContradictsItselfIsReadAsItFitsTheFileAndSaysSo) {
    for (const Lie& lie : lies()) {
        SCOPED_TRACE(lie.name);
        const Header header = header_of(lie.file);
        EXPECT_EQ(header.start, lie.start);
        EXPECT_EQ(header.record_size, lie.record_size);
        EXPECT_EQ(header.fields.size(), lie.fields);
        EXPECT_EQ(header.notes, lie.notes);
        EXPECT_EQ(header.records + header.behind, 2U);
    }
}

TEST(DbfHeader, AFileThatEndsInsideARecordIsCutOff) {
    const std::string whole = two_records().bytes();
    for (std::size_t missing = 1; missing <= 7; ++missing) {
        const Header header = header_of(whole.substr(0, whole.size() - 1 - missing));
        EXPECT_EQ(header.records, 1U) << missing;
        EXPECT_EQ(header.cut_off, 8 - missing) << missing;
        EXPECT_EQ(header.notes,
                  Lines{"its header counts 2 records, the file has 1 and the beginning of another"})
            << missing;
    }
    EXPECT_EQ(header_of(whole.substr(0, whole.size() - 1)).cut_off, 0U) << "the last record is whole";
    EXPECT_EQ(header_of(two_records().record_count(3)).cut_off, 0U) << "only the end mark follows";
}

TEST(DbfHeader, RecordsWithoutADeletionMarkAreReadWhenTheSizesAgree) {
    const std::string zero(1, '\0');
    const DbfBuilder files[] = {
        two().raw_record("Xaaaa111").raw_record(zero + "bbbb222"),
        // A byte further on there would be marks.
        DbfBuilder()
            .field("A", 'N', 4)
            .field("B", 'C', 3)
            .raw_record(zero + "   1aaa")
            .raw_record(zero + "   2bbb"),
    };
    for (const DbfBuilder& file : files) {
        const Header header = header_of(file);
        EXPECT_EQ(header.record_size, 8U);
        EXPECT_EQ(header.start, 97U);
        EXPECT_EQ(header.records, 2U);
        EXPECT_EQ(header.notes, Lines{});
    }
}

// The first byte changed alone; the descriptions stay as dBASE III has them.
std::string with_first_byte(int byte) {
    std::string bytes = people().bytes();
    bytes[0] = static_cast<char>(byte);
    return bytes;
}

TEST(DbfHeader, DescriptionsOfDbase3AreReadWhateverTheFirstByteSays) {
    const struct {
        int first_byte;
        Dialect dialect;
        Lines notes;
    } cases[] = {
        {0x02, Dialect::dbase3, {}},
        {0x04, Dialect::dbase4, {}},
        {0x8C, Dialect::dbase4, {}},
        {0x00, Dialect::dbase3, {"no DBF file begins with the byte 00: read as one of dBASE III"}},
        {0x13, Dialect::dbase3, {"no DBF file begins with the byte 13: read as one of dBASE III"}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.first_byte);
        const Header header = header_of(with_first_byte(c.first_byte));
        EXPECT_EQ(header.dialect, c.dialect);
        EXPECT_EQ(header.notes, c.notes);
        EXPECT_EQ(header.records, 2U);
        ASSERT_EQ(header.fields.size(), 3U);
        EXPECT_EQ(header.fields[2].name, "BORN");
    }
}

TEST(DbfHeader, AFirstByteThatIsNoneIsRefusedUnlessAllElseAgrees) {
    const auto changed = [](std::size_t at, char byte) {
        std::string bytes = with_first_byte(0x13);
        bytes[at] = byte;
        return bytes;
    };
    const Lines refused{"is not a DBF file: none begins with the byte 13"};
    EXPECT_EQ(refusals_of(changed(10, 28)), refused) << "records of another size";
    EXPECT_EQ(refusals_of(changed(8, 0)), refused) << "a header of another size";
    EXPECT_EQ(refusals_of(changed(32 + 11, '?')), refused) << "a field of no type";
    EXPECT_EQ(refusals_of(changed(32 + 3 * 32, '\n')), refused) << "nothing ends the fields";
    EXPECT_EQ(refusals_of(with_first_byte(0x13).substr(0, 100)), refused) << "a part of the header";
}

TEST(DbfHeader, OneByteBehindTheEndOfTheDescriptionsAgreesWithThem) {
    std::string bytes = with_first_byte(0x13);
    const auto add_byte = [&] {
        bytes.insert(static_cast<unsigned char>(bytes[8]), 1, '\0');
        ++bytes[8];
    };
    add_byte();
    EXPECT_EQ(header_of(bytes).records, 2U);
    add_byte();
    EXPECT_EQ(refusals_of(bytes), Lines{"is not a DBF file: none begins with the byte 13"});
}

TEST(DbfHeader, AFieldWithoutALengthHasNoValuesAndIsSaid) {
    const Header header = header_of(DbfBuilder().field("A", 'C', 4).field("NONE", 'C', 0).record({"a", ""}));
    ASSERT_EQ(header.fields.size(), 2U);
    EXPECT_EQ(header.fields[1].length, 0U);
    EXPECT_EQ(header.notes, Lines{"its field NONE has no bytes: it is always blank"});
}

TEST(DbfHeader, RecordsOf32768BytesAndMoreHaveTheirLength) {
    const Header header = header_of(DbfBuilder().field("NOTE", 'C', 40000).record({"a"}).record({"b"}));
    EXPECT_EQ(header.record_size, 40001U);
    EXPECT_EQ(header.records, 2U);
    EXPECT_EQ(header.notes, Lines{});
}

// ---- Refusals

TEST(DbfHeader, WhatIsNoDbfFileIsRefusedWithTheReason) {
    struct Case {
        std::string name;
        std::string bytes;
        Lines reasons;
    };
    const Case cases[] = {
        {"nothing", "", {"is empty"}},
        {"a text", "NAME;PRICE\nAna;1.50\n", {"is not a DBF file: none begins with the byte 4E"}},
        {"a beginning", people().bytes().substr(0, 31), {"ends within its header"}},
        {"half a header", people().bytes().substr(0, 60), {"ends within its header"}},
        {"dBASE II, half", people().type(2).bytes().substr(0, 520), {"ends within its header"}},
        {"no fields", DbfBuilder().bytes(), {"has no fields"}},
        {"two faults at once",
         DbfBuilder().field("A", '?', 5).field("B", 'I', 5).field("C", '\x01', 5).bytes(),
         {"has a field A of the unknown type \"?\"", "has a field B of type I with 5 bytes",
          "has a field C of the unknown type 0x01"}},
        {"records that fit in no way",
         two().record_length(5).raw_record("Xaaaa111").raw_record("Xbbbb222").bytes(),
         {"has a header that does not fit the file: records of 5 bytes from 97 on, fields of 8 bytes"}},
    };
    for (const Case& c : cases) EXPECT_EQ(refusals_of(c.bytes), c.reasons) << c.name;
}

TEST(DbfHeader, RefusedTellsAllReasonsInOneText) {
    EXPECT_STREQ(Refused({"is one", "is two"}).what(), "is one; is two");
}

TEST(DbfHeader, EveryCutOfAFileIsReadOrRefused) {
    const std::string whole = people().bytes();
    for (std::size_t size = 0; size < whole.size(); ++size) {
        const std::string part = whole.substr(0, size);
        const Lines reasons = refusals_of(part);
        if (!reasons.empty()) continue;
        EXPECT_GE(size, 128U) << "the fields are whole";
        EXPECT_LE(header_of(part).records, 2U);
    }
}

}  // namespace
}  // namespace zmfb::dbf
