#include <fmt/format.h>

#include <memory>

#include "tool/commands.h"
#include "tool/encoding.h"
#include "tool/json.h"
#include "tool/text_table.h"
#include "zmfbconn/database.h"

namespace zmfb::tool {
namespace {

std::string statement_bytes(const std::string& statement) {
    const auto latin1 = to_latin1(statement);
    if (!latin1) throw Failure{Exit::usage, "the statement has a character outside ISO-8859-1"};
    return *latin1;
}

// Values come padded to their column's width.
std::string shown_value(const Value& value) {
    std::string_view text = value.text();
    text = text.substr(0, text.find_last_not_of(' ') + 1);
    return to_utf8(text);
}

void print_table(const Value& result) {
    std::vector<TextTable::Column> columns;
    for (const Value& column : result[1].items())
        columns.push_back({to_utf8(column[1].text()), column[2].text() == "N"});
    TextTable shown(std::move(columns));
    for (const Value& row : result.items().subspan(1)) {
        std::vector<std::string> cells;
        for (const Value& value : row.items()) cells.push_back(shown_value(value));
        shown.add(std::move(cells));
    }
    const std::size_t rows = result.size() - 1;
    fmt::print("{}({} row{})\n", shown.text(), rows, rows == 1 ? "" : "s");
}

void print_json(const Value& result) {
    Json list = Json::array();
    for (const Value& row : result.items().subspan(1)) {
        Json object = Json::object();
        for (std::size_t i = 1; i <= row.size(); ++i)
            object[to_utf8(result[1][i][1].text())] = shown_value(row[i]);
        list.push_back(std::move(object));
    }
    fmt::print("{}\n", list.dump(2));
}

Exit query_command(Session& session, const std::string& statement) {
    const Value result = session.connection().call("executequery", statement_bytes(statement));
    if (result.size() == 0) throw Failure{Exit::failed, "the query failed", last_engine_message()};
    session.options().json ? print_json(result) : print_table(result);
    return Exit::ok;
}

Exit exec_command(Session& session, const std::string& statement) {
    const Value result = session.connection().call("executeupdate", statement_bytes(statement));
    if (result.size() != 0) throw Failure{Exit::failed, to_utf8(result.text()), last_engine_message()};
    fmt::print("done\n");
    return Exit::ok;
}

}  // namespace

void add_query(CommandLine& line) {
    const auto statement = std::make_shared<std::string>();
    line.add(line.app(), "query", "Run a SELECT and show its rows",
             "zmfb --db shop.fdb query \"select name, credit from customers\"",
             [statement](Session& session) { return query_command(session, *statement); })
        ->add_option("SQL", *statement, "Statement")
        ->required();
    line.add(line.app(), "exec", "Run a statement that returns no rows",
             "zmfb --db shop.fdb exec \"update customers set city = 'Cork' where code = 3\"",
             [statement](Session& session) { return exec_command(session, *statement); })
        ->add_option("SQL", *statement, "Statement")
        ->required();
}

}  // namespace zmfb::tool
