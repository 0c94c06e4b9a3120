#include "dbf/records.h"

#include <algorithm>
#include <cerrno>
#include <system_error>

namespace zmfb::dbf {
namespace {

constexpr std::size_t block_size = std::size_t{256} * 1024;

}  // namespace

Records::Records(const Source& file, const Header& header, bool behind)
    : file_(file), header_(header), last_(header.records + (behind ? header.behind : 0)) {}

bool Records::next() {
    if (number_ >= last_) return false;
    ++number_;
    if (number_ >= block_first_ + block_.size() / header_.record_size) load();
    const auto index = static_cast<std::size_t>(number_ - block_first_);
    bytes_ = std::string_view(block_).substr(index * header_.record_size, header_.record_size);
    return true;
}

void Records::load() {
    const std::uint64_t per_block = std::max<std::size_t>(1, block_size / header_.record_size);
    block_first_ = number_;
    block_.resize(static_cast<std::size_t>(std::min(per_block, last_ - number_ + 1)) * header_.record_size);
    if (file_.read(header_.start + (number_ - 1) * header_.record_size, block_) != block_.size()) {
        throw std::system_error(EIO, std::generic_category(), "the file has become shorter");
    }
}

}  // namespace zmfb::dbf
