/// Keeps two processes from having a database file open at once whose engines do not see each other's locks.
#pragma once

#include <string>
#include <vector>

#include "zmfbconn/status.h"

namespace zmfb::sql {

/// Holds database files for this process as long as it lives, by locks on the files themselves: any path to
/// them counts. A process that is gone holds nothing, and neither does one that was forked from this one.
class Guard {
  public:
    Guard();
    ~Guard();
    Guard(const Guard&) = delete;
    Guard& operator=(const Guard&) = delete;

    /// Takes a file besides those that it holds. Fails when a process whose engine keeps its locks
    /// elsewhere has the file, the folder of this process' locks is none to rely on or full, or files cannot
    /// be locked there. A file that cannot be opened for reading is not held, which is no failure.
    Status take(const std::string& file);
    /// Whether that file is among those held.
    [[nodiscard]] bool holds(const std::string& file) const;

  private:
    static void let_go_in_child();

    std::vector<int> handles_;
};

}  // namespace zmfb::sql
