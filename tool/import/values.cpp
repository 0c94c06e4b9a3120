#include "tool/import/values.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <variant>

#include "tool/encoding.h"
#include "tool/import/number_fit.h"
#include "zmfbconn/decimal.h"

namespace zmfb::tool {
namespace {

bool is_ascii(std::string_view text) {
    return std::ranges::all_of(text, [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

std::string shown_day(std::chrono::year_month_day day) {
    return fmt::format("{:04}-{:02}-{:02}", static_cast<int>(day.year()), static_cast<unsigned>(day.month()),
                       static_cast<unsigned>(day.day()));
}

std::string shown_stamp(dbf::Timestamp stamp) {
    const auto day = std::chrono::floor<std::chrono::days>(stamp);
    const std::chrono::hh_mm_ss time(stamp - day);
    return fmt::format("{} {:02}:{:02}:{:02}.{:03}", shown_day(std::chrono::year_month_day(day)),
                       time.hours().count(), time.minutes().count(), time.seconds().count(),
                       time.subseconds().count());
}

// Those of the database.
std::size_t characters_in(std::string_view text) {
    if (!bytes_are_utf8()) return text.size();
    return static_cast<std::size_t>(
        std::ranges::count_if(text, [](char c) { return (static_cast<unsigned char>(c) & 0xC0) != 0x80; }));
}

// A decimal without zeros that say nothing: "-0012.500" is "-12.5". One with an exponent stays.
std::string without_zeros(std::string_view text) {
    if (text.find_first_of("eE") != text.npos) return std::string(text);
    const bool negative = text.front() == '-';
    if (negative || text.front() == '+') text.remove_prefix(1);
    text.remove_prefix(std::min(text.find_first_not_of('0'), text.size()));
    if (text.find('.') != text.npos) text = text.substr(0, text.find_last_not_of('0') + 1);
    if (text.ends_with('.')) text.remove_suffix(1);
    return text.empty() ? "0" : (negative ? "-" : "") + std::string(text);
}

// Digits of a text of without_zeros(); an exponent makes more of them than any NUMERIC has.
void note_digits(std::string_view text, Digits& digits) {
    constexpr std::size_t many = 100;
    if (text.starts_with('-')) text.remove_prefix(1);
    const std::size_t point = std::min(text.find('.'), text.size());
    const bool has_exponent = text.find_first_of("eE") != text.npos;
    digits.whole = std::max(digits.whole, has_exponent ? many : point);
    if (point < text.size()) digits.decimals = std::max(digits.decimals, text.size() - point - 1);
}

// Whether the double, written with as many digits as the text of without_zeros() has, is another number.
bool loses_digits(double value, std::string_view text) {
    std::string digits;
    for (const char c : text.substr(0, text.find_first_of("eE"))) {
        if (c >= '0' && c <= '9' && (c != '0' || !digits.empty())) digits += c;
    }
    digits.erase(digits.find_last_not_of('0') + 1);
    constexpr std::size_t always_kept = 15;
    if (digits.empty() || (digits.size() <= always_kept && std::isnormal(value))) return false;
    std::string shown = fmt::format("{:.{}e}", std::abs(value), digits.size() - 1);
    shown.erase(shown.find('e'));
    std::erase(shown, '.');
    return shown != digits;
}

}  // namespace

// The text of one value; "" and a problem for a bad one.
struct ValueReader::ToText {
    ValueReader& reader;
    const PlannedColumn& column;
    const dbf::Field& field;
    std::string& problem;
    Digits& digits;

    // Nothing: blanks are NULL where there is one, and no number is 0.
    std::optional<std::string> nothing() const {
        const bool is_varying = column.load.kind == LoadColumn::Kind::varying;
        const bool takes_none = column.takes_null || column.load.kind == LoadColumn::Kind::fixed;
        if (!column.takes_null && column.load.kind == LoadColumn::Kind::real) return real_text(0);
        if (!column.takes_null && column.digits > 0) return "0";
        if (!takes_none && problem.empty()) problem = "nothing, where the column has to have a value";
        return is_varying ? std::nullopt : std::optional<std::string>("");
    }

    // For DOUBLE PRECISION.
    std::optional<std::string> rounded_number(const std::string& text) const {
        const double value = std::strtod(text.c_str(), nullptr);
        if (!std::isfinite(value)) {
            problem = "too wide for DOUBLE PRECISION";
            return nothing();
        }
        if (loses_digits(value, text)) ++digits.rounded_real;
        return real_text(value);
    }

    std::optional<std::string> number(std::string text) const {
        if (column.is_wide) {
            text = without_zeros(text);
            note_digits(text, digits);
        }
        if (column.load.kind == LoadColumn::Kind::real) return rounded_number(text);
        if (column.digits == 0) return text;
        bool rounded = false;
        problem = number_problem(text, column.digits, column.decimals, &rounded);
        if (column.may_be_real) {
            const bool has_exponent = text.find_first_of("eE") != text.npos;
            if (!problem.empty() || (rounded && has_exponent)) digits.beyond_numeric = true;
            problem.clear();
            rounded_number(text);
        }
        if (!problem.empty()) return nothing();
        if (rounded) ++digits.rounded;
        return text;
    }

    std::optional<std::string> operator()(dbf::Blank) const { return nothing(); }
    std::optional<std::string> operator()(dbf::Null) const {
        std::optional<std::string> value = nothing();
        const bool stays = column.takes_null && column.load.kind != LoadColumn::Kind::fixed;
        if (!stays && problem.empty()) ++reader.counts_.lost_nulls;
        return value;
    }
    std::optional<std::string> operator()(const dbf::Bad& bad) const {
        if (field.kind == dbf::Kind::date || field.kind == dbf::Kind::timestamp) {
            ++reader.counts_.lost_dates;
        } else if (field.kind == dbf::Kind::logical) {
            ++reader.counts_.odd_logicals;
        } else {
            problem = bad.reason;
        }
        return nothing();
    }
    std::optional<std::string> operator()(const dbf::Text& text) const {
        std::string converted = reader.text_for(text.bytes, !field.binary(), problem);
        const bool is_cut =
            column.load.kind == LoadColumn::Kind::fixed && converted.size() > column.load.width;
        if (problem.empty() && (is_cut || (column.longest > 0 && characters_in(converted) > column.longest)))
            problem = "the text is longer than its column";
        return problem.empty() ? converted : "";
    }
    std::optional<std::string> operator()(const dbf::Bytes& bytes) const {
        if (column.longest > 0 && bytes.bytes.size() > column.longest) {
            problem = "the bytes are more than its column holds";
            return nothing();
        }
        return std::string(bytes.bytes);
    }
    std::optional<std::string> operator()(const dbf::Number& value) const { return number(value.text); }
    std::optional<std::string> operator()(dbf::Date day) const { return shown_day(day); }
    std::optional<std::string> operator()(bool value) const { return value ? "T" : "F"; }
    std::optional<std::string> operator()(std::int32_t value) const { return number(std::to_string(value)); }
    std::optional<std::string> operator()(dbf::Currency value) const {
        return number(to_string(Decimal(value.ten_thousandths, 4)));
    }
    std::optional<std::string> operator()(double value) const { return real_text(value); }
    std::optional<std::string> operator()(dbf::Timestamp value) const { return shown_stamp(value); }
    std::optional<std::string> operator()(dbf::MemoBlock place) const {
        if (reader.source_.memo == nullptr) {
            problem = "there is no memo file";
            return std::nullopt;
        }
        dbf::Memo memo = reader.source_.memo->read(place.block);
        problem = memo.problem;
        if (!problem.empty()) return std::nullopt;
        if (field.kind == dbf::Kind::memo_bytes) return std::move(memo.bytes);
        std::string text = reader.text_for(memo.bytes, true, problem);
        return problem.empty() ? std::optional(std::move(text)) : std::nullopt;
    }
};

ValueReader::ValueReader(const DbfSource& source, const std::vector<PlannedColumn>& columns,
                         dbf::ValueOptions options)
    : source_(source),
      columns_(columns),
      options_(options),
      values_(columns.size()),
      digits_(columns.size()) {
    if (!source.code_page.empty() && source.code_page != encoding_name())
        to_utf8_ = std::make_unique<dbf::ToUtf8>(source.code_page);
}

std::string ValueReader::text_for(std::string_view bytes, bool is_text, std::string& problem) {
    if (bytes.find('\0') != std::string_view::npos) ++counts_.zero_texts;
    const bool stays = !is_text || to_utf8_ == nullptr;
    if (stays && bytes_are_utf8() && !is_ascii(bytes) && !is_utf8(bytes)) {
        problem = source_.code_page.empty()
                      ? "the text is no UTF-8, and nothing says its code page; --encoding-from does"
                      : "the text is no UTF-8, which the texts of the database are";
        return {};
    }
    if (!is_text || is_ascii(bytes)) return std::string(bytes);
    if (source_.code_page.empty()) ++counts_.unknown_texts;
    if (to_utf8_ == nullptr) return std::string(bytes);
    const auto utf8 = to_utf8_->convert(bytes);
    if (!utf8) {
        problem = fmt::format("the text cannot be converted from {}", source_.code_page);
        return {};
    }
    const auto text = to_latin1(*utf8);
    if (!text) {
        lacked_characters_ = true;
        problem = fmt::format("the text has a character outside {}", encoding_name());
    }
    return text.value_or("");
}

const std::vector<std::optional<std::string>>& ValueReader::read(std::uint64_t number,
                                                                 std::string_view record,
                                                                 const OnBad& on_bad) {
    for (std::size_t i = 0; i < columns_.size(); ++i) {
        if (columns_[i].field == PlannedColumn::deletion_mark) {
            values_[i] = record.front() == '*' ? "T" : "F";
            continue;
        }
        const dbf::Field& field = source_.header.fields[columns_[i].field];
        std::string problem;
        values_[i] = std::visit(ToText{*this, columns_[i], field, problem, digits_[i]},
                                dbf::read_value(source_.header, field, record, options_));
        if (!problem.empty()) on_bad({number, field, dbf::field_bytes(field, record), std::move(problem)});
    }
    return values_;
}

}  // namespace zmfb::tool
