#include "tool/shell/names.h"

#include <algorithm>
#include <optional>
#include <sstream>

#include "tool/encoding.h"
#include "tool/shell/statement.h"

namespace zmfb::tool {
namespace {

constexpr std::string_view inner_words =
    "and as asc between by case cast coalesce count delete desc distinct end exists extract first from full "
    "group having in inner insert into is join left like max min not null on or order outer plan returning "
    "right rows select set skip starting sum table then union update upper values view when where with";

std::optional<std::vector<std::string>>& known_tables() {
    static std::optional<std::vector<std::string>> tables;
    return tables;
}

std::vector<std::string> words_of(std::string_view text) {
    std::istringstream in{std::string(text)};
    std::vector<std::string> words;
    for (std::string word; in >> word;) words.push_back(word);
    return words;
}

}  // namespace

const std::vector<std::string>& method_names() {
    static const std::vector<std::string> names = [] {
        std::vector<std::string> all;
        for (std::size_t i = 0; i < method_count(); ++i) all.emplace_back(method_row(i).name);
        return all;
    }();
    return names;
}

bool is_method(std::string_view name) { return std::ranges::binary_search(method_names(), name); }

std::vector<std::string> beginnings() {
    std::vector<std::string> all = words_of(statement_words);
    all.insert(all.end(), method_names().begin(), method_names().end());
    return all;
}

std::vector<std::string> sql_words() { return words_of(inner_words); }

const std::vector<std::string>& table_names(Session& session) {
    if (!known_tables()) {
        std::vector<std::string> names;
        const Value tables = session.connection().call("gettablesname");
        for (const Value& table : tables.items()) names.push_back(to_utf8(table.text()));
        known_tables() = std::move(names);
    }
    return *known_tables();
}

void forget_tables() { known_tables().reset(); }

}  // namespace zmfb::tool
