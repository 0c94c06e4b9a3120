#include "tool/export/report.h"

#include <fmt/format.h>

#include "tool/counted.h"
#include "tool/json.h"
#include "tool/rows/shown_text.h"

namespace zmfb::tool {
namespace {

using dbf::Loss;

std::string_view became(Loss loss) {
    switch (loss) {
        case Loss::null:
            return "NULL, which became nothing";
        case Loss::too_wide:
        case Loss::not_a_number:
            return "wider than the field: left blank";
        case Loss::rounded:
            return "rounded";
        case Loss::too_long:
            return "cut to the length of the field";
        case Loss::characters:
            return "with characters that became ?";
        case Loss::end_mark:
            return "with bytes 1A that became ?";
        case Loss::time_of_day:
            return "without their time of day";
        default:
            return "outside the years 1 to 9999: left blank";
    }
}

Json as_json(const ExportReport& report) {
    Json converted = Json::array();
    for (const dbf::Converted& one : report.converted) {
        converted.push_back({{"field", report.fields[one.field].name},
                             {"values", one.count},
                             {"how", std::string(became(one.loss))}});
    }
    return {{"table", report.table},          {"file", report.file},         {"records", report.records},
            {"fields", report.fields.size()}, {"warnings", report.warnings}, {"converted", converted},
            {"seconds", report.seconds}};
}

}  // namespace

void print_summary(const ExportReport& report, bool as_json_line) {
    if (as_json_line) {
        fmt::print("{}\n", json_line(as_json(report)));
        return;
    }
    std::string lines = fmt::format("{} -> {}: {}, {}, {:.2f} s\n", report.table, report.file,
                                    counted(report.records, "record", "records"),
                                    counted(report.fields.size(), "field", "fields"), report.seconds);
    for (const dbf::Converted& one : report.converted) {
        lines += fmt::format("{} of {} {}\n", counted(one.count, "value", "values"),
                             report.fields[one.field].name, became(one.loss));
    }
    fmt::print("{}", lines_without_controls(lines));
}

}  // namespace zmfb::tool
