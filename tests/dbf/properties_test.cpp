// What holds of every DBF file that a program writes soundly.
#include <rapidcheck.h>
#include <rapidcheck/gtest.h>

#include <bit>

#include "dbf/memo.h"
#include "dbf/records.h"
#include "dbf/value.h"
#include "shown.h"
#include "tests/support/dbf_builder.h"
#include "tests/support/memo_builder.h"

namespace zmfb::dbf_test {
namespace {

using test::DbfBuilder;
using test::high_first;
using test::low_first;

// A field of a table and a value of it: its bytes, and how it is shown.
struct Cell {
    char type;
    std::string bytes;
    std::string value;
};

std::string text_of(std::size_t length) {
    std::string text = *rc::gen::container<std::string>(length, rc::gen::inRange<char>(0x21, 0x7F));
    return text.substr(0, *rc::gen::inRange<std::size_t>(0, length + 1));
}

Cell text_cell() {
    const std::size_t length = *rc::gen::inRange<std::size_t>(1, 600);
    const std::string text = text_of(length);
    return {'C', text + std::string(length - text.size(), ' '), fmt::format("\"{}\"", text)};
}

Cell number_cell() {
    const std::string digits = std::to_string(*rc::gen::arbitrary<std::int64_t>());
    const std::string blanks(*rc::gen::inRange<std::size_t>(0, 5), ' ');
    return {*rc::gen::element('N', 'F'), blanks + digits, digits};
}

Cell date_cell() {
    const std::string text = fmt::format("{:04}{:02}{:02}", *rc::gen::inRange(1, 10000),
                                         *rc::gen::inRange(1, 13), *rc::gen::inRange(1, 29));
    return {'D', text, text.substr(0, 4) + "-" + text.substr(4, 2) + "-" + text.substr(6)};
}

Cell logical_cell() {
    const bool yes = *rc::gen::arbitrary<bool>();
    return {'L', yes ? "T" : "F", yes ? "true" : "false"};
}

Cell integer_cell(bool dbase7) {
    const auto number = *rc::gen::arbitrary<std::int32_t>();
    const auto bits = static_cast<std::uint32_t>(number);
    return {'I', dbase7 ? high_first(bits ^ 0x80000000U, 4) : low_first(bits, 4), std::to_string(number)};
}

Cell real_cell(bool dbase7) {
    const double real = *rc::gen::arbitrary<std::int32_t>() / 8.0;
    const auto bits = std::bit_cast<std::uint64_t>(real);
    const std::uint64_t sign = std::uint64_t{1} << 63;
    const std::uint64_t turned = (bits & sign) != 0 ? ~bits : bits ^ sign;
    return {dbase7 ? 'O' : 'B', dbase7 ? high_first(turned, 8) : low_first(bits, 8), fmt::format("{}", real)};
}

Cell amount_cell() {
    const auto amount = *rc::gen::arbitrary<std::int64_t>();
    return {'Y', low_first(static_cast<std::uint64_t>(amount), 8), fmt::format("{}/10000", amount)};
}

Cell cell_of(int first_byte) {
    const bool dbase7 = first_byte == 4;
    switch (*rc::gen::inRange(0, first_byte == 3 || first_byte == 2 ? 4 : dbase7 ? 6 : 7)) {
        case 0:
            return text_cell();
        case 1:
            return number_cell();
        case 2:
            return date_cell();
        case 3:
            return logical_cell();
        case 4:
            return integer_cell(dbase7);
        case 5:
            return real_cell(dbase7);
        default:
            return amount_cell();
    }
}

RC_GTEST_PROP(DbfProperties, WhatIsWrittenIsReadWithoutANote, ()) {
    const int first_byte = *rc::gen::element(0x02, 0x03, 0x04, 0x30, 0x31, 0x32, 0x8B, 0xF5);
    const auto count = *rc::gen::inRange<std::size_t>(1, 20);
    std::vector<Cell> cells;
    while (cells.size() < count)
        cells.push_back(cell_of(first_byte == 0x8B || first_byte == 0xF5 ? 3 : first_byte));
    DbfBuilder builder;
    std::string record = *rc::gen::element<std::string>(" ", "*");
    for (const Cell& cell : cells) {
        // dBASE II and 7 have no long texts.
        RC_PRE(cell.bytes.size() < 256 || (first_byte != 2 && first_byte != 4));
        builder.field("F" + std::to_string(record.size()), cell.type, static_cast<int>(cell.bytes.size()));
        record += cell.bytes;
    }
    const auto records = *rc::gen::inRange(0, 5);
    for (int i = 0; i < records; ++i) builder.raw_record(record);
    const auto file = dbf::in_memory(builder.type(first_byte).bytes());
    const dbf::Header header = dbf::read_header(*file);
    RC_ASSERT(header.notes.empty());
    RC_ASSERT(header.records == static_cast<std::uint64_t>(records));
    RC_ASSERT(header.fields.size() == cells.size());
    for (dbf::Records each(*file, header); each.next();) {
        RC_ASSERT(each.deleted() == (record[0] == '*'));
        for (std::size_t i = 0; i < cells.size(); ++i)
            RC_ASSERT(shown(dbf::read_value(header, header.fields[i], each.bytes())) == cells[i].value);
    }
}

RC_GTEST_PROP(DbfProperties, AMemoThatIsWrittenIsRead, (const std::vector<std::string>& memos)) {
    const auto format =
        *rc::gen::element(test::MemoFormat::dbase4, test::MemoFormat::foxpro, test::MemoFormat::six);
    test::MemoBuilder builder(format, *rc::gen::element(64U, 512U, 1024U));
    std::vector<std::uint32_t> blocks;
    for (const std::string& memo : memos) blocks.push_back(builder.add(memo));
    dbf::Header header;
    header.dialect = dbf::Dialect::dbase4;
    const dbf::MemoFile file(dbf::in_memory(builder.bytes()),
                             format == test::MemoFormat::dbase4   ? ".dbt"
                             : format == test::MemoFormat::foxpro ? ".fpt"
                                                                  : ".smt",
                             header);
    for (std::size_t i = 0; i < memos.size(); ++i) {
        RC_ASSERT(file.read(blocks[i]).problem.empty());
        RC_ASSERT(file.read(blocks[i]).bytes == memos[i]);
    }
}

RC_GTEST_PROP(DbfProperties, AFileCutAnywhereIsReadToWhereItIsWholeOrRefused, ()) {
    DbfBuilder builder = DbfBuilder().field("A", 'C', 5).field("B", 'N', 4);
    for (int i = 0; i < 3; ++i) builder.record({"abc", "12"});
    const std::string whole = builder.bytes();
    const auto size = *rc::gen::inRange<std::size_t>(0, whole.size());
    try {
        const dbf::Header header = dbf::read_header(*dbf::in_memory(whole.substr(0, size)));
        RC_ASSERT(header.start == 97U);
        RC_ASSERT(header.records == (size - 97) / 10);
        RC_ASSERT(header.cut_off == (header.records == 3 ? 0 : (size - 97) % 10));
    } catch (const dbf::Refused& refused) {
        RC_ASSERT(size < 97U);
        RC_ASSERT(!refused.reasons().empty());
    }
}

}  // namespace
}  // namespace zmfb::dbf_test
