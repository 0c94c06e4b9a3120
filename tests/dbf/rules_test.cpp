// Where the driver of the runtime and bringdbf, whose behaviour is fixed, read a DBF file otherwise than the
// reader does: each row of the tables is one such rule.
#include <fmt/format.h>
#include <gtest/gtest.h>

#include "dbf/records.h"
#include "dbf/value.h"
#include "host/dbf_format.h"
#include "shown.h"
#include "tests/support/dbf_builder.h"
#include "tests/support/show.h"
#include "transfer/dbf_header.h"
#include "transfer/record_conversion.h"

namespace zmfb::dbf_test {
namespace {

using test::DbfBuilder;

// "NAME C 10, PRICE N 8.2; 2 of 27 from 97": the fields, and how many records of which size begin where.
template <class Fields>
std::string summary(const Fields& fields, std::uint64_t records, std::uint64_t size, std::uint64_t start) {
    std::string all;
    for (const auto& field : fields) {
        all +=
            fmt::format("{}{} {} {}", all.empty() ? "" : ", ", field.name.c_str(), field.type, field.length);
        if (field.decimals > 0) all += fmt::format(".{}", field.decimals);
    }
    return fmt::format("{}; {} of {} from {}", all, records, size, start);
}

std::string by_driver(const std::string& bytes) {
    host::DbfLayout layout;
    const std::string wrong = host::read_dbf_header(bytes, static_cast<std::int64_t>(bytes.size()), layout);
    if (!wrong.empty()) return wrong;
    return summary(layout.fields, layout.records, layout.record_size, layout.header_size);
}

// As the routine goes through the functions of its folder; a last record in part counts, blanks fill it up.
std::string by_bringdbf(const std::string& bytes) {
    const auto header = transfer::read_dbf_header(bytes.substr(0, transfer::dbf_header_bytes));
    if (header && header->type == transfer::dbf_with_memo) return "memo";
    if (!header || header->type != transfer::dbf_plain) return "no DBF";
    const auto fields = transfer::read_dbf_fields(
        *header, bytes.substr(dbf::prolog_size).substr(0, header->descriptor_bytes()));
    if (!fields || !transfer::record_holds_fields(*header, *fields)) return "no DBF";
    const auto size = static_cast<std::size_t>(header->record_length);
    const auto start = static_cast<std::size_t>(header->start);
    const std::size_t room = bytes.size() - std::min(start, bytes.size());
    const std::size_t held = room / size + (room % size > 1 ? 1 : 0);
    return summary(*fields, std::min(static_cast<std::size_t>(header->records), held), size, start);
}

std::string by_reader(const std::string& bytes) {
    try {
        const dbf::Header header = dbf::read_header(*dbf::in_memory(bytes));
        std::string all = summary(header.fields, header.records, header.record_size, header.start);
        if (header.cut_off > 0) all += ", cut off";
        return all;
    } catch (const dbf::Refused& refused) {
        return refused.what();
    }
}

struct HeaderRule {
    std::string rule;
    std::string file;
    std::string driver;
    std::string bringdbf;
    std::string reader;
};

DbfBuilder two() { return DbfBuilder().field("A", 'C', 4).field("B", 'N', 3, 1); }
DbfBuilder two_records() { return two().record({"aaaa", "1.1"}).record({"bbbb", "2.2"}); }

std::vector<HeaderRule> header_rules() {
    const std::string plain = "A C 4, B N 3.1; 2 of 8 from 97";
    const std::string damaged = "a damaged DBF header: ";
    std::string longer = two_records().header_length(97 + 32).bytes();
    longer.insert(97, std::string(10, '\0') + "C" + std::string(21, '\0'));
    return {
        {"a sound file is read alike", two_records().bytes(), plain, plain, plain},
        {"only the first byte 3 is taken", two_records().type(0x05).bytes(), "not a DBF file", "no DBF",
         plain},
        {"memo fields are named as the reason", two_records().type(0x83).bytes(),
         "a DBF file with memo fields", "memo", plain},
        {"bringdbf counts fields by the header's length, past the byte that ends them", longer,
         "A C 4, B N 3.1; 2 of 8 from 129", "A C 4, B N 3.1, \r C 0; 2 of 8 from 129",
         "A C 4, B N 3.1; 2 of 8 from 129"},
        {"bringdbf takes the last field for the end when nothing ends the fields",
         two_records().no_terminator().bytes(), "A C 4, B N 3.1; 2 of 8 from 96", "A C 4; 2 of 8 from 96",
         "A C 4, B N 3.1; 2 of 8 from 96"},
        {"bringdbf reads ten letters of a name; the driver puts them in upper case, bringdbf later",
         DbfBuilder().field("elevenbytes", 'C', 1).bytes(), "ELEVENBYTES C 1; 0 of 2 from 65",
         "elevenbyte C 1; 0 of 2 from 65", "elevenbytes C 1; 0 of 2 from 65"},
        {"the driver takes C, N, D and L; bringdbf takes any letter",
         DbfBuilder().field("A", 'F', 5, 2).bytes(), damaged + "field A: unknown type",
         "A F 5.2; 0 of 6 from 65", "A F 5.2; 0 of 6 from 65"},
        {"bringdbf takes types that there are none of", DbfBuilder().field("A", '!', 5).bytes(),
         damaged + "field A: unknown type", "A ! 5; 0 of 6 from 65",
         "has a field A of the unknown type \"!\""},
        {"the driver's dates have eight bytes", DbfBuilder().field("A", 'D', 10).bytes(),
         damaged + "field A: a date that is not 8 long", "A D 10; 0 of 11 from 65",
         "A D 10; 0 of 11 from 65"},
        {"the driver's fields have a length", DbfBuilder().field("A", 'C', 0).field("B", 'L', 1).bytes(),
         damaged + "field A: no length", "A C 0, B L 1; 0 of 2 from 97", "A C 0, B L 1; 0 of 2 from 97"},
        {"bringdbf counts one byte less of records of 32768 and more",
         DbfBuilder().field("A", 'C', 32767).record({"a"}).bytes(), "A C 32767; 1 of 32768 from 65",
         "A C 32767; 1 of 32767 from 65", "A C 32767; 1 of 32768 from 65"},
        {"records too short for the fields are refused by both, and fitted by the reader",
         two_records().record_length(7).bytes(), damaged + "the fields are longer than a record", "no DBF",
         plain},
        {"a header of an impossible length is refused by both, and fitted by the reader",
         two_records().header_length(0).bytes(), damaged + "its size cannot be", "; 2 of 8 from 0", plain},
        {"a last record in part is none to the driver, whole to bringdbf, cut off to the reader",
         two_records().no_end_mark().cut(97 + 8 + 5).bytes(), "A C 4, B N 3.1; 1 of 8 from 97", plain,
         "A C 4, B N 3.1; 1 of 8 from 97, cut off"},
        {"records that are counted and not there are none to all", two_records().record_count(9).bytes(),
         plain, plain, plain},
    };
}

TEST(DbfRules, OfHeaders) {
    for (const HeaderRule& one : header_rules()) {
        SCOPED_TRACE(one.rule);
        EXPECT_EQ(by_driver(one.file), one.driver);
        EXPECT_EQ(by_bringdbf(one.file), one.bringdbf);
        EXPECT_EQ(by_reader(one.file), one.reader);
    }
}

struct ValueRule {
    std::string rule;
    char type;
    std::string bytes;
    std::string driver;
    std::string bringdbf;
    std::string reader;
};

std::string zeros(std::size_t count) { return std::string(count, '\0'); }

std::vector<ValueRule> value_rules() {
    return {
        {"the reader's texts end before their blanks", 'C', "Ana  ", "\"Ana  \"", "Ana  ", "\"Ana\""},
        {"a number is read alike", 'N', " 1.50", "1.5", " 1.50", "1.50"},
        {"a blank number is 0, and blank to the reader", 'N', "     ", "0", "0    ", "blank"},
        {"zero bytes at its end are blanks", 'N', "12" + zeros(3), "12", "12   ", "12"},
        {"stars are 0 to the driver, and stay stars for the database to refuse", 'N', "*****", "0", "*****",
         "bad: stars: the number was too wide for its field"},
        {"the driver reads as far as there is a number", 'N', "1x   ", "1", "1x   ", "bad: not a number"},
        {"a date is read alike", 'D', "20070301", "{^2007-03-01}", "2007-03-01", "2007-03-01"},
        {"a blank date", 'D', "        ", "{^}", "0001-01-01", "blank"},
        {"a date that is none is no date to both, and bad to the reader", 'D', "20070231", "{^}",
         "0001-01-01", "bad: not a date"},
        {"a logical is read alike", 'L', "T", ".T.", "T", "true"},
        {"a logical that is not said is .F. to the driver", 'L', "?", ".F.", "?", "blank"},
        {"so is one that is none", 'L', "x", ".F.", "x", "bad: not a logical"},
    };
}

std::string value_by_driver(const ValueRule& one) {
    const host::Field field{"A", one.type, static_cast<int>(one.bytes.size()), 0};
    return test::show(host::decode_field(field, one.bytes));
}

std::string value_by_bringdbf(const ValueRule& one) {
    dbf::Field field;
    field.type = one.type;
    field.length = one.bytes.size();
    const std::vector<dbf::Field> fields{field};
    const transfer::RecordConversion conversion(fields, field.length + 1);
    std::string made(conversion.dat_length(), '#');
    conversion.convert((" " + one.bytes).data(), 1, made.data());
    return made;
}

std::string value_by_reader(const ValueRule& one) {
    const auto file = dbf::in_memory(DbfBuilder()
                                         .field("A", one.type, static_cast<int>(one.bytes.size()))
                                         .raw_record(" " + one.bytes)
                                         .bytes());
    const dbf::Header header = dbf::read_header(*file);
    dbf::Records records(*file, header);
    records.next();
    return shown(dbf::read_value(header, header.fields[0], records.bytes()));
}

TEST(DbfRules, OfValues) {
    for (const ValueRule& one : value_rules()) {
        SCOPED_TRACE(one.rule);
        EXPECT_EQ(value_by_driver(one), one.driver);
        EXPECT_EQ(value_by_bringdbf(one), one.bringdbf);
        EXPECT_EQ(value_by_reader(one), one.reader);
    }
}

}  // namespace
}  // namespace zmfb::dbf_test
