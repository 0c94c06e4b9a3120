#include "tool/sql.h"

#include "tool/encoding.h"
#include "tool/interrupt.h"
#include "tool/shell/statement.h"
#include "tool/terminal.h"
#include "zmfbconn/database.h"

namespace zmfb::tool {
namespace {

std::string latin1_bytes(std::string_view text) {
    const auto latin1 = to_latin1(text);
    if (!latin1) throw Failure{Exit::usage, "the statement has a character outside " + encoding_name()};
    return *latin1;
}

// The engine has names in UTF-8, whatever the texts in its tables are.
std::string statement_bytes(std::string_view statement) {
    std::string bytes;
    for (const std::string_view name : quoted_names(statement)) {
        const auto before = static_cast<std::size_t>(name.data() - statement.data());
        bytes += latin1_bytes(statement.substr(0, before));
        bytes += name;
        statement.remove_prefix(before + name.size());
    }
    return bytes + latin1_bytes(statement);
}

}  // namespace

void run_query(Session& session, const std::string& statement, const RowOutput& output) {
    const std::string bytes = statement_bytes(statement);
    zmFBConn& connection = session.connection();
    Sink sink(output.file);
    Look look;
    if (!sink.is_file()) look = {terminal_width(), output_has_colours(), output.see_all};
    const auto writer = make_row_writer(output.mode, sink, look);
    const ExactQueries exact(writer.get());
    const Value result = connection.call("executequery", bytes);
    writer->end(exact.sqlcode() == 0 || interrupted());
    if (exact.sqlcode() == 0 || interrupted()) return;
    const bool no_query = result.size() > 0 && result[1].size() == 0;
    if (no_query) throw Failure{Exit::failed, "the statement returns no rows: exec runs such statements"};
    throw Failure{Exit::failed, "the query failed", last_engine_message()};
}

void run_statement(Session& session, const std::string& statement) {
    const Value result = session.connection().call("executeupdate", statement_bytes(statement));
    if (result.size() != 0) throw Failure{Exit::failed, to_utf8(result.text()), last_engine_message()};
}

}  // namespace zmfb::tool
