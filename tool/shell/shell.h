/// Statements, calls and dot-commands, a line at a time.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tool/line_input.h"
#include "tool/literal.h"
#include "tool/rows/row_writer.h"
#include "tool/session.h"
#include "tool/shell/inputs.h"
#include "zmfbconn/transaction.h"

namespace zmfb::tool {

/// Runs what the lines say and prints what comes of it. What fails is printed as an error, and the next
/// line is as good as any.
class Shell {
  public:
    struct Options {
        bool interactive = false;     ///< a person types the lines
        bool pages = true;            ///< rows may go through a pager
        bool stops_on_error = false;  ///< the lines of a script that are behind an error are not run
    };
    Shell(Session& session, const Options& options)
        : session_(session),
          interactive_(options.interactive),
          pages_(options.pages),
          stops_on_error_(options.stops_on_error) {}

    void take(const std::string& line);
    /// Takes all lines of `in`; errors name the line, and `name` before it if there is one.
    void take_all(LineInput& in, const std::string& name);

    /// Takes texts of one line or more, each of which ends what it begins; errors name "-c" and its number.
    void take_given(const std::vector<std::string>& inputs);

    /// Whether a statement has begun that has not ended yet.
    [[nodiscard]] bool waiting() const { return !inputs_.begun().empty(); }
    /// Forgets the statement that has begun.
    void forget();
    /// What a person is asked with for the next line; it shows whether a transaction is open.
    [[nodiscard]] std::string prompt();
    /// Asks what is to become of a transaction that is open. Returns .F. when the person stays.
    bool may_leave();
    /// At the end of all lines: rolls a transaction back that is open, which is a failure, and gives back
    /// what was locked for :area.
    void end();
    /// Whether it was told to end.
    [[nodiscard]] bool done() const { return done_; }
    /// Whether anything failed, or was raised, so far.
    [[nodiscard]] bool failed() const { return failures_ > 0; }

    /// What the word that begins at `start` of a line may be completed to.
    std::vector<std::string> candidates(std::string_view line, std::size_t start);

  private:
    struct DotCommand {
        std::string_view name;
        std::string_view arguments;
        std::string_view help;
        void (Shell::*run)(const std::vector<std::string>& words);
    };
    static const DotCommand dot_commands[];

    void take_input(Input kind, const std::string& text);
    std::optional<std::string> next_line(LineInput& in);
    void take_lines(std::string_view text, const std::string& name);
    [[nodiscard]] bool has_to_stop(std::size_t failures_before) const;
    void say_what_is_left(LineInput& in);
    void run_one(const std::string& typed);
    std::string area_literal();
    void change_transaction(Step step);
    void begin();
    void commit();
    void roll_back();
    void end_transaction(void (Transaction::*end)(), std::string_view how_it_failed, std::string_view done);
    void give_back(const std::string& area);
    void call_method(const std::string& line);
    void run_dot_command(const std::string& typed);
    [[nodiscard]] std::string in_dots(std::string_view line) const;
    void run_command(const std::vector<std::string>& words);
    const std::vector<std::string>& table_names();
    std::vector<std::string> words_for(std::string_view line, std::size_t start);
    void guarded(const std::function<void()>& run);
    void fail(std::string_view message, std::string_view detail = {}, std::string_view hint = {});

    void help(const std::vector<std::string>& words);
    void help_on(const std::string& name);
    void mode(const std::vector<std::string>& words);
    void timer(const std::vector<std::string>& words);
    void read(const std::vector<std::string>& words);
    void quit(const std::vector<std::string>& words);

    Session& session_;
    bool interactive_;
    bool pages_;
    bool stops_on_error_;
    Inputs inputs_;
    Place place_;        ///< where the input is from, for errors
    Place begun_place_;  ///< the same of the statement that has begun
    Mode mode_ = Mode::table;
    bool timer_ = false;
    std::optional<std::vector<std::string>> tables_;  ///< their names, until something may have changed them
    bool done_ = false;
    std::size_t failures_ = 0;
    std::string area_;  ///< the id that :area was; "" when nothing was done for it
    std::string left_;  ///< of the line in which a statement failed
    int depth_ = 0;     ///< of .read within .read
};

}  // namespace zmfb::tool
