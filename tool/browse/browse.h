/// A table on the screen: what is shown around its rows, and what each key does.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "tool/browse/editor.h"
#include "tool/browse/grid.h"
#include "tool/browse/screen.h"
#include "tool/session.h"

namespace zmfb::tool::browse {

class Browse;

/// What a key does, and what F1 says of it.
struct Binding {
    std::vector<Key> keys;
    std::string_view shown;         ///< "PgUp PgDn"
    std::string_view help;          ///< in words
    void (Browse::*action)() = {};  ///< none for what moves
};

class Browse {
  public:
    /// How it was left: Esc goes back to where it was opened from, q ends the tool.
    enum class Left { stays, back, quit };

    /// What Enter does with the row of a number, in the place of showing a value.
    using Open = std::function<Left(std::int64_t number)>;

    /// Shows the rows of `source`, called `title`.
    /// They are read again every so often, never for 0.
    Browse(Screen& screen, Session& session, Source& source, std::string title, std::chrono::seconds every,
           Open open = {});

    /// Until it is left. Throws Failure when the connection is lost or the table has gone.
    Left run();

    /// @{
    /// For what asks and edits on top of the rows.
    Screen& screen() { return screen_; }
    /// Shows everything, with what `over` puts on top of the rows, and waits a moment for a key.
    Key next_key(const std::function<void()>& over = {});
    /// Words for the last line, until the next key of the rows.
    void say(const std::string& words, bool is_problem = false) { message_ = {words, is_problem}; }
    void say_problem(const std::string& words) { say(words, true); }
    /// Of a holder of locks whose process is dead that, and how they are freed; "" of others.
    [[nodiscard]] std::string when_dead(const Holder& holder);
    /// Says what goes wrong in some work; .F. then. Throws only what ends it all.
    bool attempt(const std::function<void()>& work);
    /// @}

  private:
    [[nodiscard]] std::vector<Binding> bindings() const;

    void draw();
    void draw_message();
    [[nodiscard]] std::string heading() const;
    [[nodiscard]] std::string status() const;
    [[nodiscard]] std::string hints() const;
    void take(Key typed);
    void require_there(const SqlError& error);
    [[nodiscard]] std::optional<std::string> ask(std::string_view question, const std::string& text = {});
    // No key has come for a moment.
    void tick();

    // What keys do.
    void help();
    void enter();
    void show_value();
    void next_order();
    void seek();
    void seek_on();
    void filter();
    void go_to_record();
    void export_rows();
    void back() { left_ = Left::back; }
    void quit() { left_ = Left::quit; }
    void reload();
    Editor& editor();
    void edit() { editor().edit(); }
    void form() { editor().form(); }
    void append() { editor().append(); }
    void remove() { editor().remove(); }
    void undo() { editor().undo(); }
    void show_locks();

    Screen& screen_;
    Session& session_;
    Source& source_;
    std::string title_;
    Open open_;
    Grid grid_;
    std::chrono::seconds every_;
    Watch watch_;
    std::optional<Editor> editor_;
    std::string filter_;
    std::string sought_;   // last, in the order
    int quiet_ticks_ = 0;  // since the last key
    struct Message {
        std::string words;
        bool is_problem = false;
    } message_;  // for the last line, until the next key
    Left left_ = Left::stays;
};

}  // namespace zmfb::tool::browse
