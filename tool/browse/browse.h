/// A table on the screen: what is shown around its rows, and what each key does.
#pragma once

#include <functional>
#include <memory>
#include <span>
#include <string>
#include <vector>

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

    /// Shows the rows of `source`, called `title`.
    Browse(Screen& screen, Session& session, Source& source, std::string title);

    /// Until it is left. Throws Failure when the connection is lost or the table has gone.
    Left run();

  private:
    static std::span<const Binding> bindings();

    void draw();
    [[nodiscard]] std::string heading() const;
    [[nodiscard]] std::string status() const;
    void take(Key typed);
    void attempt(const std::function<void()>& work);
    void say_problem(const std::string& words);
    void require_there(const SqlError& error);
    /// No key has come for a while.
    void tick();

    void help();
    void back() { left_ = Left::back; }
    void quit() { left_ = Left::quit; }
    void reload();

    Screen& screen_;
    Session& session_;
    Source& source_;
    std::string title_;
    Grid grid_;
    struct Message {
        std::string words;
        bool is_problem = false;
    } message_;  // for the last line, until the next key
    Left left_ = Left::stays;
};

}  // namespace zmfb::tool::browse
