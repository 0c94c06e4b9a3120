// Values that are typed into a cell, key by key, for columns of every kind.
//
// An input: the kind, its width and decimals, the value that is there, and the keys.
#include <fmt/format.h>

#include <cmath>
#include <cstdlib>
#include <optional>

#include "fuzz/fuzz.h"
#include "sql/typed/encoding.h"
#include "tool/browse/cell_input.h"
#include "tool/rows/shown_text.h"
#include "tool/session.h"

namespace zmfb::fuzz {
namespace {

using namespace tool::browse;
using Kind = CellRule::Kind;

CellRule rule_of(Input& input) {
    return {.kind = static_cast<Kind>(input.below(8)),
            .width = input.below(24),
            .decimals = static_cast<int>(input.below(19)),
            .nullable = input.flag()};
}

// The value, or nothing when it is none, which is said.
std::optional<CellValue> value_of(const CellRule& rule, std::string_view text) {
    try {
        return typed_value(rule, text);
    } catch (const tool::Failure& failure) {
        require(!failure.message.empty(), "what is no value is said to be none");
        return std::nullopt;
    }
}

// How a value is typed.
struct Typed {
    std::string operator()(std::monostate) const { return ""; }
    std::string operator()(bool value) const { return value ? "T" : "F"; }
    std::string operator()(const Decimal& value) const { return to_string(value); }
    std::string operator()(double value) const { return fmt::to_string(value); }
    std::string operator()(const std::string& value) const { return value; }
    std::string operator()(const Bytes&) const { return "?"; }
    std::string operator()(std::chrono::year_month_day day) const {
        return fmt::format("{:04}-{:02}-{:02}", static_cast<int>(day.year()),
                           static_cast<unsigned>(day.month()), static_cast<unsigned>(day.day()));
    }
    std::string operator()(TimeOfDay time) const {
        const auto ticks = time.count();
        return fmt::format("{:02}:{:02}:{:02}.{:04}", ticks / 36'000'000, ticks / 600'000 % 60,
                           ticks / 10'000 % 60, ticks % 10'000);
    }
    std::string operator()(Timestamp moment) const {
        const auto day = std::chrono::floor<std::chrono::days>(moment);
        return (*this)(std::chrono::year_month_day(day)) + " " +
               (*this)(TimeOfDay(static_cast<std::int32_t>((moment - day).count())));
    }
};

void check_value(const CellRule& rule, std::string_view text) {
    const auto value = value_of(rule, text);
    if (!value) return;
    require(rule.nullable || !std::holds_alternative<std::monostate>(*value), "NULL goes where it may be");
    require(why_not(rule, text).empty(), "a value was one while it was typed");
    const std::string kept = std::visit(Typed(), *value);
    const bool has_shape = rule.kind == Kind::day || rule.kind == Kind::time || rule.kind == Kind::moment;
    require(!has_shape || kept.starts_with(text), "a day and a time are those that were typed");
    const bool is_number = rule.kind == Kind::number && !text.empty();
    require(
        !is_number || std::strtod(kept.c_str(), nullptr) == std::strtod(std::string(text).c_str(), nullptr),
        "so is a number");
    const auto again = value_of(rule, kept);
    // Of ".5" a column may hold no more than that: "0.5" has a character more.
    require(again ? *again == *value : rule.kind == Kind::number,
            "a value that is typed as it is kept is the same");
}

void press(CellInput& cell, Input& input) {
    switch (input.below(12)) {
        case 0:
            return cell.backspace();
        case 1:
            return cell.remove();
        case 2:
            return cell.left();
        case 3:
            return cell.right();
        case 4:
            return cell.home();
        case 5:
            return cell.end();
        case 6:
            return cell.make_null();
        case 7:
            return cell.insert(U"\u00E9\u20AC\U0001F600\u0301"[input.below(4)]);
        default:
            return cell.insert(static_cast<char32_t>(input.below(128)));
    }
}

void check_cell(const CellRule& rule, const CellInput& cell) {
    require(cell.text().starts_with(cell.before()), "the cursor stands in the text");
    require(typed::holds_utf8(cell.before()), "the cursor stands between characters");
    require(!cell.is_null() || cell.text().empty(), "NULL has no text");
    if (rule.kind == Kind::text && rule.width > 0 && cell.is_changed())
        require(tool::count_characters(cell.text()) <= rule.width, "a text is no longer than its column");
    try {
        const CellValue value = cell.value();
        require(cell.is_null() == std::holds_alternative<std::monostate>(value) || cell.text().empty(),
                "NULL is what was made so");
    } catch (const tool::Failure& failure) {
        require(!failure.message.empty(), "what is no value is said to be none");
    }
}

}  // namespace
}  // namespace zmfb::fuzz

void zmfb::fuzz::try_input(Input& input) {
    const tool::browse::CellRule rule = rule_of(input);
    tool::Cell before;
    if (input.flag()) before = "";
    tool::browse::CellInput cell(rule, before);
    while (!input.at_end()) {
        press(cell, input);
        check_cell(rule, cell);
    }
    check_value(rule, cell.text());
}
