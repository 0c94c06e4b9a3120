/// Rows set aside.
#pragma once

#include <cstdio>
#include <functional>
#include <memory>
#include <vector>

#include "tool/rows/row_writer.h"

namespace zmfb::tool {

/// Keeps rows in a file without a name, which goes with it, and gives them back in their order. Its functions
/// throw Failure when that does not work.
class RowSpool {
  public:
    void add(const std::vector<Cell>& cells);
    void give_back(const std::function<void(const std::vector<Cell>& cells)>& take);

  private:
    void write(const void* bytes, std::size_t size);
    bool read(void* bytes, std::size_t size);

    std::unique_ptr<std::FILE, int (*)(std::FILE*)> file_{nullptr, &std::fclose};
    std::size_t columns_ = 0;
};

}  // namespace zmfb::tool
