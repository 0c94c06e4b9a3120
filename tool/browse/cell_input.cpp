#include "tool/browse/cell_input.h"

#include <utility>

namespace zmfb::tool::browse {
namespace {

using Kind = CellRule::Kind;

std::string utf8_of(char32_t character) {
    const auto code = static_cast<unsigned>(character);
    const auto more = [code](unsigned shift) { return static_cast<char>(0x80U | ((code >> shift) & 0x3FU)); };
    if (code < 0x80) return {static_cast<char>(code)};
    if (code < 0x800) return {static_cast<char>(0xC0U | code >> 6U), more(0)};
    if (code < 0x10000) return {static_cast<char>(0xE0U | code >> 12U), more(6), more(0)};
    return {static_cast<char>(0xF0U | code >> 18U), more(12), more(6), more(0)};
}

bool goes_on(char byte) { return (static_cast<unsigned char>(byte) & 0xC0U) == 0x80U; }

bool has_shape(Kind kind) { return kind == Kind::day || kind == Kind::time || kind == Kind::moment; }

}  // namespace

CellInput::CellInput(CellRule rule, const Cell& value)
    : rule_(rule), text_(value.value_or("")), is_null_(!value) {
    if (rule_.kind == Kind::logical && !text_.empty()) text_ = text_[0] == 't' || text_[0] == 'T' ? "T" : "F";
    cursor_ = text_.size();
}

std::size_t CellInput::next() const {
    std::size_t at = cursor_ + (cursor_ < text_.size() ? 1 : 0);
    while (at < text_.size() && goes_on(text_[at])) ++at;
    return at;
}

std::size_t CellInput::previous() const {
    std::size_t at = cursor_ - (cursor_ > 0 ? 1 : 0);
    while (at > 0 && goes_on(text_[at])) --at;
    return at;
}

// Of a day that is mended in the middle, what stands behind the cursor need not fit yet.
void CellInput::take(std::string text, std::size_t cursor) {
    const std::string_view begun = text;
    refusal_ = why_not(rule_, has_shape(rule_.kind) ? begun.substr(0, cursor) : begun);
    if (!refusal_.empty()) return;
    text_ = std::move(text);
    cursor_ = cursor;
    is_null_ = false;
    is_changed_ = true;
}

void CellInput::insert(char32_t character) {
    const std::string typed = utf8_of(character);
    if (rule_.kind == Kind::logical) return take(typed, typed.size());
    take(text_.substr(0, cursor_) + typed + text_.substr(cursor_), cursor_ + typed.size());
}

void CellInput::backspace() {
    refusal_.clear();
    if (cursor_ == 0) return;
    const std::size_t from = previous();
    text_.erase(from, cursor_ - from);
    cursor_ = from;
    is_changed_ = true;
}

void CellInput::remove() {
    refusal_.clear();
    if (cursor_ == text_.size()) return;
    text_.erase(cursor_, next() - cursor_);
    is_changed_ = true;
}

void CellInput::left() { cursor_ = previous(); }
void CellInput::right() { cursor_ = next(); }
void CellInput::home() { cursor_ = 0; }
void CellInput::end() { cursor_ = text_.size(); }

void CellInput::make_null() {
    refusal_ = rule_.nullable ? "" : "the column takes no NULL";
    if (!refusal_.empty()) return;
    text_.clear();
    cursor_ = 0;
    is_null_ = is_changed_ = true;
}

CellValue CellInput::value() const {
    if (is_null_) return std::monostate();
    return typed_value(rule_, text_);
}

}  // namespace zmfb::tool::browse
