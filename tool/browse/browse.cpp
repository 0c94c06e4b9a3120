#include "tool/browse/browse.h"

#include <fmt/format.h>

#include <algorithm>

#include "tool/browse/cell_text.h"
#include "tool/browse/idle.h"
#include "tool/browse/lock_view.h"
#include "tool/browse/prompt.h"
#include "tool/browse/text_window.h"
#include "tool/catalog.h"
#include "tool/interrupt.h"
#include "tool/name.h"
#include "zmfbconn/area_error.h"
#include "zmfbconn/cancel.h"

namespace zmfb::tool::browse {
namespace {

constexpr std::chrono::milliseconds between_ticks(200);
constexpr int lines_around = 3;  // the rows

// What the engine said, in one line and without what says nothing of this case. Nobody sees the statement
// that its positions are of.
std::string in_one_line(std::string_view message) {
    constexpr std::string_view general[] = {"Dynamic SQL Error",
                                            "arithmetic exception, numeric overflow, or string truncation"};
    std::string line;
    while (!message.empty()) {
        const std::string_view part = message.substr(0, message.find('\n'));
        const std::string_view said = part.substr(0, part.find(" - line "));
        if (std::ranges::find(general, said) == std::end(general) && !said.starts_with("SQL error code") &&
            !said.starts_with("At line "))
            line += fmt::format("{}{}", line.empty() ? "" : "; ", said);
        message.remove_prefix(std::min(message.size(), part.size() + 1));
    }
    return line;
}

// Nothing goes on, whatever is shown on top of the rows.
struct Lost : Failure {};

}  // namespace

std::vector<Binding> Browse::bindings() const {
    std::vector<Binding> all{
        {{}, "arrows", "a row or a column on"},
        {{}, "PgUp PgDn", "a page on"},
        {{}, "Home End", "the first, the last column"},
        {{}, "Ctrl-Home Ctrl-End", "the first, the last row; also Ctrl-PgUp, Ctrl-PgDn"},
    };
    const auto add = [&](Key one, std::string_view shown, std::string_view help, void (Browse::*action)()) {
        all.push_back({{one}, shown, help, action});
    };
    if (open_) {
        add(Key::enter, "Enter", "opens the table", &Browse::enter);
    } else {
        if (source_.area() != nullptr) add(Key::enter, "Enter", "edits the cell in place", &Browse::edit);
        all.push_back({{key(U'v'), Key::enter}, "v", "the whole value", &Browse::enter});
        add(Key::f3, "F3", "the record as a form, which F2 writes", &Browse::form);
        add(Key::insert, "Ins", "adds a record", &Browse::append);
        add(Key::remove, "Del", "deletes the record, after a question", &Browse::remove);
        add(key(U'u'), "u", "takes the last change back", &Browse::undo);
        all.push_back({{}, "F4 w", "while one edits: NULL; waits for a record in use"});
    }
    if (source_.area() != nullptr) {
        add(key(U'o'), "o", "the next order", &Browse::next_order);
        add(key(U'/'), "/", "seeks a key in the order, a text by its beginning", &Browse::seek);
        add(key(U'n'), "n", "the next row with that key", &Browse::seek_on);
    }
    if (!open_) {
        add(key(U'f'), "f", "leaves in what fits a condition in SQL", &Browse::filter);
        add(key(U'g'), "g", source_.area() != nullptr ? "to a record by its number" : "to a row by its place",
            &Browse::go_to_record);
        add(key(U'e'), "e", "writes what is seen into a CSV or DBF file", &Browse::export_rows);
    }
    add(key(U'l'), "l", "locks and registrations, live", &Browse::show_locks);
    add(Key::f5, "F5", "reads the rows anew and counts them", &Browse::reload);
    all.push_back({{Key::f1, key(U'?')}, "F1 ?", "this list", &Browse::help});
    add(Key::escape, "Esc", "back", &Browse::back);
    all.push_back({{key(U'q'), Key::f10}, "q F10", "ends", &Browse::quit});
    return all;
}

Browse::Browse(Screen& screen, Session& session, Source& source, std::string title,
               std::chrono::seconds every, Open open)
    : screen_(screen),
      session_(session),
      source_(source),
      title_(std::move(title)),
      open_(std::move(open)),
      grid_(source),
      every_(every),
      watch_(session.connection(), source, grid_.window(), every) {}

Browse::Left Browse::run() {
    left_ = Left::stays;
    while (left_ == Left::stays) {
        const Key typed = next_key();
        if (typed == Key::none) continue;
        message_ = {};
        quiet_ticks_ = 0;
        attempt([&] { take(typed); });
    }
    return left_;
}

Key Browse::next_key(const std::function<void()>& over) {
    attempt([this] { grid_.fit(screen_.rows() - lines_around); });
    if (screen_.is_large_enough()) {
        draw();
        if (over) over();
        draw_message();
    }
    screen_.show();
    const Key typed = screen_.read(between_ticks);
    if (typed == Key::none) attempt([this] { tick(); });
    return typed == Key::resized ? Key::none : typed;
}

void Browse::take(Key typed) {
    if (grid_.move(typed)) return;
    for (const Binding& binding : bindings()) {
        if (binding.action != nullptr && std::ranges::find(binding.keys, typed) != binding.keys.end())
            return (this->*binding.action)();
    }
    message_ = {"F1 lists the keys", false};
}

std::string Browse::when_dead(const Holder& holder) {
    return tool::when_dead(session_.connection(), holder, "unlock " + Name(holder.table).shown());
}

// What was shown stays, unless there is nothing to show any more.
bool Browse::attempt(const std::function<void()>& work) {
    const ControlC ends_what_runs;
    try {
        work();
        return true;
    } catch (const SqlError& error) {
        if (ending_signal() != 0) throw;
        if (!interrupted()) require_there(error);
        say_problem(interrupted() ? "given up" : in_one_line(error.message()));
    } catch (const Cancelled&) {
        if (ending_signal() != 0) throw;
        say_problem("given up");
    } catch (const AreaError& error) {
        say_problem(error.what());
    } catch (const InUse& error) {
        say_problem(error.what() + when_dead(error.holder()));
    } catch (const Lost&) {
        throw;
    } catch (const Failure& failure) {
        if (ending_signal() != 0 || failure.status == Exit::not_attached) throw;
        say_problem(failure.detail.empty() ? failure.message
                                           : failure.message + ": " + in_one_line(failure.detail));
    }
    return false;
}

// A connection that is lost ends the list of tables, too; a table that has gone does not.
void Browse::require_there(const SqlError& error) {
    const Lost lost{{Exit::failed, fmt::format("the connection to {} is lost", session_.options().database),
                     error.message()}};
    if (tells_of_a_lost_connection(error.message())) throw lost;
    const std::optional<Name> table = source_.table();
    bool has_gone = false;
    try {
        has_gone = table && !is_there(session_.connection(), ObjectKind::relation, *table);
    } catch (const Failure&) {  // it cannot even be asked
        throw lost;
    }
    if (has_gone)
        throw Failure{Exit::failed, fmt::format("{} is not there any more", table->shown()), error.message()};
}

// What takes long is done when nobody types, and given up when somebody does.
void Browse::tick() {
    watch_.tick();
    constexpr int quiet = 2;
    if (++quiet_ticks_ < quiet || grid_.window().is_counted()) return;
    do_while_idle([this] { grid_.window().count(); });
}
// Made when it is wanted: it asks what the columns take.
Editor& Browse::editor() {
    if (source_.area() == nullptr)
        throw Failure{Exit::failed, "only records of the driver's tables are changed here"};
    if (!editor_) editor_.emplace(*this, session_.connection(), source_, grid_, watch_);
    return *editor_;
}

void Browse::show_locks() { browse::show_locks(screen_, session_.connection(), every_); }

void Browse::reload() {
    source_.read_anew();
    grid_.window().forget_count();
    grid_.window().reload();
}

std::optional<std::string> Browse::ask(std::string_view question, const std::string& text) {
    return browse::ask(
        screen_,
        [this] {
            if (screen_.is_large_enough()) draw();
        },
        question, text);
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
    if (const Lock* const lock = watch_.table_lock(); lock != nullptr)
        text += fmt::format("   locked by {}{}", lock->owner.holder.words(),
                            lock->owner.alive == Alive::no ? ", which is dead" : "");
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
    screen_.clear();
    const int width = screen_.columns(), rows = screen_.rows();
    grid_.draw(screen_, 1, watch_);
    screen_.put(0, 0, width, heading(), Look::bar);
    screen_.put(rows - 2, 0, width, status(), Look::bar);
}

// Long words take lines above the last one, too.
void Browse::draw_message() {
    const int width = screen_.columns();
    const std::vector<std::string> lines =
        lines_of(message_.words.empty() ? hints() : message_.words, width - 1);
    const int count = std::min(static_cast<int>(lines.size()), screen_.rows() / 2);
    for (int i = 0; i < count; ++i)
        screen_.put(screen_.rows() - count + i, 0, width, " " + lines[static_cast<std::size_t>(i)],
                    message_.is_problem ? Look::problem : Look::plain);
}

}  // namespace zmfb::tool::browse
