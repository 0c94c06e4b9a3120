#include "tool/browse/browse.h"

#include <fmt/format.h>

#include <algorithm>

#include "tool/browse/cell_text.h"
#include "tool/browse/idle.h"
#include "tool/browse/prompt.h"
#include "tool/browse/text_window.h"
#include "tool/interrupt.h"
#include "tool/name.h"
#include "zmfbconn/area_error.h"
#include "zmfbconn/cancel.h"

namespace zmfb::tool::browse {
namespace {

constexpr std::chrono::milliseconds between_ticks(200);
constexpr int lines_around = 3;  // the rows

// What the engine said, in one line and without what says nothing of this case.
std::string in_one_line(std::string_view message) {
    constexpr std::string_view general[] = {"Dynamic SQL Error",
                                            "arithmetic exception, numeric overflow, or string truncation"};
    std::string line;
    while (!message.empty()) {
        const std::string_view part = message.substr(0, message.find('\n'));
        if (std::ranges::find(general, part) == std::end(general) && !part.starts_with("SQL error code"))
            line += fmt::format("{}{}", line.empty() ? "" : "; ", part);
        message.remove_prefix(std::min(message.size(), part.size() + 1));
    }
    return line;
}

bool is_lost(const SqlError& error) { return error.sqlstate().starts_with("08"); }

}  // namespace

std::vector<Binding> Browse::bindings() const {
    std::vector<Binding> all{
        {{}, "arrows", "a row or a column on"},
        {{}, "PgUp PgDn", "a page on"},
        {{}, "Home End", "the first, the last column"},
        {{}, "Ctrl-Home Ctrl-End", "the first, the last row; also Ctrl-PgUp, Ctrl-PgDn"},
        {{Key::enter, key(U'v')}, "Enter v", open_ ? "opens the table" : "the whole value", &Browse::enter},
    };
    const auto add = [&](Key one, std::string_view shown, std::string_view help, void (Browse::*action)()) {
        all.push_back({{one}, shown, help, action});
    };
    if (source_.area() != nullptr) {
        add(key(U'o'), "o", "the next order", &Browse::next_order);
        add(key(U'/'), "/", "seeks a key in the order, a text by its beginning", &Browse::seek);
        add(key(U'n'), "n", "the next row with that key", &Browse::seek_on);
    }
    if (!open_) {
        add(key(U'f'), "f", "leaves in what fits a condition in SQL", &Browse::filter);
        add(key(U'g'), "g", source_.area() != nullptr ? "to a record by its number" : "to a row by its place",
            &Browse::go_to_record);
    }
    add(Key::f5, "F5", "reads the rows anew and counts them", &Browse::reload);
    all.push_back({{Key::f1, key(U'?')}, "F1 ?", "this list", &Browse::help});
    add(Key::escape, "Esc", "back", &Browse::back);
    all.push_back({{key(U'q'), Key::f10}, "q F10", "ends", &Browse::quit});
    return all;
}

Browse::Browse(Screen& screen, Session& session, Source& source, std::string title, Open open)
    : screen_(screen),
      session_(session),
      source_(source),
      title_(std::move(title)),
      open_(std::move(open)),
      grid_(source) {}

Browse::Left Browse::run() {
    left_ = Left::stays;
    while (left_ == Left::stays) {
        attempt([this] { grid_.fit(screen_.rows() - lines_around); });
        show();
        const Key typed = screen_.read(between_ticks);
        if (typed == Key::none) {
            attempt([this] { tick(); });
        } else if (typed != Key::resized) {
            message_ = {};
            quiet_ticks_ = 0;
            attempt([&] { take(typed); });
        }
    }
    return left_;
}

void Browse::take(Key typed) {
    if (grid_.move(typed)) return;
    for (const Binding& binding : bindings()) {
        if (binding.action != nullptr && std::ranges::find(binding.keys, typed) != binding.keys.end())
            return (this->*binding.action)();
    }
    message_ = {"F1 lists the keys", false};
}

// What goes wrong is said, and what was shown stays, unless there is nothing to show any more.
void Browse::attempt(const std::function<void()>& work) {
    const ControlC ends_what_runs;
    try {
        work();
    } catch (const SqlError& error) {
        if (ending_signal() != 0) throw;
        if (interrupted()) return say_problem("given up");
        require_there(error);
        say_problem(in_one_line(error.message()));
    } catch (const Cancelled&) {
        if (ending_signal() != 0) throw;
        say_problem("given up");
    } catch (const AreaError& error) {
        say_problem(error.what());
    } catch (const InUse& error) {
        say_problem(error.what());
    } catch (const Failure& failure) {
        if (ending_signal() != 0 || failure.status == Exit::not_attached) throw;
        say_problem(failure.detail.empty() ? failure.message
                                           : failure.message + ": " + in_one_line(failure.detail));
    }
}

void Browse::require_there(const SqlError& error) {
    if (is_lost(error))
        throw Failure{Exit::failed, fmt::format("the connection to {} is lost", session_.options().database),
                      error.message()};
}

void Browse::say_problem(const std::string& words) { message_ = {words, true}; }

// What takes long is done when nobody types, and given up when somebody does.
void Browse::tick() {
    constexpr int quiet = 2;
    if (++quiet_ticks_ < quiet || grid_.window().is_counted()) return;
    do_while_idle([this] { grid_.window().count(); });
}

void Browse::reload() {
    source_.read_anew();
    grid_.window().forget_count();
    grid_.window().reload();
}

std::optional<std::string> Browse::ask(std::string_view question, const std::string& text) {
    return browse::ask(
        screen_, [this] { draw(); }, question, text);
}

void Browse::enter() {
    if (grid_.window().empty()) return;
    if (open_) {
        left_ = open_(grid_.window().number()) == Left::quit ? Left::quit : Left::stays;
    } else {
        show_value();
    }
}

void Browse::show_value() {
    const ShownColumn& column = source_.columns()[grid_.column()];
    const Cell value = source_.whole(grid_.window().number(), grid_.column());
    show_text(screen_, fmt::format("{} {}", Name(column.name).shown(), column.type_name),
              value.value_or("NULL"));
}

void Browse::help() {
    std::string text;
    for (const Binding& binding : bindings())
        text += fmt::format("{}  {}\n", fitted(binding.shown, 20), binding.help);
    text.pop_back();
    show_text(screen_, "Keys", text);
}

std::string Browse::heading() const {
    std::string text = " " + title_;
    if (Area* const area = source_.area(); area != nullptr && !area->order().empty())
        text += fmt::format("   order {}", area->order());
    if (!filter_.empty()) text += fmt::format("   where {}", filter_);
    return text;
}

std::string Browse::status() const {
    const Window& window = grid_.window();
    if (window.empty()) return " no rows";
    const ShownColumn& column = source_.columns()[grid_.column()];
    std::string text = source_.area() != nullptr ? fmt::format(" record {}  ", window.number()) : "";
    if (const auto place = window.place()) text += fmt::format(" row {}", *place);
    if (const auto total = window.total()) text += fmt::format(" of {}", *total);
    return text + fmt::format("   {} {}", Name(column.name).shown(), column.type_name);
}

std::string Browse::hints() const {
    if (open_) return "F1 keys   Enter opens   q ends";
    if (source_.area() == nullptr) return "F1 keys   f filter   g go to   v value   q ends";
    return "F1 keys   o order   / seek   f filter   g go to   q ends";
}

void Browse::draw() {
    if (!screen_.is_large_enough()) return;
    screen_.clear();
    const int width = screen_.columns(), rows = screen_.rows();
    grid_.draw(screen_, 1);
    screen_.put(0, 0, width, heading(), Look::bar);
    screen_.put(rows - 2, 0, width, status(), Look::bar);
    screen_.put(rows - 1, 0, width, " " + (message_.words.empty() ? hints() : message_.words),
                message_.is_problem ? Look::problem : Look::plain);
}

void Browse::show() {
    draw();
    screen_.show();
}

}  // namespace zmfb::tool::browse
