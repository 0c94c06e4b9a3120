/// DBF files read by programs that are not ours.
#pragma once

#include <string>
#include <vector>

#include "tests/support/bare_client.h"

namespace zmfb::test {

/// A DBF file as a reader sees it; cells as dbf_rows.py describes them.
struct DbfContent {
    Row fields;  ///< NAME:TYPE:LENGTH:DECIMALS
    int deleted = 0;
    Rows records;
};

/// Reads a DBF file with the Python package `reader`, "dbfread" or "dbf". A reader that is not installed or
/// refuses the file fails the test.
DbfContent read_dbf(const std::string& reader, const std::string& path);

/// Whether GDAL's ogrinfo and shapelib's dbfdump read the file to its end without a word of complaint; else
/// fails the test.
void expect_no_complaint(const std::string& path, std::size_t records);

/// The records, in a fixed order when there are deleted ones, which not every reader leaves in their places.
Rows comparable(const DbfContent& content);

}  // namespace zmfb::test
