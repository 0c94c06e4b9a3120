/// What is told of a file that is imported, or would be.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "tool/import/values.h"

namespace zmfb::tool {

struct ImportReport {
    struct Column {
        std::string name, type;
    };

    std::string file, table;
    std::vector<Column> columns;
    std::uint64_t records = 0;
    std::uint64_t deleted = 0;
    bool skips_deleted = false;
    std::uint64_t odd_marks = 0;       ///< records that are marked neither as deleted nor as not deleted
    std::vector<std::string> notes;    ///< on how the file was read
    std::vector<std::string> changes;  ///< of names
    ValueCounts values;
    std::uint64_t defaulted = 0;  ///< bad values in whose place the default stands
    std::uint64_t set_aside = 0;  ///< records
    std::string set_aside_file;   ///< where they are
    std::string bad_values;       ///< the first of them, a line each
    bool lacked_characters = false;
    std::string replaces;  ///< what goes for it; "" for nothing
    double seconds = 0;
};

/// Of what was done.
void print_summary(const ImportReport& report, bool as_json);
/// Of what would be done, and whether it can be.
void print_plan(const ImportReport& report, bool as_json, bool possible);

}  // namespace zmfb::tool
