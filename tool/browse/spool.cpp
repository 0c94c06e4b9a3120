#include "tool/browse/spool.h"

#include <fmt/format.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "tool/session.h"

namespace zmfb::tool::browse {
namespace {

// A value is its size and its bytes; NULL is this size alone.
constexpr std::uint64_t null = ~std::uint64_t{0};

}  // namespace

Spool::Spool() : file_(std::tmpfile()) {
    if (file_ == nullptr) fail();
}

void Spool::fail() {
    throw Failure{Exit::failed,
                  fmt::format("the rows cannot be kept in a temporary file: {}", std::strerror(errno))};
}

void Spool::seek(std::uint64_t place) {
    if (::fseeko(file_.get(), static_cast<off_t>(place), SEEK_SET) != 0) fail();
}

void Spool::add(const std::vector<Cell>& row) {
    seek(end_);
    std::uint64_t end = end_;
    for (const Cell& cell : row) {
        const std::uint64_t size = cell ? cell->size() : null;
        if (std::fwrite(&size, sizeof size, 1, file_.get()) != 1) fail();
        if (cell && std::fwrite(cell->data(), 1, cell->size(), file_.get()) != cell->size()) fail();
        end += sizeof size + (cell ? size : 0);
    }
    begins_.push_back(end_);
    end_ = end;
}

Cell Spool::read(std::size_t most) {
    std::uint64_t size = 0;
    if (std::fread(&size, sizeof size, 1, file_.get()) != 1) fail();
    if (size == null) return std::nullopt;
    std::string value(std::min<std::uint64_t>(size, most), '\0');
    if (std::fread(value.data(), 1, value.size(), file_.get()) != value.size()) fail();
    const auto rest = static_cast<off_t>(size - value.size());
    if (rest > 0 && ::fseeko(file_.get(), rest, SEEK_CUR) != 0) fail();
    return value;
}

std::vector<Cell> Spool::row(std::size_t number, std::size_t columns, std::size_t most) {
    seek(begins_[number]);
    std::vector<Cell> cells;
    while (cells.size() < columns) cells.push_back(read(most));
    return cells;
}

Cell Spool::value(std::size_t number, std::size_t column) {
    seek(begins_[number]);
    while (column-- > 0) read(0);
    return read(std::string::npos);
}

}  // namespace zmfb::tool::browse
