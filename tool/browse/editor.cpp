#include "tool/browse/editor.h"

#include <fmt/format.h>

#include "tool/browse/browse.h"
#include "tool/browse/cell_text.h"
#include "tool/browse/form.h"
#include "tool/browse/prompt.h"
#include "tool/name.h"
#include "zmfbconn/area_error.h"

namespace zmfb::tool::browse {
namespace {

constexpr std::string_view keys_of_input = "Enter writes   Esc gives up   F4 NULL";

}  // namespace

Editor::Editor(Browse& browse, zmFBConn& connection, Source& source, Grid& grid, Watch& watch)
    : browse_(browse),
      source_(source),
      grid_(grid),
      watch_(watch),
      area_(*source.area()),
      changes_(area_, TableRules(connection, area_, source.structure())) {}

std::string Editor::in_use(std::int64_t number, const Holder& holder) {
    return fmt::format("record {} is in use by {}, seen since {}{}", number, holder.words(),
                       time_words(watch_.since(number, holder)), browse_.when_dead(holder));
}

// Asked for again each time that the screen has looked for a key.
std::optional<Held> Editor::hold(std::int64_t number, const std::function<void()>& over) {
    for (bool waits = false;;) {
        if (!area_.go(number)) {
            browse_.say_problem(fmt::format("record {} was deleted", number));
            grid_.window().reload();
            return std::nullopt;
        }
        try {
            Held held = area_.lock();
            browse_.say("");
            return held;
        } catch (const InUse& error) {
            browse_.say_problem(in_use(number, error.holder()) +
                                (waits ? "   waiting, Esc stops" : "   w waits, Esc does not"));
        }
        do {
            const Key typed = browse_.next_key(over);
            if (typed == Key::escape) {
                browse_.say("");
                return std::nullopt;
            }
            waits = waits || typed == key(U'w');
        } while (!waits);
    }
}

void Editor::draw(const CellInput& input, const Grid::Place& place) {
    constexpr int least = 12;
    Screen& screen = browse_.screen();
    const int width = std::min(std::max(place.width + 1, least), screen.columns());
    const int column = std::min(place.column, screen.columns() - width);
    const std::string_view before = end_within(input.before(), width);
    const std::size_t from = input.before().size() - before.size();
    screen.put(place.row, column, width, input.is_null() ? "NULL" : input.text().substr(from), Look::cell);
    screen.cursor_at(place.row, column + width_of(before));
}

bool Editor::type(std::size_t column, const Cell& value, const std::function<Grid::Place()>& place,
                  const std::function<bool(const CellInput&)>& commit) {
    CellInput input(changes_.rules().columns[column], value);
    browse_.say(std::string(keys_of_input));
    try {
        for (;;) {
            const Key typed = browse_.next_key([&] { draw(input, place()); });
            if (typed == Key::escape || (typed == Key::enter && !input.is_changed())) {
                browse_.say(input.is_changed() ? "given up, nothing was changed" : "");
                return false;
            }
            if (typed == Key::enter) {
                if (commit(input)) return true;
            } else if (typed == Key::f4 || browse::edit(input, typed)) {
                if (typed == Key::f4) input.make_null();
                const bool refused = !input.refusal().empty();
                browse_.say(refused ? input.refusal() : std::string(keys_of_input), refused);
            }
        }
    } catch (Failure& failure) {
        if (input.is_changed()) add_unwritten(failure, column, input.is_null() ? Cell() : input.text());
        throw;
    }
}

void Editor::add_unwritten(Failure& failure, std::size_t column, const Cell& text) const {
    failure.detail += fmt::format("\nnot written: {} = {}", Name(source_.columns()[column].name).shown(),
                                  text.value_or("NULL"));
}

std::string Editor::why_not(std::size_t column) const {
    const TableRules& rules = changes_.rules();
    if (rules.columns[column].kind != CellRule::Kind::none) return "";
    return fmt::format(
        "{} {}", Name(source_.columns()[column].name).shown(),
        rules.computed[column] ? "is computed by the database" : "is of a type that is not typed here");
}

void Editor::edit() {
    const std::size_t column = grid_.column();
    const std::int64_t number = grid_.window().number();
    if (number == 0) return browse_.say("there is no record: Ins adds one");
    if (const std::string words = why_not(column); !words.empty()) return browse_.say_problem(words);
    std::optional<Held> held = hold(number);
    if (!held) return;
    const auto in_cell = [&]() -> Grid::Place {
        if (grid_.window().number() == number) return grid_.current_cell();
        return {browse_.screen().rows() - 2, 0, browse_.screen().columns() - 1};
    };
    grid_.window().refresh();
    const bool written = type(column, source_.whole(number, column), in_cell, [&](const CellInput& input) {
        return browse_.attempt([&] { changes_.update(*held, {{column, input.value()}}); });
    });
    if (!written) return;
    held.reset();
    browse_.say("written   u takes it back");
    grid_.window().refresh();
}

void Editor::form() {
    if (const std::int64_t number = grid_.window().number(); number != 0) Form(*this, number).run();
    grid_.window().refresh();
}

void Editor::append() {
    (void)area_.append();  // whether one may be added
    Form added(*this, 0);
    added.run();
    grid_.window().forget_count();
    if (added.number() == 0) return grid_.window().refresh();
    if (grid_.window().go(added.number())) return;
    browse_.say(
        fmt::format("record {} is added, and the filter leaves it out   u takes it back", added.number()));
    grid_.window().reload();
}

bool Editor::agrees(const std::string& question, const std::function<void()>& over) {
    browse_.say(question + "   y n");
    for (;;) {
        const Key typed = browse_.next_key(over);
        const bool agreed = typed == key(U'y') || typed == key(U'Y');
        if (!agreed && typed != Key::escape && typed != key(U'n') && typed != key(U'N')) continue;
        browse_.say("");
        return agreed;
    }
}

void Editor::remove() {
    const std::int64_t number = grid_.window().number();
    if (number == 0) return browse_.say("there is no record");
    std::optional<Held> held = hold(number);
    if (!held) return;
    const std::string for_good = changes_.rules().is_whole ? "" : " It cannot be taken back.";
    if (!agrees(fmt::format("Delete record {}?{}", number, for_good))) return;
    changes_.remove(*held);
    held.reset();
    browse_.say(fmt::format("record {} is deleted", number));
    grid_.window().forget_count();
    grid_.window().reload();
}

void Editor::undo() {
    const Changes::Undone undone = changes_.undo();
    browse_.say(undone.words);
    grid_.window().forget_count();
    if (!grid_.window().go(undone.number)) grid_.window().reload();
}

}  // namespace zmfb::tool::browse
