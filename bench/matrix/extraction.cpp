#include <fmt/format.h>

#include <map>
#include <stdexcept>

#include "bench/matrix/commands.h"
#include "bench/support/stand_in_client.h"

namespace zmfb::bench {

namespace {

// The kinds of fields that applications have, in turn.
Value structure(int fields) {
    Value made = Value::array_of_size(0);
    for (int i = 1; i <= fields; ++i) {
        const std::string name = fmt::format("FIELD{}", i);
        switch (i % 4) {
            case 0:
                made.push(host::array_of(name, "N", 9, 2));
                break;
            case 1:
                made.push(host::array_of(name, "C", 20, 0));
                break;
            case 2:
                made.push(host::array_of(name, "D", 8, 0));
                break;
            default:
                made.push(host::array_of(name, "L", 1, 0));
        }
    }
    return made;
}

std::string name_of(int table) { return fmt::format("TABLE{:05}", table); }

// The first one is made by createtable. The others are made by its statements, all of a table in one
// transaction, which takes a fraction of the time.
json make(Worker& worker, const json& request) {
    std::vector<Sent> sent;
    {
        const Recorder recorder;
        const Value fields = structure(request.at("fields"));
        if (!worker.ours->call("createtable", name_of(1), fields).logical())
            throw std::runtime_error("cannot make a table");
        sent = recorder.sent();
    }
    const int tables = request.at("tables");
    for (int table = 2; table <= tables; ++table) {
        std::vector<std::string> statements;
        for (const Sent& one : sent) {
            if (one.is_query) continue;
            std::string& text = statements.emplace_back(one.text);
            for (std::size_t at = 0; (at = text.find(name_of(1), at)) != text.npos;)
                text.replace(at, name_of(1).size(), name_of(table));
        }
        worker.bare->execute_together(statements, sent.back().block);
    }
    return json::object();
}

// The lines that describe fields.
std::size_t field_lines(const Value& matrix) {
    std::size_t lines = 0;
    for (std::size_t group = 2; group <= matrix.size(); ++group) {
        const Value& table = matrix[group][1];
        for (std::size_t line = 1; line <= table.size(); ++line)
            lines += table[line][1].text().find("=>") != std::string_view::npos ? 1 : 0;
    }
    return lines;
}

Value names(const json& request) {
    Value names = Value::array_of_size(0);
    for (int table = 1; table <= request.at("tables").get<int>(); ++table) names.push(name_of(table));
    return names;
}

json extract_ours(Worker& worker, const json& request) {
    const Value tables = names(request);
    Value matrix;
    const double seconds = seconds_of([&] { matrix = worker.ours->call("extractmatrix", tables); });
    return {{"seconds", seconds}, {"fields", field_lines(matrix)}};
}

json extract_bare(Worker& worker, const json& request) {
    static std::map<std::size_t, std::vector<Sent>> learned;  // by the number of tables
    const Value tables = names(request);
    std::vector<Sent>& sent = learned[tables.size()];
    if (sent.empty()) {
        const Recorder recorder;
        worker.ours->call("extractmatrix", tables);
        sent = recorder.sent();
    }
    worker.bare->send_by(request.value("calls", "plain") == "plain" ? Calls::plain : Calls::as_ours);
    std::uint64_t touched = 0;
    const double seconds = seconds_of([&] { touched = replay(*worker.bare, sent); });
    return {{"seconds", seconds}, {"statements", sent.size()}, {"touched", touched}};
}

constexpr Command commands[] = {
    {.name = "matrix.make", .run = make},
    {.name = "matrix.ours", .run = extract_ours},
    {.name = "matrix.bare", .run = extract_bare},
};

}  // namespace

std::span<const Command> matrix_commands() { return commands; }

}  // namespace zmfb::bench
