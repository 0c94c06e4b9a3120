/// Memo files that are written: memo.h the other way round.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "dbf/header.h"
#include "dbf/new_file.h"

namespace zmfb::dbf {

/// What a memo is, as the blocks of an .fpt file say it.
enum class MemoKind : std::uint8_t { picture = 0, text = 1, object = 2 };

class MemoWriter {
  public:
    /// `largest` is what a file may have in bytes: programs read up to 2 GB.
    MemoWriter(const std::string& place, Dialect dialect, std::uint64_t largest = 0x7FFFFFFF);

    /// Returns the block that it begins with. In a .dbt file the memo has no byte 1A. Throws Refused when the
    /// file would become larger than it may.
    std::uint32_t add(MemoKind kind, std::string_view memo);
    /// Ends the file.
    void close();

    [[nodiscard]] NewFile& file() { return file_; }

  private:
    void write(std::string_view bytes);

    NewFile file_;
    bool is_foxpro_;
    std::uint64_t largest_;
    std::uint64_t size_ = 0;
    std::string pending_;
};

}  // namespace zmfb::dbf
