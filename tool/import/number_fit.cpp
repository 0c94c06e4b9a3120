#include "tool/import/number_fit.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstdint>
#include <limits>

#include "tool/encoding.h"

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
bool rescale(Decimal& number, int decimals, std::uint64_t limit, bool& rounded) {
    for (; number.scale < decimals && number.digits != 0; ++number.scale) {
        if (number.digits > limit / 10) return false;
        number.digits *= 10;
    }
    std::uint64_t dropped = 0;
    for (; number.scale > decimals && (number.digits != 0 || dropped != 0); --number.scale) {
        dropped = number.digits % 10;
        rounded = rounded || dropped != 0;
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

}  // namespace

std::string number_problem(std::string_view bytes, std::size_t length, int decimals, bool* rounded) {
    const std::string_view text = without_outer_blanks(bytes);
    if (text.empty()) return {};
    if (text.find_first_not_of('*') == std::string_view::npos)
        return "stars: the number was too wide for its field";
    if (text.find('\0') != std::string_view::npos) return "a zero byte in a number";
    const std::uint64_t limit = storage_limit(std::max<std::size_t>(length, 5));
    Decimal number;
    if (!Reader(text, limit).read(number)) return "not a number";
    const std::uint64_t sign = number.negative ? 1 : 0;
    bool loses = false;
    if (number.fits && rescale(number, decimals, limit + sign, loses) &&
        number.digits <= storage_limit(length) + sign) {
        if (rounded != nullptr && loses) *rounded = true;
        return {};
    }
    return fmt::format("too wide for NUMERIC({},{})", length, decimals);
}

std::string shown_bytes(std::string_view bytes) {
    const bool is_text = bytes_are_utf8() && is_utf8(bytes);
    std::string shown;
    for (const char c : bytes) {
        const auto byte = static_cast<unsigned char>(c);
        const bool printable = byte >= 0x20 && byte != 0x7F && (byte < 0x80 || byte >= 0xA0) && c != '\\';
        if (is_text && byte >= 0x80) {
            shown += c;
        } else if (printable && (byte < 0x80 || !bytes_are_utf8())) {
            shown += to_utf8(std::string_view(&c, 1));
        } else {
            shown += fmt::format("\\x{:02X}", byte);
        }
    }
    return shown;
}

}  // namespace zmfb::tool
