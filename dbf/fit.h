/// Which way of reading a header fits the file.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "dbf/descriptors.h"
#include "dbf/header.h"
#include "dbf/source.h"

namespace zmfb::dbf {

/// What a header says of its records.
struct Announced {
    std::uint64_t start = 0;  ///< of the first record; 0 when it cannot be
    std::size_t record_size = 0;
    std::uint64_t records = 0;
};

/// A way to read it.
struct Fit {
    std::uint64_t start = 0;
    std::size_t record_size = 0;
    /// Whether the decimals of a text count 256 bytes each.
    bool long_texts = true;
    std::string problem;  ///< why none fits, in words that follow the file's name; "" when this one does
};

/// The announced way when the fields make records of that size and these begin with deletion marks, else the
/// one that fits the file's length and the marks best.
Fit find_fit(const Source& file, const Described& described, Dialect dialect, const Announced& announced);

/// The bytes of a record of these fields, with its deletion mark.
std::size_t record_size_of(const std::vector<Field>& fields, bool long_texts);

}  // namespace zmfb::dbf
