/// The records of a DBF file, read in blocks.
#pragma once

#include <algorithm>
#include <fstream>
#include <string>
#include <string_view>

#include "tool/session.h"
#include "tool/transfer/dbf_file.h"

namespace zmfb::tool {

/// Calls `visit(number, bytes)` for each record that the file holds, deletion flag first, numbers from 1 on.
/// A last record that the file holds in part comes filled up with blanks. Throws Failure when the file cannot
/// be read.
template <class Visit>
void for_each_record(const DbfFile& file, Visit visit) {
    constexpr std::size_t block_size = std::size_t{256} * 1024;
    std::ifstream stream(file.path, std::ios::binary);
    stream.seekg(static_cast<std::streamoff>(file.start));
    const std::size_t per_block = std::max<std::size_t>(1, block_size / file.record_length);
    std::string block;
    for (std::uint64_t number = 1; number <= file.records;) {
        block.assign(per_block * file.record_length, ' ');
        stream.read(block.data(), static_cast<std::streamsize>(block.size()));
        const auto got = static_cast<std::size_t>(stream.gcount());
        if (got == 0) throw Failure{Exit::failed, "cannot read " + file.path};
        // What a read that came to the end did not fill is blank already.
        const std::size_t held = (got + file.record_length - 1) / file.record_length;
        for (std::size_t i = 0; i < held && number <= file.records; ++i, ++number) {
            visit(number, std::string_view(block).substr(i * file.record_length, file.record_length));
        }
    }
}

}  // namespace zmfb::tool
