#include "tests/support/memo_builder.h"

#include "tests/support/dbf_builder.h"

namespace zmfb::test {

MemoBuilder::MemoBuilder(MemoFormat format, std::uint32_t block_size)
    : format_(format), block_size_(block_size), bytes_(512, '\0') {
    if (format == MemoFormat::dbase4) bytes_.replace(20, 2, low_first(block_size, 2));
    if (format == MemoFormat::foxpro) bytes_.replace(6, 2, high_first(block_size, 2));
    if (format == MemoFormat::six) bytes_.replace(4, 4, low_first(block_size, 4));
}

std::uint32_t MemoBuilder::add(std::string_view memo) {
    const std::string text(memo);
    switch (format_) {
        case MemoFormat::dbase3:
            return add_raw(text + "\x1A\x1A");
        case MemoFormat::dbase4:
            return add_raw(std::string("\xFF\xFF\x08\x00", 4) + low_first(text.size() + 8, 4) + text);
        case MemoFormat::foxpro:
            return add_raw(high_first(1, 4) + high_first(text.size(), 4) + text);
        default:
            return add_raw(low_first(1, 4) + low_first(text.size(), 4) + text);
    }
}

std::uint32_t MemoBuilder::add_raw(std::string_view bytes) {
    const std::size_t blocks = (bytes_.size() + block_size_ - 1) / block_size_;
    bytes_.resize(blocks * block_size_, '\0');
    bytes_ += bytes;
    return static_cast<std::uint32_t>(blocks);
}

}  // namespace zmfb::test
