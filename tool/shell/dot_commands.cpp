#include <fmt/format.h>

#include <algorithm>
#include <array>

#include "tool/catalog.h"
#include "tool/commands.h"
#include "tool/shell/names.h"
#include "tool/shell/shell.h"
#include "tool/suggest.h"
#include "tool/unknown_name.h"

namespace zmfb::tool {
namespace {

// Commands of the command line that are of use in an open session as well.
constexpr std::string_view shared_commands[] = {"tables", "struct", "drop",   "locks",  "opens",
                                                "unlock", "log",    "doctor", "methods"};
constexpr int deepest_read = 10;

// The shared commands that there are, with their help.
std::vector<std::pair<std::string, std::string>> shared_with_help() {
    CommandLine line;
    add_all(line);
    std::vector<std::pair<std::string, std::string>> found;
    for (const std::string_view name : shared_commands) {
        if (const auto help = line.help_line(std::string(name))) found.emplace_back(name, *help);
    }
    return found;
}

bool is_command_of_the_tool(const std::string& name) {
    CommandLine line;
    add_all(line);
    return line.help_line(name).has_value();
}

// Words parted by blanks; quotes of either kind hold a word together.
std::vector<std::string> split(std::string_view text) {
    std::vector<std::string> words;
    char quote = 0;
    bool in_word = false;
    for (const char c : text) {
        const bool blank = c == ' ' || c == '\t' || c == '\r';
        if (quote == 0 && blank) {
            in_word = false;
            continue;
        }
        if (!in_word) words.emplace_back();
        in_word = true;
        if (quote == 0 && (c == '"' || c == '\'')) {
            quote = c;
        } else if (c == quote) {
            quote = 0;
        } else {
            words.back() += c;
        }
    }
    return words;
}

}  // namespace

constexpr Shell::DotCommand Shell::dot_commands[] = {
    {.name = "help", .arguments = "[METHOD]", .help = "Show this, or a method", .run = &Shell::help},
    {.name = "mode",
     .arguments = "[table|line|csv|json|auto]",
     .help = "Shape of the rows of queries",
     .run = &Shell::mode},
    {.name = "quit", .arguments = "", .help = "End", .run = &Shell::quit},
    {.name = "read", .arguments = "FILE", .help = "Take lines from a file", .run = &Shell::read},
    {.name = "timer",
     .arguments = "[on|off]",
     .help = "Show how long everything takes",
     .run = &Shell::timer},
};

void Shell::run_dot_command(const std::string& typed) {
    const bool is_backslashed = typed.find_first_of(".\\") == typed.find('\\');
    const std::string line = is_backslashed ? in_dots(typed) : typed;
    std::vector<std::string> words = split(line.substr(line.find('.') + 1));
    while (!words.empty() && (words.back() == ";" || words.back().empty())) words.pop_back();
    if (words.empty()) words.emplace_back("help");
    if (words[0].ends_with(';')) words[0].pop_back();
    if (words[0] == "exit") words[0] = "quit";
    const auto* const own = std::ranges::find(dot_commands, words[0], &DotCommand::name);
    if (own != std::end(dot_commands)) return (this->*own->run)(words);
    const auto shared = shared_with_help();
    const auto known = [&](const auto& one) { return one.first == words[0]; };
    if (std::ranges::any_of(shared, known)) return guarded([&] { run_command(words); });
    std::vector<std::string> names;
    for (const DotCommand& one : dot_commands) names.emplace_back(one.name);
    for (const auto& one : shared) names.push_back(one.first);
    if (is_command_of_the_tool(words[0])) {
        return fail(fmt::format("there is no command .{}", words[0]),
                    fmt::format("It is one of the command line: zmfb {}", words[0]));
    }
    const std::string nearest = nearest_name(words[0], names);
    fail(fmt::format("there is no command .{}{}", words[0],
                     nearest.empty() ? "" : fmt::format("; did you mean \".{}\"?", nearest)),
         ".help lists them.");
}

// What psql writes with a backslash.
std::string Shell::in_dots(std::string_view line) const {
    line = line.substr(line.find('\\') + 1);
    line = line.substr(0, line.find_last_not_of(" ;\t\r") + 1);
    const std::string name(line.substr(0, line.find_first_of(" \t")));
    const std::string rest(line.substr(name.size()));
    if (name == "d" || name == "dt") return (name == "d" && !rest.empty() ? ".struct" : ".tables") + rest;
    if (name == "i") return ".read" + rest;
    if (name == "timing") return ".timer" + rest;
    if (name == "q") return ".quit";
    if (name == "?") return ".help";
    if (name != "x") return "." + std::string(line);
    if (rest.empty()) return mode_ == Mode::line ? ".mode table" : ".mode line";
    const std::string wanted = split(rest).at(0);
    return ".mode " + (wanted == "on" ? "line" : wanted == "off" ? "table" : wanted);
}

// Each run reads its words afresh: what an earlier one left behind in its options must not count.
void Shell::run_command(const std::vector<std::string>& words) {
    CommandLine line;
    add_all(line);
    if (line.run_within(session_, words) != Exit::ok) ++failures_;
    tables_.reset();
}

void Shell::help(const std::vector<std::string>& words) {
    if (words.size() > 1) return help_on(words[1]);
    fmt::print(
        "SELECT ...;               a query; SQL ends with \";\" and may go over several lines\n"
        "UPDATE ...;               any other statement, in a transaction of its own\n"
        "begin; commit; rollback;  one for several statements\n"
        "istable(\"CUSTOMER\")       a call of a method; .methods lists them\n\n");
    for (const DotCommand& one : dot_commands) {
        fmt::print("{:<25} {}\n", fmt::format(".{} {}", one.name, one.arguments), one.help);
    }
    for (const auto& [name, text] : shared_with_help()) fmt::print(".{:<24} {}\n", name, text);
}

void Shell::help_on(const std::string& name) {
    std::string method = name.substr(0, name.find('('));
    std::ranges::transform(method, method.begin(),
                           [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    for (const MethodRow& row : methods()) {
        if (row.name != method) continue;
        fmt::print("{}\n{}, {}\n", signature_of(row), row.help, host::kind_name(row.kind));
        return;
    }
    fail(fmt::format("there is no method {}{}", name, did_you_mean(method, method_names())));
}

void Shell::mode(const std::vector<std::string>& words) {
    if (words.size() < 2) {
        fmt::print("{}\n", mode_names[static_cast<std::size_t>(mode_)]);
    } else if (const auto mode = mode_of(words[1])) {
        mode_ = *mode;
    } else {
        fail(fmt::format("there is no mode {}: table, line, csv, json or auto", words[1]));
    }
}

void Shell::timer(const std::vector<std::string>& words) {
    if (words.size() < 2) {
        fmt::print("{}\n", timer_ ? "on" : "off");
    } else if (words[1] == "on" || words[1] == "off") {
        timer_ = words[1] == "on";
    } else {
        fail("the timer is on or off");
    }
}

void Shell::read(const std::vector<std::string>& words) {
    if (words.size() != 2) return fail(".read needs a file");
    if (depth_ == deepest_read) return fail("files that read files go too deep");
    std::optional<LineInput> in;
    guarded([&] { in.emplace(words[1]); });
    if (!in) return;
    ++depth_;
    take_all(*in, words[1]);
    --depth_;
}

void Shell::quit(const std::vector<std::string>&) { done_ = true; }

const std::vector<std::string>& Shell::table_names() {
    if (!tables_) tables_ = plain_tables(session_.connection());
    return *tables_;
}

// The words for the place `start` of a line of SQL, or of a call.
std::vector<std::string> Shell::words_for(std::string_view line, std::size_t start) {
    const bool is_call = !waiting() && input_of(line) == Input::call;
    const std::string before = inputs_.begun() + "\n" + std::string(line.substr(0, start));
    std::vector<std::string> all = table_names();
    if (is_call || expects_table(before)) return all;
    const std::string_view word = line.substr(start);
    const std::string whole = inputs_.begun() + "\n" + std::string(line);
    for (std::string& column :
         plain_columns(session_.connection(), whole, word.substr(0, word.find_first_of(" ,;)"))))
        all.push_back(std::move(column));
    for (std::string& one : sql_words()) all.push_back(std::move(one));
    return all;
}

std::vector<std::string> Shell::candidates(std::string_view line, std::size_t start) {
    const bool command = line.starts_with('.') || line.starts_with('\\');
    std::vector<std::string> all;
    const auto add = [&all](const std::vector<std::string>& more) {
        all.insert(all.end(), more.begin(), more.end());
    };
    if (command && start == 1) {
        for (const DotCommand& one : dot_commands) all.emplace_back(one.name);
        for (const auto& one : shared_with_help()) all.push_back(one.first);
    } else if (line.starts_with(".mode ")) {
        all.assign(std::begin(mode_names), std::end(mode_names));
    } else if (line.starts_with(".help ")) {
        add(method_names());
    } else if (command) {
        add(table_names());
    } else if (start == 0 && !waiting()) {
        add(beginnings());
    } else {
        add(words_for(line, start));
    }
    return all;
}

}  // namespace zmfb::tool
