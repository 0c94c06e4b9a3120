#include "transfer/dbf_header.h"

#include <gtest/gtest.h>

#include "tests/support/dbf_builder.h"

namespace zmfb::transfer {
namespace {

using test::DbfBuilder;

DbfHeader header_of(const DbfBuilder& file) { return read_dbf_header(file.bytes()).value(); }

std::string descriptors_of(const DbfBuilder& file) { return file.bytes().substr(32); }

std::vector<dbf::Field> fields_of(const DbfBuilder& file) {
    return read_dbf_fields(header_of(file), descriptors_of(file)).value();
}

DbfBuilder people() {
    return DbfBuilder().field("NAME", 'C', 30).field("PRICE", 'N', 10, 2).field("BORN", 'D', 8);
}

TEST(DbfHeader, ReadsSizesFromTheFirstSixteenBytes) {
    const DbfHeader header = header_of(people().record_count(0x01020304));
    EXPECT_EQ(header.type, 3);
    EXPECT_EQ(header.records, 0x01020304);
    EXPECT_EQ(header.start, 32 + 3 * 32 + 1);
    EXPECT_EQ(header.record_length, 1 + 30 + 10 + 8);
    EXPECT_EQ(header.fields, 3);
    EXPECT_EQ(header.file_size(), header.start + header.records * header.record_length);
}

TEST(DbfHeader, FewerThanSixteenBytesAreNoHeader) {
    const std::string bytes = people().bytes();
    for (std::size_t size = 0; size < 16; ++size)
        EXPECT_FALSE(read_dbf_header(bytes.substr(0, size))) << size;
    EXPECT_TRUE(read_dbf_header(bytes.substr(0, 16)));
}

TEST(DbfHeader, RecordCountIsUnsigned) {
    EXPECT_EQ(header_of(people().record_count(0xFFFFFFFF)).records, 4294967295);
}

TEST(DbfHeader, RecordLengthWithTheHighBitIsCorrectedBy65535) {
    struct Case {
        int announced;
        int read;
    };
    for (const Case& c :
         {Case{0, 0}, {1, 1}, {32767, 32767}, {32768, 32767}, {40000, 39999}, {65535, 65534}}) {
        const DbfHeader header = header_of(people().record_length(c.announced));
        EXPECT_EQ(header.record_length, c.read);
        EXPECT_EQ(header.announced_record_length, c.announced);
    }
}

TEST(DbfHeader, NumberOfFieldsIsTheWholePartOfTheHeaderLength) {
    struct Case {
        int length;
        int fields;
    };
    for (const Case& c : {Case{0, -1},
                          {1, -1},
                          {2, 0},
                          {33, 0},
                          {64, 0},
                          {65, 1},
                          {66, 1},
                          {96, 1},
                          {97, 2},
                          {65535, 2046}}) {
        EXPECT_EQ(header_of(people().header_length(c.length)).fields, c.fields) << c.length;
    }
    EXPECT_EQ(header_of(people().header_length(0)).descriptor_bytes(), 0U);
    EXPECT_EQ(header_of(people().header_length(33)).descriptor_bytes(), 1U);
    EXPECT_EQ(header_of(people().header_length(97)).descriptor_bytes(), 65U);
}

TEST(DbfFields, AreReadInOrder) {
    const std::vector<dbf::Field> fields = fields_of(people());
    ASSERT_EQ(fields.size(), 3U);
    EXPECT_EQ(fields[0].name, std::string("NAME\0\0\0\0\0\0", 10));
    EXPECT_EQ(fields[0].type, 'C');
    EXPECT_EQ(fields[0].length, 30U);
    EXPECT_EQ(fields[0].decimals, 0);
    EXPECT_EQ(fields[1].type, 'N');
    EXPECT_EQ(fields[1].length, 10U);
    EXPECT_EQ(fields[1].decimals, 2);
    EXPECT_EQ(fields[2].type, 'D');
}

TEST(DbfFields, TypeLetterIsUpperCasedAndTheEleventhNameByteIsNotRead) {
    const std::vector<dbf::Field> fields = fields_of(DbfBuilder().field("ELEVENBYTES", 'n', 255, 17));
    EXPECT_EQ(fields[0].name, "ELEVENBYTE");
    EXPECT_EQ(fields[0].type, 'N');
    EXPECT_EQ(fields[0].length, 255U);
    EXPECT_EQ(fields[0].decimals, 17);
}

TEST(DbfFields, CharacterFieldWithDecimalsIsALongOne) {
    const std::vector<dbf::Field> fields = fields_of(
        DbfBuilder().field("A", 'C', 300).field("B", 'c', 512).field("C", 'C', 65535).field("D", 'L', 1, 3));
    EXPECT_EQ(fields[0].length, 300U);
    EXPECT_EQ(fields[0].decimals, 0);
    EXPECT_EQ(fields[1].length, 512U);
    EXPECT_EQ(fields[2].length, 65535U);
    EXPECT_EQ(fields[3].decimals, 3);
}

TEST(DbfFields, DescriptorThatIsNotWholeGivesNoFields) {
    const DbfBuilder file = people();
    const std::string bytes = descriptors_of(file);
    for (std::size_t size = 0; size < 96; ++size) {
        EXPECT_FALSE(read_dbf_fields(header_of(file), bytes.substr(0, size))) << size;
    }
    EXPECT_TRUE(read_dbf_fields(header_of(file), bytes.substr(0, 96)));
}

TEST(DbfFields, HeaderTooShortForADescriptorHasNone) {
    for (const int length : {0, 1, 32, 33, 64}) {
        EXPECT_TRUE(read_dbf_fields(header_of(people().header_length(length)), "").value().empty()) << length;
    }
}

TEST(DbfTerminator, IsLookedForBehindTheLastDescriptor) {
    const DbfBuilder good = people();
    EXPECT_TRUE(has_dbf_terminator(header_of(good), descriptors_of(good)));
    EXPECT_FALSE(has_dbf_terminator(header_of(good), descriptors_of(good).substr(0, 96)));
    const DbfBuilder bad = people().terminator('\0');
    EXPECT_FALSE(has_dbf_terminator(header_of(bad), descriptors_of(bad)));
    const DbfBuilder none = people().header_length(0);
    EXPECT_FALSE(has_dbf_terminator(header_of(none), descriptors_of(none)));
}

TEST(DbfRecord, HoldsItsFieldsByTheAnnouncedLength) {
    const auto holds = [](const DbfBuilder& file) {
        return record_holds_fields(header_of(file), fields_of(file));
    };
    EXPECT_TRUE(holds(people()));
    EXPECT_TRUE(holds(people().record_length(100)));
    EXPECT_FALSE(holds(people().record_length(48)));
    EXPECT_FALSE(holds(people().record_length(0)));
    EXPECT_TRUE(holds(DbfBuilder().field("BIG", 'C', 39999))) << "of 40000 bytes, read as 39999";
    EXPECT_TRUE(holds(DbfBuilder().record_length(0))) << "no fields, nothing to hold";
}

}  // namespace
}  // namespace zmfb::transfer
