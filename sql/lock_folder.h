/// The folder that the embedded engine keeps its locks in. It is one for the whole process, whichever
/// databases are opened, since the engine reads its setting once.
#pragma once

#include <cstdint>
#include <string>

#include "zmfbconn/status.h"

namespace zmfb::sql {

class LockFolder {
  public:
    /// The one of this process. It is settled by the first look() that succeeds.
    static LockFolder& of_this_process();

    /// Looks whether the engine can find the folder where it was at first, with the file in it that stands
    /// for it.
    Status look();
    /// Looks whether its disk has room for the engine's files of one more database.
    Status look_for_room();
    /// Has the system keep room for all that the engine's files in it, which are open now, may hold.
    [[nodiscard]] Status keep_room_for_files() const;

    [[nodiscard]] const std::string& path() const { return path_; }
    /// A number of 39 bits that two processes have in common only when their engines see each other's locks:
    /// it stands for one folder of one running system, and one numbering of its processes.
    [[nodiscard]] std::uint64_t identity() const { return identity_; }

  private:
    LockFolder() = default;
    Status settle(const std::string& mark);
    [[nodiscard]] Status no_room(int error) const;

    int handle_ = -1;  ///< keeps the file's number from being given to another one
    std::string path_;
    std::uint64_t identity_ = 0;
};

}  // namespace zmfb::sql
