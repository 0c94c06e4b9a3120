#include "tool/browse/form.h"

#include <fmt/format.h>

#include <algorithm>

#include "tool/browse/browse.h"
#include "tool/browse/cell_text.h"
#include "tool/browse/text_window.h"

namespace zmfb::tool::browse {
namespace {

constexpr int widest_name = 24;
constexpr std::string_view keys_of_form = "Enter edits a field   F2 writes   Esc gives up";

}  // namespace

Form::Form(Editor& editor, std::int64_t number)
    : editor_(editor), screen_(editor.browse().screen()), number_(number), is_new_(number == 0) {
    shown_.resize(editor_.source().columns().size(), "");
    read();
}

void Form::read() {
    if (is_new_) return;
    const std::optional<ShownRow> row = editor_.source().row(number_);
    if (!row) throw Failure{Exit::failed, fmt::format("record {} was deleted", number_)};
    shown_ = row->cells;
}

Grid::Place Form::place() const {
    int names = 0;
    for (const ShownColumn& column : editor_.source().columns())
        names = std::max(names, std::min(width_of(column.name), widest_name));
    const int at = names + 3;
    return {1 + static_cast<int>(field_ - top_), at, screen_.columns() - at - 1};
}

void Form::draw() {
    screen_.clear();
    const std::vector<ShownColumn>& columns = editor_.source().columns();
    const auto height = static_cast<std::size_t>(std::max(screen_.rows() - 2, 1));
    top_ = std::clamp(top_, field_ + 1 - std::min(field_ + 1, height), field_);
    screen_.put(0, 0, screen_.columns(),
                is_new_ ? " New record" : fmt::format(" Record {}{}", number_, held_ ? "   locked" : ""),
                Look::bar);
    const auto [row, at, width] = place();
    for (std::size_t i = top_; i < std::min(columns.size(), top_ + height); ++i) {
        const int line = 1 + static_cast<int>(i - top_);
        screen_.put(line, 1, at - 2, columns[i].name, Look::head);
        const Look look = line == row            ? Look::cell
                          : typed_.contains(i)   ? Look::changed
                          : !shown_[i]           ? Look::null
                          : columns[i].is_memo() ? Look::memo
                                                 : Look::plain;
        screen_.put(line, at, width, shown_[i] ? *shown_[i] : "NULL", look);
    }
}

void Form::move(Key typed) {
    const std::size_t last = shown_.size() - 1;
    const auto page = static_cast<std::size_t>(std::max(screen_.rows() - 3, 1));
    switch (typed) {
        case Key::up:
            field_ -= std::min<std::size_t>(field_, 1);
            break;
        case Key::down:
        case Key::tab:
            field_ = std::min(field_ + 1, last);
            break;
        case Key::page_up:
            field_ -= std::min(field_, page);
            break;
        case Key::page_down:
            field_ = std::min(field_ + page, last);
            break;
        case Key::home:
        case Key::top:
            field_ = 0;
            break;
        case Key::end:
        case Key::bottom:
            field_ = last;
            break;
        default:
            break;
    }
}

void Form::run() {
    Browse& browse = editor_.browse();
    browse.say(std::string(keys_of_form));
    try {
        while (!done_) {
            const Key typed = browse.next_key([this] { draw(); });
            if (typed == Key::none) continue;
            browse.say(std::string(keys_of_form));
            take(typed);
        }
    } catch (Failure& failure) {
        for (const auto& [field, value] : typed_) editor_.add_unwritten(failure, field, shown_[field]);
        throw;
    }
}

void Form::take(Key typed) {
    if (typed == Key::escape) {
        done_ = leave();
    } else if (typed == Key::enter) {
        editor_.browse().attempt([this] { edit(); });
    } else if (typed == Key::f2) {
        done_ = editor_.browse().attempt([this] { write(); });
    } else {
        move(typed);
    }
}

void Form::edit() {
    const ShownColumn& column = editor_.source().columns()[field_];
    if (column.is_memo() && !is_new_)
        return show_text(screen_, column.name, editor_.source().whole(number_, field_).value_or(""));
    if (const std::string why_not = editor_.why_not(field_); !why_not.empty())
        return editor_.browse().say_problem(why_not);
    if (!is_new_ && !held_) {
        held_ = editor_.hold(number_, [this] { draw(); });
        if (!held_) return;
        read();
    }
    // What is shown of a long text is its beginning.
    const bool is_shown_whole = is_new_ || typed_.contains(field_);
    const Cell before = is_shown_whole ? shown_[field_] : editor_.source().whole(number_, field_);
    const auto in_form = [this] {
        draw();
        return place();
    };
    editor_.type(field_, before, in_form, [&](const CellInput& input) {
        return editor_.browse().attempt([&] {
            typed_[field_] = input.value();
            shown_[field_] = input.is_null() ? std::nullopt : Cell(input.text());
            editor_.browse().say(std::string(keys_of_form));
        });
    });
}

void Form::write() {
    if (is_new_) {
        number_ = editor_.changes().append(typed_);
        editor_.browse().say(fmt::format("record {} is added   u takes it back", number_));
    } else if (typed_.empty()) {
        editor_.browse().say("");
    } else {
        editor_.changes().update(*held_, typed_);
        editor_.browse().say("written   u takes it back");
    }
}

bool Form::leave() {
    if (!typed_.empty() && !editor_.agrees("Give up what was typed?", [this] { draw(); })) {
        editor_.browse().say(std::string(keys_of_form));
        return false;
    }
    editor_.browse().say(typed_.empty() ? "" : "given up, nothing was changed");
    return true;
}

}  // namespace zmfb::tool::browse
