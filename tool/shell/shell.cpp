#include "tool/shell/shell.h"

#include <fmt/format.h>

#include <chrono>
#include <cstdio>
#include <exception>

#include "tool/interrupt.h"
#include "tool/json.h"
#include "tool/shell/names.h"
#include "tool/shell/statement.h"
#include "tool/sql.h"
#include "tool/suggest.h"

namespace zmfb::tool {
namespace {

using Clock = std::chrono::steady_clock;

double seconds_since(Clock::time_point start) {
    return std::chrono::duration<double>(Clock::now() - start).count();
}

bool is_blank(std::string_view text) { return input_of(text) == Input::nothing; }

constexpr std::string_view usual_advice =
    "SQL ends with \";\", a call has parentheses, a command begins with a dot: .help shows them.";

// Words that other tools know, and what to do here.
std::string_view advice_on(std::string_view word) {
    if (word == "commit" || word == "rollback" || word == "savepoint") {
        return "Every statement has a transaction of its own. For several in one: starttransaction(), "
               "cachedupdate(), commitchanges().";
    }
    if (word == "show" || word == "describe" || word == "desc") {
        return ".tables lists the tables, .struct shows one of them.";
    }
    return usual_advice;
}

}  // namespace

void Shell::fail(std::string_view message, std::string_view detail, std::string_view hint) {
    failed_ = true;
    std::fflush(stdout);
    const std::string& place = begun_place_.empty() ? place_ : begun_place_;
    print_error(place.empty() ? std::string(message) : fmt::format("{}: {}", place, message), detail, hint);
}

// Runs one input and prints how it failed, if it did.
void Shell::guarded(const std::function<void()>& run) {
    const std::size_t raised_before = session_.raised().size();
    const Clock::time_point start = Clock::now();
    try {
        run();
    } catch (const Failure& failure) {
        fail(failure.message, failure.detail, failure.hint);
    } catch (const std::exception& problem) {
        fail(problem.what());
    }
    if (session_.raised().size() != raised_before) failed_ = true;
    std::fflush(stdout);
    if (timer_) fmt::print(stderr, "time: {:.3f} s\n", seconds_since(start));
}

void Shell::take(const std::string& line) {
    if (waiting()) {
        begun_ += "\n" + line;
        return take_statements();
    }
    const std::string word = first_word(line);
    switch (input_of(line)) {
        case Input::nothing:
            return;
        case Input::dot_command:
            return run_dot_command(line);
        case Input::call:
            return guarded([&] { call_method(line); });
        case Input::statement:
            begun_ = line;
            begun_place_ = place_;
            return take_statements();
        case Input::unknown:
            break;
    }
    if (word == "quit" || word == "exit" || word == "help") return run_dot_command("." + line);
    const std::string_view advice = advice_on(word);
    const std::string guess = advice == usual_advice ? did_you_mean(word, beginnings()) : "";
    fail(fmt::format("\"{}\" begins neither SQL nor a call{}", word.empty() ? line : word, guess), advice);
}

void Shell::take_statements() {
    for (auto end = end_of_statement(begun_); end; end = end_of_statement(begun_)) {
        const std::string statement = begun_.substr(0, *end - 1);
        begun_.erase(0, *end);
        guarded([&] { run_one(statement); });
        begun_place_ = place_;
    }
    if (is_blank(begun_)) forget();
    if (!waiting()) begun_place_.clear();
}

void Shell::run_one(std::string_view statement) {
    if (is_blank(statement)) return;
    if (is_query(statement)) {
        const InterruptWatch watch;  // Ctrl-C ends the rows, and not the shell
        return run_query(session_, std::string(statement), {mode_, "", ".mode line"});
    }
    const Clock::time_point start = Clock::now();
    run_statement(session_, std::string(statement));
    tables_.reset();
    fmt::print("done: {}", action_of(statement));
    if (interactive_) fmt::print(", {:.3f} s", seconds_since(start));
    fmt::print("\n");
}

void Shell::call_method(const std::string& line) {
    const Call call = parse_call(line.substr(0, line.find_last_not_of(" \t\r;") + 1));
    if (!is_method(call.method)) {
        fail(fmt::format("there is no method {}{}", call.method, did_you_mean(call.method, method_names())));
        return;
    }
    const Value result = session_.connection().call_with(call.method, host::Args(call.arguments));
    tables_.reset();
    fmt::print("{}\n", mode_ == Mode::json ? json_line(to_json(result)) : to_literal(result));
}

void Shell::take_all(std::istream& in, const std::string& name) {
    const std::string outer = place_;
    std::string line;
    for (int number = 1; !done_ && std::getline(in, line); ++number) {
        place_ = fmt::format("{}{}line {}", name, name.empty() ? "" : " ", number);
        if (line.ends_with('\r')) line.pop_back();
        take(line);
    }
    if (waiting()) fail("the statement does not end with \";\"");
    forget();
    begun_place_.clear();
    place_ = outer;
}

}  // namespace zmfb::tool
