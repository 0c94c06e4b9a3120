// The shell over an invented engine: programs of statements and transactions, of which it is known what the
// engine has to be asked; and any lines, which come to the same from a script, from -c and typed.
//
// Methods are not called here, and of the commands only those run that ask nobody else.
#include <fmt/format.h>
#include <ibase.h>

#include <algorithm>
#include <cstdio>
#include <cstring>

#include "fuzz/fuzz.h"
#include "fuzz/invented_client.h"
#include "tool/calls.h"
#include "tool/shell/names.h"
#include "tool/shell/shell.h"

namespace zmfb::fuzz {
namespace {

// Words in a statement at which the engine fails.
constexpr std::string_view fails_prepared = "zq", fails_run = "zx", fails_fetched = "zf",
                           fails_committed = "zc", loses_connection = "zl";

bool has(std::string_view text, std::string_view word) { return text.find(word) != std::string_view::npos; }

std::string_view trimmed(std::string_view text) {
    constexpr std::string_view blanks = " \t\n\r";
    text.remove_prefix(std::min(text.find_first_not_of(blanks), text.size()));
    return text.substr(0, text.find_last_not_of(blanks) + 1);
}

using Events = std::vector<std::string>;

// Notes what it is asked; what fails has a "!" behind it.
class NotingEngine final : public InventedClient {
  public:
    Events events;

    std::string content_of(ISC_QUAD) override { return ""; }

  protected:
    ISC_STATUS failure(std::string_view call) override {
        if (call == "prepare" && has(text_, loses_connection)) return failed(isc_net_read_err);
        if (call == "prepare" && has(text_, fails_prepared)) return failed(isc_dsql_token_unk_err);
        const bool runs = call == "execute" || call == "open";
        if (runs && has(text_, fails_committed)) fails_committing_ = true;
        if (runs && has(text_, fails_run)) return failed(isc_deadlock);
        if (call == "fetch" && has(text_, fails_fetched)) return failed(isc_lock_conflict);
        if (call == "rollback") fails_committing_ = false;
        if (call != "commit" || !fails_committing_) return 0;
        fails_committing_ = false;
        events.emplace_back("commit");
        return failed(isc_deadlock);
    }
    void describe_statement(InventedStatement& statement) override {
        text_ = statement.text;
        events.push_back((statement.in_batch ? "batch: " : "own: ") + std::string(trimmed(text_)));
        statement.type = isc_info_sql_stmt_insert;
        if (!has(text_, "select")) return;
        statement.type = isc_info_sql_stmt_select;
        statement.has_cursor = true;
        statement.output.add({.field = "N", .alias = "N", .type = SQL_LONG});
    }
    bool fill_row(const InventedStatement& statement, const InventedMessage&, std::span<std::byte>) override {
        return statement.rows <= 2;
    }
    void transaction_is(std::string_view how) override { events.emplace_back(how); }

  private:
    ISC_STATUS failed(ISC_STATUS code) {
        events.back() += '!';
        return code;
    }

    std::string text_;  // of the statement that is at work
    bool fails_committing_ = false;
};

// While it lives, what is printed goes nowhere.
class Silence {
  public:
    Silence() : out_(std::exchange(stdout, nowhere())), err_(std::exchange(stderr, nowhere())) {}
    ~Silence() { stdout = out_, stderr = err_; }
    Silence(const Silence&) = delete;
    Silence& operator=(const Silence&) = delete;

  private:
    static std::FILE* nowhere() {
        static std::FILE* const opened = std::fopen("/dev/null", "w");
        return opened;
    }
    std::FILE *out_, *err_;
};

tool::Options options() {
    tool::Options made;
    made.database = "invented:shop.fdb";
    made.user = "SYSDBA";
    made.password_given = made.encoding_given = true;
    return made;
}

struct Outcome {
    Events events;
    bool failed = false;
};

enum class Way { script, given, typed };

void type(tool::Shell& shell, const std::string& text, Way way) {
    if (way == Way::given) return shell.take_given({text});
    if (way == Way::script) {
        tool::LineInput lines(scratch_file("script.sql", text));
        return shell.take_all(lines, "script.sql");
    }
    for (std::size_t start = 0; start < text.size() && !shell.done();) {
        const std::size_t end = std::min(text.find('\n', start), text.size());
        shell.take(text.substr(start, end - start));
        start = end + 1;
    }
}

Outcome outcome_of(const std::string& text, Way way, bool stops) {
    Outcome outcome;
    {
        NotingEngine engine;
        const Silence silence;
        tool::Session session(options());
        session.connection_to_any();
        tool::Shell shell(session, {.pages = false, .stops_on_error = stops});
        type(shell, text, way);
        shell.end();
        outcome = {engine.events, shell.failed()};
        if (session.in_transaction()) outcome.events.emplace_back("open");
        session.let_go();
        if (engine.events.size() > outcome.events.size()) outcome.events = engine.events;
        if (engine.open_transactions() != 0) outcome.events.emplace_back("open by handle");
    }
    require(InventedClient::referred_to() == 0, "what was handed out is given back");
    return outcome;
}

void require_same(const Events& found, const Events& wanted, std::string_view what) {
    if (found == wanted) return;
    std::fprintf(stderr, "found:\n%s\nwanted:\n%s\n", fmt::format("{}", fmt::join(found, "\n")).c_str(),
                 fmt::format("{}", fmt::join(wanted, "\n")).c_str());
    require(false, what);
}

// What stands for :area in statements.
const std::string& own_area() {
    static const std::string area = [] {
        zmFBConn nobody;
        return "'" + nobody.call("getuniqueareaid", "ZMFB", "SHELL").string() + "'";
    }();
    return area;
}

// A program, and what an engine is asked when it runs.
class Program {
  public:
    explicit Program(Input& input) : input_(input) {}

    void make(bool stops) {
        constexpr std::size_t most_actions = 24;
        for (std::size_t i = 0; i < most_actions && !input_.at_end(); ++i) {
            const bool runs = !stops || !outcome.failed;
            const Outcome before = outcome;
            const bool was_open = open_, failed_committing = fails_committing_;
            add();
            if (runs) continue;
            outcome = before;  // nothing is run behind the first failure
            open_ = was_open;
            fails_committing_ = failed_committing;
        }
        text += '\n';
        if (!open_) return;
        event("rollback");
        outcome.failed = true;
    }

    std::string text;
    Outcome outcome;

  private:
    void event(std::string what) { outcome.events.push_back(std::move(what)); }

    void add() {
        switch (input_.below(10)) {
            case 0:
                return begin();
            case 1:
                return commit();
            case 2:
                return roll_back();
            case 3:
                own_line(input_.flag() ? "-- it's ; nothing" : "/* begin; */");
                return;
            case 4:
                own_line(input_.flag() ? ".mode csv" : "\\x off");
                return;
            case 5:
                own_line("frobnicate;");
                outcome.failed = true;
                return;
            case 6:
                return statement("savepoint s", open_);
            case 7:
                return statement(
                    "create trigger r for t as begin delete from u; case when 1=1 then 2 end; end", true);
            case 8:
                return statement("select " + pieces() + " from t", true);
            default:
                return statement("insert into t values (" + pieces() + ")", true);
        }
    }

    void own_line(std::string_view line) {
        if (!text.empty() && text.back() != '\n') text += '\n';
        text += fmt::format("{}\n", line);
    }

    std::string any_of(std::span<const std::string_view> words) {
        return std::string(words[input_.below(words.size())]);
    }

    // Alone in its line it needs no semicolon.
    void step(std::string words) {
        if (input_.flag()) return own_line(words);
        put(words);
    }

    void begin() {
        constexpr std::string_view spellings[] = {"begin", "BEGIN work", "start transaction",
                                                  "Set Transaction", "begin /* it */ transaction"};
        step(any_of(spellings));
        if (open_) {
            outcome.failed = true;
            return;
        }
        event("begin");
        open_ = true;
    }

    void commit() {
        constexpr std::string_view spellings[] = {"commit", "COMMIT work", "commit transaction"};
        step(any_of(spellings));
        if (open_) end("commit");
    }

    void roll_back() {
        constexpr std::string_view spellings[] = {"rollback", "Rollback Work", "rollback transaction"};
        step(any_of(spellings));
        if (open_) return end("rollback");
        outcome.failed = true;
    }

    // Of the open transaction, or of one that a statement has to itself.
    void end(std::string_view how) {
        const bool fails = how == "commit" && fails_committing_;
        event(std::string(how) + (fails ? "!" : ""));
        if (fails) event("rollback");
        outcome.failed = outcome.failed || fails;
        fails_committing_ = false;
        open_ = false;
    }

    std::string gap() {
        constexpr std::string_view gaps[] = {" ", "\n", " /* ; */ ", " -- ; '\n", "\t"};
        return any_of(gaps);
    }

    // A text in quotes, of ASCII: without what ends a line for a script, or makes the engine fail.
    std::string quoted(char quote) {
        std::string made(1, quote);
        for (const char c : input_.bytes(input_.below(12))) {
            made += c == '\0' || c == '\r' || c == 'z' || static_cast<unsigned char>(c) >= 0x80 ? '.' : c;
            if (c == quote) made += c;
        }
        return made + quote;
    }

    std::string pieces() {
        constexpr std::string_view words[] = {"1", "a", "zq", "zx", "zf", "zc", "(2)", ":area"};
        std::string made;
        for (std::size_t left = input_.below(4) + 1; left > 0; --left) {
            const std::size_t kind = input_.below(4);
            made += kind == 0 ? quoted('\'') : kind == 1 ? quoted('"') : any_of(words);
            made += left > 1 ? gap() + "," + gap() : "";
        }
        return made;
    }

    // Behind a statement comes another line, or the next one in the same.
    void put(std::string_view statement) {
        text += fmt::format("{};{}", statement, input_.flag() ? "\n" : " ");
    }

    void statement(const std::string& typed, bool allowed) {
        put(typed);
        if (!allowed) {
            outcome.failed = true;
            return;
        }
        const std::string sent = with_area(typed);
        const bool query = has(sent, "select");
        const bool was_open = open_;
        if (!was_open) event("begin");
        const bool fails =
            has(sent, fails_prepared) || has(sent, fails_run) || (query && has(sent, fails_fetched));
        event((was_open ? "batch: " : "own: ") + sent + (fails ? "!" : ""));
        if (!has(sent, fails_prepared) && has(sent, fails_committed)) fails_committing_ = true;
        outcome.failed = outcome.failed || fails;
        if (!was_open) end(fails ? "rollback" : "commit");
    }

    // As it stands outside of quotes and comments, where `pieces` have put it between blanks.
    static std::string with_area(std::string text) {
        const std::string& area = own_area();
        char quote = 0;
        for (std::size_t i = 0; i < text.size(); ++i) {
            if (quote == 0 && text.compare(i, 5, ":area") == 0)
                text.replace(i, 5, area), i += area.size() - 1;
            else if (quote == 0 && (text[i] == '\'' || text[i] == '"'))
                quote = text[i];
            else if (quote == 0 && text.compare(i, 2, "--") == 0)
                i = text.find('\n', i);
            else if (text[i] == quote)
                quote = 0;
        }
        return text;
    }

    Input& input_;
    bool open_ = false;
    bool fails_committing_ = false;
};

void check_program(Input& input) {
    const bool stops = input.flag();
    Program program(input);
    program.make(stops);
    const Outcome found = outcome_of(program.text, input.flag() ? Way::script : Way::given, stops);
    require_same(found.events, program.outcome.events, "the engine is asked what the program says");
    // What such statements may have locked is looked for at the end, in tables that an invented engine lacks.
    const bool looks_for_locks =
        std::ranges::any_of(found.events, [](std::string_view event) { return has(event, own_area()); });
    require(found.failed == (program.outcome.failed || looks_for_locks),
            "a failure is told, and nothing else");
}

// Whether a line may be run here.
bool is_harmless(std::string_view line) {
    constexpr std::string_view commands[] = {"mode", "timer", "help", "quit",  "exit",
                                             "q",    "x",     "?",    "timing"};
    const std::string word = tool::first_word(line);
    if (tool::is_method(word)) return false;
    if (tool::input_of(line) != tool::Input::dot_command) return true;
    std::string_view command = line.substr(line.find_first_of(".\\") + 1);
    command = command.substr(0, command.find_first_of(" \t;"));
    return std::ranges::find(commands, command) != std::end(commands);
}

std::string harmless_lines(std::string_view source) {
    constexpr std::string_view mark = "\xEF\xBB\xBF";
    std::string text;
    for (std::size_t start = 0; start < source.size();) {
        const std::size_t end = std::min(source.find('\n', start), source.size());
        std::string line(source.substr(start, end - start));
        std::ranges::replace(line, '\r', ' ');  // which is no end of a line in -c
        if (text.empty() && line.starts_with(mark)) line.erase(0, mark.size());
        if (is_harmless(line)) text += line + "\n";
        start = end + 1;
    }
    return text + "select 1;\n";
}

void check_lines(std::string_view source) {
    const std::string text = harmless_lines(source);
    const Outcome script = outcome_of(text, Way::script, false);
    require_same(outcome_of(text, Way::given, false).events, script.events, "-c asks what a script asks");
    require_same(outcome_of(text, Way::typed, false).events, script.events, "so do lines that are typed");
    const Outcome stopped = outcome_of(text, Way::script, true);
    require(stopped.failed == script.failed, "a script fails whether it stops or not");
    require(stopped.events.size() <= script.events.size() + 1, "who stops asks no more");
}

void check_candidates(std::string_view line) {
    NotingEngine engine;
    const Silence silence;
    tool::Session session(options());
    session.connection_to_any();
    tool::Shell shell(session, {});
    const std::size_t start = line.find_last_of(" \t\n\"'(){},;=<>+-*/|.") + 1;
    for (const std::string& one : shell.candidates(line, start))
        require(!one.empty(), "a candidate is a word");
}

}  // namespace
}  // namespace zmfb::fuzz

void zmfb::fuzz::try_input(Input& input) {
    switch (input.below(4)) {
        case 0:
        case 1:
            check_program(input);
            break;
        case 2:
            check_lines(input.rest());
            break;
        default:
            check_candidates(input.rest());
    }
}
