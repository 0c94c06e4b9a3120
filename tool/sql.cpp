#include "tool/sql.h"

#include "tool/encoding.h"
#include "tool/interrupt.h"
#include "tool/reading.h"
#include "tool/terminal.h"
#include "tool/unknown_name.h"
#include "zmfbconn/database.h"
#include "zmfbconn/methods.h"

namespace zmfb::tool {
namespace {

[[noreturn]] void throw_told(zmFBConn& connection, const SqlError& error, const std::string& statement) {
    try {
        throw_failure(connection, error, "the query failed");
    } catch (Failure& failure) {
        failure.hint = meant_instead(connection, statement, failure.detail);
        throw;
    }
}

}  // namespace

void run_query(Session& session, const std::string& statement, const RowOutput& output) {
    zmFBConn& connection = session.connection();
    statement_bytes(statement);
    Sink sink(output.file, output.pages);
    Look look;
    if (!sink.is_file()) look = {terminal_width(), output_has_colours(), output.see_all};
    const auto writer = make_row_writer(output.mode, sink, look);
    try {
        Transaction work = begin_reading(connection, statement);
        Statement query = work.prepare(statement);
        if (query.columns().empty())
            throw Failure{Exit::failed, "the statement returns no rows: exec runs such statements"};
        writer->write(query.rows());
        work.commit();
    } catch (const SqlError& error) {
        const bool ended = interrupted();
        writer->end(ended);
        if (ended) return;
        throw_told(connection, error, statement);
    }
    writer->end(true);
}

void run_statement(Session& session, const std::string& statement) {
    const Status done = session.connection()(m::executeupdate, statement_bytes(statement));
    if (done.ok()) return;
    const std::string said = last_engine_message();
    throw Failure{Exit::failed, to_utf8(done.message()), said,
                  meant_instead(session.connection(), statement, said)};
}

}  // namespace zmfb::tool
