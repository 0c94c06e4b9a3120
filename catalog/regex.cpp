#include "catalog/regex.h"

#include <regex.h>

#include <optional>
#include <utility>

#include "catalog/methods.h"

namespace zmfb::catalog {
namespace {

// A compiled pattern, freed at the end.
class Regex {
  public:
    explicit Regex(const std::string& pattern) {
        const int flags = pattern.starts_with('^') ? REG_EXTENDED | REG_NEWLINE : REG_EXTENDED;
        valid_ = regcomp(&compiled_, pattern.c_str(), flags) == 0;
    }
    Regex(const Regex&) = delete;
    Regex& operator=(const Regex&) = delete;
    ~Regex() {
        if (valid_) regfree(&compiled_);
    }

    template <std::size_t N>
    bool match(const std::string& str, regmatch_t (&groups)[N]) const {
        return valid_ && regexec(&compiled_, str.c_str(), N, groups, 0) == 0;
    }

  private:
    regex_t compiled_{};
    bool valid_ = false;
};

// The pattern that was compiled last: a structure asks for one and the same for each of its fields.
const Regex& compiled(std::string pattern) {
    static std::string last;
    static std::optional<Regex> regex;
    if (!regex || last != pattern) {
        regex.emplace(pattern);
        last = std::move(pattern);
    }
    return *regex;
}

std::string up_to_zero_byte(std::string_view text) { return std::string(text.substr(0, text.find('\0'))); }

}  // namespace

std::string matchregex(std::string_view str, std::string_view pattern) {
    const std::string subject = up_to_zero_byte(str);
    std::string out;
    regmatch_t groups[10];
    if (!compiled(up_to_zero_byte(pattern)).match(subject, groups)) return out;
    // Each group overwrites the one before: the last one stays. Positions wrap at 16 bits.
    for (std::size_t i = 1; i < std::size(groups) && groups[i].rm_so != -1; ++i) {
        out = substr(subject, static_cast<std::int16_t>(groups[i].rm_so + 1),
                     static_cast<std::int16_t>(groups[i].rm_eo - groups[i].rm_so));
    }
    return out;
}

std::string_view substr(std::string_view src, std::int16_t start, std::int16_t len) {
    if (start < 1 || static_cast<std::size_t>(start) > src.size()) return {};
    const std::size_t count = len < 1 ? std::string_view::npos : static_cast<std::size_t>(len);
    return src.substr(static_cast<std::size_t>(start) - 1, count);
}

Value execregex(Self&, Args args) { return matchregex(args[0].text(), args[1].text()); }

}  // namespace zmfb::catalog
