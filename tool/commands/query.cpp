#include <fmt/format.h>

#include <memory>

#include "tool/commands.h"
#include "tool/json.h"
#include "tool/name.h"
#include "tool/shell/statement.h"
#include "tool/sql.h"

namespace zmfb::tool {
namespace {

struct Given {
    std::string statement;
    std::string mode = "table";
    std::string file;
    bool no_pager = false;
};

Exit query_command(Session& session, const Given& given) {
    RowOutput output{*mode_of(given.mode), given.file, "--mode line", !given.no_pager};
    if (session.options().json) output.mode = Mode::json;
    run_query(session, given.statement, output);
    return Exit::ok;
}

Exit exec_command(Session& session, const std::string& statement) {
    if (is_query(statement)) {
        throw Failure{Exit::usage, "exec shows no query", "",
                      fmt::format("zmfb query {}", shell_word(statement))};
    }
    const bool json = session.options().json;
    const auto changed = run_statement(session, statement, {json ? Mode::json : Mode::table, "", ""});
    if (!changed) return Exit::ok;
    if (json) {
        fmt::print("{}\n", json_line({{"done", action_of(statement)}, {"rows", *changed}}));
    } else {
        fmt::print("done{}\n", changes_of(statement, *changed));
    }
    return Exit::ok;
}

}  // namespace

void add_query(CommandLine& line) {
    const auto given = std::make_shared<Given>();
    const Subcommand query =
        line.add(line.app(), "query", "Run a SELECT and show its rows",
                 "zmfb --db shop.fdb query \"select name, credit from customers\" --mode csv",
                 [given](Session& session) { return query_command(session, *given); });
    query.option("SQL", given->statement, "Statement").required();
    query
        .option(
            "--mode", given->mode,
            "Shape of the rows: table, line, csv, json; auto is line where a row is wider than the terminal")
        .one_of({std::begin(mode_names), std::end(mode_names)})
        .with_default();
    query.option("--output,-o", given->file, "File that the rows go to");
    query.no_pager(given->no_pager);
    line.add(line.app(), "exec", "Run a statement that is no query",
             "zmfb --db shop.fdb exec \"update customers set city = 'Cork' where code = 3\"",
             [given](Session& session) { return exec_command(session, given->statement); })
        .option("SQL", given->statement, "Statement")
        .required();
}

}  // namespace zmfb::tool
