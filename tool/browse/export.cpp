// What is seen, into a file.
#include <fmt/format.h>

#include <algorithm>
#include <cctype>
#include <filesystem>

#include "tool/browse/browse.h"
#include "tool/catalog.h"
#include "tool/export/run.h"
#include "tool/reading.h"
#include "tool/sql.h"

namespace zmfb::tool::browse {
namespace {

namespace fs = std::filesystem;

// By what the rows are sorted, in SQL.
std::string sorted_by(zmFBConn& connection, const Area& area) {
    if (area.order().empty()) return "";
    const auto found = rows_of<std::string>(
        connection,
        "select first 1 rdb$expression_source from rdb$indices where rdb$relation_name = ? and "
        "rdb$description starting with ? and rdb$expression_source is not null order by rdb$index_id",
        area.table(), fmt::format("Order {}: ", area.order()));
    if (!found.empty()) return std::get<0>(found.front());
    throw Failure{Exit::failed, fmt::format("the order {} has fewer rows than the table, or no index: o "
                                            "chooses another one to export by",
                                            area.order())};
}

}  // namespace

void Browse::export_rows() {
    const std::optional<std::string> typed = ask("Export to (.csv or .dbf):");
    if (!typed || typed->empty()) return;
    const fs::path file = *typed;
    std::string ending = file.extension();
    std::ranges::transform(ending, ending.begin(), [](char c) { return static_cast<char>(std::tolower(c)); });
    if (ending != ".csv" && ending != ".dbf") return say_problem("the name of the file ends in .csv or .dbf");
    if (fs::exists(file)) {
        const auto answer = ask(fmt::format("Replace {}? (y or n)", *typed));
        if (!answer || (*answer != "y" && *answer != "Y")) return;
    }
    zmFBConn& connection = session_.connection();
    ExportSource source{.shown = title_, .file_name = file.stem(), .query = source_.query(), .declared = {}};
    if (const Area* const area = source_.area(); area != nullptr) {
        ExportTable table = tables_meant_by(connection, area->table()).front();
        table.file_name = file.stem();
        source = export_source(connection, table,
                               {.columns = {}, .where = filter_, .order = sorted_by(connection, *area)});
    }
    screen_.without([&] {
        try {
            if (ending == ".csv") {
                run_query(session_, source.query, {Mode::csv, file, ""});
                fmt::print("{} -> {}\n", source.shown, file.string());
            } else {
                std::vector<ManifestFile> none;
                Transaction work(connection, Access::read_only);
                log_query(connection, source.query);
                ExportOptions options;
                options.yes = true;  // it was asked on the screen
                options.folder = file.parent_path().empty() ? "." : file.parent_path().string();
                export_file(session_, work, source, options, 0, none);
            }
        } catch (const Failure& failure) {
            print_failure(failure);
        } catch (const SqlError& error) {
            print_error(fmt::format("{} was not exported", source.shown), error.message());
        }
    });
}

}  // namespace zmfb::tool::browse
