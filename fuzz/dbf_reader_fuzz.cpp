// The reader of DBF files of every dialect, and of their memo files.
//
// An input: which memo file it is and how long, the memo file, and the file.
#include <cmath>
#include <cstdlib>
#include <optional>

#include "dbf/code_page.h"
#include "dbf/memo.h"
#include "dbf/records.h"
#include "dbf/value.h"
#include "fuzz/fuzz.h"

namespace zmfb::fuzz {
namespace {

constexpr const char* endings[] = {".dbt", ".fpt", ".smt"};
constexpr std::uint64_t most_records_looked_at = 200;

std::optional<dbf::Header> header_of(const dbf::Source& file) {
    try {
        return dbf::read_header(file);
    } catch (const dbf::Refused& refused) {
        require(!refused.reasons().empty(), "a file is refused for a reason");
        for (const std::string& reason : refused.reasons()) require(!reason.empty(), "a reason is a text");
        return std::nullopt;
    }
}

std::optional<dbf::MemoFile> memos_of(const std::string& bytes, const std::string& ending,
                                      const dbf::Header& header) {
    try {
        return std::optional<dbf::MemoFile>(std::in_place, dbf::in_memory(bytes), ending, header);
    } catch (const dbf::Refused&) {
        return std::nullopt;
    }
}

void check_header(const dbf::Header& header, std::uint64_t size) {
    require(!header.fields.empty(), "a file that is read has fields");
    require(header.record_size > 0, "a record has its mark");
    std::size_t end = 1;
    for (const dbf::Field& field : header.fields) {
        require(field.offset >= end, "fields follow one another");
        end = field.offset + field.length;
    }
    require(end <= header.record_size, "a record holds its fields");
    const std::uint64_t records = header.records + header.behind;
    require(records == 0 || header.start + records * header.record_size <= size,
            "the file holds the records");
    require(header.records <= header.counted, "no more records than are counted");
    require(header.cut_off < header.record_size, "what is cut off is less than a record");
}

// What holds of a value by its type.
struct Check {
    const std::optional<dbf::MemoFile>& memos;
    std::size_t memo_size;

    void operator()(dbf::Blank) const {}
    void operator()(dbf::Null) const {}
    void operator()(dbf::Bad bad) const { require(!bad.reason.empty(), "a bad value has a reason"); }
    void operator()(dbf::Text text) const {
        dbf::ToUtf8 utf8("CP850");
        require(utf8.convert(text.bytes).has_value(), "every byte is a character of this set");
    }
    void operator()(dbf::Bytes) const {}
    void operator()(const dbf::Number& number) const {
        char* end = nullptr;
        std::strtod(number.text.c_str(), &end);
        require(end == number.text.c_str() + number.text.size(), "a number is one to the C library");
    }
    void operator()(dbf::Date date) const { require(date.ok(), "a date is a day"); }
    void operator()(bool) const {}
    void operator()(std::int32_t) const {}
    void operator()(dbf::Currency) const {}
    void operator()(double real) const { require(std::isfinite(real), "a real is a number"); }
    void operator()(dbf::Timestamp time) const {
        const dbf::Date day(std::chrono::floor<std::chrono::days>(time));
        require(int{day.year()} >= 1 && int{day.year()} <= 9999, "a time is in the years of the engine");
    }
    void operator()(dbf::MemoBlock memo) const {
        require(memo.block != 0, "block 0 is no memo");
        if (!memos) return;
        const dbf::Memo found = memos->read(memo.block);
        require(found.bytes.size() <= memo_size, "a memo is no longer than its file");
        require(found.problem.empty() || found.bytes.empty(), "a memo is there or it is not");
    }
};

void check_records(const dbf::Source& file, const dbf::Header& header, const Check& check) {
    std::uint64_t found = 0;
    for (dbf::Records records(file, header, true); records.next(); ++found) {
        require(records.number() == found + 1, "records are counted");
        require(records.bytes().size() == header.record_size, "records are of one length");
        if (found >= most_records_looked_at) continue;
        for (const dbf::Field& field : header.fields) {
            std::visit(check, dbf::read_value(header, field, records.bytes()));
            dbf::read_value(header, field, records.bytes(), {.decimal_comma = true});
        }
    }
    require(found == header.records + header.behind, "every record comes");
}

}  // namespace
}  // namespace zmfb::fuzz

void zmfb::fuzz::try_input(Input& input) {
    const std::string ending = endings[input.below(3)];
    const std::string memo(input.bytes(input.number<std::uint16_t>()));
    const auto file = dbf::in_memory(std::string(input.rest()));
    const auto header = header_of(*file);
    if (!header) return;
    check_header(*header, file->size());
    const auto memos = memos_of(memo, ending, *header);
    check_records(*file, *header, {memos, memo.size()});
}
