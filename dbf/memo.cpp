#include "dbf/memo.h"

#include <fmt/format.h>

#include <algorithm>
#include <filesystem>
#include <utility>

#include "dbf/companion.h"
#include "dbf/layout.h"

namespace zmfb::dbf {
namespace {

constexpr std::size_t block_header_size = 8;
constexpr std::size_t default_block_size = 512;
// No memo begins before, however short its blocks are.
constexpr std::uint64_t header_size = 512;
// How much is looked through at once for the end of a memo.
constexpr std::size_t piece_size = 16 * default_block_size;

}  // namespace

std::string find_memo_file(const std::string& path, const Header& header) {
    for (const std::string_view ending : {memo_ending(header.dialect), std::string_view(".fpt"),
                                          std::string_view(".dbt"), std::string_view(".smt")}) {
        if (std::string found = find_companion(path, ending); !found.empty()) return found;
    }
    return {};
}

MemoFile::MemoFile(std::unique_ptr<Source> file, const std::string& ending, const Header& header)
    : file_(std::move(file)) {
    if (header.dialect == Dialect::dbase4 || header.dialect == Dialect::dbase7) format_ = Format::dbase4;
    read_file_header(lower(ending));
}

MemoFile::MemoFile(const std::string& path, const Header& header)
    : MemoFile(open_file(path), std::filesystem::path(path).extension().string(), header) {}

// .dbt: the length of a block at 20, in dBASE IV. .fpt: at 6, the high byte first. .smt: at 4, the low byte
// first.
void MemoFile::read_file_header(const std::string& ending) {
    constexpr std::size_t needed = 24;
    const std::string beginning = read_bytes(*file_, 0, needed);
    if (beginning.size() < needed) throw Refused({"ends within the header of its memo file"});
    if (ending == ".fpt") {
        format_ = Format::foxpro;
        block_size_ = big_endian(beginning, 6, 2);
    } else if (ending == ".smt") {
        format_ = Format::six;
        block_size_ = little_endian(beginning, 4, 4);
    } else if (format_ == Format::dbase4) {
        block_size_ = little_endian(beginning, 20, 2);
        // A file that does not say it is one of dBASE III beside a table of another.
        if (block_size_ == 0) format_ = Format::dbase3;
    }
    // FoxPro's blocks of 0 are of one byte.
    if (block_size_ == 0) block_size_ = format_ == Format::foxpro ? 1 : default_block_size;
}

Memo MemoFile::read(std::uint32_t block) const {
    const std::uint64_t position = block * block_size_;
    if (position >= file_->size())
        return {{}, fmt::format("block {} is behind the end of the memo file", block)};
    if (position < header_size)
        return {{}, fmt::format("block {} is within the header of the memo file", block)};
    const std::string head = read_bytes(*file_, position, block_header_size);
    // Files of dBASE III may have blocks of dBASE IV; no text begins so.
    const bool marked = head.size() == block_header_size && head.starts_with(dbase4_block);
    if (format_ == Format::dbase3 && !marked) return up_to_end_mark(position);
    if (head.size() < block_header_size) return {{}, fmt::format("block {} is cut off", block)};
    const std::uint64_t behind_head = position + block_header_size;
    switch (format_) {
        case Format::foxpro:
            return of_length(behind_head, big_endian(head, 4, 4));
        case Format::six:
            return of_length(behind_head, little_endian(head, 4, 4));
        default: {
            const std::uint64_t length = little_endian(head, 4, 4);
            if (!marked || length < block_header_size) return {{}, fmt::format("block {} is no memo", block)};
            return of_length(behind_head, length - block_header_size);
        }
    }
}

Memo MemoFile::of_length(std::uint64_t position, std::uint64_t length) const {
    if (length > file_->size() - position) {
        return {{}, fmt::format("a memo of {} bytes goes beyond the end of the memo file", length)};
    }
    if (length > longest)
        return {{}, fmt::format("a memo of {} bytes is longer than the {} that are read", length, longest)};
    Memo memo{read_bytes(*file_, position, static_cast<std::size_t>(length)), {}};
    if (memo.bytes.size() < length) memo = {{}, "the memo file has become shorter"};
    return memo;
}

Memo MemoFile::up_to_end_mark(std::uint64_t position) const {
    std::string piece = read_bytes(*file_, position, piece_size);
    if (const std::size_t end = piece.find(end_of_file); end != std::string::npos) {
        piece.resize(end);
        return {std::move(piece), {}};
    }
    const std::uint64_t endless = end_of_endless(position);
    if (endless - position > longest)
        return {{}, fmt::format("the memo has no end in the {} bytes that are read", longest)};
    if (endless >= file_->size()) return {{}, "the memo file ends before the memo does"};
    piece = read_bytes(*file_, position, static_cast<std::size_t>(endless - position) + piece_size);
    const std::size_t end = piece.find(end_of_file);
    if (end == std::string::npos) return {{}, "the memo file has become shorter"};
    piece.resize(end);
    return {std::move(piece), {}};
}

// Behind the last piece from there on that has no end mark, as far as a memo may be long.
std::uint64_t MemoFile::end_of_endless(std::uint64_t position) const {
    if (position < endless_from_ || position > endless_to_) endless_from_ = endless_to_ = position;
    while (endless_to_ - position <= longest) {
        const std::string piece = read_bytes(*file_, endless_to_, piece_size);
        if (piece.empty() || piece.find(end_of_file) != std::string::npos) break;
        endless_to_ += piece.size();
    }
    return endless_to_;
}

}  // namespace zmfb::dbf
