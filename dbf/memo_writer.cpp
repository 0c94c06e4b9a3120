#include "dbf/memo_writer.h"

#include <fmt/format.h>

#include "dbf/companion.h"
#include "dbf/layout.h"

namespace zmfb::dbf {
namespace {

constexpr std::size_t file_header_size = 512;
constexpr std::size_t dbase3_block = 512;
constexpr std::size_t foxpro_block = 64;
constexpr std::size_t foxpro_head = 8;
constexpr std::size_t most_pending = std::size_t{256} * 1024;

std::string high_first(std::uint64_t number, std::size_t size) {
    std::string bytes(size, '\0');
    for (std::size_t i = 0; i < size; ++i) bytes[size - 1 - i] = static_cast<char>(number >> (8 * i) & 0xFF);
    return bytes;
}

}  // namespace

MemoWriter::MemoWriter(const std::string& place, Dialect dialect, std::uint64_t largest)
    : file_(place), is_foxpro_(memo_ending(dialect) == ".fpt"), largest_(largest) {
    write(std::string(file_header_size, '\0'));
}

// .fpt: the kind and the length before a memo. .dbt: two bytes 1A behind it.
std::uint32_t MemoWriter::add(MemoKind kind, std::string_view memo) {
    const std::size_t block = is_foxpro_ ? foxpro_block : dbase3_block;
    const std::size_t needed = memo.size() + (is_foxpro_ ? foxpro_head : 2);
    const std::size_t blocks = (needed + block - 1) / block;
    if (memo.size() > largest_ || size_ + blocks * block > largest_)
        throw Refused({fmt::format("would have a memo file of more than {} bytes", largest_)});
    const auto first = static_cast<std::uint32_t>(size_ / block);
    if (is_foxpro_) {
        write(high_first(static_cast<std::uint64_t>(kind), 4) + high_first(memo.size(), 4));
        write(memo);
    } else {
        write(memo);
        write(std::string(2, end_of_file));
    }
    write(std::string(blocks * block - needed, '\0'));
    return first;
}

void MemoWriter::write(std::string_view bytes) {
    size_ += bytes.size();
    pending_ += bytes;
    if (pending_.size() < most_pending) return;
    file_.write(pending_);
    pending_.clear();
}

// The block behind the last one: .dbt: at 0, the low byte first, and a version at 16. .fpt: at 0, the high
// byte first, and the size of a block at 6.
void MemoWriter::close() {
    file_.write(pending_);
    pending_.clear();
    if (is_foxpro_) {
        file_.write_at(0, high_first(size_ / foxpro_block, 4) + high_first(foxpro_block, 4));
    } else {
        constexpr char version = 3;
        constexpr std::size_t version_at = 16;
        std::string beginning(version_at + 1, '\0');
        put_little_endian(beginning, 0, 4, size_ / dbase3_block);
        beginning[version_at] = version;
        file_.write_at(0, beginning);
    }
    file_.sync();
}

}  // namespace zmfb::dbf
