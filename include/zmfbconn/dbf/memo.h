/// Memo files: the long texts and bytes of a DBF file.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "header.h"
#include "source.h"

#pragma GCC visibility push(default)

namespace zmfb::dbf {

/// A memo, or why there is none.
struct Memo {
    std::string bytes;    ///< in the file's code page when the field holds texts
    std::string problem;  ///< "" when the memo is there
};

/// The path of the memo file beside the DBF file at `path`: of its name in any letter case, with the ending
/// that its dialect has or else one of the others; "" when there is none.
std::string find_memo_file(const std::string& path, const Header& header);

/// A memo file of dBASE III or IV (.dbt), FoxPro (.fpt) or SIx (.smt).
class MemoFile {
  public:
    /// No memo is read that is longer, so that a length that lies costs no more.
    static constexpr std::uint64_t longest = 64U << 20;

    /// `ending` is that of the file's name, ".dbt", ".fpt" or ".smt" in any letter case. Throws Refused for a
    /// file that is shorter than its header.
    MemoFile(std::unique_ptr<Source> file, const std::string& ending, const Header& header);
    /// The file at `path`, whose ending says what it is. Throws std::system_error, and Refused.
    MemoFile(const std::string& path, const Header& header);

    /// The memo that begins with that block. Throws std::system_error when the file cannot be read.
    [[nodiscard]] Memo read(std::uint32_t block) const;

  private:
    enum class Format : std::uint8_t { dbase3, dbase4, foxpro, six };

    void read_file_header(const std::string& ending);
    [[nodiscard]] Memo up_to_end_mark(std::uint64_t position) const;
    [[nodiscard]] std::uint64_t end_of_endless(std::uint64_t position) const;
    [[nodiscard]] Memo of_length(std::uint64_t position, std::uint64_t length) const;

    std::unique_ptr<Source> file_;
    Format format_ = Format::dbase3;
    std::uint64_t block_size_ = 512;
    // A stretch of the file that has no end mark: however many memos begin in it, it is read once.
    mutable std::uint64_t endless_from_ = 0;
    mutable std::uint64_t endless_to_ = 0;
};

}  // namespace zmfb::dbf

#pragma GCC visibility pop
