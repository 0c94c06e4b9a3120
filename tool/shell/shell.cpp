#include "tool/shell/shell.h"

#include <fmt/format.h>

#include <chrono>
#include <cstdio>
#include <exception>
#include <new>
#include <optional>
#include <utility>

#include "host/text.h"
#include "tool/calls.h"
#include "tool/counted.h"
#include "tool/in_the_way.h"
#include "tool/interrupt.h"
#include "tool/json.h"
#include "tool/output.h"
#include "tool/rows/shown_text.h"
#include "tool/say.h"
#include "tool/shell/names.h"
#include "tool/shell/rest.h"
#include "tool/sql.h"
#include "tool/suggest.h"
#include "zmfbconn/cancel.h"
#include "zmfbconn/database.h"

namespace zmfb::tool {
namespace {

using Clock = std::chrono::steady_clock;

double seconds_since(Clock::time_point start) {
    return std::chrono::duration<double>(Clock::now() - start).count();
}

constexpr std::size_t longest_shown = 60;  // of what was typed, in a message

constexpr std::string_view usual_advice =
    "SQL ends with \";\", a call has parentheses, a command begins with a dot: .help shows them.";

// Words that other tools know, and what to do here.
std::string_view advice_on(std::string_view word) {
    if (word == "show" || word == "describe" || word == "desc") {
        return ".tables lists the tables, .struct shows one of them.";
    }
    return usual_advice;
}

}  // namespace

void Shell::fail(std::string_view message, std::string_view detail, std::string_view hint) {
    ++failures_;
    std::fflush(stdout);
    print_error(message, detail, hint, begun_place_.line == 0 ? place_ : begun_place_);
}

// Runs one input and prints how it failed, if it did. What ends the shell comes through.
void Shell::guarded(const std::function<void()>& run) {
    const std::size_t raised_before = session_.raised().size();
    const Clock::time_point start = Clock::now();
    std::optional<ControlC> ends_this_only;
    if (interactive_) ends_this_only.emplace();
    std::string said;
    try {
        run();
    } catch (const Failure& failure) {
        said = failure.detail;
        if (ending_signal() != 0 || std::ferror(stdout) != 0) throw;
        if (failure.message.empty()) {
            ++failures_;  // a pager that was ended, which is nothing to talk about
        } else if (interrupted()) {
            fail(interrupted_message,
                 failure.message == interrupted_message ? failure.detail : failure.message);
        } else {
            fail(failure.message, failure.detail, failure.hint);
        }
    } catch (const Cancelled&) {
        if (ending_signal() != 0) throw;
        fail(interrupted_message);
    } catch (const std::bad_alloc&) {
        ++failures_;
        print_out_of_memory();
    } catch (const std::exception& problem) {
        if (std::ferror(stdout) != 0) throw;
        fail(problem.what());
    }
    if (session_.raised().size() != raised_before) ++failures_;
    flush_output();
    if (session_.let_go_when_lost(said)) ++failures_;
    if (timer_) say("time: {:.3f} s\n", seconds_since(start));
}

void Shell::take(const std::string& line) {
    if (inputs_.begun().size() + line.size() >= LineInput::longest) {
        fail(fmt::format("a statement of more than {} bytes", LineInput::longest));
        done_ = !interactive_;  // what comes next may be in the middle of it
        return forget();
    }
    if (line.find('\0') != std::string::npos) {
        fail("the line has a zero byte, which no statement and no call may have");
        return forget();
    }
    if (!waiting()) begun_place_ = place_;
    left_ = inputs_.take(line, [this](Input kind, const std::string& text) {
        const std::size_t failures = failures_;
        take_input(kind, text);
        begun_place_ = place_;
        return !has_to_stop(failures);
    });
    if (!waiting()) begun_place_ = {};
}

void Shell::take_input(Input kind, const std::string& text) {
    if (kind == Input::dot_command) return run_dot_command(text);
    if (kind == Input::call) return guarded([&] { call_method(text); });
    if (kind == Input::statement) return guarded([&] { run_one(text); });
    const std::string word = first_word(text);
    if (word == "quit" || word == "exit" || word == "help") return run_dot_command("." + text);
    const std::string_view advice = advice_on(word);
    const std::string guess = advice == usual_advice ? did_you_mean(word, beginnings()) : "";
    const std::string shown = cut_to(word.empty() ? text : word, longest_shown);
    fail(fmt::format("\"{}\" begins neither SQL nor a call{}", shown, guess), advice);
}

void Shell::forget() {
    inputs_.forget();
    begun_place_ = {};
}

void Shell::run_one(const std::string& typed) {
    const std::string statement = with_area(typed, [this] { return area_literal(); });
    const Step step = step_of(statement);
    if (step != Step::none) return change_transaction(step);
    if (is_set_term(statement)) {
        throw Failure{
            Exit::failed, "there is no SET TERM",
            "A body from BEGIN to END is one statement, and all end with \";\": leave the other mark out."};
    }
    if (is_about_a_savepoint(statement) && !session_.in_transaction())
        throw Failure{Exit::failed, "there is no transaction", "begin; opens one."};
    const RowOutput output{mode_, "", ".mode line", pages_};
    if (is_query(statement)) return run_query(session_, statement, output);
    const Clock::time_point start = Clock::now();
    const std::optional<std::int64_t> changed = run_statement(session_, statement, output);
    tables_.reset();
    if (!changed) return;
    fmt::print("done: {}{}", action_of(statement), changes_of(statement, *changed));
    if (interactive_) fmt::print(", {:.3f} s", seconds_since(start));
    fmt::print("\n");
}

void Shell::call_method(const std::string& line) {
    const Expression call = parse_call(line.substr(0, line.find_last_not_of(" \t\r;") + 1));
    if (!is_method(call.method)) {
        fail(fmt::format("there is no method {}{}", cut_to(call.method, longest_shown),
                         did_you_mean(call.method, method_names())));
        return;
    }
    session_.connection();
    if (line.find(":area") != std::string::npos) (void)area_literal();
    const host::Value result = evaluate(session_, call);
    tables_.reset();
    fmt::print("{}\n", mode_ == Mode::json ? json_line(to_json(result)) : to_literal(result));
    if (interrupted()) throw Failure{ending_status(), interrupted_message, who_is_in_the_way(session_, "")};
    if (!is_failure_text(result)) return;
    const std::string said = last_engine_message(), who = who_is_in_the_way(session_, said);
    throw Failure{Exit::failed, "the statement of the call failed", who.empty() ? said : said + "\n" + who};
}

void Shell::take_all(LineInput& in, const std::string& name) {
    const Place outer = place_;
    int number = 1;
    for (auto line = next_line(in); line && !done_; line = next_line(in)) {
        require_uninterrupted();
        place_ = {name, number++};
        if (line->ends_with('\r')) line->pop_back();
        const std::size_t failures = failures_;
        left_.clear();
        take(*line);
        if (!has_to_stop(failures)) continue;
        say_what_is_left(in);
        forget();
        break;
    }
    if (waiting()) fail("the statement does not end with \";\"");
    forget();
    place_ = outer;
}

void Shell::take_given(const std::vector<std::string>& inputs) {
    for (std::size_t i = 0; i < inputs.size() && !done_; ++i) {
        require_uninterrupted();
        const std::size_t failures = failures_;
        take_lines(inputs[i], fmt::format("-c {}", i + 1));
        if (!has_to_stop(failures)) continue;
        const std::size_t left = inputs.size() - i - 1;
        say("stopped in -c {}{}\n", i + 1, left == 0 ? "" : fmt::format("; not run: {} more of them", left));
        return;
    }
}

// The last statement does without its ";".
void Shell::take_lines(std::string_view text, const std::string& name) {
    const std::size_t failures = failures_;
    int number = 1;
    for (std::size_t start = 0; start < text.size() && !done_ && !has_to_stop(failures);) {
        const std::size_t end = std::min(text.find('\n', start), text.size());
        place_ = {name, number++};
        take(std::string(text.substr(start, end - start)));
        start = end + 1;
    }
    if (waiting()) take(";");
    if (waiting()) fail("the statement does not end");
    forget();
    place_ = {};
}

bool Shell::has_to_stop(std::size_t failures_before) const {
    return stops_on_error_ && failures_ != failures_before;
}

void Shell::say_what_is_left(LineInput& in) {
    const std::string where = place_.file.empty() ? "" : place_.file + " ";
    if (!in.is_file()) return say("stopped in {}line {}; what follows was not run\n", where, place_.line);
    const Rest rest = count_rest(in, left_);
    if (rest.inputs == 0) return say("stopped in {}line {}, the last\n", where, place_.line);
    say("stopped in {}line {}; not run: {}, {} behind it\n", where, place_.line,
        counted(rest.inputs, "statement, call or command", "statements, calls and commands"),
        counted(rest.lines, "line", "lines"));
}

std::string Shell::area_literal() {
    session_.connection();
    const host::Value area = evaluate(session_, area_call());
    area_ = area.string();
    return host::strtran(area, "'", "''").string();
}

// What can be read no further is at its end.
std::optional<std::string> Shell::next_line(LineInput& in) {
    try {
        return done_ ? std::nullopt : in.next();
    } catch (const Failure& failure) {
        if (interrupted()) throw;
        fail(failure.message, failure.detail, failure.hint);
        return std::nullopt;
    }
}

}  // namespace zmfb::tool
