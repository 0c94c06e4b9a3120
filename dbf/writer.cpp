#include "dbf/writer.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <ctime>
#include <filesystem>
#include <limits>
#include <optional>
#include <utility>

#include "dbf/code_page.h"
#include "dbf/companion.h"
#include "dbf/layout.h"
#include "dbf/memo.h"
#include "dbf/memo_writer.h"
#include "dbf/new_file.h"
#include "dbf/new_header.h"
#include "dbf/put_value.h"
#include "dbf/take_names.h"

namespace zmfb::dbf {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t block_size = std::size_t{256} * 1024;
constexpr std::size_t loss_count = static_cast<std::size_t>(Loss::no_day) + 1;
constexpr std::size_t longest_shown = 80;
constexpr std::size_t records_at = 4;
constexpr std::size_t longest_memo = MemoFile::longest;  // what is longer nobody would read again

Date today() {
    const std::time_t now = std::time(nullptr);
    std::tm local{};
    ::localtime_r(&now, &local);
    return std::chrono::year(local.tm_year + 1900) / (local.tm_mon + 1) / local.tm_mday;
}

// Controls as they are written in programs.
std::string shown(std::string_view text) {
    std::string made = "\"";
    for (const char c : text.substr(0, longest_shown)) {
        const auto byte = static_cast<unsigned char>(c);
        const bool is_control = byte < 0x20 || byte == 0x7F;
        made += is_control ? fmt::format("\\x{:02X}", byte) : std::string(1, c);
    }
    return made + (text.size() > longest_shown ? "...\"" : "\"");
}

std::string shown(Date day) {
    return fmt::format("{:04}-{:02}-{:02}", static_cast<int>(day.year()), static_cast<unsigned>(day.month()),
                       static_cast<unsigned>(day.day()));
}

std::string shown(std::chrono::local_time<std::chrono::microseconds> time) {
    const auto day = std::chrono::floor<std::chrono::days>(time);
    const std::chrono::hh_mm_ss of_day(time - day);
    return fmt::format("{} {:02}:{:02}:{:02}.{:06}", shown(Date(day)), of_day.hours().count(),
                       of_day.minutes().count(), of_day.seconds().count(), of_day.subseconds().count());
}

std::string shown(std::int64_t unscaled, int decimals) {
    std::string digits = std::to_string(unscaled);
    const std::size_t sign = unscaled < 0 ? 1 : 0;
    const auto behind = static_cast<std::size_t>(std::max(decimals, 0));
    if (behind == 0) return digits;
    if (digits.size() - sign <= behind) digits.insert(sign, behind + 1 + sign - digits.size(), '0');
    return digits.insert(digits.size() - behind, ".");
}

bool is_ascii(std::string_view text) {
    return std::all_of(text.begin(), text.end(), [](char c) { return (c & 0x80) == 0; });
}

bool is_memo(const Field& field) { return field.kind == Kind::memo_text || field.kind == Kind::memo_bytes; }

MemoKind memo_kind(const Field& field) {
    if (field.kind == Kind::memo_text) return MemoKind::text;
    return field.type == 'G' ? MemoKind::object : MemoKind::picture;
}

}  // namespace

std::string_view words_for(Loss loss) {
    switch (loss) {
        case Loss::none:
            return "is kept";
        case Loss::null:
            return "has no place in the field";
        case Loss::too_wide:
            return "is wider than the field";
        case Loss::rounded:
            return "has more digits than the field keeps";
        case Loss::not_a_number:
            return "is no number";
        case Loss::too_long:
            return "is longer than the field";
        case Loss::characters:
            return "has characters that the code page does not have";
        case Loss::end_mark:
            return "has bytes that mark the end or the kind of a memo";
        case Loss::time_of_day:
            return "has a time of day that the field does not keep";
        default:
            return "is no day of the years 1 to 9999";
    }
}

Unfit::Unfit(Loss loss, std::size_t field, const std::string& name, std::uint64_t record, std::string value)
    : std::runtime_error(fmt::format("record {}, field {}: {} {}", record, name, value, words_for(loss))),
      loss_(loss),
      field_(field),
      record_(record),
      value_(std::move(value)) {}

Unfit::~Unfit() = default;

struct Writer::State {
    State(const std::string& path, std::span<const NewField> new_fields, WriteOptions given)
        : options(std::move(given)),
          header(plan_header(options.format, new_fields, options.code_page, options.names_code_page)),
          nothing(empty_record(header)),
          file(path),
          losses(header.fields.size()) {
        if (!options.code_page.empty()) from_utf8.emplace(options.code_page);
        if (header.has_memo())
            memos.emplace(companion_path(path, memo_ending(header.dialect)), header.dialect);
        for (const Field& one : header.fields) note_characters(is_ascii(one.name));
        block.reserve(block_size + header.record_size);
        const Date changed = options.changed == Date() ? today() : options.changed;
        block = header_bytes(header, changed);
        begin_record();
    }

    [[nodiscard]] const Field& field(std::size_t index) const {
        if (index >= header.fields.size())
            throw std::invalid_argument(fmt::format("there is no field {}", index));
        return header.fields[index];
    }

    [[nodiscard]] char* record() { return block.data() + block.size() - header.record_size; }

    void begin_record() { block += nothing; }

    void write_block() {
        file.write(block);
        block.clear();
    }

    void end_record() {
        if (records == std::numeric_limits<std::uint32_t>::max())
            throw Refused({"would have more records than a DBF file can count"});
        ++records;
        if (block.size() + header.record_size > block_size) write_block();
        begin_record();
    }

    // Takes what a function put into the field, which has no value when that is refused.
    template <class Shown>
    void settle(std::size_t index, Loss loss, const Shown& shown_value) {
        if (header.fields[index].null_bit) put_bit(header, *header.fields[index].null_bit, record(), false);
        if (loss == Loss::none) return;
        const Field& one = header.fields[index];
        const bool keeps_nothing =
            loss == Loss::too_wide || loss == Loss::not_a_number || loss == Loss::no_day;
        if (keeps_nothing || !options.lossy) put_nothing(header, one, record());
        if (!options.lossy) throw Unfit(loss, index, one.name, records + 1, shown_value());
        ++losses[index][static_cast<std::size_t>(loss)];
    }

    [[noreturn]] void refuse_kind(const Field& one, std::string_view what) const {
        throw std::invalid_argument(fmt::format("field {} of type {} takes no {}", one.name, one.type, what));
    }

    void put_text(const Field& one, std::size_t index, std::string_view text);
    void put_memo_text(const Field& one, std::size_t index, std::string_view text);
    // ASCII means the same in every code page, and needs no .cpg file.
    void note_characters(bool are_ascii) {
        const bool unsaid = options.names_code_page && !options.code_page.empty() && header.language == 0;
        if (are_ascii || !unsaid || code_page_file) return;
        code_page_file.emplace(companion_path(file.place(), ".cpg"));
    }
    FromUtf8::Text converted(const Field& one, std::string_view text, std::size_t most);
    std::vector<std::string> files_that_go();
    void finish();

    WriteOptions options;
    Header header;
    std::string nothing;
    NewFile file;
    std::optional<MemoWriter> memos;
    std::optional<NewFile> code_page_file;
    std::optional<FromUtf8> from_utf8;
    std::string block;  // ends with the record that is being made
    std::uint64_t records = 0;
    std::vector<std::array<std::uint64_t, loss_count>> losses;
};

FromUtf8::Text Writer::State::converted(const Field& one, std::string_view text, std::size_t most) {
    if (!from_utf8 || one.binary()) return {text.substr(0, most), false, text.size() > most};
    const FromUtf8::Text made = from_utf8->convert(text, most);
    note_characters(made.is_ascii);
    return made;
}

void Writer::State::put_text(const Field& one, std::size_t index, std::string_view text) {
    std::string_view kept = text;
    if (!one.length_bit) kept = kept.substr(0, kept.find_last_not_of(' ') + 1);
    const FromUtf8::Text made = converted(one, kept, one.length);
    if (one.length_bit) {
        put_varying(header, one, record(), made.bytes);
    } else {
        put_filled(one, record(), made.bytes);
    }
    if (made.cut) settle(index, Loss::too_long, [&] { return shown(text); });
    settle(index, made.replaced ? Loss::characters : Loss::none, [&] { return shown(text); });
}

void Writer::State::put_memo_text(const Field& one, std::size_t index, std::string_view text) {
    const FromUtf8::Text made = converted(one, text, longest_memo);
    const auto shown_text = [&] { return shown(text); };
    if (made.cut) settle(index, Loss::too_long, [&] { return fmt::format("of {} bytes", text.size()); });
    if (made.replaced) settle(index, Loss::characters, shown_text);
    std::string_view memo = made.bytes;
    std::string unmarked;
    const bool is_marked = memo.find(end_of_file) != std::string_view::npos || memo.starts_with(dbase4_block);
    if (header.dialect == Dialect::dbase3 && is_marked) {
        settle(index, Loss::end_mark, shown_text);
        unmarked = memo;
        if (memo.starts_with(dbase4_block)) unmarked.front() = '?';
        std::replace(unmarked.begin(), unmarked.end(), end_of_file, '?');
        memo = unmarked;
    }
    put_memo_block(one, record(), memos->add(memo_kind(one), memo));
    settle(index, Loss::none, shown_text);
}

// The memos of what was there, and the name of a code page that this one does not have.
std::vector<std::string> Writer::State::files_that_go() {
    std::vector<std::string> paths;
    if (!code_page_file) paths.push_back(companion_path(file.place(), ".cpg"));
    if (fs::exists(file.place())) {
        for (const std::string_view ending : {".dbt", ".fpt"}) {
            if (std::string path = companion_path(file.place(), ending);
                !memos || memos->file().place() != path)
                paths.push_back(std::move(path));
        }
    }
    std::erase_if(paths, [](const std::string& path) { return !fs::exists(path); });
    return paths;
}

void Writer::State::finish() {
    block.resize(block.size() - header.record_size);
    block += end_of_file;
    write_block();
    std::string count(4, '\0');
    put_little_endian(count, 0, count.size(), records);
    file.write_at(records_at, count);
    file.sync();
    std::vector<NewFile*> files{&file};
    if (memos) {
        memos->close();
        files.push_back(&memos->file());
    }
    if (code_page_file) {
        code_page_file->write(options.code_page);
        code_page_file->sync();
        files.push_back(&*code_page_file);
    }
    take_names(files, files_that_go());
    remove_old(file.place());
    for (const char* const ending : {".dbt", ".fpt", ".cpg"})
        remove_old(companion_path(file.place(), ending));
}

Writer::Writer(const std::string& path, std::vector<NewField> fields, WriteOptions options)
    : state_(std::make_unique<State>(path, fields, std::move(options))) {}

Writer::~Writer() = default;

void Writer::text(std::size_t field, std::string_view text) {
    const Field& one = state_->field(field);
    switch (one.kind) {
        case Kind::text:
            return state_->put_text(one, field, text);
        case Kind::memo_text:
            return state_->put_memo_text(one, field, text);
        case Kind::logical:
            if (!put_letter(one, state_->record(), text)) state_->refuse_kind(one, "text " + shown(text));
            return state_->settle(field, Loss::none, [] { return ""; });
        default:
            state_->refuse_kind(one, "text");
    }
}

void Writer::bytes(std::size_t field, std::string_view bytes) {
    const Field& one = state_->field(field);
    const auto shown_size = [&] { return fmt::format("of {} bytes", bytes.size()); };
    if (one.kind == Kind::memo_bytes) {
        const std::string_view kept = bytes.substr(0, longest_memo);
        if (kept.size() < bytes.size()) state_->settle(field, Loss::too_long, shown_size);
        put_memo_block(one, state_->record(), state_->memos->add(memo_kind(one), kept));
        return state_->settle(field, Loss::none, shown_size);
    }
    const bool takes_bytes = one.kind == Kind::bytes || (one.kind == Kind::text && one.binary());
    if (!takes_bytes) state_->refuse_kind(one, "bytes");
    const std::string_view kept = bytes.substr(0, one.length);
    if (one.length_bit) {
        put_varying(state_->header, one, state_->record(), kept);
    } else {
        put_filled(one, state_->record(), kept);
    }
    state_->settle(field, kept.size() < bytes.size() ? Loss::too_long : Loss::none, shown_size);
}

void Writer::number(std::size_t field, std::int64_t unscaled, int decimals) {
    const Field& one = state_->field(field);
    const bool takes_numbers = one.kind == Kind::number || one.kind == Kind::integer ||
                               one.kind == Kind::currency || one.kind == Kind::real;
    if (!takes_numbers || decimals < 0) state_->refuse_kind(one, "number");
    state_->settle(field, put_number(one, state_->record(), unscaled, decimals),
                   [&] { return shown(unscaled, decimals); });
}

void Writer::real(std::size_t field, double value) {
    const Field& one = state_->field(field);
    const bool takes_numbers = one.kind == Kind::number || one.kind == Kind::integer ||
                               one.kind == Kind::currency || one.kind == Kind::real;
    if (!takes_numbers) state_->refuse_kind(one, "number");
    state_->settle(field, put_real(one, state_->record(), value), [&] { return fmt::format("{}", value); });
}

void Writer::logical(std::size_t field, bool value) {
    const Field& one = state_->field(field);
    if (one.kind != Kind::logical) state_->refuse_kind(one, "logical");
    put_letter(one, state_->record(), value ? "T" : "F");
    state_->settle(field, Loss::none, [] { return ""; });
}

void Writer::date(std::size_t field, Date day) {
    const Field& one = state_->field(field);
    if (one.kind != Kind::date && one.kind != Kind::timestamp) state_->refuse_kind(one, "date");
    state_->settle(field, put_day(one, state_->record(), day), [&] { return shown(day); });
}

void Writer::timestamp(std::size_t field, std::chrono::local_time<std::chrono::microseconds> time) {
    const Field& one = state_->field(field);
    if (one.kind != Kind::date && one.kind != Kind::timestamp) state_->refuse_kind(one, "timestamp");
    state_->settle(field, put_time(one, state_->record(), time), [&] { return shown(time); });
}

void Writer::null(std::size_t field) {
    const Field& one = state_->field(field);
    put_nothing(state_->header, one, state_->record(), '?');
    if (one.null_bit) return put_bit(state_->header, *one.null_bit, state_->record(), true);
    const bool has_nothing = one.kind == Kind::date || one.kind == Kind::timestamp || is_memo(one);
    state_->settle(field, has_nothing ? Loss::none : Loss::null, [] { return "NULL"; });
}

void Writer::append() { state_->end_record(); }

std::uint64_t Writer::records() const { return state_->records; }

std::vector<Converted> Writer::converted() const {
    std::vector<Converted> all;
    for (std::size_t field = 0; field < state_->losses.size(); ++field) {
        for (std::size_t loss = 0; loss < loss_count; ++loss) {
            if (const std::uint64_t count = state_->losses[field][loss]; count > 0)
                all.push_back({field, static_cast<Loss>(loss), count});
        }
    }
    return all;
}

void Writer::finish() { state_->finish(); }

}  // namespace zmfb::dbf
