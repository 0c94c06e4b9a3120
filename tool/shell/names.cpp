#include "tool/shell/names.h"

#include <fmt/ranges.h>

#include <algorithm>
#include <sstream>

#include "tool/shell/statement.h"

namespace zmfb::tool {
namespace {

constexpr std::string_view inner_words =
    "and as asc between by case cast coalesce count delete desc distinct end exists extract first from full "
    "group having in inner insert into is join left like max min not null on or order outer plan returning "
    "right rows select set skip starting sum table then union update upper values view when where with";

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
        for (const MethodRow& row : methods()) all.emplace_back(row.name);
        return all;
    }();
    return names;
}

std::string signature_of(const MethodRow& method) {
    std::string signature(method.name);
    if (method.kind == MethodKind::assign) return signature + " := " + std::string(method.parameters[0].name);
    if (method.kind == MethodKind::access) return fmt::format("{}: {}", signature, method.result);
    std::vector<std::string> parameters;
    for (const ParameterRow& one : method.parameters) {
        const std::string shown = fmt::format("{}: {}", one.name, one.kind);
        parameters.push_back(one.optional ? "[" + shown + "]" : shown);
    }
    return fmt::format("{}({}): {}", signature, fmt::join(parameters, ", "), method.result);
}

bool is_method(std::string_view name) { return std::ranges::binary_search(method_names(), name); }

std::vector<std::string> beginnings() {
    std::vector<std::string> all = words_of(statement_words);
    all.insert(all.end(), method_names().begin(), method_names().end());
    return all;
}

std::vector<std::string> sql_words() { return words_of(inner_words); }

}  // namespace zmfb::tool
