/// A driver of a test's own: tables in memory, and a note of everything that is asked of it.
#pragma once

#include <functional>
#include <map>
#include <string>
#include <vector>

#include "host/driver.h"

namespace zmfb::host_test {

/// One table: its structure and its records.
struct MemoryTable {
    std::vector<host::Field> fields;
    std::vector<std::vector<host::Value>> records;
};

/// Keeps the tables that it creates; opens those and no others. `asked` has a line for each opening and
/// closing.
class MemoryDriver final : public host::Driver {
  public:
    std::unique_ptr<host::Table> open(const host::OpenRequest& request) override;
    bool create(std::string_view file, std::span<const host::Field> structure) override;

    std::map<std::string, MemoryTable, std::less<>> tables;
    std::vector<std::string> asked;
    /// Whether records cannot be marked as deleted.
    bool keeps_records = false;
    /// Called with the alias when a table has been opened, and when one is closed.
    std::function<void(std::string_view)> on_open = [](std::string_view) {};
    std::function<void(std::string_view)> on_close = [](std::string_view) {};
};

}  // namespace zmfb::host_test
