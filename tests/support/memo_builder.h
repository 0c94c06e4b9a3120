/// Memo files made byte by byte.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace zmfb::test {

enum class MemoFormat { dbase3, dbase4, foxpro, six };

/// Builds the bytes of a memo file.
///
///     MemoBuilder memos(MemoFormat::foxpro, 64);
///     const auto block = memos.add("a long text");
class MemoBuilder {
  public:
    /// The first block is the first behind a header of 512 bytes.
    explicit MemoBuilder(MemoFormat format, std::uint32_t block_size = 512);

    /// Adds a memo; returns the number of its block.
    std::uint32_t add(std::string_view memo);
    /// Adds a block of these bytes, with no header of a block.
    std::uint32_t add_raw(std::string_view bytes);

    [[nodiscard]] const std::string& bytes() const { return bytes_; }

  private:
    MemoFormat format_;
    std::uint32_t block_size_;
    std::string bytes_;
};

}  // namespace zmfb::test
