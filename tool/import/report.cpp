#include "tool/import/report.h"

#include <fmt/format.h>

#include <utility>

#include "tool/counted.h"
#include "tool/json.h"
#include "tool/output.h"
#include "tool/rows/shown_text.h"
#include "tool/text_table.h"

namespace zmfb::tool {
namespace {

std::string counted_line(std::uint64_t count, const char* one, const char* many, std::string_view what) {
    return count == 0 ? "" : fmt::format("{} {}\n", counted(count, one, many), what);
}

// What a person should know, a line each.
std::string notes(const ImportReport& report, bool made) {
    std::string lines;
    for (const auto* some : {&report.notes, &report.changes}) {
        for (const std::string& line : *some) lines += line + "\n";
    }
    const ValueCounts& values = report.values;
    lines += counted_line(report.deleted, "deleted record", "deleted records",
                          report.skips_deleted ? "left out"
                          : made               ? "came along; --skip-deleted leaves them out"
                                               : "would come along; --skip-deleted leaves them out");
    lines += counted_line(report.odd_marks, "record", "records",
                          "with a deletion mark that is neither blank nor *: taken as not deleted");
    lines += counted_line(values.lost_dates, "impossible date", "impossible dates",
                          made ? "became NULL" : "would become NULL");
    lines += counted_line(values.lost_nulls, "NULL", "NULLs",
                          made ? "came in as blanks or 0: C, N, F and L columns have none"
                               : "would come in as blanks or 0: C, N, F and L columns have none");
    lines += counted_line(values.odd_logicals, "logical", "logicals", "neither yes nor no: left blank");
    lines += counted_line(values.rounded, "number", "numbers", "rounded to the digits that the column keeps");
    lines +=
        counted_line(values.zero_texts, "text with a zero byte", "texts with zero bytes", "kept as they are");
    lines += counted_line(values.unknown_texts, "text", "texts",
                          "beyond ASCII brought in as bytes: nothing says their code page; --encoding-from "
                          "does");
    lines += counted_line(report.defaulted, "bad value", "bad values", "left out for the column's default:");
    lines += counted_line(report.set_aside, "record", "records",
                          fmt::format("set aside in {}:", report.set_aside_file));
    if (report.defaulted > 0 || report.set_aside > 0) lines += report.bad_values;
    return lines;
}

Json as_json(const ImportReport& report) {
    return {{"file", report.file},
            {"table", report.table},
            {"records", report.records},
            {"fields", report.columns.size()},
            {"deleted", report.deleted},
            {"odd_deletion_marks", report.odd_marks},
            {"notes", report.notes},
            {"changes", report.changes},
            {"impossible_dates", report.values.lost_dates},
            {"lost_nulls", report.values.lost_nulls},
            {"odd_logicals", report.values.odd_logicals},
            {"rounded_numbers", report.values.rounded},
            {"texts_with_zero_bytes", report.values.zero_texts},
            {"texts_of_unknown_code_page", report.values.unknown_texts},
            {"defaulted_values", report.defaulted},
            {"set_aside_records", report.set_aside}};
}

std::string head(const ImportReport& report) {
    return fmt::format("{} -> {}: {}, {}", report.file, report.table,
                       counted(report.records, "record", "records"),
                       counted(report.columns.size(), "field", "fields"));
}

// Names of files and fields can hold what a terminal obeys.
void print_lines(const std::string& lines) { fmt::print("{}", lines_without_controls(lines)); }

}  // namespace

void print_summary(const ImportReport& report, bool as_json_line) {
    if (as_json_line) {
        Json json = as_json(report);
        json["seconds"] = report.seconds;
        fmt::print("{}\n", json_line(json));
    } else {
        print_lines(fmt::format("{}, {:.2f} s\n{}", head(report), report.seconds, notes(report, true)));
    }
}

void print_plan(const ImportReport& report, bool as_json_line, bool possible) {
    if (as_json_line) {
        Json json = as_json(report);
        json["columns"] = Json::array();
        for (const auto& [name, type] : report.columns)
            json["columns"].push_back({{"column", name}, {"type", type}});
        json["drops_existing"] = !report.replaces.empty();
        json["possible"] = possible;
        fmt::print("{}\n", json_line(json));
    } else {
        TextTable columns({{"column"}, {"type"}});
        for (const auto& [name, type] : report.columns) columns.add({name, type});
        print_lines(fmt::format("{}\n{}{}", head(report), columns.text(), notes(report, false)));
        if (!report.replaces.empty()) fmt::print("{} would be dropped\n", report.replaces);
        if (possible) fmt::print("nothing was changed; the import would work\n");
    }
    flush_output();
}

}  // namespace zmfb::tool
