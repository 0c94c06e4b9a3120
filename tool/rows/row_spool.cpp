#include "tool/rows/row_spool.h"

#include <fmt/format.h>

#include <cerrno>
#include <cstring>
#include <limits>

#include "tool/interrupt.h"

namespace zmfb::tool {
namespace {

constexpr std::size_t of_null = std::numeric_limits<std::size_t>::max();

[[noreturn]] void fail() {
    throw Failure{Exit::failed,
                  fmt::format("cannot set rows aside in a temporary file: {}", std::strerror(errno)), "",
                  "--mode csv and --mode json need none"};
}

}  // namespace

void RowSpool::add(const std::vector<Cell>& cells) {
    if (!file_) file_.reset(std::tmpfile());
    if (!file_) fail();
    columns_ = cells.size();
    for (const Cell& cell : cells) {
        const std::size_t size = cell ? cell->size() : of_null;
        write(&size, sizeof size);
        if (cell) write(cell->data(), cell->size());
    }
}

void RowSpool::give_back(const std::function<void(const std::vector<Cell>& cells)>& take) {
    if (!file_) return;
    if (std::fflush(file_.get()) != 0) fail();
    std::rewind(file_.get());
    std::vector<Cell> cells(columns_);
    for (std::size_t i = 0;; i = (i + 1) % columns_) {
        std::size_t size = 0;
        if (!read(&size, sizeof size)) return;
        cells[i] = size == of_null ? Cell() : Cell(std::string(size, ' '));
        if (cells[i] && !cells[i]->empty() && !read(cells[i]->data(), size)) fail();
        if (i + 1 == columns_) take(cells);
    }
}

void RowSpool::write(const void* bytes, std::size_t size) {
    if (size != 0 && std::fwrite(bytes, size, 1, file_.get()) != 1) fail();
}

bool RowSpool::read(void* bytes, std::size_t size) {
    if (std::fread(bytes, size, 1, file_.get()) == 1) return true;
    if (std::ferror(file_.get()) != 0) fail();
    return false;
}

}  // namespace zmfb::tool
