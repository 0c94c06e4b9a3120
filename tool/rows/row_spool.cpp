#include "tool/rows/row_spool.h"

#include <fmt/format.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <utility>

#include "tool/errors.h"

namespace zmfb::tool {
namespace {

// A value is its size and its bytes; NULL is this size alone.
constexpr std::uint64_t of_null = ~std::uint64_t{0};

}  // namespace

RowSpool::RowSpool(std::string words, std::string hint)
    : words_(std::move(words)), hint_(std::move(hint)), file_(std::tmpfile(), &std::fclose) {
    if (file_ == nullptr) fail();
}

void RowSpool::fail() const {
    throw Failure{Exit::failed, fmt::format("{}: {}", words_, std::strerror(errno)), "", hint_};
}

void RowSpool::seek(std::uint64_t place) {
    if (::fseeko(file_.get(), static_cast<off_t>(place), SEEK_SET) != 0) fail();
}

void RowSpool::write(const void* bytes, std::size_t size) {
    if (std::fwrite(bytes, 1, size, file_.get()) != size) fail();
    end_ += size;
}

std::uint64_t RowSpool::add(const std::vector<Cell>& row) {
    if (std::exchange(is_read_, false)) seek(end_);
    const std::uint64_t place = end_;
    for (const Cell& cell : row) {
        const std::uint64_t size = cell ? cell->size() : of_null;
        write(&size, sizeof size);
        if (cell) write(cell->data(), cell->size());
    }
    ++rows_;
    return place;
}

void RowSpool::go_to(std::uint64_t place) {
    seek(place);
    is_read_ = true;
}

Cell RowSpool::read(std::size_t most) {
    std::uint64_t size = 0;
    if (std::fread(&size, sizeof size, 1, file_.get()) != 1) fail();
    if (size == of_null) return std::nullopt;
    std::string value(static_cast<std::size_t>(std::min<std::uint64_t>(size, most)), '\0');
    if (std::fread(value.data(), 1, value.size(), file_.get()) != value.size()) fail();
    const auto rest = static_cast<off_t>(size - value.size());
    if (rest > 0 && ::fseeko(file_.get(), rest, SEEK_CUR) != 0) fail();
    return value;
}

}  // namespace zmfb::tool
