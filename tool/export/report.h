/// What is told of a file that was exported.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "zmfbconn/dbf/writer.h"

namespace zmfb::tool {

struct ExportReport {
    std::string table, file;
    std::uint64_t records = 0;
    std::vector<dbf::NewField> fields;
    std::vector<std::string> warnings;  ///< a line each
    std::vector<dbf::Converted> converted;
    double seconds = 0;
};

/// On standard output.
void print_summary(const ExportReport& report, bool as_json);

}  // namespace zmfb::tool
