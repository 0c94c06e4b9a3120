#include "tool/transfer/dbf_check.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <limits>

#include "tool/encoding.h"
#include "tool/session.h"
#include "tool/transfer/dbf_records.h"

namespace zmfb::tool {
namespace {

// The largest exponent that the engine reads.
constexpr int largest_exponent = 3275;

bool is_digit(char c) { return c >= '0' && c <= '9'; }

// A number as the engine takes it apart: digits without the point, and how many of them stand behind it.
struct Decimal {
    bool negative = false;
    bool fits = true;  ///< the digits and the exponent
    std::uint64_t digits = 0;
    int scale = 0;
};

class Reader {
  public:
    Reader(std::string_view text, std::uint64_t limit) : text_(text), limit_(limit) {}

    // Returns whether the text is a number.
    bool read(Decimal& number) {
        if (!text_.empty() && (text_[0] == '-' || text_[0] == '+')) number.negative = text_[at_++] == '-';
        bool any = read_digits(number, false);
        if (at_ < text_.size() && text_[at_] == '.') {
            ++at_;
            any = read_digits(number, true) || any;
        }
        if (!any) return false;
        if (at_ < text_.size() && (text_[at_] == 'e' || text_[at_] == 'E')) {
            ++at_;
            if (!read_exponent(number)) return false;
        }
        return at_ == text_.size();
    }

  private:
    bool read_digits(Decimal& number, bool behind_point) {
        const std::size_t start = at_;
        const std::uint64_t limit = limit_ + (number.negative ? 1 : 0);
        for (; at_ < text_.size() && is_digit(text_[at_]); ++at_) {
            const auto digit = static_cast<std::uint64_t>(text_[at_] - '0');
            if (number.digits > (limit - digit) / 10) number.fits = false;
            if (number.fits) number.digits = number.digits * 10 + digit;
            if (behind_point) ++number.scale;
        }
        return at_ > start;
    }

    bool read_exponent(Decimal& number) {
        bool negative = false;
        if (at_ < text_.size() && (text_[at_] == '-' || text_[at_] == '+')) negative = text_[at_++] == '-';
        const std::size_t start = at_;
        int exponent = 0;
        for (; at_ < text_.size() && is_digit(text_[at_]); ++at_) {
            exponent = std::min(exponent * 10 + (text_[at_] - '0'), largest_exponent + 1);
        }
        if (exponent > largest_exponent) number.fits = false;
        number.scale += negative ? exponent : -exponent;
        return at_ > start;
    }

    std::string_view text_;
    std::uint64_t limit_;
    std::size_t at_ = 0;
};

// Brings the number to so many decimals, rounded half away from zero; returns whether it stays within the
// limit.
bool rescale(Decimal& number, int decimals, std::uint64_t limit) {
    for (; number.scale < decimals && number.digits != 0; ++number.scale) {
        if (number.digits > limit / 10) return false;
        number.digits *= 10;
    }
    std::uint64_t dropped = 0;
    for (; number.scale > decimals && (number.digits != 0 || dropped != 0); --number.scale) {
        dropped = number.digits % 10;
        number.digits /= 10;
    }
    if (dropped > 4) ++number.digits;
    return number.digits <= limit;
}

std::uint64_t storage_limit(std::size_t length) {
    if (length < 5) return std::numeric_limits<std::int16_t>::max();
    if (length < 10) return std::numeric_limits<std::int32_t>::max();
    return std::numeric_limits<std::int64_t>::max();
}

std::string_view without_outer_blanks(std::string_view bytes) {
    while (!bytes.empty() && (bytes.back() == ' ' || bytes.back() == '\0')) bytes.remove_suffix(1);
    while (!bytes.empty() && bytes.front() == ' ') bytes.remove_prefix(1);
    return bytes;
}

int two_digits(std::string_view bytes, std::size_t at) {
    return (bytes[at] - '0') * 10 + (bytes[at + 1] - '0');
}

bool is_blank(std::string_view bytes) {
    return bytes.find_first_not_of(std::string_view(" \0", 2)) == bytes.npos;
}

// Looks at the values of one record after another.
class Look {
  public:
    Look(const DbfFile& file, const CheckOptions& options, CheckResult& result)
        : file_(file), options_(options), result_(result) {}

    void at(std::uint64_t number, std::string_view record) {
        const bool deleted = !record.empty() && record[0] == '*';
        if (deleted) ++result_.deleted;
        if (deleted && options_.skip_deleted) return;
        ++result_.records;
        for (const DbfField& field : file_.fields) {
            if (field.offset > record.size()) break;
            const std::string_view bytes = record.substr(field.offset, field.length);
            const std::string reason = problem(field, bytes);
            if (reason.empty()) continue;
            ++result_.bad;
            if (options_.on_bad) options_.on_bad({number, field, bytes, reason});
        }
    }

  private:
    std::string problem(const DbfField& field, std::string_view bytes) {
        switch (field.type) {
            case 'N':
                return number_problem(bytes, field.length, field.decimals);
            case 'L':
                return is_blank(bytes.substr(std::min<std::size_t>(1, bytes.size())))
                           ? ""
                           : "a logical has one character";
            case 'D':
                if (!is_date(bytes) && !is_blank(bytes) && bytes.find_first_not_of('0') != bytes.npos)
                    ++result_.lost_dates;
                return {};
            default:
                if (bytes.find('\0') != std::string_view::npos) ++result_.zero_texts;
                return {};
        }
    }

    const DbfFile& file_;
    const CheckOptions& options_;
    CheckResult& result_;
};

}  // namespace

std::string number_problem(std::string_view bytes, std::size_t length, int decimals) {
    const std::string_view text = without_outer_blanks(bytes);
    if (text.empty()) return {};
    if (text.find_first_not_of('*') == std::string_view::npos)
        return "stars: the number was too wide for its field";
    if (text.find('\0') != std::string_view::npos) return "a zero byte in a number";
    const std::uint64_t limit = storage_limit(std::max<std::size_t>(length, 5));
    Decimal number;
    if (!Reader(text, limit).read(number)) return "not a number";
    const std::uint64_t sign = number.negative ? 1 : 0;
    if (number.fits && rescale(number, decimals, limit + sign) &&
        number.digits <= storage_limit(length) + sign) {
        return {};
    }
    return fmt::format("too wide for NUMERIC({},{})", length, decimals);
}

bool is_date(std::string_view bytes) {
    constexpr std::array days{31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    if (bytes.size() != 8 || !std::all_of(bytes.begin(), bytes.end(), is_digit)) return false;
    const int year = two_digits(bytes, 0) * 100 + two_digits(bytes, 2);
    const int month = two_digits(bytes, 4);
    const int day = two_digits(bytes, 6);
    if (year < 1 || month < 1 || month > 12 || day < 1) return false;
    const bool leap = (year % 4 == 0 && year % 100 != 0) || year % 400 == 0;
    return day <= days[static_cast<std::size_t>(month - 1)] + (month == 2 && leap ? 1 : 0);
}

std::string shown_bytes(std::string_view bytes) {
    std::string shown;
    for (const char c : bytes) {
        const auto byte = static_cast<unsigned char>(c);
        const bool printable = byte >= 0x20 && byte != 0x7F && (byte < 0x80 || byte >= 0xA0) && c != '\\';
        shown += printable ? to_utf8(std::string_view(&c, 1)) : fmt::format("\\x{:02X}", byte);
    }
    return shown;
}

CheckResult check_records(const DbfFile& file, const CheckOptions& options) {
    CheckResult result;
    Look look(file, options, result);
    for_each_record(file, [&](std::uint64_t number, std::string_view record) {
        look.at(number, record);
        constexpr std::uint64_t between = 16384;
        if (options.on_progress && number % between == 0) options.on_progress(number);
    });
    return result;
}

}  // namespace zmfb::tool
