#include <cstring>
#include <limits>
#include <string_view>

#include "host/error.h"
#include "host/text.h"

namespace zmfb::host {
namespace {

constexpr std::size_t nowhere = std::string_view::npos;

struct Replacement {
    std::string_view text, search, replace;
    std::int64_t first_occurrence, count;

    // Calls `found` with the place of each occurrence to be replaced.
    template <class Found>
    void for_each(Found found) const {
        std::int64_t occurrence = 0;
        std::int64_t left = count;
        for (std::size_t at = text.find(search); at != nowhere && left > 0;
             at = text.find(search, at + search.size())) {
            if (++occurrence < first_occurrence) continue;
            found(at);
            --left;
        }
    }
};

char* put(char* to, std::string_view part) {
    if (!part.empty()) std::memcpy(to, part.data(), part.size());
    return to + part.size();
}

Value replaced(const Value& s, const Replacement& r) {
    std::uint64_t hits = 0;
    std::size_t last = 0;
    r.for_each([&](std::size_t at) {
        ++hits;
        last = at;
    });
    if (hits == 0) return s;
    const std::uint64_t size = r.text.size() - hits * r.search.size() + hits * r.replace.size();
    if (size > max_text_size) return string_overflow("STRTRAN");
    Value made = Value::text_of_size(static_cast<std::size_t>(size));
    char* to = made.writable_text().data();
    std::size_t done = 0;
    const auto put_up_to = [&](std::size_t at) {
        to = put(put(to, r.text.substr(done, at - done)), r.replace);
        done = at + r.search.size();
    };
    if (hits == 1) {
        put_up_to(last);  // not looked for again
    } else {
        r.for_each(put_up_to);
    }
    put(to, r.text.substr(done));
    return made;
}

}  // namespace

Value at(const Value& search, const Value& s) {
    if (!search.is(Kind::character) || !s.is(Kind::character)) {
        return argument_error(Subcode::at, "AT", {search, s});
    }
    const std::string_view wanted = search.text();
    if (wanted.empty()) return 0;
    const std::size_t place = s.text().find(wanted);
    return place == nowhere ? 0 : place + 1;
}

Value rat(const Value& search, const Value& s) {
    if (!search.is(Kind::character) || !s.is(Kind::character)) return 0;
    const std::string_view wanted = search.text();
    if (wanted.empty()) return 0;
    const std::size_t place = s.text().rfind(wanted);
    return place == nowhere ? 0 : place + 1;
}

bool contained(const Value& sub, const Value& s) {
    if (!sub.is(Kind::character) || !s.is(Kind::character)) {
        const Value answer = argument_error(Subcode::contained, "$", {sub, s});
        return answer.is(Kind::logical) && answer.logical();
    }
    const std::string_view wanted = sub.text();
    return !wanted.empty() && s.text().find(wanted) != nowhere;
}

Value strtran(const Value& s, const Value& search, const Value& replace, const Value& start,
              const Value& count) {
    if (!s.is(Kind::character) || !search.is(Kind::character)) {
        return argument_error(Subcode::strtran, "STRTRAN", {s, search, replace, start, count});
    }
    if (search.text().empty()) return s;
    return replaced(
        s, {.text = s.text(),
            .search = search.text(),
            .replace = replace.is(Kind::character) ? replace.text() : std::string_view{},
            .first_occurrence = start.is(Kind::numeric) ? start.integer() : 1,
            .count = count.is(Kind::numeric) ? count.integer() : std::numeric_limits<std::int64_t>::max()});
}

}  // namespace zmfb::host
