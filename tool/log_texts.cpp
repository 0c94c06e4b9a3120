#include "tool/log_texts.h"

#include <algorithm>
#include <utility>

namespace zmfb::tool {
namespace {

constexpr std::size_t longest_text = 9999;

constexpr std::array<std::string_view, 3> statements{
    "[UPDT] Statement: ", "[CACHE] Statement: ", "[QURY] Statement: "};

struct Form {
    std::string_view beginning;
    std::string_view end;
};

// What the system writes besides. A name is at the end of those only whose names the program or the machine
// has made: the path of a database, of a host; of a column it is too short for an entry.
constexpr std::array one_liners{
    Form{"[LOG#] zmFBConn loglevel now is: ", ""},
    Form{"[CONN] Connected to: ", ")"},
    Form{"[EXIT] Disconnected from: ", ""},
    Form{"[GONE] Class: zmFBConn no longer exists. DB: ", ""},
    Form{"[ERROR] SQLCODE=", ")"},
    Form{"[ERROR] Meth: ", " does not exist inside zmFBConn"},
    Form{"[ERROR] Impossible to clear System Tables with opened tables", ""},
    Form{"[ERROR] Failed clearing System Tables. Try again.", ""},
    Form{"[WARN] System Tables were cleared. ", " Unexpected results could happen."},
    Form{"[FATAL] Missing UDFs in Database.", ""},
    Form{"[FATAL] Error creating system tables.", ""},
    Form{"[SET] Global Skip", ""},
    Form{"[TRANS] Starting Transaction", ""},
    Form{"[COMMIT] Commit", ""},
    Form{"[AREAID] AreaID requested: ", ""},
    Form{"[INFO] Column: ", ""},
};

bool is_one_liner(std::string_view line) {
    return std::ranges::any_of(one_liners, [&](const Form& form) {
        return line.size() >= form.beginning.size() + form.end.size() && line.starts_with(form.beginning) &&
               line.ends_with(form.end);
    });
}

// A quote that begins a text with a mark of its own choice at its end: q'{it's}'.
bool is_of_own_end(std::string_view line, std::size_t quote) {
    return line[quote] == '\'' && quote > 0 && (line[quote - 1] == 'q' || line[quote - 1] == 'Q');
}

}  // namespace

LogTexts::Inside LogTexts::behind(Inside before, std::string_view line) {
    if (before == Inside::one_line || before == Inside::anything) return Inside::anything;
    Inside inside = before;
    for (std::size_t at = 0;; ++at) {
        const bool in_statement = inside == Inside::statement;
        at = in_statement ? line.find_first_of("'\"-/", at)
                          : line.find(inside == Inside::literal ? "'"
                                      : inside == Inside::name  ? "\""
                                                                : "*/",
                                      at);
        if (at == line.npos) return inside;
        if (!in_statement) {
            if (inside == Inside::comment) ++at;
            inside = Inside::statement;
        } else if (line[at] == '"') {
            inside = Inside::name;
        } else if (line[at] == '\'') {
            if (is_of_own_end(line, at)) return Inside::anything;
            inside = Inside::literal;
        } else if (line.substr(at).starts_with("--")) {
            return inside;
        } else if (line.substr(at).starts_with("/*")) {
            inside = Inside::comment;
            ++at;
        }
    }
}

void LogTexts::note(Inside inside, std::uint64_t begin) {
    std::optional<std::uint64_t>& last = begins_[static_cast<std::size_t>(inside)];
    last = std::max(last.value_or(0), begin);
}

bool LogTexts::may_hold(std::uint64_t position, std::size_t size) {
    for (std::size_t i = 0; i < begins_.size(); ++i) {
        const auto inside = static_cast<Inside>(i);
        const bool is_open = inside != Inside::one_line && inside != Inside::statement;
        if (begins_[i] && (!is_open || position + size - *begins_[i] > longest_text)) begins_[i].reset();
    }
    return std::ranges::any_of(begins_, [](const auto& begin) { return begin.has_value(); });
}

void LogTexts::go_on(std::string_view line) {
    const auto before = std::exchange(begins_, {});
    for (std::size_t i = 0; i < before.size(); ++i) {
        if (before[i]) note(behind(static_cast<Inside>(i), line), *before[i]);
    }
}

void LogTexts::begin(std::uint64_t position, std::string_view line) {
    const auto statement =
        std::ranges::find_if(statements, [&](std::string_view tag) { return line.starts_with(tag); });
    if (statement != statements.end()) {
        note(behind(Inside::statement, line.substr(statement->size())), position);
    } else {
        note(is_one_liner(line) ? Inside::one_line : Inside::anything, position);
    }
}

}  // namespace zmfb::tool
