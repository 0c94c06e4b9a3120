#include <fmt/format.h>

#include <algorithm>
#include <memory>

#include "host/file.h"
#include "tool/catalog.h"
#include "tool/commands.h"
#include "tool/confirm.h"
#include "tool/counted.h"
#include "tool/encoding.h"
#include "tool/interrupt.h"
#include "tool/json.h"
#include "tool/matrix/consequences.h"
#include "tool/matrix/interrupted.h"
#include "tool/matrix/known_structures.h"
#include "tool/matrix/matrix_file.h"
#include "tool/output.h"
#include "tool/output_file.h"
#include "tool/rows/shown_text.h"
#include "tool/terminal.h"
#include "zmfbconn/cancel.h"

namespace zmfb::tool {
namespace {

constexpr std::string_view extension = ".tf";

std::string_view colour_of(std::string_view line) {
    if (line.starts_with("[OK]")) return "\033[32m";
    if (line.starts_with("[WARN]")) return "\033[33m";
    if (line.starts_with("[ERROR]")) return "\033[31m";
    return "";
}

void print_log(const host::Value& log) {
    for (const host::Value& entry : log.items()) {
        const std::string line = to_utf8(entry[1].text());
        const std::string_view colour = output_has_colours() ? colour_of(line) : "";
        fmt::print("{}{}{}\n", colour, line, colour.empty() ? "" : "\033[0m");
    }
    flush_output();
}

// Whether a simulated or real run would change, or changed, anything.
bool has_actions(const host::Value& log) {
    return std::ranges::any_of(log.items(),
                               [](const host::Value& entry) { return entry[1].text().starts_with('['); });
}

void require_nameable(const KnownStructures& known, const Name& table) {
    if (known.is_nameable(table)) return;
    throw Failure{Exit::failed, fmt::format("{} cannot be in a matrix", table.shown()),
                  std::string(plain_names_only)};
}

// A matrix file and what is known of its tables. The methods can name all of them and what they consist of.
struct Asked {
    host::Value matrix;
    KnownStructures known;

    Asked(zmFBConn& connection, const std::string& file)
        : matrix(read_matrix(file)), known(connection, tables_in(matrix)) {
        for (const Name& table : tables_in(matrix)) {
            if (!table.bytes().empty()) require_nameable(known, table);
        }
    }
};

// What the object says that a matrix would do, and what comes of that.
struct Plan {
    host::Value result;
    std::vector<Consequence> consequences;

    Plan(Session& session, Asked& asked)
        : result(asked.known.object().call("checkmatrix", asked.matrix)),
          consequences(consequences_of(session.connection(), asked.matrix, result[2])) {}

    // How many changes the engine will refuse.
    [[nodiscard]] std::uint64_t hindered() const {
        return static_cast<std::uint64_t>(std::ranges::count_if(
            consequences, [](const Consequence& one) { return !hindrances_of(one).empty(); }));
    }
};

void print_notes(const Plan& plan) {
    for (const Consequence& one : plan.consequences) {
        for (const std::string& note : notes_of(one)) fmt::print("{}\n", without_controls(note));
    }
    flush_output();
}

// Throws Failure when the engine will refuse some of it.
void require_possible(const Plan& plan, std::string_view message) {
    if (plan.hindered() == 0) return;
    std::string reasons;
    for (const Consequence& one : plan.consequences) {
        for (const std::string& hindrance : hindrances_of(one)) reasons += hindrance + "\n";
    }
    throw Failure{Exit::failed,
                  fmt::format("{}{} cannot be made", message, counted(plan.hindered(), "change", "changes")),
                  reasons, "drop what is in the way, mend the values, or take the change out of the matrix"};
}

Exit report(Session& session, const host::Value& result, const Plan& plan) {
    const bool ok = result[1].logical() && plan.hindered() == 0;
    if (session.options().json) {
        Json lines = Json::array();
        const host::Value log = result[2];
        for (const host::Value& entry : log.items()) lines.push_back(to_utf8(entry[1].text()));
        Json consequences = Json::array();
        for (const Consequence& one : plan.consequences) consequences.push_back(json_of(one));
        fmt::print(
            "{}\n",
            json_lines(Json{
                {"ok", ok}, {"log", lines}, {"consequences", consequences}, {"raised", session.raised()}}));
    } else {
        print_log(result[2]);
    }
    return ok ? Exit::ok : Exit::failed;
}

// Hands each line of a matrix to `put`.
template <class Put>
void for_each_line(const host::Value& matrix, const Put& put) {
    for (const host::Value& group : matrix.items()) {
        const host::Value lines = group[1];
        for (const host::Value& line : lines.items()) put(line[1].text());
    }
}

// A matrix as its file has it, or as a terminal wants it.
void print_matrix(const host::Value& matrix) {
    const bool terminal = output_is_terminal();
    for_each_line(matrix, [&](std::string_view text) {
        fmt::print("{}", terminal ? to_utf8(text) + "\n" : std::string(text) + "\r\n");
    });
}

std::vector<Name> named_tables(zmFBConn& connection, const std::vector<std::string>& tables) {
    std::vector<Name> names;
    for (const std::string& table : tables) names.push_back(existing_name(connection, table));
    return names;
}

std::vector<Name> all_tables(zmFBConn& connection) {
    std::vector<Name> names;
    for (const Table& table : tables_of(connection)) names.push_back(table.name);
    return names;
}

Exit matrix_extract_command(Session& session, const std::vector<std::string>& tables, const std::string& file,
                            bool yes) {
    zmFBConn& connection = session.connection();
    const bool all = tables.empty();
    const std::vector<Name> wanted = all ? all_tables(connection) : named_tables(connection, tables);
    KnownStructures known(connection, wanted);
    // The system tables are always among all: of an empty list the method would make all that there are.
    const host::Value names = host::Value::array_of_size(0);
    for (const Name& table : wanted) {
        if (!all) require_nameable(known, table);
        if (known.is_nameable(table)) names.push(table.bytes());
    }
    if (file.empty()) {
        print_matrix(known.object().call("extractmatrix", names, ""));
        return Exit::ok;
    }
    const std::string written = file.ends_with(extension) ? file : file + std::string(extension);
    if (!yes && host::file(written).logical() && !confirm(fmt::format("Replace {}?", written))) {
        throw Failure{Exit::failed, fmt::format("{} is there already", written),
                      "Nothing was changed. --yes replaces it without asking."};
    }
    OutputFile out(written);
    const host::Value matrix = known.object().call("extractmatrix", names, "");
    for_each_line(matrix, [&](std::string_view text) {
        out.write(text);
        out.write("\r\n");
    });
    out.close();
    fmt::print("{}: {}\n", written, counted(matrix.size() - 1, "table", "tables"));
    return Exit::ok;
}

Exit matrix_check_command(Session& session, const std::string& file) {
    Asked asked(session.connection(), file);
    const Plan plan(session, asked);
    const Exit status = report(session, plan.result, plan);
    if (!session.options().json) print_notes(plan);
    require_possible(plan, "");
    return status;
}

std::string joined_lines(const std::vector<std::string>& lines) {
    std::string all;
    for (const std::string& line : lines) all += to_utf8(line) + "\n";
    return all;
}

// What was done before a signal came, and what was not: by what there would still be to do.
Exit tell_interrupted(Session& session, const host::Value& matrix, const Plan& plan) {
    begin_undoing();
    session.show_raised(Raised::silent);
    const host::Value rest = session.connection().call("checkmatrix", matrix)[2];
    const std::vector<std::string> done = done_of(plan.result[2], rest);
    if (session.options().json) {
        const auto utf8 = [](const std::vector<std::string>& lines) {
            Json list = Json::array();
            for (const std::string& line : lines) list.push_back(to_utf8(line));
            return list;
        };
        const Json json{
            {"ok", false}, {"interrupted", true}, {"log", utf8(done)}, {"left", utf8(actions_of(rest))}};
        fmt::print("{}\n", json_lines(json));
    } else {
        fmt::print("{}", joined_lines(done));
    }
    flush_output();
    print_error(
        done.empty() ? "interrupted; nothing was done" : "interrupted; what was done stays",
        "still to be done:\n" + joined_lines(actions_of(rest)),
        "\"zmfb doctor\" says whether a field is half changed; then the same matrix can be applied again");
    return ending_status();
}

Exit apply(Session& session, const host::Value& matrix, const Plan& plan) {
    if (plan.result[1].logical() && !has_actions(plan.result[2])) return report(session, plan.result, plan);
    host::Value result;
    try {
        result = session.connection().call("applymatrix", matrix, false);
    } catch (const Cancelled&) {
        return tell_interrupted(session, matrix, plan);
    }
    return ending_signal() != 0 ? tell_interrupted(session, matrix, plan) : report(session, result, plan);
}

Exit apply_when_confirmed(Session& session, Asked& asked) {
    fmt::print("What would be done:\n");
    const Plan plan(session, asked);
    print_log(plan.result[2]);
    print_notes(plan);
    require_possible(plan, "nothing was changed: ");
    if (!has_actions(plan.result[2])) {
        fmt::print("Nothing.\n");
        return plan.result[1].logical() ? Exit::ok : Exit::failed;
    }
    if (!confirm("Apply it?")) throw Failure{Exit::failed, "nothing was changed"};
    fmt::print("What was done:\n");
    return apply(session, asked.matrix, plan);
}

Exit apply_unasked(Session& session, Asked& asked) {
    // The applying raises again what the look raises.
    session.show_raised(Raised::silent);
    const Plan plan(session, asked);
    session.show_raised(Raised::lines);
    session.forget_raised();
    require_possible(plan, "nothing was changed: ");
    if (!session.options().json) print_notes(plan);
    return apply(session, asked.matrix, plan);
}

Exit matrix_apply_command(Session& session, const std::string& file, bool yes) {
    if (session.options().json && !yes) throw Failure{Exit::usage, "--json asks nothing: say --yes as well"};
    Asked asked(session.connection(), file);
    return yes ? apply_unasked(session, asked) : apply_when_confirmed(session, asked);
}

}  // namespace

void add_matrix(CommandLine& line) {
    struct Given {
        std::vector<std::string> tables;
        std::string file;
        bool yes = false;
    };
    const auto given = std::make_shared<Given>();
    const Subcommand matrix = line.add_group("matrix", "Change table structures through a text file");
    const Subcommand extract =
        line.add(matrix, "extract", "Write out the structures of tables, of all without names",
                 "zmfb --db shop.fdb matrix extract customers -o customers.tf", [given](Session& session) {
                     return matrix_extract_command(session, given->tables, given->file, given->yes);
                 });
    extract.option("TABLE", given->tables, "Tables");
    extract.option("-o,--output", given->file, "File to write (.tf is added when it is not there)");
    extract.yes(given->yes);
    line.add(matrix, "check", "Tell what applying a matrix would do",
             "zmfb --db shop.fdb matrix check customers.tf",
             [given](Session& session) { return matrix_check_command(session, given->file); })
        .option("FILE", given->file, "Matrix file")
        .required();
    const Subcommand apply = line.add(
        matrix, "apply", "Change the tables to what the right-hand column of a matrix says",
        "zmfb --db shop.fdb matrix apply customers.tf",
        [given](Session& session) { return matrix_apply_command(session, given->file, given->yes); });
    apply.option("FILE", given->file, "Matrix file").required();
    apply.yes(given->yes);
}

}  // namespace zmfb::tool
