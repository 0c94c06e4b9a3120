/// The records of a DBF file, one after another.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "header.h"

#pragma GCC visibility push(default)

namespace zmfb::dbf {

/// Reads records in large blocks. The file and its header have to live as long.
///
///     for (Records records(file, header); records.next();) use(records.bytes());
class Records {
  public:
    /// Those that the header counts and the file holds whole; with `behind` those too that it does not count.
    Records(const Source& file, const Header& header, bool behind = false);

    /// To the next record, from before the first one on; false behind the last. Throws std::system_error when
    /// the file cannot be read, or has become shorter.
    bool next();

    /// The record, deletion mark first; lives to the next call of next().
    [[nodiscard]] std::string_view bytes() const { return bytes_; }
    /// From 1 on.
    [[nodiscard]] std::uint64_t number() const { return number_; }
    /// Whether it is marked as deleted.
    [[nodiscard]] bool deleted() const { return bytes_.front() == '*'; }
    /// Whether its mark says neither that it is deleted nor that it is not.
    [[nodiscard]] bool has_odd_mark() const { return !deleted() && bytes_.front() != ' '; }

  private:
    void load();

    const Source& file_;
    const Header& header_;
    std::uint64_t last_;
    std::uint64_t number_ = 0;
    std::uint64_t block_first_ = 1;
    std::string block_;
    std::string_view bytes_;
};

}  // namespace zmfb::dbf

#pragma GCC visibility pop
