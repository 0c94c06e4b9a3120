#include <fmt/format.h>

#include <chrono>
#include <filesystem>
#include <memory>

#include "host/text.h"
#include "tool/commands.h"
#include "tool/encoding.h"
#include "zmfbconn/database.h"

namespace zmfb::tool {
namespace {

std::string table_of(zmFBConn& connection, const std::string& file) {
    const Value name = connection.call("removefilenameext", connection.call("getfilename", file));
    return std::string(host::upper(name).text());
}

bool import_one(Session& session, const std::string& file) {
    zmFBConn& connection = session.connection();
    const auto path = to_latin1(file);
    if (!path) {
        print_error(fmt::format("{}: a file name with a character outside ISO-8859-1", file));
        return false;
    }
    const auto start = std::chrono::steady_clock::now();
    const std::size_t raised_before = session.raised().size();
    if (!connection.call("bringdbf", *path).logical()) {
        // Most refusals were raised and printed; the few silent ones need a word.
        const bool silent = session.raised().size() == raised_before;
        print_error(fmt::format("{} was not imported", file), silent ? last_engine_message() : "");
        return false;
    }
    const std::chrono::duration<double> took = std::chrono::steady_clock::now() - start;
    const std::string table = table_of(connection, *path);
    const auto records = connection.call("counttablerecords", table).integer();
    const auto fields = connection.call("filterrddfields", connection.call("gettablestruct", table)).size();
    fmt::print("{} -> {}: {} records, {} fields, {:.2f} s\n", file, to_utf8(table), records, fields,
               took.count());
    std::fflush(stdout);
    return true;
}

Exit import_command(Session& session, const std::vector<std::string>& files) {
    Exit status = Exit::ok;
    for (const std::string& file : files) {
        if (!import_one(session, file)) status = Exit::failed;
    }
    return status;
}

}  // namespace

void add_import(CommandLine& line) {
    const auto files = std::make_shared<std::vector<std::string>>();
    line.add(line.app(), "import", "Bring DBF files in as tables", "zmfb --db shop.fdb import customers.dbf",
             [files](Session& session) { return import_command(session, *files); })
        ->add_option("FILE", *files, "DBF files")
        ->required();
}

}  // namespace zmfb::tool
