#include "tool/browse/browse.h"

#include <fmt/format.h>

#include <algorithm>

#include "tool/browse/cell_text.h"
#include "tool/browse/text_window.h"
#include "tool/interrupt.h"
#include "tool/name.h"
#include "zmfbconn/area_error.h"
#include "zmfbconn/cancel.h"

namespace zmfb::tool::browse {
namespace {

constexpr std::chrono::milliseconds between_ticks(200);
constexpr int lines_around = 3;  // the rows

std::string first_line(const std::string& text) { return text.substr(0, text.find('\n')); }

bool is_lost(const SqlError& error) { return error.sqlstate().starts_with("08"); }

}  // namespace

std::span<const Binding> Browse::bindings() {
    static const std::vector<Binding> all{
        {{}, "arrows", "a row or a column on"},
        {{}, "PgUp PgDn", "a page on"},
        {{}, "Home End", "the first, the last column"},
        {{}, "Ctrl-Home Ctrl-End", "the first, the last row; also Ctrl-PgUp and Ctrl-PgDn"},
        {{Key::f5}, "F5", "reads the rows anew and counts them", &Browse::reload},
        {{Key::f1, key(U'?')}, "F1 ?", "this list", &Browse::help},
        {{Key::escape}, "Esc", "back", &Browse::back},
        {{key(U'q'), Key::f10}, "q F10", "ends", &Browse::quit},
    };
    return all;
}

Browse::Browse(Screen& screen, Session& session, Source& source, std::string title)
    : screen_(screen), session_(session), source_(source), title_(std::move(title)), grid_(source) {}

Browse::Left Browse::run() {
    left_ = Left::stays;
    while (left_ == Left::stays) {
        attempt([this] { grid_.fit(screen_.rows() - lines_around); });
        draw();
        const Key typed = screen_.read(between_ticks);
        if (typed == Key::none) {
            attempt([this] { tick(); });
        } else if (typed != Key::resized) {
            message_ = {};
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
        say_problem(first_line(error.message()));
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
                                           : failure.message + ": " + first_line(failure.detail));
    }
}

void Browse::require_there(const SqlError& error) {
    if (is_lost(error))
        throw Failure{Exit::failed, fmt::format("the connection to {} is lost", session_.options().database),
                      error.message()};
}

void Browse::say_problem(const std::string& words) { message_ = {words, true}; }

void Browse::tick() {}

void Browse::reload() {
    grid_.window().forget_count();
    grid_.window().reload();
}

void Browse::help() {
    std::string text;
    for (const Binding& binding : bindings())
        text += fmt::format("{}  {}\n", fitted(binding.shown, 20), binding.help);
    text.pop_back();
    show_text(screen_, "Keys", text);
}

std::string Browse::heading() const { return " " + title_; }

std::string Browse::status() const {
    const Window& window = grid_.window();
    if (window.empty()) return " no rows";
    const ShownColumn& column = source_.columns()[grid_.column()];
    std::string text = fmt::format(" record {}", window.number());
    if (const auto place = window.place()) text += fmt::format("   row {}", *place);
    if (const auto total = window.total()) text += fmt::format(" of {}", *total);
    return text + fmt::format("   {} {}", Name(column.name).shown(), column.type_name);
}

void Browse::draw() {
    if (!screen_.is_large_enough()) return screen_.show();
    screen_.clear();
    const int width = screen_.columns(), rows = screen_.rows();
    grid_.draw(screen_, 1);
    screen_.put(0, 0, width, heading(), Look::bar);
    screen_.put(rows - 2, 0, width, status(), Look::bar);
    screen_.put(rows - 1, 0, width, message_.words.empty() ? " F1 keys   q ends" : " " + message_.words,
                message_.is_problem ? Look::problem : Look::plain);
    screen_.show();
}

}  // namespace zmfb::tool::browse
