#include "catalog/comment.h"

#include <algorithm>
#include <optional>

#include "conn/log.h"
#include "conn/statement.h"
#include "host/text.h"
#include "host/utf8.h"

namespace zmfb::catalog {
namespace {

// The version of the engine; nothing when it cannot be answered.
std::optional<double> ask_version(Self& self) {
    constexpr std::string_view engine_version =
        "select rdb$get_context('SYSTEM','ENGINE_VERSION') from rdb$database";
    const Value result = call(self, "internalselect", engine_version);
    if (!host::has_row(result)) return std::nullopt;
    return first_number(result).number();
}

bool is_ascii(char c) { return static_cast<unsigned char>(c) < 0x80; }

// Without a character set of the connection the engine takes a plain literal for ASCII: every other byte
// would become a question mark.
Value literal(const Value& descr) {
    const Value escaped = "'" + host::strtran(descr, "'", "''") + "'";
    const std::string_view text = escaped.text();
    return std::all_of(text.begin(), text.end(), is_ascii) ? escaped : Value("_UTF8" + host::to_utf8(text));
}

}  // namespace

bool takes_comments_only(Self& self) {
    struct Engine {
        int handle = 0;
        Value database;
        bool comments_only = false;
    };
    static Engine last;

    const int handle = conn::integer_or_zero(var(self, Var::dbhndl));
    if (handle == 0) return false;
    // A handle is used again after a detach, perhaps for a database on another engine.
    const Value& database = var(self, Var::sdbname);
    if (last.handle == handle && last.database.same(database)) return last.comments_only;
    const std::optional<double> version = ask_version(self);
    // A question that failed says nothing about the next time.
    if (!version) return false;
    last = {.handle = handle, .database = database, .comments_only = *version >= 3};
    return last.comments_only;
}

Value quoted(const Value& name) { return "\"" + host::strtran(name, "\"", "\"\"") + "\""; }

Value comment_on(Self& self, const Value& object, const Value& descr) {
    return call(self, "executeupdate", "COMMENT ON " + object + " IS " + literal(descr));
}

std::string from_utf8(std::string_view description) {
    constexpr std::size_t described_size = 255;
    std::string latin1;
    for (std::size_t i = 0; i < description.size(); ++i) {
        const auto lead = static_cast<unsigned char>(description[i]);
        if (lead < 0x80) {
            latin1 += description[i];
            continue;
        }
        const auto next = i + 1 < description.size() ? static_cast<unsigned char>(description[i + 1])
                                                     : static_cast<unsigned char>(0);
        const bool in_latin1 = lead == 0xC2 || lead == 0xC3;
        if (in_latin1 && (next & 0xC0) == 0x80) {
            latin1 += static_cast<char>(((lead & 0x03) << 6) | (next & 0x3F));
            ++i;
        } else if (!in_latin1 || i + 1 != described_size) {
            return std::string(description);
        }
    }
    latin1.resize(description.size(), ' ');
    return latin1;
}

}  // namespace zmfb::catalog
