/// Any values in any fields of any format: what is written is read.
#pragma once

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "dbf/code_page.h"
#include "dbf/memo.h"
#include "dbf/records.h"
#include "dbf/value.h"
#include "dbf/writer.h"

namespace zmfb::dbf_test {

/// Writes a file at `path` as a source of choices says, and reads it again. The source has below(), flag(),
/// number<T>() and text(); `require` takes what must hold, and in words.
template <class Source, class Require>
class WriteAndRead {
  public:
    WriteAndRead(Source& source, std::string path, Require require)
        : source_(source), path_(std::move(path)), require_(require) {}

    void run() {
        choose();
        if (!dbf::field_problems(options_.format, fields_, options_.code_page).empty()) {
            require_(is_refused(), "fields that have problems are refused");
            return;
        }
        dbf::Writer writer(path_, fields_, options_);
        const std::size_t records = source_.below(6);
        for (std::size_t i = 0; i < records; ++i) write_record(writer);
        require_(writer.records() == records, "every record is counted");
        writer.finish();
        read();
    }

  private:
    /// Whether a value that was read is the one that was written.
    using Expected = std::function<bool(const dbf::Value&)>;

    void choose() {
        constexpr dbf::Format formats[] = {dbf::Format::dbase3, dbf::Format::foxpro,
                                           dbf::Format::visual_foxpro};
        constexpr std::string_view types[] = {"CNDLM", "CNFDLMGP", "CNFDLMGPIBYTVQ"};
        constexpr const char* pages[] = {"", "CP850", "CP1252", "UTF-8"};
        const std::size_t format = source_.below(3);
        options_ = {.format = formats[format], .code_page = pages[source_.below(4)], .lossy = source_.flag()};
        const std::size_t count = source_.below(8);
        for (std::size_t i = 0; i < count; ++i) {
            const char type = types[format][source_.below(types[format].size())];
            const bool is_vfp = format == 2;
            const bool has_digits = type == 'N' || type == 'F';
            fields_.push_back({.name = fmt::format("F{}", i),
                               .type = type,
                               .length = source_.below(has_digits ? 24 : 256),
                               .decimals = static_cast<int>(source_.below(8)),
                               .nullable = is_vfp && source_.flag(),
                               .binary = is_vfp &&
                                         std::string_view("CVM").find(type) != std::string_view::npos &&
                                         source_.flag()});
        }
    }

    bool is_refused() {
        try {
            const dbf::Writer writer(path_, fields_, options_);
            return false;
        } catch (const dbf::Refused&) {
            return true;
        }
    }

    void write_record(dbf::Writer& writer) {
        std::vector<Expected>& record = expected_.emplace_back();
        for (std::size_t i = 0; i < fields_.size(); ++i) {
            Expected expected = is_nothing(fields_[i]);
            try {
                Expected kept = set(writer, i);
                // A value that was converted is another one.
                const bool is_converted = was_converted(writer);
                expected = is_converted ? Expected() : std::move(kept);
            } catch (const dbf::Unfit& unfit) {
                require_(!options_.lossy, "nothing is refused when losses are accepted");
                require_(unfit.field() == i && unfit.record() == expected_.size(),
                         "what is refused is named");
            }
            record.push_back(std::move(expected));
        }
        writer.append();
    }

    bool was_converted(const dbf::Writer& writer) {
        std::uint64_t count = 0;
        for (const dbf::Converted& one : writer.converted()) count += one.count;
        return count != std::exchange(converted_, count);
    }

    static Expected is_nothing(const dbf::NewField& field) {
        switch (field.type) {
            case 'C':
            case 'V':
                return [](const dbf::Value& value) { return value == dbf::Value(dbf::Text{}); };
            case 'Q':
                return [](const dbf::Value& value) { return value == dbf::Value(dbf::Bytes{}); };
            case 'I':
                return [](const dbf::Value& value) { return value == dbf::Value(std::int32_t{0}); };
            case 'Y':
                return [](const dbf::Value& value) { return value == dbf::Value(dbf::Currency{}); };
            case 'B':
                return [](const dbf::Value& value) { return value == dbf::Value(0.0); };
            default:
                return [](const dbf::Value& value) { return value == dbf::Value(dbf::Blank{}); };
        }
    }

    Expected set(dbf::Writer& writer, std::size_t i) {
        const dbf::NewField& field = fields_[i];
        if (source_.below(8) == 0) {
            writer.null(i);
            if (!field.nullable) return is_nothing(field);
            return [](const dbf::Value& value) { return value == dbf::Value(dbf::Null{}); };
        }
        switch (field.type) {
            case 'D':
                return set_day(writer, i);
            case 'T':
                return set_time(writer, i);
            case 'L': {
                const bool yes = source_.flag();
                writer.logical(i, yes);
                return [yes](const dbf::Value& value) { return value == dbf::Value(yes); };
            }
            case 'N':
            case 'F':
            case 'I':
            case 'Y':
                return source_.flag() ? set_number(writer, i) : set_real(writer, i);
            case 'B':
                return set_real(writer, i);
            default:
                return set_text(writer, i);
        }
    }

    Expected set_day(dbf::Writer& writer, std::size_t i) {
        const std::chrono::local_days days{
            std::chrono::days(source_.template number<std::int32_t>() % 4'000'000)};
        const dbf::Date day(days);
        writer.date(i, day);
        return [day](const dbf::Value& value) { return value == dbf::Value(day); };
    }

    Expected set_time(dbf::Writer& writer, std::size_t i) {
        constexpr std::int64_t most = 400'000'000'000'000'000;
        const std::chrono::local_time<std::chrono::microseconds> time{
            std::chrono::microseconds(source_.template number<std::int64_t>() % most / 100 * 100)};
        writer.timestamp(i, time);
        const auto kept = std::chrono::floor<std::chrono::milliseconds>(time);
        return [kept](const dbf::Value& value) { return value == dbf::Value(kept); };
    }

    // Numbers of few digits and of many.
    Expected set_number(dbf::Writer& writer, std::size_t i) {
        const std::int64_t unscaled = source_.template number<std::int64_t>() >> source_.below(64);
        const int decimals = static_cast<int>(source_.below(19));
        writer.number(i, unscaled, decimals);
        std::string text = fmt::format("{:0{}}", unscaled, decimals + 2);
        text.insert(text.size() - static_cast<std::size_t>(decimals), ".");
        return is_number(text);
    }

    Expected set_real(dbf::Writer& writer, std::size_t i) {
        const auto number = source_.template number<double>();
        writer.real(i, number);
        if (fields_[i].type == 'B')
            return [number](const dbf::Value& value) { return value == dbf::Value(number); };
        // A number without an end has been refused by now.
        return std::isfinite(number) ? is_number(fmt::format("{:.400f}", number), number) : Expected();
    }

    /// "-12.5" of "-0012.500".
    static std::string shortest(std::string text) {
        const bool negative = text.starts_with('-');
        if (text.find('.') != std::string::npos) text.erase(text.find_last_not_of('0') + 1);
        if (text.ends_with('.')) text.pop_back();
        text.erase(0, text.find_first_not_of("-0"));
        if (text.starts_with('.')) text.insert(0, "0");
        return (negative && !text.empty() ? "-" : "") + text;
    }

    // A double that is not the decimal exactly is one that reads back as the same.
    static Expected is_number(const std::string& text, std::optional<double> real = {}) {
        return [wanted = shortest(text), real](const dbf::Value& value) {
            std::string found;
            if (const auto* number = std::get_if<dbf::Number>(&value)) found = number->text;
            if (const auto* whole = std::get_if<std::int32_t>(&value)) found = std::to_string(*whole);
            if (const auto* amount = std::get_if<dbf::Currency>(&value)) {
                found = fmt::format("{:06}", amount->ten_thousandths);
                found.insert(found.size() - 4, ".");
            }
            return shortest(found) == wanted || (real && std::strtod(found.c_str(), nullptr) == *real);
        };
    }

    Expected set_text(dbf::Writer& writer, std::size_t i) {
        const dbf::NewField& field = fields_[i];
        std::string text(source_.text());
        const bool is_bytes =
            field.binary || std::string_view("GPQ").find(field.type) != std::string_view::npos;
        if (is_bytes && field.type != 'V' && field.type != 'C') {
            writer.bytes(i, text);
        } else {
            writer.text(i, text);
        }
        const bool is_padded = field.type == 'C';
        return [this, text, is_bytes, is_padded](const dbf::Value& value) {
            return read_text(value, is_bytes) == (is_padded ? without_end(text) : text);
        };
    }

    static std::string without_end(std::string text) {
        while (!text.empty() && (text.back() == ' ' || text.back() == '\0')) text.pop_back();
        return text;
    }

    std::optional<std::string> read_text(const dbf::Value& value, bool is_bytes) const {
        std::string found;
        if (const auto* text = std::get_if<dbf::Text>(&value)) found = text->bytes;
        if (const auto* bytes = std::get_if<dbf::Bytes>(&value)) found = bytes->bytes;
        if (const auto* block = std::get_if<dbf::MemoBlock>(&value)) {
            const dbf::Memo memo = memos_->read(block->block);
            if (!memo.problem.empty()) return std::nullopt;
            found = memo.bytes;
        }
        const bool is_ascii = std::all_of(found.begin(), found.end(), [](char c) { return (c & 0x80) == 0; });
        if (is_bytes || options_.code_page.empty() || is_ascii) return found;
        require_(code_page_ == options_.code_page, "the code page of texts beyond ASCII is said");
        return dbf::ToUtf8(options_.code_page).convert(found);
    }

    void read() {
        const auto file = dbf::open_file(path_);
        dbf::Header header = dbf::read_header(*file);
        require_(header.notes.empty() && header.behind == 0, "a header says what the file has");
        require_(header.records == expected_.size(), "the records are there");
        require_(header.fields.size() == fields_.size(), "the fields are there");
        code_page_ = dbf::code_page(path_, header);
        const std::string memo_path = dbf::find_memo_file(path_, header);
        require_(memo_path.empty() != header.has_memo(), "memos are in a file beside");
        if (header.has_memo()) memos_.emplace(memo_path, header);
        for (dbf::Records records(*file, header); records.next();) {
            require_(!records.deleted(), "records are in use");
            for (std::size_t i = 0; i < fields_.size(); ++i) {
                const dbf::Value value = dbf::read_value(header, header.fields[i], records.bytes());
                require_(!std::holds_alternative<dbf::Bad>(value), "a value that was written is one");
                const Expected& expected = expected_[static_cast<std::size_t>(records.number()) - 1][i];
                if (expected) require_(expected(value), "a value that was kept is read");
            }
        }
    }

    Source& source_;
    std::string path_;
    Require require_;
    dbf::WriteOptions options_;
    std::vector<dbf::NewField> fields_;
    std::vector<std::vector<Expected>> expected_;
    std::uint64_t converted_ = 0;
    std::optional<dbf::MemoFile> memos_;
    std::string code_page_;  // that the file says
};

}  // namespace zmfb::dbf_test
