#include "tool/transfer/names.h"

#include <fmt/format.h>

#include <algorithm>

#include "host/text.h"
#include "tool/catalog.h"
#include "tool/encoding.h"
#include "tool/name.h"

namespace zmfb::tool {
namespace {

constexpr std::string_view invalid = "is no valid name";
constexpr std::string_view reserved_word = "is a reserved word";
constexpr std::string_view of_the_driver = "is the name of a column of the driver's own";
constexpr std::string_view of_the_engine = "is a name of the engine's own";
constexpr std::string_view repeated = "is there twice";

bool is_of_the_engine(std::string_view name) {
    return name.starts_with("RDB$") || name.starts_with("MON$") || name.starts_with("SEC$");
}

std::string too_long(std::size_t longest) { return fmt::format("is longer than {} characters", longest); }

std::string numbered(std::string_view name, std::size_t longest, const std::set<std::string>& taken) {
    for (int number = 2;; ++number) {
        const std::string end = fmt::format("_{}", number);
        std::string one = std::string(name.substr(0, longest - end.size())) + end;
        if (!taken.contains(one)) return one;
    }
}

}  // namespace

std::string upper_bytes(const std::string& name) {
    return host::upper(to_latin1(name).value_or(name)).string();
}

std::string plain_form(std::string_view name, std::string_view prefix) {
    std::string plain(name);
    std::ranges::replace_if(
        plain, [](char c) { return !is_plain(c); }, '_');
    return plain.empty() || !begins_plain(plain[0]) ? std::string(prefix) + plain : plain;
}

std::set<std::string> reserved_later(const std::vector<std::string>& names) {
    static const std::set<std::string, std::less<>> later{
        "BINARY",        "DECFLOAT",        "INT128",    "LATERAL", "LOCAL",     "PUBLICATION", "RESETTING",
        "TIMEZONE_HOUR", "TIMEZONE_MINUTE", "UNBOUNDED", "WINDOW",  "VARBINARY", "WITHOUT"};
    std::set<std::string> found;
    std::ranges::copy_if(names, std::inserter(found, found.end()),
                         [](const std::string& name) { return later.contains(name); });
    return found;
}

FieldNames::FieldNames(std::vector<std::string> names, const Renames& renames) : from_(std::move(names)) {
    for (const std::string& from : from_) {
        const auto renamed = renames.find(from);
        const std::string& name = renamed == renames.end() ? from : renamed->second;
        wanted_.push_back(plain_form(name, "F_"));
        why_.emplace_back(wanted_.back() == name ? std::string_view() : invalid);
    }
}

void FieldNames::settle(const std::set<std::string>& reserved, std::size_t longest) {
    names_ = wanted_;
    std::set<std::string> taken;
    std::vector<std::size_t> open;
    for (std::size_t i = 0; i < names_.size(); ++i) {
        const bool is_reserved = reserved.contains(names_[i]);
        if (is_driver_column(names_[i]) || is_limbo_column(names_[i])) {
            names_[i].insert(0, "F_");
            why_[i] = of_the_driver;
        } else if (is_reserved) {
            names_[i] += '_';
            why_[i] = reserved_word;
        }
        if (names_[i].size() > longest) {
            names_[i].resize(longest);
            why_[i] = too_long(longest);
        }
        if (!why_[i].empty() || !taken.insert(names_[i]).second) open.push_back(i);
    }
    for (const std::size_t i : open) {
        if (taken.insert(names_[i]).second) continue;
        names_[i] = numbered(names_[i], longest, taken);
        taken.insert(names_[i]);
        if (why_[i].empty()) why_[i] = repeated;
    }
    for (std::size_t i = 0; i < names_.size(); ++i) {
        if (!why_[i].empty()) changes_.push_back({from_[i], names_[i], why_[i]});
    }
}

std::string table_name(const std::string& name, bool reserved, std::set<std::string>& taken,
                       NameChange& change) {
    std::string plain = plain_form(name, "T_");
    change = {name, "", plain == name ? "" : std::string(invalid)};
    if (is_of_the_engine(plain)) {
        plain.insert(0, "T_");
        change.why = of_the_engine;
    }
    if (reserved) {
        plain += '_';
        change.why = reserved_word;
    }
    if (plain.size() > longest_table) {
        change.why = too_long(longest_table);
        plain.resize(longest_table);
    }
    if (!change.why.empty() && taken.contains(plain)) plain = numbered(plain, longest_table, taken);
    taken.insert(plain);
    change.to = plain;
    return plain;
}

}  // namespace zmfb::tool
